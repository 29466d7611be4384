#include "sources/skimmeraggregator.h"
#include "sources/skimmerreport.h"
#include "support/testmain.h"

namespace {

const QDateTime k_now(QDate(2026, 11, 21), QTime(23, 0), Qt::UTC);

} // namespace

// Skimmer lines and their folding into one row per station, band and mode.
class TestSkimmer final : public QObject
{
    Q_OBJECT

private slots:
    void parse_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("expected"); // call kHz mode snr speed skimmer hhmm; empty: no report
        const auto row = [](const char *name, const char *line, const char *expected) {
            QTest::newRow(name) << QString::fromLatin1(line) << QString::fromLatin1(expected);
        };
        row("CW", "DX de KM3T-2-#:  14100.0  CS3B         CW    24 dB  22 WPM  CQ      2259Z",
            "CS3B 14100 CW 24 22 KM3T-2-# 22:59");
        row("RTTY with BPS", "DX de W3OA-#:   7080.1  k1abc  RTTY 15 dB 45 BPS CQ 0102Z",
            "K1ABC 7080.1 RTTY 15 45 W3OA-# 01:02");
        row("FT8 without speed", "DX de DL8LAS-#: 14074.0 JA1XYZ FT8 -12 dB CQ 1200Z",
            "JA1XYZ 14074 FT8 -12 0 DL8LAS-# 12:00");
        row("odd spacing", "  DX de   KM3T-2-#:   21025.5   CS3B  CW  5 dB  30 WPM  DX  0001  ",
            "CS3B 21025.5 CW 5 30 KM3T-2-# 00:01");
        row("beacon", "DX de KM3T-#: 14100.0 4U1UN CW 20 dB 22 WPM BEACON 1200Z", "");
        row("NCDXF beacon", "DX de KM3T-#: 14100.0 4U1UN CW 20 dB 22 WPM NCDXF B 1200Z", "");
        row("ordinary cluster spot", "DX de K1ABC:     14025.0  JA1XYZ       CW 599 up 2            1234Z",
            "");
        row("no dB", "DX de KM3T-#: 14100.0 CS3B CW 24 22 WPM CQ 1200Z", "");
        row("bad time", "DX de KM3T-#: 14100.0 CS3B CW 24 dB 22 WPM CQ 2575Z", "");
    }

    void parse()
    {
        QFETCH(QString, line);
        const SkimmerReport r = SkimmerReport::parse(line, k_now);
        const QString got = r.isValid() ? QStringLiteral("%1 %2 %3 %4 %5 %6 %7")
                                              .arg(r.callsign)
                                              .arg(r.frequencyKhz)
                                              .arg(r.mode)
                                              .arg(r.snrDb)
                                              .arg(r.speed)
                                              .arg(r.skimmer, r.time.toString(QStringLiteral("hh:mm")))
                                        : QString();
        QCOMPARE(got, fetched<QString>("expected"));
    }

    void aggregate_data()
    {
        // Reports "skimmer snr kHz minute", in order; the last report's row and the number of rows.
        QTest::addColumn<QStringList>("reports");
        QTest::addColumn<QString>("expected"); // kHz, spotter, comment; rows
        const auto row = [](const char *name, const QStringList &reports, const char *expected) {
            QTest::newRow(name) << reports << QString::fromUtf8(expected);
        };
        const auto list = [](std::initializer_list<const char *> lines) {
            QStringList l;
            for (const char *line : lines)
                l << QString::fromLatin1(line);
            return l;
        };
        QStringList forty;
        for (int i = 1; i <= 40; ++i)
            forty << QStringLiteral("S%1-# %2 14025.0 0").arg(i).arg((i * 7) % 41);
        row("40 skimmers, one station", forty, "14025 S35-# 40 dB · 40 skimmers; 1");
        row("one skimmer twice counts once", list({"A-# 10 14025.0 0", "A-# 12 14025.1 1"}),
            "14025.1 A-# 12 dB · 1 skimmers; 1");
        row("moved 500 Hz", list({"A-# 20 14025.0 0", "B-# 9 14025.5 1"}),
            "14025.5 A-# 20 dB · 2 skimmers; 1");
        row("the best of the last 10 minutes only", list({"A-# 30 14025.0 0", "B-# 9 14025.0 11"}),
            "14025 B-# 9 dB · 1 skimmers; 1");
        row("another band is another row", list({"A-# 30 14025.0 0", "B-# 9 7025.0 1"}),
            "7025 B-# 9 dB · 1 skimmers; 2");
    }

    void aggregate()
    {
        QFETCH(QStringList, reports);
        qint64 now = k_now.toMSecsSinceEpoch();
        SkimmerAggregator aggregator(StationSpot::DX, [&now] { return now; });
        StationSpot last;
        for (const QString &line : reports) {
            const QStringList f = line.split(QLatin1Char(' '));
            SkimmerReport r;
            r.skimmer = f.at(0);
            r.snrDb = f.at(1).toInt();
            r.frequencyKhz = f.at(2).toDouble();
            now = k_now.toMSecsSinceEpoch() + f.at(3).toLongLong() * 60'000;
            r.time = QDateTime::fromMSecsSinceEpoch(now, Qt::UTC);
            r.callsign = QStringLiteral("CS3B");
            r.mode = QStringLiteral("CW");
            last = aggregator.add(r);
        }
        QCOMPARE(QStringLiteral("%1 %2 %3; %4")
                     .arg(last.frequencyKhz)
                     .arg(last.spotter, last.comments)
                     .arg(aggregator.stationCount()),
                 fetched<QString>("expected"));
        QCOMPARE(last.referenceName, QStringLiteral("Portugal"));
    }
};

TALLIS_TEST_MAIN(TestSkimmer)
#include "tst_skimmer.moc"
