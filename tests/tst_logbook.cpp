#include "app/contactlog.h"
#include "app/logbook/adifmode.h"
#include "app/logbook/adifreader.h"
#include "app/logbook/adifwriter.h"
#include "app/logbook/contactsexport.h"
#include "app/logbook/recordbuilder.h"
#include "app/logbook/workedimport.h"
#include "app/settingsfile.h"
#include "app/stationdesk.h"
#include "app/tallisdir.h"
#include "app/workedindex.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "support/testmain.h"

#include <QBuffer>
#include <QDir>
#include <QSignalSpy>

namespace {

using Fields = QList<std::pair<QString, QString>>;

const QDateTime k_at(QDate(2026, 11, 14), QTime(17, 52, 23), Qt::UTC);

// "SOTA K1ABC W4C/CM-001 14062.0 CW": source, call, reference ("-" for none), kHz, mode.
StationSpot spot(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(' '));
    StationSpot s;
    for (int source = 0; source < StationSpot::k_sourceCount; ++source) {
        if (StationSpot::sourceName(source) == parts.value(0))
            s.source = StationSpot::Source(source);
    }
    s.callsign = parts.value(1);
    s.reference = parts.value(2) == QLatin1String("-") ? QString() : parts.value(2);
    s.frequencyKhz = parts.value(3).toDouble();
    s.mode = parts.value(4);
    s.spotTime = k_at.addSecs(-300);
    return s;
}

QStringList references(const QList<ContactRecord> &records)
{
    QStringList list;
    for (const ContactRecord &record : records)
        list.append(record.spot.sourceString() + QLatin1Char(' ') + record.spot.reference + QLatin1Char(' ') +
                    record.rstSent + QLatin1Char('/') + record.rstRcvd);
    return list;
}

QList<Fields> readAll(const QByteArray &adif, qint64 *damaged = nullptr)
{
    QBuffer buffer;
    buffer.setData(adif);
    buffer.open(QIODevice::ReadOnly);
    AdifReader reader(&buffer);
    AdifRecord record;
    QList<Fields> records;
    while (reader.readNext(record))
        records.append(record.fields());
    if (damaged)
        *damaged = reader.damagedFieldCount();
    return records;
}

} // namespace

class TestLogbook : public QObject
{
    Q_OBJECT

private slots:
    void modeTable_data()
    {
        QTest::addColumn<QString>("spotMode");
        QTest::addColumn<double>("khz");
        QTest::addColumn<QString>("adif"); // MODE/SUBMODE
        QTest::addColumn<QString>("report");
        const auto row = [](const char *mode, double khz, const char *adif, const char *report) {
            QTest::newRow(mode[0] ? mode : "empty")
                << QString::fromLatin1(mode) << khz << QString::fromLatin1(adif)
                << QString::fromLatin1(report);
        };
        row("ssb", 7150.0, "SSB/LSB", "59");
        row("SSB", 14250.0, "SSB/USB", "59");
        row("SSB ", 5357.0, "SSB/USB", "59");
        row("usb", 7150.0, "SSB/USB", "59");
        row("cwr", 7032.0, "CW/", "599");
        row("RTTY", 14080.0, "RTTY/", "599");
        row("nfm", 145500.0, "FM/", "59");
        row("AM", 3885.0, "AM/", "59");
        row("FT8", 14074.0, "FT8/", "-10");
        row("ft4", 14080.0, "MFSK/FT4", "-10");
        row("JS8", 14078.0, "MFSK/JS8", "-10");
        row("psk31", 14070.0, "PSK/PSK31", "-10");
        row("DATA", 14070.0, "/", "-10");
        row("DIGI", 14070.0, "/", "-10");
        row("VARAC", 14105.0, "/", "-10");
        row("", 14062.0, "/", "");
    }

    void modeTable()
    {
        QFETCH(QString, spotMode);
        const AdifMode mode = AdifMode::forSpotMode(spotMode, fetched<double>("khz"));
        QCOMPARE(mode.mode + QLatin1Char('/') + mode.submode, fetched<QString>("adif"));
        QCOMPARE(AdifMode::defaultReport(spotMode), fetched<QString>("report"));
    }

    // Which references one contact logs: the rows of the table, the selected first.
    void recordBuilder_data()
    {
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QStringList>("expected");
        const auto row = [](const char *name, const QStringList &rows, const QStringList &expected) {
            QTest::newRow(name) << rows << expected;
        };
        const QString sota = QStringLiteral("SOTA K1ABC W4C/CM-001 14062.0 CW");
        row("two-fer",
            {sota, QStringLiteral("POTA k1abc US-1234 14062.9 CW"),
             QStringLiteral("POTA K1ABC US-5678 14063.1 CW"),
             QStringLiteral("POTA W1XYZ US-9999 14062.0 CW")},
            {QStringLiteral("SOTA W4C/CM-001 599/599"), QStringLiteral("POTA US-1234 599/599")});
        row("park given twice", {sota, QStringLiteral("WWFF K1ABC w4c/cm-001 14062.0 CW")},
            {QStringLiteral("SOTA W4C/CM-001 599/599")});
        row("no reference", {QStringLiteral("DX DL1XYZ - 7025.0 ssb")}, {QStringLiteral("DX  59/59")});
        row("cluster spot of a park",
            {QStringLiteral("DX K1ABC - 14062.0 FT8"), QStringLiteral("POTA K1ABC US-1234 14062.0 FT8")},
            {QStringLiteral("POTA US-1234 -10/-10")});
    }

    void recordBuilder()
    {
        QList<StationSpot> spots;
        for (const QString &text : fetched<QStringList>("rows"))
            spots.append(spot(text));
        const RecordBuilder builder(spots, QStringLiteral("N0ME"));
        const QList<ContactRecord> records = builder.build(spots.first(), k_at);
        QCOMPARE(references(records), fetched<QStringList>("expected"));
        for (const ContactRecord &record : records)
            QVERIFY(record.loggedAt == k_at && record.myCallsign == QLatin1String("N0ME"));
    }

    void recordEdits()
    {
        const QList<StationSpot> spots{spot(QStringLiteral("SOTA K1ABC W4C/CM-001 14062.0 CW")),
                                       spot(QStringLiteral("POTA K1ABC US-1234 14062.0 CW"))};
        RecordBuilder builder(spots, QString());
        RecordEdit sent{QStringLiteral("w4c/cm-001"), true, QStringLiteral("559"), QStringLiteral("449"),
                        QStringLiteral("nice sig")};
        builder.setEdits({sent, RecordEdit{QStringLiteral("US-1234"), false, {}, {}, {}}});
        const QList<ContactRecord> records = builder.build(spots.first(), k_at);
        QCOMPARE(references(records), QStringList{QStringLiteral("SOTA W4C/CM-001 559/449")});
        QCOMPARE(records.first().spot.comments, QStringLiteral("nice sig"));
    }

    // L on the summit: two lines, each in its own source's file, both known as worked.
    void deskLogsOneLinePerReference()
    {
        StationModel model;
        SpotFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        StationDesk desk(model, proxy);
        StationSpot summit = spot(QStringLiteral("SOTA K1ABC W4C/CM-001 14062.0 CW"));
        StationSpot park = spot(QStringLiteral("POTA K1ABC US-1234 14062.4 CW"));
        summit.spotTime = park.spotTime = QDateTime::currentDateTimeUtc();
        model.mergeSpots({summit});
        model.mergeSpots({park});
        QVERIFY(!desk.logSelection(summit.key(), QStringLiteral("N0ME")).isEmpty());

        const QDir dir(tallisDirPath());
        const QStringList sotaFiles = dir.entryList({QStringLiteral("contacts-sota-*.jsonl")});
        const QStringList potaFiles = dir.entryList({QStringLiteral("contacts-pota-*.jsonl")});
        QCOMPARE(sotaFiles.size() + potaFiles.size(), 2);
        const auto record = [&dir](const QString &name) {
            return ContactRecord::fromLogLine(readFile(dir.filePath(name))).value_or(ContactRecord{});
        };
        const ContactRecord sota = record(sotaFiles.value(0));
        const ContactRecord pota = record(potaFiles.value(0));
        QCOMPARE(sota.loggedAt, pota.loggedAt);
        QVERIFY(AdifWriter::record(sota, {}).contains(QStringLiteral("<SIG_INFO:10>W4C/CM-001 ")));
        QVERIFY(AdifWriter::record(pota, {}).contains(QStringLiteral("<SIG_INFO:7>US-1234 ")));
        QVERIFY(desk.worked().isReferenceWorked(QStringLiteral("US-1234")) &&
                desk.worked().isReferenceWorked(QStringLiteral("W4C/CM-001")));

        // The API's log names one spot and writes its one line.
        QVERIFY(desk.logKey(summit.key(), QString()));
        QCOMPARE(readFile(dir.filePath(potaFiles.value(0))).count('\n'), 1);
        QCOMPARE(readFile(dir.filePath(sotaFiles.value(0))).count('\n'), 2);
    }

    // What the writer writes the reader reads back, field for field.
    void adifRoundTrip()
    {
        ContactRecord park = ContactRecord::fromSpot(spot(QStringLiteral("POTA SM5ÅÄÖ SE-0042 7150.0 ssb")),
                                                     QStringLiteral("G4ABC/P"), k_at);
        park.spot.grid = QStringLiteral("JO89");
        park.spot.comments = QStringLiteral("73 \U0001F3D4");
        park.spot.referenceName = QStringLiteral("Tyresta Nationalpark");
        const ContactRecord cluster = ContactRecord::fromSpot(
            spot(QStringLiteral("DX DL1XYZ - 14105.0 VARAC")), QString(), k_at.addSecs(60));
        const AdifStation station{QStringLiteral("G4ABC"), true, 54.4542, -3.2116};
        const QString text = AdifWriter::document({park, cluster}, station, k_at, QStringLiteral("9.9"));
        QVERIFY(text.startsWith(
            QStringLiteral("ADIF export from Tallis\n<ADIF_VER:5>3.1.4 <PROGRAMID:6>Tallis "
                           "<PROGRAMVERSION:3>9.9 <CREATED_TIMESTAMP:15>20261114 175223 <EOH>")));

        const auto f = [](const char *name, const QString &value) {
            return std::pair(QString::fromLatin1(name), value);
        };
        const QList<Fields> expected{
            {f("CALL", QStringLiteral("SM5ÅÄÖ")), f("QSO_DATE", QStringLiteral("20261114")),
             f("TIME_ON", QStringLiteral("175223")), f("BAND", QStringLiteral("40m")),
             f("FREQ", QStringLiteral("7.150000")), f("MODE", QStringLiteral("SSB")),
             f("SUBMODE", QStringLiteral("LSB")), f("RST_SENT", QStringLiteral("59")),
             f("RST_RCVD", QStringLiteral("59")), f("STATION_CALLSIGN", QStringLiteral("G4ABC/P")),
             f("OPERATOR", QStringLiteral("G4ABC/P")), f("MY_GRIDSQUARE", QStringLiteral("IO84jk")),
             f("GRIDSQUARE", QStringLiteral("JO89")),
             f("COMMENT", QStringLiteral("73 \U0001F3D4; Tyresta Nationalpark")),
             f("SIG", QStringLiteral("POTA")), f("SIG_INFO", QStringLiteral("SE-0042")),
             f("POTA_REF", QStringLiteral("SE-0042"))},
            {f("CALL", QStringLiteral("DL1XYZ")), f("QSO_DATE", QStringLiteral("20261114")),
             f("TIME_ON", QStringLiteral("175323")), f("BAND", QStringLiteral("20m")),
             f("FREQ", QStringLiteral("14.105000")), f("RST_SENT", QStringLiteral("-10")),
             f("RST_RCVD", QStringLiteral("-10")), f("STATION_CALLSIGN", QStringLiteral("G4ABC")),
             f("OPERATOR", QStringLiteral("G4ABC")), f("MY_GRIDSQUARE", QStringLiteral("IO84jk")),
             f("COMMENT", QStringLiteral("VARAC"))}};
        qint64 damaged = -1;
        QCOMPARE(readAll(text.toUtf8(), &damaged), expected);
        QCOMPARE(damaged, 0);
    }

    // Another program's logbook: its style, its extras, its mistakes.
    void foreignLogbook_data()
    {
        QTest::addColumn<QByteArray>("adif");
        QTest::addColumn<QString>("spot");
        QTest::addColumn<QString>("detail");
        QTest::addColumn<int>("taken");
        QTest::addColumn<int>("skipped");
        const auto row = [](const char *name, const QByteArray &adif, const char *spotText,
                            const char *detail, int taken = 1, int skipped = 0) {
            QTest::newRow(name) << adif << QString::fromUtf8(spotText) << QString::fromUtf8(detail) << taken
                                << skipped;
        };
        const QByteArray head = "Log of G4ABC <by> other program\r\n<adif_ver:5>3.1.0\r\n<eoh>\r\n";
        row("lower case, CRLF, extras",
            head + "<call:5>dl1ab<qso_date:8:d>20240301<time_on:4>1205<band:3>20M<mode:2>cw"
                   "<app_x_serial:3>123\r\n<eor>\r\n",
            "DX DL1AB - 14030", "Worked before: 2024-03-01 on 20m CW");
        row("name counted in bytes",
            "<NAME:5>J\xc3\xb6rg <CALL:4>G4XX <QSO_DATE:8>20240302 <FREQ:5>7.032 <EOR>", "DX G4XX - 7030",
            "Worked before: 2024-03-02 on 40m");
        row("name counted in characters",
            "<NAME:4>J\xc3\xb6rg <CALL:4>G4XX <QSO_DATE:8>20240302 <FREQ:5>7,032 <EOR>", "DX G4XX - 7030",
            "Worked before: 2024-03-02 on 40m");
        row("park list with locations",
            "<CALL:5>K1ABC<QSO_DATE:8>20240303<BAND:3>17m<MODE:4>MFSK<SUBMODE:3>FT4"
            "<POTA_REF:21>US-1234,US-5678@US-ME<EOR>",
            "POTA K1ABC US-5678 18100", "Worked before: 2024-03-03 on 17m FT4");
        row("summit in SIG_INFO",
            "<CALL:4>W7XY<QSO_DATE:8>20240304<BAND:3>40m<SIG:4>SOTA<SIG_INFO:10>W7W/KG-001<EOR>",
            "SOTA W7ZZ W7W/KG-001 14062", "New band");
        row("own park is not worked", "<CALL:4>W7XY<QSO_DATE:8>20240304<MY_POTA_REF:7>US-0001<EOR>",
            "POTA N0PE US-0001 7030", "Not worked before");
        row("no call, bad date", "<QSO_DATE:8>20240304<EOR><CALL:4>W7XY<QSO_DATE:8>20241340<EOR>",
            "DX W7XY - 7030", "Not worked before", 0, 2);
        row("length past the end, then a good record",
            "<CALL:99999>W7XY <QSO_DATE:8>20240305 <EOR>\n<CALL:4>N0PE<QSO_DATE:8>20240305<BAND:2>6M<EOR>",
            "DX N0PE - 50313", "Worked before: 2024-03-05 on 6m", 1, 1);
        row("binary junk between records",
            QByteArray("\x00\xff<\x01<<>:<", 10) + "<CALL:4>N0PE<QSO_DATE:8>20240305<BAND:2>6M<EOR>",
            "DX N0PE - 50313", "Worked before: 2024-03-05 on 6m");
    }

    void foreignLogbook()
    {
        QBuffer buffer;
        buffer.setData(fetched<QByteArray>("adif"));
        buffer.open(QIODevice::ReadOnly);
        auto table = std::make_shared<WorkedTable>();
        const WorkedImportSummary summary = WorkedImport::readAdif(buffer, *table);
        QCOMPARE(summary.taken, fetched<int>("taken"));
        QCOMPARE(summary.skipped, fetched<int>("skipped"));
        WorkedIndex index(QDir::tempPath() + QStringLiteral("/no-logs-here"));
        index.setImported(table);
        QCOMPARE(index.detailText(spot(fetched<QString>("spot"))), fetched<QString>("detail"));
    }

    // The loader reads on its thread; the index answers from the logs and the logbook alike.
    void loaderHandsOverTheLogbook()
    {
        QTemporaryDir dir;
        const QString logbook = dir.filePath(QStringLiteral("log.adi"));
        QVERIFY(writeFile(logbook,
                          "<CALL:4>W7XY<QSO_DATE:8>20200101<BAND:3>20m<MODE:2>CW<POTA_REF:7>US-0001<EOR>"));
        WorkedIndex index(dir.path());
        index.addContact(spot(QStringLiteral("POTA W7XY US-0001 14062 SSB")), k_at);
        WorkedImportLoader loader;
        QSignalSpy loaded(&loader, &WorkedImportLoader::loaded);
        connect(&loader, &WorkedImportLoader::loaded, this,
                [&index](std::shared_ptr<const WorkedTable> table) { index.setImported(std::move(table)); });
        loader.load({logbook, dir.filePath(QStringLiteral("missing.adi"))});
        QVERIFY(loaded.wait());
        const auto summary = loaded.first().at(1).value<WorkedImportSummary>();
        QCOMPARE(summary.taken, 1);
        QCOMPARE(summary.unreadableFiles.size(), 1);
        QCOMPARE(index.importedCount(), 1);
        // The newer of the two contacts on the band is the one shown.
        QCOMPARE(index.detailText(spot(QStringLiteral("POTA K1ABC US-0001 14200"))),
                 QStringLiteral("Worked before: 2026-11-14 on 20m SSB"));
        index.reload(); // the logs are read again; the logbook stays
        QVERIFY(index.isReferenceWorked(QStringLiteral("us-0001")));
    }

    // All the logs, old lines included, from a chosen day, oldest first.
    void exportAllContacts()
    {
        QTemporaryDir dir;
        QDateTime now = k_at;
        const ContactLog log(dir.path(), [&now] { return now; });
        QVERIFY(log.append(spot(QStringLiteral("POTA K1ABC US-1234 14062 CW")), QString()));
        now = k_at.addDays(-2);
        QVERIFY(log.append(spot(QStringLiteral("SOTA W7XY W7W/KG-001 7032 CW")), QString()));
        now = k_at.addSecs(-60);
        // A line written before bands and reports were logged.
        QFile old(log.filePath(spot(QStringLiteral("SOTA G4XX - 1 x"))));
        QVERIFY(old.open(QIODevice::Append));
        old.write(R"({"callsign":"G4XX","frequency_khz":10120,"mode":"cw","reference":"G/LD-001",)"
                  R"("source":"SOTA","timestamp":"2026-11-14T17:51:23Z"})"
                  "\n");
        old.close();

        const QString path = dir.filePath(QStringLiteral("all.adi"));
        QCOMPARE(ContactsExport::exportTo(path, dir.path(), k_at.date().addDays(-1), {}, k_at,
                                          QStringLiteral("1")),
                 2);
        const QList<Fields> records = readAll(readFile(path));
        QCOMPARE(records.size(), 2);
        QCOMPARE(records.at(0).value(0).second, QStringLiteral("G4XX"));
        QVERIFY(records.at(0).contains(std::pair(QStringLiteral("SOTA_REF"), QStringLiteral("G/LD-001"))));
        QVERIFY(records.at(1).contains(std::pair(QStringLiteral("BAND"), QStringLiteral("20m"))));
    }

    // The data directory and what is written in it are the user's alone.
    void privateFiles()
    {
        QDir(tallisDirPath()).removeRecursively();
        QVERIFY(SettingsFile(settingsFilePath()).save(AppSettings()));
        QVERIFY(ContactLog().append(spot(QStringLiteral("POTA K1ABC US-1234 14062 CW")), QString()));
        const auto permissions = [](const QString &path) { return int(QFile::permissions(path)) & 0x7777; };
        QCOMPARE(permissions(tallisDirPath()), 0x7700);
        const QStringList files = QDir(tallisDirPath()).entryList(QDir::Files);
        QCOMPARE(files.size(), 2);
        for (const QString &name : files)
            QCOMPARE(permissions(QDir(tallisDirPath()).filePath(name)), 0x6600);
    }
};

TALLIS_TEST_MAIN(TestLogbook)
#include "tst_logbook.moc"
