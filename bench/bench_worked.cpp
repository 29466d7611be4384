// Reading the operator's contact logs at start: years of hunting in daily files.
#include "app/workedindex.h"
#include "model/bands.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

// n contacts as the log writer leaves them: one file per source and UTC day,
// ten contacts a day, over the bands, with references worked again and again.
std::unique_ptr<QTemporaryDir> writeLogs(int n)
{
    auto dir = std::make_unique<QTemporaryDir>();
    const QStringList sources{QStringLiteral("POTA"), QStringLiteral("SOTA"), QStringLiteral("WWFF"),
                              QStringLiteral("DX")};
    const QDateTime first(QDate(2024, 1, 1), QTime(12, 0), Qt::UTC);
    for (int i = 0; i < n; ++i) {
        const QString source = sources[i % sources.size()];
        const QDateTime loggedAt = first.addSecs(qint64(i / 10) * 86400 + (i % 10) * 60);
        const auto &band = k_bands[size_t(i % 10)];
        QJsonObject record{{QStringLiteral("callsign"), QStringLiteral("K%1ABC").arg(i % 2000)},
                           {QStringLiteral("comments"), QStringLiteral("tnx fer QSO")},
                           {QStringLiteral("frequency_khz"), band.lowKhz + 12.5},
                           {QStringLiteral("grid"), QStringLiteral("FN42aa")},
                           {QStringLiteral("location"), QStringLiteral("US-MA")},
                           {QStringLiteral("mode"), QStringLiteral("CW")},
                           {QStringLiteral("my_callsign"), QStringLiteral("G4ABC")},
                           {QStringLiteral("reference"), source == QLatin1String("DX")
                                                             ? QString()
                                                             : QStringLiteral("US-%1").arg(i % 3000)},
                           {QStringLiteral("reference_name"), QStringLiteral("Some State Park")},
                           {QStringLiteral("source"), source},
                           {QStringLiteral("spot_time"), loggedAt.addSecs(-300).toString(Qt::ISODate)},
                           {QStringLiteral("spotter"), QStringLiteral("N0SPOT")},
                           {QStringLiteral("timestamp"), loggedAt.toString(Qt::ISODate)}};
        QFile file(
            dir->filePath(QStringLiteral("contacts-%1-%2.jsonl")
                              .arg(source.toLower(), loggedAt.toString(QStringLiteral("yyyy-MM-dd")))));
        if (file.open(QIODevice::Append | QIODevice::Text))
            file.write(QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n');
    }
    return dir;
}

void BM_WorkedIndex(benchmark::State &state)
{
    static const std::unique_ptr<QTemporaryDir> logs = writeLogs(int(state.range(0)));
    for (auto _ : state) {
        WorkedIndex index(logs->path());
        index.reload();
        benchmark::DoNotOptimize(index.contactCount());
    }
}
BENCHMARK(BM_WorkedIndex)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

} // namespace
