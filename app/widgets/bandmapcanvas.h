#pragma once

#include "app/widgets/spotcanvas.h"
#include "model/spotcolours.h"

#include <QPixmap>
#include <QRectF>
#include <QStaticText>

#include <vector>

class SpotFilterProxyModel;

// One band as a vertical frequency scale: the band plan's segments shaded,
// the visible spots of the band at their frequencies with labels that never
// overlap (a spot that finds no free place keeps its tick only), the rig's
// frequency as a marker. Lower frequencies at the top.
class BandMapCanvas final : public SpotCanvas
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BandMapCanvas)

public:
    static constexpr int k_scaleWidth = 78;
    static constexpr int k_labelWidth = 150;
    static constexpr double k_minSpanKhz = 2.0;

    explicit BandMapCanvas(SpotFilterProxyModel *proxy, QWidget *parent = nullptr);
    ~BandMapCanvas() override;

    // The rig's frequency from the poll; 0 or less when there is no rig.
    // A frequency in a band brings that band.
    void setRigFrequency(double khz);
    double rigFrequency() const { return m_rigKhz; }
    // Index into k_bands.
    void setBand(int band);
    int band() const { return m_band; }
    void setRegion(int region);
    int region() const { return m_region; }
    // The shown range, lowest frequency at the top.
    void setRange(double lowKhz, double spanKhz);
    double rangeLowKhz() const { return m_lowKhz; }
    double rangeSpanKhz() const { return m_spanKhz; }

    int spotCount() const { return int(m_entries.size()); }
    // The label rectangle of a spot, or a null rectangle when it has none.
    QRectF labelRect(const QString &key);
    double yForKhz(double khz) const;
    double khzForY(double y) const;

signals:
    // The operator clicked the scale where no spot is: tune there.
    void tuneRequested(double khz);
    void bandChanged(int band);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void rebuild(const SpotFilterProxyModel *proxy) override;
    // Ages fade by the minute; nothing else moves with time.
    bool agedSincePaint() const override { return !m_entries.empty(); }

private:
    struct Entry
    {
        QString key;
        double khz = 0.0;
        qint64 timeMs = 0;
        int source = 0;
        SpotColours::Shade shade = SpotColours::Active;
        QString text;
        QStaticText label;
        bool operator==(const Entry &o) const
        {
            return key == o.key && khz == o.khz && timeMs == o.timeMs && source == o.source &&
                   shade == o.shade && text == o.text;
        }
    };
    struct Placed
    {
        int entry;
        double tickY;
        QRectF rect; // null: tick only
    };

    void ensureLayout();
    void invalidateLayout();
    int hitEntry(const QPointF &pos);
    void paintScale(QPainter &p);
    void paintSpots(QPainter &p);
    void paintRig(QPainter &p);
    int alphaForAge(qint64 timeMs, qint64 now) const;
    QColor entryColour(const Entry &e, qint64 now) const;

    std::vector<Entry> m_entries; // by frequency
    std::vector<Placed> m_placed;
    bool m_layoutValid = false;
    QPixmap m_scalePixmap;
    bool m_scaleValid = false;
    int m_band = 5; // 20m until told otherwise
    int m_region = 2;
    double m_lowKhz = 0.0;
    double m_spanKhz = 0.0;
    double m_rigKhz = 0.0;
};
