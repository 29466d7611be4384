#include "sources/botaspotfetcher.h"
#include "sources/potaspotfetcher.h"
#include "support/httptestserver.h"
#include "support/testmain.h"

#include <QSignalSpy>
#include <QTest>

#include <cmath>

namespace {
// A source whose parser turns every body line into one spot, so the framework
// can be watched without any real service's format.
class LineFetcher final : public SpotFetcher
{
public:
    explicit LineFetcher(const QUrl &url)
        : SpotFetcher(nullptr, url)
    {}
    QList<StationSpot> parseResponse(const QByteArray &body) override
    {
        QList<StationSpot> spots;
        for (const QByteArray &line : body.split('\n')) {
            if (line.isEmpty())
                continue;
            StationSpot s;
            s.source = StationSpot::POTA;
            s.callsign = QString::fromUtf8(line);
            spots.append(s);
        }
        return spots;
    }
    void fetch() override { sendGet(QStringLiteral("/lines")); }
};
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
        QCOMPARE(f.refreshIntervalMs(), 60000);
        QVERIFY(f.isAutoRefreshing());
        // The first fetch is queued, not sent synchronously.
        QCOMPARE(started.count(), 0);
        f.startAutoRefresh(120); // a second start changes the interval only
        QCOMPARE(f.refreshIntervalMs(), 120000);

        QVERIFY(ready.wait(5000));
        QCOMPARE(started.count(), 1);
        QCOMPARE(m_server->requestCount("/lines"), 1);
        const auto spots = ready.first().first().value<QList<StationSpot>>();
        QCOMPARE(spots.size(), 2);
        QCOMPARE(spots.at(1).callsign, QStringLiteral("K2XYZ"));

        // Nothing else goes out until the interval elapses.
        QTest::qWait(100);
        QCOMPARE(m_server->requestCount(), 1);
        f.stopAutoRefresh();
        QVERIFY(!f.isAutoRefreshing());

        // A short interval really repeats.
        f.startAutoRefresh(0);
        QTRY_VERIFY_WITH_TIMEOUT(m_server->requestCount() >= 3, 5000);
        f.stopAutoRefresh();
    }

    void requestCarriesPathAndUserAgent()
    {
        PotaSpotFetcher f(nullptr, m_server->url());
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        m_server->setRoute("/spot/", "[]");
        f.fetch();
        QVERIFY(ready.wait(5000));
        const auto requests = m_server->requests();
        QCOMPARE(requests.size(), 1);
        QCOMPARE(requests.first().method, QByteArray("GET"));
        QCOMPARE(requests.first().path, QByteArray("/spot/"));
        QCOMPARE(requests.first().headers.value("user-agent"), QByteArray("Tallis/0.1 (Brightwater)"));
    }

    void httpErrorGivesOnlyFetchError()
    {
        m_server->setRoute("/lines", "boom", 500, "text/plain");
        LineFetcher f(m_server->url());
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        QSignalSpy errors(&f, &SpotFetcher::fetchError);
        f.fetch();
        QVERIFY(errors.wait(5000));
        QTest::qWait(50);
        QCOMPARE(errors.count(), 1);
        QCOMPARE(ready.count(), 0);
        QVERIFY(!errors.first().first().toString().isEmpty());
    }

    void connectionRefusedGivesFetchError()
    {
        const QUrl url = m_server->url();
        delete m_server;
        m_server = nullptr;
        LineFetcher f(url);
        QSignalSpy errors(&f, &SpotFetcher::fetchError);
        f.fetch();
        QVERIFY(errors.wait(5000));
    }

    void emptyBodyIsParserError()
    {
        m_server->setRoute("/spot/", "");
        PotaSpotFetcher f(nullptr, m_server->url());
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        QSignalSpy errors(&f, &SpotFetcher::fetchError);
        f.fetch();
        QVERIFY(ready.wait(5000));
        QCOMPARE(errors.count(), 1);
        QVERIFY(errors.first().first().toString().startsWith(QStringLiteral("POTA JSON parse error: ")));
        QVERIFY(ready.first().first().value<QList<StationSpot>>().isEmpty());
    }

    void stopDoesNotAbortInFlightReply()
    {
        m_server->setHoldReplies(true);
        LineFetcher f(m_server->url());
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        f.startAutoRefresh(60);
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount(), 1, 5000);
        f.stopAutoRefresh();
        m_server->releaseHeld();
        QVERIFY(ready.wait(5000));
        QCOMPARE(ready.count(), 1);
    }

    void overlappingFetchesGiveTwoBatches()
    {
        m_server->setHoldReplies(true);
        LineFetcher f(m_server->url());
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        f.fetch();
        f.fetch();
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount(), 2, 5000);
        m_server->releaseHeld();
        QTRY_COMPARE_WITH_TIMEOUT(ready.count(), 2, 5000);
    }

    void botaIsInert()
    {
        BotaSpotFetcher f;
        QSignalSpy started(&f, &SpotFetcher::fetchStarted);
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        QSignalSpy errors(&f, &SpotFetcher::fetchError);
        f.startAutoRefresh(60);
        f.fetch();
        QTest::qWait(50);
        QCOMPARE(started.count() + ready.count() + errors.count(), 0);
        QVERIFY(f.parseResponse("[{\"activator\":\"K1ABC\"}]").isEmpty());
    }

    void defaultsAreThePublicServices()
    {
        QCOMPARE(PotaSpotFetcher().serviceUrl(), QUrl(QStringLiteral("https://api.pota.app")));
    }

    void keyAndSourceName()
    {
        StationSpot s;
        s.callsign = QStringLiteral("K1ABC");
        s.reference = QStringLiteral("US-1234");
        s.frequencyKhz = 14062.7;
        QCOMPARE(s.key(), QStringLiteral("K1ABC|US-1234|14062"));
        s.frequencyKhz = 7032.999;
        QCOMPARE(s.key(), QStringLiteral("K1ABC|US-1234|7032"));
        s.frequencyKhz = 7033.0;
        QCOMPARE(s.key(), QStringLiteral("K1ABC|US-1234|7033"));
        s.frequencyKhz = -0.9;
        QCOMPARE(s.key(), QStringLiteral("K1ABC|US-1234|0"));
        s.frequencyKhz = -1.5;
        QCOMPARE(s.key(), QStringLiteral("K1ABC|US-1234|-1"));
        s.frequencyKhz = std::nan("");
        QCOMPARE(s.key(), QStringLiteral("K1ABC|US-1234|0"));
        s.frequencyKhz = 1e300;
        QCOMPARE(s.key(), QStringLiteral("K1ABC|US-1234|0"));
        s.reference.clear();
        s.frequencyKhz = 7025.0;
        QCOMPARE(s.key(), QStringLiteral("K1ABC||7025"));

        QCOMPARE(StationSpot().sourceString(), QStringLiteral("SOTA"));
        s.source = StationSpot::GMA;
        QCOMPARE(s.sourceString(), QStringLiteral("GMA"));
        s.source = static_cast<StationSpot::Source>(7);
        QCOMPARE(s.sourceString(), QStringLiteral("?"));
        s.source = static_cast<StationSpot::Source>(-1);
        QCOMPARE(s.sourceString(), QStringLiteral("?"));

        const StationSpot fresh;
        QCOMPARE(fresh.status, StationSpot::Unknown);
        QCOMPARE(fresh.groupId, 0);
        QVERIFY(!fresh.spotTime.isValid());
        QVERIFY(!fresh.hasLocation);
    }

private:
    HttpTestServer *m_server = nullptr;
};

TALLIS_TEST_MAIN(TestSpotFetcher)
#include "tst_spotfetcher.moc"
