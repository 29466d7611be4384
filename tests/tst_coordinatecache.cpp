#include "app/coordinatecache.h"
#include "app/updatechecker.h"
#include "support/httptestserver.h"
#include "support/testmain.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>

namespace {

const qint64 k_now = QDateTime(QDate(2026, 4, 20), QTime(12, 0), Qt::UTC).toMSecsSinceEpoch();
constexpr qint64 k_day = 24 * 3600 * 1000;
constexpr qint64 k_ownBuildTime = 1776702779;

StationSpot spot(StationSpot::Source source, const QString &reference, bool hasLocation = false)
{
    StationSpot s;
    s.source = source;
    s.callsign = QStringLiteral("K1ABC");
    s.reference = reference;
    s.hasLocation = hasLocation;
    return s;
}

QString isoAt(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(Qt::ISODate);
}

QJsonObject entry(const QString &reference, double lat, double lon, const QString &savedAt)
{
    return {{QStringLiteral("reference"), reference},
            {QStringLiteral("latitude"), lat},
            {QStringLiteral("longitude"), lon},
            {QStringLiteral("saved_at"), savedAt}};
}

void writeCacheFile(const QJsonArray &entries)
{
    QDir().mkpath(QFileInfo(coordCacheFilePath()).path());
    QFile file(coordCacheFilePath());
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(QJsonDocument(entries).toJson());
}

QHash<QString, QString> savedTimesInFile()
{
    QFile file(coordCacheFilePath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QHash<QString, QString> times;
    for (const QJsonValue &v : QJsonDocument::fromJson(file.readAll()).array())
        times.insert(v[QStringLiteral("reference")].toString(), v[QStringLiteral("saved_at")].toString());
    return times;
}

} // namespace

// The program's look-ups beyond the spot sources: reference positions, kept in a
// cache file, and the new-version check.
class TestCoordinateCache final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QFile::remove(coordCacheFilePath());
        m_server = new HttpTestServer(this);
        QVERIFY(m_server->start());
        m_cache = new CoordinateCache(&m_network, this);
        m_cache->setServiceUrls(m_server->url(), m_server->url());
        m_cache->setClock([] { return k_now; });
        m_cache->setLookupsEnabled(true);
        m_checker = new UpdateChecker(&m_network, this);
        m_checker->setOwnBuildTime(k_ownBuildTime);
    }
    void cleanup()
    {
        delete m_cache;
        delete m_checker;
        delete m_server;
    }

    void noUserPositionNoRequest()
    {
        m_cache->setLookupsEnabled(false);
        m_cache->queueLookups({spot(StationSpot::POTA, QStringLiteral("US-0001"))});
        QCOMPARE(m_cache->pendingCount(), 0);
        m_cache->setLookupsEnabled(true);
        m_cache->queueLookups({spot(StationSpot::POTA, QStringLiteral("US-0001"))});
        QTRY_COMPARE(m_server->requestCount(), 1);
    }

    // Each row: the service's answer, and the position taken from it (none when 0,0).
    void answers_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<QString>("reference");
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<double>("lat");
        QTest::addColumn<double>("lon");
        const auto row = [](const char *name, const QByteArray &body, double lat, double lon,
                            int status = 200) {
            QTest::newRow(name) << int(StationSpot::POTA) << QStringLiteral("US-0001")
                                << QByteArray("/park/US-0001") << body << status << lat << lon;
        };
        row("numbers", R"({"latitude":35.5,"longitude":-82.25,"name":"x"})", 35.5, -82.25);
        row("numeric texts", R"({"latitude":"47.5","longitude":"-122.3"})", 47.5, -122.3);
        row("number and text", R"({"latitude":47.5,"longitude":"-122.3"})", 0, 0);
        row("text not a number", R"({"latitude":"47.5","longitude":"west"})", 0, 0);
        row("zero zero", R"({"latitude":0,"longitude":0})", 0, 0);
        row("http error", R"({"latitude":1,"longitude":2})", 0, 0, 500);
        QTest::newRow("summit") << int(StationSpot::SOTA) << QStringLiteral("W4C/CM-001")
                                << QByteArray("/api/summits/W4C/CM-001")
                                << QByteArray(R"({"latitude":35.1,"longitude":-83.2})") << 200 << 35.1
                                << -83.2;
    }
    void answers()
    {
        QFETCH(QString, reference);
        QFETCH(QByteArray, path);
        QFETCH(double, lat);
        QFETCH(double, lon);
        m_server->setRoute(path, fetched<QByteArray>("body"), fetched<int>("status"));
        m_cache->setSaveDelayMs(0);
        QSignalSpy located(m_cache, &CoordinateCache::referenceLocated);
        const StationSpot s = spot(StationSpot::Source(fetched<int>("source")), reference);

        m_cache->queueLookups({s, s}); // the same reference twice asks once
        QCOMPARE(m_cache->pendingCount(), 1);
        QTRY_COMPARE(m_cache->pendingCount(), 0);
        QCOMPARE(m_server->requestCount(path), 1);
        QCOMPARE(m_server->requests().at(0).headers.value("user-agent"),
                 QByteArray("Tallis/0.1 (Brightwater)"));
        if (lat == 0 && lon == 0) {
            QCOMPARE(located.count(), 0);
            QVERIFY(!m_cache->lookup(reference));
            QVERIFY(!QFile::exists(coordCacheFilePath()));
            m_cache->queueLookups({s}); // not remembered as a failure: asked again
            QTRY_COMPARE(m_server->requestCount(path), 2);
            return;
        }
        QCOMPARE(located.count(), 1);
        QCOMPARE(located.at(0), (QVariantList{reference, lat, lon}));
        QCOMPARE(m_cache->lookup(reference)->latitude, lat);
        QTRY_COMPARE(savedTimesInFile().value(reference), isoAt(k_now));
        m_cache->queueLookups({s}); // cached: no request, but the spot takes the position
        QCOMPARE(m_cache->pendingCount(), 0);
        QCOMPARE(located.count(), 2);
    }

    void retentionAndFirstSaveTimeKept()
    {
        const QString fresh = isoAt(k_now - 29 * k_day);
        writeCacheFile({entry(QStringLiteral("US-0029"), 40.0, -75.0, fresh),
                        entry(QStringLiteral("US-0031"), 41.0, -76.0, isoAt(k_now - 31 * k_day)),
                        entry(QStringLiteral("US-0000"), 0.0, 0.0, fresh),
                        entry(QStringLiteral("US-0095"), 95.0, 10.0, fresh)});
        m_server->setRoute("/park/US-0031", R"({"latitude":41.5,"longitude":-76.5})");
        m_cache->load();
        QCOMPARE(m_cache->size(), 1);
        QCOMPARE(m_cache->lookup(QStringLiteral("US-0029"))->longitude, -75.0);

        m_cache->queueLookups({spot(StationSpot::POTA, QStringLiteral("US-0029")),
                               spot(StationSpot::POTA, QStringLiteral("US-0031"))});
        QCOMPARE(m_cache->pendingCount(), 1);
        QVERIFY(m_cache->isPending(QStringLiteral("US-0031")));
        QTRY_COMPARE(m_cache->size(), 2);
        // One write per burst of answers; the last burst of a run is written on the way out.
        QCOMPARE(m_cache->saveDelayMs(), 1000);
        QVERIFY(m_cache->isSavePending());
        delete m_cache;
        m_cache = nullptr;
        const QHash<QString, QString> times = savedTimesInFile();
        QCOMPARE(times.value(QStringLiteral("US-0029")), fresh);
        QCOMPARE(times.value(QStringLiteral("US-0031")), isoAt(k_now));
        QCOMPARE(times.size(), 2);
    }

    void otherProgrammesOnlyTakeCachedPositions()
    {
        writeCacheFile({entry(QStringLiteral("KFF-0001"), 44.0, -70.0, isoAt(k_now)),
                        entry(QStringLiteral("KFF-0002"), 45.0, -71.0, isoAt(k_now))});
        m_cache->load();
        QSignalSpy located(m_cache, &CoordinateCache::referenceLocated);
        m_cache->queueLookups({spot(StationSpot::WWFF, QStringLiteral("KFF-0001")),
                               spot(StationSpot::GMA, QStringLiteral("DL/AL-001")),
                               spot(StationSpot::WWBOTA, QStringLiteral("B/G-0001")),
                               spot(StationSpot::DX, QString()),
                               spot(StationSpot::WWFF, QStringLiteral("KFF-0002"), true)});
        QCOMPARE(m_cache->pendingCount(), 0);
        QCOMPARE(located.count(), 1);
        QCOMPARE(located.at(0).at(0).toString(), QStringLiteral("KFF-0001"));
    }

    void updateCheck_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("announced"); // empty: no bar
        QTest::newRow("equal") << QByteArray("1776702779") << 200 << QString();
        QTest::newRow("one second later, padded") << QByteArray(" 1776702780\n") << 200 << "1776702780";
        QTest::newRow("older") << QByteArray("1776702778") << 200 << QString();
        QTest::newRow("digits then text") << QByteArray("1776702780 UTC") << 200 << QString();
        QTest::newRow("zero") << QByteArray("0") << 200 << QString();
        QTest::newRow("negative") << QByteArray("-5") << 200 << QString();
        QTest::newRow("letters") << QByteArray("soon") << 200 << QString();
        QTest::newRow("empty") << QByteArray() << 200 << QString();
        // An error page that happens to hold a newer number is still an error.
        QTest::newRow("error page") << QByteArray("1776702780") << 404 << QString();
    }
    void updateCheck()
    {
        QFETCH(QString, announced);
        m_server->setRoute("/tallis-build-time", fetched<QByteArray>("body"), fetched<int>("status"),
                           "text/plain");
        m_checker->setUrl(QUrl(m_server->url().toString() + QStringLiteral("/tallis-build-time")));
        QSignalSpy available(m_checker, &UpdateChecker::updateAvailable);
        QSignalSpy received(m_server, &HttpTestServer::requestReceived);

        m_checker->checkForUpdates();
        QVERIFY(received.wait());
        // The reply is deleted once handled; waiting for that proves the answer was read.
        QTRY_VERIFY(m_network.findChildren<QNetworkReply *>().isEmpty());
        QCOMPARE(available.count(), announced.isEmpty() ? 0 : 1);
        QCOMPARE(available.value(0).value(0).toString(), announced);
    }

    void secondUpdateCheckAbandonsTheFirst()
    {
        m_server->setRoute("/first", "1776702790");
        m_server->setRoute("/second", "1776702800");
        m_server->setHoldReplies(true);
        QSignalSpy available(m_checker, &UpdateChecker::updateAvailable);
        QSignalSpy received(m_server, &HttpTestServer::requestReceived);

        m_checker->setUrl(QUrl(m_server->url().toString() + QStringLiteral("/first")));
        m_checker->checkForUpdates();
        QVERIFY(received.wait());
        m_checker->setUrl(QUrl(m_server->url().toString() + QStringLiteral("/second")));
        m_checker->checkForUpdates();
        QTRY_COMPARE(received.count(), 2);
        m_server->releaseHeld();
        QTRY_VERIFY(m_network.findChildren<QNetworkReply *>().isEmpty());
        QCOMPARE(available.count(), 1);
        QCOMPARE(available.at(0).at(0).toString(), QStringLiteral("1776702800"));
    }

private:
    QNetworkAccessManager m_network;
    HttpTestServer *m_server = nullptr;
    CoordinateCache *m_cache = nullptr;
    UpdateChecker *m_checker = nullptr;
};

TALLIS_TEST_MAIN(TestCoordinateCache)
#include "tst_coordinatecache.moc"
