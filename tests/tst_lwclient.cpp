#include "radio/lwclient.h"
#include "support/testmain.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTimer>
#include <QWebSocket>
#include <QWebSocketServer>

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

class TestLwClient final : public QObject
{
    Q_OBJECT

private slots:
    void commandsWhileLinked();
    void eventsToSignals();
    void reconnectKeepsCounting();
    void absentCompanion();
};

void TestLwClient::commandsWhileLinked()
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
    QCOMPARE(
        lw.received,
        (QStringList{cmd(1, "link.announce", R"({"controller":"Tallis"})"),
                     cmd(2, "link.tune", R"({"freq_khz":14062.5,"mode":"CW"})"),
                     cmd(3, "radio.frequency.set", R"({"freq_khz":7030})"),
                     cmd(4, "radio.mode.set", R"({"mode":"USB"})"),
                     cmd(5, "radio.volume.set", R"({"volume":150})"),
                     cmd(6, "radio.power.set", R"({"power":-5})"), cmd(7, "radio.mute", R"({"muted":true})"),
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

void TestLwClient::eventsToSignals()
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

void TestLwClient::reconnectKeepsCounting()
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
    timer->setInterval(10);
    timer->start();
    QVERIFY(linked.wait(5000));
    QTRY_COMPARE(lw.received.size(), 3);
    QCOMPARE(lw.received.last(), cmd(3, "link.announce", R"({"controller":"Tallis"})"));
}

// Nothing to link to: an attempt at once, then the timer; no news for the program.
void TestLwClient::absentCompanion()
{
    quint16 port = 0;
    {
        CompanionServer gone;
        port = gone.server.serverPort();
    }
    LwClient client;
    client.setTarget(QStringLiteral("127.0.0.1"), port);
    QSignalSpy linked(&client, &LwClient::connectedToLw);
    QSignalSpy unlinked(&client, &LwClient::disconnectedFromLw);
    QSignalSpy refused(client.findChild<QWebSocket *>(), &QWebSocket::disconnected);
    client.setEnabled(true);
    QVERIFY(refused.wait(5000));
    QCoreApplication::processEvents();
    QCOMPARE(linked.size(), 0);
    QCOMPARE(unlinked.size(), 0);
    QVERIFY(client.reconnectTimer()->isActive());
}

TALLIS_TEST_MAIN(TestLwClient)
#include "tst_lwclient.moc"
