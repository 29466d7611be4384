// Re-applying the marks after every merge, and the table kept for the next
// start, at the sizes a busy weekend produces.
#include "app/contactstatusstore.h"
#include "app/spotsnapshot.h"
#include "bench/benchdata.h"
#include "model/stationmodel.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

constexpr int k_marks = 200;

// A model of n rows and a store marking k_marks of them, every fifth row.
void prepare(StationModel &model, ContactStatusStore &store, int n, qint64 now)
{
    model.setClock([now] { return now; });
    fillModel(model, n, now);
    store.setClock([now] { return QDateTime::fromMSecsSinceEpoch(now, Qt::UTC); });
    for (int row = 0; row < model.rowCount() && store.marks().size() < k_marks; row += 5)
        store.record(model.spotAt(row).key(), StationSpot::Heard);
}

void BM_ApplyMarks(benchmark::State &state)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    StationModel model;
    ContactStatusStore store;
    prepare(model, store, int(state.range(0)), now);
    for (auto _ : state)
        benchmark::DoNotOptimize(store.applyTo(model));
}
BENCHMARK(BM_ApplyMarks)->Arg(1000)->Arg(5000)->Arg(20000)->Unit(benchmark::kMicrosecond);

// The plain way, one model search per mark: the row that shows what the one pass saves.
void BM_ApplyMarksOneSearchEach(benchmark::State &state)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    StationModel model;
    ContactStatusStore store;
    prepare(model, store, int(state.range(0)), now);
    for (auto _ : state) {
        const auto &marks = store.marks();
        for (auto it = marks.cbegin(); it != marks.cend(); ++it)
            model.markSpot(it.key(), it->status);
    }
}
BENCHMARK(BM_ApplyMarksOneSearchEach)->Arg(1000)->Arg(5000)->Arg(20000)->Unit(benchmark::kMicrosecond);

// The two-minute snapshot of the whole table, file write included.
void BM_SnapshotWrite(benchmark::State &state)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    StationModel model;
    model.setClock([now] { return now; });
    fillModel(model, int(state.range(0)), now);
    const QTemporaryDir dir;
    const SpotSnapshot snapshot(dir.path());
    for (auto _ : state)
        benchmark::DoNotOptimize(snapshot.write(model.spots(), now));
    state.counters["rows"] = model.rowCount();
}
BENCHMARK(BM_SnapshotWrite)->Arg(20000)->Unit(benchmark::kMillisecond);

} // namespace
