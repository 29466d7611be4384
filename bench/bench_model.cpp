// Merge and filter costs at the sizes a busy contest weekend produces.
#include "model/bands.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "sources/potaspotfetcher.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>

#include <benchmark/benchmark.h>

namespace {

// HF bands only, where nearly all portable activity is.
constexpr int k_hfBands = 10;

QCoreApplication &app()
{
    static int argc = 1;
    static char name[] = "tallis_bench";
    static char *argv[] = {name, nullptr};
    static QCoreApplication instance(argc, argv);
    return instance;
}

const char *const k_modes[] = {"CW", "SSB", "FT8", "USB", "FM", "CW", "FT4"};

// N spots the model would hold: all sources, spread over the HF bands and
// three hours, some activators in two programmes and some references with
// several operators.
QList<StationSpot> realisticSpots(int n, qint64 nowMs)
{
    QRandomGenerator rng(4242);
    QList<StationSpot> spots;
    spots.reserve(n);
    const int references = std::max(1, n / 3);
    for (int i = 0; i < n; ++i) {
        StationSpot s;
        const int pick = rng.bounded(100);
        s.source = pick < 35   ? StationSpot::DX
                   : pick < 65 ? StationSpot::POTA
                   : pick < 80 ? StationSpot::SOTA
                   : pick < 90 ? StationSpot::WWFF
                   : pick < 95 ? StationSpot::WWBOTA
                               : StationSpot::GMA;
        const Band &band = k_bands[size_t(rng.bounded(k_hfBands))];
        s.frequencyKhz = band.lowKhz + rng.bounded(int(band.highKhz - band.lowKhz) * 10) / 10.0;
        s.callsign = QStringLiteral("K%1ABC").arg(i);
        if (s.source != StationSpot::DX)
            s.reference = QStringLiteral("US-%1").arg(rng.bounded(references), 4, 10, QLatin1Char('0'));
        s.spotTime = QDateTime::fromMSecsSinceEpoch(nowMs - rng.bounded(3 * 3600) * 1000LL, Qt::UTC);
        s.mode = QString::fromLatin1(k_modes[rng.bounded(7)]);
        if (i > 0 && rng.bounded(10) == 0) {
            // The previous activator also reported in another programme.
            const StationSpot &prev = spots.last();
            s.callsign = prev.callsign;
            s.frequencyKhz = prev.frequencyKhz + 0.5;
            s.spotTime = prev.spotTime.addSecs(60);
            s.source = prev.source == StationSpot::SOTA ? StationSpot::POTA : StationSpot::SOTA;
        } else if (i > 0 && rng.bounded(10) == 0 && !spots.last().reference.isEmpty()) {
            // A second operator at the previous reference.
            const StationSpot &prev = spots.last();
            s.reference = prev.reference;
            s.source = prev.source;
            s.frequencyKhz = prev.frequencyKhz + 1.0;
            s.spotTime = prev.spotTime.addSecs(120);
        }
        spots.append(s);
    }
    return spots;
}

// A model holding about n rows, merged source by source as the program would.
void fillModel(StationModel &model, int n, qint64 nowMs)
{
    const QList<StationSpot> spots = realisticSpots(n, nowMs);
    QList<StationSpot> perSource[7];
    for (const StationSpot &s : spots)
        perSource[s.source].append(s);
    for (int source = 0; source < 7; ++source) {
        // DX batches only add, so one batch gives the rows a line at a time would.
        model.mergeSpots(perSource[source]);
    }
}

StationSpot dxSpot(qint64 nowMs, int i)
{
    StationSpot s;
    s.source = StationSpot::DX;
    s.callsign = QStringLiteral("DL%1X").arg(i % 50);
    s.frequencyKhz = 14025.0 + (i % 10);
    s.mode = QStringLiteral("CW");
    s.spotTime = QDateTime::fromMSecsSinceEpoch(nowMs, Qt::UTC);
    return s;
}

void BM_MergeOneSpot(benchmark::State &state)
{
    app();
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    StationModel model;
    model.setClock([now] { return now; });
    fillModel(model, int(state.range(0)), now);
    int i = 0;
    for (auto _ : state)
        model.mergeSpots({dxSpot(now, i++)});
    state.counters["rows"] = model.rowCount();
}
BENCHMARK(BM_MergeOneSpot)->Arg(1000)->Arg(5000)->Arg(20000)->Unit(benchmark::kMicrosecond);

void BM_MergeAndRefilter(benchmark::State &state)
{
    app();
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    StationModel model;
    model.setClock([now] { return now; });
    fillModel(model, int(state.range(0)), now);
    SpotFilterProxyModel proxy;
    proxy.setSourceFilter(true, true, true, true, true, true, true);
    proxy.setMaxAgeMins(0);
    proxy.setSourceModel(&model);
    proxy.sort(StationModel::AgeColumn, Qt::DescendingOrder);
    int i = 0;
    for (auto _ : state) {
        model.mergeSpots({dxSpot(now, i++)});
        benchmark::DoNotOptimize(proxy.rowCount());
        benchmark::DoNotOptimize(proxy.index(0, 0));
    }
    state.counters["shown"] = proxy.rowCount();
}
BENCHMARK(BM_MergeAndRefilter)->Arg(1000)->Arg(5000)->Arg(20000)->Unit(benchmark::kMicrosecond);

QByteArray potaReply(int n)
{
    QJsonArray array;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    for (const StationSpot &s : realisticSpots(n, now)) {
        QJsonObject o;
        o.insert(QStringLiteral("spotId"), 1000000 + array.size());
        o.insert(QStringLiteral("activator"), s.callsign);
        o.insert(QStringLiteral("frequency"), QString::number(s.frequencyKhz, 'f', 1));
        o.insert(QStringLiteral("mode"), s.mode);
        o.insert(QStringLiteral("reference"),
                 s.reference.isEmpty() ? QStringLiteral("US-0001") : s.reference);
        o.insert(QStringLiteral("parkName"), QJsonValue());
        o.insert(QStringLiteral("spotTime"), s.spotTime.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")));
        o.insert(QStringLiteral("spotter"), QStringLiteral("W1AW"));
        o.insert(QStringLiteral("comments"), QStringLiteral("Thanks for the park! 73"));
        o.insert(QStringLiteral("source"), QStringLiteral("RBN"));
        o.insert(QStringLiteral("invalid"), QJsonValue());
        o.insert(QStringLiteral("name"), QStringLiteral("Brightwater State Forest"));
        o.insert(QStringLiteral("locationDesc"), QStringLiteral("US-NY"));
        o.insert(QStringLiteral("grid4"), QStringLiteral("FN31"));
        o.insert(QStringLiteral("grid6"), QStringLiteral("FN31pr"));
        o.insert(QStringLiteral("latitude"), 41.72);
        o.insert(QStringLiteral("longitude"), -72.7);
        o.insert(QStringLiteral("count"), 3);
        o.insert(QStringLiteral("expire"), 1200);
        array.append(o);
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

void BM_ParsePota(benchmark::State &state)
{
    app();
    const QByteArray body = potaReply(int(state.range(0)));
    for (auto _ : state) {
        QString error;
        benchmark::DoNotOptimize(PotaSpotFetcher::parseSpots(body, &error));
    }
    state.SetBytesProcessed(state.iterations() * body.size());
}
BENCHMARK(BM_ParsePota)->Arg(1000)->Unit(benchmark::kMicrosecond);

} // namespace
