// A DX cluster session: whatever a node sends, cut into reads of arbitrary
// sizes, reaches a real DxClusterFetcher over a loopback connection. Skimmer
// lines a node relays go through the skimmer aggregator. Built with
// TALLIS_FUZZ_RBN (fuzz_rbn), the fetcher is an RBN skimmer feed instead.
//
// Input: a seed byte for the read sizes, a byte of flags, then the node's
// bytes. Flags: bits 0-1 pick the largest read (8, 64, 512 or 4096 bytes);
// bit 2 lets the prompt window pass after the first read; bit 3 makes each
// read a second later than the one before; bit 4 has the node close the
// connection at the end; bit 5 leaves the user's call sign empty.
#include "api/apijson.h"
#include "fuzz/fuzzsupport.h"
#include "sources/dxclusterfetcher.h"
#include "sources/skimmeraggregator.h"
#include "sources/skimmerreport.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>

#include <cstdlib>
#include <memory>

namespace {

constexpr int k_waitMs = 2000;

QTcpServer &node()
{
    static QTcpServer *server = [] {
        auto *s = new QTcpServer;
        if (!s->listen(QHostAddress::LocalHost, 0))
            FuzzSupport::fail("cannot listen on 127.0.0.1");
        return s;
    }();
    return *server;
}

// Read sizes from a small linear congruential sequence, so a one-byte seed
// gives many different cuttings of the same text.
class ReadSizes
{
public:
    ReadSizes(quint8 seed, int largest)
        : m_state(seed * 2654435761u + 1)
        , m_largest(largest)
    {}
    int next()
    {
        m_state = m_state * 1103515245u + 12345u;
        return int((m_state >> 8) % unsigned(m_largest)) + 1;
    }

private:
    quint32 m_state;
    int m_largest;
};

void checkSpots(const QList<StationSpot> &spots)
{
    for (const StationSpot &spot : spots) {
        if (spot.callsign.isEmpty() || !(spot.frequencyKhz > 0))
            FuzzSupport::fail("a cluster spot without call sign or frequency", spot.key());
    }
    // Comments from the node reach API clients verbatim; the JSON must hold.
    FuzzSupport::requireValidJson(ApiJson::spotListJson(spots), "a cluster spot breaks the API's JSON");
}

// A skimmer report folded into its row: a row that could not be shown or
// sent would be a fault.
void checkReport(SkimmerAggregator &aggregator, const SkimmerReport &report)
{
    if (!report.isValid() || !(report.frequencyKhz > 0) || report.skimmer.isEmpty())
        FuzzSupport::fail("an invalid skimmer report", report.callsign);
    const StationSpot row = aggregator.add(report);
    if (row.source != StationSpot::RBN || row.callsign != report.callsign)
        FuzzSupport::fail("a skimmer report without its row", report.callsign);
    checkSpots({row});
}

void runSession(const QByteArray &stream, quint8 seed, quint8 flags)
{
    static const int largest[] = {8, 64, 512, 4096};
    qint64 nowMs = 1764000000000; // a fixed day, so the spot times do not depend on the run
    DxClusterFetcher fetcher(QStringLiteral("127.0.0.1"), node().serverPort(),
                             (flags & 0x20) ? QString() : QStringLiteral("N0CALL"));
    fetcher.setClock([&nowMs] { return nowMs; });
#ifdef TALLIS_FUZZ_RBN
    fetcher.setSkimmerFeed(true);
#endif
    QObject::connect(&fetcher, &DxClusterFetcher::spotsReady, &fetcher, &checkSpots);
    SkimmerAggregator aggregator(StationSpot::RBN, [&nowMs] { return nowMs; });
    QObject::connect(&fetcher, &DxClusterFetcher::skimmerReportReady, &fetcher,
                     [&aggregator](const SkimmerReport &report) { checkReport(aggregator, report); });

    fetcher.connectToCluster();
    auto *client = fetcher.findChild<QTcpSocket *>();
    if (!client || !client->waitForConnected(k_waitMs) || !node().waitForNewConnection(k_waitMs))
        FuzzSupport::fail("cannot connect to the local node");
    std::unique_ptr<QTcpSocket> peer(node().nextPendingConnection());
    peer->setSocketOption(QAbstractSocket::LowDelayOption, 1); // each read its own segment, at once

    ReadSizes sizes(seed, largest[flags & 3]);
    for (qsizetype at = 0; at < stream.size() && fetcher.state() != DxClusterFetcher::Disconnected;) {
        const qsizetype n = qMin<qsizetype>(sizes.next(), stream.size() - at);
        peer->write(stream.constData() + at, n);
        at += n;
        if (!peer->waitForBytesWritten(k_waitMs) || !client->waitForReadyRead(k_waitMs))
            break;       // the fetcher ended the session
        peer->readAll(); // what the fetcher sent: its call, SET/DX
        if (fetcher.bufferedChars() > DxClusterFetcher::k_maxLineChars)
            FuzzSupport::fail("the fetcher buffers an endless line");
        if (flags & 0x08)
            nowMs += 1000;
        if ((flags & 0x04) && at == n) {
            nowMs += DxClusterFetcher::k_promptWindowMs + 1;
            if (!QMetaObject::invokeMethod(&fetcher, "onPromptWaitOver"))
                std::abort(); // a renamed slot must not leave the prompt path unfuzzed
        }
    }
    if ((flags & 0x10) && fetcher.state() != DxClusterFetcher::Disconnected) {
        peer->disconnectFromHost();
        client->waitForDisconnected(k_waitMs);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    const QByteArray stream = FuzzSupport::bytes(data + 2, size - 2);
    runSession(stream, data[0], data[1]);

    // The line parser on its own, on every line, logged in or not.
    const QDateTime now = QDateTime::fromMSecsSinceEpoch(1764000000000, Qt::UTC);
    SkimmerAggregator aggregator(StationSpot::RBN, [] { return qint64(1764000000000); });
    for (const QByteArray &line : stream.split('\n')) {
        const QString text = DxClusterFetcher::stripAnsi(QString::fromUtf8(line)).trimmed();
        const StationSpot spot = DxClusterFetcher::parseDxLine(text, now);
        if (!spot.callsign.isEmpty())
            checkSpots({spot});
        const SkimmerReport report = SkimmerReport::parse(text, now);
        if (report.isValid())
            checkReport(aggregator, report);
    }
    FuzzSupport::processEvents();
    return 0;
}
