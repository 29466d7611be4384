#include "radio/hamlibcontroller.h"
#include "radio/hamliblink.h"
#include "radio/lwclient.h"
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
    QStringList m_log;

    QString rigReading() const
    {
        double kHz = 0;
        QString mode;
        const bool connected = m_link->readFrequencyAndWait(kHz, mode);
        return connected ? QStringLiteral("%1 %2").arg(kHz).arg(mode) : QStringLiteral("not connected");
    }

    // Each of the router's signals as one line, with the timers as they stand when it is emitted.
    void record(RadioRouter &router)
    {
        const auto note = [this](const QString &line) {
            m_log << line + (m_poll.isActive() ? QStringLiteral(" poll") : QString()) +
                         (m_reconnect.isActive() ? QStringLiteral(" reconnect") : QString());
        };
        connect(&router, &RadioRouter::rigConnected, this, [note] { note(QStringLiteral("rig on")); });
        connect(&router, &RadioRouter::rigDisconnected, this, [note] { note(QStringLiteral("rig off")); });
        connect(&router, &RadioRouter::bridgeLinked, this, [note](const QString &host, quint16 port) {
            note(QStringLiteral("linked %1:%2").arg(host).arg(port));
        });
        connect(&router, &RadioRouter::bridgeUnlinked, this, [note] { note(QStringLiteral("unlinked")); });
        connect(&router, &RadioRouter::bridgeRigConnectionChanged, this,
                [note](bool on) { note(QStringLiteral("bridge rig %1").arg(on)); });
        connect(&router, &RadioRouter::frequencyChanged, this,
                [note](double kHz, const QString &mode, RadioPath path) {
                    note(QStringLiteral("%1 %2 by %3")
                             .arg(kHz)
                             .arg(mode,
                                  path == RadioPath::Rig ? QStringLiteral("rig") : QStringLiteral("bridge")));
                });
        connect(&router, &RadioRouter::tuned, this, [note](double kHz, bool viaBridge) {
            note(QStringLiteral("tuned %1 %2").arg(kHz).arg(viaBridge));
        });
        connect(&router, &RadioRouter::atuCycleStarted, this,
                [note](double kHz) { note(QStringLiteral("atu %1").arg(kHz)); });
    }

    // Opens the dummy rig at 7030 kHz CW and waits for the router to hear of it and its first poll.
    bool openRig(RadioRouter &router)
    {
        m_poll.setInterval(3600000); // only the poll the router asks for on connecting
        QSignalSpy polled(&router, &RadioRouter::frequencyChanged);
        if (!m_link->connectRigAndWait(RigConfig()))
            return false;
        m_link->tune(7030, QStringLiteral("CW")); // queued ahead of that poll
        return polled.wait(5000);
    }

private slots:
    void init()
    {
        m_log.clear();
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

    void reportsBecomeSignals_data()
    {
        QTest::addColumn<bool>("port");
        QTest::addColumn<bool>("bridgeEnabled");
        QTest::newRow("port, bridge on") << true << true;
        QTest::newRow("port, bridge off") << true << false;
        QTest::newRow("no port, bridge on") << false << true;
    }

    // The rig link's and the bridge's signals alone drive the router's state, timers and signals.
    void reportsBecomeSignals()
    {
        QFETCH(bool, port);
        QFETCH(bool, bridgeEnabled);
        RadioRouter router(m_link.get(), &m_poll, &m_reconnect);
        RigConfig config;
        config.port = port ? QStringLiteral("/dev/ttyUSB0") : QString();
        router.setRigConfig(config);
        CompanionServer lw;
        LwClient client;
        router.setBridge(&client);
        router.setBridgeEnabled(bridgeEnabled);
        record(router);
        QCOMPARE(m_poll.interval(), RadioRouter::k_pollMs);
        QCOMPARE(m_reconnect.interval(), RadioRouter::k_reconnectMs);
        QVERIFY(openRig(router));

        // A mode change re-tunes the rig at the last frequency, unless the program asked.
        router.retuneMode(QStringLiteral("USB"), TuneOrigin::Program);
        QCOMPARE(rigReading(), QStringLiteral("7030 CW"));
        router.retuneMode(QStringLiteral("USB"), TuneOrigin::Api);
        QCOMPARE(rigReading(), QStringLiteral("7030 USB"));

        QVERIFY(link(client, lw));
        QCOMPARE(router.isBridgeActive(), bridgeEnabled);
        QSignalSpy frequency(&router, &RadioRouter::frequencyChanged);
        lw.sendEvent(R"({"type":"event","event":"radio.disconnected"})");
        lw.sendEvent(R"({"type":"event","event":"radio.frequency","data":{"freq_khz":14062.5,"mode":"CW"}})");
        QVERIFY(frequency.wait(5000));
        QSignalSpy unlinked(&router, &RadioRouter::bridgeUnlinked);
        client.setEnabled(false);
        QTRY_COMPARE(unlinked.size(), 1);
        QSignalSpy rigOff(&router, &RadioRouter::rigDisconnected);
        m_link->disconnectRigAndWait();
        QVERIFY(rigOff.wait(5000));
        QVERIFY(!router.isRigConnected());
        QVERIFY(link(client, lw));
        lw.sendEvent(R"({"type":"event","event":"radio.frequency","data":{"mode":"LSB"}})");
        lw.peer->close();
        QTRY_COMPARE(unlinked.size(), 2);

        const QString idle = port ? QStringLiteral(" reconnect") : QString();
        const QString linked = QStringLiteral("linked 127.0.0.1:%1").arg(lw.server.serverPort());
        QStringList expected{QStringLiteral("rig on poll"), QStringLiteral("7030 CW by rig poll"), linked};
        if (bridgeEnabled)
            expected << QStringLiteral("bridge rig 0");
        expected << QStringLiteral("14062.5 CW by bridge") << QStringLiteral("unlinked poll")
                 << QStringLiteral("rig off") + idle << linked << QStringLiteral("0 LSB by bridge")
                 << QStringLiteral("unlinked") + idle;
        QCOMPARE(m_log, expected);
        // What the API reads is what was last reported: the bridge's 0 kHz is taken as it comes.
        QCOMPARE(router.lastFreqKhz(), 0.0);
        QCOMPARE(router.lastMode(), QStringLiteral("LSB"));
    }

    void tuneGoesWhereItsOriginAllows_data()
    {
        QTest::addColumn<int>("origin");
        QTest::addColumn<bool>("bridgeEnabled");
        QTest::addColumn<double>("kHz");
        QTest::addColumn<bool>("autoAtu");
        QTest::addColumn<QString>("reaches");
        const int op = int(TuneOrigin::Operator), api = int(TuneOrigin::Api), prog = int(TuneOrigin::Program);
        QTest::newRow("operator, rig") << op << false << 14074.0 << true << QStringLiteral("rig");
        QTest::newRow("operator, bridge") << op << true << 14074.0 << true << QStringLiteral("bridge");
        QTest::newRow("api, rig") << api << false << 14074.0 << false << QStringLiteral("rig");
        QTest::newRow("api, bridge") << api << true << 14074.0 << false << QStringLiteral("bridge");
        QTest::newRow("program, rig") << prog << false << 14074.0 << true << QString();
        QTest::newRow("program, bridge") << prog << true << 14074.0 << true << QString();
        QTest::newRow("operator, no frequency") << op << true << 0.0 << true << QString();
    }

    void tuneGoesWhereItsOriginAllows()
    {
        QFETCH(int, origin);
        QFETCH(bool, bridgeEnabled);
        QFETCH(double, kHz);
        QFETCH(bool, autoAtu);
        QFETCH(QString, reaches);
        RadioRouter router(m_link.get(), &m_poll, &m_reconnect);
        CompanionServer lw;
        LwClient client;
        router.setBridge(&client);
        router.setBridgeEnabled(bridgeEnabled);
        QVERIFY(openRig(router)); // the dummy rig has a tuner
        QVERIFY(link(client, lw));
        record(router);

        QCOMPARE(router.tune(kHz, QStringLiteral("USB"), TuneOrigin(origin), autoAtu), !reaches.isEmpty());
        router.startTune();    // and the API's tuner cycle, by the same path
        client.setMute(false); // a marker behind anything the bridge was sent
        QStringList sent{cmd(1, "link.announce", R"({"controller":"Tallis"})")};
        const bool viaBridge = reaches == QLatin1String("bridge");
        if (viaBridge) {
            sent << cmd(2, "link.tune", R"({"freq_khz":14074,"mode":"USB"})");
            if (autoAtu)
                sent << cmd(3, "radio.tune");
        }
        if (bridgeEnabled)
            sent << cmd(int(sent.size()) + 1, "radio.tune");
        sent << cmd(int(sent.size()) + 1, "radio.mute", R"({"muted":false})");
        QTRY_COMPARE(lw.received, sent);
        QCOMPARE(rigReading(),
                 reaches == QLatin1String("rig") ? QStringLiteral("14074 USB") : QStringLiteral("7030 CW"));
        QStringList signalled;
        if (!reaches.isEmpty())
            signalled << QStringLiteral("tuned 14074 %1").arg(viaBridge);
        if (!reaches.isEmpty() && autoAtu)
            signalled << QStringLiteral("atu 14074");
        QCOMPARE(m_log, signalled);
    }

    // Steps: "O14074" an operator's selection, "A…" an API tune, "T" the "Tune ATU" button.
    void tunerCyclesOnlyWhenNeeded_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("cycles");
        QTest::newRow("the first selection") << QStringLiteral("O14074") << QStringLiteral("14074");
        QTest::newRow("within 2%") << QStringLiteral("O14074 O14300") << QStringLiteral("14074");
        QTest::newRow("over 2%") << QStringLiteral("O7000 O7150") << QStringLiteral("7000 7150");
        QTest::newRow("another band") << QStringLiteral("O14074 O18100") << QStringLiteral("14074 18100");
        QTest::newRow("an API tune never") << QStringLiteral("A14074 A21074") << QString();
        QTest::newRow("Tune ATU counts") << QStringLiteral("A14074 T O14100") << QString();
    }

    void tunerCyclesOnlyWhenNeeded()
    {
        RadioRouter router(m_link.get(), &m_poll, &m_reconnect);
        QVERIFY(openRig(router));
        QStringList cycles;
        connect(&router, &RadioRouter::atuCycleStarted, this,
                [&cycles](double kHz) { cycles << QString::number(kHz); });
        for (const QString &step : fetched<QString>("steps").split(QLatin1Char(' '))) {
            const double kHz = step.mid(1).toDouble();
            if (step == QLatin1String("T")) {
                router.startRigTune();
                continue;
            }
            QSignalSpy polled(&router, &RadioRouter::frequencyChanged);
            router.tune(kHz, QStringLiteral("CW"),
                        step[0] == QLatin1Char('O') ? TuneOrigin::Operator : TuneOrigin::Api, true);
            m_link->requestPoll();
            QVERIFY(polled.wait(5000));
        }
        QTEST(cycles.join(QLatin1Char(' ')), "cycles");
    }

    void modeForTheSpot_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("rig");
        QTest::newRow("FT8") << QStringLiteral("FT8") << QStringLiteral("14074 PKT-U");
        QTest::newRow("PSK31") << QStringLiteral("psk31") << QStringLiteral("14074 PKT-U");
        QTest::newRow("DIGI") << QStringLiteral("DIGI") << QStringLiteral("14074 PKT-U");
        QTest::newRow("RTTY") << QStringLiteral("RTTY") << QStringLiteral("14074 RTTY");
        QTest::newRow("CW") << QStringLiteral("CW") << QStringLiteral("14074 CW");
        QTest::newRow("unknown keeps the mode") << QStringLiteral("OLIVIA") << QStringLiteral("14074 CW");
    }

    void modeForTheSpot()
    {
        RadioRouter router(m_link.get(), &m_poll, &m_reconnect);
        QVERIFY(openRig(router));
        QVERIFY(router.tune(14074, fetched<QString>("mode"), TuneOrigin::Operator));
        QTEST(rigReading(), "rig");
    }

    // The operator's disconnect holds against the reconnect timer; a dropped link does not.
    void disconnectHolds()
    {
        RadioRouter router(m_link.get(), &m_poll, &m_reconnect);
        RigConfig config;
        config.port = QStringLiteral("dummy");
        router.setRigConfig(config);
        QVERIFY(openRig(router));
        QSignalSpy off(&router, &RadioRouter::rigDisconnected);
        router.disconnectRig();
        QVERIFY(off.wait(5000));
        QVERIFY(!m_reconnect.isActive());
        QVERIFY(QMetaObject::invokeMethod(&m_reconnect, "timeout")); // a tick all the same
        QCOMPARE(rigReading(), QStringLiteral("not connected"));
        QSignalSpy on(&router, &RadioRouter::rigConnected);
        router.connectRig();
        QVERIFY(on.wait(5000));
        m_link->disconnectRigAndWait(); // dropped by itself
        QTRY_VERIFY(m_reconnect.isActive());
        router.disconnectRig();
        router.releaseDisconnectHold(); // the set-up dialog's OK
        QTRY_VERIFY(m_reconnect.isActive());
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
