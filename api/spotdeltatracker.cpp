#include "api/spotdeltatracker.h"

#include "api/apijson.h"
#include "model/spotfilterproxymodel.h"

#include <QSet>

#include <limits>

namespace {

// Spots without a time never age out of the view.
qint64 ageOrder(const StationSpot &spot)
{
    return spot.spotTime.isValid() ? spot.spotTime.toMSecsSinceEpoch() : std::numeric_limits<qint64>::max();
}

} // namespace

SpotDeltaTracker::SpotDeltaTracker(const StationModel *model, const SpotFilterProxyModel *proxy,
                                   QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_proxy(proxy)
{
    connect(model, &StationModel::spotsMerged, this, &SpotDeltaTracker::applyMergeChanges);
    connect(model, &StationModel::dataChanged, this, &SpotDeltaTracker::onDataChanged);
    connect(model, &StationModel::modelReset, this, [this] {
        // A merge says what it changed right after its reset; an earlier
        // reset nobody explained (a cleared table) needs the walk.
        m_resync = m_resync || m_resetPending;
        m_resetPending = true;
        signalOnce();
    });
    // The model adds no rows outside a merge today; should it, walk the table.
    connect(model, &StationModel::rowsInserted, this, &SpotDeltaTracker::requestResync);
    connect(model, &StationModel::rowsRemoved, this, &SpotDeltaTracker::requestResync);
    connect(model, &StationModel::layoutChanged, this, &SpotDeltaTracker::requestResync);
    connect(proxy, &SpotFilterProxyModel::visibilityRulesChanged, this, &SpotDeltaTracker::requestResync);
}

SpotDeltaTracker::~SpotDeltaTracker() = default;

void SpotDeltaTracker::setActive(bool active)
{
    if (active == m_active)
        return;
    m_active = active;
    m_sent.clear();
    m_sentByTime.clear();
    m_dirty.clear();
    m_snapshotSent = false;
    m_signalled = false;
    if (active) {
        m_resync = true;
        take(); // what is shown now is the clients' starting point
    }
}

void SpotDeltaTracker::applyMergeChanges(const StationModel::MergeChanges &changes)
{
    m_resetPending = false;
    if (!m_active)
        return;
    for (const int row : changes.addedRows)
        recordRow(row);
    for (const int row : changes.updatedRows)
        recordRow(row);
    for (const QString &key : changes.removedKeys)
        touch(key, std::nullopt);
}

void SpotDeltaTracker::onDataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                                     const QList<int> &roles)
{
    if (!m_active || !topLeft.isValid() || !bottomRight.isValid())
        return;
    // Colours (watch list, highlighted group) are not part of a spot object.
    if (!roles.isEmpty() && !roles.contains(Qt::DisplayRole))
        return;
    const int first = topLeft.column();
    const int last = bottomRight.column();
    if (first == StationModel::AgeColumn && last == StationModel::AgeColumn)
        return; // the age tick
    // Distance and bearing over many rows: the operator moved, no spot did.
    if (first >= StationModel::DistanceColumn && topLeft.row() != bottomRight.row())
        return;
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row)
        recordRow(row);
}

void SpotDeltaTracker::recordRow(int row)
{
    if (row < 0 || row >= m_model->spots().size())
        return;
    const StationSpot &spot = m_model->spots().at(row);
    touch(spot.key(), m_proxy->acceptsSpot(spot) ? std::optional<StationSpot>(spot) : std::nullopt);
}

void SpotDeltaTracker::touch(const QString &key, std::optional<StationSpot> spot)
{
    m_dirty.insert(key, std::move(spot));
    signalOnce();
}

void SpotDeltaTracker::requestResync()
{
    if (!m_active)
        return;
    m_resync = true;
    signalOnce();
}

void SpotDeltaTracker::signalOnce()
{
    if (!m_active || m_signalled)
        return;
    m_signalled = true;
    emit changed();
}

SpotDelta SpotDeltaTracker::take()
{
    SpotDelta delta;
    m_signalled = false;
    if (!m_active)
        return delta;
    if (m_resync || m_resetPending)
        resync();
    expireAged();
    for (auto it = m_dirty.cbegin(); it != m_dirty.cend(); ++it) {
        const QString &key = it.key();
        const auto sent = m_sent.find(key);
        if (it.value()) {
            const StationSpot &spot = *it.value();
            if (sent == m_sent.end())
                delta.added.append(spot);
            else if (!ApiJson::sameSpotJson(*sent, spot))
                delta.updated.append(spot);
            else
                continue;
            setSent(key, spot);
        } else if (sent != m_sent.end()) {
            delta.removed.append(key);
            eraseSent(sent);
        } else if (m_snapshotSent) {
            delta.removed.append(key);
        }
    }
    m_dirty.clear();
    m_snapshotSent = false;
    return delta;
}

// The one whole-table walk: after the rules changed or a reset that no
// change set explains.
void SpotDeltaTracker::resync()
{
    m_resync = false;
    m_resetPending = false;
    m_dirty.clear();
    QSet<QString> shown;
    shown.reserve(m_sent.size());
    for (const StationSpot &spot : m_model->spots()) {
        if (!m_proxy->acceptsSpot(spot))
            continue;
        QString key = spot.key();
        const auto sent = m_sent.constFind(key);
        if (sent == m_sent.cend() || !ApiJson::sameSpotJson(*sent, spot))
            m_dirty.insert(key, spot);
        shown.insert(std::move(key));
    }
    for (auto it = m_sent.cbegin(); it != m_sent.cend(); ++it) {
        if (!shown.contains(it.key()))
            m_dirty.insert(it.key(), std::nullopt);
    }
}

// A merge resets the proxy, which then drops rows past the age limit without
// a word; those are found oldest first, without walking the table.
void SpotDeltaTracker::expireAged()
{
    const int maxAgeMins = m_proxy->maxAgeMins();
    if (maxAgeMins <= 0)
        return;
    // The proxy hides a spot whose whole seconds of age exceed the limit.
    const qint64 cutoff = m_model->nowMSecs() - (qint64(maxAgeMins) * 60 + 1) * 1000;
    for (auto it = m_sentByTime.cbegin(); it != m_sentByTime.cend() && it->first <= cutoff; ++it) {
        const auto dirty = m_dirty.constFind(it->second);
        if (dirty == m_dirty.cend() || !dirty.value() || ageOrder(*dirty.value()) <= cutoff)
            m_dirty.insert(it->second, std::nullopt);
    }
}

void SpotDeltaTracker::setSent(const QString &key, const StationSpot &spot)
{
    const auto sent = m_sent.find(key);
    if (sent != m_sent.end())
        m_sentByTime.erase({ageOrder(*sent), key});
    m_sent.insert(key, spot);
    m_sentByTime.insert({ageOrder(spot), key});
}

void SpotDeltaTracker::eraseSent(QHash<QString, StationSpot>::iterator it)
{
    m_sentByTime.erase({ageOrder(*it), it.key()});
    m_sent.erase(it);
}
