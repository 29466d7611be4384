#include "app/spotsnapshot.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>

namespace {

constexpr qint64 k_now = 1'790'000'000'000;
constexpr qint64 k_hour = 3600 * 1000;

// Every field away from its default, so a field lost on the way shows up.
StationSpot fullSpot(StationSpot::Source source, const QString &call, qint64 ageMs)
{
    StationSpot s;
    s.source = source;
    s.callsign = call;
    s.reference = QStringLiteral("W4C/CM-001");
    s.referenceName = QStringLiteral("Mount Mitchell — Höhe");
    s.frequencyKhz = 14062.75;
    s.mode = QStringLiteral("CW");
    s.spotTime = ageMs < 0 ? QDateTime() : QDateTime::fromMSecsSinceEpoch(k_now - ageMs, Qt::UTC);
    s.spotter = QStringLiteral("N0SPOT");
    s.comments = QStringLiteral("tnx \"QSO\"");
    s.grid = QStringLiteral("EM85ns");
    s.locationDesc = QStringLiteral("US-NC");
    s.hasLocation = true;
    s.lat = 35.7647;
    s.lon = -82.2653;
    s.status = StationSpot::Heard;
    return s;
}

// All but the group number, which the model assigns on merging.
QVariantList fields(const StationSpot &s)
{
    return {s.source,       s.callsign,    s.reference, s.referenceName, s.frequencyKhz,
            s.mode,         s.spotTime,    s.spotter,   s.comments,      s.grid,
            s.locationDesc, s.hasLocation, s.lat,       s.lon,           s.status};
}

// Cut off mid-write, and a fresh file none of whose elements is a spot.
const char k_corrupt[] = "{\"saved\":\"2026-";
const char k_noSpots[] =
    "{\"saved\":\"2026-09-21T14:13:20Z\","
    "\"spots\":[{\"source\":9,\"callsign\":\"K1ABC\"},{\"source\":1,\"callsign\":\"\"},7]}";

} // namespace

class TestSpotSnapshot : public QObject
{
    Q_OBJECT

private slots:
    void roundTrip()
    {
        const QList<StationSpot> spots{fullSpot(StationSpot::SOTA, QStringLiteral("W1AW"), 1234),
                                       fullSpot(StationSpot::GMA, QStringLiteral("W1AW"), 5000),
                                       fullSpot(StationSpot::DX, QStringLiteral("DL1ABC"), -1),
                                       fullSpot(StationSpot::SOTA, QStringLiteral("K1ABC"), 2 * k_hour),
                                       fullSpot(StationSpot::SOTA, QStringLiteral("OLD"), 3 * k_hour + 1)};
        const SpotSnapshot snapshot; // the data directory under the test's HOME
        QVERIFY(snapshot.write(spots, k_now));
        QVERIFY(QFile::exists(QDir::homePath() + QStringLiteral("/.tallis/spots-snapshot.json")));

        const auto bySource = snapshot.read(k_now);
        QCOMPARE(bySource.keys(), (QList{StationSpot::SOTA, StationSpot::DX, StationSpot::GMA}));
        QCOMPARE(bySource[StationSpot::SOTA].size(), 2); // the spot past three hours is gone
        QCOMPARE(fields(bySource[StationSpot::SOTA][0]), fields(spots[0]));
        QCOMPARE(fields(bySource[StationSpot::SOTA][1]), fields(spots[3]));
        QCOMPARE(fields(bySource[StationSpot::GMA][0]), fields(spots[1]));
        QCOMPARE(fields(bySource[StationSpot::DX][0]), fields(spots[2]));
    }

    void unusable_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<qint64>("readAt");
        QTest::newRow("four hours old") << QByteArray() << k_now + 4 * k_hour;
        QTest::newRow("corrupt") << QByteArray(k_corrupt) << k_now;
        QTest::newRow("not an object") << QByteArray("[]") << k_now;
        QTest::newRow("no spot of the table") << QByteArray(k_noSpots) << k_now;
    }

    void unusable()
    {
        QFETCH(QByteArray, content);
        QFETCH(qint64, readAt);
        QTemporaryDir dir;
        const SpotSnapshot snapshot(dir.path());
        // One spot without a time: only the file's own age can retire it.
        QVERIFY(snapshot.write({fullSpot(StationSpot::POTA, QStringLiteral("K1ABC"), 0),
                                fullSpot(StationSpot::POTA, QStringLiteral("W1AW"), -1)},
                               k_now));
        QFile file(snapshot.filePath());
        QVERIFY(content.isEmpty() ||
                (file.open(QIODevice::WriteOnly) && file.write(content) == content.size()));
        file.close();
        QVERIFY(snapshot.read(readAt).isEmpty());
    }
};

TALLIS_TEST_MAIN(TestSpotSnapshot)
#include "tst_spotsnapshot.moc"
