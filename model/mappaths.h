#pragma once

#include "model/mapprojection.h"

#include <QByteArray>
#include <QList>
#include <QPainterPath>
#include <QPolygonF>

// Outlines on the sphere turned into paths on a projection's plane. Rings
// and lines are QPointF(lon, lat) in degrees; paths are in plane radians and
// fill by the even-odd rule, so holes and overlaps need no orientation.
class MapPaths final
{
public:
    // The land rings of the map's resource (see scripts/make-land.sh); empty
    // when the data is not such a file.
    static QList<QPolygonF> readRings(const QByteArray &data);

    // Rings drawn as stored: each encloses what lies inside it on an
    // equirectangular map.
    static QPainterPath regionPath(const QList<QPolygonF> &rings, const MapProjection &projection);
    // The half of the world within 90 degrees of a position: the night side
    // is the hemisphere round the antisolar point.
    static QPainterPath hemispherePath(double lat, double lon, const MapProjection &projection);
    // A line, broken where it leaves one edge of the map for the other.
    static QPainterPath linePath(const QList<QPointF> &line, const MapProjection &projection);

    // The ring on the plane, with points added where a step would be long
    // enough to show as a chord instead of a curve.
    static QPolygonF projectRing(const QPolygonF &ring, const MapProjection &projection);
};
