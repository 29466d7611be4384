#pragma once

#include "app/contactlog.h"
#include "app/contactstatusstore.h"
#include "app/logbook/recordbuilder.h"
#include "app/logexport.h"
#include "app/spotsnapshot.h"
#include "app/workedindex.h"
#include "model/stationspot.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <utility>

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
    // The operator's imported logbook, read elsewhere and swapped in whole;
    // "Hide worked" filters anew.
    void setImportedWorked(std::shared_ptr<const WorkedTable> imported);
    void applyPersistedStatuses() { m_statusStore.applyTo(m_model); }

    // Merges the spots of the last session, still fresh at nowMs, so the
    // table is full before any source answers; returns them.
    QList<StationSpot> restoreSnapshot(qint64 nowMs);
    void saveSnapshot(qint64 nowMs) const;

    // Hides the spots whose call or reference was logged on their band.
    void setHideWorked(bool hide);

    StationSpot spotForKey(const QString &key) const;

    // The records logging the selection writes: one per reference worked
    // (the spot's and those of its kin at the same call within 1 kHz), with
    // the operator's edits. Empty when the key names no spot.
    QList<ContactRecord> selectionRecords(const QString &key, const QString &myCallsign,
                                          const QList<RecordEdit> &edits = {}) const;
    // The table's log: the spot and its kin marked contacted, one line per
    // reference written, each to its own source's file, all at one time.
    // Returns the status-bar notice; empty when the key names no spot.
    QString logSelection(const QString &key, const QString &myCallsign, const QList<RecordEdit> &edits = {});
    // The API's log: only the spot's own line, no mark. False when the key names no spot.
    bool logKey(const QString &key, const QString &myCallsign);

    QList<ContactRow> exportRows(StationSpot::Source source) const;

    // Called with the records of every contact logged, however it was logged.
    using LoggedHandler = std::function<void(const QList<ContactRecord> &)>;
    void setLoggedHandler(LoggedHandler handler) { m_loggedHandler = std::move(handler); }

private:
    void noteLogged(const QList<ContactRecord> &records);

    StationModel &m_model;
    SpotFilterProxyModel &m_proxy;
    ContactStatusStore m_statusStore;
    ContactLog m_contactLog;
    WorkedIndex m_worked;
    SpotSnapshot m_snapshot;
    bool m_hideWorked = false;
    LoggedHandler m_loggedHandler;
};
