// The coordinate cache rewrites its file after every answer: a first start with
// a few hundred parks on the air pays this once per park.
#include "app/coordinatecache.h"
#include "app/tallisdir.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>

#include <benchmark/benchmark.h>

namespace {

void writeEntries(int n)
{
    const QString savedAt = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    QJsonArray array;
    for (int i = 0; i < n; ++i) {
        array.append(QJsonObject{
            {QStringLiteral("reference"), QStringLiteral("US-%1").arg(i, 4, 10, QLatin1Char('0'))},
            {QStringLiteral("latitude"), 30.0 + i % 20},
            {QStringLiteral("longitude"), -100.0 + i % 40},
            {QStringLiteral("saved_at"), savedAt}});
    }
    ensureTallisDir();
    QFile file(coordCacheFilePath());
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(QJsonDocument(array).toJson());
}

void BM_CoordCacheSave(benchmark::State &state)
{
    writeEntries(int(state.range(0)));
    QNetworkAccessManager network;
    CoordinateCache cache(&network);
    cache.load();
    for (auto _ : state)
        cache.save();
    state.counters["entries"] = cache.size();
}
BENCHMARK(BM_CoordCacheSave)->Arg(300)->Arg(3000)->Unit(benchmark::kMillisecond);

void BM_CoordCacheLoad(benchmark::State &state)
{
    writeEntries(int(state.range(0)));
    QNetworkAccessManager network;
    for (auto _ : state) {
        CoordinateCache cache(&network);
        cache.load();
        benchmark::DoNotOptimize(cache.size());
    }
}
BENCHMARK(BM_CoordCacheLoad)->Arg(3000)->Unit(benchmark::kMillisecond);

} // namespace
