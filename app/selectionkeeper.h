#pragma once

#include "model/stationspot.h"

#include <QList>
#include <QString>

class SpotFilterProxyModel;
class StationModel;

// Keeps the table's selection across merges: the selected spot's key, the
// row it sat on, and whether the program itself is re-selecting (a restored
// selection is not the user's choice and must not retune the radio).
class SelectionKeeper final
{
public:
    const QString &selectedKey() const { return m_selectedKey; }
    void setSelectedKey(const QString &key) { m_selectedKey = key; }
    bool hasSelection() const { return !m_selectedKey.isEmpty(); }

    void rememberRow(int proxyRow) { m_previousRow = proxyRow; }
    // The proxy row to select after a merge: the remembered spot wherever it
    // went, else the old row clamped to the table; -1 for none.
    int rowToRestore(const SpotFilterProxyModel &proxy, const StationModel &model) const;

    bool isRestoring() const { return m_restoring; }

    // Marks the span of a restore.
    class Restoring final
    {
    public:
        explicit Restoring(SelectionKeeper &keeper)
            : m_keeper(keeper)
        {
            m_keeper.m_restoring = true;
        }
        ~Restoring() { m_keeper.m_restoring = false; }
        Restoring(const Restoring &) = delete;
        Restoring &operator=(const Restoring &) = delete;

    private:
        SelectionKeeper &m_keeper;
    };

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
    bool m_restoring = false;
};
