#include "sources/gmaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/wwbotaspotfetcher.h"
#include "sources/wwffspotfetcher.h"
#include "support/httptestserver.h"
#include "support/testmain.h"

#include <QJsonDocument>
#include <QJsonParseError>
#include <QSignalSpy>

#include <memory>

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

// Every field the parser fills on one line; the time in ISO form, where a
// trailing "Z" shows it is UTC, and "-" for a spot without a position.
QStringList describe(const QList<StationSpot> &spots)
{
    QStringList lines;
    for (const StationSpot &s : spots) {
        const QString position =
            s.hasLocation ? QString::number(s.lat, 'g', 10) + ',' + QString::number(s.lon, 'g', 10) : "-";
        lines << QStringLiteral("%1|%2|%3|%4|%5|%6|%7|%8|%9|%10")
                     .arg(s.sourceString(), s.callsign, s.reference, s.referenceName,
                          QString::number(s.frequencyKhz, 'g', 10), s.mode, s.spotter, s.comments,
                          s.spotTime.toString(Qt::ISODateWithMs), position);
    }
    return lines;
}

// The spots a fresh fetcher of source makes of body, described; the errors it
// reports go to *errors, or are a warning when none are expected.
QStringList parse(const QString &source, const QByteArray &body, QStringList *errors = nullptr)
{
    const std::unique_ptr<SpotFetcher> fetcher = makeFetcher(source);
    QStringList reported;
    QObject::connect(fetcher.get(), &SpotFetcher::fetchError, [&](const QString &e) { reported << e; });
    const QStringList spots = describe(fetcher->parseResponse(body));
    if (errors)
        *errors = reported;
    else if (!reported.isEmpty())
        qWarning() << "unexpected error:" << reported;
    return spots;
}

} // namespace

class TestWebParsers final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // A zone with summer time, so that a time read as local differs from UTC
        // and the GMA parser meets a daylight-saving gap.
        qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
        QCOMPARE(QDateTime(QDate(2024, 5, 1), QTime(12, 0), Qt::LocalTime).toUTC(),
                 QDateTime(QDate(2024, 5, 1), QTime(10, 0), Qt::UTC));
    }

    void formatErrors_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("error"); // empty: no error expected
        QJsonParseError empty;
        QJsonDocument::fromJson(QByteArray(), &empty);
        const QString parseError = QStringLiteral(" JSON parse error: ") + empty.errorString();
        const QByteArray object = R"({"error": "rate limited"})";
        for (const QString source : {"SOTA", "WWFF", "WWBOTA", "GMA"})
            QTest::addRow("%s empty body", qPrintable(source))
                << source << QByteArray() << source + parseError;
        for (const QString source : {"SOTA", "WWFF", "WWBOTA"}) {
            QTest::addRow("%s object", qPrintable(source))
                << source << object << source + " response is not a JSON array";
            QTest::addRow("%s no objects", qPrintable(source))
                << source << QByteArray("[1, \"x\", null]") << "";
        }
        QTest::newRow("GMA array") << "GMA" << QByteArray("[]") << "GMA response is not a JSON object";
        QTest::newRow("GMA without RCD") << "GMA" << object << "";
        QTest::newRow("GMA RCD not array") << "GMA" << QByteArray(R"({"RCD": {"ACTIVATOR": "A1"}})") << "";
    }

    void formatErrors()
    {
        QFETCH(QString, source);
        QFETCH(QByteArray, body);
        QFETCH(QString, error);
        QStringList errors;
        QVERIFY(parse(source, body, &errors).isEmpty());
        QCOMPARE(errors, error.isEmpty() ? QStringList() : QStringList{error});
    }

    void truncatedRepliesGiveOneErrorEach()
    {
        const QList<std::pair<QString, QByteArray>> replies = {
            {"SOTA", k_sotaReply}, {"WWFF", k_wwffReply}, {"WWBOTA", k_wwbotaReply}, {"GMA", k_gmaReply}};
        for (const auto &[source, body] : replies) {
            // Cut off anywhere, a reply is reported once and never half-parsed.
            for (qsizetype length = 0; length < body.trimmed().size(); ++length) {
                QStringList errors;
                QVERIFY(parse(source, body.left(length), &errors).isEmpty());
                QCOMPARE(errors.size(), 1);
            }
        }
    }

    void sota()
    {
        QCOMPARE(
            parse("SOTA", k_sotaReply),
            QStringList({"SOTA|HB9/DL1ABC/P|HB/BE-123|Niesen, 2362m, 10 Points|7032|CW|G4ABC|QRV now, 5W|"
                         "2024-05-01T07:15:00.000Z|46.645,7.651",
                         "SOTA|G0ABC/P|G/LD-001|Scafell Pike, 978m, 10 Points|14285|SSB|M0XYZ||"
                         "2024-05-01T07:20:31.250Z|-"}));
        // 1000 and below is MHz, above is kHz; a position needs both coordinates as numbers.
        const QStringList spots = parse("SOTA", R"([
          {"activatorCallsign": "A1", "frequency": " 1000 ", "highlat": "47.1", "highlon": 11.2},
          {"activatorCallsign": "A2", "frequency": "1000.5", "highlat": 47.1},
          {"activatorCallsign": "A3", "frequency": "abc", "highlat": -33.5, "highlon": -70.25},
          {"activatorCallsign": "A4", "frequency": 14.062},
          {"activatorCallsign": "A5", "frequency": "inf"},
          {"activatorCallsign": "  ", "frequency": "7.032"}, "A6", 42])");
        QCOMPARE(spots,
                 QStringList({"SOTA|A1|||1000000|||||-", "SOTA|A2|||1000.5|||||-",
                              "SOTA|A3|||0|||||-33.5,-70.25", "SOTA|A4|||0|||||-", "SOTA|A5|||0|||||-"}));
    }

    void wwff()
    {
        // The service's own lat/lon are no position; kHz is taken as given, and
        // fractional epoch seconds are truncated.
        QCOMPARE(
            parse("WWFF", k_wwffReply),
            QStringList({"WWFF|ON4ABC/P|ONFF-0123|Hoge Venen|14244|SSB|DL1XYZ|loud in JO31|"
                         "2024-05-01T12:34:56.000Z|-",
                         "WWFF|F4AAA|FFF-1234|Parc du Morvan|7144|CW|F5BBB||2024-05-01T12:36:40.000Z|-"}));
        const QStringList spots = parse("WWFF", R"([
          {"activator": "A1", "spot_time": 0, "frequency_khz": "14244"},
          {"activator": "A2", "spot_time": -86400},
          {"activator": "A3", "spot_time": "1714566896"},
          {"activator": "A4", "spot_time": 1e300},
          {"activator": "A5", "spot_time": 1},
          {"activator": 12345, "reference": "ONFF-0001"}])");
        QCOMPARE(spots, QStringList({"WWFF|A1|||0|||||-", "WWFF|A2|||0|||||-", "WWFF|A3|||0|||||-",
                                     "WWFF|A4|||0|||||-", "WWFF|A5|||0||||1970-01-01T00:00:01.000Z|-"}));
    }

    void wwbota()
    {
        // One spot per reference; always MHz; a QRT activation marks its comment.
        QCOMPARE(parse("WWBOTA", k_wwbotaReply),
                 QStringList({"WWBOTA|G0ABC/P|B/G-0001|Pillbox at Dover|7144|SSB|M0XYZ|cq cq|"
                              "2024-05-01T12:34:56.123Z|-",
                              "WWBOTA|G0ABC/P|B/G-0002|Coastal battery|7144|SSB|M0XYZ|cq cq|"
                              "2024-05-01T12:34:56.123Z|-",
                              "WWBOTA|ON4ABC|B/ON-0042|Fort Eben-Emael|14062|CW|ON4ABC|QRT thanks all|"
                              "2024-05-01T11:00:00.000Z|-"}));
        // Unlike SOTA and POTA, a time without a zone is this computer's local
        // time (UTC+2 in May, UTC+1 in January in the zone set up above).
        const QStringList spots = parse("WWBOTA", R"([
          {"call": "A1", "references": [{"reference": "B/1"}], "freq": 7144, "type": "qrt",
           "comment": "", "time": "2024-05-01T12:34:56"},
          {"call": "A2", "references": [{"reference": "B/2"}], "type": "Live", "comment": "QRT soon",
           "time": "2024-01-15T08:00:00.500"},
          {"call": "A3", "references": [{"reference": "B/3"}], "type": "QRT-ish", "comment": "x",
           "time": "2024-05-01T12:34:56-04:00"},
          {"call": "A4", "references": [{"reference": ""}, {"name": "nameless"}, "B/4", null,
                                        {"reference": " B/4 ", "name": " Kept "}], "time": "soon"},
          {"call": "A5", "references": []},
          {"call": "A6"},
          {"call": "  ", "references": [{"reference": "B/7"}]}])");
        QCOMPARE(spots, QStringList({"WWBOTA|A1|B/1||7144000|||QRT|2024-05-01T10:34:56.000Z|-",
                                     "WWBOTA|A2|B/2||0|||QRT soon|2024-01-15T07:00:00.500Z|-",
                                     "WWBOTA|A3|B/3||0|||x|2024-05-01T16:34:56.000Z|-",
                                     "WWBOTA|A4|B/4|Kept|0|||||-"}));
    }

    void gma()
    {
        // Spots under "RCD", upper-cased calls, the hour padded, MHz or kHz as for SOTA.
        QCOMPARE(parse("GMA", k_gmaReply),
                 QStringList(
                     {"GMA|DL1ABC|DM/BW-001|Feldberg|7032|CW|DL2XYZ|tnx fer QSO|2024-05-01T09:30:00.000Z|-",
                      "GMA|OE5XYZ/P|OE/OO-123|Traunstein|14285|SSB|OE5XYZ||2024-05-01T17:45:00.000Z|-"}));
        // The wall clock is UTC, so a gap in the local summer-time change does
        // not matter; a time padded beyond 4 characters is not cut down.
        const QStringList spots = parse("GMA", R"({"RCD": [
          {"ACTIVATOR": "A1", "DATE": "20240501", "TIME": "5", "QRG": "1000"},
          {"ACTIVATOR": "A2", "DATE": "20240331", "TIME": "230", "QRG": 7.032},
          {"ACTIVATOR": "A3", "DATE": "20240501", "TIME": "09300"},
          {"ACTIVATOR": "A4", "DATE": "2024-05-01", "TIME": "0930"},
          {"ACTIVATOR": "A5", "DATE": "20240501", "TIME": "2460"},
          {"ACTIVATOR": "", "DATE": "20240501", "TIME": "0930"}, "A7"]})");
        QCOMPARE(spots, QStringList({"GMA|A1|||1000000||||2024-05-01T00:05:00.000Z|-",
                                     "GMA|A2|||0||||2024-03-31T02:30:00.000Z|-", "GMA|A3|||0|||||-",
                                     "GMA|A4|||0|||||-", "GMA|A5|||0|||||-"}));
    }

    void fetchGetsPathAndDeliversSpots()
    {
        const QList<std::tuple<QString, QByteArray, QByteArray>> sources = {
            {"SOTA", "/api/spots/-72", k_sotaReply},
            {"WWFF", "/static/spots.json", k_wwffReply},
            {"WWBOTA", "/spots/", k_wwbotaReply},
            {"GMA", "/api/spots/gma/", k_gmaReply}};
        HttpTestServer server;
        QVERIFY(server.start());
        for (const auto &[source, path, body] : sources) {
            server.setRoute(path, body);
            server.clearRequests();
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
            QCOMPARE(describe(ready.first().first().value<QList<StationSpot>>()), parse(source, body));
        }
    }
};

TALLIS_TEST_MAIN(TestWebParsers)
#include "tst_webparsers.moc"
