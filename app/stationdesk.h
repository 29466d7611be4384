#pragma once

#include "app/contactlog.h"
#include "app/contactstatusstore.h"
#include "app/logexport.h"
#include "app/spotsnapshot.h"
#include "app/workedindex.h"
#include "model/stationspot.h"

#include <QList>
#include <QString>

class SpotFilterProxyModel;
class StationModel;

// The operator's records beside the table: the marks kept across sessions,
// the contact log and what it says was worked, the table's snapshot for the
// next start. It works on the window's model and filter proxy.
class StationDesk final
{
public:
    StationDesk(StationModel &model, SpotFilterProxyModel &proxy);

    ContactStatusStore &statusStore() { return m_statusStore; }
    const WorkedIndex &worked() const { return m_worked; }

    void loadStatuses() { m_statusStore.load(ContactStatusStore::defaultFilePath()); }
    void reloadWorked() { m_worked.reload(); }
    void applyPersistedStatuses() { m_statusStore.applyTo(m_model); }

    // Merges the spots of the last session, still fresh at nowMs, so the
    // table is full before any source answers; returns them.
    QList<StationSpot> restoreSnapshot(qint64 nowMs);
    void saveSnapshot(qint64 nowMs) const;

    // Hides the spots whose call or reference was logged on their band.
    void setHideWorked(bool hide);

    StationSpot spotForKey(const QString &key) const;

    // The table's log: the spot and its kin marked contacted, the line written.
    // Returns the status-bar notice; empty when the key names no spot.
    QString logSelection(const QString &key, const QString &myCallsign);
    // The API's log: only the line, no mark. False when the key names no spot.
    bool logKey(const QString &key, const QString &myCallsign);

    QList<ContactRow> exportRows(StationSpot::Source source) const;

private:
    void noteLogged(const StationSpot &spot, const QString &myCallsign);

    StationModel &m_model;
    SpotFilterProxyModel &m_proxy;
    ContactStatusStore m_statusStore;
    ContactLog m_contactLog;
    WorkedIndex m_worked;
    SpotSnapshot m_snapshot;
    bool m_hideWorked = false;
};
