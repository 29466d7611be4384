#pragma once

#include <QPointF>
#include <QRectF>

// A map projection from positions (degrees, north and east positive) to a
// plane in radians, x east and y north. Equirectangular maps longitude and
// latitude straight to x and y; azimuthal equidistant, centred on the
// operator, keeps the bearing from the centre as the direction and the
// great-circle distance as the radius, so the whole earth is a disc of
// radius pi and the antipode its rim.
class MapProjection final
{
public:
    enum Kind : int { Equirectangular = 0, AzimuthalEquidistant = 1 };
    static constexpr double k_degToRad = 0.017453292519943295;
    static constexpr double k_pi = 3.14159265358979323846;

    MapProjection() = default;
    static MapProjection equirectangular() { return MapProjection(); }
    static MapProjection azimuthal(double centreLat, double centreLon);

    Kind kind() const { return m_kind; }
    double centreLat() const { return m_centreLat; }
    double centreLon() const { return m_centreLon; }

    QPointF project(double lat, double lon) const;
    // The position shown at a point of the plane; false outside the map.
    bool unproject(const QPointF &point, double &lat, double &lon) const;
    // The plane area the whole earth covers.
    QRectF bounds() const;
    // Angular distance in radians from the centre's antipode to the position:
    // near zero, the azimuthal projection tears.
    double antipodeDistance(double lat, double lon) const;

    bool operator==(const MapProjection &other) const
    {
        return m_kind == other.m_kind && m_centreLat == other.m_centreLat && m_centreLon == other.m_centreLon;
    }
    bool operator!=(const MapProjection &other) const { return !(*this == other); }

private:
    Kind m_kind = Equirectangular;
    double m_centreLat = 0.0;
    double m_centreLon = 0.0;
    double m_sinLat0 = 0.0;
    double m_cosLat0 = 1.0;
};

// Longitude folded into -180 (inclusive) to 180 (exclusive).
double normalisedLongitude(double lon);
