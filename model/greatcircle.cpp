#include "model/greatcircle.h"

#include "model/mapprojection.h"
#include "model/stationmodel.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double k_rad = MapProjection::k_degToRad;
constexpr double k_earthDiameterMi = 7917.6; // the table's haversine uses the same

} // namespace

GreatCircle GreatCircle::between(double lat1, double lon1, double lat2, double lon2)
{
    GreatCircle gc;
    gc.shortMi = StationModel::distanceMi(lat1, lon1, lat2, lon2);
    gc.shortBearingDeg = StationModel::bearingDeg(lat1, lon1, lat2, lon2);
    gc.longMi = circumferenceMi() - gc.shortMi;
    gc.longBearingDeg = std::fmod(gc.shortBearingDeg + 180.0, 360.0);
    return gc;
}

double GreatCircle::circumferenceMi()
{
    return k_earthDiameterMi * MapProjection::k_pi;
}

double GreatCircle::angleDeg(double lat1, double lon1, double lat2, double lon2)
{
    return StationModel::distanceMi(lat1, lon1, lat2, lon2) / (k_earthDiameterMi / 2.0) / k_rad;
}

QList<QPointF> GreatCircle::pathPoints(double lat1, double lon1, double lat2, double lon2, int steps)
{
    steps = std::max(steps, 1);
    const double bearing = StationModel::bearingDeg(lat1, lon1, lat2, lon2);
    const double angle = angleDeg(lat1, lon1, lat2, lon2);
    QList<QPointF> points;
    points.reserve(steps + 1);
    for (int i = 0; i < steps; ++i)
        points.append(destination(lat1, lon1, bearing, angle * i / steps));
    points.append(QPointF(normalisedLongitude(lon2), lat2));
    return points;
}

QPointF GreatCircle::destination(double lat, double lon, double bearingDeg, double angleDeg)
{
    const double phi = lat * k_rad;
    const double theta = bearingDeg * k_rad;
    const double delta = angleDeg * k_rad;
    const double sinPhi2 =
        std::sin(phi) * std::cos(delta) + std::cos(phi) * std::sin(delta) * std::cos(theta);
    const double phi2 = std::asin(std::clamp(sinPhi2, -1.0, 1.0));
    const double lambda2 = std::atan2(std::sin(theta) * std::sin(delta) * std::cos(phi),
                                      std::cos(delta) - std::sin(phi) * sinPhi2);
    return {normalisedLongitude(lon + lambda2 / k_rad), phi2 / k_rad};
}

QList<QPointF> GreatCircle::circle(double lat, double lon, double radiusDeg, int steps)
{
    QList<QPointF> ring;
    ring.reserve(steps);
    for (int i = 0; i < steps; ++i)
        ring.append(destination(lat, lon, 360.0 * (i + 0.5) / steps, radiusDeg)); // never straight at a pole
    return ring;
}

QString GreatCircle::formatDistance(double miles, DistanceUnit unit)
{
    const bool km = unit == DistanceUnit::Kilometres;
    const double value = km ? miles * k_kmPerMile : miles;
    return QString::number(qint64(std::floor(value + 0.5))) +
           (km ? QLatin1String(" km") : QLatin1String(" mi"));
}
