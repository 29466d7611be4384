#include "radio/hamlibcontroller.h"
#include "radio/hamliblink.h"
#include "radio/radiocontrol.h"
#include "radio/radiorouter.h"
#include "support/testmain.h"

#include <QThread>
#include <QTimer>

#include <memory>

namespace {

// The companion program's side, as far as the router can tell: what it was asked.
class RecordingBridge final : public RadioControl
{
public:
    QStringList calls;

    void tune(double kHz, const QString &mode) override
    {
        calls << QStringLiteral("tune %1 %2").arg(kHz).arg(mode);
    }
    void setFrequency(double) override {}
    void setVolume(int) override {}
    void setRfPower(int) override {}
    void setMute(bool) override {}
    void setFilter(int) override {}
    void setKeySpeed(int) override {}
    void startTune() override { calls << QStringLiteral("startTune"); }
};

} // namespace

// HamlibLink and RadioRouter over the dummy rig (model 1) on a worker thread, as the program runs it.
class TestRadioRouter final : public QObject
{
    Q_OBJECT

    QThread m_thread;
    HamlibController *m_controller = nullptr;
    std::unique_ptr<HamlibLink> m_link;
    QTimer m_poll;
    QTimer m_reconnect;

    QString rigReading() const
    {
        double kHz = 0;
        QString mode;
        const bool connected = m_link->readFrequencyAndWait(kHz, mode);
        return connected ? QStringLiteral("%1 %2").arg(kHz).arg(mode) : QStringLiteral("not connected");
    }

private slots:
    void init()
    {
        m_controller = new HamlibController;
        m_controller->moveToThread(&m_thread);
        m_thread.start();
        m_link = std::make_unique<HamlibLink>(m_controller);
    }

    void cleanup()
    {
        m_poll.stop();
        m_reconnect.stop();
        m_link.reset();
        m_thread.quit();
        m_thread.wait();
        delete m_controller;
    }

    void linkTunesAndReadsBack()
    {
        QVERIFY(m_link->connectRigAndWait(RigConfig()));
        QVERIFY(m_link->isConnected());
        m_link->tune(14074, QStringLiteral("USB"));
        QCOMPARE(rigReading(), QStringLiteral("14074 USB"));
        QVERIFY(m_link->availableRigsAndWait().contains(QStringLiteral("1 — Hamlib Dummy")));
        m_link->disconnectRigAndWait();
        QVERIFY(!m_link->isConnected());
        QCOMPARE(rigReading(), QStringLiteral("not connected"));
    }

    // The waiting forms must not block on their own thread.
    void waitingOnTheControllersThread()
    {
        HamlibController local;
        HamlibLink link(&local);
        QVERIFY(link.connectRigAndWait(RigConfig()));
        link.disconnectRigAndWait();
        QVERIFY(!link.isConnected());
    }

    void timersFollowTheRig_data()
    {
        QTest::addColumn<bool>("connected");
        QTest::addColumn<QString>("port");
        QTest::addColumn<bool>("polling");
        QTest::addColumn<bool>("reconnecting");
        QTest::newRow("connected") << true << QStringLiteral("/dev/ttyUSB0") << true << false;
        QTest::newRow("lost, port set") << false << QStringLiteral("/dev/ttyUSB0") << false << true;
        QTest::newRow("lost, no port") << false << QString() << false << false;
    }

    void timersFollowTheRig()
    {
        QFETCH(bool, connected);
        QFETCH(QString, port);
        QFETCH(bool, polling);
        QFETCH(bool, reconnecting);
        RadioRouter router(m_link.get(), &m_poll, &m_reconnect);
        RigConfig config;
        config.port = port;
        router.setRigConfig(config);
        if (connected)
            QVERIFY(m_link->connectRigAndWait(RigConfig()));
        m_poll.start();
        if (connected)
            m_reconnect.start();

        router.onRigConnectionChanged(connected);
        QCOMPARE(m_poll.isActive(), polling);
        QCOMPARE(m_reconnect.isActive(), reconnecting);
        router.onBridgeLinked();
        QVERIFY(!m_poll.isActive());
        QVERIFY(!m_reconnect.isActive());
        router.onBridgeUnlinked();
        QCOMPARE(m_poll.isActive(), polling);
        QCOMPARE(m_reconnect.isActive(), reconnecting);
    }

    void requestsTakeTheActivePath_data()
    {
        QTest::addColumn<QString>("bridgeState");
        QTest::addColumn<bool>("viaBridge");
        QTest::newRow("enabled and linked") << QStringLiteral("present enabled linked") << true;
        QTest::newRow("disabled") << QStringLiteral("present linked") << false;
        QTest::newRow("unlinked") << QStringLiteral("present enabled") << false;
        QTest::newRow("no bridge") << QStringLiteral("enabled linked") << false;
    }

    void requestsTakeTheActivePath()
    {
        QFETCH(QString, bridgeState);
        QFETCH(bool, viaBridge);
        RecordingBridge bridge;
        RadioRouter router(m_link.get(), &m_poll, &m_reconnect);
        const bool linked = bridgeState.contains(QStringLiteral("linked"));
        if (bridgeState.contains(QStringLiteral("present")))
            router.setBridge(&bridge, [linked] { return linked; });
        router.setBridgeEnabled(bridgeState.contains(QStringLiteral("enabled")));
        QVERIFY(m_link->connectRigAndWait(RigConfig()));
        m_link->tune(7030, QStringLiteral("CW"));

        QCOMPARE(router.isBridgeActive(), viaBridge);
        QCOMPARE(&router.target(), viaBridge ? static_cast<RadioControl *>(&bridge) : m_link.get());
        QCOMPARE(router.tune(14074, QStringLiteral("USB")), viaBridge);
        router.startTune();
        const QStringList bridgeCalls{QStringLiteral("tune 14074 USB"), QStringLiteral("startTune")};
        QCOMPARE(bridge.calls, viaBridge ? bridgeCalls : QStringList());
        QCOMPARE(rigReading(), viaBridge ? QStringLiteral("7030 CW") : QStringLiteral("14074 USB"));
    }

    // A poll's 0 kHz keeps the last frequency, the bridge's is taken as it comes.
    void lastFrequencyAndMode()
    {
        RadioRouter router(m_link.get(), &m_poll, &m_reconnect);
        router.noteBridgeFrequency(14074, QStringLiteral("USB"));
        router.notePollResult(0, QStringLiteral("CW"));
        QCOMPARE(router.lastFreqKhz(), 14074.0);
        QCOMPARE(router.lastMode(), QStringLiteral("CW"));
        router.notePollResult(7030, QStringLiteral("CW"));
        QCOMPARE(router.lastFreqKhz(), 7030.0);
        router.noteBridgeFrequency(0, QString());
        QCOMPARE(router.lastFreqKhz(), 0.0);
        QCOMPARE(router.lastMode(), QString());
    }
};

TALLIS_TEST_MAIN(TestRadioRouter)
#include "tst_radiorouter.moc"
