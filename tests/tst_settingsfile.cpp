#include "app/settingsfile.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

namespace {

QJsonObject parseObject(const char *json)
{
    return QJsonDocument::fromJson(QByteArray(json)).object();
}

AppSettings fromJsonText(const char *json)
{
    return SettingsFile::fromJson(parseObject(json));
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

// The numeric rig fields in declaration order.
QList<int> rigNumbers(const RigConfig &rig)
{
    return {rig.rigModel,  rig.baudRate, rig.dataBits, rig.stopBits, rig.parity,
            rig.handshake, rig.dtrState, rig.rtsState, rig.pttType};
}

AppSettings nonDefaultSettings()
{
    AppSettings s;
    s.callsign = QStringLiteral("G4ABC/P");
    s.sotaRef = QStringLiteral("G/LD-001");
    s.maxAgeMins = 45;
    s.refreshIntervalSecs = 120;
    s.hasUserLocation = true;
    s.latitude = 54.4542;
    s.longitude = -3.2116;
    s.rig.rigModel = 3073;
    s.rig.port = QStringLiteral("/dev/ttyUSB0");
    s.rig.baudRate = 38400;
    s.rig.dataBits = 7;
    s.rig.stopBits = 2;
    s.rig.parity = 2;
    s.rig.handshake = 1;
    s.rig.dtrState = 1;
    s.rig.rtsState = 2;
    s.rig.pttType = 3;
    s.sources = {{false, true, false, true, false, true, false}};
    s.dxClusters = {{QStringLiteral("cluster.example.org"), 7300}, {QStringLiteral("10.0.0.2"), 8000}};
    s.modes = {{false, true, false, true, false}};
    s.statusFilter = 3;
    s.sortColumn = 2;
    s.sortOrder = Qt::AscendingOrder;
    s.disabledBands = {QStringLiteral("60m"), QStringLiteral("70cm")};
    s.potaPrograms = {QStringLiteral("US"), QStringLiteral("K")};
    s.sotaAssociations = {QStringLiteral("W4C")};
    s.watchCallsigns = {QStringLiteral("W4GXX"), QStringLiteral("ÉA1AB")};
    s.watchReferences = {QStringLiteral("US-1234")};
    s.wsEnabled = false;
    s.wsPort = 4000;
    s.wsHost = QStringLiteral("0.0.0.0");
    s.lwEnabled = true;
    s.lwHost = QStringLiteral("192.168.1.5");
    s.lwPort = 5000;
    s.autoAtu = true;
    s.windowGeometry = QByteArray("\x01\xd9\xd0\xcb\x00\x03\x00\x00\xff\xfe", 10);
    s.windowState = QByteArray(300, '\0') + QByteArray("\xff\x80", 2);
    s.splitterState = QByteArray("splitter\n\r\t", 11);
    return s;
}

const QStringList k_allKeys = {
    "autoAtu",        "callsign",       "disabledBands",
    "dxClusters",     "hamlib",         "hasUserLocation",
    "latitude",       "longitude",      "lwEnabled",
    "lwHost",         "lwPort",         "maxAgeMins",
    "modes",          "potaPrograms",   "refreshIntervalSecs",
    "sortColumn",     "sortOrder",      "sotaAssociations",
    "sotaRef",        "sources",        "splitterState",
    "statusFilter",   "watchCallsigns", "watchReferences",
    "windowGeometry", "windowState",    "wsEnabled",
    "wsHost",         "wsPort",
};

} // namespace

class TestSettingsFile : public QObject
{
    Q_OBJECT

private slots:
    void defaultsMatchAnEmptyObject();
    void numbersAreClamped_data();
    void numbersAreClamped();
    void wrongTypesTakeTheirDefault();
    void hamlibKeys();
    void userLocation();
    void dxClusterList();
    void sourcesModesAndSortOrder();
    void stringLists();
    void blobsDecodeStrictly();
    void everyKeyIsWrittenIndented();
    void roundTripKeepsEveryValue();
    void unusableFilesGiveDefaults_data();
    void unusableFilesGiveDefaults();
    void failedSaveLeavesThingsAlone();
};

void TestSettingsFile::defaultsMatchAnEmptyObject()
{
    const AppSettings d;
    QVERIFY(SettingsFile::fromJson(QJsonObject()) == d);
    QCOMPARE(d.maxAgeMins, 30);
    QCOMPARE(d.refreshIntervalSecs, 60);
    QCOMPARE(d.sortColumn, 6);
    QCOMPARE(d.sortOrder, Qt::DescendingOrder);
    QCOMPARE(d.wsPort, quint16(2103));
    QCOMPARE(d.lwPort, quint16(2104));
    QCOMPARE(d.wsHost, QStringLiteral("127.0.0.1"));
    QCOMPARE(d.lwHost, QStringLiteral("127.0.0.1"));
    QVERIFY(d.wsEnabled);
    QVERIFY(!d.lwEnabled);
    QCOMPARE(d.dxClusters.size(), 1);
    QCOMPARE(d.dxClusters.first().host, QStringLiteral("dxc.ve7cc.net"));
    QCOMPARE(d.dxClusters.first().port, quint16(23));
    QVERIFY(!d.fileExisted);
    QCOMPARE(settingsFilePath(), QDir::homePath() + QStringLiteral("/.tallis/settings.json"));
}

void TestSettingsFile::numbersAreClamped_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("refresh");
    QTest::addColumn<int>("maxAge");
    QTest::addColumn<int>("wsPort");
    QTest::addColumn<int>("lwPort");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("sortColumn");

    QTest::newRow("absent") << QByteArray("{}") << 60 << 30 << 2103 << 2104 << 0 << 6;
    QTest::newRow("below range") << QByteArray(R"({"refreshIntervalSecs":10,"maxAgeMins":0,"wsPort":80,
        "lwPort":-5,"statusFilter":-1,"sortColumn":-3})")
                                 << 60 << 1 << 1024 << 1024 << 0 << 0;
    QTest::newRow("above range") << QByteArray(R"({"refreshIntervalSecs":99999,"maxAgeMins":1000,
        "wsPort":70000,"lwPort":1e300,"statusFilter":9,"sortColumn":12})")
                                 << 3600 << 720 << 65535 << 65535 << 4 << 9;
    QTest::newRow("in range") << QByteArray(R"({"refreshIntervalSecs":90,"maxAgeMins":720,"wsPort":1024,
        "lwPort":65535,"statusFilter":4,"sortColumn":0})")
                              << 90 << 720 << 1024 << 65535 << 4 << 0;
    QTest::newRow("fractions dropped") << QByteArray(R"({"refreshIntervalSecs":90.9,"maxAgeMins":0.5})") << 90
                                       << 1 << 2103 << 2104 << 0 << 6;
    QTest::newRow("strings are not numbers") << QByteArray(R"({"refreshIntervalSecs":"90","maxAgeMins":"5",
        "wsPort":"3000","lwPort":"3001","statusFilter":"2","sortColumn":"1"})")
                                             << 60 << 30 << 2103 << 2104 << 0 << 6;
    QTest::newRow("bools and nulls") << QByteArray(R"({"refreshIntervalSecs":true,"maxAgeMins":null,
        "wsPort":[3000],"lwPort":{"p":1},"statusFilter":false,"sortColumn":null})")
                                     << 60 << 30 << 2103 << 2104 << 0 << 6;
}

void TestSettingsFile::numbersAreClamped()
{
    QFETCH(QByteArray, json);
    const QJsonDocument doc = QJsonDocument::fromJson(json);
    QVERIFY(doc.isObject());
    const AppSettings s = SettingsFile::fromJson(doc.object());
    QTEST(s.refreshIntervalSecs, "refresh");
    QTEST(s.maxAgeMins, "maxAge");
    QTEST(int(s.wsPort), "wsPort");
    QTEST(int(s.lwPort), "lwPort");
    QTEST(s.statusFilter, "status");
    QTEST(s.sortColumn, "sortColumn");
}

void TestSettingsFile::wrongTypesTakeTheirDefault()
{
    const AppSettings s = fromJsonText(R"({"callsign":42,"sotaRef":["G/LD-001"],"wsEnabled":"false",
        "lwEnabled":1,"autoAtu":"yes","hasUserLocation":"true","latitude":10,"wsHost":null,"lwHost":7,
        "sources":"all","modes":[false,false],"disabledBands":"20m","watchCallsigns":{"a":"b"},
        "dxClusters":"dx.example.org","hamlib":"rig","windowGeometry":12})");
    QVERIFY(s == AppSettings());

    // Only the mistyped key falls back; its neighbours keep their values.
    const AppSettings mixed =
        fromJsonText(R"({"callsign":"G4ABC","wsPort":"x","lwPort":3000,"wsEnabled":false})");
    QCOMPARE(mixed.callsign, QStringLiteral("G4ABC"));
    QCOMPARE(mixed.wsPort, quint16(2103));
    QCOMPARE(mixed.lwPort, quint16(3000));
    QVERIFY(!mixed.wsEnabled);
}

void TestSettingsFile::hamlibKeys()
{
    const AppSettings low = fromJsonText(R"({"hamlib":{"rigModel":0,"baudRate":110,"dataBits":5,
        "stopBits":0,"parity":-1,"handshake":-1,"dtrState":-2,"rtsState":-2,"pttType":-1,"port":"COM3"}})");
    QCOMPARE(rigNumbers(low.rig), (QList<int>{1, 300, 7, 1, 0, 0, 0, 0, 0}));
    QCOMPARE(low.rig.port, QStringLiteral("COM3"));

    const AppSettings high = fromJsonText(R"({"hamlib":{"rigModel":123456,"baudRate":230400,"dataBits":9,
        "stopBits":3,"parity":3,"handshake":5,"dtrState":3,"rtsState":3,"pttType":4}})");
    QCOMPARE(rigNumbers(high.rig), (QList<int>{99999, 115200, 8, 2, 2, 2, 2, 2, 3}));
    QCOMPARE(high.rig.port, QString());

    // Numbers written as text are not numbers: each takes its own default.
    const AppSettings text = fromJsonText(R"({"hamlib":{"rigModel":"3073","baudRate":"38400","dataBits":"7",
        "stopBits":"2","parity":"1","handshake":"1","dtrState":"1","rtsState":"1","pttType":"1","port":5}})");
    QCOMPARE(rigNumbers(text.rig), rigNumbers(RigConfig()));
    QCOMPARE(text.rig.port, QString());

    const AppSettings partial = fromJsonText(R"({"hamlib":{"rigModel":2,"port":"localhost:4532"}})");
    QCOMPARE(rigNumbers(partial.rig), (QList<int>{2, 9600, 8, 1, 0, 0, 0, 0, 0}));
    QCOMPARE(partial.rig.port, QStringLiteral("localhost:4532"));
}

void TestSettingsFile::userLocation()
{
    const AppSettings ignored = fromJsonText(R"({"hasUserLocation":false,"latitude":51.5,"longitude":-0.1})");
    QVERIFY(!ignored.hasUserLocation);
    QCOMPARE(ignored.latitude, 0.0);
    QCOMPARE(ignored.longitude, 0.0);

    const AppSettings clamped = fromJsonText(R"({"hasUserLocation":true,"latitude":95,"longitude":-200})");
    QVERIFY(clamped.hasUserLocation);
    QCOMPARE(clamped.latitude, 90.0);
    QCOMPARE(clamped.longitude, -180.0);

    const AppSettings kept = fromJsonText(R"({"hasUserLocation":true,"latitude":-33.86,"longitude":151.2})");
    QCOMPARE(kept.latitude, -33.86);
    QCOMPARE(kept.longitude, 151.2);

    const AppSettings notNumbers =
        fromJsonText(R"({"hasUserLocation":true,"latitude":"51.5","longitude":null})");
    QCOMPARE(notNumbers.latitude, 0.0);
    QCOMPARE(notNumbers.longitude, 0.0);

    // Values that text JSON cannot carry but an object built in memory can.
    QJsonObject nonFinite{{"hasUserLocation", true},
                          {"latitude", std::numeric_limits<double>::quiet_NaN()},
                          {"longitude", std::numeric_limits<double>::infinity()}};
    const AppSettings s = SettingsFile::fromJson(nonFinite);
    QCOMPARE(s.latitude, 0.0);
    QCOMPARE(s.longitude, 0.0);
    nonFinite.insert("longitude", -std::numeric_limits<double>::infinity());
    nonFinite.insert("maxAgeMins", std::numeric_limits<double>::quiet_NaN());
    QCOMPARE(SettingsFile::fromJson(nonFinite).longitude, 0.0);
    QCOMPARE(SettingsFile::fromJson(nonFinite).maxAgeMins, 30);
}

void TestSettingsFile::dxClusterList()
{
    const AppSettings s = fromJsonText(R"({"dxClusters":[{"host":"  ","port":7300},{"host":"x","port":0},
        {"host":" y.example.org ","port":7373},{"host":"z"},{"host":"w","port":99999},"bare.host",42,
        {"port":23},{"host":"X","port":1},{"host":"v","port":"8000"}],
        "dxcluster":{"host":"old.example.org","port":8000}})");
    const QList<DxClusterEntry> expected{
        {"x", 1}, {"y.example.org", 7373}, {"z", 23}, {"w", 65535}, {"v", 23}};
    QCOMPARE(s.dxClusters, expected);

    QCOMPARE(fromJsonText(R"({"dxClusters":[]})").dxClusters,
             QList<DxClusterEntry>{AppSettings::defaultDxCluster()});
    QCOMPARE(fromJsonText(R"({"dxClusters":[{"host":""}]})").dxClusters,
             QList<DxClusterEntry>{AppSettings::defaultDxCluster()});

    // The older single-cluster form, used when the list gives nothing.
    const QList<DxClusterEntry> old{{"old.example.org", 8000}};
    QCOMPARE(fromJsonText(R"({"dxcluster":{"host":"old.example.org","port":8000}})").dxClusters, old);
    QCOMPARE(
        fromJsonText(R"({"dxClusters":[],"dxcluster":{"host":"old.example.org","port":8000}})").dxClusters,
        old);
    QCOMPARE(fromJsonText(R"({"dxcluster":{"host":"old.example.org"}})").dxClusters.first().port,
             quint16(23));
    QCOMPARE(fromJsonText(R"({"dxcluster":{"host":" "}})").dxClusters,
             QList<DxClusterEntry>{AppSettings::defaultDxCluster()});

    // The older key is read but never written back.
    const QJsonObject written =
        SettingsFile::toJson(fromJsonText(R"({"dxcluster":{"host":"old.example.org"}})"));
    QVERIFY(!written.contains("dxcluster"));
    const QJsonArray clusters = written.value("dxClusters").toArray();
    QCOMPARE(clusters.size(), 1);
    QCOMPARE(clusters.first().toObject(), (QJsonObject{{"host", "old.example.org"}, {"port", 23}}));
}

void TestSettingsFile::sourcesModesAndSortOrder()
{
    const AppSettings partial =
        fromJsonText(R"({"sources":{"sota":false,"wwbota":false},"modes":{"cw":false}})");
    const std::array<bool, 7> sources{{false, true, true, false, true, false, true}};
    QVERIFY(partial.sources == sources); // no "dx": DX stays off; no "gma": GMA stays on
    const std::array<bool, 5> modes{{true, false, true, true, true}};
    QVERIFY(partial.modes == modes);

    const AppSettings flipped = fromJsonText(
        R"({"sources":{"sota":true,"pota":false,"wwff":false,"wwbota":true,"bota":false,"dx":true,
        "gma":false},"modes":{"ssb":false,"cw":true,"am":false,"fm":false,"other":false}})");
    const std::array<bool, 7> flippedSources{{true, false, false, true, false, true, false}};
    QVERIFY(flipped.sources == flippedSources);
    const std::array<bool, 5> flippedModes{{false, true, false, false, false}};
    QVERIFY(flipped.modes == flippedModes);
    QVERIFY(fromJsonText(R"({"sources":{"dx":"yes","gma":0}})").sources == AppSettings().sources);

    QCOMPARE(fromJsonText(R"({"sortOrder":0})").sortOrder, Qt::AscendingOrder);
    QCOMPARE(fromJsonText(R"({"sortOrder":-4})").sortOrder, Qt::AscendingOrder);
    QCOMPARE(fromJsonText(R"({"sortOrder":1})").sortOrder, Qt::DescendingOrder);
    QCOMPARE(fromJsonText(R"({"sortOrder":7.5})").sortOrder, Qt::DescendingOrder);
    QCOMPARE(fromJsonText(R"({"sortOrder":0.5})").sortOrder, Qt::DescendingOrder);
    QCOMPARE(fromJsonText(R"({})").sortOrder, Qt::DescendingOrder);
    QCOMPARE(fromJsonText(R"({"sortOrder":"0"})").sortOrder, Qt::DescendingOrder);

    AppSettings ascending;
    ascending.sortOrder = Qt::AscendingOrder;
    QCOMPARE(SettingsFile::toJson(ascending).value("sortOrder"), QJsonValue(0));
    QCOMPARE(SettingsFile::toJson(AppSettings()).value("sortOrder"), QJsonValue(1));
}

void TestSettingsFile::stringLists()
{
    const AppSettings s = fromJsonText(R"({"disabledBands":["20m","11m",5,"", "70cm"],
        "watchCallsigns":["W4GXX","K1ABC",null,"W4GXX"],"watchReferences":["US-1234",["x"]],
        "potaPrograms":["US","K"],"sotaAssociations":["W4C",true]})");
    // A band the table does not know is kept harmlessly: no band button carries its name.
    QCOMPARE(s.disabledBands, (QStringList{"20m", "11m", "70cm"}));
    QCOMPARE(s.watchCallsigns, (QStringList{"W4GXX", "K1ABC", "W4GXX"}));
    QCOMPARE(s.watchReferences, QStringList{"US-1234"});
    QCOMPARE(s.potaPrograms, (QStringList{"US", "K"}));
    QCOMPARE(s.sotaAssociations, QStringList{"W4C"});
    QCOMPARE(SettingsFile::toJson(s).value("disabledBands").toArray(),
             QJsonArray::fromStringList({"20m", "11m", "70cm"}));
    QVERIFY(fromJsonText(R"({"disabledBands":[]})").disabledBands.isEmpty());
}

void TestSettingsFile::blobsDecodeStrictly()
{
    const AppSettings s = fromJsonText(R"({"windowGeometry":"AQID","windowState":"not base64!",
        "splitterState":""})");
    QCOMPARE(s.windowGeometry, QByteArray("\x01\x02\x03"));
    QVERIFY(s.windowState.isEmpty()); // garbage is never handed to restoreState()
    QVERIFY(s.splitterState.isEmpty());

    AppSettings binary;
    binary.windowGeometry = QByteArray("\x00\xff\x7f\x80", 4);
    const QJsonObject json = SettingsFile::toJson(binary);
    QCOMPARE(json.value("windowGeometry").toString(), QStringLiteral("AP9/gA=="));
    QCOMPARE(json.value("windowState").toString(), QString());
    QCOMPARE(SettingsFile::fromJson(json).windowGeometry, binary.windowGeometry);
}

void TestSettingsFile::everyKeyIsWrittenIndented()
{
    const QString path = QDir::homePath() + "/written/settings.json";
    QVERIFY(SettingsFile(path).save(AppSettings()));
    QVERIFY(QFileInfo::exists(QDir::homePath() + "/.tallis")); // the data directory is always made

    const QByteArray data = readAll(path);
    QJsonParseError error{};
    const QJsonDocument doc = QJsonDocument::fromJson(data, &error);
    QCOMPARE(error.error, QJsonParseError::NoError);
    QVERIFY(doc.isObject());
    QCOMPARE(data, doc.toJson(QJsonDocument::Indented));
    QVERIFY(data.startsWith("{\n    \"autoAtu\": false,\n"));

    QStringList keys = doc.object().keys();
    QStringList expected = k_allKeys;
    expected.sort();
    QCOMPARE(keys, expected);

    const QJsonObject o = doc.object();
    QCOMPARE(o.value("hamlib").toObject().keys(),
             (QStringList{"baudRate", "dataBits", "dtrState", "handshake", "parity", "port", "pttType",
                          "rigModel", "rtsState", "stopBits"}));
    QCOMPARE(o.value("sources").toObject(), (QJsonObject{{"sota", true},
                                                         {"pota", true},
                                                         {"wwff", true},
                                                         {"wwbota", true},
                                                         {"bota", true},
                                                         {"dx", false},
                                                         {"gma", true}}));
    QCOMPARE(o.value("modes").toObject(),
             (QJsonObject{{"ssb", true}, {"cw", true}, {"am", true}, {"fm", true}, {"other", true}}));
    // Coordinates are numbers even without a location; the default cluster is written out.
    QVERIFY(o.value("latitude").isDouble());
    QVERIFY(o.value("longitude").isDouble());
    QCOMPARE(o.value("dxClusters").toArray().size(), 1);
    QCOMPARE(o.value("windowGeometry"), QJsonValue(""));
}

void TestSettingsFile::roundTripKeepsEveryValue()
{
    const AppSettings original = nonDefaultSettings();
    // Every field differs from its default, so a field lost on either side shows up.
    QVERIFY(!(original == AppSettings()));

    const SettingsFile file(settingsFilePath());
    QVERIFY(file.save(original));
    const AppSettings loaded = file.load();
    QVERIFY(loaded.fileExisted);
    QVERIFY(loaded == original);
    QCOMPARE(loaded.rig.port, original.rig.port);
    QCOMPARE(loaded.dxClusters, original.dxClusters);
    QCOMPARE(loaded.windowGeometry, original.windowGeometry);
    QCOMPARE(loaded.windowState, original.windowState);
    QCOMPARE(loaded.splitterState, original.splitterState);
    QCOMPARE(loaded.watchCallsigns, original.watchCallsigns);

    // Saving what was loaded writes the same bytes again.
    const QByteArray first = readAll(file.path());
    QVERIFY(file.save(loaded));
    QCOMPARE(readAll(file.path()), first);
}

void TestSettingsFile::unusableFilesGiveDefaults_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("opened");

    QTest::newRow("missing") << "missing" << QByteArray() << false;
    QTest::newRow("empty") << "file" << QByteArray() << true;
    QTest::newRow("corrupt") << "file" << QByteArray("{\"callsign\": \"G4ABC\", \"maxAgeMins\": ") << true;
    QTest::newRow("binary") << "file" << QByteArray("\x00\xff\xfe{", 4) << true;
    QTest::newRow("array") << "file" << QByteArray(R"([{"callsign":"G4ABC"}])") << true;
    QTest::newRow("number") << "file" << QByteArray("42") << true;
    QTest::newRow("directory") << "directory" << QByteArray() << false;
}

void TestSettingsFile::unusableFilesGiveDefaults()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, content);
    QFETCH(bool, opened);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath("settings.json");
    if (kind == "file")
        writeAll(path, content);
    else if (kind == "directory")
        QVERIFY(QDir().mkpath(path));

    const SettingsFile file(path);
    AppSettings loaded = file.load();
    QVERIFY(loaded == AppSettings());
    QCOMPARE(loaded.fileExisted, opened);
    QCOMPARE(loaded.dxClusters, QList<DxClusterEntry>{AppSettings::defaultDxCluster()});

    loaded.callsign = QStringLiteral("G4ABC");
    QVERIFY(file.save(loaded));
    const QJsonDocument doc = QJsonDocument::fromJson(readAll(path));
    QVERIFY(doc.isObject());
    QCOMPARE(doc.object().size(), k_allKeys.size());
    QCOMPARE(file.load().callsign, QStringLiteral("G4ABC"));
}

void TestSettingsFile::failedSaveLeavesThingsAlone()
{
    // A directory holding files is not ours to remove: the save gives up quietly.
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath("settings.json");
    QVERIFY(QDir().mkpath(path));
    writeAll(path + "/keep.txt", "precious");
    const SettingsFile file(path);
    QVERIFY(!file.save(nonDefaultSettings()));
    QCOMPARE(readAll(path + "/keep.txt"), QByteArray("precious"));
    QVERIFY(file.load() == AppSettings());

    // A file too large to be a settings file is not read, and is replaced by the next save.
    const QString big = dir.filePath("big.json");
    writeAll(big, "{\"callsign\":\"G4ABC\",\"x\":\"" + QByteArray(17 * 1024 * 1024, 'a') + "\"}");
    const SettingsFile bigFile(big);
    QCOMPARE(bigFile.load().callsign, QString());
    QVERIFY(bigFile.save(AppSettings()));
    QVERIFY(QFileInfo(big).size() < 4096);
}

TALLIS_TEST_MAIN(TestSettingsFile)
#include "tst_settingsfile.moc"
