// A DX cluster line all the way into the window's table: the cost every line
// of a busy node pays on the GUI thread.
#include "app/mainwindow.h"
#include "app/serviceurls.h"
#include "app/tallisdir.h"
#include "bench/benchdata.h"
#include "model/stationmodel.h"
#include "sources/dxclusterfetcher.h"

#include <QCoreApplication>
#include <QFile>
#include <QItemSelectionModel>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTableView>

#include <benchmark/benchmark.h>

namespace {

// Every source shown, the web services and the one cluster on a closed
// loopback port: the table is fed by the benchmark alone.
void writeQuietSettings()
{
    ensureTallisDir();
    const QJsonObject settings{
        {QStringLiteral("callsign"), QStringLiteral("N0CALL")},
        {QStringLiteral("maxAgeMins"), 720},
        {QStringLiteral("sources"), QJsonObject{{QStringLiteral("dx"), true}}},
        {QStringLiteral("dxClusters"),
         QJsonArray{QJsonObject{{QStringLiteral("host"), QStringLiteral("127.0.0.1")},
                                {QStringLiteral("port"), 1}}}},
        {QStringLiteral("wsEnabled"), false},
    };
    QFile file(tallisDirPath() + QStringLiteral("/settings.json"));
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(QJsonDocument(settings).toJson());
}

void BM_DxLineToTable(benchmark::State &state)
{
    writeQuietSettings();
    MainWindow window(ServiceUrls::allAt(QUrl(QStringLiteral("http://127.0.0.1:1"))));
    // Let the refused first fetches and connection attempts come and go.
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    fillModel(*window.findChild<StationModel *>(), int(state.range(0)), now);
    // A selected row, so every line also pays for restoring the selection.
    window.findChild<QTableView *>(QStringLiteral("spotTable"))
        ->selectionModel()
        ->select(window.findChild<QTableView *>(QStringLiteral("spotTable"))->model()->index(10, 0),
                 QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);

    DxClusterFetcher *cluster = window.findChild<DxClusterFetcher *>();
    const QString hhmm = QDateTime::currentDateTimeUtc().toString(QStringLiteral("HHmm"));
    QStringList lines;
    for (int i = 0; i < 100; ++i)
        lines.append(QStringLiteral("DX de W3LPL:     %1  DL%2ABC       CW 599 TNX QSO                %3Z")
                         .arg(14000.0 + 1.5 * i, 0, 'f', 1)
                         .arg(i)
                         .arg(hhmm));
    int i = 0;
    for (auto _ : state) {
        const StationSpot spot = DxClusterFetcher::parseDxLine(lines.at(i++ % lines.size()));
        emit cluster->spotsReady({spot});
        QCoreApplication::processEvents(); // the window merges once the read is done
    }
    state.counters["rows"] = window.findChild<StationModel *>()->rowCount();
    state.counters["shown"] =
        window.findChild<QTableView *>(QStringLiteral("spotTable"))->model()->rowCount();
}
BENCHMARK(BM_DxLineToTable)->Arg(5000)->Unit(benchmark::kMicrosecond);

} // namespace
