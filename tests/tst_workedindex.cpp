#include "app/workedindex.h"
#include "support/testmain.h"

#include <QFile>

namespace {

QByteArray logLine(const char *call, const char *ref, double khz, const char *mode, const char *stamp)
{
    return QStringLiteral(R"({"callsign":"%1","comments":"","frequency_khz":%2,"grid":"","location":"",)"
                          R"("mode":"%3","my_callsign":"G4ABC","reference":"%4","reference_name":"",)"
                          R"("source":"POTA","spot_time":"","spotter":"","timestamp":"%5"})")
        .arg(QLatin1String(call))
        .arg(khz)
        .arg(QLatin1String(mode), QLatin1String(ref), QLatin1String(stamp))
        .toUtf8();
}

// Escapes and accents, which the log writer may produce and the fast reader leaves to the full parser.
// (A plain literal: moc misreads raw strings that hold escapes.)
const char k_escapedLine[] =
    "{\"callsign\":\"VE2\\u0058YZ\",\"comments\":\"\\\"73\\\"\",\"frequency_khz\":1.4062e4,"
    "\"mode\":\"CW\",\"reference\":\"VE-0001\",\"reference_name\":\"Mont-Mégantic\","
    "\"timestamp\":\"2026-11-16T10:00:00Z\"}";

void writeFile(const QString &path, const QList<QByteArray> &lines)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    for (const QByteArray &line : lines)
        file.write(line + '\n');
}

} // namespace

class TestWorkedIndex : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    // Logs of three days, several bands and sources, with lines that must not count.
    void initTestCase()
    {
        writeFile(m_dir.filePath(QStringLiteral("contacts-pota-2026-11-14.jsonl")),
                  {logLine("K1ABC", "US-1234", 14062.7, "SSB", "2026-11-15T10:00:00Z"),
                   logLine("K1ABC", "US-1234", 14061.0, "CW", "2026-11-14T09:00:00Z"), "{not json", "",
                   logLine("", "US-4444", 14062.0, "CW", "2026-11-14T09:00:00Z"),
                   logLine("W1AW", "US-5555", 7030.0, "", "2026-11-14T09:05:00Z")});
        writeFile(m_dir.filePath(QStringLiteral("contacts-dx-2026-11-16.jsonl")),
                  {logLine("DL1ABC", "", 7010.0, "SSB", "2026-11-15T08:00:00Z"),
                   logLine("DL1ABC", "", 7025.0, "CW", "2026-11-16T21:30:00Z"),
                   logLine("DL2XYZ", "", 7025.0, "CW", "yesterday"),
                   R"({"callsign":"F5AB","frequency_khz":"7025","timestamp":"2026-11-16T21:30:00Z"})",
                   R"({"callsign":"F5AB","frequency_khz":07025,"timestamp":"2026-11-16T21:30:00Z"})",
                   logLine("F5AB", "", 7025.0, "CW", "2026-11-16T21:30:00Z") + " and more", k_escapedLine});
        writeFile(m_dir.filePath(QStringLiteral("notes.jsonl")),
                  {logLine("EA1AA", "EA-0001", 14062.0, "CW", "2026-11-16T21:30:00Z")});
    }

    void fromLogs_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("ref");
        QTest::addColumn<double>("khz");
        QTest::addColumn<QString>("detail");
        auto row = [](const char *name, const char *call, const char *ref, double khz, const char *detail) {
            QTest::newRow(name) << QString::fromLatin1(call) << QString::fromLatin1(ref) << khz
                                << QString::fromUtf8(detail);
        };
        row("latest on the band", "N0NE", "US-1234", 14250.0, "Worked before: 2026-11-15 on 20m SSB");
        row("reference in any case", "N0NE", "us-1234", 14250.0, "Worked before: 2026-11-15 on 20m SSB");
        row("other band", "K1ABC", "US-1234", 7032.0, "New band");
        row("call worked elsewhere", "K1ABC", "US-9999", 14062.0, "Not worked before");
        row("no mode logged", "W1AW", "US-5555", 7001.0, "Worked before: 2026-11-14 on 40m");
        row("cluster call", "DL1ABC", "", 7010.0, "Worked before: 2026-11-16 on 40m CW");
        row("cluster call, other band", "DL1ABC", "", 14025.0, "New band");
        row("escapes and accents", "VE2XYZ", "VE-0001", 14100.0, "Worked before: 2026-11-16 on 20m CW");
        row("bad time stamp", "DL2XYZ", "", 7025.0, "Not worked before");
        row("not a contact log", "EA1AA", "EA-0001", 14062.0, "Not worked before");
    }

    void fromLogs()
    {
        QFETCH(QString, call);
        QFETCH(QString, ref);
        QFETCH(double, khz);
        QFETCH(QString, detail);
        WorkedIndex index(m_dir.path());
        index.reload();
        StationSpot spot;
        spot.callsign = call;
        spot.reference = ref;
        spot.frequencyKhz = khz;
        QCOMPARE(index.detailText(spot), detail);
        // "Hide worked" hides exactly what was worked on the spot's band.
        QCOMPARE(index.isWorkedOnBand(spot), detail.startsWith(QLatin1String("Worked before")));
        QCOMPARE(index.contactCount(), 6);
        QCOMPARE(index.malformedLineCount(), 6);
    }
};

TALLIS_TEST_MAIN(TestWorkedIndex)
#include "tst_workedindex.moc"
