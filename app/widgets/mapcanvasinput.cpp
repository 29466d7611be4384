// MapCanvas: the selection's path, and what the mouse and keys do.
#include "app/widgets/mapcanvas.h"

#include "model/mappaths.h"
#include "model/stationmodel.h"

#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr int k_dragPx = 4;
constexpr double k_hitPx = 9.0;
constexpr int k_tooltipLines = 8;
constexpr int k_menuEntries = 40;
constexpr double k_wheelStep = 1.25;

QString describe(const MapMarker &m)
{
    return QStringLiteral("%1  %2  %3 kHz  %4")
        .arg(m.callsign, m.reference, StationModel::formatFrequency(m.frequencyKhz), m.mode)
        .simplified();
}

} // namespace

bool MapCanvas::markerScreenPos(const QString &key, QPointF &pos)
{
    const int index = m_markers.indexOfKey(key);
    if (index < 0)
        return false;
    ensureClusters();
    const std::vector<int> &members = m_markers.clusterMembers();
    for (const MapCluster &c : m_markers.clusters()) {
        for (int i = 0; i < c.count; ++i) {
            if (members[size_t(c.first + i)] == index) {
                pos = c.screen;
                return true;
            }
        }
    }
    return false;
}

QString MapCanvas::pathText() const
{
    const int index = m_markers.indexOfKey(selectedKey());
    if (!m_hasOwn || index < 0)
        return {};
    const MapMarker &m = m_markers.markers()[size_t(index)];
    const GreatCircle gc = GreatCircle::between(m_ownLat, m_ownLon, m.lat, m.lon);
    const auto bearing = [](double deg) -> QString {
        return QString::number(qint64(std::floor(deg + 0.5)) % 360) + QChar(0x00B0);
    };
    return QStringLiteral("%1: short path %2 at %3, long path %4 at %5")
        .arg(m.callsign, GreatCircle::formatDistance(gc.shortMi, m_unit), bearing(gc.shortBearingDeg),
             GreatCircle::formatDistance(gc.longMi, m_unit), bearing(gc.longBearingDeg));
}

void MapCanvas::paintSelection(QPainter &p)
{
    const QTransform toScreen = planeToScreen();
    p.setRenderHint(QPainter::Antialiasing);
    if (m_hasOwn) {
        const QPointF own = toScreen.map(m_projection.project(m_ownLat, m_ownLon));
        p.setPen(QPen(QColor(255, 255, 255), 2.0));
        p.drawLine(own - QPointF(5, 5), own + QPointF(5, 5));
        p.drawLine(own - QPointF(5, -5), own + QPointF(5, -5));
    }
    const int index = m_markers.indexOfKey(selectedKey());
    if (index < 0)
        return;
    const MapMarker &m = m_markers.markers()[size_t(index)];
    if (m_hasOwn) {
        const QPainterPath path =
            MapPaths::linePath(GreatCircle::pathPoints(m_ownLat, m_ownLon, m.lat, m.lon, 128), m_projection);
        QPen pen(QColor(255, 208, 96), 2.0);
        pen.setCosmetic(true);
        p.save();
        p.setTransform(toScreen);
        p.strokePath(path, pen);
        p.restore();
    }
    const QPointF at = toScreen.map(m.plane);
    p.drawPixmap(at - QPointF(m_selectedRing.width(), m_selectedRing.height()) / (2.0 * m_stampDpr),
                 m_selectedRing);
    const QString text = pathText();
    if (text.isEmpty())
        return;
    const QRect box = p.fontMetrics().boundingRect(text).adjusted(-6, -3, 6, 3);
    const QRect placed = box.translated(8 - box.left(), height() - 8 - box.bottom());
    p.fillRect(placed, QColor(0, 0, 0, 160));
    p.setPen(QColor(232, 224, 208));
    p.drawText(placed, Qt::AlignCenter, text);
}

QString MapCanvas::tooltipFor(int cluster) const
{
    const MapCluster &c = m_markers.clusters()[size_t(cluster)];
    QStringList lines;
    for (int i = 0; i < std::min(c.count, k_tooltipLines); ++i)
        lines.append(describe(m_markers.markers()[size_t(m_markers.clusterMembers()[size_t(c.first + i)])]));
    if (c.count > k_tooltipLines)
        lines.append(QStringLiteral("… and %1 more").arg(c.count - k_tooltipLines));
    return lines.join(QLatin1Char('\n'));
}

void MapCanvas::activateCluster(int cluster, const QPoint &globalPos)
{
    const MapCluster c = m_markers.clusters()[size_t(cluster)];
    const std::vector<int> &members = m_markers.clusterMembers();
    QString key;
    if (c.count == 1) {
        key = m_markers.markers()[size_t(members[size_t(c.first)])].key;
    } else if (!m_markers.isStacked(cluster) && m_zoom < k_maxZoom) {
        // Apart on the earth: come closer until they part on the screen.
        const QPointF centre = planeToScreen().inverted().map(c.screen);
        m_zoom = std::min(m_zoom * 4.0, k_maxZoom);
        m_centre = centre;
        clampCentre();
        viewChanged();
        return;
    } else {
        QMenu menu(this);
        for (int i = 0; i < std::min(c.count, k_menuEntries); ++i) {
            const MapMarker &m = m_markers.markers()[size_t(members[size_t(c.first + i)])];
            menu.addAction(describe(m))->setData(m.key);
        }
        const QAction *chosen = menu.exec(globalPos);
        if (!chosen)
            return;
        key = chosen->data().toString();
    }
    activate(key);
}

void MapCanvas::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    m_pressed = true;
    m_dragging = false;
    m_pressPos = event->position().toPoint();
    m_pressCentre = m_centre;
}

void MapCanvas::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint pos = event->position().toPoint();
    if (m_pressed && (m_dragging || (pos - m_pressPos).manhattanLength() >= k_dragPx)) {
        m_dragging = true;
        const QTransform inverse = planeToScreen().inverted();
        m_centre = m_pressCentre;
        m_centre += inverse.map(QPointF(m_pressPos)) - inverse.map(QPointF(pos));
        clampCentre();
        viewChanged();
        return;
    }
    ensureClusters();
    const int cluster = m_markers.clusterAt(event->position(), k_hitPx);
    if (cluster < 0)
        QToolTip::hideText();
    else
        QToolTip::showText(event->globalPosition().toPoint(), tooltipFor(cluster), this);
}

void MapCanvas::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_pressed)
        return QWidget::mouseReleaseEvent(event);
    m_pressed = false;
    if (m_dragging) {
        m_dragging = false;
        return;
    }
    ensureClusters();
    const int cluster = m_markers.clusterAt(event->position(), k_hitPx);
    if (cluster >= 0)
        activateCluster(cluster, event->globalPosition().toPoint());
}

void MapCanvas::wheelEvent(QWheelEvent *event)
{
    const int steps = event->angleDelta().y() / 120;
    if (steps != 0)
        zoomAt(event->position(), std::pow(k_wheelStep, steps));
    event->accept();
}

void MapCanvas::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Home:
    case Qt::Key_0:
        resetView();
        return;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoomAt(QPointF(width() / 2.0, height() / 2.0), 2.0);
        return;
    case Qt::Key_Minus:
        zoomAt(QPointF(width() / 2.0, height() / 2.0), 0.5);
        return;
    default:
        QWidget::keyPressEvent(event);
    }
}
