#include "sources/potaspotfetcher.h"
#include "support/testmain.h"

#include <QJsonDocument>
#include <QJsonParseError>
#include <QSignalSpy>

namespace {

const char k_reply[] = R"([
 {"spotId": 28734521, "activator": " K1ABC ", "frequency": "14062.5", "mode": "cw",
  "reference": "US-1234", "parkName": null, "spotTime": "2024-05-01T12:34:56",
  "spotter": "W1AW-#", "comments": "  RBN 12 dB 22 WPM via W3LPL  ", "source": "RBN",
  "invalid": null, "name": "Brightwater State Forest", "locationDesc": "US-CT",
  "grid4": "FN31", "grid6": "FN31pr", "latitude": 41.73, "longitude": -72.71, "count": 4, "expire": 1140},
 {"spotId": 28734522, "activator": "VE3XYZ/P", "frequency": "7185", "mode": "SSB",
  "reference": "CA-0117", "spotTime": "2024-05-01T12:30:00.250", "spotter": "VE3AAA",
  "comments": "", "name": "Algonquin", "locationDesc": "CA-ON", "grid6": "FN04"},
 {"activator": "  ", "frequency": "14070", "reference": "US-0001"},
 17, "text",
 {"activator": "N0NUM", "frequency": 14062, "spotTime": 12345, "grid6": "FN3", "mode": null},
 {"activator": "K9Q", "frequency": "nan", "spotTime": "yesterday", "grid6": ""}
])";

// Every field the parser fills on one line; the time in ISO form, where a
// trailing "Z" shows it is UTC, and "-" for a spot without a position.
QString describe(const StationSpot &s)
{
    const QString position =
        s.hasLocation ? QString::number(s.lat, 'g', 10) + ',' + QString::number(s.lon, 'g', 10) : "-";
    return QStringLiteral("%1|%2|%3|%4|%5|%6|%7|%8|%9|%10|%11|%12")
        .arg(s.sourceString(), s.callsign, s.reference, s.referenceName, QString::number(s.frequencyKhz),
             s.mode, s.spotter, s.comments, s.locationDesc, s.grid, s.spotTime.toString(Qt::ISODateWithMs),
             position);
}

} // namespace

class TestPotaParser final : public QObject
{
    Q_OBJECT

private slots:
    void realisticReply()
    {
        PotaSpotFetcher fetcher;
        QSignalSpy errors(&fetcher, &SpotFetcher::fetchError);
        const QList<StationSpot> spots = fetcher.parseResponse(QByteArray(k_reply));
        QCOMPARE(errors.count(), 0);
        QCOMPARE(spots.size(), 4);
        // Sub-square centre of FN31pr; the service's own latitude and longitude are not used.
        QCOMPARE(describe(spots.at(0)),
                 QStringLiteral("POTA|K1ABC|US-1234|Brightwater State Forest|14062.5|CW|"
                                "W1AW-#|RBN 12 dB 22 WPM via W3LPL|US-CT|FN31pr|"
                                "2024-05-01T12:34:56.000Z|41.72916667,-72.70833333"));
        // Square centre of a four-character grid.
        QCOMPARE(describe(spots.at(1)),
                 QStringLiteral("POTA|VE3XYZ/P|CA-0117|Algonquin|7185|SSB|VE3AAA||CA-ON|"
                                "FN04|2024-05-01T12:30:00.250Z|44.5,-79"));
        // Numbers where the service sends strings read as empty; a short grid gives no position.
        QCOMPARE(describe(spots.at(2)), QStringLiteral("POTA|N0NUM|||0|||||FN3||-"));
        QCOMPARE(describe(spots.at(3)), QStringLiteral("POTA|K9Q|||0|||||||-"));
    }

    void faults()
    {
        PotaSpotFetcher fetcher;
        QSignalSpy errors(&fetcher, &SpotFetcher::fetchError);
        QJsonParseError jsonError;
        QJsonDocument::fromJson(QByteArray(), &jsonError);
        QVERIFY(fetcher.parseResponse(QByteArray()).isEmpty());
        QVERIFY(fetcher.parseResponse(R"({"error": "rate limited"})").isEmpty());
        QVERIFY(fetcher.parseResponse("[]").isEmpty());
        QCOMPARE(errors.count(), 2);
        QCOMPARE(errors.at(0).at(0).toString(),
                 QStringLiteral("POTA JSON parse error: ") + jsonError.errorString());
        QCOMPARE(errors.at(1).at(0).toString(), QStringLiteral("POTA response is not a JSON array"));
        // The bare parser takes no error sink.
        QVERIFY(PotaSpotFetcher::parseSpots(R"([{"activator": "K1A",)", nullptr).isEmpty());
    }

    void spotTimes_data()
    {
        QTest::addColumn<QByteArray>("stamp");
        QTest::addColumn<QString>("utc"); // empty: no time
        QTest::newRow("bare is UTC") << QByteArray("2024-05-01T12:34:56") << "2024-05-01T12:34:56.000Z";
        QTest::newRow("Z") << QByteArray(" 2024-05-01T12:34:56Z ") << "2024-05-01T12:34:56.000Z";
        QTest::newRow("plus offset") << QByteArray("2024-05-01T12:34:56+02:00") << "2024-05-01T10:34:56.000Z";
        QTest::newRow("milliseconds") << QByteArray("2024-05-01T12:34:56.789") << "2024-05-01T12:34:56.789Z";
        // Only "+" is taken for a zone: the appended "Z" spoils a negative offset.
        QTest::newRow("minus offset") << QByteArray("2024-05-01T12:34:56-02:00") << QString();
        QTest::newRow("lower-case z") << QByteArray("2024-05-01T12:34:56z") << QString();
    }

    void spotTimes()
    {
        QFETCH(QByteArray, stamp);
        QFETCH(QString, utc);
        const QList<StationSpot> spots = PotaSpotFetcher::parseSpots(
            QByteArray("[{\"activator\": \"K1A\", \"spotTime\": \"") + stamp + "\"}]", nullptr);
        QCOMPARE(spots.size(), 1);
        QCOMPARE(spots.first().spotTime.toString(Qt::ISODateWithMs), utc);
    }
};

TALLIS_TEST_MAIN(TestPotaParser)
#include "tst_potaparser.moc"
