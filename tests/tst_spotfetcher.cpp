#include "sources/botaspotfetcher.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/sourcehealth.h"
#include "support/httptestserver.h"
#include "support/testmain.h"

#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <memory>

namespace {
// A source whose parser turns every body line into one spot, so the framework
// can be watched without any real service's format.
class LineFetcher final : public SpotFetcher
{
public:
    explicit LineFetcher(const QUrl &url, const QByteArray &path = "/lines")
        : SpotFetcher(nullptr, url)
        , m_path(QString::fromLatin1(path))
    {}
    QString sourceName() const override { return QStringLiteral("LINES"); }
    QList<StationSpot> parseResponse(const QByteArray &body) override
    {
        ++parses;
        QList<StationSpot> spots;
        for (const QByteArray &line : body.split('\n')) {
            StationSpot s;
            s.callsign = QString::fromUtf8(line);
            if (!line.isEmpty())
                spots.append(s);
        }
        return spots;
    }
    void fetch() override { sendGet(m_path); }
    int parses = 0;

private:
    QString m_path;
};

QStringList calls(const QSignalSpy &ready, int index)
{
    QStringList list;
    for (const StationSpot &s : ready.at(index).at(0).value<QList<StationSpot>>())
        list << s.callsign;
    return list;
}

QString localTime(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("HH:mm:ss"));
}

const qint64 k_now = QDateTime(QDate(2026, 11, 21), QTime(17, 0), Qt::UTC).toMSecsSinceEpoch();
} // namespace

class TestSpotFetcher final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_server = new HttpTestServer(this);
        QVERIFY(m_server->start());
        m_server->setRoute("/lines", "K1ABC\nK2XYZ\n");
    }
    void cleanup() { delete m_server; }

    void startSendsOneImmediateRequestThenTicks()
    {
        LineFetcher f(m_server->url());
        QSignalSpy started(&f, &SpotFetcher::fetchStarted);
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        f.startAutoRefresh(60);
        QVERIFY(f.isAutoRefreshing());
        QCOMPARE(started.count(), 0); // queued, not sent at once
        f.startAutoRefresh(120);      // a second start changes the interval only
        QCOMPARE(f.refreshIntervalMs(), 120000);
        QVERIFY(ready.wait(5000));
        QCOMPARE(started.count(), 1);
        QCOMPARE(calls(ready, 0), QStringList({QStringLiteral("K1ABC"), QStringLiteral("K2XYZ")}));
        QTest::qWait(100);
        QCOMPARE(m_server->requestCount(), 1);
        // Stopping does not abort a reply in flight; overlapping fetches give a batch each.
        m_server->setHoldReplies(true);
        f.fetch();
        f.stopAutoRefresh();
        QVERIFY(!f.isAutoRefreshing());
        f.fetch();
        QTRY_COMPARE(m_server->requestCount(), 3);
        m_server->releaseHeld();
        QTRY_COMPARE(ready.count(), 3);
        m_server->setHoldReplies(false);
        f.startAutoRefresh(0); // a short interval really repeats
        QTRY_VERIFY_WITH_TIMEOUT(m_server->requestCount() >= 5, 5000);
    }

    void botaIsInert()
    {
        BotaSpotFetcher f;
        QSignalSpy started(&f, &SpotFetcher::fetchStarted);
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        f.startAutoRefresh(60);
        f.fetch();
        QTest::qWait(50);
        QCOMPARE(started.count() + ready.count(), 0);
        QVERIFY(f.parseResponse("[{\"activator\":\"K1ABC\"}]").isEmpty());
        QCOMPARE(PotaSpotFetcher().serviceUrl(), QUrl(QStringLiteral("https://api.pota.app")));
    }

    void unchangedListIsNotParsedAgain()
    {
        m_server->setRoute("/lines", "K1ABC\n", 200, "text/plain",
                           "ETag: \"v1\"\r\nLast-Modified: Sat, 21 Nov 2026 17:00:00 GMT\r\n");
        LineFetcher f(m_server->url());
        QSignalSpy started(&f, &SpotFetcher::fetchStarted);
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        for (int tick = 1; tick <= 2; ++tick) {
            f.fetch();
            QTRY_COMPARE(ready.count(), tick);
            QCOMPARE(started.count(), tick);
            QCOMPARE(calls(ready, tick - 1), QStringList(QStringLiteral("K1ABC")));
        }
        QCOMPARE(f.parses, 1); // the 304 gave the last batch again
        const auto headers = m_server->requests().constLast().headers;
        QCOMPARE(headers.value("if-none-match"), QByteArray("\"v1\""));
        QCOMPARE(headers.value("if-modified-since"), QByteArray("Sat, 21 Nov 2026 17:00:00 GMT"));

        // A body the parser faulted is asked for whole again.
        m_server->setRoute("/spot/", "[", 200, "application/json", "ETag: \"v1\"\r\n");
        PotaSpotFetcher pota(nullptr, m_server->url());
        QSignalSpy potaReady(&pota, &SpotFetcher::spotsReady);
        pota.fetch();
        QVERIFY(potaReady.wait(5000));
        pota.fetch();
        QVERIFY(potaReady.wait(5000));
        QVERIFY(!m_server->requests().constLast().headers.contains("if-none-match"));
    }

    void retryAfter_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("retryAfter");
        QTest::addColumn<int>("quietSecs"); // 0: no quiet time
        QTest::newRow("429, seconds") << 429 << QByteArray("120") << 120;
        QTest::newRow("503, HTTP date") << 503 << QByteArray("Sat, 21 Nov 2026 17:05:00 GMT") << 300;
        QTest::newRow("429, a day") << 429 << QByteArray("86400") << 3600;
        QTest::newRow("429, none") << 429 << QByteArray() << 0;
        QTest::newRow("429, garbage") << 429 << QByteArray("soon") << 0;
        QTest::newRow("500") << 500 << QByteArray("120") << 0;
    }

    void retryAfter()
    {
        QFETCH(QByteArray, retryAfter);
        QFETCH(int, quietSecs);
        m_server->setRoute("/lines", "slow down", fetched<int>("status"), "text/plain",
                           retryAfter.isEmpty() ? QByteArray() : "Retry-After: " + retryAfter + "\r\n");
        LineFetcher f(m_server->url());
        qint64 now = k_now;
        f.setClock([&now] { return now; });
        QSignalSpy started(&f, &SpotFetcher::fetchStarted);
        QSignalSpy errors(&f, &SpotFetcher::fetchError);
        QSignalSpy notices(&f, &SpotFetcher::notice);
        f.fetch();
        QVERIFY(errors.wait(5000));
        const qint64 until = k_now + quietSecs * 1000LL;
        QCOMPARE(f.quietUntilMs(), quietSecs ? until : 0);
        QCOMPARE(notices.count(), quietSecs ? 1 : 0);
        if (quietSecs == 0)
            return;
        QCOMPARE(notices.first().first().toString(),
                 QStringLiteral("The LINES oracle begs a respite \u2014 we leave it in peace until %1.")
                     .arg(localTime(until)));
        // Ticks in the quiet time send and emit nothing at all.
        now = until - 1;
        f.fetch();
        f.fetch();
        QTest::qWait(50);
        QCOMPARE(m_server->requestCount(), 1);
        QCOMPARE(started.count() + errors.count() + notices.count(), 3);
        now = until;
        f.fetch();
        QTRY_COMPARE(m_server->requestCount(), 2);
        QTRY_COMPARE(errors.count(), 2);
    }

    void sotaAsksForTheListOnlyWhenTheEpochMoved()
    {
        m_server->setRoute("/api/spots/epoch", "e1\n", 200, "text/plain");
        m_server->setRoute("/api/spots/-72", R"([{"activatorCallsign": "G4ABC/P", "frequency": 14.062}])");
        SotaSpotFetcher f(nullptr, m_server->url());
        QSignalSpy started(&f, &SpotFetcher::fetchStarted);
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        const QList<int> listRequests = {1, 1, 2}; // after each tick
        for (int tick = 0; tick < 3; ++tick) {
            if (tick == 2)
                m_server->setRoute("/api/spots/epoch", "e2", 200, "text/plain");
            f.fetch();
            QTRY_COMPARE(ready.count(), tick + 1);
            QCOMPARE(started.count(), tick + 1);
            QCOMPARE(m_server->requestCount("/api/spots/epoch"), tick + 1);
            QCOMPARE(m_server->requestCount("/api/spots/-72"), listRequests.at(tick));
            QCOMPARE(calls(ready, tick), QStringList(QStringLiteral("G4ABC/P")));
        }
    }

    void sourceHealth()
    {
        m_server->setRoute("/bad", "boom", 500, "text/plain");
        m_server->setRoute("/spot/", "");
        LineFetcher good(m_server->url());
        LineFetcher bad(m_server->url(), "/bad");
        PotaSpotFetcher faulty(nullptr, m_server->url());
        qint64 now = k_now;
        SourceHealth health;
        health.setClock([&now] { return now; });
        health.watch(&good, QStringLiteral("GOOD"));
        health.watch(&bad, QStringLiteral("BAD"));
        health.watch(&faulty, QStringLiteral("POTA"));
        QCOMPARE(health.labelText(), QStringLiteral("Sources: all answering"));
        QSignalSpy changed(&health, &SourceHealth::changed);
        QList<std::shared_ptr<QSignalSpy>> spies; // ready and errors of each
        for (SpotFetcher *f : std::initializer_list<SpotFetcher *>{&good, &bad, &faulty}) {
            spies << std::make_shared<QSignalSpy>(f, &SpotFetcher::spotsReady)
                  << std::make_shared<QSignalSpy>(f, &SpotFetcher::fetchError);
            f->startAutoRefresh(60);
        }
        // An HTTP error is only a fetchError; a body the parser rejects is its
        // error and then an empty batch, which is no success.
        QTRY_COMPARE(changed.count(), 3);
        QTest::qWait(50);
        QCOMPARE(changed.count(), 3);
        QList<qsizetype> counts;
        for (const auto &spy : std::as_const(spies))
            counts << spy->count();
        QCOMPARE(counts, QList<qsizetype>({1, 0, 0, 1, 1, 1}));
        QCOMPARE(health.labelText(), QStringLiteral("Sources: 2 failing"));
        const QString at = localTime(k_now);
        QStringList tip = health.toolTip().split(QLatin1Char('\n'));
        QCOMPARE(tip.size(), 3);
        QCOMPARE(tip.at(0), QStringLiteral("GOOD: 2 spots at %1").arg(at));
        QVERIFY2(tip.at(1).startsWith(QStringLiteral("BAD: no answer yet; failing at %1: Error").arg(at)),
                 qPrintable(tip.at(1)));
        QVERIFY2(
            tip.at(2).startsWith(QStringLiteral("POTA: no answer yet; failing at %1: POTA JSON").arg(at)),
            qPrintable(tip.at(2)));

        // Answering again clears the failure and keeps the error on record;
        // a source switched off is not counted.
        now += 60000;
        m_server->setRoute("/bad", "K3ABC\n");
        bad.fetch();
        QTRY_COMPARE(health.labelText(), QStringLiteral("Sources: 1 failing"));
        tip = health.toolTip().split(QLatin1Char('\n'));
        QVERIFY(tip.at(1).startsWith(
            QStringLiteral("BAD: 1 spot at %1; last error at %2: ").arg(localTime(now), at)));
        faulty.stopAutoRefresh();
        QCOMPARE(health.labelText(), QStringLiteral("Sources: all answering"));
        QVERIFY(health.toolTip().split(QLatin1Char('\n')).at(2).startsWith(QStringLiteral("POTA: off; ")));

        // A fetcher that goes is forgotten without a signal: its owner may be going too.
        QSignalSpy quiet(&health, &SourceHealth::changed);
        {
            LineFetcher gone(m_server->url());
            health.watch(&gone, QStringLiteral("GONE"));
            quiet.clear();
        }
        QCOMPARE(quiet.count(), 0);
        QCOMPARE(health.toolTip().split(QLatin1Char('\n')).size(), 3);
    }

    // The key truncates the frequency toward zero; what has no whole kHz gives 0.
    void keyAndSourceName()
    {
        StationSpot s;
        s.callsign = QStringLiteral("K1ABC");
        const QList<std::pair<double, const char *>> keys = {
            {14062.7, "14062"}, {7032.999, "7032"},  {7033.0, "7033"}, {-0.9, "0"},
            {-1.5, "-1"},       {std::nan(""), "0"}, {1e300, "0"}};
        for (const auto &[khz, key] : keys) {
            s.frequencyKhz = khz;
            QCOMPARE(s.key(), QStringLiteral("K1ABC||") + QLatin1String(key));
        }
        s.reference = QStringLiteral("US-1234");
        QCOMPARE(s.key(), QStringLiteral("K1ABC|US-1234|0"));
        s.source = static_cast<StationSpot::Source>(-1); // past the table's end is the log file test's
        QCOMPARE(s.sourceString(), QStringLiteral("?"));
    }

private:
    HttpTestServer *m_server = nullptr;
};

TALLIS_TEST_MAIN(TestSpotFetcher)
#include "tst_spotfetcher.moc"
