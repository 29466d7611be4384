#include "model/referencekind.h"
#include "model/stationmodel.h"
#include "sources/gmaspotfetcher.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/wwbotaspotfetcher.h"
#include "sources/wwffspotfetcher.h"
#include "support/httptestserver.h"
#include "support/testmain.h"

#include <QJsonDocument>
#include <QJsonParseError>
#include <QMap>
#include <QSignalSpy>

#include <functional>
#include <memory>

namespace {

// Every field a parser fills, one spot a line: the time in ISO form, where a
// trailing "Z" shows it is UTC, and "-" for a spot without a position.
QStringList describe(const QList<StationSpot> &spots)
{
    QStringList lines;
    for (const StationSpot &s : spots) {
        const QString position = s.hasLocation ? QString::number(s.lat, 'g', 10) + QLatin1Char(',') +
                                                     QString::number(s.lon, 'g', 10)
                                               : QStringLiteral("-");
        lines << QStringList({s.callsign, s.reference, s.referenceName,
                              QString::number(s.frequencyKhz, 'g', 10), s.mode, s.spotter, s.comments,
                              s.locationDesc, s.grid, s.spotTime.toString(Qt::ISODateWithMs), position})
                     .join(QLatin1Char('|'));
    }
    return lines;
}

// A reply holding the row's spot elements, shaped as the source sends it.
QByteArray reply(StationSpot::Source source, const QByteArray &elements)
{
    return source == StationSpot::GMA ? QByteArray("{\"RCD\": [" + elements + "], \"ERR\": \"\"}")
                                      : QByteArray("[" + elements + "]");
}

// A ZLOTA reply as the service sends it: one activation at two references, and another.
const char k_zlotaReply[] = R"({"id": 48213, "activator": "ZL2ABC", "reference": "ZLP/WK-0503",
      "name": "Pureora Forest Park", "frequency": "7.095", "mode": "ssb", "referenced_time": "2026-11-21T01:14:00Z",
      "comments": " two refs ", "spotter": "zl1xyz"},
    {"id": 48213, "activator": "ZL2ABC", "reference": "ZLH/WK-0112", "name": "Waihaha Hut", "frequency": "7.095",
      "mode": "SSB", "referenced_time": "2026-11-21T01:14:00Z", "comments": "two refs", "spotter": "ZL1XYZ"},
    {"id": "48220", "activator": "zl4pq", "reference": "ZLV/CB-0002", "name": "Banks Peninsula",
      "frequency": "14.0625", "mode": "CW", "referenced_time": "2026-11-21T01:20:30.500+00:00"})";

// One spot in the shape of every source.
const char k_anySpot[] = R"({"activator": "A1", "call": "A1", "ACTIVATOR": "A1", "activatorCallsign": "A1",
                             "references": [{"reference": "B/1"}], "actCallsign": "A1", "actClass": "SiOTA"})";

// Each service's fetcher class and the path it must ask for; its parser comes from the table of sources.
struct Service
{
    std::function<SpotFetcher *(const QUrl &)> make;
    QByteArray path;
};

template <typename Fetcher>
Service service(const char *path)
{
    return {[](const QUrl &url) { return new Fetcher(nullptr, url); }, path};
}

// A source without a class of its own: the fetcher made from its description.
Service described(StationSpot::Source source, const char *path)
{
    return {[source](const QUrl &url) { return new SpotFetcher(WebSource::of(source), nullptr, url); }, path};
}

SpotParse parseReply(StationSpot::Source source, const QByteArray &body)
{
    return WebSource::of(source).parse(body);
}

const QMap<StationSpot::Source, Service> &services()
{
    static const QMap<StationSpot::Source, Service> all = {
        {StationSpot::POTA, service<PotaSpotFetcher>("/spot/")},
        {StationSpot::SOTA, service<SotaSpotFetcher>("/api/spots/-72")},
        {StationSpot::WWFF, service<WwffSpotFetcher>("/static/spots.json")},
        {StationSpot::WWBOTA, service<WwbotaSpotFetcher>("/spots/")},
        {StationSpot::GMA, service<GmaSpotFetcher>("/api/spots/gma/")},
        {StationSpot::ZLOTA, described(StationSpot::ZLOTA, "/api/spots.js?zlota_only=true")},
        {StationSpot::SIOTA, described(StationSpot::SIOTA, "/api/ALL")}};
    return all;
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
    }

    // Each row: one reply's spot elements, and every field of the spots parsed from it.
    void parse_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<QByteArray>("elements");
        QTest::addColumn<QStringList>("spots");
        StationSpot::Source source = StationSpot::POTA;
        const auto row = [&source](const char *name, const char *elements,
                                   std::initializer_list<const char *> spots) {
            QStringList lines;
            for (const char *line : spots)
                lines << QString::fromUtf8(line);
            QTest::addRow("%s %s", qPrintable(StationSpot::sourceName(source)), name)
                << int(source) << QByteArray(elements) << lines;
        };
        // Sub-square centre of FN31pr; the service's own latitude and longitude are not used.
        row("full", R"({"spotId": 28734521, "activator": " K1ABC ", "frequency": "14062.5", "mode": "cw",
              "reference": "US-1234", "parkName": null, "spotTime": "2024-05-01T12:34:56", "source": "RBN",
              "spotter": "W1AW-#", "comments": "  RBN 12 dB 22 WPM via W3LPL  ", "name": "Brightwater SF",
              "locationDesc": "US-CT", "grid4": "FN31", "grid6": "FN31pr", "latitude": 41.7,
              "longitude": -72.7})",
            {"K1ABC|US-1234|Brightwater SF|14062.5|CW|W1AW-#|RBN 12 dB 22 WPM via W3LPL|US-CT|FN31pr|"
             "2024-05-01T12:34:56.000Z|41.72916667,-72.70833333"});
        row("square grid",
            R"({"activator": "VE3XYZ/P", "frequency": "7185", "mode": "SSB", "name": "Algonquin",
              "reference": "CA-0117", "spotTime": "2024-05-01T12:30:00.250", "comments": "",
              "locationDesc": "US-MT,US-ND", "grid6": "FN04"})",
            {"VE3XYZ/P|CA-0117|Algonquin|7185|SSB|||US-MT,US-ND|FN04|2024-05-01T12:30:00.250Z|44.5,-79"});
        // A number is read as kHz, like the text; other non-strings read as empty.
        row("numbers",
            R"({"activator": "N0NUM", "frequency": 14062, "spotTime": 1, "grid6": "FN3", "mode": 1})",
            {"N0NUM|||14062|||||FN3||-"});
        row("no frequency",
            R"({"activator": "K9Q", "frequency": "nan"}, {"activator": "K9R", "frequency": "inf"},
              {"activator": "K9S", "frequency": null}, {"activator": "K9T", "frequency": "14,062"})",
            {"K9Q|||0|||||||-", "K9R|||0|||||||-", "K9S|||0|||||||-", "K9T|||0|||||||-"});
        row("dropped", R"({"activator": "  ", "frequency": "14070"}, 17, "text", {"activator": 5})", {});
        // Only "+" is taken for a zone: the appended "Z" spoils a negative offset.
        row("times", R"({"activator": "A1", "spotTime": " 2024-05-01T12:34:56Z "},
              {"activator": "A2", "spotTime": "2024-05-01T12:34:56+02:00"},
              {"activator": "A3", "spotTime": "2024-05-01T12:34:56.789"},
              {"activator": "A4", "spotTime": "2024-05-01T12:34:56-02:00"},
              {"activator": "A5", "spotTime": "2024-05-01T12:34:56z"})",
            {"A1|||0||||||2024-05-01T12:34:56.000Z|-", "A2|||0||||||2024-05-01T10:34:56.000Z|-",
             "A3|||0||||||2024-05-01T12:34:56.789Z|-", "A4|||0|||||||-", "A5|||0|||||||-"});

        source = StationSpot::SOTA;
        row("current shape", R"({"epoch": "6a1b", "id": 123, "timeStamp": "2026-11-21T17:51:41Z", "AltM": 950,
              "activatorCallsign": "G4ABC/P", "activatorName": "Ann", "callsign": "M0XYZ",
              "comments": "QRV now",
              "frequency": 14.062, "mode": "CW", "summitCode": "G/LD-003", "summitName": "Helvellyn",
              "AltFt": 3117, "points": 10, "userID": 1, "type": "NORMAL"})",
            {"G4ABC/P|G/LD-003|Helvellyn|14062|CW|M0XYZ|QRV now|||2026-11-21T17:51:41.000Z|-"});
        row("older shape", R"({"timeStamp": "2024-05-01T07:15:00", "comments": " QRV now, 5W ",
              "associationCode": "HB", "summitCode": "HB/BE-123", "activatorCallsign": " HB9/DL1ABC/P ",
              "frequency": "7.032", "mode": "cw", "summitDetails": "Niesen, 2362m, 10 Points",
              "callsign": "G4ABC",
              "summitName": "Niesen", "highlightColor": null, "highlat": 46.645, "highlon": 7.651},
            {"timeStamp": "2024-05-01T07:20:31.250", "summitCode": "SE-029", "associationCode": "W5N",
              "activatorCallsign": "K5ABC", "frequency": "14,061", "mode": "ssb",
              "summitDetails": "Pajarito Peak, 2756m, 8 points"})",
            {"HB9/DL1ABC/P|HB/BE-123|Niesen, 2362m, 10 Points|7032|CW|G4ABC|QRV now, 5W|||"
             "2024-05-01T07:15:00.000Z|46.645,7.651",
             "K5ABC|W5N/SE-029|Pajarito Peak, 2756m, 8 points|14061|SSB|||||2024-05-01T07:20:31.250Z|-"});
        // Test spots are no activation; QRT spots are marked for the filters.
        row("types",
            R"({"activatorCallsign": "A1", "type": "TEST"}, {"activatorCallsign": "A2", "type": "QRT",
              "comments": "thanks all"}, {"activatorCallsign": "A3", "type": "qrt"},
              {"activatorCallsign": "A4", "type": "NORMAL", "comments": "QRT soon"})",
            {"A2|||0|||QRT thanks all||||-", "A3|||0|||QRT||||-", "A4|||0|||QRT soon||||-"});
        // 1000 and below is MHz, above is kHz, as text or number.
        row("frequencies", R"({"activatorCallsign": "A1", "frequency": " 1000 "},
              {"activatorCallsign": "A2", "frequency": "1000.5"}, {"activatorCallsign": "A3", "frequency": 7032},
              {"activatorCallsign": "A5", "frequency": "abc"}, {"activatorCallsign": "A7", "frequency": "1,0.5"})",
            {"A1|||1000000|||||||-", "A2|||1000.5|||||||-", "A3|||7032|||||||-", "A5|||0|||||||-",
             "A7|||0|||||||-"});
        // A position needs both coordinates as numbers; a code with a "/" keeps it.
        row("positions and codes", R"({"activatorCallsign": "A1", "highlat": "47.1", "highlon": 11.2},
              {"activatorCallsign": "A2", "highlat": 47.1}, {"activatorCallsign": "A3", "highlat": -33.5,
              "highlon": -70.25, "summitCode": "CE/RM-001", "associationCode": "XX"},
              {"activatorCallsign": "A4", "summitCode": "LD-001", "summitDetails": "",
              "summitName": " Named "},
              {"activatorCallsign": "  ", "frequency": "7.032"}, "A6", 42)",
            {"A1|||0|||||||-", "A2|||0|||||||-", "A3|CE/RM-001||0|||||||-33.5,-70.25",
             "A4|LD-001|Named|0|||||||-"});

        source = StationSpot::WWFF;
        // The service's own lat/lon are no position; kHz as given; epoch seconds truncated.
        row("reply",
            R"({"id": 77001, "activator": " ON4ABC/P ", "reference": "ONFF-0123", "lat": 50.5, "lon": 6.1,
              "reference_name": "Hoge Venen", "frequency_khz": 14244.0, "mode": "ssb", "spotter": "DL1XYZ",
              "remarks": "loud in JO31", "spot_time": 1714566896},
            {"activator": "F4AAA", "frequency_khz": 7144, "spot_time": 1714567000.9})",
            {"ON4ABC/P|ONFF-0123|Hoge Venen|14244|SSB|DL1XYZ|loud in JO31|||2024-05-01T12:34:56.000Z|-",
             "F4AAA|||7144||||||2024-05-01T12:36:40.000Z|-"});
        row("bad values", R"({"activator": "A1", "spot_time": 0, "frequency_khz": "14244"},
              {"activator": "A2", "spot_time": -86400}, {"activator": "A3", "spot_time": "1714566896"},
              {"activator": "A4", "spot_time": 1e300}, {"activator": "A5", "spot_time": 1},
              {"activator": 12345, "reference": "ONFF-0001"})",
            {"A1|||0|||||||-", "A2|||0|||||||-", "A3|||0|||||||-", "A4|||0|||||||-",
             "A5|||0||||||1970-01-01T00:00:01.000Z|-"});

        source = StationSpot::WWBOTA;
        // One spot per reference; always MHz; a QRT activation marks its comment; a test one is dropped.
        row("reply", R"({"call": " G0ABC/P ", "references": [
                {"reference": "B/G-0001", "name": "Pillbox at Dover", "lat": 51.1, "long": 1.3},
                {"reference": "B/G-0002", "name": "Coastal battery"}],
              "freq": 7.144, "mode": "ssb", "spotter": "M0XYZ", "type": "Live", "comment": " cq cq ",
              "time": "2024-05-01T12:34:56.123Z"},
            {"call": "ON4ABC", "references": [{"reference": "B/ON-0042", "name": "Fort Eben-Emael"}],
              "freq": 14.062, "mode": "CW", "type": "qrt", "comment": "thanks",
              "time": "2024-05-01T13:00:00+02:00"},
            {"call": "ON4XYZ", "references": [{"reference": "B/ON-0043"}], "freq": 7.1, "type": "Test"})",
            {"G0ABC/P|B/G-0001|Pillbox at Dover|7144|SSB|M0XYZ|cq cq|||2024-05-01T12:34:56.123Z|-",
             "G0ABC/P|B/G-0002|Coastal battery|7144|SSB|M0XYZ|cq cq|||2024-05-01T12:34:56.123Z|-",
             "ON4ABC|B/ON-0042|Fort Eben-Emael|14062|CW||QRT thanks|||2024-05-01T11:00:00.000Z|-"});
        // Unlike SOTA and POTA, a time without a zone is this computer's local
        // time (UTC+2 in May, UTC+1 in January in the zone set up above).
        row("odd activations", R"({"call": "A1", "references": [{"reference": "B/1"}], "freq": 7144,
              "type": "qrt", "comment": "", "time": "2024-05-01T12:34:56"},
            {"call": "A2", "references": [{"reference": "B/2"}], "type": "Live", "comment": "QRT soon",
              "time": "2024-01-15T08:00:00.500"},
            {"call": "A3", "references": [{"reference": "B/3"}], "type": "QRT-ish", "comment": "x",
              "time": "2024-05-01T12:34:56-04:00"},
            {"call": "A4", "references": [{"reference": ""}, {"name": "nameless"}, "B/4", null,
              {"reference": " B/4 ", "name": " Kept "}], "time": "soon"},
            {"call": "A5", "references": []}, {"call": "A6"}, {"call": "  ",
            "references": [{"reference": "B/7"}]})",
            {"A1|B/1||7144000|||QRT|||2024-05-01T10:34:56.000Z|-",
             "A2|B/2||0|||QRT soon|||2024-01-15T07:00:00.500Z|-",
             "A3|B/3||0|||x|||2024-05-01T16:34:56.000Z|-", "A4|B/4|Kept|0|||||||-"});

        source = StationSpot::GMA;
        // Upper-cased calls, the hour padded, MHz or kHz as text or number.
        row("reply", R"({"ACTIVATOR": " dl1abc ", "REF": "DM/BW-001", "NAME": "Feldberg", "MODE": "cw",
              "SPOTTER": "dl2xyz", "TEXT": " tnx fer QSO ", "QRG": "7.032", "DATE": "20240501", "TIME": "930",
              "LAT": "47.87", "LON": "8.00"},
            {"ACTIVATOR": "OE5XYZ/P", "REF": "OE/OO-123", "MODE": "SSB", "QRG": "14285.0", "DATE": "20240501",
              "TIME": "1745"})",
            {"DL1ABC|DM/BW-001|Feldberg|7032|CW|DL2XYZ|tnx fer QSO|||2024-05-01T09:30:00.000Z|-",
             "OE5XYZ/P|OE/OO-123||14285|SSB|||||2024-05-01T17:45:00.000Z|-"});
        // The wall clock is UTC, so a gap in the local summer-time change does
        // not matter; a time padded beyond 4 characters is not cut down.
        row("odd records", R"({"ACTIVATOR": "A1", "DATE": "20240501", "TIME": "5", "QRG": "1000"},
            {"ACTIVATOR": "A2", "DATE": "20240331", "TIME": "230", "QRG": 7.032},
            {"ACTIVATOR": "A3", "DATE": "20240501", "TIME": "09300", "QRG": 14285},
            {"ACTIVATOR": "A4", "DATE": "2024-05-01", "TIME": "0930"},
            {"ACTIVATOR": "A5", "DATE": "20240501", "TIME": "2460"},
            {"ACTIVATOR": "", "DATE": "20240501", "TIME": "0930"}, "A7")",
            {"A1|||1000000||||||2024-05-01T00:05:00.000Z|-", "A2|||7032||||||2024-03-31T02:30:00.000Z|-",
             "A3|||14285|||||||-", "A4|||0|||||||-", "A5|||0|||||||-"});

        source = StationSpot::ZLOTA;
        // One activation at a park and a hut is two rows; MHz text to the Hz.
        row("reply", k_zlotaReply,
            {"ZL2ABC|ZLP/WK-0503|Pureora Forest Park|7095|SSB|ZL1XYZ|two refs|||2026-11-21T01:14:00.000Z|-",
             "ZL2ABC|ZLH/WK-0112|Waihaha Hut|7095|SSB|ZL1XYZ|two refs|||2026-11-21T01:14:00.000Z|-",
             "ZL4PQ|ZLV/CB-0002|Banks Peninsula|14062.5|CW|||||2026-11-21T01:20:30.500Z|-"});
        row("odd rows",
            R"({"activator": "A1", "frequency": "4.047", "referenced_time": "2026-11-21T01:14:00"},
              {"activator": "A2", "frequency": "abc", "referenced_time": "yesterday"},
              {"activator": "A3", "frequency": null}, {"activator": "  ", "frequency": "7.1"}, 17, "ZL1X",
              {"activator": 5, "reference": "ZLP/WK-0001"})",
            {"A1|||4047||||||2026-11-21T01:14:00.000Z|-", "A2|||0|||||||-", "A3|||0|||||||-"});

        source = StationSpot::SIOTA;
        // Only the silos; the spotter under its misspelt key; the time without a zone is UTC.
        row("reply",
            R"({"actID": "912345", "actCallsign": "VK3ABC", "actClass": "SiOTA", "actSiteID": "VK-BRM3",
              "actLocation": "Brim Silo", "actFreq": "7.144", "actMode": "SSB", "actTime": "2026-11-21 02:31:05",
              "actComments": " silo art ", "actSpoter": "vk3xyz"},
            {"actID": "912346", "actCallsign": "VK2DEF", "actClass": "POTA", "actSiteID": "AU-0123",
              "actFreq": "14.310", "actMode": "SSB", "actTime": "2026-11-21 02:29:00"},
            {"actCallsign": "VK3ABC", "actClass": "SOTA", "actSiteID": "VK3/VC-001", "actFreq": "7.144"},
            {"actCallsign": "VK5GHI", "actClass": "WWFF", "actSiteID": "VKFF-0001", "actFreq": "7.1"},
            {"actCallsign": "VK6JK", "actClass": "siota", "actSiteID": "VK-WAT6", "actFreq": "10.118",
              "actMode": "cw", "actTime": "2026-11-21T02:10:00"})",
            {"VK3ABC|VK-BRM3|Brim Silo|7144|SSB|VK3XYZ|silo art|||2026-11-21T02:31:05.000Z|-",
             "VK6JK|VK-WAT6||10118|CW|||||2026-11-21T02:10:00.000Z|-"});
        row("odd rows", R"({"actClass": "SiOTA", "actCallsign": "VK1A", "actFreq": "abc",
              "actTime": "2026-13-45 99:00:00"}, {"actClass": "SiOTA", "actCallsign": "  ", "actFreq": "7.1"},
              {"actClass": null, "actCallsign": "VK1B"}, {"actCallsign": "VK1C"}, 1, "SiOTA")",
            {"VK1A|||0|||||||-"});
    }

    // Rows sharing an id are one activation: grouped, whatever the other rules say.
    void zlotaActivationGrouped()
    {
        QList<StationSpot> spots =
            parseReply(StationSpot::ZLOTA, reply(StationSpot::ZLOTA, k_zlotaReply)).spots;
        QCOMPARE(spots.size(), 3);
        QCOMPARE(spots.at(0).activationId, QStringLiteral("48213"));
        QCOMPARE(spots.at(2).activationId, QStringLiteral("48220")); // sent as text
        StationModel::computeGroups(spots);
        QVERIFY(spots.at(0).groupId != 0);
        QCOMPARE(spots.at(1).groupId, spots.at(0).groupId);
        QCOMPARE(spots.at(2).groupId, 0);
        // The reference's third letter names its kind; another programme's reference names none.
        QCOMPARE(ReferenceKind::of(spots.at(0)) + ReferenceKind::of(spots.at(1)) +
                     ReferenceKind::of(spots.at(2)),
                 QStringLiteral("ParkHutVolcano"));
        spots[0].source = StationSpot::POTA;
        QCOMPARE(ReferenceKind::of(spots.at(0)), QString());
        // An id that is no whole number names nothing.
        const SpotParse odd = parseReply(StationSpot::ZLOTA, R"([{"activator": "A", "id": 1.5},
            {"activator": "B", "id": -2}, {"activator": "C", "id": 1e300}, {"activator": "D", "id": true}])");
        for (const StationSpot &spot : odd.spots)
            QCOMPARE(spot.activationId, QString());
    }

    void parse()
    {
        const auto source = StationSpot::Source(fetched<int>("source"));
        const SpotParse parsed = parseReply(source, reply(source, fetched<QByteArray>("elements")));
        QCOMPARE(parsed.error, QString());
        QTEST(describe(parsed.spots), "spots");
        for (const StationSpot &spot : parsed.spots)
            QCOMPARE(spot.source, source);
    }

    // Per service: the format errors, and a fetch that asks its path and delivers what the parser gives.
    void eachService()
    {
        QJsonParseError empty;
        QJsonDocument::fromJson(QByteArray(), &empty);
        HttpTestServer server;
        QVERIFY(server.start());
        for (auto it = services().cbegin(); it != services().cend(); ++it) {
            const Service &s = *it;
            const bool gma = it.key() == StationSpot::GMA;
            const QString name = StationSpot::sourceName(it.key());
            SpotParse parsed = parseReply(it.key(), QByteArray());
            QVERIFY(parsed.spots.isEmpty());
            QCOMPARE(parsed.error, name + QStringLiteral(" JSON parse error: ") + empty.errorString());
            parsed = parseReply(it.key(), gma ? "[]" : "{}");
            QVERIFY(parsed.spots.isEmpty());
            QCOMPARE(parsed.error, name + QLatin1String(gma ? " response is not a JSON object"
                                                            : " response is not a JSON array"));
            // Elements that are no spot objects, or no array under "RCD", are no fault.
            for (const QByteArray &body :
                 {reply(it.key(), "1, \"x\", null"), QByteArray(gma ? R"({"RCD": {}})" : "[]")}) {
                parsed = parseReply(it.key(), body);
                QVERIFY(parsed.spots.isEmpty());
                QCOMPARE(parsed.error, QString());
            }

            const QByteArray body = reply(it.key(), k_anySpot);
            QCOMPARE(parseReply(it.key(), body).spots.size(), 1);
            server.setRoute(s.path, body);
            server.clearRequests();
            const std::unique_ptr<SpotFetcher> fetcher(s.make(server.url()));
            QSignalSpy ready(fetcher.get(), &SpotFetcher::spotsReady);
            fetcher->fetch();
            QVERIFY(ready.wait(5000));
            // SOTA asks for its epoch first; a service without one gets the list asked for anyway.
            const HttpTestServer::Request request = server.requests().constLast();
            QCOMPARE(server.requestCount(), it.key() == StationSpot::SOTA ? 2 : 1);
            QCOMPARE(request.path, s.path);
            QCOMPARE(request.headers.value("user-agent"), QByteArray("Tallis/0.1 (Brightwater)"));
            QCOMPARE(describe(ready.first().first().value<QList<StationSpot>>()),
                     describe(parseReply(it.key(), body).spots));
        }
    }
};

TALLIS_TEST_MAIN(TestWebParsers)
#include "tst_webparsers.moc"
