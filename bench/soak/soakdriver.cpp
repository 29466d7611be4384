#include "soakdriver.h"

#include "soakclients.h"
#include "soakhome.h"
#include "soakstats.h"
#include "support/clustertestserver.h"
#include "support/httptestserver.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

namespace {

void out(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

bool waitUntil(const std::function<bool()> &done, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
    return true;
}

// Distinct call signs from an index: "W" + digit + letters.
QString callFor(const char *prefix, int i)
{
    QString letters;
    for (int n = i / 10; letters.size() < 3 || n > 0; n /= 26)
        letters.prepend(QChar(u'A' + n % 26));
    return QLatin1String(prefix) + QString::number(i % 10) + letters;
}

// The web table: POTA spots on the HF bands, every one of its own call and
// park, spotted within the last twenty minutes.
struct WebSpot
{
    QString call;
    QString park;
    int kHz = 0;
    QString key() const { return QStringLiteral("%1|%2|%3").arg(call, park).arg(kHz); }
};

QList<WebSpot> makeWebSpots(int count)
{
    static const int bandStarts[] = {7000, 10100, 14000, 18068, 21000, 24890, 28000};
    QList<WebSpot> spots;
    for (int i = 0; i < count; ++i)
        spots.append({callFor("K", i), QStringLiteral("US-%1").arg(i, 5, 10, QLatin1Char('0')),
                      bandStarts[i % 7] + (i / 7) % 50});
    return spots;
}

QByteArray potaBody(const QList<WebSpot> &spots)
{
    QJsonArray array;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (int i = 0; i < spots.size(); ++i) {
        const WebSpot &s = spots.at(i);
        array.append(QJsonObject{
            {QStringLiteral("activator"), s.call},
            {QStringLiteral("reference"), s.park},
            {QStringLiteral("name"), QStringLiteral("Park %1").arg(s.park)},
            {QStringLiteral("frequency"), QString::number(s.kHz)},
            {QStringLiteral("mode"), i % 3 ? QStringLiteral("CW") : QStringLiteral("SSB")},
            {QStringLiteral("spotter"), QStringLiteral("N0CALL")},
            {QStringLiteral("grid6"), QStringLiteral("FN31pr")},
            {QStringLiteral("spotTime"),
             now.addSecs(-(i % 1200)).toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"))},
        });
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

QByteArray dxLine(int callIndex)
{
    static const int bandStarts[] = {3500, 7000, 14000, 21000, 28000};
    const double kHz = bandStarts[callIndex % 5] + (callIndex / 5) % 300 + 0.1 * (callIndex % 10);
    const QString line = QStringLiteral("DX de N0SOAK:  %1  %2  CW 12 dB 25 WPM CQ  %3Z\r\n")
                             .arg(kHz, 0, 'f', 1)
                             .arg(callFor("DL", callIndex), -12)
                             .arg(QDateTime::currentDateTimeUtc().toString(QStringLiteral("HHmm")));
    return line.toLatin1();
}

// Skimmers around the world; the first hearers of a station are the same ones.
QString skimmerFor(int index)
{
    static const char *const prefixes[] = {"DL", "K", "JA", "VK", "G", "PY", "ZS", "W", "OH", "VE"};
    return callFor(prefixes[index % 10], 7000 + index) + QStringLiteral("-#");
}

// One skimmer line of the RBN stand-ins: station c of calls, heard by skimmer
// (n / calls + c) % (1 + c % 40) of them, so each station is heard by up to 40.
// Seven in ten are CW (the 7000 port), the rest FT8 (7001).
QByteArray skimmerLine(int n, int calls, bool *digital)
{
    static const char *const prefixes[] = {"DL", "G", "JA", "VK", "PY", "ZS", "W", "UA9"};
    static const int cwStarts[] = {3500, 7000, 10100, 14000, 18068, 21000, 24890, 28000};
    static const double ft8Dials[] = {3573, 7074, 10136, 14074, 18100, 21074, 24915, 28074};
    const int c = n % calls;
    const int skimmer = (n / calls + c) % (1 + c % 40);
    *digital = c % 10 >= 7;
    const QString call = callFor(prefixes[c % 8], c);
    const QString hhmm = QDateTime::currentDateTimeUtc().toString(QStringLiteral("HHmm"));
    const double kHz =
        *digital ? ft8Dials[c % 8] + 0.1 * (c % 25) : cwStarts[c % 8] + (c / 8) % 60 + 0.1 * (skimmer % 2);
    const int snr = 3 + (n * 7 + skimmer) % 30;
    const QString line = *digital ? QStringLiteral("DX de %1  %2  %3  FT8  %4 dB  CQ  %5Z\r\n")
                                        .arg(skimmerFor(skimmer) + QLatin1Char(':'), -15)
                                        .arg(kHz, 0, 'f', 1)
                                        .arg(call, -10)
                                        .arg(snr - 20)
                                        .arg(hhmm)
                                  : QStringLiteral("DX de %1  %2  %3  CW  %4 dB  %5 WPM  CQ  %6Z\r\n")
                                        .arg(skimmerFor(skimmer) + QLatin1Char(':'), -15)
                                        .arg(kHz, 0, 'f', 1)
                                        .arg(call, -10)
                                        .arg(snr)
                                        .arg(18 + c % 15)
                                        .arg(hhmm);
    return line.toLatin1();
}

struct WindowReport
{
    qint64 startKb = 0;
    qint64 loadedKb = 0;
    qint64 endKb = 0;
    int endRows = 0;
    int endVisible = 0;
    SoakStats::Summary lag;
    qint64 heapInUseKb = 0; // malloc's live blocks, at the last sample and at most
    qint64 heapInUsePeakKb = 0;
    QStringList stalls; // ticks 40 ms or more late: "62.0 ms at 13.5 s"
    double floodCpuSecs = 0.0;
    double floodSecs = 0.0;
    QList<QPair<int, qint64>> floodRss; // seconds into the flood, kB
    bool loaded = false;
    bool ended = false;
};

void readWindowLine(const QByteArray &line, WindowReport &report)
{
    const QList<QByteArray> f = line.trimmed().split(' ');
    if (f.value(0) == "start") {
        report.startKb = f.value(1).toLongLong();
    } else if (f.value(0) == "loaded") {
        report.loadedKb = f.value(1).toLongLong();
        report.loaded = true;
    } else if (f.value(0) == "rss" && f.value(1).toInt() >= 0) {
        report.floodRss.append({f.value(1).toInt(), f.value(2).toLongLong()});
        report.heapInUseKb = f.value(5).toLongLong();
        report.heapInUsePeakKb = std::max(report.heapInUsePeakKb, report.heapInUseKb);
    } else if (f.value(0) == "lag") {
        report.lag = {f.value(4).toLongLong(), f.value(1).toDouble(), f.value(2).toDouble(),
                      f.value(3).toDouble()};
    } else if (f.value(0) == "stall") {
        report.stalls.append(QString::fromLatin1(f.value(2) + " ms at " + f.value(1) + " s"));
    } else if (f.value(0) == "cpu") {
        report.floodCpuSecs = f.value(1).toDouble();
        report.floodSecs = f.value(2).toDouble();
    } else if (f.value(0) == "end") {
        report.endKb = f.value(1).toLongLong();
        report.endRows = f.value(2).toInt();
        report.endVisible = f.value(3).toInt();
        report.ended = true;
    }
}

} // namespace

namespace {

// What the flood asked of the program that must be on disk afterwards.
struct Expected
{
    QHash<QString, int> marks; // key -> status
    QList<WebSpot> logged;     // one log line each
};

// The marks in contact-status.json that match what was sent.
int marksFound(const QString &home, const Expected &expected)
{
    QFile file(home + QStringLiteral("/.tallis/contact-status.json"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    int found = 0;
    for (const QJsonValue &v : QJsonDocument::fromJson(file.readAll()).array()) {
        const QJsonObject mark = v.toObject();
        const auto it = expected.marks.constFind(mark.value(QLatin1String("key")).toString());
        if (it != expected.marks.cend() && mark.value(QLatin1String("status")).toInt() == *it)
            ++found;
    }
    return found;
}

// The logged spots that have their line in a contacts-pota-*.jsonl file.
int logLinesFound(const QString &home, const Expected &expected, int *linesInFiles)
{
    QHash<QString, int> lines; // "call|park|kHz" -> count
    *linesInFiles = 0;
    const QDir dir(home + QStringLiteral("/.tallis"));
    for (const QString &name : dir.entryList({QStringLiteral("contacts-pota-*.jsonl")}, QDir::Files)) {
        QFile file(dir.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        while (!file.atEnd()) {
            const QJsonObject o = QJsonDocument::fromJson(file.readLine()).object();
            ++*linesInFiles;
            ++lines[QStringLiteral("%1|%2|%3")
                        .arg(o.value(QLatin1String("callsign")).toString(),
                             o.value(QLatin1String("reference")).toString())
                        .arg(qint64(o.value(QLatin1String("frequency_khz")).toDouble()))];
        }
    }
    int found = 0;
    for (const WebSpot &s : expected.logged)
        found += lines.value(s.key()) > 0 ? 1 : 0;
    return found;
}

// Resident memory over the last 30 s of the flood: the rise from its first
// five samples to its last five (transient peaks while the table goes out to
// every client come and go), and the highest sample.
struct LateMemory
{
    qint64 growthKb = 0;
    qint64 peakKb = 0;
};

LateMemory lateMemory(const QList<QPair<int, qint64>> &samples, int seconds)
{
    QList<qint64> window;
    for (const auto &[secs, kb] : samples) {
        if (secs >= seconds - 30)
            window.append(kb);
    }
    LateMemory m;
    if (window.size() < 2)
        return m;
    const qsizetype n = qMin<qsizetype>(5, window.size() / 2);
    qint64 first = 0;
    qint64 last = 0;
    for (qsizetype i = 0; i < n; ++i) {
        first += window.at(i);
        last += window.at(window.size() - 1 - i);
    }
    m.growthKb = (last - first) / n;
    m.peakKb = *std::max_element(window.cbegin(), window.cend());
    return m;
}

class Soak
{
public:
    Soak(const SoakOptions &options, const QString &selfPath)
        : m_options(options)
        , m_self(selfPath)
        , m_web(makeWebSpots(options.webSpots))
    {}

    int run();

private:
    bool setUp();
    void flood();
    void tick(int tickIndex);
    int report();

    const SoakOptions m_options;
    const QString m_self;
    const QList<WebSpot> m_web;
    QTemporaryDir m_home;
    HttpTestServer m_http;
    ClusterTestServer m_node;
    ClusterTestServer m_rbnCw;
    ClusterTestServer m_rbnDigital;
    QProcess m_window;
    QByteArray m_windowOutput;
    WindowReport m_report;
    std::vector<std::unique_ptr<ApiClient>> m_clients;
    quint16 m_wsPort = 0;
    int m_nextCall = 0;
    int m_nextWebSpot = 0;
    int m_linesSent = 0;
    int m_skimmerLinesSent = 0;
    QStringList m_closedDuringFlood;
    Expected m_expected;
};

bool Soak::setUp()
{
    if (!m_home.isValid() || !m_http.start() || !m_node.start())
        return false;
    m_http.setRoute("/spot/", potaBody(m_web));
    m_http.setRoute("/api/spots/-72", "[]");
    m_http.setRoute("/static/spots.json", "[]");
    m_http.setRoute("/spots/", "[]");
    m_http.setRoute("/api/spots/gma/", "{\"RCD\":[]}");
    m_node.setLoginReply("Hello N0CALL, this is the soak node\r\nN0CALL de SOAK 22-Nov-2026 1200Z >\r\n");
    const bool rbn = m_options.rbnLinesPerSecond > 0;
    if (rbn) {
        if (!m_rbnCw.start() || !m_rbnDigital.start())
            return false;
        for (ClusterTestServer *feed : {&m_rbnCw, &m_rbnDigital}) {
            feed->setGreeting("Welcome to the soak's skimmer feed\r\nPlease enter your call: ");
            feed->setLoginReply("Hello N0CALL, Connected\r\n");
        }
    }

    m_wsPort = SoakHome::freePort();
    const QJsonObject settings{
        {QStringLiteral("callsign"), QStringLiteral("N0CALL")},
        {QStringLiteral("sources"), QJsonObject{{QStringLiteral("sota"), true},
                                                {QStringLiteral("pota"), true},
                                                {QStringLiteral("wwff"), true},
                                                {QStringLiteral("wwbota"), true},
                                                {QStringLiteral("bota"), false},
                                                {QStringLiteral("dx"), true},
                                                {QStringLiteral("gma"), true},
                                                {QStringLiteral("rbn"), rbn}}},
        {QStringLiteral("rbnHost"), QStringLiteral("127.0.0.1")},
        {QStringLiteral("rbnScope"), QStringLiteral("all")},
        {QStringLiteral("rbnContinents"), QJsonArray()}, // skimmers anywhere
        {QStringLiteral("dxClusters"),
         QJsonArray{QJsonObject{{QStringLiteral("host"), QStringLiteral("127.0.0.1")},
                                {QStringLiteral("port"), m_node.port()}}}},
        {QStringLiteral("maxAgeMins"), 120},
        {QStringLiteral("statusFilter"), 1}, // "All": marked spots stay in view
        {QStringLiteral("wsEnabled"), true},
        {QStringLiteral("wsHost"), QStringLiteral("127.0.0.1")},
        {QStringLiteral("wsPort"), m_wsPort},
    };
    if (!SoakHome::writeSettings(m_home.path(), settings))
        return false;
    m_window.setProcessEnvironment(SoakHome::environment(m_home.path()));
    m_window.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QObject::connect(&m_window, &QProcess::readyReadStandardOutput, &m_window, [this] {
        m_windowOutput += m_window.readAllStandardOutput();
        for (qsizetype end; (end = m_windowOutput.indexOf('\n')) >= 0;) {
            readWindowLine(m_windowOutput.left(end), m_report);
            m_windowOutput.remove(0, end + 1);
        }
    });
    QStringList windowArgs{QStringLiteral("--window"), m_http.url().toString(),
                           QString::number(m_web.size())};
    if (m_options.docks)
        windowArgs << QStringLiteral("--docks");
    if (rbn)
        windowArgs << QStringLiteral("--rbn") << QString::number(m_rbnCw.port())
                   << QString::number(m_rbnDigital.port());
    m_window.start(m_self, windowArgs);
    if (!waitUntil([this] { return m_report.loaded; }, 120000)) {
        out(QStringLiteral("error: the window did not load %1 spots").arg(m_web.size()));
        return false;
    }
    if (!waitUntil([this] { return m_node.receivedCount("SET/DX") > 0; }, 30000)) {
        out(QStringLiteral("error: the window did not log in to the node"));
        return false;
    }
    const auto rbnLoggedIn = [this] {
        return m_rbnCw.receivedCount("N0CALL") > 0 && m_rbnDigital.receivedCount("N0CALL") > 0;
    };
    if (rbn && !waitUntil(rbnLoggedIn, 30000)) {
        out(QStringLiteral("error: the window did not log in to both skimmer feeds"));
        return false;
    }
    for (int i = 0; i < m_options.apiClients; ++i) {
        m_clients.push_back(std::make_unique<ApiClient>(i));
        m_clients.back()->open(m_wsPort);
    }
    const auto allGreeted = [this] {
        return std::all_of(m_clients.cbegin(), m_clients.cend(),
                           [](const auto &c) { return c->isGreeted(); });
    };
    if (!waitUntil(allGreeted, 30000)) {
        out(QStringLiteral("error: not every API client was greeted"));
        return false;
    }
    for (int i = 0; i < std::min(m_options.deltaClients, int(m_clients.size())); ++i)
        m_clients[size_t(i)]->send(QStringLiteral("spots.subscribe"),
                                   {{QStringLiteral("mode"), QStringLiteral("delta")}});
    return true;
}

// Every 50 ms: a twentieth of a second's cluster lines; each client asks for
// the status every 500 ms, marks a spot every 3 s and logs one every 6 s,
// the clients staggered over the interval.
void Soak::tick(int tickIndex)
{
    QByteArray lines;
    const int perTick = m_options.linesPerSecond / 20;
    for (int i = 0; i < perTick; ++i, ++m_linesSent)
        lines += dxLine(m_nextCall++ % m_options.dxCalls);
    if (!lines.isEmpty())
        m_node.send(lines);

    QByteArray cw;
    QByteArray digital;
    for (int i = 0; i < m_options.rbnLinesPerSecond / 20; ++i) {
        bool isDigital = false;
        const QByteArray line = skimmerLine(m_skimmerLinesSent++, m_options.rbnCalls, &isDigital);
        (isDigital ? digital : cw) += line;
    }
    if (!cw.isEmpty())
        m_rbnCw.send(cw);
    if (!digital.isEmpty())
        m_rbnDigital.send(digital);

    for (int c = 0; c < int(m_clients.size()); ++c) {
        ApiClient &client = *m_clients[size_t(c)];
        const int phase = tickIndex + c * 7;
        if (phase % 10 == 0)
            client.send(QStringLiteral("status.get"));
        if (phase % 60 == 0 && m_nextWebSpot < m_web.size()) {
            const WebSpot &spot = m_web.at(m_nextWebSpot++);
            const int status = 1 + m_nextWebSpot % 3;
            m_expected.marks.insert(spot.key(), status);
            client.send(QStringLiteral("spot.status.set"),
                        {{QStringLiteral("key"), spot.key()}, {QStringLiteral("status"), status}});
        }
        if (phase % 120 == 30 && m_nextWebSpot < m_web.size()) {
            const WebSpot &spot = m_web.at(m_nextWebSpot++);
            m_expected.logged.append(spot);
            client.send(QStringLiteral("spot.log"), {{QStringLiteral("key"), spot.key()}});
        }
    }
}

void Soak::flood()
{
    m_window.write("flood\n");
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(50);
    int tickIndex = 0;
    QObject::connect(&ticker, &QTimer::timeout, &ticker, [this, &tickIndex] { tick(tickIndex++); });
    ticker.start();
    const int ticks = m_options.seconds * 20;
    waitUntil([&tickIndex, ticks] { return tickIndex >= ticks; }, m_options.seconds * 1000 + 60000);
    ticker.stop();
    m_window.write("stop\n");
    for (const auto &c : m_clients) {
        if (!c->closedWhy().isEmpty())
            m_closedDuringFlood << c->closedWhy();
    }
    // Replies still on their way are waited for, then the window is asked to go.
    waitUntil(
        [this] {
            return std::all_of(m_clients.cbegin(), m_clients.cend(),
                               [](const auto &c) { return c->pending() == 0; });
        },
        20000);
    // The end figure is the settled one: the last table has reached every
    // client (its hold is 1.5 s at 20,000 rows). The peak is reported apart.
    waitUntil([] { return false; }, 3000);
    m_window.write("quit\n");
    waitUntil([this] { return m_report.ended; }, 30000);
    m_window.waitForFinished(30000);
}

int Soak::report()
{
    int sent = 0, replies = 0, events = 0;
    qint64 eventBytes = 0;
    QList<double> roundTrips;
    QStringList errors;
    for (const auto &c : m_clients) {
        sent += c->sent();
        replies += c->replies();
        events += c->events();
        eventBytes += c->eventBytes();
        roundTrips += c->statusRoundTrips();
        errors += c->errors();
    }
    int logLines = 0;
    const int marks = marksFound(m_home.path(), m_expected);
    const int logs = logLinesFound(m_home.path(), m_expected, &logLines);
    const LateMemory late = lateMemory(m_report.floodRss, m_options.seconds);
    const auto mb = [](qint64 kb) -> QString {
        return QString::number(double(kb) / 1024.0, 'f', 1) + QStringLiteral(" MB");
    };
    // Characters, not bytes, but near enough for text that is nearly all ASCII.
    const qint64 eventKb = eventBytes / 1024;

    const int deltas = std::min(m_options.deltaClients, int(m_clients.size()));
    out(QStringLiteral("Soak: %1 web spots, %2 cluster lines/s over %3 calls%4 for %5 s, %6 API clients "
                       "(%7 on deltas)%8")
            .arg(m_web.size())
            .arg(m_options.linesPerSecond)
            .arg(m_options.dxCalls)
            .arg(m_options.rbnLinesPerSecond > 0 ? QStringLiteral(", %1 skimmer lines/s over %2 calls")
                                                       .arg(m_options.rbnLinesPerSecond)
                                                       .arg(m_options.rbnCalls)
                                                 : QString())
            .arg(m_options.seconds)
            .arg(m_clients.size())
            .arg(deltas)
            .arg(m_options.docks ? QStringLiteral(", map and band map shown") : QString()));
    out(QStringLiteral("  lines sent              %1 cluster, %2 skimmer")
            .arg(m_linesSent)
            .arg(m_skimmerLinesSent));
    out(QStringLiteral("  rows at the end         %1, visible %2")
            .arg(m_report.endRows)
            .arg(m_report.endVisible));
    out(QStringLiteral("  event-loop lag (50 ms timer)  %1").arg(SoakStats::describe(m_report.lag, "ms")));
    if (!m_report.stalls.isEmpty())
        out(QStringLiteral("  late ticks (40 ms+)     %1%2")
                .arg(m_report.stalls.mid(0, 12).join(QStringLiteral(", ")),
                     m_report.stalls.size() > 12 ? QStringLiteral(", …") : QString()));
    out(QStringLiteral("  status.get round trip   %1")
            .arg(SoakStats::describe(SoakStats::summarize(roundTrips), "ms")));
    qint64 floodPeakKb = 0;
    int floodPeakAt = 0;
    for (const auto &[secs, kb] : m_report.floodRss) {
        if (kb > floodPeakKb) {
            floodPeakKb = kb;
            floodPeakAt = secs;
        }
    }
    out(QStringLiteral("  resident memory         start %1, loaded %2, flood peak %3 (at %4 s), end %5; "
                       "last 30 s: growth %6, peak %7")
            .arg(mb(m_report.startKb), mb(m_report.loadedKb), mb(floodPeakKb), QString::number(floodPeakAt),
                 mb(m_report.endKb), mb(late.growthKb), mb(late.peakKb)));
    out(QStringLiteral("  heap in use (malloc)    peak %1, last %2")
            .arg(mb(m_report.heapInUsePeakKb), mb(m_report.heapInUseKb)));
    if (m_report.floodSecs > 0)
        out(QStringLiteral("  processor               %1% of one core during the flood (%2 s in %3 s)")
                .arg(100.0 * m_report.floodCpuSecs / m_report.floodSecs, 0, 'f', 1)
                .arg(m_report.floodCpuSecs, 0, 'f', 1)
                .arg(m_report.floodSecs, 0, 'f', 1));
    out(QStringLiteral("  API                     %1 commands, %2 replies, %3 lost, %4 error replies; "
                       "%5 events received (%6)")
            .arg(sent)
            .arg(replies)
            .arg(sent - replies)
            .arg(errors.size())
            .arg(events)
            .arg(mb(eventKb)));
    out(QStringLiteral("  marks in contact-status.json   %1 of %2").arg(marks).arg(m_expected.marks.size()));
    out(QStringLiteral("  log lines in contacts-pota-*   %1 of %2 (%3 lines in the files)")
            .arg(logs)
            .arg(m_expected.logged.size())
            .arg(logLines));
    for (const QString &e : errors.mid(0, 5))
        out(QStringLiteral("  error reply: ") + e);
    for (const QString &why : m_closedDuringFlood)
        out(QStringLiteral("  a client was %1").arg(why));
    const bool complete = sent == replies && errors.isEmpty() && marks == m_expected.marks.size() &&
                          logs == m_expected.logged.size() && logLines == m_expected.logged.size() &&
                          m_report.ended;
    out(complete ? QStringLiteral("  nothing lost")
                 : QStringLiteral("  FAILED: replies, marks or log lines lost"));
    return complete ? 0 : 1;
}

int Soak::run()
{
    if (!setUp()) {
        m_window.kill();
        m_window.waitForFinished(5000);
        return 2;
    }
    flood();
    return report();
}

} // namespace

int runSoak(const SoakOptions &options, const QString &selfPath)
{
    Soak soak(options, selfPath);
    return soak.run();
}
