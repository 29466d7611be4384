#pragma once

#include "model/stationspot.h"

#include <QHash>
#include <QList>
#include <QMetaType>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <array>
#include <functional>

class QTimer;
class WorkedIndex;

// One notification to show: who, where, and the spot a click on it selects.
struct SpotAlert
{
    QString spotKey;
    QString title; // "K1ABC at US-1234", or the call sign alone
    QString body;  // name, frequency and mode, and "and %1 more activations" when summarising
    int moreCount = 0;
};

Q_DECLARE_METATYPE(SpotAlert)

// Decides which spots deserve the operator's attention, and when: once per
// activation (call sign + reference), at most one alert every five seconds,
// and no flood of alerts for what was already on the air at start.
class AlertPolicy final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AlertPolicy)

public:
    // Milliseconds since the Unix epoch, UTC.
    using Clock = std::function<qint64()>;

    // An activation not spotted for this long is over; seen again, it alerts anew.
    static constexpr qint64 k_activationGapMs = 3 * 3600 * 1000;
    static constexpr qint64 k_minAlertIntervalMs = 5000;

    // worked: the operator's worked index, for "alertNeededOnly"; may be null.
    explicit AlertPolicy(const WorkedIndex *worked = nullptr, QObject *parent = nullptr);
    ~AlertPolicy() override;

    void setClock(Clock clock);
    qint64 nowMSecs() const;

    // Off: spots are still remembered as seen, so switching on alerts no backlog.
    void setEnabled(bool enabled);
    bool isEnabled() const { return m_enabled; }
    // Watch-list alerts only for spots not worked on their band; without a
    // watch list, an alert for every activation of a reference never worked.
    void setNeededOnly(bool neededOnly);
    bool isNeededOnly() const { return m_neededOnly; }
    void setWatchCallsigns(const QStringList &callsigns);
    void setWatchReferences(const QStringList &references);

    // Spots already on the air before this run (the snapshot): seen, never alerted.
    void seed(const QList<StationSpot> &spots);
    // A batch as a source delivered it. A source's first batch only seeds,
    // except for new activations on a watch list.
    void processBatch(const QList<StationSpot> &batch);

    int pendingAlertCount() const { return int(m_pending.size()); }

public slots:
    // Sends the waiting alerts as one, once five seconds have passed since the last.
    void deliverPending();

signals:
    void alert(const SpotAlert &alert);

private:
    enum class Phase { Start, Running };

    void consider(const StationSpot &spot, Phase phase, qint64 now);
    // Remembers the spot's activation; true when it was already known.
    bool markSeen(const StationSpot &spot, qint64 now);
    bool isWatched(const StationSpot &spot) const;
    bool wantsAlert(const StationSpot &spot, Phase phase) const;
    void forgetOldActivations(qint64 now);
    static SpotAlert makeAlert(const StationSpot &spot, int moreCount);

    const WorkedIndex *m_worked;
    Clock m_clock;
    QTimer *m_deliveryTimer;
    bool m_enabled = true;
    bool m_neededOnly = false;
    QSet<QString> m_watchCallsigns;  // lower-cased
    QSet<QString> m_watchReferences; // lower-cased
    // Last time each activation ("call|reference", lower-cased) and each call was spotted.
    QHash<QString, qint64> m_activationSeen;
    QHash<QString, qint64> m_callSeen;
    // Every source, and one for any other value.
    std::array<bool, StationSpot::k_sourceCount + 1> m_sourceStarted{};
    QList<StationSpot> m_pending;
    qint64 m_lastAlertMs = 0;
    bool m_hasAlerted = false;
    qint64 m_lastPruneMs = 0;
};
