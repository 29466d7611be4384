#include "app/widgets/mapcanvas.h"

#include "model/mappaths.h"
#include "model/spotfilterproxymodel.h"
#include "model/sunposition.h"

#include <QDateTime>
#include <QFile>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr double k_pi = MapProjection::k_pi;
constexpr int k_dotPx = 9;
constexpr int k_clusterPx = 15;
const QColor k_outside(11, 15, 24);
const QColor k_sea(16, 33, 54);
const QColor k_land(46, 62, 46);
const QColor k_coast(88, 110, 78);
const QColor k_graticule(40, 58, 82);

QPixmap disc(int px, qreal dpr, const QColor &fill, const QColor &edge, qreal edgeWidth)
{
    QPixmap pm(QSize(px, px) * dpr);
    pm.setDevicePixelRatio(dpr);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(edge, edgeWidth));
    p.setBrush(fill);
    const qreal inset = edgeWidth / 2.0 + 0.5;
    p.drawEllipse(QRectF(inset, inset, px - 2 * inset, px - 2 * inset));
    return pm;
}

QPainterPath graticule(const MapProjection &projection)
{
    QPainterPath path;
    for (int lon = -180; lon < 180; lon += 30) {
        QList<QPointF> line;
        for (int lat = -90; lat <= 90; lat += 2)
            line.append(QPointF(lon, lat));
        path.addPath(MapPaths::linePath(line, projection));
    }
    for (int lat = -60; lat <= 60; lat += 30) {
        QList<QPointF> line;
        for (int lon = -180; lon <= 180; lon += 2)
            line.append(QPointF(lon, lat));
        path.addPath(MapPaths::linePath(line, projection));
    }
    return path;
}

} // namespace

MapCanvas::MapCanvas(SpotFilterProxyModel *proxy, QWidget *parent)
    : SpotCanvas(proxy, parent)
{
    setObjectName(QStringLiteral("mapCanvas"));
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(200, 120);
    QFile land(QStringLiteral(":/land-110m.bin"));
    if (land.open(QIODevice::ReadOnly))
        m_land = MapPaths::readRings(land.readAll());
    applyProjection(MapProjection::equirectangular());
}

MapCanvas::~MapCanvas() = default;

void MapCanvas::rebuild(const SpotFilterProxyModel *proxy)
{
    if (!proxy)
        return;
    const int before = m_markers.unplacedCount();
    if (!m_markers.rebuild(*proxy, m_projection))
        return;
    m_clustersValid = false;
    if (m_markers.unplacedCount() != before)
        emit unplacedCountChanged(m_markers.unplacedCount());
    update();
}

bool MapCanvas::agedSincePaint() const
{
    return currentMinute() != m_baseKey.minute;
}

qint64 MapCanvas::currentMinute() const
{
    return nowMs() / 60000;
}

void MapCanvas::setOwnPosition(double lat, double lon)
{
    if (m_hasOwn && m_ownLat == lat && m_ownLon == lon)
        return;
    m_hasOwn = true;
    m_ownLat = lat;
    m_ownLon = lon;
    if (m_wantedKind == MapProjection::AzimuthalEquidistant)
        applyProjection(MapProjection::azimuthal(lat, lon));
    update();
}

void MapCanvas::clearOwnPosition()
{
    if (!m_hasOwn)
        return;
    m_hasOwn = false;
    applyProjection(MapProjection::equirectangular());
    update();
}

void MapCanvas::setProjectionKind(MapProjection::Kind kind)
{
    m_wantedKind = kind;
    if (kind == MapProjection::AzimuthalEquidistant && m_hasOwn)
        applyProjection(MapProjection::azimuthal(m_ownLat, m_ownLon));
    else
        applyProjection(MapProjection::equirectangular());
}

void MapCanvas::applyProjection(const MapProjection &projection)
{
    if (projection == m_projection && !m_landPath.isEmpty())
        return;
    m_projection = projection;
    m_landPath = MapPaths::regionPath(m_land, projection);
    m_graticule = graticule(projection);
    m_nightMinute = -1;
    m_markers.reproject(projection);
    m_zoom = 1.0;
    m_centre = QPointF();
    viewChanged();
}

void MapCanvas::setDistanceUnit(DistanceUnit unit)
{
    if (unit == m_unit)
        return;
    m_unit = unit;
    update();
}

void MapCanvas::resetView()
{
    m_zoom = 1.0;
    m_centre = QPointF();
    viewChanged();
}

void MapCanvas::viewChanged()
{
    m_clustersValid = false;
    update();
}

QTransform MapCanvas::planeToScreen() const
{
    const QRectF b = m_projection.bounds();
    const double scale = std::min(width() / b.width(), height() / b.height()) * m_zoom;
    QTransform t;
    t.translate(width() / 2.0, height() / 2.0);
    t.scale(scale, -scale);
    t.translate(-m_centre.x(), -m_centre.y());
    return t;
}

void MapCanvas::clampCentre()
{
    const QRectF b = m_projection.bounds();
    m_centre.setX(std::clamp(m_centre.x(), b.left(), b.right()));
    m_centre.setY(std::clamp(m_centre.y(), b.top(), b.bottom()));
}

void MapCanvas::zoomAt(const QPointF &screen, double factor)
{
    const double zoom = std::clamp(m_zoom * factor, 1.0, k_maxZoom);
    if (zoom == m_zoom)
        return;
    // Keep the point under the cursor where it is.
    const QPointF before = planeToScreen().inverted().map(screen);
    m_zoom = zoom;
    const QPointF after = planeToScreen().inverted().map(screen);
    m_centre += before - after;
    if (m_zoom == 1.0)
        m_centre = QPointF();
    clampCentre();
    viewChanged();
}

void MapCanvas::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_clustersValid = false;
}

void MapCanvas::ensureBase()
{
    const BaseKey key{size(), devicePixelRatioF(), m_projection, m_zoom, m_centre, currentMinute()};
    if (key == m_baseKey && !m_base.isNull())
        return;
    if (key.minute != m_nightMinute) {
        const SunPosition sun = SunPosition::at(QDateTime::fromMSecsSinceEpoch(key.minute * 60000, Qt::UTC));
        m_night = MapPaths::hemispherePath(sun.antisolarLat(), sun.antisolarLon(), m_projection);
        m_nightMinute = key.minute;
    }
    m_baseKey = key;
    m_base = widgetPixmap(key.dpr);
    QPainter p(&m_base);
    paintBase(p);
}

void MapCanvas::paintBase(QPainter &p)
{
    p.fillRect(QRect(QPoint(), size()), k_outside);
    p.setRenderHint(QPainter::Antialiasing);
    p.setTransform(planeToScreen());
    QPainterPath world;
    if (m_projection.kind() == MapProjection::Equirectangular)
        world.addRect(m_projection.bounds());
    else
        world.addEllipse(QPointF(), k_pi, k_pi);
    p.fillPath(world, k_sea);
    p.setClipPath(world);
    QPen grid(k_graticule, 0.0);
    grid.setCosmetic(true);
    p.strokePath(m_graticule, grid);
    QPen coast(k_coast, 0.0);
    coast.setCosmetic(true);
    p.setPen(coast);
    p.setBrush(k_land);
    p.drawPath(m_landPath);
    // The night side; its edge is the grey line.
    p.fillPath(m_night, QColor(0, 0, 0, 110));
}

void MapCanvas::ensureClusters()
{
    const BaseKey key{size(), devicePixelRatioF(), m_projection, m_zoom, m_centre, 0};
    if (m_clustersValid && key == m_clusterKey)
        return;
    m_markers.cluster(planeToScreen(), QRectF(rect()).adjusted(-k_cellPx, -k_cellPx, k_cellPx, k_cellPx),
                      k_cellPx);
    m_clusterKey = key;
    m_clustersValid = true;
}

void MapCanvas::ensureStamps()
{
    const qreal dpr = devicePixelRatioF();
    if (dpr == m_stampDpr)
        return;
    m_stampDpr = dpr;
    m_counts.clear();
    for (int b = 0; b < k_bandSlots; ++b) {
        const QColor colour = SpotColours::band(b - 1);
        const QColor heard = SpotColours::status(StationSpot::Heard);
        const QColor grey = SpotColours::greyed(colour);
        m_dots[b] = {disc(k_dotPx, dpr, colour, colour.darker(200), 1.0),
                     disc(k_dotPx, dpr, colour, heard, 2.0), disc(k_dotPx, dpr, grey, grey.darker(150), 1.0)};
        m_clusterDots[b] = {disc(k_clusterPx, dpr, colour.darker(130), colour.lighter(130), 1.5),
                            disc(k_clusterPx, dpr, colour.darker(130), heard, 2.0),
                            disc(k_clusterPx, dpr, grey.darker(130), grey, 1.5)};
    }
    m_selectedRing = disc(k_clusterPx + 8, dpr, Qt::transparent, QColor(255, 255, 255), 2.5);
}

const QPixmap &MapCanvas::countStamp(int count)
{
    const int shown = std::min(count, 1000);
    auto it = m_counts.find(shown);
    if (it != m_counts.end())
        return *it;
    const QString text = shown >= 1000 ? QStringLiteral("1k+") : QString::number(shown);
    QFont f = font();
    f.setPixelSize(9);
    f.setBold(true);
    QPixmap pm(QSize(k_clusterPx + 6, k_clusterPx) * m_stampDpr);
    pm.setDevicePixelRatio(m_stampDpr);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(QRectF(0, 0, k_clusterPx + 6, k_clusterPx), Qt::AlignCenter, text);
    p.end();
    return *m_counts.insert(shown, pm);
}

void MapCanvas::paintMarkers(QPainter &p)
{
    const std::vector<MapCluster> &clusters = m_markers.clusters();
    for (const MapCluster &c : clusters) {
        const int slot = std::clamp(c.band + 1, 0, k_bandSlots - 1);
        if (c.count == 1) {
            p.drawPixmap(c.screen - QPointF(k_dotPx / 2.0, k_dotPx / 2.0), m_dots[slot][c.shade]);
        } else {
            p.drawPixmap(c.screen - QPointF(k_clusterPx / 2.0, k_clusterPx / 2.0),
                         m_clusterDots[slot][c.shade]);
            p.drawPixmap(c.screen - QPointF(k_clusterPx / 2.0 + 3, k_clusterPx / 2.0), countStamp(c.count));
        }
    }
}

void MapCanvas::paintEvent(QPaintEvent *)
{
    countPaint();
    ensureBase();
    ensureClusters();
    ensureStamps();
    QPainter p(this);
    p.drawPixmap(0, 0, m_base);
    paintMarkers(p);
    paintSelection(p);
}
