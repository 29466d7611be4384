#include "app/spotingestor.h"

#include "model/filterstate.h"
#include "model/stationmodel.h"
#include "sources/spotfetcher.h"

#include <QTimer>

#include <algorithm>

SpotIngestor::SpotIngestor(StationModel *model, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_clock([] { return QDateTime::currentDateTime(); })
{}

SpotIngestor::~SpotIngestor() = default;

void SpotIngestor::addWebSource(StationSpot::Source source, SpotFetcher *fetcher)
{
    m_webSources.append({source, fetcher});
}

void SpotIngestor::receive(const QList<StationSpot> &spots)
{
    if (!spots.isEmpty() && spots.first().source == StationSpot::DX) {
        m_pendingDxSpots += spots;
        if (++m_pendingDxBatches == 1)
            QTimer::singleShot(0, this, &SpotIngestor::flushDxSpots);
        return;
    }
    ingest(spots, 1);
}

void SpotIngestor::addOwnSpots(const QList<StationSpot> &spots)
{
    emit aboutToMerge();
    m_model->addOwnSpots(spots);
    emit merged(spots);
}

void SpotIngestor::flushDxSpots()
{
    const QList<StationSpot> spots = std::exchange(m_pendingDxSpots, {});
    ingest(spots, std::exchange(m_pendingDxBatches, 0));
}

void SpotIngestor::ingest(const QList<StationSpot> &spots, int answers)
{
    // Each line of a coalesced DX read counts as the answer it is.
    m_pendingFetches -= answers;
    if (!spots.isEmpty()) {
        const StationSpot::Source source = spots.first().source;
        if (!StationSpot::isStreamSource(source) && source >= 0 && source < k_sourceCount) {
            if (source != StationSpot::BOTA)
                m_lastRefresh[size_t(source)] = m_clock();
            m_lastBatchSize[size_t(source)] = int(spots.size());
        }
    }
    emit aboutToMerge();
    m_model->mergeSpots(spots);
    emit merged(spots);
    if (m_pendingFetches > 0)
        return;
    m_pendingFetches = 0;
    emit allAnswered(m_clock());
}

int SpotIngestor::lastBatchSize(StationSpot::Source source) const
{
    return source >= 0 && source < k_sourceCount ? m_lastBatchSize[size_t(source)] : 0;
}

QDateTime SpotIngestor::lastRefresh(StationSpot::Source source) const
{
    return source >= 0 && source < k_sourceCount ? m_lastRefresh[size_t(source)] : QDateTime();
}

void SpotIngestor::refreshAll(const FilterState &filter)
{
    for (const auto &[source, fetcher] : std::as_const(m_webSources)) {
        if (filter.isSourceEnabled(source))
            fetcher->fetch();
    }
}

void SpotIngestor::applySourceChoice(const FilterState &filter, int intervalSecs)
{
    for (const auto &[source, fetcher] : std::as_const(m_webSources)) {
        if (filter.isSourceEnabled(source))
            fetcher->startAutoRefresh(intervalSecs);
        else
            fetcher->stopAutoRefresh();
    }
}

QString SpotIngestor::countsText(int shown) const
{
    const QList<StationSpot> &spots = m_model->spots();
    // The streams (DX, RBN) are what the table holds; every programme what its
    // source last delivered.
    const auto rows = [&spots](StationSpot::Source source) {
        return std::count_if(spots.cbegin(), spots.cend(),
                             [source](const StationSpot &spot) { return spot.source == source; });
    };
    return QStringLiteral("Showing %1 of %2  S:%3 P:%4 W:%5 WB:%6 B:%7 DX:%8 G:%9 R:%10 Z:%11 SI:%12")
        .arg(shown)
        .arg(spots.size())
        .arg(lastBatchSize(StationSpot::SOTA))
        .arg(lastBatchSize(StationSpot::POTA))
        .arg(lastBatchSize(StationSpot::WWFF))
        .arg(lastBatchSize(StationSpot::WWBOTA))
        .arg(lastBatchSize(StationSpot::BOTA))
        .arg(rows(StationSpot::DX))
        .arg(lastBatchSize(StationSpot::GMA))
        .arg(rows(StationSpot::RBN))
        .arg(lastBatchSize(StationSpot::ZLOTA))
        .arg(lastBatchSize(StationSpot::SIOTA));
}
