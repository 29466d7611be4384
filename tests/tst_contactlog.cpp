#include "app/contactlog.h"
#include "app/contactstatusstore.h"
#include "app/logexport.h"
#include "support/modeltest.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

QDateTime utc(const char *iso)
{
    return QDateTime::fromString(QLatin1String(iso), Qt::ISODate).toUTC();
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestContactLog final : public ModelTest
{
    Q_OBJECT

private slots:
    void lineBytes();
    void midnightSplitsFilesAndAppends();
    void exports();
    void writeTextFile();

private:
    // "SOTA G4ABC G/LD-001 7032" and its mode, which may be empty.
    StationSpot contacted(const QString &text, const QString &mode) const
    {
        StationSpot s = spot(text);
        s.mode = mode;
        s.status = StationSpot::Contacted;
        return s;
    }

    QTemporaryDir m_dir;
};

void TestContactLog::lineBytes()
{
    StationSpot s = contacted(QStringLiteral("POTA K1ABC US-1234 14062.7"), QStringLiteral("CW"));
    s.referenceName = QStringLiteral("Öland \"Park\"");
    s.spotTime = utc("2026-11-14T17:40:00Z");
    s.spotter = QStringLiteral("W2XYZ");
    s.grid = QStringLiteral("FN42aa");
    s.locationDesc = QStringLiteral("US-MA");
    const QByteArray expected =
        "{\"callsign\":\"K1ABC\",\"comments\":\"\",\"frequency_khz\":14062.7,\"grid\":\"FN42aa\","
        "\"location\":\"US-MA\",\"mode\":\"CW\",\"my_callsign\":\"N0ME\",\"reference\":\"US-1234\","
        "\"reference_name\":\"\xc3\x96land "
        "\\\"Park\\\"\",\"source\":\"POTA\",\"spot_time\":\"2026-11-14T17:40:00Z\","
        "\"spotter\":\"W2XYZ\",\"timestamp\":\"2026-11-14T17:52:23Z\"}\n";
    QCOMPARE(ContactLog::recordLine(s, QStringLiteral("N0ME"), utc("2026-11-14T17:52:23Z")), expected);
    s.spotTime = QDateTime();
    QVERIFY(ContactLog::recordLine(s, QString(), utc("2026-11-14T17:52:23Z")).contains("\"spot_time\":\"\""));
}

void TestContactLog::midnightSplitsFilesAndAppends()
{
    QDateTime now = utc("2026-11-14T23:59:59Z");
    const ContactLog log(m_dir.filePath(QStringLiteral("logs")), [&now] { return now; });
    StationSpot s = contacted(QStringLiteral("SOTA G4ABC G/LD-001 7032.0"), QStringLiteral("CW"));
    const QString before = log.directory() + QStringLiteral("/contacts-sota-2026-11-14.jsonl");
    const QString after = log.directory() + QStringLiteral("/contacts-sota-2026-11-15.jsonl");
    QCOMPARE(log.filePath(s), before);
    QCOMPARE(
        log.loggedMessage(s),
        QStringLiteral("Contact with G4ABC recorded — logged to ~/.tallis/contacts-sota-2026-11-14.jsonl"));
    QVERIFY(log.append(s, QString()));
    QVERIFY(log.append(s, QString()));
    now = utc("2026-11-15T00:00:01Z");
    QVERIFY(log.append(s, QString()));

    const QByteArray first = ContactLog::recordLine(s, QString(), utc("2026-11-14T23:59:59Z"));
    QCOMPARE(readAll(before), first + first);
    QCOMPARE(readAll(after), ContactLog::recordLine(s, QString(), now));
    // An out-of-range source still gets its own file.
    s.source = StationSpot::Source(9);
    QCOMPARE(QFileInfo(log.filePath(s)).fileName(), QStringLiteral("contacts-?-2026-11-15.jsonl"));
    // A directory where the file should be loses the line, quietly.
    QVERIFY(QDir().mkpath(log.filePath(s)));
    QVERIFY(!log.append(s, QString()));
}

void TestContactLog::exports()
{
    const QDateTime now = utc("2026-11-14T18:00:00Z");
    ContactStatusStore store([now] { return now; });
    QList<StationSpot> spots{contacted(QStringLiteral("SOTA W7XYZ W7W/KG-001 10125"), QStringLiteral("cwr")),
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
    QCOMPARE(
        LogExport::potaAdif(pota, QString()),
        QStringLiteral("ADIF Export from Tallis\n<EOH>\n\n"
                       "<CALL:5>K1ABC <FREQ:9>14.062700 <MODE:2>CW <QSO_DATE:8>20261114 "
                       "<TIME_ON:6>180000 <STATION_CALLSIGN:7>UNKNOWN <COMMENT:12>POTA US-1234 <EOR>\n\n"
                       "<CALL:6>SM5ÅÄÖ <FREQ:8>7.200000 <MODE:3>USB <QSO_DATE:8>20261114 "
                       "<TIME_ON:6>180000 <STATION_CALLSIGN:7>UNKNOWN <COMMENT:12>POTA SE-0042 <EOR>\n\n"));
    // An astral character counts once.
    QCOMPARE(LogExport::adifField(QStringLiteral("COMMENT"), QStringLiteral("73 \U0001F3D4")),
             QStringLiteral("<COMMENT:4>73 \U0001F3D4 "));
}

void TestContactLog::writeTextFile()
{
    const QString path = m_dir.filePath(QStringLiteral("sota-log.csv"));
    QVERIFY(LogExport::writeTextFile(path, QStringLiteral("a longer first text\n")));
    QVERIFY(LogExport::writeTextFile(path, QStringLiteral("V2,Ö\n")));
    QCOMPARE(readAll(path), QByteArray("V2,\xc3\x96\n"));
    QVERIFY(!LogExport::writeTextFile(m_dir.path(), QStringLiteral("x")));
}

TALLIS_TEST_MAIN(TestContactLog)
#include "tst_contactlog.moc"
