// Reading the operator's contact logs at start: years of hunting in daily files.
#include "app/logbook/workedimport.h"
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

#ifdef Q_OS_LINUX
#include <unistd.h>
#endif

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

// Resident memory of the process, in bytes; 0 where it cannot be read.
double residentBytes()
{
#ifdef Q_OS_LINUX
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0.0;
    const QList<QByteArray> pages = statm.readAll().split(' ');
    return pages.size() > 1 ? pages.at(1).toDouble() * double(sysconf(_SC_PAGESIZE)) : 0.0;
#else
    return 0.0;
#endif
}

// What the first load adds to the resident memory while its result is held,
// in MB: measured once, before any timed load leaves freed heap to reuse.
template <typename Load>
double firstGrowthMb(Load load)
{
    const double before = residentBytes();
    const auto held = load();
    benchmark::DoNotOptimize(held);
    return (residentBytes() - before) / 1e6;
}

void BM_WorkedIndex(benchmark::State &state)
{
    static const std::unique_ptr<QTemporaryDir> logs = writeLogs(int(state.range(0)));
    static const double growthMb = firstGrowthMb([] {
        auto index = std::make_unique<WorkedIndex>(logs->path());
        index->reload();
        return index;
    });
    for (auto _ : state) {
        WorkedIndex index(logs->path());
        index.reload();
        benchmark::DoNotOptimize(index.contactCount());
    }
    state.counters["rss_growth_MB"] = growthMb;
}
BENCHMARK(BM_WorkedIndex)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

// A logbook as another program exports it: lower-case tags, CRLF, fields
// Tallis does not read, names in UTF-8, parks and summits among the DX.
std::unique_ptr<QTemporaryDir> writeLogbook(int n)
{
    auto dir = std::make_unique<QTemporaryDir>();
    QFile file(dir->filePath(QStringLiteral("logbook.adi")));
    if (!file.open(QIODevice::WriteOnly))
        return dir;
    file.write("Exported by another logger\r\n<adif_ver:5>3.1.1\r\n<eoh>\r\n");
    const QDate first(2010, 1, 1);
    for (int i = 0; i < n; ++i) {
        const auto &band = k_bands[size_t(i % 11)];
        const QByteArray call = "K" + QByteArray::number(i % 20000) + "AB";
        const QByteArray freq = QByteArray::number((band.lowKhz + 25.0) / 1000.0, 'f', 4);
        QByteArray line = "<call:" + QByteArray::number(call.size()) + ">" + call + " <qso_date:8>" +
                          first.addDays(i / 30).toString(QStringLiteral("yyyyMMdd")).toLatin1() +
                          " <time_on:6>120000 <band:" + QByteArray::number(qstrlen(band.name)) + ">" +
                          band.name + " <freq:" + QByteArray::number(freq.size()) + ">" + freq +
                          " <mode:2>CW <rst_sent:3>599 <rst_rcvd:3>579 <name:5>J\xc3\xb6rg <qth:6>Boston"
                          " <my_gridsquare:6>IO84jk <station_callsign:5>G4ABC <app_logger_id:4>1234";
        if (i % 3 == 0) {
            const QByteArray park = "US-" + QByteArray::number(i % 5000);
            line += " <sig:4>POTA <sig_info:" + QByteArray::number(park.size()) + ">" + park +
                    " <pota_ref:" + QByteArray::number(park.size()) + ">" + park;
        } else if (i % 3 == 1) {
            line += " <sota_ref:10>W4C/CM-" + QByteArray::number(100 + i % 900);
        }
        file.write(line + "\r\n<eor>\r\n");
    }
    return dir;
}

// The operator's logbook read for "worked before".
void BM_AdifImport(benchmark::State &state)
{
    static const std::unique_ptr<QTemporaryDir> logbook = writeLogbook(int(state.range(0)));
    static const QString path = logbook->filePath(QStringLiteral("logbook.adi"));
    static const double growthMb = firstGrowthMb([] {
        auto table = std::make_unique<WorkedTable>();
        WorkedImport::readFiles({path}, *table);
        return table;
    });
    for (auto _ : state) {
        WorkedTable table;
        const WorkedImportSummary summary = WorkedImport::readFiles({path}, table);
        benchmark::DoNotOptimize(summary.taken);
    }
    state.counters["rss_growth_MB"] = growthMb;
}
BENCHMARK(BM_AdifImport)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);

} // namespace
