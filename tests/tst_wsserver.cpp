#include "api/apicommands.h"
#include "api/jsonwriter.h"
#include "api/wsserver.h"
#include "buildinfo.h"
#include "support/apiclient.h"
#include "support/fakeapibackend.h"
#include "support/testmain.h"

#include <QJsonArray>
#include <QTcpSocket>
#include <QTimer>
#include <QWebSocketServer>

#include <cmath>
#include <memory>
#include <vector>

namespace {

QString compact(const QJsonObject &o)
{
    return QString::fromUtf8(QJsonDocument(o).toJson(QJsonDocument::Compact));
}

QList<StationSpot> spots(int n)
{
    QList<StationSpot> list;
    for (int i = 0; i < n; ++i) {
        StationSpot s;
        s.callsign = QStringLiteral("K%1ABC").arg(i);
        s.frequencyKhz = 14062.0 + i;
        list << s;
    }
    return list;
}

} // namespace

// The local API: the server, its command table and its JSON writer. Plain literals where a raw
// one would hold a backslash or an odd number of quotes: moc misreads such raw strings.
class TestWsServer final : public QObject
{
    Q_OBJECT

    std::unique_ptr<FakeApiBackend> m_backend;
    std::unique_ptr<WsServer> m_server;

    // A WebSocket client that reads only 4 KiB unless told otherwise: its
    // handshake by hand, then the greeting.
    void openRawClient(QTcpSocket &raw)
    {
        raw.setReadBufferSize(4096);
        raw.connectToHost(QHostAddress::LocalHost, m_server->port());
        QVERIFY(raw.waitForConnected(5000));
        raw.write("GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                  "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n");
        QTRY_VERIFY(raw.peek(4096).contains("\"hello\""));
    }

private slots:
    void init()
    {
        m_backend = std::make_unique<FakeApiBackend>();
        m_server = std::make_unique<WsServer>(m_backend.get());
        QVERIFY(m_server->listen(0, QStringLiteral("127.0.0.1")));
    }

    void cleanup()
    {
        m_server.reset();
        m_backend.reset();
    }

    void greetingThenPushes()
    {
        const auto *timer = m_server->findChild<QTimer *>(QStringLiteral("statusTimer"));
        QVERIFY(timer->isActive());
        QCOMPARE(timer->interval(), 1000);
        // Events raised while the client is being accepted must not overtake "hello".
        connect(m_server->findChild<QWebSocketServer *>(), &QWebSocketServer::newConnection, this, [this] {
            m_server->pushStatus();
            m_server->pushError(QStringLiteral("early"));
        });
        ApiClient c;
        QVERIFY(c.connectTo(m_server->port()));
        QTRY_COMPARE(c.events.size(), 1);
        QCOMPARE(compact(c.events.at(0)),
                 QStringLiteral(
                     "{\"data\":{\"port\":%1,\"version\":\"%2\"},\"event\":\"hello\",\"type\":\"event\"}")
                     .arg(m_server->port())
                     .arg(QLatin1String(BuildInfo::k_version)));
        m_server->pushStatus();
        QTRY_COMPARE(c.eventData(QStringLiteral("status")).value(0).value(QLatin1String("ws_clients")), 1);
        m_server->pushSpotStatusChanged(QStringLiteral("K1|R|7"), StationSpot::Contacted);
        m_server->pushRadioConnected();
        m_server->pushRadioDisconnected();
        m_server->pushRadioFrequency(7030.5, QStringLiteral("LSB"));
        m_server->pushFilterChanged();
        m_server->pushConfigChanged();
        m_server->pushLwConnected(QStringLiteral("127.0.0.1"), 2104);
        m_server->pushLwDisconnected();
        m_server->pushError(QStringLiteral("oops"));
        QTRY_COMPARE(c.events.size(), 11);
        QStringList got;
        for (qsizetype i = 2; i < c.events.size(); ++i)
            got << c.events.at(i).value(QLatin1String("event")).toString() + QLatin1Char(' ') +
                       compact(c.events.at(i).value(QLatin1String("data")).toObject());
        QCOMPARE(got.join(QLatin1Char('\n')),
                 QStringLiteral(R"(spot.status.changed {"key":"K1|R|7","status":2}
radio.connected {"freq_khz":14062.5,"mode":"CW"}
radio.disconnected {}
radio.frequency {"freq_khz":7030.5,"mode":"LSB"}
filter.changed {}
config.changed {}
lw.connected {"host":"127.0.0.1","port":2104}
lw.disconnected {}
error {"message":"oops"})"));
    }

    void envelopes_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("error"); // empty: a successful reply
        const char *invalid = R"(invalid message: expected {type:"cmd",cmd:"..."})";
        const auto row = [](const char *name, const char *message, const char *id, const char *error) {
            QTest::newRow(name) << QByteArray(message) << QString::fromLatin1(id)
                                << QString::fromLatin1(error);
        };
        row("string id", "{\"type\":\"cmd\",\"cmd\":\"status.get\",\"id\":\"a\\\"1\"}", "a\"1", "");
        row("number id", R"({"type":"cmd","cmd":"status.get","id":7})", "", "");
        row("no type", R"({"cmd":"status.get","id":"x"})", "x", invalid);
        row("empty cmd", R"({"type":"cmd","cmd":"","id":"e"})", "e", invalid);
        row("not JSON", "status.get please", "", invalid);
        row("array", R"([{"type":"cmd","cmd":"status.get"}])", "", invalid);
        row("unknown", R"({"type":"cmd","cmd":"radio.explode","id":"u"})", "u",
            "unknown command: radio.explode");
        row("handler error", R"({"type":"cmd","cmd":"spot.tune","id":"t","data":[1]})", "t", "missing key");
    }

    void envelopes()
    {
        QFETCH(QString, id);
        QFETCH(QString, error);
        ApiClient c;
        QVERIFY(c.connectTo(m_server->port()));
        c.send(fetched<QByteArray>("message"));
        QTRY_COMPARE(c.replies.size(), 1);
        const QJsonObject reply = c.replies.at(0);
        QCOMPARE(reply.value(QLatin1String("id")), QJsonValue(id));
        QCOMPARE(reply.value(QLatin1String("ok")).toBool(), error.isEmpty());
        QCOMPARE(reply.value(QLatin1String("error")).toString(), error);
        QCOMPARE(reply.contains(QLatin1String("data")), error.isEmpty());
        // The connection survives whatever was sent.
        c.send(R"({"type":"cmd","cmd":"version.get","id":"next"})");
        QTRY_COMPARE(c.replies.size(), 2);
        QCOMPARE(c.replies.at(1).value(QLatin1String("id")).toString(), QStringLiteral("next"));
    }

    // The first update goes out at once with the state of that moment; those
    // that follow within the hold time become one, carrying the latest state.
    // Without clients nothing is built at all.
    void spotsUpdated()
    {
        const auto *hold = m_server->findChild<QTimer *>(QStringLiteral("spotsUpdateTimer"));
        QCOMPARE(hold->interval(), 250);
        ApiClient c;
        QVERIFY(c.connectTo(m_server->port()));
        QTRY_COMPARE(c.events.size(), 1);
        for (int n = 1; n <= 3; ++n) {
            m_backend->visible = spots(n);
            m_server->pushSpotsUpdated();
        }
        QTRY_VERIFY(!hold->isActive());
        QTRY_COMPARE(c.eventData(QStringLiteral("spots.updated")).size(), 2);
        const QList<QJsonObject> updates = c.eventData(QStringLiteral("spots.updated"));
        QCOMPARE(updates.at(0).value(QLatin1String("count")).toInt(), 1);
        QCOMPARE(updates.at(1).value(QLatin1String("count")).toInt(), 3);
        QCOMPARE(updates.at(1).value(QLatin1String("spots")).toArray().at(2)[QLatin1String("key")].toString(),
                 QStringLiteral("K2ABC||14064"));
        m_backend->visible = spots(4); // after a quiet spell: at once again
        m_server->pushSpotsUpdated();
        m_backend->visible = spots(5);
        QTRY_COMPARE(c.eventData(QStringLiteral("spots.updated")).value(2).value(QLatin1String("count")), 4);
        // Once the last client has gone, neither a merge nor a heartbeat builds anything.
        c.socket.close();
        QTRY_COMPARE(m_server->clientCount(), 0);
        m_backend->reads = 0;
        m_server->pushStatus();
        m_server->pushSpotsUpdated();
        m_server->pushRadioConnected();
        QCOMPARE(m_backend->reads, 0);
    }

    // A table of megabytes whose texts are all multi-byte characters reaches a Qt client whole: no
    // character is cut between two frames, which that client would take for invalid UTF-8.
    void largeTableOfNonAsciiTextArrivesWhole()
    {
        QList<StationSpot> table = spots(3000);
        for (StationSpot &spot : table)
            spot.comments = QString::fromUtf8("·—é").repeated(60 + int(spot.frequencyKhz) % 7);
        m_backend->visible = table;
        ApiClient c;
        QVERIFY(c.connectTo(m_server->port()));
        QTRY_COMPARE(c.events.size(), 1);
        m_server->pushSpotsUpdated();
        QTRY_COMPARE_WITH_TIMEOUT(c.eventData(QStringLiteral("spots.updated")).size(), 1, 10000);
        QCOMPARE(c.eventData(QStringLiteral("spots.updated")).first().value(QLatin1String("count")).toInt(),
                 3000);
        QCOMPARE(c.socket.state(), QAbstractSocket::ConnectedState);
    }

    void originRule_data()
    {
        QTest::addColumn<QString>("origin");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("program, no origin") << QString() << true;
        QTest::newRow("localhost page") << QStringLiteral("http://localhost:8000") << true;
        QTest::newRow("loopback https") << QStringLiteral("https://127.0.0.1") << true;
        QTest::newRow("IPv6 loopback") << QStringLiteral("http://[::1]:3000") << true;
        QTest::newRow("evil site") << QStringLiteral("https://evil.example") << false;
        QTest::newRow("lookalike host") << QStringLiteral("http://localhost.evil.example") << false;
        QTest::newRow("opaque origin") << QStringLiteral("null") << false;
        QTest::newRow("other scheme") << QStringLiteral("ftp://localhost") << false;
    }

    void originRule()
    {
        QFETCH(bool, accepted);
        ApiClient c(fetched<QString>("origin"));
        QSignalSpy connected(&c.socket, &QWebSocket::connected);
        QSignalSpy ended(&c.socket, &QWebSocket::disconnected);
        c.open(m_server->port());
        QTRY_VERIFY(connected.size() + ended.size() > 0);
        QCOMPARE(connected.size(), accepted ? 1 : 0);
        QTRY_COMPARE(m_server->clientCount(), accepted ? 1 : 0);
    }

    void messageCap()
    {
        ApiClient c;
        QVERIFY(c.connectTo(m_server->port()));
        const QByteArray head = "{\"type\":\"cmd\",\"cmd\":\"status.get\",\"id\":\"";
        const qsizetype padding = WsServer::k_maxIncomingMessageBytes - head.size() - 2;
        c.send(head + QByteArray(padding, 'x') + "\"}");
        QTRY_COMPARE(c.replies.size(), 1);
        QCOMPARE(c.replies.at(0).value(QLatin1String("id")).toString().size(), padding);
        QSignalSpy ended(&c.socket, &QWebSocket::disconnected);
        c.send(head + QByteArray(padding + 1, 'x') + "\"}");
        QVERIFY(ended.wait(5000));
        QCOMPARE(c.socket.closeCode(), QWebSocketProtocol::CloseCodeTooMuchData);
        QCOMPARE(c.replies.size(), 1);
    }

    // A client that never reads is dropped once its backlog passes the limit, not before.
    void stalledReaderDropped()
    {
        QTcpSocket raw;
        openRawClient(raw);
        QVERIFY(!QTest::currentTestFailed());
        const QJsonObject megabyte{{QStringLiteral("blob"), QString(1024 * 1024, QLatin1Char('x'))}};
        int sent = 0;
        for (; sent < 64 && m_server->clientCount() == 1; ++sent) {
            m_server->broadcast(QStringLiteral("bulk"), megabyte);
            QCoreApplication::processEvents();
        }
        QCOMPARE(m_server->clientCount(), 0);
        QVERIFY2(sent > 16, qPrintable(QString::number(sent)));
    }

    // Tables are not queued one behind another for clients that are behind:
    // they skip them, and once they read again the newest reaches them; nor
    // do they hold up a client that reads. A big table holds the next one back
    // for longer.
    void slowReadersGetTheNewestTable()
    {
        QTcpSocket stalled[2];
        for (QTcpSocket &raw : stalled)
            openRawClient(raw);
        QVERIFY(!QTest::currentTestFailed());
        ApiClient reader;
        QVERIFY(reader.connectTo(m_server->port()));
        QTRY_COMPARE(reader.events.size(), 1);
        auto *hold = m_server->findChild<QTimer *>(QStringLiteral("spotsUpdateTimer"));
        m_backend->visible = spots(8000); // about 2 MB of JSON
        for (int n = 0; n < 40; ++n) {
            m_backend->visible.last().comments = QStringLiteral("table %1").arg(n);
            hold->stop(); // as if each merge came after the hold
            m_server->pushSpotsUpdated();
            QCoreApplication::processEvents();
        }
        const auto lastComment = [&reader] {
            const QList<QJsonObject> tables = reader.eventData(QStringLiteral("spots.updated"));
            const QJsonArray table =
                tables.isEmpty() ? QJsonArray() : tables.last()[QLatin1String("spots")].toArray();
            return table.isEmpty() ? QString() : table.last()[QLatin1String("comments")].toString();
        };
        QTRY_COMPARE(lastComment(), QStringLiteral("table 39"));
        QCOMPARE(m_server->clientCount(), 3); // 80 MB queued would have dropped the stalled ones
        QVERIFY2(hold->interval() > WsServer::k_spotsUpdateHoldMs,
                 qPrintable(QString::number(hold->interval())));
        // A mark while they are behind: the table they are due is built after the mark.
        m_backend->visible.last().comments = QStringLiteral("after the mark");
        m_server->pushSpotStatusChanged(FakeApiBackend::k_knownKey, StationSpot::Heard);
        QTcpSocket &raw = stalled[0];
        raw.setReadBufferSize(0);
        QByteArray received;
        QTRY_VERIFY_WITH_TIMEOUT((received += raw.readAll()).contains("\"comments\":\"after the mark\""),
                                 10000);
        QVERIFY(!received.contains("table 39"));
        QVERIFY(received.count("\"spots\":") < 10);
    }

    // 64 programs at once, a burst of 1,024 commands: every reply arrives, each
    // client's in the order it asked; the 65th client is turned away.
    void burstFromMaxClients()
    {
        m_backend->visible = spots(20);
        std::vector<std::unique_ptr<ApiClient>> clients;
        for (int i = 0; i < WsServer::k_maxClients; ++i) {
            clients.push_back(std::make_unique<ApiClient>());
            QVERIFY(clients.back()->connectTo(m_server->port()));
        }
        ApiClient extra;
        QSignalSpy refused(&extra.socket, &QWebSocket::disconnected);
        extra.open(m_server->port());
        QVERIFY(refused.wait(5000));
        QCOMPARE(extra.socket.closeCode(), QWebSocketProtocol::CloseCodePolicyViolated);
        QCOMPARE(m_server->clientCount(), WsServer::k_maxClients);
        const char *commands[] = {"status.get", "spots.get", "radio.get", "no.such"};
        constexpr int rounds = 16;
        for (int round = 0; round < rounds; ++round) {
            for (size_t i = 0; i < clients.size(); ++i) {
                clients[i]->send(QStringLiteral(R"({"type":"cmd","cmd":"%1","id":"%2"})")
                                     .arg(QLatin1String(commands[(i + round) % 4]))
                                     .arg(round)
                                     .toUtf8());
            }
        }
        for (size_t i = 0; i < clients.size(); ++i) {
            QTRY_COMPARE_WITH_TIMEOUT(clients[i]->replies.size(), rounds, 30000);
            for (int round = 0; round < rounds; ++round) {
                const QJsonObject reply = clients[i]->replies.at(round);
                QCOMPARE(reply.value(QLatin1String("id")).toString(), QString::number(round));
                QCOMPARE(reply.value(QLatin1String("ok")).toBool(), (i + round) % 4 != 3);
            }
        }
    }

    void stopAndListen()
    {
        ApiClient c;
        QVERIFY(c.connectTo(m_server->port()));
        QSignalSpy ended(&c.socket, &QWebSocket::disconnected);
        m_server->stopListening();
        QCOMPARE(m_server->clientCount(), 0);
        QVERIFY(ended.wait(5000));
        QCOMPARE(c.socket.closeCode(), QWebSocketProtocol::CloseCodeNormal);
        QVERIFY(!m_server->listen(0, QStringLiteral("not an address")));
        QVERIFY(!m_server->isListening());
        QVERIFY(m_server->listen(0, QStringLiteral("localhost")));
    }

    // A command, its "data", whether the rig is connected; then what comes back,
    // "!" and the error text or the reply's data as sent, and the calls made.
    void commands_data()
    {
        QTest::addColumn<QString>("cmd");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<bool>("rig");
        QTest::addColumn<QString>("outcome");
        QTest::addColumn<QString>("calls");
        const auto row = [](const char *cmd, const char *data, bool rig, const char *outcome,
                            const char *calls = "") {
            QTest::addRow("%s %s%s", cmd, data, rig ? " rig" : "")
                << QString::fromLatin1(cmd) << QByteArray(data) << rig << QString::fromUtf8(outcome)
                << QString::fromUtf8(calls);
        };
        row("status.get", "{}", true,
            R"({"radio_connected":true,"radio_freq_khz":14062.5,"radio_mode":"CW","callsign":"N0CALL",)"
            R"("visible_spots":0,"total_spots":0,"ws_port":2103,"ws_clients":3})");
        row("config.get", "{}", false, R"({"callsign":"N0CALL","wsPort":2103})");
        row("config.set", R"({"refreshIntervalSecs":10})", false, "{}",
            R"(config {"refreshIntervalSecs":60})");
        row("config.set", R"({"maxAgeMins":0,"refreshIntervalSecs":7200,"x":1})", false, "{}",
            R"(config {"maxAgeMins":1,"refreshIntervalSecs":7200})");
        row("config.set", R"({"maxAgeMins":900,"refreshIntervalSecs":"90"})", false, "{}",
            R"(config {"maxAgeMins":720})");
        row("spots.get", "{}", false, R"({"spots":[],"count":0})");
        row("spots.get_all", "{}", false, R"({"spots":[],"count":0})");
        row("spot.tune", "{}", true, "!missing key");
        row("spot.tune", R"({"key":"X||1"})", true, "!spot not found or radio not connected", "tune X||1");
        row("spot.tune", R"({"key":"K1|P|7"})", false, "{}", "tune K1|P|7");
        row("spot.status.set", R"({"status":1})", false, "!missing key");
        row("spot.status.set", R"({"key":"K1|P|7"})", false,
            "!missing status (0=Unknown 1=Heard 2=Contacted 3=NotHeard)");
        row("spot.status.set", R"({"key":"K1|P|7","status":7})", false, "!status must be 0-3");
        row("spot.status.set", R"({"key":"K1|P|7","status":-1})", false, "!status must be 0-3");
        row("spot.status.set", R"({"key":"A|B|1","status":"2"})", false, "{}", "status A|B|1 0");
        row("spot.status.set", R"({"key":"A|B|1","status":3})", false, "{}", "status A|B|1 3");
        row("spot.log", R"({"key":""})", false, "!missing key");
        row("spot.log", R"({"key":"X||1"})", false, "!spot not found", "log X||1");
        row("spot.log", R"({"key":"K1|P|7"})", false, "{}", "log K1|P|7");
        row("filter.get", "{}", false, R"({"sota":true,"status_mode":0})");
        row("filter.set", R"({"dx":false,"search":"K1"})", false, "{}",
            R"(filter {"dx":false,"search":"K1"})");
        row("radio.get", "{}", false, R"({"connected":false,"freq_khz":14062.5,"mode":"CW"})");
        row("radio.connect", "{}", false, "{}", "connect");
        row("radio.disconnect", "{}", true, "{}", "disconnect");
        row("radio.frequency.set", "{}", true, "!missing freq_khz");
        row("radio.frequency.set", R"({"freq_khz":"7030"})", true, "!missing freq_khz");
        row("radio.frequency.set", R"({"freq_khz":7030})", false, "!radio not connected");
        row("radio.frequency.set", R"({"freq_khz":7030.25})", true, R"({"freq_khz":7030.25})",
            "freq 7030.25");
        row("radio.mode.set", "{}", true, "!missing mode");
        row("radio.mode.set", R"({"mode":"USB"})", false, "!radio not connected");
        row("radio.mode.set", R"({"mode":"USB"})", true, "{}", "mode USB");
        row("radio.volume.set", R"({"volume":"50"})", false, "!missing volume (0-100)");
        row("radio.volume.set", R"({"volume":150})", false, "{}", "volume 150");
        row("radio.power.set", "{}", false, "!missing power (0-100)");
        row("radio.power.set", R"({"power":5})", false, "{}", "power 5");
        row("radio.mute", "{}", false, "{}", "mute 0");
        row("radio.mute", R"({"muted":true})", false, "{}", "mute 1");
        row("radio.filter.set", "{}", false, "!missing filter (0=narrow 1=normal 2=wide)");
        row("radio.filter.set", R"({"filter":2})", false, "{}", "filter 2");
        row("radio.keyspeed.set", "{}", false, "!missing wpm");
        row("radio.keyspeed.set", R"({"wpm":25})", false, "{}", "wpm 25");
        row("radio.tune", "{}", false, "{}", "starttune");
        row("refresh", "{}", false, "{}", "refresh");
        const QByteArray version = QStringLiteral(R"({"version":"%1","app":"Tallis","build_time":%2})")
                                       .arg(QLatin1String(BuildInfo::k_version))
                                       .arg(BuildInfo::k_buildTime)
                                       .toUtf8();
        row("version.get", "{}", false, version.constData());
    }

    void commands()
    {
        FakeApiBackend backend;
        backend.radioConnected = fetched<bool>("rig");
        const ApiCommand handler = apiCommandTable().value(fetched<QString>("cmd"));
        QVERIFY(handler);
        QString result;
        try {
            result = QString::fromUtf8(handler(
                ApiContext{backend, 2103, 3}, QJsonDocument::fromJson(fetched<QByteArray>("data")).object()));
        } catch (const QString &error) {
            result = QLatin1Char('!') + error;
        }
        QTEST(result, "outcome");
        QTEST(backend.calls.join(QLatin1Char(';')), "calls");
    }

    void spotObject_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("kHz");
        QTest::addColumn<bool>("located");
        QTest::addColumn<QDateTime>("time");
        QTest::addRow("plain") << QStringLiteral("Brightwater Forest") << 14062.7 << true
                               << QDateTime(QDate(2024, 2, 29), QTime(23, 59, 58, 999), Qt::UTC);
        QTest::addRow("escapes") << QStringLiteral("a\"b\\c/\n\r\t\b\f\x01\x1f end") << 0.1 + 0.2 << false
                                 << QDateTime();
        QTest::addRow("non-ASCII") << QStringLiteral("Zürich – 東京 \U0001F3D4") << 7032.999 << true
                                   << QDateTime::fromMSecsSinceEpoch(-1, Qt::UTC);
        QTest::addRow("tiny and negative")
            << QStringLiteral("x") << -1.0e-7 << true
            << QDateTime(QDate(2100, 3, 1), QTime(7, 5), Qt::OffsetFromUTC, 7200);
    }

    // The writer's output read back by Qt's parser: every value intact, keys in
    // the documented order, position only when known.
    void spotObject()
    {
        QFETCH(QString, text);
        QFETCH(double, kHz);
        QFETCH(bool, located);
        QFETCH(QDateTime, time);
        StationSpot s;
        s.source = StationSpot::WWFF;
        s.callsign = QStringLiteral("K1ABC/P");
        s.reference = s.referenceName = s.comments = text;
        s.frequencyKhz = kHz;
        s.spotTime = time;
        s.status = StationSpot::NotHeard;
        s.hasLocation = located;
        s.lat = -33.868820;
        s.lon = 151.209296;
        JsonWriter out;
        out.beginArray();
        ApiJson::spotToJson(out, s);
        out.endArray();
        const QByteArray json = out.take();
        const QJsonObject o = QJsonDocument::fromJson(json).array().at(0).toObject();
        const auto value = [&o](const char *key) { return o.value(QLatin1String(key)); };
        QCOMPARE(value("key").toString(), s.key());
        QCOMPARE(value("source").toString(), QStringLiteral("WWFF"));
        for (const char *key : {"reference", "reference_name", "comments"})
            QCOMPARE(value(key).toString(), text);
        QCOMPARE(value("freq_khz").toDouble(), kHz); // exact: shortest round-trip form
        QCOMPARE(value("spot_time").toString(), time.toString(Qt::ISODate)); // UTC has a fast path of its own
        QCOMPARE(value("status").toInt(), 3);
        QCOMPARE(value("status_str").toString(), QStringLiteral("Not Heard"));
        QCOMPARE(value("lon"), located ? QJsonValue(s.lon) : QJsonValue(QJsonValue::Undefined));
        const char *order[] = {"key",      "source", "callsign",   "reference", "reference_name",
                               "freq_khz", "mode",   "spot_time",  "spotter",   "comments",
                               "grid",     "status", "status_str", "lat",       "lon"};
        QCOMPARE(o.size(), located ? 15 : 13);
        qsizetype at = 0;
        for (qsizetype i = 0; i < o.size(); ++i) {
            const qsizetype found = json.indexOf(QByteArray(QByteArray("\"") + order[i] + "\":"), at);
            QVERIFY2(found > at, order[i]);
            at = found;
        }
    }

    // JSON has no NaN and UTF-8 no lone surrogate: both still give a parseable document.
    void writerEdgeCases()
    {
        JsonWriter out;
        out.beginArray();
        out.number(std::nan(""));
        out.number(HUGE_VAL);
        out.string(QString(QString(QChar(0xd800)) + QLatin1Char('x')));
        out.endArray();
        QCOMPARE(out.take(), QByteArray("[null,null,\"\xef\xbf\xbdx\"]"));
    }
};

TALLIS_TEST_MAIN(TestWsServer)
#include "tst_wsserver.moc"
