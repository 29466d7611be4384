#include "app/selectionkeeper.h"

#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"

namespace {
// The call sign leads the key: comparing it first spares most rows the key's string building.
QStringView callOfKey(const QString &key)
{
    return QStringView(key).left(key.indexOf(QLatin1Char('|')));
}
} // namespace

int SelectionKeeper::proxyRowForKey(const SpotFilterProxyModel &proxy, const StationModel &model,
                                    const QString &key)
{
    const QList<StationSpot> &spots = model.spots();
    const QStringView call = callOfKey(key);
    const int rows = proxy.rowCount();
    for (int row = 0; row < rows; ++row) {
        const StationSpot &spot = spots.at(proxy.mapToSource(proxy.index(row, 0)).row());
        if (spot.callsign == call && spot.key() == key)
            return row;
    }
    return -1;
}

QList<StationSpot> SelectionKeeper::visibleSpots(const SpotFilterProxyModel &proxy, const StationModel &model)
{
    QList<StationSpot> spots;
    const int rows = proxy.rowCount();
    spots.reserve(rows);
    for (int row = 0; row < rows; ++row)
        spots.append(model.spots().at(proxy.mapToSource(proxy.index(row, 0)).row()));
    return spots;
}

int SelectionKeeper::modelRowForKey(const StationModel &model, const QString &key)
{
    const QList<StationSpot> &spots = model.spots();
    const QStringView call = callOfKey(key);
    for (int row = 0; row < spots.size(); ++row) {
        const StationSpot &spot = spots.at(row);
        if (spot.callsign == call && spot.key() == key)
            return row;
    }
    return -1;
}

int SelectionKeeper::rowToRestore(const SpotFilterProxyModel &proxy, const StationModel &model) const
{
    if (!hasSelection())
        return -1;
    const int found = proxyRowForKey(proxy, model, m_selectedKey);
    if (found >= 0)
        return found;
    const int rows = proxy.rowCount();
    return rows > 0 ? qBound(0, m_previousRow, rows - 1) : -1;
}
