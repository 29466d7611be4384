#pragma once

#include <QDateTime>

// Where the sun stands overhead at a moment (the subsolar point), from the
// low-precision solar coordinates of the astronomical almanac: good to about
// a hundredth of a degree in declination for decades either side of 2000,
// which is far finer than a map's pixel.
class SunPosition final
{
public:
    static SunPosition at(const QDateTime &utc);

    double subsolarLat() const { return m_lat; }
    double subsolarLon() const { return m_lon; }
    // The point opposite, the middle of the night side.
    double antisolarLat() const { return -m_lat; }
    double antisolarLon() const;
    // The sun's height above the horizon at a position, in degrees, ignoring
    // refraction: 0 on the terminator, negative at night.
    double elevationDeg(double lat, double lon) const;

private:
    double m_lat = 0.0;
    double m_lon = 0.0;
};
