// Skimmer lines into a large table: the path every RBN line takes, parse,
// aggregation and its share of the once-a-second merge.
#include "bench/benchdata.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "sources/skimmerfeed.h"
#include "sources/skimmerreport.h"

#include <QObject>

#include <benchmark/benchmark.h>

namespace {

constexpr int k_calls = 3000;
constexpr int k_linesPerMerge = 1000; // a contest's second

// 3,000 stations, each heard by up to 40 skimmers.
QStringList skimmerLines()
{
    QStringList lines;
    for (int n = 0; n < 8 * k_calls; ++n) {
        const int c = n % k_calls;
        const int skimmer = (n / k_calls + c) % (1 + c % 40);
        lines << QStringLiteral("DX de SK%1-#:  %2  DL%3ABC  CW  %4 dB  25 WPM  CQ  1200Z")
                     .arg(skimmer)
                     .arg(14000.0 + (c % 300) + 0.1 * (skimmer % 2), 0, 'f', 1)
                     .arg(c)
                     .arg(3 + n % 30);
    }
    return lines;
}

void BM_RbnLineToTable(benchmark::State &state)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const QDateTime nowUtc = QDateTime::fromMSecsSinceEpoch(now, Qt::UTC);
    StationModel model;
    model.setClock([now] { return now; });
    SpotFilterProxyModel proxy;
    proxy.setSourceModel(&model); // the window's table sorts and filters every merge
    fillModel(model, int(state.range(0)), now);
    SkimmerFeed feed([now] { return now; });
    feed.setEnabled(true);
    QObject::connect(&feed, &SkimmerFeed::spotsReady, &model, &StationModel::mergeSpots);
    const QStringList lines = skimmerLines();
    int i = 0;
    for (auto _ : state) {
        feed.add(SkimmerReport::parse(lines.at(i % lines.size()), nowUtc));
        if (++i % k_linesPerMerge == 0)
            feed.flush();
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["rows"] = model.rowCount();
}
BENCHMARK(BM_RbnLineToTable)->Arg(20000)->Iterations(20 * k_linesPerMerge)->Unit(benchmark::kMicrosecond);

} // namespace
