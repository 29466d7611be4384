#include "app/huntedcalls.h"

#include "model/stationmodel.h"

HuntedCalls::HuntedCalls(const StationModel *model, std::function<int()> maxAgeMins, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_maxAgeMins(std::move(maxAgeMins))
{
    connect(model, &StationModel::spotsMerged, this, [this] { m_stale = true; });
}

HuntedCalls::~HuntedCalls() = default;

bool HuntedCalls::contains(const QString &callsign)
{
    if (m_model->isWatchedCallsign(callsign))
        return true;
    // Spots also age past the limit without a merge, hence the rebuild each minute.
    const qint64 sinceBuilt = m_model->nowMSecs() - m_builtAtMs;
    if (sinceBuilt >= (m_stale ? k_rebuildMs : k_ageRebuildMs))
        rebuild();
    return m_programmeCalls.contains(callsign);
}

void HuntedCalls::rebuild()
{
    const qint64 now = m_model->nowMSecs();
    const qint64 oldest = now - qint64(m_maxAgeMins()) * 60 * 1000;
    m_programmeCalls.clear();
    const QList<StationSpot> &spots = m_model->spots();
    for (int row = 0; row < spots.size(); ++row) {
        const StationSpot &spot = spots.at(row);
        if (!StationSpot::isStreamSource(spot.source) && m_model->spotTimeMSecsAt(row) >= oldest)
            m_programmeCalls.insert(spot.callsign.toUpper());
    }
    m_stale = false;
    m_builtAtMs = now;
}
