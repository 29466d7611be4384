#pragma once

#include "model/stationspot.h"

#include <QDateTime>
#include <QList>
#include <QObject>

#include <array>
#include <functional>
#include <utility>

class SpotFetcher;
class StationModel;
struct FilterState;

// Carries every batch from the sources into the model and keeps the books:
// fetches pending, when each source last delivered and how much. DX lines
// that arrive in one read are merged together once the read is done, so a
// flooding node costs one merge per read instead of one per line.
class SpotIngestor final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SpotIngestor)

public:
    using Clock = std::function<QDateTime()>;
    static constexpr int k_sourceCount = StationSpot::k_sourceCount;

    explicit SpotIngestor(StationModel *model, QObject *parent = nullptr);
    ~SpotIngestor() override;

    void setClock(Clock clock) { m_clock = std::move(clock); }
    // The web sources, in refresh order.
    void addWebSource(StationSpot::Source source, SpotFetcher *fetcher);
    const QList<std::pair<StationSpot::Source, SpotFetcher *>> &webSources() const { return m_webSources; }

    void receive(const QList<StationSpot> &spots);
    // The operator's own spots, just posted: added to the table, nothing replaced.
    void addOwnSpots(const QList<StationSpot> &spots);
    void noteFetchStarted() { ++m_pendingFetches; }
    void noteFetchError() { m_pendingFetches = qMax(0, m_pendingFetches - 1); }
    int pendingFetches() const { return m_pendingFetches; }

    int lastBatchSize(StationSpot::Source source) const;
    QDateTime lastRefresh(StationSpot::Source source) const;

    // Every ticked web source fetches at once; DX clients stream and are left alone.
    void refreshAll(const FilterState &filter);
    // Ticked web sources refresh every intervalSecs, unticked ones stop.
    void applySourceChoice(const FilterState &filter, int intervalSecs);

    // "Showing …" with the rows shown and each source's last batch size.
    QString countsText(int shown) const;

signals:
    void aboutToMerge();
    void merged(const QList<StationSpot> &batch);
    // Every pending fetch has answered; the time for the refresh label.
    void allAnswered(const QDateTime &at);

private:
    void flushDxSpots();
    void ingest(const QList<StationSpot> &spots, int answers);

    StationModel *m_model;
    Clock m_clock;
    QList<std::pair<StationSpot::Source, SpotFetcher *>> m_webSources;
    int m_pendingFetches = 0;
    std::array<QDateTime, k_sourceCount> m_lastRefresh;
    std::array<int, k_sourceCount> m_lastBatchSize{};
    QList<StationSpot> m_pendingDxSpots;
    int m_pendingDxBatches = 0;
};
