#include "model/mapprojection.h"

#include <algorithm>
#include <cmath>

double normalisedLongitude(double lon)
{
    const double folded = std::fmod(lon + 180.0, 360.0);
    return (folded < 0.0 ? folded + 360.0 : folded) - 180.0;
}

MapProjection MapProjection::azimuthal(double centreLat, double centreLon)
{
    MapProjection p;
    p.m_kind = AzimuthalEquidistant;
    p.m_centreLat = std::clamp(centreLat, -90.0, 90.0);
    p.m_centreLon = normalisedLongitude(centreLon);
    p.m_sinLat0 = std::sin(p.m_centreLat * k_degToRad);
    p.m_cosLat0 = std::cos(p.m_centreLat * k_degToRad);
    return p;
}

QPointF MapProjection::project(double lat, double lon) const
{
    if (m_kind == Equirectangular)
        return {lon * k_degToRad, lat * k_degToRad};
    const double phi = lat * k_degToRad;
    const double dLambda = (lon - m_centreLon) * k_degToRad;
    const double sinPhi = std::sin(phi);
    const double cosPhi = std::cos(phi);
    const double cosDLambda = std::cos(dLambda);
    const double cosC = std::clamp(m_sinLat0 * sinPhi + m_cosLat0 * cosPhi * cosDLambda, -1.0, 1.0);
    const double c = std::acos(cosC);
    const double sinC = std::sin(c);
    // The centre itself, or its antipode, where any point of the rim will do.
    if (sinC < 1e-12)
        return c < 1.0 ? QPointF(0.0, 0.0) : QPointF(0.0, -k_pi);
    const double k = c / sinC;
    return {k * cosPhi * std::sin(dLambda), k * (m_cosLat0 * sinPhi - m_sinLat0 * cosPhi * cosDLambda)};
}

bool MapProjection::unproject(const QPointF &point, double &lat, double &lon) const
{
    if (m_kind == Equirectangular) {
        if (std::abs(point.x()) > k_pi || std::abs(point.y()) > k_pi / 2.0)
            return false;
        lat = point.y() / k_degToRad;
        lon = point.x() / k_degToRad;
        return true;
    }
    const double rho = std::hypot(point.x(), point.y());
    if (rho > k_pi)
        return false;
    if (rho < 1e-12) {
        lat = m_centreLat;
        lon = m_centreLon;
        return true;
    }
    const double sinC = std::sin(rho);
    const double cosC = std::cos(rho);
    const double sinPhi = std::clamp(cosC * m_sinLat0 + point.y() * sinC * m_cosLat0 / rho, -1.0, 1.0);
    lat = std::asin(sinPhi) / k_degToRad;
    const double dLambda =
        std::atan2(point.x() * sinC, rho * m_cosLat0 * cosC - point.y() * m_sinLat0 * sinC);
    lon = normalisedLongitude(m_centreLon + dLambda / k_degToRad);
    return true;
}

QRectF MapProjection::bounds() const
{
    if (m_kind == Equirectangular)
        return QRectF(-k_pi, -k_pi / 2.0, 2.0 * k_pi, k_pi);
    return QRectF(-k_pi, -k_pi, 2.0 * k_pi, 2.0 * k_pi);
}

double MapProjection::antipodeDistance(double lat, double lon) const
{
    const double phi = lat * k_degToRad;
    const double dLambda = (lon - m_centreLon) * k_degToRad;
    const double cosC = m_sinLat0 * std::sin(phi) + m_cosLat0 * std::cos(phi) * std::cos(dLambda);
    return k_pi - std::acos(std::clamp(cosC, -1.0, 1.0));
}
