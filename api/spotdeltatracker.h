#pragma once

#include "model/stationmodel.h"
#include "model/stationspot.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>
#include <set>
#include <utility>

class SpotFilterProxyModel;

// What the shown table gained, changed and lost between two deltas.
struct SpotDelta
{
    QList<StationSpot> added;
    QList<StationSpot> updated;
    QStringList removed; // keys
    bool isEmpty() const { return added.isEmpty() && updated.isEmpty() && removed.isEmpty(); }
};

// Follows the rows the filter shows, for the API's delta clients, without
// comparing whole tables: a merge reports its own change set, a mark or a
// position its row, and only a change of the filter's rules (or a reset that
// is not a merge) makes it walk the table. Changes fold until take(), which
// compares each touched key with what the clients were last sent.
class SpotDeltaTracker final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SpotDeltaTracker)

public:
    SpotDeltaTracker(const StationModel *model, const SpotFilterProxyModel *proxy, QObject *parent = nullptr);
    ~SpotDeltaTracker() override;

    // Inactive (no delta client) it keeps nothing; activated, the rows shown
    // now are taken as what the clients have.
    void setActive(bool active);
    bool isActive() const { return m_active; }

    // The changes since the last take; they count as sent from now on.
    SpotDelta take();
    // A snapshot of the current view went out: keys that vanish before the
    // next take are reported removed even if no delta ever carried them.
    void noteSnapshotSent() { m_snapshotSent = true; }
    int sentCount() const { return int(m_sent.size()); }

    void applyMergeChanges(const StationModel::MergeChanges &changes);

signals:
    // Something may have changed since the last take (once per take).
    void changed();

private:
    void onDataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight, const QList<int> &roles);
    void recordRow(int row);
    void touch(const QString &key, std::optional<StationSpot> spot);
    void requestResync();
    void resync();
    void expireAged();
    void setSent(const QString &key, const StationSpot &spot);
    void eraseSent(QHash<QString, StationSpot>::iterator it);
    void signalOnce();

    const StationModel *m_model;
    const SpotFilterProxyModel *m_proxy;
    bool m_active = false;
    bool m_resync = false;       // the rules changed: walk the table at the next take
    bool m_resetPending = false; // a model reset not (yet) explained by a merge
    bool m_snapshotSent = false;
    bool m_signalled = false;
    QHash<QString, StationSpot> m_sent;                 // what the clients have, by key
    std::set<std::pair<qint64, QString>> m_sentByTime;  // the same keys, oldest first, for the age limit
    QHash<QString, std::optional<StationSpot>> m_dirty; // touched keys: the spot shown now, or none
};
