#include "model/sunposition.h"

#include "model/mapprojection.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double k_rad = MapProjection::k_degToRad;
constexpr qint64 k_j2000MSecs = 946728000000; // 2000-01-01 12:00 UTC

double degrees360(double deg)
{
    const double folded = std::fmod(deg, 360.0);
    return folded < 0.0 ? folded + 360.0 : folded;
}

} // namespace

SunPosition SunPosition::at(const QDateTime &utc)
{
    // Days from J2000.0; UTC stands in for terrestrial time, a minute off at most.
    const double d = double(utc.toMSecsSinceEpoch() - k_j2000MSecs) / 86400000.0;
    const double g = degrees360(357.529 + 0.98560028 * d) * k_rad; // mean anomaly
    const double q = degrees360(280.459 + 0.98564736 * d);         // mean longitude
    const double l = (q + 1.915 * std::sin(g) + 0.020 * std::sin(2.0 * g)) * k_rad;
    const double e = (23.439 - 0.00000036 * d) * k_rad; // obliquity
    const double rightAscension = std::atan2(std::cos(e) * std::sin(l), std::cos(l)) / k_rad;
    const double gmst = degrees360(280.46061837 + 360.98564736629 * d);
    SunPosition sun;
    sun.m_lat = std::asin(std::sin(e) * std::sin(l)) / k_rad;
    sun.m_lon = normalisedLongitude(rightAscension - gmst);
    return sun;
}

double SunPosition::antisolarLon() const
{
    return normalisedLongitude(m_lon + 180.0);
}

double SunPosition::elevationDeg(double lat, double lon) const
{
    const double phi = lat * k_rad;
    const double delta = m_lat * k_rad;
    const double cosZenith =
        std::sin(phi) * std::sin(delta) + std::cos(phi) * std::cos(delta) * std::cos((lon - m_lon) * k_rad);
    return 90.0 - std::acos(std::clamp(cosZenith, -1.0, 1.0)) / k_rad;
}
