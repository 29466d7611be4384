#include "sources/gmaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/wwbotaspotfetcher.h"
#include "sources/wwffspotfetcher.h"
#include "support/httptestserver.h"
#include "support/testmain.h"

#include <memory>
#include <QDebug>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QPointF>
#include <QSignalSpy>

namespace {

// Replies shaped like those of the live services.
const QByteArray k_sotaReply = R"([
  {"id": 331210, "userID": 1234, "timeStamp": "2024-05-01T07:15:00", "comments": " QRV now, 5W ",
   "callsign": "G4ABC", "associationCode": "HB", "summitCode": "HB/BE-123", "activatorCallsign": " HB9/DL1ABC/P ",
   "activatorName": "Hans", "frequency": "7.032", "mode": "cw", "summitDetails": "Niesen, 2362m, 10 Points",
   "highlightColor": null, "highlat": 46.645, "highlon": 7.651},
  {"id": 331211, "userID": 99, "timeStamp": "2024-05-01T07:20:31.250", "comments": "",
   "callsign": "M0XYZ", "associationCode": "G", "summitCode": "G/LD-001", "activatorCallsign": "G0ABC/P",
   "activatorName": "", "frequency": "14285", "mode": "ssb", "summitDetails": "Scafell Pike, 978m, 10 Points",
   "highlightColor": null}
])";

const QByteArray k_wwffReply = R"([
  {"id": 77001, "activator": " ON4ABC/P ", "reference": "ONFF-0123", "reference_name": "Hoge Venen",
   "frequency_khz": 14244.0, "mode": "ssb", "spotter": "DL1XYZ", "remarks": "loud in JO31",
   "spot_time": 1714566896, "lat": 50.5, "lon": 6.1},
  {"id": 77002, "activator": "F4AAA", "reference": "FFF-1234", "reference_name": "Parc du Morvan",
   "frequency_khz": 7144, "mode": "CW", "spotter": "F5BBB", "remarks": "", "spot_time": 1714567000.9}
])";

const QByteArray k_wwbotaReply = R"([
  {"call": " G0ABC/P ", "references": [
      {"reference": "B/G-0001", "name": "Pillbox at Dover", "lat": 51.1, "long": 1.3},
      {"reference": "B/G-0002", "name": "Coastal battery"}],
   "freq": 7.144, "mode": "ssb", "spotter": "M0XYZ", "type": "Live", "comment": " cq cq ",
   "time": "2024-05-01T12:34:56.123Z"},
  {"call": "ON4ABC", "references": [{"reference": "B/ON-0042", "name": "Fort Eben-Emael"}],
   "freq": 14.062, "mode": "CW", "spotter": "ON4ABC", "type": "qrt", "comment": "thanks all",
   "time": "2024-05-01T13:00:00+02:00"}
])";

const QByteArray k_gmaReply = R"({"RCD": [
  {"ACTIVATOR": " dl1abc ", "REF": "DM/BW-001", "NAME": "Feldberg", "MODE": "cw", "SPOTTER": "dl2xyz",
   "TEXT": " tnx fer QSO ", "QRG": "7.032", "DATE": "20240501", "TIME": "930", "LAT": "47.87", "LON": "8.00"},
  {"ACTIVATOR": "OE5XYZ/P", "REF": "OE/OO-123", "NAME": "Traunstein", "MODE": "SSB", "SPOTTER": "OE5XYZ",
   "TEXT": "", "QRG": "14285.0", "DATE": "20240501", "TIME": "1745"}
], "ERR": ""})";

QDateTime utc(int y, int mo, int d, int h, int mi, int s = 0, int ms = 0)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s, ms), Qt::UTC);
}

StationSpot makeSpot(StationSpot::Source source, const char *call, const char *reference, const char *name,
                     double khz, const char *mode, const QDateTime &time, const char *spotter,
                     const char *comments)
{
    StationSpot spot;
    spot.source = source;
    spot.callsign = QString::fromUtf8(call);
    spot.reference = QString::fromUtf8(reference);
    spot.referenceName = QString::fromUtf8(name);
    spot.frequencyKhz = khz;
    spot.mode = QString::fromUtf8(mode);
    spot.spotTime = time;
    spot.spotter = QString::fromUtf8(spotter);
    spot.comments = QString::fromUtf8(comments);
    return spot;
}

// Empty when both times are invalid, or the same instant and in UTC.
QString timeDifference(const QDateTime &actual, const QDateTime &expected)
{
    QString text;
    if (actual != expected || actual.isValid() != expected.isValid())
        QDebug(&text) << "spotTime is" << actual << "but should be" << expected;
    else if (actual.isValid() && actual.timeSpec() != Qt::UTC)
        QDebug(&text) << "spotTime is not in UTC:" << actual;
    return text;
}

// The first field in which two spots differ, or empty when they agree; times
// must also both be in UTC.
QString spotDifference(const StationSpot &actual, const StationSpot &expected)
{
    const auto differ = [](const char *field, const auto &a, const auto &b) {
        QString text;
        QDebug(&text) << field << "is" << a << "but should be" << b;
        return text;
    };
    if (actual.source != expected.source)
        return differ("source", actual.sourceString(), expected.sourceString());
    const QList<std::pair<const char *, std::pair<QString, QString>>> texts = {
        {"callsign", {actual.callsign, expected.callsign}},
        {"reference", {actual.reference, expected.reference}},
        {"referenceName", {actual.referenceName, expected.referenceName}},
        {"mode", {actual.mode, expected.mode}},
        {"spotter", {actual.spotter, expected.spotter}},
        {"comments", {actual.comments, expected.comments}},
        {"grid", {actual.grid, expected.grid}},
        {"locationDesc", {actual.locationDesc, expected.locationDesc}},
    };
    for (const auto &[field, values] : texts) {
        if (values.first != values.second)
            return differ(field, values.first, values.second);
    }
    if (!qFuzzyCompare(actual.frequencyKhz + 1.0, expected.frequencyKhz + 1.0))
        return differ("frequencyKhz", actual.frequencyKhz, expected.frequencyKhz);
    if (const QString difference = timeDifference(actual.spotTime, expected.spotTime); !difference.isEmpty())
        return difference;
    if (actual.hasLocation != expected.hasLocation || !qFuzzyCompare(actual.lat, expected.lat) ||
        !qFuzzyCompare(actual.lon, expected.lon))
        return differ("position", QPointF(actual.lat, actual.lon), QPointF(expected.lat, expected.lon));
    if (actual.status != StationSpot::Unknown || actual.groupId != 0)
        return differ("status/group", actual.status, actual.groupId);
    return {};
}

#define COMPARE_SPOT(actual, expected)                                                                       \
    do {                                                                                                     \
        const QString difference = spotDifference(actual, expected);                                         \
        QVERIFY2(difference.isEmpty(), qPrintable(difference));                                              \
    } while (false)

QString jsonErrorText(const QByteArray &body)
{
    QJsonParseError error;
    QJsonDocument::fromJson(body, &error);
    return error.errorString();
}

std::unique_ptr<SpotFetcher> makeFetcher(const QString &source, const QUrl &url = QUrl())
{
    if (source == QLatin1String("SOTA"))
        return std::make_unique<SotaSpotFetcher>(nullptr, url);
    if (source == QLatin1String("WWFF"))
        return std::make_unique<WwffSpotFetcher>(nullptr, url);
    if (source == QLatin1String("WWBOTA"))
        return std::make_unique<WwbotaSpotFetcher>(nullptr, url);
    return std::make_unique<GmaSpotFetcher>(nullptr, url);
}

// Parses body and insists that no error was reported.
template <typename Fetcher>
QList<StationSpot> parseClean(const QByteArray &body)
{
    Fetcher fetcher;
    QSignalSpy errors(&fetcher, &SpotFetcher::fetchError);
    const QList<StationSpot> spots = fetcher.parseResponse(body);
    if (!errors.isEmpty())
        qWarning() << "unexpected error:" << errors.first().first().toString();
    return errors.isEmpty() ? spots : QList<StationSpot>{};
}

// One SOTA element with the given JSON members merged into a valid spot.
QByteArray sotaWith(const QByteArray &members)
{
    return R"([{"activatorCallsign": "DL1ABC/P", "summitCode": "DM/BW-001", )" + members + "}]";
}

QByteArray wwffElement(const QByteArray &members)
{
    return R"({"activator": "ON4ABC/P", "reference": "ONFF-0123", )" + members + "}";
}

QByteArray gmaWith(const QByteArray &members)
{
    return R"({"RCD": [{"ACTIVATOR": "DL1ABC", "REF": "DM/BW-001", )" + members + "}]}";
}

} // namespace

class TestWebParsers final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void formatErrors_data();
    void formatErrors();
    void truncatedRepliesNeverCrash_data();
    void truncatedRepliesNeverCrash();

    void sotaRealisticReply();
    void sotaFrequencyUnits_data();
    void sotaFrequencyUnits();
    void sotaTimeStamps_data();
    void sotaTimeStamps();
    void sotaCoordinatesAndSkippedElements();

    void wwffRealisticReply();
    void wwffTimesAndWrongTypes();

    void wwbotaOneSpotPerReference();
    void wwbotaFrequencyAndQrt();
    void wwbotaSkipsActivationsAndReferences();
    void wwbotaTimeWithoutZoneIsLocal();

    void gmaRealisticReply();
    void gmaDateAndTime_data();
    void gmaDateAndTime();
    void gmaFrequencyAndRecordList();

    void fetchGetsPathAndDeliversSpots_data();
    void fetchGetsPathAndDeliversSpots();
};

void TestWebParsers::initTestCase()
{
    // A zone with summer time, so that a time read as local differs from UTC
    // and the GMA parser meets a daylight-saving gap.
    qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    QCOMPARE(QDateTime(QDate(2024, 5, 1), QTime(12, 0), Qt::LocalTime).toUTC(), utc(2024, 5, 1, 10, 0));
}

void TestWebParsers::formatErrors_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("error"); // empty: no error expected

    const QByteArray broken = R"([{"activator": "X")";
    for (const char *name : {"SOTA", "WWFF", "WWBOTA", "GMA"}) {
        const QString source = QString::fromLatin1(name);
        const QString prefix = source + QStringLiteral(" JSON parse error: ");
        QTest::addRow("%s empty body", name)
            << source << QByteArray() << prefix + jsonErrorText(QByteArray());
        QTest::addRow("%s broken", name) << source << broken << prefix + jsonErrorText(broken);
        QTest::addRow("%s html", name) << source << QByteArray("<html>502 Bad Gateway</html>")
                                       << prefix + jsonErrorText("<html>502 Bad Gateway</html>");
    }
    for (const char *name : {"SOTA", "WWFF", "WWBOTA"}) {
        const QString source = QString::fromLatin1(name);
        const QString notArray = source + QStringLiteral(" response is not a JSON array");
        QTest::addRow("%s object", name) << source << QByteArray(R"({"error": "rate limited"})") << notArray;
        QTest::addRow("%s empty array", name) << source << QByteArray("[]") << QString();
        QTest::addRow("%s only non-objects", name)
            << source << QByteArray(R"([1, "x", null, [], true])") << QString();
    }
    const QString notObject = QStringLiteral("GMA response is not a JSON object");
    QTest::newRow("GMA array") << QStringLiteral("GMA") << QByteArray(R"([{"ACTIVATOR": "DL1ABC"}])")
                               << notObject;
    QTest::newRow("GMA empty array") << QStringLiteral("GMA") << QByteArray("[]") << notObject;
    QTest::newRow("GMA no RCD") << QStringLiteral("GMA") << QByteArray(R"({"ERR": "none"})") << QString();
    QTest::newRow("GMA RCD not array")
        << QStringLiteral("GMA") << QByteArray(R"({"RCD": {"A": 1}})") << QString();
    QTest::newRow("GMA RCD non-objects")
        << QStringLiteral("GMA") << QByteArray(R"({"RCD": [1, "x", null]})") << QString();
}

void TestWebParsers::formatErrors()
{
    QFETCH(QString, source);
    QFETCH(QByteArray, body);
    QFETCH(QString, error);

    const std::unique_ptr<SpotFetcher> fetcher = makeFetcher(source);
    QSignalSpy errors(fetcher.get(), &SpotFetcher::fetchError);
    QVERIFY(fetcher->parseResponse(body).isEmpty());
    if (error.isEmpty()) {
        QCOMPARE(errors.count(), 0);
    } else {
        QCOMPARE(errors.count(), 1);
        QCOMPARE(errors.first().first().toString(), error);
    }
}

void TestWebParsers::truncatedRepliesNeverCrash_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("SOTA") << QStringLiteral("SOTA") << k_sotaReply;
    QTest::newRow("WWFF") << QStringLiteral("WWFF") << k_wwffReply;
    QTest::newRow("WWBOTA") << QStringLiteral("WWBOTA") << k_wwbotaReply;
    QTest::newRow("GMA") << QStringLiteral("GMA") << k_gmaReply;
}

void TestWebParsers::truncatedRepliesNeverCrash()
{
    QFETCH(QString, source);
    QFETCH(QByteArray, body);

    // A reply cut off anywhere is reported as one error, never half-parsed.
    const std::unique_ptr<SpotFetcher> fetcher = makeFetcher(source);
    QSignalSpy errors(fetcher.get(), &SpotFetcher::fetchError);
    for (qsizetype length = 0; length < body.trimmed().size(); ++length) {
        QVERIFY(fetcher->parseResponse(body.left(length)).isEmpty());
        QCOMPARE(errors.count(), int(length + 1));
    }
    errors.clear();
    QVERIFY(!fetcher->parseResponse(body).isEmpty());
    QCOMPARE(errors.count(), 0);
}

void TestWebParsers::sotaRealisticReply()
{
    const QList<StationSpot> spots = parseClean<SotaSpotFetcher>(k_sotaReply);
    QCOMPARE(spots.size(), 2);

    StationSpot first = makeSpot(StationSpot::SOTA, "HB9/DL1ABC/P", "HB/BE-123", "Niesen, 2362m, 10 Points",
                                 7032.0, "CW", utc(2024, 5, 1, 7, 15), "G4ABC", "QRV now, 5W");
    first.hasLocation = true;
    first.lat = 46.645;
    first.lon = 7.651;
    COMPARE_SPOT(spots.at(0), first);
    QCOMPARE(spots.at(0).key(), QStringLiteral("HB9/DL1ABC/P|HB/BE-123|7032"));

    COMPARE_SPOT(spots.at(1),
                 makeSpot(StationSpot::SOTA, "G0ABC/P", "G/LD-001", "Scafell Pike, 978m, 10 Points", 14285.0,
                          "SSB", utc(2024, 5, 1, 7, 20, 31, 250), "M0XYZ", ""));
}

void TestWebParsers::sotaFrequencyUnits_data()
{
    QTest::addColumn<QByteArray>("frequency");
    QTest::addColumn<double>("khz");
    QTest::newRow("MHz") << QByteArray(R"("7.032")") << 7032.0;
    QTest::newRow("kHz") << QByteArray(R"("14062")") << 14062.0;
    QTest::newRow("1000 is still MHz") << QByteArray(R"("1000")") << 1000000.0;
    QTest::newRow("just above 1000 is kHz") << QByteArray(R"("1000.5")") << 1000.5;
    QTest::newRow("padded") << QByteArray(R"(" 10.118 ")") << 10118.0;
    QTest::newRow("not a number") << QByteArray(R"("abc")") << 0.0;
    QTest::newRow("decimal comma") << QByteArray(R"("7,032")") << 0.0;
    QTest::newRow("infinite") << QByteArray(R"("inf")") << 0.0;
    QTest::newRow("empty") << QByteArray(R"("")") << 0.0;
    QTest::newRow("JSON number") << QByteArray("14.062") << 0.0;
    QTest::newRow("null") << QByteArray("null") << 0.0;
}

void TestWebParsers::sotaFrequencyUnits()
{
    QFETCH(QByteArray, frequency);
    QFETCH(double, khz);
    const QList<StationSpot> spots = parseClean<SotaSpotFetcher>(sotaWith(R"("frequency": )" + frequency));
    QCOMPARE(spots.size(), 1);
    QCOMPARE(spots.first().frequencyKhz, khz);
}

void TestWebParsers::sotaTimeStamps_data()
{
    QTest::addColumn<QByteArray>("stamp");
    QTest::addColumn<QDateTime>("time"); // invalid: no time expected
    QTest::newRow("no zone is UTC") << QByteArray(R"("2024-05-01T07:15:00")") << utc(2024, 5, 1, 7, 15);
    QTest::newRow("Z") << QByteArray(R"("2024-05-01T07:15:00Z")") << utc(2024, 5, 1, 7, 15);
    QTest::newRow("milliseconds") << QByteArray(R"("2024-05-01T07:15:00.789")")
                                  << utc(2024, 5, 1, 7, 15, 0, 789);
    QTest::newRow("positive offset") << QByteArray(R"("2024-05-01T12:34:56+02:00")")
                                     << utc(2024, 5, 1, 10, 34, 56);
    QTest::newRow("padded") << QByteArray(R"("  2024-05-01T07:15:00  ")") << utc(2024, 5, 1, 7, 15);
    // Only "+" counts as a zone: the appended Z spoils a negative offset.
    QTest::newRow("negative offset") << QByteArray(R"("2024-05-01T12:34:56-02:00")") << QDateTime();
    QTest::newRow("lower-case z") << QByteArray(R"("2024-05-01T07:15:00z")") << QDateTime();
    QTest::newRow("garbage") << QByteArray(R"("yesterday")") << QDateTime();
    QTest::newRow("empty") << QByteArray(R"("")") << QDateTime();
    QTest::newRow("number") << QByteArray("1714566896") << QDateTime();
}

void TestWebParsers::sotaTimeStamps()
{
    QFETCH(QByteArray, stamp);
    QFETCH(QDateTime, time);
    const QList<StationSpot> spots = parseClean<SotaSpotFetcher>(sotaWith(R"("timeStamp": )" + stamp));
    QCOMPARE(spots.size(), 1);
    const QString difference = timeDifference(spots.first().spotTime, time);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void TestWebParsers::sotaCoordinatesAndSkippedElements()
{
    const QList<StationSpot> spots = parseClean<SotaSpotFetcher>(R"([
      {"activatorCallsign": "A1A", "highlat": 47.1, "highlon": 11.2},
      {"activatorCallsign": "A1B", "highlat": "47.1", "highlon": 11.2},
      {"activatorCallsign": "A1C", "highlat": 47.1},
      {"activatorCallsign": "A1D", "highlat": -33.5, "highlon": -70.25, "mode": null, "summitCode": 12},
      {"activatorCallsign": "", "summitCode": "W7A/AW-001"},
      {"activatorCallsign": "   ", "summitCode": "W7A/AW-002"},
      {"activatorCallsign": null},
      {"callsign": "W1AW"},
      "A1E", 42, null, [{"activatorCallsign": "A1F"}]
    ])");
    QCOMPARE(spots.size(), 4);
    QCOMPARE(spots.at(0).callsign, QStringLiteral("A1A"));
    QVERIFY(spots.at(0).hasLocation);
    QCOMPARE(spots.at(0).lat, 47.1);
    QCOMPARE(spots.at(0).lon, 11.2);
    QVERIFY(!spots.at(1).hasLocation);
    QVERIFY(!spots.at(2).hasLocation);
    QCOMPARE(spots.at(2).lat, 0.0);
    QVERIFY(spots.at(3).hasLocation);
    QCOMPARE(spots.at(3).lat, -33.5);
    QCOMPARE(spots.at(3).lon, -70.25);
    QVERIFY(spots.at(3).mode.isEmpty());
    QVERIFY(spots.at(3).reference.isEmpty());
    QCOMPARE(spots.at(3).frequencyKhz, 0.0);
    QVERIFY(!spots.at(3).spotTime.isValid());
}

void TestWebParsers::wwffRealisticReply()
{
    const QList<StationSpot> spots = parseClean<WwffSpotFetcher>(k_wwffReply);
    QCOMPARE(spots.size(), 2);

    // The service's own lat/lon are not taken as the spot's position.
    COMPARE_SPOT(spots.at(0), makeSpot(StationSpot::WWFF, "ON4ABC/P", "ONFF-0123", "Hoge Venen", 14244.0,
                                       "SSB", utc(2024, 5, 1, 12, 34, 56), "DL1XYZ", "loud in JO31"));
    // kHz as given, never scaled; fractional epoch seconds are truncated.
    COMPARE_SPOT(spots.at(1), makeSpot(StationSpot::WWFF, "F4AAA", "FFF-1234", "Parc du Morvan", 7144.0, "CW",
                                       utc(2024, 5, 1, 12, 36, 40), "F5BBB", ""));
}

void TestWebParsers::wwffTimesAndWrongTypes()
{
    const QList<QByteArray> elements = {
        wwffElement(R"("spot_time": 0, "frequency_khz": "14244")"),
        wwffElement(R"("spot_time": -86400, "frequency_khz": null)"),
        wwffElement(R"("spot_time": "1714566896", "mode": 7)"),
        wwffElement(R"("spot_time": 1e300, "frequency_khz": true)"),
        wwffElement(R"("spot_time": 0.5)"),
        wwffElement(R"("spot_time": 1)"),
        R"({"activator": 12345, "reference": "ONFF-0001"})",
        R"({"reference": "ONFF-0002"})",
    };
    const QList<StationSpot> spots = parseClean<WwffSpotFetcher>("[" + elements.join(',') + "]");
    QCOMPARE(spots.size(), 6);
    for (int i = 0; i < 5; ++i) {
        QVERIFY2(!spots.at(i).spotTime.isValid(), qPrintable(QString::number(i)));
        QCOMPARE(spots.at(i).frequencyKhz, 0.0);
    }
    QVERIFY(spots.at(2).mode.isEmpty());
    QCOMPARE(spots.at(5).spotTime, utc(1970, 1, 1, 0, 0, 1));
}

void TestWebParsers::wwbotaOneSpotPerReference()
{
    const QList<StationSpot> spots = parseClean<WwbotaSpotFetcher>(k_wwbotaReply);
    QCOMPARE(spots.size(), 3);

    const QDateTime time = utc(2024, 5, 1, 12, 34, 56, 123);
    COMPARE_SPOT(spots.at(0), makeSpot(StationSpot::WWBOTA, "G0ABC/P", "B/G-0001", "Pillbox at Dover", 7144.0,
                                       "SSB", time, "M0XYZ", "cq cq"));
    COMPARE_SPOT(spots.at(1), makeSpot(StationSpot::WWBOTA, "G0ABC/P", "B/G-0002", "Coastal battery", 7144.0,
                                       "SSB", time, "M0XYZ", "cq cq"));
    COMPARE_SPOT(spots.at(2), makeSpot(StationSpot::WWBOTA, "ON4ABC", "B/ON-0042", "Fort Eben-Emael", 14062.0,
                                       "CW", utc(2024, 5, 1, 11, 0), "ON4ABC", "QRT thanks all"));
}

void TestWebParsers::wwbotaFrequencyAndQrt()
{
    const QList<StationSpot> spots = parseClean<WwbotaSpotFetcher>(R"([
      {"call": "A1", "references": [{"reference": "B/G-1"}], "freq": 7144, "type": "qrt", "comment": ""},
      {"call": "A2", "references": [{"reference": "B/G-2"}], "freq": "7.144", "type": "QRT", "comment": " thanks all "},
      {"call": "A3", "references": [{"reference": "B/G-3"}], "type": " Qrt "},
      {"call": "A4", "references": [{"reference": "B/G-4"}], "type": "Live", "comment": "QRT soon"},
      {"call": "A5", "references": [{"reference": "B/G-5"}], "type": "QRT-ish", "comment": "x"},
      {"call": "A6", "references": [{"reference": "B/G-6"}], "type": 1, "comment": 2}
    ])");
    QCOMPARE(spots.size(), 6);
    // Always MHz on this service, even when the value looks like kHz.
    QCOMPARE(spots.at(0).frequencyKhz, 7144000.0);
    QCOMPARE(spots.at(1).frequencyKhz, 0.0);
    QCOMPARE(spots.at(0).comments, QStringLiteral("QRT"));
    QCOMPARE(spots.at(1).comments, QStringLiteral("QRT thanks all"));
    QCOMPARE(spots.at(2).comments, QStringLiteral("QRT"));
    QCOMPARE(spots.at(3).comments, QStringLiteral("QRT soon"));
    QCOMPARE(spots.at(4).comments, QStringLiteral("x"));
    QVERIFY(spots.at(5).comments.isEmpty());
}

void TestWebParsers::wwbotaSkipsActivationsAndReferences()
{
    const QList<StationSpot> spots = parseClean<WwbotaSpotFetcher>(R"([
      {"call": "A1", "references": []},
      {"call": "A2"},
      {"call": "A3", "references": {"reference": "B/G-3"}},
      {"call": "  ", "references": [{"reference": "B/G-4"}]},
      {"references": [{"reference": "B/G-5"}]},
      {"call": "A6", "references": [{"reference": ""}, {"name": "nameless"}, "B/G-6", 6, null,
                                    {"reference": " B/G-6 ", "name": " Kept "}]},
      "A7", 8
    ])");
    QCOMPARE(spots.size(), 1);
    QCOMPARE(spots.first().callsign, QStringLiteral("A6"));
    QCOMPARE(spots.first().reference, QStringLiteral("B/G-6"));
    QCOMPARE(spots.first().referenceName, QStringLiteral("Kept"));
}

void TestWebParsers::wwbotaTimeWithoutZoneIsLocal()
{
    // Unlike SOTA and POTA, a stamp without a zone is this computer's local time
    // (UTC+2 in May in the zone set up for this test).
    const QList<StationSpot> spots = parseClean<WwbotaSpotFetcher>(R"([
      {"call": "A1", "references": [{"reference": "B/G-1"}], "time": "2024-05-01T12:34:56"},
      {"call": "A2", "references": [{"reference": "B/G-2"}], "time": "2024-05-01T12:34:56.500"},
      {"call": "A3", "references": [{"reference": "B/G-3"}], "time": "2024-05-01T12:34:56-04:00"},
      {"call": "A4", "references": [{"reference": "B/G-4"}], "time": "2024-01-15T08:00:00"},
      {"call": "A5", "references": [{"reference": "B/G-5"}], "time": "soon"},
      {"call": "A6", "references": [{"reference": "B/G-6"}]}
    ])");
    QCOMPARE(spots.size(), 6);
    QCOMPARE(spots.at(0).spotTime, utc(2024, 5, 1, 10, 34, 56));
    QCOMPARE(spots.at(1).spotTime, utc(2024, 5, 1, 10, 34, 56, 500));
    QCOMPARE(spots.at(2).spotTime, utc(2024, 5, 1, 16, 34, 56));
    QCOMPARE(spots.at(3).spotTime, utc(2024, 1, 15, 7, 0));
    for (int i = 0; i < 4; ++i)
        QCOMPARE(spots.at(i).spotTime.timeSpec(), Qt::UTC);
    QVERIFY(!spots.at(4).spotTime.isValid());
    QVERIFY(!spots.at(5).spotTime.isValid());
}

void TestWebParsers::gmaRealisticReply()
{
    const QList<StationSpot> spots = parseClean<GmaSpotFetcher>(k_gmaReply);
    QCOMPARE(spots.size(), 2);

    COMPARE_SPOT(spots.at(0), makeSpot(StationSpot::GMA, "DL1ABC", "DM/BW-001", "Feldberg", 7032.0, "CW",
                                       utc(2024, 5, 1, 9, 30), "DL2XYZ", "tnx fer QSO"));
    COMPARE_SPOT(spots.at(1), makeSpot(StationSpot::GMA, "OE5XYZ/P", "OE/OO-123", "Traunstein", 14285.0,
                                       "SSB", utc(2024, 5, 1, 17, 45), "OE5XYZ", ""));
}

void TestWebParsers::gmaDateAndTime_data()
{
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<QDateTime>("time"); // invalid: no time expected
    QTest::newRow("padded hour") << QByteArray(R"("DATE": "20240501", "TIME": "930")")
                                 << utc(2024, 5, 1, 9, 30);
    QTest::newRow("midnight") << QByteArray(R"("DATE": "20240501", "TIME": "5")") << utc(2024, 5, 1, 0, 5);
    QTest::newRow("surrounding blanks")
        << QByteArray(R"("DATE": " 20241231 ", "TIME": " 2359 ")") << utc(2024, 12, 31, 23, 59);
    // The wall clock is UTC: a gap in the local summer-time change does not matter.
    QTest::newRow("local DST gap") << QByteArray(R"("DATE": "20240331", "TIME": "230")")
                                   << utc(2024, 3, 31, 2, 30);
    QTest::newRow("time too long") << QByteArray(R"("DATE": "20240501", "TIME": "09300")") << QDateTime();
    QTest::newRow("dashed date") << QByteArray(R"("DATE": "2024-05-01", "TIME": "0930")") << QDateTime();
    QTest::newRow("short date") << QByteArray(R"("DATE": "240501", "TIME": "0930")") << QDateTime();
    QTest::newRow("no such month") << QByteArray(R"("DATE": "20241301", "TIME": "0930")") << QDateTime();
    QTest::newRow("no such hour") << QByteArray(R"("DATE": "20240501", "TIME": "2460")") << QDateTime();
    QTest::newRow("time with colon") << QByteArray(R"("DATE": "20240501", "TIME": "9:30")") << QDateTime();
    QTest::newRow("numbers") << QByteArray(R"("DATE": 20240501, "TIME": 930)") << QDateTime();
    QTest::newRow("missing") << QByteArray(R"("MODE": "CW")") << QDateTime();
}

void TestWebParsers::gmaDateAndTime()
{
    QFETCH(QByteArray, members);
    QFETCH(QDateTime, time);
    const QList<StationSpot> spots = parseClean<GmaSpotFetcher>(gmaWith(members));
    QCOMPARE(spots.size(), 1);
    const QString difference = timeDifference(spots.first().spotTime, time);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void TestWebParsers::gmaFrequencyAndRecordList()
{
    const QList<StationSpot> spots = parseClean<GmaSpotFetcher>(R"({"RCD": [
      {"ACTIVATOR": "A1", "QRG": "14285.0"},
      {"ACTIVATOR": "A2", "QRG": " 7.032 "},
      {"ACTIVATOR": "A3", "QRG": "1000"},
      {"ACTIVATOR": "A4", "QRG": 7.032},
      {"ACTIVATOR": "A5", "QRG": "7.032.1"},
      {"ACTIVATOR": "", "QRG": "7.032"},
      {"ACTIVATOR": 12, "QRG": "7.032"},
      {"REF": "DM/BW-001"},
      "A9", null
    ]})");
    QCOMPARE(spots.size(), 5);
    QCOMPARE(spots.at(0).frequencyKhz, 14285.0);
    QCOMPARE(spots.at(1).frequencyKhz, 7032.0);
    QCOMPARE(spots.at(2).frequencyKhz, 1000000.0);
    QCOMPARE(spots.at(3).frequencyKhz, 0.0);
    QCOMPARE(spots.at(4).frequencyKhz, 0.0);
}

void TestWebParsers::fetchGetsPathAndDeliversSpots_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("count");
    QTest::newRow("SOTA") << QStringLiteral("SOTA") << QByteArray("/api/spots/-72") << k_sotaReply << 2;
    QTest::newRow("WWFF") << QStringLiteral("WWFF") << QByteArray("/static/spots.json") << k_wwffReply << 2;
    QTest::newRow("WWBOTA") << QStringLiteral("WWBOTA") << QByteArray("/spots/") << k_wwbotaReply << 3;
    QTest::newRow("GMA") << QStringLiteral("GMA") << QByteArray("/api/spots/gma/") << k_gmaReply << 2;
}

void TestWebParsers::fetchGetsPathAndDeliversSpots()
{
    QFETCH(QString, source);
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, body);
    QFETCH(int, count);

    HttpTestServer server;
    QVERIFY(server.start());
    server.setRoute(path, body);

    const std::unique_ptr<SpotFetcher> fetcher = makeFetcher(source, server.url());
    QSignalSpy started(fetcher.get(), &SpotFetcher::fetchStarted);
    QSignalSpy ready(fetcher.get(), &SpotFetcher::spotsReady);
    QSignalSpy errors(fetcher.get(), &SpotFetcher::fetchError);
    fetcher->fetch();
    QCOMPARE(started.count(), 1);
    QVERIFY(ready.wait(5000));

    QCOMPARE(errors.count(), 0);
    QCOMPARE(server.requestCount(), 1);
    const HttpTestServer::Request request = server.requests().first();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.path, path);
    QCOMPARE(request.headers.value("user-agent"), QByteArray("Tallis/0.1 (Brightwater)"));

    const auto spots = ready.first().first().value<QList<StationSpot>>();
    QCOMPARE(spots.size(), count);
    QCOMPARE(spots.first().sourceString(), source);
}

TALLIS_TEST_MAIN(TestWebParsers)
#include "tst_webparsers.moc"
