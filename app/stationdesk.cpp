#include "app/stationdesk.h"

#include "app/selectionkeeper.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"

StationDesk::StationDesk(StationModel &model, SpotFilterProxyModel &proxy)
    : m_model(model)
    , m_proxy(proxy)
{}

QList<StationSpot> StationDesk::restoreSnapshot(qint64 nowMs)
{
    QList<StationSpot> seen;
    for (const QList<StationSpot> &spots : m_snapshot.read(nowMs)) {
        m_model.mergeSpots(spots);
        seen += spots;
    }
    applyPersistedStatuses();
    return seen;
}

void StationDesk::saveSnapshot(qint64 nowMs) const
{
    m_snapshot.write(m_model.spots(), nowMs);
}

void StationDesk::setHideWorked(bool hide)
{
    m_hideWorked = hide;
    // Set again after each new contact, so the proxy filters anew.
    m_proxy.setHiddenTest(hide ? SpotFilterProxyModel::HiddenTest([this](const StationSpot &spot) {
        return m_worked.isWorkedOnBand(spot);
    })
                               : SpotFilterProxyModel::HiddenTest());
}

void StationDesk::setImportedWorked(std::shared_ptr<const WorkedTable> imported)
{
    m_worked.setImported(std::move(imported));
    if (m_hideWorked)
        setHideWorked(true);
}

StationSpot StationDesk::spotForKey(const QString &key) const
{
    return m_model.spotAt(SelectionKeeper::modelRowForKey(m_model, key));
}

QList<ContactRecord> StationDesk::selectionRecords(const QString &key, const QString &myCallsign,
                                                   const QList<RecordEdit> &edits) const
{
    const int row = SelectionKeeper::modelRowForKey(m_model, key);
    if (row < 0)
        return {};
    RecordBuilder builder(m_model.spots(), myCallsign);
    builder.setEdits(edits);
    return builder.build(m_model.spotAt(row), m_contactLog.now());
}

QString StationDesk::logSelection(const QString &key, const QString &myCallsign,
                                  const QList<RecordEdit> &edits)
{
    const StationSpot spot = spotForKey(key);
    const QList<ContactRecord> records = selectionRecords(key, myCallsign, edits);
    if (m_statusStore
            .markSelection(m_model, key, StationSpot::Contacted, ContactStatusStore::Spread::SimilarOnly)
            .isEmpty())
        return QString();
    noteLogged(records);
    return m_contactLog.loggedMessage(spot);
}

bool StationDesk::logKey(const QString &key, const QString &myCallsign)
{
    if (SelectionKeeper::modelRowForKey(m_model, key) < 0)
        return false;
    noteLogged({ContactRecord::fromSpot(spotForKey(key), myCallsign, m_contactLog.now())});
    return true;
}

void StationDesk::noteLogged(const QList<ContactRecord> &records)
{
    for (const ContactRecord &record : records) {
        m_contactLog.append(record);
        m_worked.addContact(record.spot, record.loggedAt);
    }
    if (m_hideWorked)
        setHideWorked(true);
    if (m_loggedHandler)
        m_loggedHandler(records);
}

QList<ContactRow> StationDesk::exportRows(StationSpot::Source source) const
{
    return LogExport::collectRows(m_model.spots(), source, m_statusStore, m_statusStore.now());
}
