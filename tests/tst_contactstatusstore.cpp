#include "app/contactlog.h"
#include "app/contactstatusstore.h"
#include "app/logexport.h"
#include "app/spotsnapshot.h"
#include "support/modeltest.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>

#include <memory>

using Spread = ContactStatusStore::Spread;

namespace {

QDateTime utc(const char *iso)
{
    return QDateTime::fromString(QLatin1String(iso), Qt::ISODate).toUTC();
}

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
    "\"spots\":[{\"source\":99,\"callsign\":\"K1ABC\"},{\"source\":1,\"callsign\":\"\"},7]}";

} // namespace

// The program's state files: the contact marks, the contact log and its exports, the spot snapshot.
class TestContactStatusStore final : public ModelTest
{
    Q_OBJECT

    ContactStatusStore makeStore() const
    {
        ContactStatusStore store([this] { return QDateTime::fromMSecsSinceEpoch(m_now, Qt::UTC); });
        store.load(m_dir->filePath(QStringLiteral("contact-status.json")));
        return store;
    }
    StationSpot k1abc() const { return spot(QStringLiteral("POTA K1ABC US-1234 14062.7")); }
    QStringList keysMarked(StationSpot::Status status) const
    {
        QStringList keys;
        for (const StationSpot &s : m_model->spots()) {
            if (s.status == status)
                keys.append(s.key());
        }
        keys.sort();
        return keys;
    }

    // "SOTA G4ABC G/LD-001 7032" and its mode, which may be empty.
    StationSpot contacted(const QString &text, const QString &mode) const
    {
        StationSpot s = spot(text);
        s.mode = mode;
        s.status = StationSpot::Contacted;
        return s;
    }

    std::unique_ptr<QTemporaryDir> m_dir;

private slots:
    void init() override
    {
        ModelTest::init();
        m_dir = std::make_unique<QTemporaryDir>();
    }

    void retentionWindow_data()
    {
        QTest::addColumn<qint64>("age");
        QTest::addColumn<bool>("live");
        QTest::newRow("exactly 3 h") << qint64(3 * 3600) << true;
        QTest::newRow("3 h 1 min") << qint64(3 * 3600 + 60) << false;
    }

    void retentionWindow()
    {
        QFETCH(qint64, age);
        QFETCH(bool, live);
        const QString key = k1abc().key();
        m_model->mergeSpots({k1abc()});
        // Held in memory: applied and written only when live.
        ContactStatusStore held = makeStore();
        held.record(key, StationSpot::Heard, ago(age));
        QCOMPARE(held.applyTo(*m_model), live ? 1 : 0);
        QCOMPARE(keysMarked(StationSpot::Heard).size(), live ? 1 : 0);
        QVERIFY(held.save());
        QCOMPARE(makeStore().marks().contains(key), live);

        // In a file written that long ago: loaded only when live.
        ContactStatusStore earlier([this, age] { return ago(age); });
        earlier.load(held.filePath());
        earlier.record(key, StationSpot::Heard);
        QVERIFY(earlier.save());
        QCOMPARE(makeStore().marks().contains(key), live);
    }

    void spreading_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<Spread>("spread");
        QTest::addColumn<QStringList>("recorded"); // sorted
        QTest::addColumn<QStringList>("marked");   // sorted
        const QString selected = QStringLiteral("K1ABC|US-1234|14062");
        const QString nearCaseless = QStringLiteral("k1abc|US-5678|14063");
        const QString oneKhzUp = QStringLiteral("K1ABC|US-4444|14063"); // 14063.7: exactly 1.0 kHz
        const QString groupSameCall = QStringLiteral("K1ABC|W1/HA-001|14064");
        const QString groupOtherCall = QStringLiteral("N2DEF|US-1234|14062");
        QTest::newRow("heard spreads to the group")
            << int(StationSpot::Heard) << Spread::SimilarAndGroup
            << QStringList{selected, oneKhzUp, groupSameCall, nearCaseless}
            << QStringList{selected, oneKhzUp, groupSameCall, groupOtherCall, nearCaseless};
        QTest::newRow("contacted stays with similar")
            << int(StationSpot::Contacted) << Spread::SimilarOnly
            << QStringList{selected, oneKhzUp, nearCaseless} << QStringList{selected, oneKhzUp, nearCaseless};
    }

    void spreading()
    {
        QFETCH(int, status);
        QFETCH(QStringList, recorded);
        QFETCH(QStringList, marked);
        // The selected spot links with the same call on SOTA 1.8 kHz up and with
        // another call at the same park; the 7032 kHz row stands alone.
        mergeSteps(
            QStringLiteral("POTA K1ABC US-1234 14062.7, POTA k1abc US-5678 14063.5, POTA K1ABC US-9999 7032,"
                           "POTA K1ABC US-4444 14063.7,"
                           "POTA N2DEF US-1234 14062; SOTA K1ABC W1/HA-001 14064.5"));
        ContactStatusStore store = makeStore();

        QStringList got = store.markSelection(*m_model, k1abc().key(), StationSpot::Status(status),
                                              fetched<Spread>("spread"));
        got.sort();
        QCOMPARE(got, recorded);
        QCOMPARE(keysMarked(StationSpot::Status(status)), marked);
        // One time for every entry, and the file has them all.
        for (const QString &key : std::as_const(recorded))
            QCOMPARE(store.markTime(key), ago(0));
        QCOMPARE(makeStore().marks().size(), recorded.size());

        // No selection, or one that names no row: nothing marked, nothing written.
        QVERIFY(QFile::remove(store.filePath()));
        QVERIFY(
            store.markSelection(*m_model, QStringLiteral("X|Y|1"), StationSpot::Heard, Spread::SimilarOnly)
                .isEmpty());
        QVERIFY(!QFile::exists(store.filePath()));
    }

    void marksFile()
    {
        ContactStatusStore store = makeStore();
        store.record(QStringLiteral("W7XYZ|W7W/KG-001|7032"), StationSpot::Contacted);
        // The API's mark of a key no row has is written all the same.
        store.markKey(*m_model, QStringLiteral("K1ABC|US-1234|14062"), StationSpot::Heard);
        const QString stamp = ago(0).toString(Qt::ISODate);
        const QString entry = QStringLiteral("    {\n        \"key\": \"%1\",\n        \"status\": %2,\n"
                                             "        \"timestamp\": \"%3\"\n    }");
        const QString expected =
            QStringLiteral("[\n%1,\n%2\n]\n")
                .arg(entry.arg(QStringLiteral("K1ABC|US-1234|14062")).arg(1).arg(stamp),
                     entry.arg(QStringLiteral("W7XYZ|W7W/KG-001|7032")).arg(2).arg(stamp));
        QCOMPARE(QString::fromUtf8(readFile(store.filePath())), expected);

        // A directory holding a file where the file should be: no write can replace it.
        QVERIFY(QFile::remove(store.filePath()) && QDir().mkpath(store.filePath()));
        QVERIFY(writeFile(store.filePath() + QStringLiteral("/old"), "old"));

        m_model->mergeSpots({k1abc()});
        store.markKey(*m_model, k1abc().key(), StationSpot::NotHeard);
        QVERIFY(!store.save());
        QCOMPARE(store.marks().value(k1abc().key()).status, StationSpot::NotHeard);
        QCOMPARE(readFile(store.filePath() + QStringLiteral("/old")), QByteArray("old"));
        // No half-written copy is left beside it.
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), QStringList());
    }

    void contactLog()
    {
        StationSpot s = contacted(QStringLiteral("POTA K1ABC US-1234 14062.7"), QStringLiteral("CW"));
        s.referenceName = QStringLiteral("Öland \"Park\"");
        s.spotTime = utc("2026-11-14T17:40:00Z");
        s.spotter = QStringLiteral("W2XYZ");
        s.grid = QStringLiteral("FN42aa");
        s.locationDesc = QStringLiteral("US-MA");
        const QByteArray expected =
            "{\"band\":\"20m\",\"callsign\":\"K1ABC\",\"comments\":\"\",\"frequency_khz\":14062.7,"
            "\"grid\":\"FN42aa\","
            "\"location\":\"US-MA\",\"mode\":\"CW\",\"my_callsign\":\"N0ME\",\"reference\":\"US-1234\","
            "\"reference_name\":\"\xc3\x96land "
            "\\\"Park\\\"\",\"rst_rcvd\":\"599\",\"rst_sent\":\"599\",\"source\":\"POTA\",\"spot_time\":"
            "\"2026-11-14T17:40:00Z\","
            "\"spotter\":\"W2XYZ\",\"timestamp\":\"2026-11-14T17:52:23Z\"}\n";
        QCOMPARE(ContactLog::recordLine(s, QStringLiteral("N0ME"), utc("2026-11-14T17:52:23Z")), expected);
        s.spotTime = QDateTime();
        QVERIFY(
            ContactLog::recordLine(s, QString(), utc("2026-11-14T17:52:23Z")).contains("\"spot_time\":\"\""));

        QDateTime now = utc("2026-11-14T23:59:59Z");
        const ContactLog log(m_dir->filePath(QStringLiteral("logs")), [&now] { return now; });
        s = contacted(QStringLiteral("SOTA G4ABC G/LD-001 7032.0"), QStringLiteral("CW"));
        const QString before = log.directory() + QStringLiteral("/contacts-sota-2026-11-14.jsonl");
        const QString after = log.directory() + QStringLiteral("/contacts-sota-2026-11-15.jsonl");
        QCOMPARE(log.filePath(s), before);
        QCOMPARE(log.loggedMessage(s),
                 QStringLiteral(
                     "Contact with G4ABC recorded — logged to ~/.tallis/contacts-sota-2026-11-14.jsonl"));
        QVERIFY(log.append(s, QString()) && log.append(s, QString()));
        now = utc("2026-11-15T00:00:01Z");
        QVERIFY(log.append(s, QString()));

        const QByteArray first = ContactLog::recordLine(s, QString(), utc("2026-11-14T23:59:59Z"));
        QCOMPARE(readFile(before), first + first);
        QCOMPARE(readFile(after), ContactLog::recordLine(s, QString(), now));
        // An out-of-range source still gets its own file.
        s.source = StationSpot::Source(StationSpot::k_sourceCount);
        QCOMPARE(QFileInfo(log.filePath(s)).fileName(), QStringLiteral("contacts-?-2026-11-15.jsonl"));
        // A directory where the file should be loses the line, quietly.
        QVERIFY(QDir().mkpath(log.filePath(s)));
        QVERIFY(!log.append(s, QString()));
    }

    void exports()
    {
        const QDateTime now = utc("2026-11-14T18:00:00Z");
        ContactStatusStore store([now] { return now; });
        QList<StationSpot> spots{
            contacted(QStringLiteral("SOTA W7XYZ W7W/KG-001 10125"), QStringLiteral("cwr")),
            contacted(QStringLiteral("POTA K1ABC US-1234 14062.7"), QStringLiteral("cw")),
            contacted(QStringLiteral("SOTA G4ABC G/LD-001 10200"), QStringLiteral("ft8")),
            contacted(QStringLiteral("SOTA F5AAA F/AB-123 14350"), QString()),
            contacted(QStringLiteral("POTA SM5ÅÄÖ SE-0042 7200"), QStringLiteral("ssb")),
            contacted(QStringLiteral("SOTA N0PE W0C/FR-001 14062"), QStringLiteral("CW"))};
        spots.last().status = StationSpot::Heard;
        // Rows without a mark in the store take the export's time.
        store.record(spots.at(0).key(), StationSpot::Contacted, utc("2026-11-14T07:05:09Z"));
        store.record(spots.at(3).key(), StationSpot::Contacted, utc("2026-11-14T17:59:00Z"));

        const QList<ContactRow> sota = LogExport::collectRows(spots, StationSpot::SOTA, store, now);
        QCOMPARE(LogExport::sotaCsv(sota, QString(), QString()),
                 QStringLiteral("V2,UNKNOWN,XX/XX-000,14/11/2026,07:05,W7XYZ,30m,CW\n"
                                "V2,UNKNOWN,XX/XX-000,14/11/2026,18:00,G4ABC,?,DATA\n"
                                "V2,UNKNOWN,XX/XX-000,14/11/2026,17:59,F5AAA,20m,DATA\n"));
        QCOMPARE(LogExport::exportText(LogExport::sotaFormat(), sota.mid(0, 1), QStringLiteral("M0ME"),
                                       QStringLiteral("G/SP-004")),
                 QStringLiteral("V2,M0ME,G/SP-004,14/11/2026,07:05,W7XYZ,30m,CW\n"));

        const QList<ContactRow> pota = LogExport::collectRows(spots, StationSpot::POTA, store, now);
        QCOMPARE(LogExport::potaAdif(pota, QString()),
                 QStringLiteral(
                     "ADIF Export from Tallis\n<EOH>\n\n"
                     "<CALL:5>K1ABC <FREQ:9>14.062700 <MODE:2>CW <QSO_DATE:8>20261114 "
                     "<TIME_ON:6>180000 <STATION_CALLSIGN:7>UNKNOWN <COMMENT:12>POTA US-1234 <EOR>\n\n"
                     "<CALL:6>SM5ÅÄÖ <FREQ:8>7.200000 <MODE:3>USB <QSO_DATE:8>20261114 "
                     "<TIME_ON:6>180000 <STATION_CALLSIGN:7>UNKNOWN <COMMENT:12>POTA SE-0042 <EOR>\n\n"));
        // An astral character counts once.
        QCOMPARE(LogExport::adifField(QStringLiteral("COMMENT"), QStringLiteral("73 \U0001F3D4")),
                 QStringLiteral("<COMMENT:4>73 \U0001F3D4 "));

        // Written whole over a longer text, as UTF-8; a directory in the way fails.
        const QString path = m_dir->filePath(QStringLiteral("sota-log.csv"));
        QVERIFY(LogExport::writeTextFile(path, QStringLiteral("a longer first text\n")) &&
                LogExport::writeTextFile(path, QStringLiteral("V2,Ö\n")));
        QCOMPARE(readFile(path), QByteArray("V2,\xc3\x96\n"));
        QVERIFY(!LogExport::writeTextFile(m_dir->path(), QStringLiteral("x")));
    }

    void snapshotRoundTrip()
    {
        const QList<StationSpot> spots{fullSpot(StationSpot::SOTA, QStringLiteral("W1AW"), 1234),
                                       fullSpot(StationSpot::GMA, QStringLiteral("W1AW"), 5000),
                                       fullSpot(StationSpot::DX, QStringLiteral("DL1ABC"), -1),
                                       fullSpot(StationSpot::SOTA, QStringLiteral("K1ABC"), 2 * k_hour),
                                       fullSpot(StationSpot::SOTA, QStringLiteral("OLD"), 3 * k_hour + 1)};
        const SpotSnapshot snapshot; // the data directory under the test's HOME
        QVERIFY(snapshot.write(spots, k_now));

        const auto bySource = snapshot.read(k_now);
        QCOMPARE(bySource.keys(), (QList{StationSpot::SOTA, StationSpot::DX, StationSpot::GMA}));
        QCOMPARE(bySource[StationSpot::SOTA].size(), 2); // the spot past three hours is gone
        QCOMPARE(fields(bySource[StationSpot::SOTA][0]), fields(spots[0]));
        QCOMPARE(fields(bySource[StationSpot::SOTA][1]), fields(spots[3]));
        QCOMPARE(fields(bySource[StationSpot::GMA][0]), fields(spots[1]));
        QCOMPARE(fields(bySource[StationSpot::DX][0]), fields(spots[2]));
    }

    void snapshotUnusable_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<qint64>("readAt");
        QTest::newRow("four hours old") << QByteArray() << k_now + 4 * k_hour;
        QTest::newRow("corrupt") << QByteArray(k_corrupt) << k_now;
        QTest::newRow("not an object") << QByteArray("[]") << k_now;
        QTest::newRow("no spot of the table") << QByteArray(k_noSpots) << k_now;
    }

    void snapshotUnusable()
    {
        QFETCH(QByteArray, content);
        QTemporaryDir dir;
        const SpotSnapshot snapshot(dir.path());
        // One spot without a time: only the file's own age can retire it.
        QVERIFY(snapshot.write({fullSpot(StationSpot::POTA, QStringLiteral("K1ABC"), 0),
                                fullSpot(StationSpot::POTA, QStringLiteral("W1AW"), -1)},
                               k_now));
        QVERIFY(content.isEmpty() || writeFile(snapshot.filePath(), content));
        QVERIFY(snapshot.read(fetched<qint64>("readAt")).isEmpty());
    }
};

TALLIS_TEST_MAIN(TestContactStatusStore)
#include "tst_contactstatusstore.moc"
