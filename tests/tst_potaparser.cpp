#include "sources/potaspotfetcher.h"
#include "support/testmain.h"

#include <QSignalSpy>
#include <QTest>

#include <cmath>

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
 17,
 "text",
 {"activator": "N0NUM", "frequency": 14062, "spotTime": 12345, "grid6": "FN3", "mode": null},
 {"activator": "K9Q", "frequency": "abc", "spotTime": "yesterday", "grid6": ""}
])";

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

        const StationSpot &a = spots.at(0);
        QCOMPARE(a.source, StationSpot::POTA);
        QCOMPARE(a.callsign, QStringLiteral("K1ABC"));
        QCOMPARE(a.reference, QStringLiteral("US-1234"));
        QCOMPARE(a.referenceName, QStringLiteral("Brightwater State Forest"));
        QCOMPARE(a.frequencyKhz, 14062.5);
        QCOMPARE(a.mode, QStringLiteral("CW"));
        QCOMPARE(a.spotter, QStringLiteral("W1AW-#"));
        QCOMPARE(a.comments, QStringLiteral("RBN 12 dB 22 WPM via W3LPL"));
        QCOMPARE(a.locationDesc, QStringLiteral("US-CT"));
        QCOMPARE(a.grid, QStringLiteral("FN31pr"));
        QVERIFY(a.hasLocation);
        QVERIFY(std::fabs(a.lat - 41.7291666667) < 1e-9);
        QVERIFY(std::fabs(a.lon - -72.7083333333) < 1e-9);
        QCOMPARE(a.spotTime, QDateTime(QDate(2024, 5, 1), QTime(12, 34, 56), Qt::UTC));
        QCOMPARE(a.spotTime.timeSpec(), Qt::UTC);
        QCOMPARE(a.status, StationSpot::Unknown);
        QCOMPARE(a.groupId, 0);

        const StationSpot &b = spots.at(1);
        QCOMPARE(b.callsign, QStringLiteral("VE3XYZ/P"));
        QCOMPARE(b.frequencyKhz, 7185.0);
        QCOMPARE(b.spotTime, QDateTime(QDate(2024, 5, 1), QTime(12, 30, 0, 250), Qt::UTC));
        QVERIFY(b.hasLocation);
        QCOMPARE(b.lat, 44.5); // square centre of FN04
        QCOMPARE(b.lon, -79.0);

        // Numbers where strings belong read as empty: no frequency, no time.
        const StationSpot &c = spots.at(2);
        QCOMPARE(c.callsign, QStringLiteral("N0NUM"));
        QCOMPARE(c.frequencyKhz, 0.0);
        QVERIFY(!c.spotTime.isValid());
        QVERIFY(!c.hasLocation);
        QCOMPARE(c.grid, QStringLiteral("FN3"));
        QCOMPARE(c.mode, QString());

        const StationSpot &d = spots.at(3);
        QCOMPARE(d.frequencyKhz, 0.0);
        QVERIFY(!d.spotTime.isValid());
        QVERIFY(!d.hasLocation);
    }

    void faults()
    {
        PotaSpotFetcher fetcher;
        QSignalSpy errors(&fetcher, &SpotFetcher::fetchError);
        QVERIFY(fetcher.parseResponse(QByteArray()).isEmpty());
        QCOMPARE(errors.count(), 1);
        QVERIFY(errors.takeFirst().at(0).toString().startsWith(QStringLiteral("POTA JSON parse error: ")));

        QVERIFY(fetcher.parseResponse("[{\"activator\": \"K1A\",").isEmpty());
        QCOMPARE(errors.count(), 1);
        QVERIFY(errors.takeFirst().at(0).toString().startsWith(QStringLiteral("POTA JSON parse error: ")));

        QVERIFY(fetcher.parseResponse("{\"error\": \"rate limited\"}").isEmpty());
        QCOMPARE(errors.takeFirst().at(0).toString(), QStringLiteral("POTA response is not a JSON array"));

        QVERIFY(fetcher.parseResponse("[]").isEmpty());
        QCOMPARE(errors.count(), 0);

        QString error;
        QVERIFY(PotaSpotFetcher::parseSpots("\"just text\"", &error).isEmpty());
        QVERIFY(!error.isEmpty());
        QCOMPARE(PotaSpotFetcher::parseSpots(R"([{"activator":"K1A","frequency":"nan"}])", nullptr)
                     .first()
                     .frequencyKhz,
                 0.0);
    }

    void timeZones_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDateTime>("expected");
        const QDate day(2024, 5, 1);
        QTest::newRow("bare") << "2024-05-01T12:34:56" << QDateTime(day, QTime(12, 34, 56), Qt::UTC);
        QTest::newRow("zulu") << "2024-05-01T12:34:56Z" << QDateTime(day, QTime(12, 34, 56), Qt::UTC);
        QTest::newRow("padded") << "  2024-05-01T12:34:56  " << QDateTime(day, QTime(12, 34, 56), Qt::UTC);
        QTest::newRow("plus two") << "2024-05-01T12:34:56+02:00"
                                  << QDateTime(day, QTime(10, 34, 56), Qt::UTC);
        QTest::newRow("millis") << "2024-05-01T12:34:56.789"
                                << QDateTime(day, QTime(12, 34, 56, 789), Qt::UTC);
        QTest::newRow("minus two, unrecognised") << "2024-05-01T12:34:56-02:00" << QDateTime();
        QTest::newRow("lower z") << "2024-05-01T12:34:56z" << QDateTime();
        QTest::newRow("empty") << "" << QDateTime();
        QTest::newRow("garbage") << "soon" << QDateTime();
    }

    void timeZones()
    {
        QFETCH(QString, text);
        QFETCH(QDateTime, expected);
        const QDateTime got = PotaSpotFetcher::parseSpotTime(text);
        QCOMPARE(got.isValid(), expected.isValid());
        if (expected.isValid()) {
            QCOMPARE(got, expected);
            QCOMPARE(got.timeSpec(), Qt::UTC);
        }
    }

    void grids_data()
    {
        QTest::addColumn<QString>("grid");
        QTest::addColumn<bool>("located");
        QTest::addColumn<double>("lat");
        QTest::addColumn<double>("lon");
        QTest::newRow("six") << "FN31pr" << true << 41.72916666666667 << -72.70833333333333;
        QTest::newRow("four") << "FN31" << true << 41.5 << -73.0;
        QTest::newRow("padded") << " fn31 " << true << 41.5 << -73.0;
        QTest::newRow("bad subsquare") << "FN31zz" << true << 41.5 << -73.0;
        QTest::newRow("three") << "FN3" << false << 0.0 << 0.0;
        QTest::newRow("empty") << "" << false << 0.0 << 0.0;
        QTest::newRow("beyond R") << "FS31" << false << 0.0 << 0.0;
    }

    void grids()
    {
        QFETCH(QString, grid);
        QFETCH(bool, located);
        QFETCH(double, lat);
        QFETCH(double, lon);
        const QByteArray body = QStringLiteral(R"([{"activator":"K1A","grid6":"%1"}])").arg(grid).toUtf8();
        const QList<StationSpot> spots = PotaSpotFetcher::parseSpots(body, nullptr);
        QCOMPARE(spots.size(), 1);
        QCOMPARE(spots.first().grid, grid.trimmed());
        QCOMPARE(spots.first().hasLocation, located);
        QVERIFY(std::fabs(spots.first().lat - lat) < 1e-9);
        QVERIFY(std::fabs(spots.first().lon - lon) < 1e-9);
    }
};

TALLIS_TEST_MAIN(TestPotaParser)
#include "tst_potaparser.moc"
