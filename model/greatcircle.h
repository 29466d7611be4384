#pragma once

#include <QList>
#include <QPointF>
#include <QString>

// How a distance is shown: the table's miles, or kilometres.
enum class DistanceUnit : int { Miles = 0, Kilometres = 1 };

// The two ways round the earth from the operator to a station: the short
// path and the long path opposite it. Positions are QPointF(lon, lat) in
// degrees throughout, as the map's rings are.
struct GreatCircle final
{
    double shortMi = 0.0;
    double shortBearingDeg = 0.0;
    double longMi = 0.0;
    double longBearingDeg = 0.0;

    static constexpr double k_kmPerMile = 1.609344;

    // Distance and bearing the table's way; the long path goes the other way
    // round, so its bearing is opposite and its length the rest of the circle.
    static GreatCircle between(double lat1, double lon1, double lat2, double lon2);
    static double circumferenceMi();

    // Points along the short path, both ends included; steps segments.
    static QList<QPointF> pathPoints(double lat1, double lon1, double lat2, double lon2, int steps);
    // The position at an angular distance (degrees) along a bearing.
    static QPointF destination(double lat, double lon, double bearingDeg, double angleDeg);
    // The ring of positions at an angular radius round a centre.
    static QList<QPointF> circle(double lat, double lon, double radiusDeg, int steps);
    // Angular distance in degrees between two positions.
    static double angleDeg(double lat1, double lon1, double lat2, double lon2);

    // "1234 mi" or "1986 km", rounded to a whole number.
    static QString formatDistance(double miles, DistanceUnit unit);
};
