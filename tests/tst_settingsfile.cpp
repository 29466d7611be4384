#include "app/settingsfile.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

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
    "sources":{"sota":false,"pota":true,"wwff":false,"wwbota":true,"bota":false,"dx":true,"gma":false},
    "dxClusters":[{"host":"cluster.example.org","port":7300},{"host":"10.0.0.2","port":8000}],
    "modes":{"ssb":false,"cw":true,"am":false,"fm":true,"other":false},"statusFilter":3,"sortColumn":2,
    "sortOrder":0,"disabledBands":["60m","70cm"],"potaPrograms":["US","K"],"sotaAssociations":["W4C"],
    "watchCallsigns":["W4GXX","ÉA1AB"],"watchReferences":["US-1234"],"wsEnabled":false,"wsPort":4000,
    "wsHost":"0.0.0.0","lwEnabled":true,"lwHost":"192.168.1.5","lwPort":5000,"autoAtu":true,
    "alertsEnabled":false,"alertSound":false,"alertNeededOnly":true,"hideWorked":true,
    "windowGeometry":"AdkAAP4=","windowState":"AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA/4A=",
    "splitterState":"c3BsaXR0ZXIKDQk="})";

QJsonObject parse(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeAll(const QString &path, const QByteArray &data)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(data), data.size());
}

void addRow(const char *name, const char *input, const char *expected)
{
    QTest::newRow(name) << QByteArray(input) << QByteArray(expected);
}

} // namespace

class TestSettingsFile : public QObject
{
    Q_OBJECT

private slots:
    // Each row: a file's content, and the keys that must then be written back with these values.
    void loadRules_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QByteArray>("expected");
        addRow("below range", R"({"refreshIntervalSecs":10,"maxAgeMins":0,"wsPort":80,"lwPort":-5,
            "statusFilter":-1,"sortColumn":-3,"sortOrder":-4})",
               R"({"refreshIntervalSecs":60,"maxAgeMins":1,"wsPort":1024,
            "lwPort":1024,"statusFilter":0,"sortColumn":0,"sortOrder":0})");
        addRow("above range", R"({"refreshIntervalSecs":99999,"maxAgeMins":1000,"wsPort":70000,"lwPort":1e300,
            "statusFilter":9,"sortColumn":12,"sortOrder":0.5})",
               R"({"refreshIntervalSecs":3600,"maxAgeMins":720,
            "wsPort":65535,"lwPort":65535,"statusFilter":4,"sortColumn":9,"sortOrder":1})");
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
            "gma":true},"modes":{"ssb":true,"cw":false,"am":true,"fm":true,"other":true}})");
        // A band name the table lacks is kept (it matches no band button); a layout blob that is not
        // base64 is never handed to the window.
        addRow("lists and blobs", R"({"disabledBands":["20m","11m",5,""],"watchCallsigns":["W4GXX",null,
            "W4GXX"],"windowGeometry":"AQID","windowState":"not base64!"})",
               R"({"disabledBands":["20m","11m"],
            "watchCallsigns":["W4GXX","W4GXX"],"windowGeometry":"AQID","windowState":""})");
        // Hosts trimmed, blank ones and non-objects dropped, ports 23 when absent and clamped, a repeat
        // (host case aside) dropped, and the older key not consulted while the list gives something.
        addRow("cluster list", R"({"dxClusters":[{"host":"  ","port":7300},{"host":"x","port":0},
            {"host":" y.example.org ","port":7373},{"host":"z"},{"host":"w","port":99999},"bare.host",42,
            {"port":23},{"host":"X","port":1},{"host":"v","port":"8000"}],"dxcluster":{"host":"old.org"}})",
               R"({"dxClusters":[{"host":"x","port":1},{"host":"y.example.org","port":7373},{"host":"z",
            "port":23},{"host":"w","port":65535},{"host":"v","port":23}]})");
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
            QVERIFY2(got.value(it.key()) == it.value(), QJsonDocument(got).toJson(QJsonDocument::Compact));
        }
    }

    void defaultsAndOddValues()
    {
        QCOMPARE(settingsFilePath(), QDir::homePath() + QStringLiteral("/.tallis/settings.json"));
        QVERIFY(SettingsFile::fromJson(QJsonObject()) == AppSettings());
        QVERIFY(SettingsFile::fromJson(
                    parse(R"({"callsign":42,"sotaRef":["G/LD-001"],"wsEnabled":"false","lwEnabled":1,
            "autoAtu":"yes","hasUserLocation":"true","latitude":10,"wsHost":null,"lwHost":7,"sources":"all",
            "modes":[false],"disabledBands":"20m","watchCallsigns":{"a":"b"},"dxClusters":"dx.example.org",
            "hamlib":"rig","windowGeometry":12})")) == AppSettings());

        // What text JSON cannot carry but an object built in memory can.
        const AppSettings nonFinite = SettingsFile::fromJson({{QStringLiteral("hasUserLocation"), true},
                                                              {QStringLiteral("latitude"), qQNaN()},
                                                              {QStringLiteral("longitude"), -qInf()},
                                                              {QStringLiteral("maxAgeMins"), qQNaN()}});
        QCOMPARE(nonFinite.latitude, 0.0);
        QCOMPARE(nonFinite.longitude, 0.0);
        QCOMPARE(nonFinite.maxAgeMins, 30);

        // With no usable cluster anywhere, the public default on port 23.
        const QList<DxClusterEntry> fallback{{AppSettings::defaultDxCluster().host, 23}};
        QVERIFY(!fallback.first().host.isEmpty());
        QCOMPARE(AppSettings().dxClusters, fallback);
        QCOMPARE(SettingsFile::fromJson(parse(R"({"dxClusters":[{"host":""}],"dxcluster":{"host":" "}})"))
                     .dxClusters,
                 fallback);
    }

    void writtenFileAndRoundTrip()
    {
        const QJsonObject full = parse(k_fullRecord);
        const QJsonObject defaults = SettingsFile::toJson(AppSettings());
        QCOMPARE(defaults.keys(), full.keys()); // every key, always, and never the older "dxcluster"
        for (const QString &key : full.keys())
            QVERIFY2(full.value(key) != defaults.value(key), qPrintable(key));

        const SettingsFile file(settingsFilePath());
        QVERIFY(file.save(AppSettings()));
        QVERIFY(QFileInfo(QDir::homePath() + QStringLiteral("/.tallis"))
                    .isDir()); // the data directory is always made
        QCOMPARE(readAll(file.path()), QJsonDocument(defaults).toJson(QJsonDocument::Indented));

        const AppSettings original = SettingsFile::fromJson(full);
        QVERIFY(file.save(original));
        QCOMPARE(readAll(file.path()), QJsonDocument(full).toJson(QJsonDocument::Indented));
        const AppSettings loaded = file.load();
        QVERIFY(loaded.fileExisted);
        QVERIFY(loaded == original);
    }

    void unusableFilesGiveDefaults()
    {
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
                writeAll(path, kind);
            const SettingsFile file(path);
            AppSettings loaded = file.load();
            QVERIFY2(loaded == AppSettings(), kind);
            QCOMPARE(loaded.fileExisted, !kind.startsWith('<'));
            loaded.callsign = QStringLiteral("G4ABC");
            QVERIFY2(file.save(loaded), kind);
            QCOMPARE(parse(readAll(path)), SettingsFile::toJson(loaded));
        }
    }

    void failedSaveLeavesThingsAlone()
    {
        // A directory holding files is not ours to remove: the save gives up.
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("settings.json"));
        QVERIFY(QDir().mkpath(path));
        writeAll(path + QStringLiteral("/keep.txt"), "precious");
        QVERIFY(!SettingsFile(path).save(AppSettings()));
        QCOMPARE(readAll(path + QStringLiteral("/keep.txt")), QByteArray("precious"));

#ifdef Q_OS_UNIX
        // A write cut short (here by a file size limit, which binds even root) leaves the old file whole
        // and no temporary copy behind.
        const SettingsFile file(dir.filePath(QStringLiteral("atomic.json")));
        QVERIFY(file.save(AppSettings()));
        const QByteArray before = readAll(file.path());
        rlimit saved{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
        const rlimit small{256, saved.rlim_max};
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const bool written = file.save(SettingsFile::fromJson(parse(k_fullRecord)));
        setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, oldHandler);
        QVERIFY(!written);
        QCOMPARE(readAll(file.path()), before);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("atomic.json")});
#endif
    }
};

TALLIS_TEST_MAIN(TestSettingsFile)
#include "tst_settingsfile.moc"
