#include "sources/botaspotfetcher.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/sourcehealth.h"
#include "support/httptestserver.h"
#include "support/testmain.h"

#include <QSignalSpy>

namespace {

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

// The fetch framework under every web source: ticks, validators, quiet time; SOTA's epoch; the sources'
// health.
class TestSpotFetcher final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_server = new HttpTestServer(this);
        QVERIFY(m_server->start());
        m_server->setRoute("/spot/", R"([{"activator": "K1ABC"}, {"activator": "K2XYZ"}])");
    }
    void cleanup() { delete m_server; }

    void startSendsOneImmediateRequestThenTicks()
    {
        PotaSpotFetcher f(nullptr, m_server->url());
        QSignalSpy started(&f, &SpotFetcher::fetchStarted);
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        f.startAutoRefresh(60);
        QCOMPARE(started.count(), 0); // queued, not sent at once
        f.startAutoRefresh(120);      // a second start changes the interval only
        QVERIFY(ready.wait(5000));
        QCOMPARE(started.count(), 1);
        QCOMPARE(calls(ready, 0), QStringList({QStringLiteral("K1ABC"), QStringLiteral("K2XYZ")}));
        // Stopping does not abort a reply in flight; overlapping fetches give a batch each.
        m_server->setHoldReplies(true);
        f.fetch();
        f.stopAutoRefresh();
        f.fetch();
        QTRY_COMPARE(m_server->requestCount(), 3);
        m_server->releaseHeld();
        QTRY_COMPARE(ready.count(), 3);
        m_server->setHoldReplies(false);
        f.startAutoRefresh(0); // a short interval really repeats
        QTRY_VERIFY_WITH_TIMEOUT(m_server->requestCount() >= 5, 5000);

        BotaSpotFetcher bota; // a placeholder: its ticks send and say nothing
        QSignalSpy botaStarted(&bota, &SpotFetcher::fetchStarted);
        bota.fetch();
        QCOMPARE(botaStarted.count(), 0);
    }

    void unchangedListsAreNotFetchedAgain()
    {
        m_server->setRoute("/spot/", R"([{"activator": "K1ABC"}])", 200, "application/json",
                           "ETag: \"v1\"\r\nLast-Modified: Sat, 21 Nov 2026 17:00:00 GMT\r\n");
        PotaSpotFetcher f(nullptr, m_server->url());
        QSignalSpy started(&f, &SpotFetcher::fetchStarted);
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        for (int tick = 1; tick <= 2; ++tick) {
            f.fetch();
            QTRY_COMPARE(ready.count(), tick);
            QCOMPARE(started.count(), tick);
            QCOMPARE(calls(ready, tick - 1), QStringList(QStringLiteral("K1ABC"))); // the 304 gives it again
        }
        const auto headers = m_server->requests().constLast().headers;
        QCOMPARE(headers.value("if-none-match"), QByteArray("\"v1\""));
        QCOMPARE(headers.value("if-modified-since"), QByteArray("Sat, 21 Nov 2026 17:00:00 GMT"));

        // A body the parser faulted is reported, ends in an empty batch, and is asked for whole again.
        m_server->setRoute("/spot/", "[", 200, "application/json", "ETag: \"v1\"\r\n");
        PotaSpotFetcher pota(nullptr, m_server->url());
        QSignalSpy potaReady(&pota, &SpotFetcher::spotsReady);
        QSignalSpy potaErrors(&pota, &SpotFetcher::fetchError);
        pota.fetch();
        QVERIFY(potaReady.wait(5000));
        QCOMPARE(potaErrors.count(), 1);
        QVERIFY(potaReady.first().first().value<QList<StationSpot>>().isEmpty());
        pota.fetch();
        QVERIFY(potaReady.wait(5000));
        QVERIFY(!m_server->requests().constLast().headers.contains("if-none-match"));

        // SOTA asks for the list only when its epoch moved.
        m_server->setRoute("/api/spots/epoch", "e1\n", 200, "text/plain");
        m_server->setRoute("/api/spots/-72", R"([{"activatorCallsign": "G4ABC/P", "frequency": 14.062}])");
        SotaSpotFetcher sota(nullptr, m_server->url());
        QSignalSpy sotaStarted(&sota, &SpotFetcher::fetchStarted);
        QSignalSpy sotaReady(&sota, &SpotFetcher::spotsReady);
        const QList<int> listRequests = {1, 1, 2}; // after each tick
        for (int tick = 0; tick < 3; ++tick) {
            if (tick == 2)
                m_server->setRoute("/api/spots/epoch", "e2", 200, "text/plain");
            sota.fetch();
            QTRY_COMPARE(sotaReady.count(), tick + 1);
            QCOMPARE(sotaStarted.count(), tick + 1);
            QCOMPARE(m_server->requestCount("/api/spots/epoch"), tick + 1);
            QCOMPARE(m_server->requestCount("/api/spots/-72"), listRequests.at(tick));
            QCOMPARE(calls(sotaReady, tick), QStringList(QStringLiteral("G4ABC/P")));
        }
    }

    // A source is a description: one given a time limit gives up on a service that does not answer.
    void describedSourceWithTimeout()
    {
        WebSource slow = WebSource::of(StationSpot::POTA);
        slow.timeoutMs = 50;
        SpotFetcher f(slow, nullptr, m_server->url());
        QSignalSpy errors(&f, &SpotFetcher::fetchError);
        m_server->setHoldReplies(true);
        f.fetch();
        QVERIFY(errors.wait(5000));
        m_server->releaseHeld();
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
        m_server->setRoute("/spot/", "slow down", fetched<int>("status"), "text/plain",
                           retryAfter.isEmpty() ? QByteArray() : "Retry-After: " + retryAfter + "\r\n");
        PotaSpotFetcher f(nullptr, m_server->url());
        qint64 now = k_now;
        f.setClock([&now] { return now; });
        QSignalSpy started(&f, &SpotFetcher::fetchStarted);
        QSignalSpy errors(&f, &SpotFetcher::fetchError);
        QSignalSpy notices(&f, &SpotFetcher::notice);
        QSignalSpy ready(&f, &SpotFetcher::spotsReady);
        f.fetch();
        QVERIFY(errors.wait(5000));
        QCOMPARE(ready.count(), 0); // an HTTP error ends in no batch
        const qint64 until = k_now + quietSecs * 1000LL;
        QCOMPARE(f.quietUntilMs(), quietSecs ? until : 0);
        QCOMPARE(notices.count(), quietSecs ? 1 : 0);
        if (quietSecs == 0)
            return;
        QCOMPARE(notices.first().first().toString(),
                 QStringLiteral("The POTA oracle begs a respite \u2014 we leave it in peace until %1.")
                     .arg(localTime(until)));
        // Ticks in the quiet time emit nothing at all, so send nothing: a tick that sends says so first.
        now = until - 1;
        f.fetch();
        f.fetch();
        QCOMPARE(started.count() + errors.count() + notices.count(), 3);
        now = until;
        f.fetch();
        QTRY_COMPARE(m_server->requestCount(), 2);
        QTRY_COMPARE(errors.count(), 2);
    }

    // Fed the fetchers' signals directly: a parse fault is an error, then an empty batch.
    void sourceHealth()
    {
        PotaSpotFetcher good(nullptr, m_server->url());
        PotaSpotFetcher bad(nullptr, m_server->url());
        PotaSpotFetcher faulty(nullptr, m_server->url());
        qint64 now = k_now;
        SourceHealth health;
        health.setClock([&now] { return now; });
        for (const auto &[f, name] : {std::pair(&good, "GOOD"), {&bad, "BAD"}, {&faulty, "POTA"}}) {
            health.watch(f, QLatin1String(name));
            f->startAutoRefresh(60); // no event loop runs here: no tick is sent
        }
        QCOMPARE(health.labelText(), QStringLiteral("Sources: all answering"));
        QSignalSpy changed(&health, &SourceHealth::changed);
        emit good.spotsReady({StationSpot(), StationSpot()});
        emit bad.fetchError(QStringLiteral("Error 500"));
        emit faulty.fetchError(QStringLiteral("POTA JSON parse error"));
        emit faulty.spotsReady({});
        QCOMPARE(changed.count(), 3);
        QCOMPARE(health.labelText(), QStringLiteral("Sources: 2 failing"));
        const QString at = localTime(k_now);
        QCOMPARE(health.toolTip(),
                 QStringLiteral("GOOD: 2 spots at %1\nBAD: no answer yet; failing at %1: Error 500\n"
                                "POTA: no answer yet; failing at %1: POTA JSON parse error")
                     .arg(at));

        // A new tick that answers clears the failure and keeps the error on record;
        // a source switched off is not counted.
        now += 60000;
        emit bad.fetchStarted();
        emit bad.spotsReady({StationSpot()});
        QCOMPARE(health.labelText(), QStringLiteral("Sources: 1 failing"));
        faulty.stopAutoRefresh();
        QCOMPARE(health.labelText(), QStringLiteral("Sources: all answering"));
        QCOMPARE(
            health.toolTip().split(QLatin1Char('\n')).mid(1),
            QStringList(
                {QStringLiteral("BAD: 1 spot at %1; last error at %2: Error 500").arg(localTime(now), at),
                 QStringLiteral("POTA: off; no answer yet; failing at %1: POTA JSON parse error").arg(at)}));

        // A fetcher that goes is forgotten without a signal: its owner may be going too.
        {
            PotaSpotFetcher gone(nullptr, m_server->url());
            health.watch(&gone, QStringLiteral("GONE"));
            changed.clear();
        }
        QCOMPARE(changed.count(), 0);
        QCOMPARE(health.toolTip().split(QLatin1Char('\n')).size(), 3);
    }

private:
    HttpTestServer *m_server = nullptr;
};

TALLIS_TEST_MAIN(TestSpotFetcher)
#include "tst_spotfetcher.moc"
