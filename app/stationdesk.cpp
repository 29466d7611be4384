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

StationSpot StationDesk::spotForKey(const QString &key) const
{
    return m_model.spotAt(SelectionKeeper::modelRowForKey(m_model, key));
}

QString StationDesk::logSelection(const QString &key, const QString &myCallsign)
{
    const StationSpot spot = spotForKey(key);
    if (m_statusStore
            .markSelection(m_model, key, StationSpot::Contacted, ContactStatusStore::Spread::SimilarOnly)
            .isEmpty())
        return QString();
    noteLogged(spot, myCallsign);
    return m_contactLog.loggedMessage(spot);
}

bool StationDesk::logKey(const QString &key, const QString &myCallsign)
{
    if (SelectionKeeper::modelRowForKey(m_model, key) < 0)
        return false;
    noteLogged(spotForKey(key), myCallsign);
    return true;
}

void StationDesk::noteLogged(const StationSpot &spot, const QString &myCallsign)
{
    m_contactLog.append(spot, myCallsign);
    m_worked.addContact(spot, m_contactLog.now());
    if (m_hideWorked)
        setHideWorked(true);
}

QList<ContactRow> StationDesk::exportRows(StationSpot::Source source) const
{
    return LogExport::collectRows(m_model.spots(), source, m_statusStore, m_statusStore.now());
}
