#include "api/apicommands.h"
#include "api/jsonwriter.h"
#include "buildinfo.h"
#include "support/fakeapibackend.h"
#include "support/testmain.h"

#include <QJsonArray>

#include <cmath>

class TestApiCommands final : public QObject
{
    Q_OBJECT

private slots:
    void table();
    void commands_data();
    void commands();
    void spotObject_data();
    void spotObject();
    void writerEdgeCases();
};

void TestApiCommands::table()
{
    QStringList names = apiCommandTable().keys();
    names.sort();
    QCOMPARE(
        names.join(QLatin1Char(' ')),
        QStringLiteral("config.get config.set filter.get filter.set radio.connect radio.disconnect "
                       "radio.filter.set radio.frequency.set radio.get radio.keyspeed.set radio.mode.set "
                       "radio.mute radio.power.set radio.tune radio.volume.set refresh spot.log "
                       "spot.status.set spot.tune spots.get spots.get_all status.get version.get"));
}

// A command, its "data", whether the rig is connected; then what comes back,
// "!" and the error text or the reply's data as sent, and the calls made.
void TestApiCommands::commands_data()
{
    QTest::addColumn<QString>("cmd");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("rig");
    QTest::addColumn<QString>("outcome");
    QTest::addColumn<QString>("calls");
    const auto row = [](const char *cmd, const char *data, bool rig, const char *outcome,
                        const char *calls = "") {
        QTest::addRow("%s %s%s", cmd, data, rig ? " rig" : "")
            << QString::fromLatin1(cmd) << QByteArray(data) << rig << QString::fromUtf8(outcome)
            << QString::fromUtf8(calls);
    };
    row("status.get", "{}", true,
        R"({"radio_connected":true,"radio_freq_khz":14062.5,"radio_mode":"CW","callsign":"N0CALL",)"
        R"("visible_spots":0,"total_spots":0,"ws_port":2103,"ws_clients":3})");
    row("config.get", "{}", false, R"({"callsign":"N0CALL","wsPort":2103})");
    row("config.set", R"({"refreshIntervalSecs":10})", false, "{}", R"(config {"refreshIntervalSecs":60})");
    row("config.set", R"({"maxAgeMins":0,"refreshIntervalSecs":7200,"x":1})", false, "{}",
        R"(config {"maxAgeMins":1,"refreshIntervalSecs":7200})");
    row("config.set", R"({"maxAgeMins":900,"refreshIntervalSecs":"90"})", false, "{}",
        R"(config {"maxAgeMins":720})");
    row("spots.get", "{}", false, R"({"spots":[],"count":0})");
    row("spots.get_all", "{}", false, R"({"spots":[],"count":0})");
    row("spot.tune", "{}", true, "!missing key");
    row("spot.tune", R"({"key":"X||1"})", true, "!spot not found or radio not connected", "tune X||1");
    row("spot.tune", R"({"key":"K1|P|7"})", false, "{}", "tune K1|P|7");
    row("spot.status.set", R"({"status":1})", false, "!missing key");
    row("spot.status.set", R"({"key":"K1|P|7"})", false,
        "!missing status (0=Unknown 1=Heard 2=Contacted 3=NotHeard)");
    row("spot.status.set", R"({"key":"K1|P|7","status":7})", false, "!status must be 0-3");
    row("spot.status.set", R"({"key":"K1|P|7","status":-1})", false, "!status must be 0-3");
    row("spot.status.set", R"({"key":"A|B|1","status":"2"})", false, "{}", "status A|B|1 0");
    row("spot.status.set", R"({"key":"A|B|1","status":3})", false, "{}", "status A|B|1 3");
    row("spot.log", R"({"key":""})", false, "!missing key");
    row("spot.log", R"({"key":"X||1"})", false, "!spot not found", "log X||1");
    row("spot.log", R"({"key":"K1|P|7"})", false, "{}", "log K1|P|7");
    row("filter.get", "{}", false, R"({"sota":true,"status_mode":0})");
    row("filter.set", R"({"dx":false,"search":"K1"})", false, "{}", R"(filter {"dx":false,"search":"K1"})");
    row("radio.get", "{}", false, R"({"connected":false,"freq_khz":14062.5,"mode":"CW"})");
    row("radio.connect", "{}", false, "{}", "connect");
    row("radio.disconnect", "{}", true, "{}", "disconnect");
    row("radio.frequency.set", "{}", true, "!missing freq_khz");
    row("radio.frequency.set", R"({"freq_khz":"7030"})", true, "!missing freq_khz");
    row("radio.frequency.set", R"({"freq_khz":7030})", false, "!radio not connected");
    row("radio.frequency.set", R"({"freq_khz":7030.25})", true, R"({"freq_khz":7030.25})", "freq 7030.25");
    row("radio.mode.set", "{}", true, "!missing mode");
    row("radio.mode.set", R"({"mode":"USB"})", false, "!radio not connected");
    row("radio.mode.set", R"({"mode":"USB"})", true, "{}", "mode USB");
    row("radio.volume.set", R"({"volume":"50"})", false, "!missing volume (0-100)");
    row("radio.volume.set", R"({"volume":150})", false, "{}", "volume 150");
    row("radio.power.set", "{}", false, "!missing power (0-100)");
    row("radio.power.set", R"({"power":5})", false, "{}", "power 5");
    row("radio.mute", "{}", false, "{}", "mute 0");
    row("radio.mute", R"({"muted":true})", false, "{}", "mute 1");
    row("radio.filter.set", "{}", false, "!missing filter (0=narrow 1=normal 2=wide)");
    row("radio.filter.set", R"({"filter":2})", false, "{}", "filter 2");
    row("radio.keyspeed.set", "{}", false, "!missing wpm");
    row("radio.keyspeed.set", R"({"wpm":25})", false, "{}", "wpm 25");
    row("radio.tune", "{}", false, "{}", "starttune");
    row("refresh", "{}", false, "{}", "refresh");
    const QByteArray version = QStringLiteral(R"({"version":"%1","app":"Tallis","build_time":%2})")
                                   .arg(QLatin1String(BuildInfo::k_version))
                                   .arg(BuildInfo::k_buildTime)
                                   .toUtf8();
    row("version.get", "{}", false, version.constData());
}

void TestApiCommands::commands()
{
    QFETCH(QString, cmd);
    QFETCH(QByteArray, data);
    QFETCH(bool, rig);
    QFETCH(QString, outcome);
    QFETCH(QString, calls);

    FakeApiBackend backend;
    backend.radioConnected = rig;
    const ApiCommand handler = apiCommandTable().value(cmd);
    QString result;
    try {
        result =
            QString::fromUtf8(handler(ApiContext{backend, 2103, 3}, QJsonDocument::fromJson(data).object()));
    } catch (const QString &error) {
        result = QLatin1Char('!') + error;
    }
    QCOMPARE(result, outcome);
    QCOMPARE(backend.calls.join(QLatin1Char(';')), calls);
}

void TestApiCommands::spotObject_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("kHz");
    QTest::addColumn<bool>("located");
    QTest::addColumn<QDateTime>("time");
    QTest::addRow("plain") << QStringLiteral("Brightwater Forest") << 14062.7 << true
                           << QDateTime(QDate(2024, 2, 29), QTime(23, 59, 58, 999), Qt::UTC);
    QTest::addRow("escapes") << QStringLiteral("a\"b\\c/\n\r\t\b\f\x01\x1f end") << 0.1 + 0.2 << false
                             << QDateTime();
    QTest::addRow("non-ASCII") << QStringLiteral("Zürich – 東京 \U0001F3D4") << 7032.999 << true
                               << QDateTime::fromMSecsSinceEpoch(-1, Qt::UTC);
    QTest::addRow("tiny and negative") << QStringLiteral("x") << -1.0e-7 << true
                                       << QDateTime(QDate(2100, 3, 1), QTime(7, 5), Qt::OffsetFromUTC, 7200);
}

// The writer's output read back by Qt's parser: every value intact, keys in
// the documented order, position only when known.
void TestApiCommands::spotObject()
{
    QFETCH(QString, text);
    QFETCH(double, kHz);
    QFETCH(bool, located);
    QFETCH(QDateTime, time);
    StationSpot s;
    s.source = StationSpot::WWFF;
    s.callsign = QStringLiteral("K1ABC/P");
    s.reference = s.referenceName = s.comments = text;
    s.frequencyKhz = kHz;
    s.spotTime = time;
    s.status = StationSpot::NotHeard;
    s.hasLocation = located;
    s.lat = -33.868820;
    s.lon = 151.209296;

    JsonWriter out;
    out.beginArray();
    ApiJson::spotToJson(out, s);
    out.endArray();
    const QByteArray json = out.take();
    const QJsonObject o = QJsonDocument::fromJson(json).array().at(0).toObject();
    const auto value = [&o](const char *key) { return o.value(QLatin1String(key)); };
    QCOMPARE(value("key").toString(), s.key());
    QCOMPARE(value("source").toString(), QStringLiteral("WWFF"));
    for (const char *key : {"reference", "reference_name", "comments"})
        QCOMPARE(value(key).toString(), text);
    QCOMPARE(value("freq_khz").toDouble(), kHz);                         // exact: shortest round-trip form
    QCOMPARE(value("spot_time").toString(), time.toString(Qt::ISODate)); // UTC has a fast path of its own
    QCOMPARE(value("status").toInt(), 3);
    QCOMPARE(value("status_str").toString(), QStringLiteral("Not Heard"));
    QCOMPARE(value("lon"), located ? QJsonValue(s.lon) : QJsonValue(QJsonValue::Undefined));

    const char *order[] = {"key",      "source", "callsign",   "reference", "reference_name",
                           "freq_khz", "mode",   "spot_time",  "spotter",   "comments",
                           "grid",     "status", "status_str", "lat",       "lon"};
    QCOMPARE(o.size(), located ? 15 : 13);
    qsizetype at = 0;
    for (qsizetype i = 0; i < o.size(); ++i) {
        const qsizetype found = json.indexOf(QByteArray("\"") + order[i] + "\":", at);
        QVERIFY2(found > at, order[i]);
        at = found;
    }
}

// JSON has no NaN and UTF-8 no lone surrogate: both still give a parseable document.
void TestApiCommands::writerEdgeCases()
{
    JsonWriter out;
    out.beginArray();
    out.number(std::nan(""));
    out.number(HUGE_VAL);
    out.string(QString(QChar(0xd800)) + QLatin1Char('x'));
    out.endArray();
    QCOMPARE(out.take(), QByteArray("[null,null,\"\xef\xbf\xbdx\"]"));
}

TALLIS_TEST_MAIN(TestApiCommands)
#include "tst_apicommands.moc"
