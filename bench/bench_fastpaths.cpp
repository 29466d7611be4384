// Every hand-written fast path of the spot data against the plain Qt way it
// replaces: a fast path stays only while its "fast" row clearly beats "plain".
#include "bench/benchdata.h"
#include "model/loweredset.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "sources/servicejson.h"

#include <QSet>
#include <QSortFilterProxyModel>

#include <benchmark/benchmark.h>

namespace {

void BM_TimeStamp(benchmark::State &state, bool fast)
{
    // The forms POTA and SOTA send.
    const QStringList stamps{QStringLiteral("2026-11-21T17:51:41"), QStringLiteral("2026-11-21T17:51:41Z")};
    for (auto _ : state) {
        for (const QString &stamp : stamps)
            benchmark::DoNotOptimize(fast ? ServiceJson::isoTimeAssumingUtc(stamp)
                                          : ServiceJson::isoTimeAssumingUtcByQt(stamp));
    }
    state.SetItemsProcessed(state.iterations() * stamps.size());
}
BENCHMARK_CAPTURE(BM_TimeStamp, fast, true);
BENCHMARK_CAPTURE(BM_TimeStamp, plain, false);

// A watch list of 20 call signs asked about every call of a full table.
void BM_WatchLookup(benchmark::State &state, bool fast)
{
    QStringList watched;
    for (int i = 0; i < 20; ++i)
        watched.append(QStringLiteral("k%1abc").arg(i * 37));
    LoweredSet lowered;
    lowered.assign(watched);
    const QSet<QString> plain(watched.cbegin(), watched.cend());
    QStringList calls;
    for (const StationSpot &spot : realisticSpots(1000, 0))
        calls.append(spot.callsign);
    int hits = 0;
    for (auto _ : state) {
        for (const QString &call : calls)
            hits += fast ? lowered.containsLowered(call) : plain.contains(call.toLower());
    }
    benchmark::DoNotOptimize(hits);
    state.SetItemsProcessed(state.iterations() * calls.size());
}
BENCHMARK_CAPTURE(BM_WatchLookup, fast, true);
BENCHMARK_CAPTURE(BM_WatchLookup, plain, false);

// Sorting by age reads the model's time array instead of two QVariants per
// comparison; the plain proxy sorts the same sort values.
void BM_SortByAge(benchmark::State &state, bool fast)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    StationModel model;
    model.setClock([now] { return now; });
    fillModel(model, int(state.range(0)), now);
    SpotFilterProxyModel filtering;
    filtering.setSourceFilter(true, true, true, true, true, true, true);
    filtering.setMaxAgeMins(0);
    QSortFilterProxyModel plain;
    plain.setSortRole(Qt::UserRole);
    QSortFilterProxyModel &proxy = fast ? filtering : plain;
    proxy.setSourceModel(&model);
    Qt::SortOrder order = Qt::AscendingOrder;
    for (auto _ : state) {
        order = order == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder;
        proxy.sort(StationModel::AgeColumn, order);
        benchmark::DoNotOptimize(proxy.index(0, 0));
    }
    state.counters["rows"] = proxy.rowCount();
}
BENCHMARK_CAPTURE(BM_SortByAge, fast, true)->Arg(5000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_SortByAge, plain, false)->Arg(5000)->Unit(benchmark::kMicrosecond);

} // namespace
