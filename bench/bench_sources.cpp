// Spot parsers against the cost of Qt's JSON reader alone on the same bytes:
// the parsers should add little to what reading the JSON costs anyway.
#include "bench/benchdata.h"
#include "sources/websource.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <benchmark/benchmark.h>

namespace {

using Fields = QList<std::pair<const char *, QJsonValue>>;

QJsonObject object(const Fields &fields)
{
    QJsonObject o;
    for (const auto &[key, value] : fields)
        o.insert(QLatin1String(key), value);
    return o;
}

QByteArray compact(const QJsonArray &array)
{
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

// The reply BM_ParsePota reads: n spots of the POTA service's shape.
QByteArray potaReply(int n)
{
    QJsonArray array;
    for (const StationSpot &s : realisticSpots(n, QDateTime::currentMSecsSinceEpoch())) {
        array.append(object({
            {"spotId", 1000000 + array.size()},
            {"activator", s.callsign},
            {"frequency", QString::number(s.frequencyKhz, 'f', 1)},
            {"mode", s.mode},
            {"reference", s.reference.isEmpty() ? QStringLiteral("US-0001") : s.reference},
            {"parkName", QJsonValue()},
            {"spotTime", s.spotTime.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"))},
            {"spotter", QStringLiteral("W1AW")},
            {"comments", QStringLiteral("Thanks for the park! 73")},
            {"source", QStringLiteral("RBN")},
            {"invalid", QJsonValue()},
            {"name", QStringLiteral("Brightwater State Forest")},
            {"locationDesc", QStringLiteral("US-NY")},
            {"grid4", QStringLiteral("FN31")},
            {"grid6", QStringLiteral("FN31pr")},
            {"latitude", 41.72},
            {"longitude", -72.7},
            {"count", 3},
            {"expire", 1200},
        }));
    }
    return compact(array);
}

// n spots of the SOTA service's current shape.
QByteArray sotaReply(int n)
{
    QJsonArray array;
    for (const StationSpot &s : realisticSpots(n, QDateTime::currentMSecsSinceEpoch())) {
        array.append(object({
            {"epoch", QStringLiteral("4b1f9e2c-7d3a-4c55-9a61-0e8f2b6d1c37")},
            {"id", 700000 + array.size()},
            {"timeStamp", s.spotTime.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ"))},
            {"activatorCallsign", s.callsign},
            {"activatorName", QStringLiteral("Ann")},
            {"callsign", QStringLiteral("M0XYZ")},
            {"comments", QStringLiteral("QRV now, 5W to a dipole")},
            {"frequency", s.frequencyKhz / 1000.0},
            {"mode", s.mode},
            {"summitCode", s.reference.isEmpty() ? QStringLiteral("G/LD-003") : s.reference},
            {"summitName", QStringLiteral("Helvellyn")},
            {"AltM", 950},
            {"AltFt", 3117},
            {"points", 10},
            {"userID", 1},
            {"type", array.size() % 50 == 0 ? QStringLiteral("QRT") : QStringLiteral("NORMAL")},
        }));
    }
    return compact(array);
}

void BM_JsonBaseline(benchmark::State &state)
{
    const QByteArray body = potaReply(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(QJsonDocument::fromJson(body));
    state.SetBytesProcessed(state.iterations() * body.size());
}
BENCHMARK(BM_JsonBaseline)->Arg(1000)->Unit(benchmark::kMicrosecond);

void BM_ParseSota(benchmark::State &state)
{
    const QByteArray body = sotaReply(int(state.range(0)));
    const WebSource sota = WebSource::of(StationSpot::SOTA);
    for (auto _ : state)
        benchmark::DoNotOptimize(sota.parse(body));
    state.SetBytesProcessed(state.iterations() * body.size());
}
BENCHMARK(BM_ParseSota)->Arg(1000)->Unit(benchmark::kMicrosecond);

} // namespace
