#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>

class QModelIndex;
class QPixmap;
class QTimer;
class SpotFilterProxyModel;

// What the map and the band map share: they draw the spots the table shows,
// read again at most once per turn of the event loop and not at all while
// hidden; they mark the selected spot; and a minute's tick repaints what
// moves with time. They repaint only when what they show changed.
class SpotCanvas : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SpotCanvas)

public:
    // Milliseconds since the Unix epoch, UTC.
    using Clock = std::function<qint64()>;
    static constexpr int k_tickMs = 60000;

    ~SpotCanvas() override;

    void setSelectedKey(const QString &key);
    const QString &selectedKey() const { return m_selectedKey; }
    void setClock(Clock clock);
    // Reads the proxy now rather than at the next turn of the event loop.
    void rebuildNow();
    // Paints since construction, for the test that nothing repaints needlessly.
    int paintCount() const { return m_paints; }

signals:
    // The operator picked this spot.
    void spotActivated(const QString &key);

protected:
    explicit SpotCanvas(SpotFilterProxyModel *proxy, QWidget *parent);

    // Reads what is drawn from the proxy (null once it is gone); repaints when that changed.
    virtual void rebuild(const SpotFilterProxyModel *proxy) = 0;
    // Whether the picture has aged since it was painted: the minute's tick repaints it then.
    virtual bool agedSincePaint() const = 0;

    void scheduleRebuild();
    // The operator's pick: selected here, and said.
    void activate(QString key);
    qint64 nowMs() const { return m_clock(); }
    void countPaint() { ++m_paints; }
    // A pixmap the size of the widget, for the part of the picture kept between paints.
    QPixmap widgetPixmap(qreal dpr) const;
    void showEvent(QShowEvent *event) override;

private:
    void onProxyDataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight);

    QPointer<SpotFilterProxyModel> m_proxy;
    QString m_selectedKey;
    Clock m_clock;
    QTimer *m_tickTimer;
    bool m_rebuildPending = false;
    bool m_dirtyWhileHidden = false;
    int m_paints = 0;
};
