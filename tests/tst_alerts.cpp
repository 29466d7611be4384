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

QStringList words(const QString &text)
{
    return text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class TestAlerts : public QObject
{
    Q_OBJECT

    TestBus m_bus;
    QTemporaryDir m_logDir;

private slots:
    void initTestCase() { QVERIFY2(!m_bus.address().isEmpty(), "dbus-daemon did not start"); }

    // script: polls split by ";", each a list of spots split by ","; a poll
    // starting "+N" comes N minutes after the last (otherwise 1), "seed" is
    // the snapshot. worked: "REF kHz" contacts in the log.
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
        QFETCH(QString, watch);
        QFETCH(bool, neededOnly);
        QFETCH(QString, worked);
        QFETCH(QString, script);
        QFETCH(int, expected);
        WorkedIndex index(m_logDir.path());
        for (const QString &contact : worked.split(QLatin1Char(','), Qt::SkipEmptyParts))
            index.addContact(parseSpot(QStringLiteral("POTA W9XX ") + contact, k_start),
                             QDateTime::fromMSecsSinceEpoch(k_start - 86400000, Qt::UTC));
        AlertPolicy policy(&index);
        qint64 now = k_start;
        policy.setClock([&now] { return now; });
        policy.setWatchCallsigns(words(watch)); // one list for both: a call matches no reference
        policy.setWatchReferences(words(watch));
        policy.setNeededOnly(neededOnly);
        QSignalSpy alerts(&policy, &AlertPolicy::alert);

        for (QString poll : script.split(QLatin1Char(';'))) {
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
        QCOMPARE(activations, expected);
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

    void notifyAndClick_data()
    {
        QTest::addColumn<bool>("sound");
        QTest::newRow("with sound") << true;
        QTest::newRow("silent") << false;
    }

    // Policy and notifier wired as in the window: polls of two sources give one
    // notification per activation, and a click on it names its spot.
    void notifyAndClick()
    {
        QFETCH(bool, sound);
        NotificationStandIn service(m_bus.connect(QStringLiteral("service")));
        QVERIFY(service.isRegistered());
        DesktopNotifier notifier(m_bus.connect(QStringLiteral("app")));
        notifier.setSoundEnabled(sound);
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
            policy.processBatch({spot});
        }
        // The last is news: its notification comes second, with none between.
        QTRY_COMPARE(service.calls().size(), 2);
        const NotificationStandIn::Call call = service.calls().first();
        QCOMPARE(call.summary, QStringLiteral("W1AW at W4C/CM-001"));
        QCOMPARE(call.body, QStringLiteral("Bear &amp; Fox Peak\n14062.700 kHz CW"));
        QVERIFY(call.actions.contains(QStringLiteral("default")));
        QCOMPARE(call.hints.value(QStringLiteral("sound-name")).toString(),
                 sound ? QStringLiteral("message-new-instant") : QString());
        QCOMPARE(service.calls()[1].summary, QStringLiteral("N1XX at W4C/CM-001"));

        service.invokeAction(7, QStringLiteral("default")); // someone else's notification
        service.invokeAction(1, QStringLiteral("default"));
        QVERIFY(activated.wait());
        QCOMPARE(activated, (QList<QList<QVariant>>{{QStringLiteral("W1AW|W4C/CM-001|14062")}}));
        QCOMPARE(fallback.size(), 0);
    }

    void fallbackWithoutService()
    {
        DesktopNotifier notifier(m_bus.connect(QStringLiteral("lonely")));
        QSignalSpy fallback(&notifier, &DesktopNotifier::fallbackRequested);
        notifier.show({QStringLiteral("K1ABC||14062"), QStringLiteral("K1ABC"), QStringLiteral("body"), 0});
        QVERIFY(fallback.wait());
        QCOMPARE(fallback[0], (QList<QVariant>{QStringLiteral("K1ABC"), QStringLiteral("body"),
                                               QStringLiteral("K1ABC||14062")}));
    }
};

TALLIS_TEST_MAIN(TestAlerts)
#include "tst_alerts.moc"
