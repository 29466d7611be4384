#include "radio/hamlibcontroller.h"
#include "radio/hamliblink.h"
#include "radio/lwclient.h"
#include "radio/radiocontrol.h"
#include "radio/radiorouter.h"
#include "support/testmain.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>
#include <QWebSocket>
#include <QWebSocketServer>

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

// The companion program as far as the bridge sees it: accepts one link at a
// time and keeps every command it received, as compact JSON with sorted keys.
class CompanionServer final : public QObject
{
public:
    CompanionServer()
    {
        connect(&server, &QWebSocketServer::newConnection, this, [this] {
            peer = server.nextPendingConnection();
            peer->setParent(this);
            connect(peer, &QWebSocket::textMessageReceived, this, [this](const QString &text) {
                const QJsonObject msg = QJsonDocument::fromJson(text.toUtf8()).object();
                received << QString::fromUtf8(QJsonDocument(msg).toJson(QJsonDocument::Compact));
            });
        });
        server.listen(QHostAddress::LocalHost);
    }
    void sendEvent(const QByteArray &json) { peer->sendTextMessage(QString::fromUtf8(json)); }

    QWebSocketServer server{QStringLiteral("Lampwick"), QWebSocketServer::NonSecureMode};
    QWebSocket *peer = nullptr;
    QStringList received;
};

QString cmd(int id, const char *name, const char *data = nullptr)
{
    const QString head =
        data ? QStringLiteral("{\"cmd\":\"%1\",\"data\":%2,").arg(QLatin1String(name), QLatin1String(data))
             : QStringLiteral("{\"cmd\":\"%1\",").arg(QLatin1String(name));
    return head + QStringLiteral("\"id\":\"%1\",\"type\":\"cmd\"}").arg(id);
}

// Points the client at the stand-in, enables it and waits for the link.
bool link(LwClient &client, const CompanionServer &lw)
{
    client.setTarget(QStringLiteral("127.0.0.1"), lw.server.serverPort());
    QSignalSpy linked(&client, &LwClient::connectedToLw);
    client.setEnabled(true);
    return linked.wait(5000) && client.isLinked();
}

} // namespace

// HamlibLink and RadioRouter over the dummy rig (model 1) on a worker thread, as the program runs it,
// and the bridge client against a stand-in companion program.
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
        QVERIFY(!m_poll.isActive() && !m_reconnect.isActive());
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
        m_link->disconnectRigAndWait(); // the rig list through the link is the window's radio set-up test
        QVERIFY(!m_link->isConnected());
        QCOMPARE(rigReading(), QStringLiteral("not connected"));
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

    void bridgeCommandsWhileLinked()
    {
        CompanionServer lw;
        LwClient client;
        QVERIFY(link(client, lw));
        client.tune(14062.5, QStringLiteral("CW"));
        client.setFrequency(7030);
        client.setMode(QStringLiteral("USB"));
        client.setVolume(150);
        client.setRfPower(-5);
        client.setMute(true);
        client.setFilter(2);
        client.setKeySpeed(22);
        client.startTune();
        QTRY_COMPARE(lw.received.size(), 10);
        QCOMPARE(lw.received,
                 (QStringList{cmd(1, "link.announce", R"({"controller":"Tallis"})"),
                              cmd(2, "link.tune", R"({"freq_khz":14062.5,"mode":"CW"})"),
                              cmd(3, "radio.frequency.set", R"({"freq_khz":7030})"),
                              cmd(4, "radio.mode.set", R"({"mode":"USB"})"),
                              cmd(5, "radio.volume.set", R"({"volume":150})"),
                              cmd(6, "radio.power.set", R"({"power":-5})"),
                              cmd(7, "radio.mute", R"({"muted":true})"),
                              cmd(8, "radio.filter.set", R"({"filter":2})"),
                              cmd(9, "radio.keyspeed.set", R"({"wpm":22})"), cmd(10, "radio.tune")}));

        // Disabling releases the radio, then closes normally.
        QSignalSpy closed(lw.peer, &QWebSocket::disconnected);
        QSignalSpy unlinked(&client, &LwClient::disconnectedFromLw);
        client.setEnabled(false);
        QVERIFY(closed.wait(5000));
        QCOMPARE(lw.received.last(), cmd(11, "link.release"));
        QCOMPARE(lw.peer->closeCode(), QWebSocketProtocol::CloseCodeNormal);
        QTRY_COMPARE(unlinked.size(), 1);
        QVERIFY(!client.reconnectTimer()->isActive());
    }

    void bridgeEventsToSignals()
    {
        CompanionServer lw;
        LwClient client;
        QVERIFY(link(client, lw));
        QSignalSpy frequency(&client, &LwClient::radioFrequency);
        QSignalSpy rig(&client, &LwClient::radioConnectedChanged);
        lw.sendEvent(R"({"type":"event","event":"radio.frequency","data":{"freq_khz":7030.5,"mode":"CW"}})");
        lw.sendEvent(R"({"type":"event","event":"status","data":{"radio_freq_khz":7031}})");
        lw.sendEvent(R"({"type":"event","event":"status","data":{"clients":1}})");
        lw.sendEvent(R"({"type":"reply","id":"1","ok":true,"event":"radio.connected"})");
        lw.sendEvent("not json");
        lw.sendEvent(R"({"type":"event","event":"radio.frequency","data":{"mode":"USB"}})");
        lw.sendEvent(R"({"type":"event","event":"radio.disconnected"})");
        lw.sendEvent(R"({"type":"event","event":"radio.connected","data":{}})");
        QTRY_COMPARE(rig.size(), 2);
        QCOMPARE(rig.at(0).at(0).toBool(), false);
        QCOMPARE(rig.at(1).at(0).toBool(), true);
        QCOMPARE(frequency.size(), 3);
        // A status report keeps the mode last reported; an absent frequency reads as 0.
        const QVariantList expected[] = {
            {7030.5, QStringLiteral("CW")}, {7031.0, QStringLiteral("CW")}, {0.0, QStringLiteral("USB")}};
        for (int i = 0; i < 3; ++i)
            QCOMPARE(frequency.at(i), expected[i]);
    }

    void bridgeReconnectKeepsCounting()
    {
        CompanionServer lw;
        LwClient client;
        QVERIFY(link(client, lw));
        QSignalSpy linked(&client, &LwClient::connectedToLw);
        QSignalSpy unlinked(&client, &LwClient::disconnectedFromLw);
        client.startTune();
        QTRY_COMPARE(lw.received.size(), 2);

        lw.peer->close(); // the companion goes away
        QVERIFY(unlinked.wait(5000));
        QTimer *timer = client.findChild<QTimer *>(QStringLiteral("lwReconnectTimer"));
        QVERIFY(timer->isActive());
        QCOMPARE(timer->interval(), LwClient::k_reconnectMs);
        client.startTune(); // dropped while unlinked, using no number

        // An attempt that finds nobody is no news for the program; the timer goes on.
        const quint16 port = lw.server.serverPort();
        lw.server.close();
        QSignalSpy refused(client.findChild<QWebSocket *>(), &QWebSocket::disconnected);
        timer->setInterval(10);
        QVERIFY(refused.wait(5000));
        QCoreApplication::processEvents();
        QCOMPARE(unlinked.size(), 1);
        QVERIFY(timer->isActive());
        QVERIFY(lw.server.listen(QHostAddress::LocalHost, port));
        QVERIFY(linked.wait(5000));
        QTRY_COMPARE(lw.received.size(), 3);
        QCOMPARE(lw.received.last(), cmd(3, "link.announce", R"({"controller":"Tallis"})"));
    }
};

TALLIS_TEST_MAIN(TestRadioRouter)
#include "tst_radiorouter.moc"
