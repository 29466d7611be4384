#include "app/huntedcalls.h"
#include "model/stationmodel.h"
#include "sources/dxclusterfetcher.h"
#include "sources/rbnclient.h"
#include "sources/skimmeraggregator.h"
#include "sources/skimmerfeed.h"
#include "sources/skimmerfilter.h"
#include "sources/skimmerreport.h"
#include "sources/sourcehealth.h"
#include "support/clustertestserver.h"
#include "support/testmain.h"

#include <QSignalSpy>

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
        row("frequency past any band", "DX de KM3T-#: 1e300 CS3B CW 24 dB 22 WPM CQ 1200Z", "");
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

    void filter_data()
    {
        QTest::addColumn<QString>("continents");
        QTest::addColumn<bool>("huntedOnly");
        QTest::addColumn<QString>("skimmer");
        QTest::addColumn<QString>("call");
        QTest::addColumn<bool>("passes");
        // K1ABC is the one hunted call. KM3T is in North America, DL8LAS in Europe, AA1X nowhere known.
        const auto row = [](const char *name, const char *continents, bool huntedOnly, const char *skimmer,
                            const char *call, bool passes) {
            QTest::newRow(name) << QString::fromLatin1(continents) << huntedOnly
                                << QString::fromLatin1(skimmer) << QString::fromLatin1(call) << passes;
        };
        row("anywhere, every station", "", false, "KM3T-2-#", "CS3B", true);
        row("skimmer on another continent", "EU", false, "KM3T-2-#", "CS3B", false);
        row("skimmer on the continent", "EU", false, "DL8LAS-#", "CS3B", true);
        row("one of two continents", "EU NA", false, "KM3T-2-#", "CS3B", true);
        row("skimmer of no known country", "EU", false, "AA1X-#", "CS3B", false);
        row("not hunted", "", true, "KM3T-2-#", "CS3B", false);
        row("hunted", "", true, "KM3T-2-#", "K1ABC", true);
        row("hunted, skimmer far away", "EU", true, "KM3T-2-#", "K1ABC", false);
    }

    void filter()
    {
        SkimmerFilter filter;
        filter.setHuntedTest([](const QString &call) { return call == QLatin1String("K1ABC"); });
        filter.setHuntedOnly(fetched<bool>("huntedOnly"));
        filter.setContinents(fetched<QString>("continents").split(QLatin1Char(' '), Qt::SkipEmptyParts));
        SkimmerReport report;
        report.skimmer = fetched<QString>("skimmer");
        report.callsign = fetched<QString>("call");
        QCOMPARE(filter.accepts(report), fetched<bool>("passes"));
        QCOMPARE(filter.accepts(report), fetched<bool>("passes")); // remembered skimmers answer alike
    }

    // Hunted: watched, or with a programme spot within the age limit; the set follows a merge within a
    // second and the age limit within a minute.
    void huntedCalls()
    {
        qint64 now = k_now.toMSecsSinceEpoch();
        StationModel model;
        model.setClock([&now] { return now; });
        model.setWatchCallsigns({QStringLiteral("w4gxx")});
        int maxAgeMins = 30;
        HuntedCalls hunted(&model, [&maxAgeMins] { return maxAgeMins; });
        const auto spot = [&now](StationSpot::Source source, const char *call, int agoMins) {
            StationSpot s;
            s.source = source;
            s.callsign = QString::fromLatin1(call);
            s.reference = source == StationSpot::DX ? QString() : QStringLiteral("US-1234");
            s.frequencyKhz = 14062.0;
            s.spotTime = QDateTime::fromMSecsSinceEpoch(now - agoMins * 60'000LL, Qt::UTC);
            return s;
        };
        model.mergeSpots({spot(StationSpot::POTA, "k1abc", 5), spot(StationSpot::SOTA, "N1OLD", 40)});
        model.mergeSpots({spot(StationSpot::DX, "JA1XYZ", 1)});
        QVERIFY(hunted.contains(QStringLiteral("W4GXX")));
        QVERIFY(hunted.contains(QStringLiteral("K1ABC")));
        QVERIFY(!hunted.contains(QStringLiteral("N1OLD")));
        QVERIFY(!hunted.contains(QStringLiteral("JA1XYZ")));

        model.mergeSpots({spot(StationSpot::WWFF, "F4NEW", 1)});
        QVERIFY(!hunted.contains(QStringLiteral("F4NEW"))); // within the second
        now += HuntedCalls::k_rebuildMs;
        QVERIFY(hunted.contains(QStringLiteral("F4NEW")));
        maxAgeMins = 60;
        now += HuntedCalls::k_ageRebuildMs;
        QVERIFY(hunted.contains(QStringLiteral("N1OLD")));
    }

    // An ordinary node relays skimmer lines among its spots: they become
    // skimmer rows, merged together, and never DX spots.
    void relayedLinesOnAClusterNode()
    {
        const qint64 now = k_now.toMSecsSinceEpoch();
        ClusterTestServer server;
        QVERIFY(server.start());
        DxClusterFetcher node(QStringLiteral("127.0.0.1"), server.port(), QStringLiteral("K1ABC"));
        node.setClock([now] { return now; });
        SkimmerFeed feed([now] { return now; });
        connect(&node, &DxClusterFetcher::skimmerReportReady, &feed, &SkimmerFeed::add);
        QSignalSpy dx(&node, &DxClusterFetcher::spotsReady);
        QSignalSpy merges(&feed, &SkimmerFeed::spotsReady);
        node.connectToCluster();
        QTRY_COMPARE(server.receivedCount("K1ABC"), 2);
        server.sendLine("Hello K1ABC");
        QTRY_VERIFY(node.isConnected());

        server.sendLine("DX de KM3T-#: 14025.0 CS3B CW 24 dB 22 WPM CQ 2259Z"); // source off: dropped
        server.sendLine("DX de K1ABC: 14062.5 KH7KA cw 2259Z");
        QTRY_COMPARE(dx.size(), 1);
        QCOMPARE(dx.first().at(0).value<QList<StationSpot>>().first().callsign, QStringLiteral("KH7KA"));
        feed.setEnabled(true);
        server.sendLine("DX de W3OA-#: 14025.1 CS3B CW 20 dB 22 WPM CQ 2259Z");
        server.sendLine("DX de DL8LAS-#: 14025.0 CS3B CW 30 dB 22 WPM CQ 2259Z");
        server.sendLine("DX de DL8LAS-#: 7074.0 JA1XYZ FT8 -12 dB CQ 2259Z");
        QTRY_COMPARE(feed.pendingRows(), 2);
        QCOMPARE(dx.size(), 1);
        QVERIFY(merges.isEmpty()); // held for the merge interval
        QVERIFY(merges.wait());
        QCOMPARE(merges.size(), 1);
        const auto rows = merges.first().at(0).value<QList<StationSpot>>();
        QCOMPARE(rows.size(), 2);
        for (const StationSpot &s : rows) {
            QCOMPARE(s.source, StationSpot::RBN);
            if (s.callsign == QLatin1String("CS3B"))
                QCOMPARE(s.comments, QStringLiteral("30 dB · 2 skimmers"));
        }
    }

    // Both feeds log in with the own call, send nothing else, and give
    // skimmer reports only; without a call nothing connects.
    void rbnFeeds()
    {
        ClusterTestServer cw;
        ClusterTestServer digital;
        QVERIFY(cw.start() && digital.start());
        RbnClient rbn;
        QSignalSpy status(&rbn, &RbnClient::statusMessage);
        QSignalSpy reports(&rbn, &RbnClient::skimmerReportReady);
        rbn.setHost(QStringLiteral("127.0.0.1"), cw.port(), digital.port());
        QVERIFY(!rbn.start());
        QCOMPARE(status.size(), 1);
        QCOMPARE(status.first().at(0).toString(), RbnClient::noCallsignText());
        QCOMPARE(rbn.feeds()[0]->state(), DxClusterFetcher::Disconnected);

        rbn.setCallsign(QStringLiteral("g4abc"));
        QVERIFY(rbn.start());
        QTRY_COMPARE(cw.receivedCount("G4ABC"), 2);
        QTRY_COMPARE(digital.receivedCount("G4ABC"), 2);
        cw.sendLine("Connected");
        digital.sendLine("Connected");
        QTRY_VERIFY(rbn.feeds()[0]->isConnected() && rbn.feeds()[1]->isConnected());
        QSignalSpy dx(rbn.feeds()[1], &DxClusterFetcher::spotsReady);
        digital.sendLine("DX de K1ABC: 14062.5 KH7KA cw 2259Z");
        digital.sendLine("DX de DL8LAS-#: 7074.0 JA1XYZ FT8 -12 dB CQ 2259Z");
        QTRY_COMPARE(reports.size(), 1);
        QCOMPARE(reports.first().at(0).value<SkimmerReport>().callsign, QStringLiteral("JA1XYZ"));
        QVERIFY(dx.isEmpty());
        QVERIFY(!rbn.feeds()[0]->sendLine(QStringLiteral("DX 14025.0 CS3B tnx")));
        QCOMPARE(cw.receivedCount("SET/DX") + digital.receivedCount("SET/DX"), 0);

        rbn.setCallsign(QString()); // the call removed: off, with the reason
        QCOMPARE(status.size(), 2);
        QVERIFY(!rbn.isRunning() && !rbn.anyConnected());
    }

    // Two connections, one source: one line in the health tooltip, one failure when either fails.
    void rbnIsOneSource()
    {
        ClusterTestServer cw;
        ClusterTestServer digital;
        QVERIFY(cw.start() && digital.start());
        digital.setLoginReply("Sorry G4ABC is not a valid callsign\r\n", true);
        RbnClient rbn;
        rbn.setHost(QStringLiteral("127.0.0.1"), cw.port(), digital.port());
        rbn.setCallsign(QStringLiteral("G4ABC"));
        SourceHealth health;
        health.watchFeedGroup(QStringLiteral("RBN"), {rbn.feeds().cbegin(), rbn.feeds().cend()});
        QCOMPARE(health.toolTip(), QStringLiteral("RBN: off"));
        QVERIFY(rbn.start());
        QTRY_COMPARE(cw.receivedCount("G4ABC"), 2);
        cw.sendLine("Connected");
        QTRY_COMPARE(health.labelText(), QStringLiteral("Sources: 1 failing"));
        QTRY_VERIFY2(health.toolTip().contains(QStringLiteral("port %1 logged in").arg(cw.port())),
                     qPrintable(health.toolTip()));
        QVERIFY(health.toolTip().startsWith(QStringLiteral("RBN: ")));
        QVERIFY(health.toolTip().contains(QStringLiteral("port %1 refused at ").arg(digital.port())));
        QVERIFY(!health.toolTip().contains(QLatin1Char('\n')));
        rbn.stop();
        QCOMPARE(health.toolTip(), QStringLiteral("RBN: off"));
        QCOMPARE(health.labelText(), QStringLiteral("Sources: all answering"));
    }

    // The table holds one skimmer row per call, band and mode: an updated
    // aggregate replaces its row, and a cluster spot of the station stays.
    void oneTableRowPerCallBandMode()
    {
        StationModel model;
        model.setClock([] { return k_now.toMSecsSinceEpoch(); });
        const auto spot = [](StationSpot::Source source, double kHz, const char *mode, const char *comment,
                             int agoSecs = 60) {
            StationSpot s;
            s.source = source;
            s.callsign = QStringLiteral("CS3B");
            s.frequencyKhz = kHz;
            s.mode = QString::fromLatin1(mode);
            s.comments = QString::fromUtf8(comment);
            s.spotTime = k_now.addSecs(-agoSecs);
            return s;
        };
        model.mergeSpots({spot(StationSpot::DX, 14025.0, "CW", "cluster")});
        model.mergeSpots({spot(StationSpot::RBN, 14025.0, "CW", "10 dB · 1 skimmers"),
                          spot(StationSpot::RBN, 7025.0, "CW", "5 dB · 1 skimmers"),
                          spot(StationSpot::RBN, 14080.0, "RTTY", "7 dB · 1 skimmers")});
        QCOMPARE(model.rowCount(), 4);
        model.mergeSpots({spot(StationSpot::RBN, 14025.1, "CW", "20 dB · 2 skimmers", 59)});
        // Either side of the 30 m band's edge: one key, so one row.
        model.mergeSpots({spot(StationSpot::RBN, 10150.0, "CW", "edge, in", 30)});
        model.mergeSpots({spot(StationSpot::RBN, 10150.1, "CW", "edge, out", 29)});
        QStringList rows;
        for (int row = 0; row < model.rowCount(); ++row)
            rows << model.spotAt(row).comments;
        rows.sort();
        QCOMPARE(rows.join(QLatin1Char('/')),
                 QStringLiteral("20 dB · 2 skimmers/5 dB · 1 skimmers/7 dB · 1 skimmers/cluster/edge, out"));
    }
};

TALLIS_TEST_MAIN(TestSkimmer)
#include "tst_skimmer.moc"
