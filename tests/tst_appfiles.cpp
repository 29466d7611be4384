#include "app/coordinatecache.h"
#include "app/settingsfile.h"
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

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

namespace {

// Every key, each away from its default, so a field lost on the way in or out shows up.
const char k_fullRecord[] = R"({"callsign":"G4ABC/P","sotaRef":"G/LD-001","maxAgeMins":45,
    "refreshIntervalSecs":120,"hasUserLocation":true,"latitude":54.4542,"longitude":-3.2116,
    "hamlib":{"rigModel":3073,"port":"/dev/ttyUSB0","baudRate":38400,"dataBits":7,"stopBits":2,"parity":2,
    "handshake":1,"dtrState":1,"rtsState":2,"pttType":3},
    "sources":{"sota":false,"pota":true,"wwff":false,"wwbota":true,"bota":false,"dx":true,"gma":false,
    "rbn":true,"zlota":false,"siota":false},
    "dxClusters":[{"host":"cluster.example.org","port":7300},{"host":"10.0.0.2","port":8000}],
    "rbnHost":"rbn.example.org","rbnScope":"all","rbnContinents":["EU","NA"],"modes":{"ssb":false,"cw":true,"am":false,"fm":true,"other":false},"statusFilter":3,"sortColumn":2,
    "sortOrder":0,"disabledBands":["60m","70cm"],"potaPrograms":["US","K"],"sotaAssociations":["W4C"],
    "watchCallsigns":["W4GXX","ÉA1AB"],"watchReferences":["US-1234"],"wsEnabled":false,"wsPort":4000,
    "wsHost":"0.0.0.0","lwEnabled":true,"lwHost":"192.168.1.5","lwPort":5000,"autoAtu":true,
    "alertsEnabled":false,"alertSound":false,"alertNeededOnly":true,"hideWorked":true,
    "confirmLog":true,"spotComment":"tnx QSO 73","workedAdifFiles":["/home/op/logbook.adi","/media/Łog 2.adif"],
    "logTargets":[{"type":"wsjtx","enabled":false,"host":"192.168.1.9","port":2238,"message":"adif"},
    {"type":"n1mm","enabled":true,"host":"10.0.0.7","port":12061},{"type":"adif","enabled":true,
    "host":"127.0.0.1","port":2333},{"type":"wavelog","enabled":true,"url":"https:\/\/log.example.org\/index.php",
    "key":"wl-secret","stationId":"2"},{"type":"qrz","enabled":false,"key":"ABCD-1234"}],
    "bandPlanRegion":1,"windowGeometry":"AdkAAP4=","windowState":"AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA/4A=",
    "splitterState":"c3BsaXR0ZXIKDQk="})";

QJsonObject parse(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

void addRow(const char *name, const char *input, const char *expected)
{
    QTest::newRow(name) << QByteArray(input) << QByteArray(expected);
}

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
    QVERIFY(writeFile(coordCacheFilePath(), QJsonDocument(entries).toJson()));
}

QHash<QString, QString> savedTimesInFile()
{
    QHash<QString, QString> times;
    for (const QJsonValue &v : QJsonDocument::fromJson(readFile(coordCacheFilePath())).array())
        times.insert(v[QStringLiteral("reference")].toString(), v[QStringLiteral("saved_at")].toString());
    return times;
}

} // namespace

// The program's own files and look-ups: the settings file, reference positions kept in a cache file, and
// the new-version check.
class TestAppFiles final : public QObject
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
        m_checker = new UpdateChecker(nullptr, this); // own network: the cache's replies stay out of it
        m_checker->setOwnBuildTime(k_ownBuildTime);
    }
    void cleanup()
    {
        delete m_cache;
        delete m_checker;
        delete m_server;
    }

    // The settings file.
    // Each row: a file's content, and the keys that must then be written back with these values.
    void loadRules_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QByteArray>("expected");
        addRow("below range", R"({"refreshIntervalSecs":10,"maxAgeMins":0,"wsPort":80,"lwPort":-5,
            "statusFilter":-1,"sortColumn":-3,"sortOrder":-4,"bandPlanRegion":-2})",
               R"({"refreshIntervalSecs":60,"maxAgeMins":1,"wsPort":1024,
            "lwPort":1024,"statusFilter":0,"sortColumn":0,"sortOrder":0,"bandPlanRegion":0})");
        addRow("above range", R"({"refreshIntervalSecs":99999,"maxAgeMins":1000,"wsPort":70000,"lwPort":1e300,
            "statusFilter":9,"sortColumn":12,"sortOrder":0.5,"bandPlanRegion":7})",
               R"({"refreshIntervalSecs":3600,"maxAgeMins":720,
            "wsPort":65535,"lwPort":65535,"statusFilter":4,"sortColumn":9,"sortOrder":1,"bandPlanRegion":3})");
        addRow("not numbers or fractional",
               R"({"refreshIntervalSecs":"90","maxAgeMins":45.9,"wsPort":[3000],"lwPort":{},
            "statusFilter":true,"sortColumn":"1","sortOrder":"0"})",
               R"({"refreshIntervalSecs":60,
            "maxAgeMins":45,"wsPort":2103,"lwPort":2104,"statusFilter":0,"sortColumn":6,"sortOrder":1})");
        addRow("hamlib", R"({"hamlib":{"rigModel":0,"baudRate":230400,"dataBits":5,"stopBits":3,"parity":-1,
            "handshake":5,"dtrState":-2,"rtsState":3,"pttType":"2","port":5}})",
               R"({"hamlib":{"rigModel":1,
            "baudRate":115200,"dataBits":7,"stopBits":2,"parity":0,"handshake":2,"dtrState":0,"rtsState":2,
            "pttType":0,"port":""}})");
        addRow("location only with its flag", R"({"hasUserLocation":false,"latitude":51.5,"longitude":-0.1})",
               R"({"latitude":0,"longitude":0})");
        addRow("location clamped", R"({"hasUserLocation":true,"latitude":95,"longitude":-200})",
               R"({"latitude":90,"longitude":-180})");
        addRow("sources without dx and gma", R"({"sources":{"sota":false},"modes":{"cw":false}})",
               R"({"sources":{"sota":false,"pota":true,"wwff":true,"wwbota":true,"bota":true,"dx":false,
            "gma":true,"rbn":false,"zlota":true,"siota":true},"modes":{"ssb":true,"cw":false,"am":true,"fm":true,"other":true}})");
        // A band name the table lacks is dropped; a layout blob that is not base64 is never handed
        // to the window.
        addRow("lists and blobs", R"({"disabledBands":["20m","11m",5,""],"watchCallsigns":["W4GXX",null,
            "W4GXX"],"windowGeometry":"AQID","windowState":"not base64!"})",
               R"({"disabledBands":["20m"],
            "watchCallsigns":["W4GXX","W4GXX"],"windowGeometry":"AQID","windowState":""})");
        // Hosts trimmed, blank ones and non-objects dropped, ports 23 when absent and clamped, a repeat
        // (host case aside) dropped, and the older key not consulted while the list gives something.
        addRow("cluster list", R"({"dxClusters":[{"host":"  ","port":7300},{"host":"x","port":0},
            {"host":" y.example.org ","port":7373},{"host":"z"},{"host":"w","port":99999},"bare.host",42,
            {"port":23},{"host":"X","port":1},{"host":"v","port":"8000"}],"dxcluster":{"host":"old.org"}})",
               R"({"dxClusters":[{"host":"x","port":1},{"host":"y.example.org","port":7373},{"host":"z",
            "port":23},{"host":"w","port":65535},{"host":"v","port":23}]})");
        // Continents in the usual order and case, unknown ones dropped; anything but an array follows the
        // call.
        addRow("rbn choices", R"({"rbnScope":"ALL","rbnContinents":["na","XX","EU","NA",3]})",
               R"({"rbnScope":"hunted","rbnContinents":["EU","NA"]})");
        addRow("rbn continents not a list", R"({"rbnScope":"all","rbnContinents":"EU"})",
               R"({"rbnScope":"all","rbnContinents":null})");
        addRow("older single-cluster form",
               R"({"dxClusters":[{"host":" "}],"dxcluster":{"host":" old.org "}})",
               R"({"dxClusters":[{"host":"old.org","port":23}]})");
    }

    void loadRules()
    {
        QFETCH(QByteArray, input);
        const QJsonObject written = SettingsFile::toJson(SettingsFile::fromJson(parse(input)));
        const QJsonObject want = parse(fetched<QByteArray>("expected"));
        QVERIFY(QJsonDocument::fromJson(input).isObject() && !want.isEmpty()); // no typo in the row
        for (auto it = want.begin(); it != want.end(); ++it) {
            const QJsonObject got{{it.key(), written.value(it.key())}};
            QVERIFY2(got.value(it.key()) == it.value(),
                     QJsonDocument(got).toJson(QJsonDocument::Compact).constData());
        }
    }

    void defaults()
    {
        QVERIFY(SettingsFile::fromJson(
                    parse(R"({"callsign":42,"sotaRef":["G/LD-001"],"wsEnabled":"false","lwEnabled":1,
            "autoAtu":"yes","hasUserLocation":"true","latitude":10,"wsHost":null,"lwHost":7,"sources":"all",
            "modes":[false],"disabledBands":"20m","watchCallsigns":{"a":"b"},"dxClusters":"dx.example.org",
            "hamlib":"rig","windowGeometry":12})")) == AppSettings());

        // With no usable cluster anywhere, the public default on port 23.
        QCOMPARE(SettingsFile::fromJson(parse(R"({"dxClusters":[{"host":""}],"dxcluster":{"host":" "}})"))
                     .dxClusters,
                 AppSettings().dxClusters);

        // Empty, corrupt, an array, missing, an empty directory: defaults, and the file counts as found only
        // when it could be opened. The next save rewrites it whole.
        QTemporaryDir dir;
        const QList<QByteArray> kinds{"", "{\"callsign\": \"G4ABC\", \"maxAgeMins\": ",
                                      R"([{"callsign":"G4ABC"}])", "<missing>", "<directory>"};
        for (const QByteArray &kind : kinds) {
            const QString path = dir.filePath(QString::number(kinds.indexOf(kind)));
            if (kind == "<directory>")
                QVERIFY(QDir().mkpath(path));
            else if (kind != "<missing>")
                QVERIFY(writeFile(path, kind));
            const SettingsFile file(path);
            AppSettings loaded = file.load();
            QVERIFY2(loaded == AppSettings(), kind.constData());
            QCOMPARE(loaded.fileExisted, !kind.startsWith('<'));
            loaded.callsign = QStringLiteral("G4ABC");
            QVERIFY2(file.save(loaded), kind.constData());
            QCOMPARE(parse(readFile(path)), SettingsFile::toJson(loaded));
        }
    }

    // Following the call, the skimmers are the operator's own continent's, or anywhere without a call;
    // an empty choice is anywhere too.
    void rbnContinentsInEffect_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QStringList>("continents");
        QTest::newRow("call in Europe")
            << QByteArray(R"({"callsign":"G4ABC"})") << QStringList{QStringLiteral("EU")};
        QTest::newRow("call in Asiatic Russia")
            << QByteArray(R"({"callsign":"UA9XX"})") << QStringList{QStringLiteral("AS")};
        QTest::newRow("no call") << QByteArray("{}") << QStringList();
        QTest::newRow("chosen, call aside") << QByteArray(R"({"callsign":"G4ABC","rbnContinents":["OC"]})")
                                            << QStringList{QStringLiteral("OC")};
        QTest::newRow("chosen empty")
            << QByteArray(R"({"callsign":"G4ABC","rbnContinents":[]})") << QStringList();
    }

    void rbnContinentsInEffect()
    {
        QFETCH(QByteArray, input);
        QCOMPARE(SettingsFile::fromJson(parse(input)).rbnContinentsInEffect(),
                 fetched<QStringList>("continents"));
    }

    void writtenFileRoundTripAndFailedSaves()
    {
        const QJsonObject full = parse(k_fullRecord);
        const QJsonObject defaults = SettingsFile::toJson(AppSettings());
        QCOMPARE(defaults.keys(), full.keys()); // every key, always, and never the older "dxcluster"
        for (const QString &key : full.keys())
            QVERIFY2(full.value(key) != defaults.value(key), qPrintable(key));

        const SettingsFile file(settingsFilePath());
        QVERIFY(file.save(AppSettings())); // into ~/.tallis, made for it
        QCOMPARE(readFile(file.path()), QJsonDocument(defaults).toJson(QJsonDocument::Indented));

        const AppSettings original = SettingsFile::fromJson(full);
        QVERIFY(file.save(original));
        QCOMPARE(readFile(file.path()), QJsonDocument(full).toJson(QJsonDocument::Indented));
        const AppSettings loaded = file.load();
        QVERIFY(loaded.fileExisted && loaded == original);

        // A directory holding files is not ours to remove: the save gives up.
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("settings.json"));
        QVERIFY(QDir().mkpath(path) && writeFile(path + QStringLiteral("/keep.txt"), "precious"));
        QVERIFY(!SettingsFile(path).save(AppSettings()));
        QCOMPARE(readFile(path + QStringLiteral("/keep.txt")), QByteArray("precious"));

#ifdef Q_OS_UNIX
        // A write cut short (here by a file size limit, which binds even root) leaves the old file whole
        // and no temporary copy behind.
        const SettingsFile atomic(dir.filePath(QStringLiteral("atomic.json")));
        QVERIFY(atomic.save(AppSettings()));
        const QByteArray before = readFile(atomic.path());
        rlimit saved{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
        const rlimit small{256, saved.rlim_max};
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const bool written = atomic.save(SettingsFile::fromJson(parse(k_fullRecord)));
        setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, oldHandler);
        QVERIFY(!written);
        QCOMPARE(readFile(atomic.path()), before);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("atomic.json")});
#endif
    }

    // The reference positions.

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

    // A batch of many parks is asked a few at a time, and every one of them is answered.
    void manyAskedAFewAtATime()
    {
        QList<StationSpot> batch;
        for (int park = 1; park <= 3 * CoordinateCache::k_maxRequestsInFlight; ++park) {
            const QString reference = QStringLiteral("US-%1").arg(park, 4, 10, QLatin1Char('0'));
            m_server->setRoute("/park/" + reference.toLatin1(), R"({"latitude":40.0,"longitude":-75.0})");
            batch << spot(StationSpot::POTA, reference);
        }
        m_cache->queueLookups(batch);
        QTRY_COMPARE(m_cache->size(), int(batch.size()));
    }

    // Without the user's own position nothing is asked; other programmes only take cached positions.
    void neverAskedFor()
    {
        m_cache->setLookupsEnabled(false);
        m_cache->queueLookups({spot(StationSpot::POTA, QStringLiteral("US-0001"))});
        QCOMPARE(m_cache->pendingCount(), 0);
        m_cache->setLookupsEnabled(true);
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
        QTest::newRow("letters") << QByteArray("soon") << 200 << QString();
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
        QTRY_VERIFY(m_checker->findChildren<QNetworkReply *>().isEmpty());
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
        QTRY_VERIFY(m_checker->findChildren<QNetworkReply *>().isEmpty());
        QCOMPARE(available.count(), 1);
        QCOMPARE(available.at(0).at(0).toString(), QStringLiteral("1776702800"));
    }

private:
    QNetworkAccessManager m_network;
    HttpTestServer *m_server = nullptr;
    CoordinateCache *m_cache = nullptr;
    UpdateChecker *m_checker = nullptr;
};

TALLIS_TEST_MAIN(TestAppFiles)
#include "tst_appfiles.moc"
