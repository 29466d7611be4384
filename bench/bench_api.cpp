// The API's hot paths: the spot list pushed after every merge, and the
// heartbeat every connected program gets each second.
#include "api/apijson.h"
#include "api/spotdeltatracker.h"
#include "bench/benchdata.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "tests/support/fakeapibackend.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <benchmark/benchmark.h>

namespace {

// The generator's spots with the texts and positions real sources fill in.
QList<StationSpot> visibleSpots(int n)
{
    QList<StationSpot> spots = realisticSpots(n, QDateTime::currentMSecsSinceEpoch());
    for (StationSpot &s : spots) {
        s.spotter = QStringLiteral("W1AW");
        s.comments = QStringLiteral("CW 599 thanks for the park, 73 de op");
        if (s.source != StationSpot::DX) {
            s.referenceName = QStringLiteral("Brightwater State Forest – Zürich Ridge");
            s.grid = QStringLiteral("FN31pr");
            s.hasLocation = true;
            s.lat = 41.714775;
            s.lon = -72.727260;
        }
    }
    return spots;
}

// What broadcast() does with the event: written once, turned into the one
// QString every client's socket is given.
void BM_SpotsUpdatedJson(benchmark::State &state)
{
    const QList<StationSpot> spots = visibleSpots(int(state.range(0)));
    qsizetype bytes = 0;
    for (auto _ : state) {
        const QString message = QString::fromUtf8(ApiJson::spotsUpdatedEvent(spots));
        bytes = message.size();
        benchmark::DoNotOptimize(message.constData());
    }
    state.counters["chars"] = double(bytes);
}
BENCHMARK(BM_SpotsUpdatedJson)->Arg(5000)->Unit(benchmark::kMillisecond);

// The same event through Qt's JSON classes, for comparison (keys come out sorted).
void BM_SpotsUpdatedQJson(benchmark::State &state)
{
    const QList<StationSpot> spots = visibleSpots(int(state.range(0)));
    for (auto _ : state) {
        QJsonArray array;
        for (const StationSpot &s : spots) {
            QJsonObject o{{QStringLiteral("key"), s.key()},
                          {QStringLiteral("source"), s.sourceString()},
                          {QStringLiteral("callsign"), s.callsign},
                          {QStringLiteral("reference"), s.reference},
                          {QStringLiteral("reference_name"), s.referenceName},
                          {QStringLiteral("freq_khz"), s.frequencyKhz},
                          {QStringLiteral("mode"), s.mode},
                          {QStringLiteral("spot_time"), s.spotTime.toString(Qt::ISODate)},
                          {QStringLiteral("spotter"), s.spotter},
                          {QStringLiteral("comments"), s.comments},
                          {QStringLiteral("grid"), s.grid},
                          {QStringLiteral("status"), int(s.status)},
                          {QStringLiteral("status_str"), StationSpot::statusText(s.status)}};
            if (s.hasLocation) {
                o.insert(QStringLiteral("lat"), s.lat);
                o.insert(QStringLiteral("lon"), s.lon);
            }
            array.append(o);
        }
        const QJsonObject event{
            {QStringLiteral("type"), QStringLiteral("event")},
            {QStringLiteral("event"), QStringLiteral("spots.updated")},
            {QStringLiteral("data"),
             QJsonObject{{QStringLiteral("spots"), array}, {QStringLiteral("count"), array.size()}}}};
        const QString message = QString::fromUtf8(QJsonDocument(event).toJson(QJsonDocument::Compact));
        benchmark::DoNotOptimize(message.constData());
    }
}
BENCHMARK(BM_SpotsUpdatedQJson)->Arg(5000)->Unit(benchmark::kMillisecond);

// What a delta client gets for one DX spot merged into a large table: the
// merge's change set through the view follower into "spots.changed" (the
// merge itself is not timed).
void BM_SpotsChangedJson(benchmark::State &state)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    StationModel model;
    model.setClock([now] { return now; });
    fillModel(model, int(state.range(0)), now);
    SpotFilterProxyModel proxy;
    proxy.setSourceModel(&model);
    proxy.setSourceFilter(true, true, true, true, true, true, true);
    SpotDeltaTracker tracker(&model, &proxy);
    tracker.setActive(true);
    model.disconnect(&tracker); // the change set is applied below, inside the timing
    qint64 version = 0;
    qsizetype bytes = 0;
    int i = 0;
    for (auto _ : state) {
        state.PauseTiming();
        StationSpot spot;
        spot.source = StationSpot::DX;
        // A call the table has (a move, so one row in and one out) every other time.
        spot.callsign = QStringLiteral("K%1ABC").arg(i % 2 ? i : 20000 + i);
        spot.frequencyKhz = 14000.5 + ++i % 300;
        spot.mode = QStringLiteral("CW");
        spot.spotter = QStringLiteral("W1AW");
        spot.comments = QStringLiteral("CW 599 up 2");
        spot.spotTime = QDateTime::fromMSecsSinceEpoch(now, Qt::UTC);
        model.mergeSpots({spot});
        state.ResumeTiming();
        tracker.applyMergeChanges(model.lastMergeChanges());
        const QString message = QString::fromUtf8(ApiJson::spotsChangedEvent(++version, tracker.take()));
        bytes = message.size();
        benchmark::DoNotOptimize(message.constData());
    }
    state.counters["chars"] = double(bytes);
    state.counters["rows"] = double(tracker.sentCount());
}
// Bounded: every iteration also runs an untimed merge of milliseconds.
BENCHMARK(BM_SpotsChangedJson)->Arg(20000)->Iterations(1000)->Unit(benchmark::kMicrosecond);

void BM_StatusHeartbeat(benchmark::State &state)
{
    FakeApiBackend backend;
    backend.visible = visibleSpots(10);
    const ApiContext context{backend, 2103, 3};
    for (auto _ : state) {
        const QString message =
            QString::fromUtf8(ApiJson::eventMessage(u"status", ApiJson::statusJson(context)));
        benchmark::DoNotOptimize(message.constData());
    }
}
BENCHMARK(BM_StatusHeartbeat)->Unit(benchmark::kMicrosecond);

} // namespace
