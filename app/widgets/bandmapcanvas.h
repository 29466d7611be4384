#pragma once

#include "model/spotcolours.h"

#include <QPixmap>
#include <QPointer>
#include <QRectF>
#include <QStaticText>
#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

class QTimer;
class SpotFilterProxyModel;

// One band as a vertical frequency scale: the band plan's segments shaded,
// the visible spots of the band at their frequencies with labels that never
// overlap (a spot that finds no free place keeps its tick only), the rig's
// frequency as a marker. Lower frequencies at the top.
class BandMapCanvas final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BandMapCanvas)

public:
    // Milliseconds since the Unix epoch, UTC: the clock of the age fading.
    using Clock = std::function<qint64()>;
    static constexpr int k_scaleWidth = 78;
    static constexpr int k_labelWidth = 150;
    static constexpr int k_fadeTickMs = 60000;
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
    void setSelectedKey(const QString &key);
    void setClock(Clock clock);
    // The shown range, lowest frequency at the top.
    void setRange(double lowKhz, double spanKhz);
    double rangeLowKhz() const { return m_lowKhz; }
    double rangeSpanKhz() const { return m_spanKhz; }

    void rebuildNow();
    int spotCount() const { return int(m_entries.size()); }
    // The label rectangle of a spot, or a null rectangle when it has none.
    QRectF labelRect(const QString &key);
    double yForKhz(double khz) const;
    double khzForY(double y) const;
    int paintCount() const { return m_paints; }

signals:
    // The operator picked this spot: select it (and so tune).
    void spotActivated(const QString &key);
    // The operator clicked the scale where no spot is: tune there.
    void tuneRequested(double khz);
    void bandChanged(int band);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

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

    void scheduleRebuild();
    void onProxyDataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight);
    void ensureLayout();
    void invalidateLayout();
    int hitEntry(const QPointF &pos);
    void paintScale(QPainter &p);
    void paintSpots(QPainter &p);
    void paintRig(QPainter &p);
    int alphaForAge(qint64 timeMs, qint64 now) const;
    QColor entryColour(const Entry &e, qint64 now) const;

    QPointer<SpotFilterProxyModel> m_proxy;
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
    QString m_selectedKey;
    Clock m_clock;
    QTimer *m_fadeTimer;
    bool m_rebuildPending = false;
    bool m_dirtyWhileHidden = false;
    int m_paints = 0;
};
