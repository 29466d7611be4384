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
    return hasSelection() ? proxyRowForKey(proxy, model, m_selectedKey) : -1;
}

void SelectionKeeper::lose()
{
    if (hasSelection())
        m_lostAtRow = m_previousRow;
    m_selectedKey.clear();
}

int SelectionKeeper::stepTarget(int step, int rows, int current) const
{
    if (rows <= 0)
        return -1;
    if (current >= 0)
        return qBound(0, current + step, rows - 1);
    if (m_lostAtRow >= 0)
        return qBound(0, step > 0 ? m_lostAtRow : m_lostAtRow - 1, rows - 1);
    return step > 0 ? 0 : rows - 1;
}
