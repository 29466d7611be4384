#pragma once

#include "model/stationspot.h"

#include <QList>
#include <QString>

class SpotFilterProxyModel;
class StationModel;

// Keeps the table's selection across merges and filter changes: the selected
// spot's key and the row it last stood on. A spot that leaves the view is
// not replaced by whatever row slides into its place: the selection is lost,
// and the row it stood on is where J and K carry on from.
class SelectionKeeper final
{
public:
    const QString &selectedKey() const { return m_selectedKey; }
    void setSelectedKey(const QString &key) { m_selectedKey = key; }
    bool hasSelection() const { return !m_selectedKey.isEmpty(); }

    void rememberRow(int proxyRow) { m_previousRow = proxyRow; }
    // The selected spot left the view: no selection, J and K go on from its row.
    void lose();
    // The proxy row showing the remembered spot after a merge, or -1.
    int rowToRestore(const SpotFilterProxyModel &proxy, const StationModel &model) const;
    // The row J (step 1) or K (step -1) selects in a view of rows rows whose
    // selected row is current (-1 for none): the next or previous, clamped;
    // after a lost selection, the row now where the spot stood or the one
    // above; otherwise the first or the last. -1 on an empty view.
    int stepTarget(int step, int rows, int current) const;

    // The proxy row showing the spot of that key, or -1.
    static int proxyRowForKey(const SpotFilterProxyModel &proxy, const StationModel &model,
                              const QString &key);
    // The spots the proxy shows, in its row order.
    static QList<StationSpot> visibleSpots(const SpotFilterProxyModel &proxy, const StationModel &model);
    // The model row of the spot of that key, or -1.
    static int modelRowForKey(const StationModel &model, const QString &key);

private:
    QString m_selectedKey;
    int m_previousRow = -1;
    int m_lostAtRow = -1;
};
