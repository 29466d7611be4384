#include "model/mappaths.h"

#include "model/greatcircle.h"

#include <QDataStream>
#include <QTransform>

#include <cmath>

namespace {

constexpr double k_pi = MapProjection::k_pi;
// Longest step on the plane before a segment is split, radians (about 0.6 degree).
constexpr double k_maxStep = 0.01;
constexpr int k_maxSplits = 64;
constexpr quint32 k_maxRings = 100000;
constexpr quint32 k_maxPoints = 1000000;

void addDisc(QPainterPath &path)
{
    path.addEllipse(QPointF(0.0, 0.0), k_pi, k_pi);
}

// An equirectangular ring drawn again one world to each side, so that what
// crosses the date line shows at both edges.
void addEquirectangular(QPainterPath &path, const QPolygonF &ring)
{
    QPolygonF plane;
    plane.reserve(ring.size());
    for (const QPointF &p : ring)
        plane.append(QPointF(p.x() * MapProjection::k_degToRad, p.y() * MapProjection::k_degToRad));
    for (const double offset : {-2.0 * k_pi, 0.0, 2.0 * k_pi}) {
        if (plane.boundingRect().translated(offset, 0.0).intersects(QRectF(-k_pi, -k_pi, 2 * k_pi, 2 * k_pi)))
            path.addPolygon(plane.translated(offset, 0.0));
        path.closeSubpath();
    }
}

} // namespace

QList<QPolygonF> MapPaths::readRings(const QByteArray &data)
{
    QDataStream in(data);
    QByteArray magic(4, '\0');
    quint16 version = 0;
    quint16 perDegree = 0;
    quint32 count = 0;
    if (in.readRawData(magic.data(), 4) != 4 || magic != QByteArrayLiteral("TLND"))
        return {};
    in >> version >> perDegree >> count;
    if (in.status() != QDataStream::Ok || version != 1 || perDegree == 0 || count > k_maxRings)
        return {};
    QList<QPolygonF> rings;
    quint32 total = 0;
    for (quint32 r = 0; r < count; ++r) {
        quint32 points = 0;
        in >> points;
        total += points;
        if (in.status() != QDataStream::Ok || points > k_maxPoints || total > k_maxPoints)
            return {};
        QPolygonF ring;
        ring.reserve(int(points));
        for (quint32 i = 0; i < points; ++i) {
            qint16 lon = 0;
            qint16 lat = 0;
            in >> lon >> lat;
            ring.append(QPointF(double(lon) / perDegree, double(lat) / perDegree));
        }
        if (in.status() != QDataStream::Ok)
            return {};
        rings.append(ring);
    }
    return rings;
}

QPolygonF MapPaths::projectRing(const QPolygonF &ring, const MapProjection &projection)
{
    QPolygonF plane;
    plane.reserve(ring.size());
    for (int i = 0; i < ring.size(); ++i) {
        const QPointF a = ring.at(i);
        const QPointF pa = projection.project(a.y(), a.x());
        plane.append(pa);
        if (projection.kind() == MapProjection::Equirectangular)
            continue;
        const QPointF b = ring.at((i + 1) % ring.size());
        const QPointF pb = projection.project(b.y(), b.x());
        const int splits =
            std::min(k_maxSplits, int(std::hypot(pb.x() - pa.x(), pb.y() - pa.y()) / k_maxStep));
        // The short way round in longitude: a step over the date line is a small one.
        const double dLon = normalisedLongitude(b.x() - a.x());
        for (int s = 1; s < splits; ++s) {
            const double t = double(s) / splits;
            plane.append(projection.project(a.y() + (b.y() - a.y()) * t, a.x() + dLon * t));
        }
    }
    return plane;
}

QPainterPath MapPaths::regionPath(const QList<QPolygonF> &rings, const MapProjection &projection)
{
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    if (projection.kind() == MapProjection::Equirectangular) {
        for (const QPolygonF &ring : rings)
            addEquirectangular(path, ring);
        return path;
    }
    // A ring round the centre's antipode comes out inside out: the disc
    // added once more turns it back by the even-odd rule.
    const QPointF antipode(normalisedLongitude(projection.centreLon() + 180.0), -projection.centreLat());
    for (const QPolygonF &ring : rings) {
        path.addPolygon(projectRing(ring, projection));
        path.closeSubpath();
        if (ring.containsPoint(antipode, Qt::OddEvenFill))
            addDisc(path);
    }
    return path;
}

QPainterPath MapPaths::hemispherePath(double lat, double lon, const MapProjection &projection)
{
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    if (projection.kind() == MapProjection::Equirectangular) {
        // The edge as a latitude for each longitude, closed over the pole the
        // hemisphere holds: no unwrapping, and sound at the equinoxes too.
        const double sinLat = std::sin(lat * MapProjection::k_degToRad);
        const double cosLat = std::cos(lat * MapProjection::k_degToRad);
        const double pole = lat >= 0.0 ? 90.0 : -90.0;
        QPolygonF edge;
        for (int x = -180; x <= 180; ++x) {
            const double edgeLat = std::atan2(-cosLat * std::cos((x - lon) * MapProjection::k_degToRad),
                                              sinLat == 0.0 ? 1e-12 : std::abs(sinLat));
            edge.append(QPointF(x, (lat >= 0.0 ? 1.0 : -1.0) * edgeLat / MapProjection::k_degToRad));
        }
        edge.append(QPointF(180.0, pole));
        edge.append(QPointF(-180.0, pole));
        path.addPolygon(QPolygonF(edge));
        path.closeSubpath();
        return QTransform::fromScale(MapProjection::k_degToRad, MapProjection::k_degToRad).map(path);
    }
    path.addPolygon(projectRing(QPolygonF(GreatCircle::circle(lat, lon, 90.0, 180)), projection));
    path.closeSubpath();
    if (GreatCircle::angleDeg(lat, lon, -projection.centreLat(), projection.centreLon() + 180.0) < 90.0)
        addDisc(path);
    return path;
}

QPainterPath MapPaths::linePath(const QList<QPointF> &line, const MapProjection &projection)
{
    QPainterPath path;
    for (int i = 0; i < line.size(); ++i) {
        const QPointF p = projection.project(line.at(i).y(), line.at(i).x());
        // A jump of more than half the world is the line leaving one edge for the other.
        if (i == 0 || std::abs(p.x() - path.currentPosition().x()) > k_pi ||
            std::abs(p.y() - path.currentPosition().y()) > k_pi)
            path.moveTo(p);
        else
            path.lineTo(p);
    }
    return path;
}
