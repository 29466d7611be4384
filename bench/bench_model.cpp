// Merge and filter costs at the sizes a busy contest weekend produces.
#include "bench/benchdata.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "sources/websource.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <benchmark/benchmark.h>

namespace {

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
    const QByteArray body = potaReply(int(state.range(0)));
    const WebSource pota = WebSource::of(StationSpot::POTA);
    for (auto _ : state)
        benchmark::DoNotOptimize(pota.parse(body));
    state.SetBytesProcessed(state.iterations() * body.size());
}
BENCHMARK(BM_ParsePota)->Arg(1000)->Unit(benchmark::kMicrosecond);

} // namespace
