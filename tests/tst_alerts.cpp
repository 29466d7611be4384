#include "app/alertpolicy.h"
#include "app/desktopnotifier.h"
#include "app/workedindex.h"
#include "support/notificationstandin.h"
#include "support/testmain.h"

#include <QSignalSpy>
#include <QTimer>

namespace {

constexpr qint64 k_start = 1'790'000'000'000; // a fixed UTC instant
constexpr qint64 k_minute = 60 * 1000;

// "SOURCE CALL REF kHz [qrt]", REF "-" for none.
StationSpot parseSpot(const QString &text, qint64 at)
{
    const QStringList f = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    StationSpot spot;
    while (spot.sourceString() != f[0] && spot.source < StationSpot::GMA)
        spot.source = StationSpot::Source(spot.source + 1);
    spot.callsign = f[1];
    spot.reference = f[2] == QLatin1String("-") ? QString() : f[2];
    spot.frequencyKhz = f[3].toDouble();
    spot.mode = QStringLiteral("CW");
    spot.spotTime = QDateTime::fromMSecsSinceEpoch(at, Qt::UTC);
    spot.comments = f.size() > 4 ? QStringLiteral("going QRT now") : QString();
    return spot;
}

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

void writeLines(const QString &path, const QList<QByteArray> &lines)
{
    QVERIFY(writeFile(path, lines.join('\n') + '\n'));
}

} // namespace

class TestAlerts : public QObject
{
    Q_OBJECT

    TestBus m_bus;
    QTemporaryDir m_logDir;
    QTemporaryDir m_workedDir;

private slots:
    void initTestCase()
    {
        QVERIFY2(!m_bus.address().isEmpty(), "dbus-daemon did not start");
        // The worked index's logs: three days, several bands and sources, lines that must not count.
        writeLines(m_workedDir.filePath(QStringLiteral("contacts-pota-2026-11-14.jsonl")),
                   {logLine("K1ABC", "US-1234", 14062.7, "SSB", "2026-11-15T10:00:00Z"),
                    logLine("K1ABC", "US-1234", 14061.0, "CW", "2026-11-14T09:00:00Z"), "{not json", "",
                    logLine("", "US-4444", 14062.0, "CW", "2026-11-14T09:00:00Z"),
                    logLine("W1AW", "US-5555", 7030.0, "", "2026-11-14T09:05:00Z")});
        writeLines(m_workedDir.filePath(QStringLiteral("contacts-dx-2026-11-16.jsonl")),
                   {logLine("DL1ABC", "", 7010.0, "SSB", "2026-11-15T08:00:00Z"),
                    logLine("DL1ABC", "", 7025.0, "CW", "2026-11-16T21:30:00Z"),
                    logLine("DL2XYZ", "", 7025.0, "CW", "yesterday"),
                    R"({"callsign":"F5AB","frequency_khz":"7025","timestamp":"2026-11-16T21:30:00Z"})",
                    R"({"callsign":"F5AB","frequency_khz":07025,"timestamp":"2026-11-16T21:30:00Z"})",
                    logLine("F5AB", "", 7025.0, "CW", "2026-11-16T21:30:00Z") + " and more", k_escapedLine});
        writeLines(m_workedDir.filePath(QStringLiteral("notes.jsonl")),
                   {logLine("EA1AA", "EA-0001", 14062.0, "CW", "2026-11-16T21:30:00Z")});
    }

    // script: polls split by ";", each a list of spots split by ","; a poll starting "+N" comes N minutes
    // after the last (otherwise 1), "seed" is the snapshot. worked: "REF kHz" contacts in the log.
    void activations_data()
    {
        QTest::addColumn<QString>("watch");
        QTest::addColumn<bool>("neededOnly");
        QTest::addColumn<QString>("worked");
        QTest::addColumn<QString>("script");
        QTest::addColumn<int>("expected");
        const QString k1 = QStringLiteral("POTA K1ABC US-1234 14062");
        const auto row = [](const char *name, const char *watch, bool needed, const char *worked,
                            const QString &script, int expected) {
            QTest::newRow(name) << QString::fromLatin1(watch) << needed << QString::fromLatin1(worked)
                                << script << expected;
        };
        row("several polls", "K1ABC", false, "", QStringLiteral("%1; %1; POTA K1ABC US-1234 7032.5").arg(k1),
            1);
        row("two sources", "W4C/CM-001", false, "",
            QStringLiteral("SOTA W1AW W4C/CM-001 14062; GMA W1AW W4C/CM-001 14062.2"), 1);
        row("another reference", "k1abc", false, "", QStringLiteral("%1; POTA K1ABC US-5678 14062").arg(k1),
            2);
        row("after three hours away", "K1ABC", false, "", QStringLiteral("%1; +181 %1").arg(k1), 2);
        row("on the air four hours", "K1ABC", false, "",
            QStringLiteral("%1; +60 %1; +60 %1; +60 %1; +60 %1").arg(k1), 1);
        row("cluster spot of it", "K1ABC", false, "", QStringLiteral("%1; DX K1ABC - 14062").arg(k1), 1);
        row("not watched", "K1ABC US-1", false, "", QStringLiteral("POTA W1AW US-2 14062"), 0);
        row("in the snapshot", "K1ABC", false, "", QStringLiteral("seed %1; %1").arg(k1), 0);
        row("going qrt", "K1ABC", false, "", k1 + QStringLiteral(" qrt"), 0);
        row("needed, at start", "", true, "", QStringLiteral("POTA W1AW US-1 14062, POTA W2AW US-2 7032"), 0);
        row("needed, later", "", true, "US-3 7032",
            QStringLiteral("POTA W1AW US-1 14062; POTA W1AW US-1 14062, POTA W2AW US-2 7032, "
                           "POTA W3AW US-3 14062, DX DL1A - 14020"),
            1);
        row("not needed-only, no watch list", "", false, "",
            QStringLiteral("POTA W1AW US-1 1; POTA W2AW US-2 7"), 0);
        row("watched, worked on band", "US-1234", true, "US-1234 14200", k1, 0);
        row("watched, new band", "US-1234", true, "US-1234 7100", k1, 1);
    }

    void activations()
    {
        WorkedIndex index(m_logDir.path());
        for (const QString &contact : fetched<QString>("worked").split(QLatin1Char(','), Qt::SkipEmptyParts))
            index.addContact(parseSpot(QStringLiteral("POTA W9XX ") + contact, k_start),
                             QDateTime::fromMSecsSinceEpoch(k_start - 86400000, Qt::UTC));
        AlertPolicy policy(&index);
        qint64 now = k_start;
        policy.setClock([&now] { return now; });
        const QStringList watched = fetched<QString>("watch").split(QLatin1Char(' '), Qt::SkipEmptyParts);
        policy.setWatchCallsigns(watched); // one list for both: a call matches no reference
        policy.setWatchReferences(watched);
        policy.setNeededOnly(fetched<bool>("neededOnly"));
        QSignalSpy alerts(&policy, &AlertPolicy::alert);

        for (QString poll : fetched<QString>("script").split(QLatin1Char(';'))) {
            poll = poll.trimmed();
            const bool later = poll.startsWith(QLatin1Char('+'));
            now += (later ? poll.section(QLatin1Char(' '), 0, 0).toLongLong() : 1) * k_minute;
            poll = later ? poll.section(QLatin1Char(' '), 1) : poll;
            const bool seed = poll.startsWith(QLatin1String("seed "));
            QList<StationSpot> batch;
            for (const QString &spot : poll.mid(seed ? 5 : 0).split(QLatin1Char(',')))
                batch << parseSpot(spot, now);
            seed ? policy.seed(batch) : policy.processBatch(batch);
        }
        int activations = 0; // including those summarised in one notification
        for (const QList<QVariant> &args : std::as_const(alerts))
            activations += 1 + args[0].value<SpotAlert>().moreCount;
        QCOMPARE(activations, fetched<int>("expected"));
    }

    void workedFromLogs_data()
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

    void workedFromLogs()
    {
        QFETCH(QString, detail);
        WorkedIndex index(m_workedDir.path());
        index.reload();
        StationSpot spot;
        spot.callsign = fetched<QString>("call");
        spot.reference = fetched<QString>("ref");
        spot.frequencyKhz = fetched<double>("khz");
        QCOMPARE(index.detailText(spot), detail);
        // "Hide worked" hides exactly what was worked on the spot's band.
        QCOMPARE(index.isWorkedOnBand(spot), detail.startsWith(QLatin1String("Worked before")));
        QCOMPARE(index.contactCount(), 6);
        QCOMPARE(index.malformedLineCount(), 6);
    }

    // A cluster flood: a hundred watched stations in one second.
    void floodIsRateLimited()
    {
        AlertPolicy policy;
        qint64 now = k_start;
        policy.setClock([&now] { return now; });
        QStringList calls;
        for (int i = 0; i < 100; ++i)
            calls << QStringLiteral("DL%1AA").arg(i);
        policy.setWatchCallsigns(calls);
        QSignalSpy alerts(&policy, &AlertPolicy::alert);
        auto *timer = policy.findChild<QTimer *>(QStringLiteral("alertDeliveryTimer"));

        for (int i = 0; i < 100; ++i, now += 10)
            policy.processBatch({parseSpot(QStringLiteral("DX %1 - %2").arg(calls[i]).arg(14020 + i), now)});
        QCOMPARE(alerts.size(), 1);
        QVERIFY(timer->isActive());
        QCOMPARE(timer->interval(), 5000 - 990); // five seconds after the first alert

        now = k_start + 4999;
        policy.deliverPending();
        QCOMPARE(alerts.size(), 1);
        now = k_start + 5000;
        policy.deliverPending();
        QCOMPARE(alerts.size(), 2);
        const SpotAlert summary = alerts[1][0].value<SpotAlert>();
        QCOMPARE(summary.spotKey, QStringLiteral("DL1AA||14021"));
        QCOMPARE(summary.body, QStringLiteral("14021.000 kHz CW\nand 98 more activations"));
        QVERIFY(!timer->isActive());
    }

    // Policy and notifier wired as in the window: polls of two sources give one
    // notification per activation, and a click on it names its spot.
    void notifyAndClick()
    {
        // No notification service yet: the window is asked to show it itself.
        DesktopNotifier lonely(m_bus.connect(QStringLiteral("lonely")));
        QSignalSpy lonelyFallback(&lonely, &DesktopNotifier::fallbackRequested);
        lonely.show({QStringLiteral("K1ABC||14062"), QStringLiteral("K1ABC"), QStringLiteral("body"), 0});
        QVERIFY(lonelyFallback.wait());
        QCOMPARE(lonelyFallback[0], (QList<QVariant>{QStringLiteral("K1ABC"), QStringLiteral("body"),
                                                     QStringLiteral("K1ABC||14062")}));

        NotificationStandIn service(m_bus.connect(QStringLiteral("service")));
        QVERIFY(service.isRegistered());
        DesktopNotifier notifier(m_bus.connect(QStringLiteral("app")));
        QSignalSpy activated(&notifier, &DesktopNotifier::spotActivated);
        QSignalSpy fallback(&notifier, &DesktopNotifier::fallbackRequested);
        AlertPolicy policy;
        qint64 now = k_start;
        policy.setClock([&now] { return now; });
        policy.setWatchReferences({QStringLiteral("W4C/CM-001")});
        connect(&policy, &AlertPolicy::alert, &notifier, &DesktopNotifier::show);
        for (const char *text : {"SOTA W1AW W4C/CM-001 14062.7", "GMA W1AW W4C/CM-001 14062",
                                 "SOTA W1AW W4C/CM-001 7032", "SOTA N1XX W4C/CM-001 7032"}) {
            StationSpot spot = parseSpot(QString::fromLatin1(text), now += k_minute);
            spot.referenceName = QStringLiteral("Bear & Fox Peak");
            notifier.setSoundEnabled(spot.callsign == QLatin1String("W1AW"));
            policy.processBatch({spot});
        }
        // The last is news: its notification comes second, with none between.
        QTRY_COMPARE(service.calls().size(), 2);
        const NotificationStandIn::Call call = service.calls().first();
        QCOMPARE(call.summary, QStringLiteral("W1AW at W4C/CM-001"));
        QCOMPARE(call.body, QStringLiteral("Bear &amp; Fox Peak\n14062.700 kHz CW"));
        QVERIFY(call.actions.contains(QStringLiteral("default")));
        QCOMPARE(call.hints.value(QStringLiteral("sound-name")).toString(),
                 QStringLiteral("message-new-instant"));
        QCOMPARE(service.calls()[1].summary, QStringLiteral("N1XX at W4C/CM-001"));
        QVERIFY(!service.calls()[1].hints.contains(QStringLiteral("sound-name"))); // sound switched off

        service.invokeAction(7, QStringLiteral("default")); // someone else's notification
        service.invokeAction(1, QStringLiteral("default"));
        QVERIFY(activated.wait());
        QCOMPARE(activated, (QList<QList<QVariant>>{{QStringLiteral("W1AW|W4C/CM-001|14062")}}));
        QCOMPARE(fallback.size(), 0);
    }
};

TALLIS_TEST_MAIN(TestAlerts)
#include "tst_alerts.moc"
