#include "app/widgets/bandmapcanvas.h"

#include "model/bandplan.h"
#include "model/bands.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"

#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr int k_rowPx = 15;
constexpr int k_tickX = BandMapCanvas::k_scaleWidth;
constexpr int k_labelGap = 14;
constexpr double k_wheelStep = 1.25;
constexpr qint64 k_freshMs = 5 * 60000;
constexpr qint64 k_fadedMs = 30 * 60000;
const QColor k_background(13, 21, 33);
const QColor k_scale(22, 33, 62);
const QColor k_tickColour(144, 144, 160);
const QColor k_rig(255, 80, 64);

QColor segmentColour(BandPlan::Kind kind)
{
    switch (kind) {
    case BandPlan::Cw:
        return QColor(64, 120, 200, 90);
    case BandPlan::Digital:
        return QColor(180, 90, 200, 90);
    case BandPlan::Phone:
        break;
    }
    return QColor(80, 170, 90, 90);
}

// A translucent colour laid over an opaque one, as one opaque colour: large
// translucent fills cost far more than plain ones.
QColor over(const QColor &below, const QColor &above)
{
    const double a = above.alphaF();
    const auto mix = [a](int b, int t) { return int(b * (1.0 - a) + t * a + 0.5); };
    return QColor(mix(below.red(), above.red()), mix(below.green(), above.green()),
                  mix(below.blue(), above.blue()));
}

// Tick spacing that puts a labelled tick every 40 px or more.
double tickStep(double khzPerPx)
{
    for (const double step :
         {0.1, 0.5, 1.0, 2.0, 5.0, 10.0, 25.0, 50.0, 100.0, 250.0, 500.0, 1000.0, 2500.0}) {
        if (step / khzPerPx >= 40.0)
            return step;
    }
    return 5000.0;
}

} // namespace

BandMapCanvas::BandMapCanvas(SpotFilterProxyModel *proxy, QWidget *parent)
    : SpotCanvas(proxy, parent)
{
    setObjectName(QStringLiteral("bandMapCanvas"));
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(k_scaleWidth + k_labelWidth, 160);
    setBand(m_band);
}

BandMapCanvas::~BandMapCanvas() = default;

void BandMapCanvas::rebuild(const SpotFilterProxyModel *proxy)
{
    const auto *model = proxy ? qobject_cast<const StationModel *>(proxy->sourceModel()) : nullptr;
    std::vector<Entry> entries;
    if (model && m_band >= 0) {
        const Band &band = k_bands[size_t(m_band)];
        const QList<StationSpot> &spots = model->spots();
        for (int r = 0, rows = proxy->rowCount(); r < rows; ++r) {
            const int source = proxy->mapToSource(proxy->index(r, 0)).row();
            if (source < 0 || source >= spots.size())
                continue;
            const StationSpot &s = spots.at(source);
            if (s.frequencyKhz < band.lowKhz || s.frequencyKhz > band.highKhz)
                continue;
            Entry e;
            e.key = s.key();
            e.khz = s.frequencyKhz;
            e.timeMs = s.spotTime.isValid() ? s.spotTime.toMSecsSinceEpoch() : 0;
            e.source = s.source;
            e.shade = SpotColours::shade(s.status);
            e.text = s.reference.isEmpty() ? s.callsign : s.callsign + QLatin1Char(' ') + s.reference;
            entries.push_back(std::move(e));
        }
        std::stable_sort(entries.begin(), entries.end(),
                         [](const Entry &a, const Entry &b) { return a.khz < b.khz; });
    }
    if (entries == m_entries)
        return;
    for (Entry &e : entries) {
        e.label.setText(e.text);
        e.label.setTextFormat(Qt::PlainText);
        e.label.setPerformanceHint(QStaticText::AggressiveCaching);
    }
    m_entries = std::move(entries);
    invalidateLayout();
}

void BandMapCanvas::invalidateLayout()
{
    m_layoutValid = false;
    m_scaleValid = false;
    update();
}

void BandMapCanvas::setRigFrequency(double khz)
{
    const double before = m_rigKhz;
    m_rigKhz = khz;
    const int band = khz > 0.0 ? bandIndexForFrequency(khz) : -1;
    if (band >= 0 && band != m_band) {
        setBand(band);
        return;
    }
    // The poll repeats itself twice a second: repaint only a marker that moved.
    if (std::abs(yForKhz(before) - yForKhz(khz)) >= 0.5 || (before > 0.0) != (khz > 0.0))
        update();
}

void BandMapCanvas::setBand(int band)
{
    if (band < 0 || band >= int(k_bands.size()))
        return;
    const bool changed = band != m_band || m_spanKhz <= 0.0;
    m_band = band;
    if (!changed)
        return;
    const Band &b = k_bands[size_t(band)];
    m_lowKhz = b.lowKhz;
    m_spanKhz = b.highKhz - b.lowKhz;
    m_entries.clear();
    rebuildNow();
    invalidateLayout();
    emit bandChanged(band);
}

void BandMapCanvas::setRegion(int region)
{
    region = BandPlan::validRegion(region);
    if (region == m_region)
        return;
    m_region = region;
    m_scaleValid = false;
    update();
}

void BandMapCanvas::setRange(double lowKhz, double spanKhz)
{
    const Band &b = k_bands[size_t(m_band)];
    const double width = b.highKhz - b.lowKhz;
    spanKhz = std::clamp(spanKhz, std::min(k_minSpanKhz, width), width);
    lowKhz = std::clamp(lowKhz, b.lowKhz, b.highKhz - spanKhz);
    if (lowKhz == m_lowKhz && spanKhz == m_spanKhz)
        return;
    m_lowKhz = lowKhz;
    m_spanKhz = spanKhz;
    invalidateLayout();
}

double BandMapCanvas::yForKhz(double khz) const
{
    return m_spanKhz > 0.0 ? (khz - m_lowKhz) / m_spanKhz * height() : 0.0;
}

double BandMapCanvas::khzForY(double y) const
{
    return m_lowKhz + y / std::max(1, height()) * m_spanKhz;
}

void BandMapCanvas::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_layoutValid = false;
    m_scaleValid = false;
}

void BandMapCanvas::ensureLayout()
{
    if (m_layoutValid)
        return;
    m_layoutValid = true;
    m_placed.clear();
    const int columns = std::max(1, (width() - k_tickX - k_labelGap) / k_labelWidth);
    // Each column's lowest free y; a label goes into the first column with room at its own height.
    std::vector<double> freeFrom(size_t(columns), -1e9);
    const auto first = std::lower_bound(m_entries.begin(), m_entries.end(), m_lowKhz,
                                        [](const Entry &e, double khz) { return e.khz < khz; });
    for (auto it = first; it != m_entries.end() && it->khz <= m_lowKhz + m_spanKhz; ++it) {
        const double y = yForKhz(it->khz);
        const double top = std::clamp(y - k_rowPx / 2.0, 0.0, double(std::max(0, height() - k_rowPx)));
        Placed placed{int(it - m_entries.begin()), y, QRectF()};
        for (int c = 0; c < columns; ++c) {
            if (freeFrom[size_t(c)] <= top) {
                placed.rect = QRectF(k_tickX + k_labelGap + c * k_labelWidth, top, k_labelWidth - 4, k_rowPx);
                freeFrom[size_t(c)] = top + k_rowPx;
                break;
            }
        }
        m_placed.push_back(placed);
    }
}

QRectF BandMapCanvas::labelRect(const QString &key)
{
    ensureLayout();
    for (const Placed &p : m_placed) {
        if (m_entries[size_t(p.entry)].key == key)
            return p.rect;
    }
    return {};
}

int BandMapCanvas::alphaForAge(qint64 timeMs, qint64 now) const
{
    const qint64 age = timeMs > 0 ? now - timeMs : k_fadedMs;
    if (age <= k_freshMs)
        return 255;
    if (age >= k_fadedMs)
        return 90;
    // Whole minutes, so the fading moves only with the minute tick.
    const qint64 minutes = (age - k_freshMs) / 60000;
    return int(255 - (255 - 90) * minutes * 60000 / (k_fadedMs - k_freshMs));
}

void BandMapCanvas::paintEvent(QPaintEvent *)
{
    countPaint();
    ensureLayout();
    // The scale and the shading change with the range alone: kept in a pixmap.
    const qreal dpr = devicePixelRatioF();
    if (!m_scaleValid || m_scalePixmap.size() != size() * dpr) {
        m_scalePixmap = widgetPixmap(dpr);
        QPainter s(&m_scalePixmap);
        s.fillRect(rect(), k_background);
        paintScale(s);
        m_scaleValid = true;
    }
    QPainter p(this);
    p.drawPixmap(0, 0, m_scalePixmap);
    paintSpots(p);
    paintRig(p);
}

void BandMapCanvas::paintScale(QPainter &p)
{
    p.fillRect(QRect(0, 0, k_scaleWidth, height()), k_scale);
    for (const BandPlan::Segment &s : BandPlan::segments(m_region, m_band)) {
        const double top = yForKhz(s.lowKhz);
        const double bottom = yForKhz(s.highKhz);
        if (bottom < 0 || top > height())
            continue;
        QColor faint = segmentColour(s.kind);
        p.fillRect(QRectF(k_scaleWidth - 12, top, 12, bottom - top), over(k_scale, faint));
        faint.setAlpha(20);
        p.fillRect(QRectF(k_scaleWidth, top, width() - k_scaleWidth, bottom - top),
                   over(k_background, faint));
    }
    const double step = tickStep(m_spanKhz / std::max(1, height()));
    p.setPen(k_tickColour);
    const int decimals = step < 1.0 ? 1 : 0;
    for (double khz = std::ceil(m_lowKhz / step) * step; khz <= m_lowKhz + m_spanKhz; khz += step) {
        const double y = yForKhz(khz);
        p.drawLine(QPointF(k_scaleWidth - 18, y), QPointF(k_scaleWidth - 12, y));
        p.drawText(QRectF(2, y - 8, k_scaleWidth - 22, 16), Qt::AlignRight | Qt::AlignVCenter,
                   QString::number(khz, 'f', decimals));
    }
}

QColor BandMapCanvas::entryColour(const Entry &e, qint64 now) const
{
    QColor colour = e.shade == SpotColours::Greyed ? SpotColours::greyed(SpotColours::programme(e.source))
                                                   : SpotColours::programme(e.source);
    colour.setAlpha(alphaForAge(e.timeMs, now));
    // Opaque: long translucent lines are handed to worker threads piece by
    // piece and cost a hundred times more than plain ones.
    return over(k_background, colour);
}

void BandMapCanvas::paintSpots(QPainter &p)
{
    const qint64 now = nowMs();
    // Ticks and leaders first, as one-pixel rectangles; the labels then cover
    // the leaders that pass behind nearer columns.
    for (const Placed &placed : m_placed) {
        const QColor colour = entryColour(m_entries[size_t(placed.entry)], now);
        const double y = std::floor(placed.tickY);
        const double end = placed.rect.isNull() ? k_tickX + 4 : placed.rect.left();
        p.fillRect(QRectF(k_scaleWidth - 10, y, end - (k_scaleWidth - 10), 1), colour);
        const double labelMid = std::floor(placed.rect.center().y());
        if (!placed.rect.isNull() && labelMid != y)
            p.fillRect(QRectF(end - 1, std::min(y, labelMid), 1, std::abs(labelMid - y) + 1), colour);
    }
    for (const Placed &placed : m_placed) {
        if (placed.rect.isNull())
            continue;
        const Entry &e = m_entries[size_t(placed.entry)];
        const QColor colour = entryColour(e, now);
        const bool selected = e.key == selectedKey();
        p.fillRect(placed.rect, selected ? QColor(10, 34, 56) : k_background);
        if (selected) {
            p.setPen(colour);
            p.drawRect(placed.rect);
        }
        p.setPen(e.shade == SpotColours::Heard ? SpotColours::status(StationSpot::Heard) : colour);
        p.drawStaticText(placed.rect.topLeft() + QPointF(4, 0), e.label);
    }
}

void BandMapCanvas::paintRig(QPainter &p)
{
    if (m_rigKhz <= 0.0 || m_rigKhz < m_lowKhz || m_rigKhz > m_lowKhz + m_spanKhz)
        return;
    const double y = yForKhz(m_rigKhz);
    p.setPen(QPen(k_rig, 2.0));
    p.drawLine(QPointF(0, y), QPointF(width(), y));
    p.setBrush(k_rig);
    p.drawPolygon(QPolygonF({QPointF(0, y - 6), QPointF(9, y), QPointF(0, y + 6)}));
}

int BandMapCanvas::hitEntry(const QPointF &pos)
{
    ensureLayout();
    int best = -1;
    double bestDistance = 4.0;
    for (const Placed &placed : m_placed) {
        if (placed.rect.contains(pos))
            return placed.entry;
        // A tick on the scale answers too, the nearest within a few pixels.
        if (pos.x() >= k_scaleWidth - 12 && pos.x() <= k_tickX + k_labelGap &&
            std::abs(placed.tickY - pos.y()) <= bestDistance) {
            bestDistance = std::abs(placed.tickY - pos.y());
            best = placed.entry;
        }
    }
    return best;
}

void BandMapCanvas::mouseMoveEvent(QMouseEvent *event)
{
    const int entry = hitEntry(event->position());
    if (entry < 0) {
        QToolTip::hideText();
        return;
    }
    const Entry &e = m_entries[size_t(entry)];
    QToolTip::showText(
        event->globalPosition().toPoint(),
        e.text + QLatin1String("  ") + StationModel::formatFrequency(e.khz) + QLatin1String(" kHz"), this);
}

void BandMapCanvas::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mouseReleaseEvent(event);
    const int entry = hitEntry(event->position());
    if (entry >= 0) {
        activate(m_entries[size_t(entry)].key);
        return;
    }
    if (event->position().x() <= k_tickX + k_labelGap) {
        // To the nearest 100 Hz, as a dial would.
        emit tuneRequested(std::round(khzForY(event->position().y()) * 10.0) / 10.0);
    }
}

void BandMapCanvas::wheelEvent(QWheelEvent *event)
{
    const int steps = event->angleDelta().y() / 120;
    event->accept();
    if (steps == 0)
        return;
    if (event->modifiers() & Qt::ControlModifier) {
        const double at = khzForY(event->position().y());
        const double span = m_spanKhz * std::pow(k_wheelStep, -steps);
        const double fraction = (at - m_lowKhz) / m_spanKhz;
        setRange(at - fraction * span, span);
    } else {
        setRange(m_lowKhz - steps * m_spanKhz * 0.1, m_spanKhz);
    }
}
