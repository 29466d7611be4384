#include "app/alertpolicy.h"

#include "app/workedindex.h"
#include "model/stationmodel.h"

#include <QDateTime>
#include <QTimer>

namespace {

QSet<QString> loweredSet(const QStringList &entries)
{
    QSet<QString> set;
    for (const QString &entry : entries) {
        const QString trimmed = entry.trimmed();
        if (!trimmed.isEmpty())
            set.insert(trimmed.toLower());
    }
    return set;
}

// Every source, and one slot shared by any value outside them.
int sourceSlot(StationSpot::Source source)
{
    const int value = int(source);
    return value >= 0 && value < StationSpot::k_sourceCount ? value : StationSpot::k_sourceCount;
}

constexpr qint64 k_pruneEveryMs = 60 * 1000;

} // namespace

AlertPolicy::AlertPolicy(const WorkedIndex *worked, QObject *parent)
    : QObject(parent)
    , m_worked(worked)
    , m_deliveryTimer(new QTimer(this))
{
    m_deliveryTimer->setObjectName(QStringLiteral("alertDeliveryTimer"));
    m_deliveryTimer->setSingleShot(true);
    connect(m_deliveryTimer, &QTimer::timeout, this, &AlertPolicy::deliverPending);
}

AlertPolicy::~AlertPolicy() = default;

void AlertPolicy::setClock(Clock clock)
{
    m_clock = std::move(clock);
}

qint64 AlertPolicy::nowMSecs() const
{
    return m_clock ? m_clock() : QDateTime::currentMSecsSinceEpoch();
}

void AlertPolicy::setEnabled(bool enabled)
{
    m_enabled = enabled;
    if (!enabled) {
        m_pending.clear();
        m_deliveryTimer->stop();
    }
}

void AlertPolicy::setNeededOnly(bool neededOnly)
{
    m_neededOnly = neededOnly;
}

void AlertPolicy::setWatchCallsigns(const QStringList &callsigns)
{
    m_watchCallsigns = loweredSet(callsigns);
}

void AlertPolicy::setWatchReferences(const QStringList &references)
{
    m_watchReferences = loweredSet(references);
}

void AlertPolicy::seed(const QList<StationSpot> &spots)
{
    const qint64 now = nowMSecs();
    for (const StationSpot &spot : spots)
        markSeen(spot, now);
}

void AlertPolicy::processBatch(const QList<StationSpot> &batch)
{
    const qint64 now = nowMSecs();
    std::array<bool, StationSpot::k_sourceCount + 1> starting{};
    for (const StationSpot &spot : batch) {
        const int slot = sourceSlot(spot.source);
        starting[size_t(slot)] = !m_sourceStarted[size_t(slot)];
    }
    for (const StationSpot &spot : batch)
        consider(spot, starting[size_t(sourceSlot(spot.source))] ? Phase::Start : Phase::Running, now);
    for (size_t slot = 0; slot < starting.size(); ++slot)
        m_sourceStarted[slot] = m_sourceStarted[slot] || starting[slot];
    forgetOldActivations(now);
    deliverPending();
}

void AlertPolicy::consider(const StationSpot &spot, Phase phase, qint64 now)
{
    // Spots the table never shows: nothing to tune to or to select.
    if (!(spot.frequencyKhz > 0.0) || spot.callsign.trimmed().isEmpty())
        return;
    if (spot.spotTime.isValid() && now - spot.spotTime.toMSecsSinceEpoch() > k_activationGapMs)
        return;
    const bool known = markSeen(spot, now);
    // A station announcing its end is remembered, not announced.
    if (known || !m_enabled || spot.comments.contains(QLatin1String("qrt"), Qt::CaseInsensitive))
        return;
    if (wantsAlert(spot, phase))
        m_pending.append(spot);
}

bool AlertPolicy::markSeen(const StationSpot &spot, qint64 now)
{
    const QString call = spot.callsign.trimmed().toLower();
    const QString reference = spot.reference.trimmed().toLower();
    const auto recent = [now](const QHash<QString, qint64> &seen, const QString &key) {
        const auto it = seen.constFind(key);
        return it != seen.cend() && now - it.value() <= k_activationGapMs;
    };
    // A cluster spot names no reference: it is the activation already seen
    // under any reference of that call, not news.
    const QString activation = call + QLatin1Char('|') + reference;
    const bool known = reference.isEmpty() ? recent(m_callSeen, call) : recent(m_activationSeen, activation);
    m_activationSeen.insert(activation, now);
    m_callSeen.insert(call, now);
    return known;
}

bool AlertPolicy::isWatched(const StationSpot &spot) const
{
    return m_watchCallsigns.contains(spot.callsign.trimmed().toLower()) ||
           m_watchReferences.contains(spot.reference.trimmed().toLower());
}

bool AlertPolicy::wantsAlert(const StationSpot &spot, Phase phase) const
{
    if (isWatched(spot))
        return !(m_neededOnly && m_worked && m_worked->isWorkedOnBand(spot));
    // Needed references alone never alert for what was on the air at start.
    if (phase == Phase::Start || !m_neededOnly || !m_watchCallsigns.isEmpty() || !m_watchReferences.isEmpty())
        return false;
    return !spot.reference.trimmed().isEmpty() && !(m_worked && m_worked->isReferenceWorked(spot.reference));
}

void AlertPolicy::forgetOldActivations(qint64 now)
{
    if (now - m_lastPruneMs < k_pruneEveryMs)
        return;
    m_lastPruneMs = now;
    const auto prune = [now](QHash<QString, qint64> &seen) {
        for (auto it = seen.begin(); it != seen.end();)
            it = now - it.value() > k_activationGapMs ? seen.erase(it) : std::next(it);
    };
    prune(m_activationSeen);
    prune(m_callSeen);
}

void AlertPolicy::deliverPending()
{
    m_deliveryTimer->stop();
    if (m_pending.isEmpty() || !m_enabled)
        return;
    const qint64 now = nowMSecs();
    const qint64 elapsed = now - m_lastAlertMs;
    // A clock set back counts as time passed rather than holding alerts for hours.
    if (m_hasAlerted && elapsed >= 0 && elapsed < k_minAlertIntervalMs) {
        m_deliveryTimer->start(int(k_minAlertIntervalMs - elapsed));
        return;
    }
    const StationSpot first = m_pending.takeFirst();
    const int more = int(m_pending.size());
    m_pending.clear();
    m_lastAlertMs = now;
    m_hasAlerted = true;
    emit alert(makeAlert(first, more));
}

SpotAlert AlertPolicy::makeAlert(const StationSpot &spot, int moreCount)
{
    SpotAlert alert;
    alert.spotKey = spot.key();
    alert.moreCount = moreCount;
    alert.title = spot.reference.isEmpty() ? spot.callsign
                                           : QStringLiteral("%1 at %2").arg(spot.callsign, spot.reference);
    QStringList lines;
    if (!spot.referenceName.isEmpty())
        lines << spot.referenceName;
    lines << QStringLiteral("%1 kHz %2")
                 .arg(StationModel::formatFrequency(spot.frequencyKhz), spot.mode)
                 .trimmed();
    if (moreCount > 0)
        lines << QStringLiteral("and %1 more activations").arg(moreCount);
    alert.body = lines.join(QLatin1Char('\n'));
    return alert;
}
