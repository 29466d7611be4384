#include "api/wsserver.h"

#include "api/apibackend.h"
#include "api/jsonwriter.h"
#include "api/spotdeltatracker.h"
#include "buildinfo.h"

#include <QHostAddress>
#include <QJsonDocument>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <QWebSocket>
#include <QWebSocketCorsAuthenticator>
#include <QWebSocketServer>

#include <algorithm>

namespace {

const QString k_invalidMessage = QStringLiteral("invalid message: expected {type:\"cmd\",cmd:\"...\"}");

QString text(const QByteArray &utf8)
{
    return QString::fromUtf8(utf8);
}

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

WsServer::WsServer(ApiBackend *backend, QObject *parent)
    : QObject(parent)
    , m_backend(backend)
    , m_server(new QWebSocketServer(QStringLiteral("Tallis"), QWebSocketServer::NonSecureMode, this))
    , m_statusTimer(new QTimer(this))
    , m_spotsUpdateTimer(new QTimer(this))
    , m_spotsPump(new QTimer(this))
    , m_deltaTimer(new QTimer(this))
    , m_backlogProbe([](const QWebSocket *socket) { return socket->bytesToWrite(); })
    , m_commands(apiCommandTable())
{
    connect(m_server, &QWebSocketServer::newConnection, this, &WsServer::onNewConnection);
    connect(m_server, &QWebSocketServer::originAuthenticationRequired, this,
            &WsServer::onOriginAuthenticationRequired);

    // Runs for the server's lifetime; pushStatus() does nothing without clients.
    m_statusTimer->setObjectName(QStringLiteral("statusTimer"));
    m_statusTimer->setInterval(k_heartbeatMs);
    connect(m_statusTimer, &QTimer::timeout, this, &WsServer::pushStatus);
    m_statusTimer->start();

    m_spotsUpdateTimer->setObjectName(QStringLiteral("spotsUpdateTimer"));
    m_spotsUpdateTimer->setSingleShot(true);
    m_spotsUpdateTimer->setInterval(k_spotsUpdateHoldMs);
    connect(m_spotsUpdateTimer, &QTimer::timeout, this, [this] {
        if (!m_spotsUpdatePending)
            return;
        m_spotsUpdatePending = false;
        pushSpotsUpdated();
    });
    // One client's copy per turn of the event loop: eight copies of a large
    // table in one go would stall everything else.
    m_spotsPump->setSingleShot(true);
    m_spotsPump->setInterval(0);
    connect(m_spotsPump, &QTimer::timeout, this, &WsServer::sendSpotsUpdated);

    // Deltas go out at once, then at most once per hold, folded.
    m_deltaTimer->setObjectName(QStringLiteral("spotsDeltaTimer"));
    m_deltaTimer->setSingleShot(true);
    connect(m_deltaTimer, &QTimer::timeout, this, [this] {
        if (!std::exchange(m_deltaPending, false))
            return;
        m_deltaTimer->start(spotsUpdateHoldMs(flushSpotDeltas()));
    });
}

WsServer::~WsServer()
{
    stopListening();
}

bool WsServer::listen(quint16 port, const QString &host)
{
    QHostAddress address;
    if (host == QLatin1String("0.0.0.0"))
        address = QHostAddress(QHostAddress::AnyIPv4);
    else if (host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
        address = QHostAddress(QHostAddress::LocalHost);
    else if (!address.setAddress(host))
        return false; // never fall back to listening everywhere
    if (m_server->isListening())
        m_server->close();
    return m_server->listen(address, port);
}

void WsServer::stopListening()
{
    const QList<QWebSocket *> clients = std::exchange(m_clients, {});
    m_ungreeted.clear();
    m_spotsDue.clear();
    m_spotsSent.clear();
    m_spotsMessage.clear();
    m_deltaClients.clear();
    m_snapshotDue.clear();
    m_snapshotsSent.clear();
    m_snapshotMessage.clear();
    if (m_tracker)
        m_tracker->setActive(false);
    for (QWebSocket *socket : clients) {
        socket->disconnect(this);
        socket->close(QWebSocketProtocol::CloseCodeNormal, QString());
        socket->deleteLater();
    }
    m_server->close();
}

bool WsServer::isListening() const
{
    return m_server->isListening();
}

quint16 WsServer::port() const
{
    return m_server->serverPort();
}

bool WsServer::isLocalOrigin(const QString &origin)
{
    // Programs send no Origin; browsers always do, and only a page served from
    // this machine may drive the radio.
    if (origin.isEmpty())
        return true;
    const QUrl url(origin, QUrl::StrictMode);
    if (!url.isValid() || (url.scheme() != QLatin1String("http") && url.scheme() != QLatin1String("https")))
        return false;
    const QString host = url.host();
    return host == QLatin1String("localhost") || host == QLatin1String("127.0.0.1") ||
           host == QLatin1String("::1");
}

void WsServer::onOriginAuthenticationRequired(QWebSocketCorsAuthenticator *authenticator)
{
    authenticator->setAllowed(isLocalOrigin(authenticator->origin()));
}

void WsServer::onNewConnection()
{
    while (QWebSocket *socket = m_server->nextPendingConnection()) {
        socket->setParent(this); // the server hands sockets over without a parent
        socket->setMaxAllowedIncomingMessageSize(k_maxIncomingMessageBytes);
        socket->setMaxAllowedIncomingFrameSize(k_maxIncomingMessageBytes);
        // Each message in one frame: Qt's own client rejects a valid text
        // message whose multi-byte character straddles a frame boundary (as
        // any "·" or accented park name in a large table eventually does), and
        // closes with "Invalid UTF-8". What is sent is bounded by the unsent
        // cap anyway.
        socket->setOutgoingFrameSize(QWebSocket::maxOutgoingFrameSize());
        if (m_clients.size() >= k_maxClients) {
            connect(socket, &QWebSocket::disconnected, socket, &QObject::deleteLater);
            socket->close(QWebSocketProtocol::CloseCodePolicyViolated, QStringLiteral("too many clients"));
            continue;
        }
        m_clients.append(socket);
        m_ungreeted.append(socket);
        connect(socket, &QWebSocket::textMessageReceived, this,
                [this, socket](const QString &message) { onTextMessage(socket, message); });
        // Binary frames are not part of the protocol: answered as malformed.
        connect(socket, &QWebSocket::binaryMessageReceived, this,
                [this, socket](const QByteArray &) { onTextMessage(socket, QString()); });
        connect(socket, &QWebSocket::disconnected, this, [this, socket] { onDisconnected(socket); });
        connect(socket, &QWebSocket::bytesWritten, this, &WsServer::onBytesWritten);
        QTimer::singleShot(0, socket, [this, socket] { greet(socket); });
    }
}

// "hello" is a client's first message: nothing is sent to it before, and
// a command that races the greeting sends it first.
void WsServer::greet(QWebSocket *socket)
{
    if (!m_ungreeted.removeOne(socket))
        return;
    JsonWriter data;
    data.beginObject();
    data.field("version", QString::fromLatin1(BuildInfo::k_version));
    data.integerField("port", port());
    data.endObject();
    send(socket, text(ApiJson::eventMessage(u"hello", data.bytes())));
}

void WsServer::onDisconnected(QWebSocket *socket)
{
    if (!m_clients.contains(socket))
        return;
    forgetClient(socket);
    socket->deleteLater();
}

void WsServer::forgetClient(QWebSocket *socket)
{
    m_clients.removeOne(socket);
    m_ungreeted.removeOne(socket);
    m_spotsDue.removeOne(socket);
    m_spotsSent.removeOne(socket);
    m_snapshotsSent.removeOne(socket);
    if (m_spotsDue.isEmpty())
        m_spotsMessage.clear();
    if (m_deltaClients.removeOne(socket) + m_snapshotDue.removeOne(socket) > 0 && m_deltaClients.isEmpty() &&
        m_snapshotDue.isEmpty())
        m_tracker->setActive(false);
}

void WsServer::dropClient(QWebSocket *socket)
{
    forgetClient(socket);
    socket->disconnect(this);
    socket->abort();
    socket->deleteLater();
}

void WsServer::onTextMessage(QWebSocket *socket, const QString &message)
{
    if (!m_clients.contains(socket))
        return;
    greet(socket);
    const QJsonDocument document = QJsonDocument::fromJson(message.toUtf8());
    handleCommand(socket, document.isObject() ? document.object() : QJsonObject());
}

void WsServer::handleCommand(QWebSocket *socket, const QJsonObject &msg)
{
    const QString type = msg.value(QLatin1String("type")).toString();
    const QString id = msg.value(QLatin1String("id")).toString();
    const QString cmd = msg.value(QLatin1String("cmd")).toString();
    QByteArray reply;
    if (type != QLatin1String("cmd") || cmd.isEmpty()) {
        reply = ApiJson::errorMessage(id, k_invalidMessage);
    } else if (const auto handler = m_commands.constFind(cmd); handler == m_commands.cend()) {
        reply = ApiJson::errorMessage(id, QStringLiteral("unknown command: ") + cmd);
    } else {
        try {
            const QByteArray data =
                (*handler)(commandContext(socket, id), msg.value(QLatin1String("data")).toObject());
            if (data.isNull())
                return; // the command answers later
            reply = ApiJson::replyMessage(id, data);
        } catch (const QString &error) {
            reply = ApiJson::errorMessage(id, error);
        }
    }
    // The command may have led the program to close this client.
    if (!m_clients.contains(socket))
        return;
    send(socket, text(reply));
    // A new delta client's snapshot follows the reply that names its version.
    if (m_snapshotDue.contains(socket))
        serveSnapshots();
}

ApiContext WsServer::context(QWebSocket *socket)
{
    ApiContext context{*m_backend, port(), clientCount()};
    if (socket)
        context.subscribeSpots = [this, socket](bool delta) { return subscribeSpots(socket, delta); };
    return context;
}

ApiContext WsServer::commandContext(QWebSocket *socket, const QString &id)
{
    ApiContext asked = context(socket);
    asked.localPeer = socket->peerAddress().isLoopback();
    asked.lateReply = [server = QPointer<WsServer>(this), client = QPointer<QWebSocket>(socket),
                       id](const QString &error, const QByteArray &data) {
        // The client may have gone, or the server stopped, while the answer was awaited.
        if (!server || !client || !server->m_clients.contains(client))
            return;
        server->send(client, text(error.isEmpty() ? ApiJson::replyMessage(id, data)
                                                  : ApiJson::errorMessage(id, error)));
    };
    return asked;
}

void WsServer::send(QWebSocket *socket, const QString &message)
{
    // A client that stopped reading must not make this process hold an
    // unbounded backlog for it.
    if (socket->bytesToWrite() > k_maxUnsentBytes) {
        dropClient(socket);
        return;
    }
    socket->sendTextMessage(message);
}

void WsServer::broadcastMessage(const QByteArray &utf8)
{
    const QString message = text(utf8);
    const QList<QWebSocket *> clients = m_clients; // send() may drop one
    for (QWebSocket *socket : clients) {
        if (!m_ungreeted.contains(socket))
            send(socket, message);
    }
}

void WsServer::broadcast(const QString &event, const QJsonObject &data)
{
    if (m_clients.isEmpty())
        return;
    // Clients still due for a table get one built after an event that changes
    // what the table shows, so none sees the event undone by an older table.
    static const QStringList tableEvents{QStringLiteral("spot.status.changed"),
                                         QStringLiteral("filter.changed"), QStringLiteral("config.changed")};
    if (tableEvents.contains(event))
        m_spotsMessage.clear();
    broadcastMessage(ApiJson::eventMessage(event, compact(data)));
}

void WsServer::pushStatus()
{
    if (m_clients.isEmpty())
        return;
    broadcastMessage(ApiJson::eventMessage(u"status", ApiJson::statusJson(context())));
}

void WsServer::pushSpotsUpdated()
{
    const auto fullClient = [this](QWebSocket *socket) {
        return !m_ungreeted.contains(socket) && !isDeltaClient(socket);
    };
    if (std::none_of(m_clients.cbegin(), m_clients.cend(), fullClient))
        return; // a merge with nobody listening for tables costs nothing here
    if (m_spotsUpdateTimer->isActive()) {
        m_spotsUpdatePending = true;
        return;
    }
    const QByteArray table = ApiJson::spotsUpdatedEvent(m_backend->apiVisibleSpots());
    m_spotsUpdateTimer->start(spotsUpdateHoldMs(table.size()));
    m_spotsMessage = text(table);
    m_spotsDue.clear();
    m_spotsSent.clear();
    for (QWebSocket *socket : std::as_const(m_clients)) {
        if (fullClient(socket))
            m_spotsDue.append(socket);
    }
    sendSpotsUpdated();
}

int WsServer::spotsUpdateHoldMs(qint64 tableBytes)
{
    return int(std::max<qint64>(k_spotsUpdateHoldMs, tableBytes / k_spotsUpdateHoldBytesPerMs));
}

bool WsServer::isBehind(const QWebSocket *socket)
{
    return socket->bytesToWrite() > k_spotsBacklogBytes;
}

void WsServer::sendSpotsUpdated()
{
    // Clients are served in turn, a few at a time: a copy of a large table
    // per client, all at once, would multiply the memory it takes. Only this
    // table's copies count, so clients that stopped reading hold up no one
    // beyond the table they stopped on.
    if (std::count_if(m_spotsSent.cbegin(), m_spotsSent.cend(), isBehind) >= k_spotsCopiesInFlight)
        return; // a bytesWritten brings the pump back
    const auto next = std::find_if_not(m_spotsDue.cbegin(), m_spotsDue.cend(), isBehind);
    if (next == m_spotsDue.cend())
        return;
    QWebSocket *socket = *next;
    m_spotsDue.removeOne(socket);
    if (m_spotsMessage.isEmpty())
        m_spotsMessage = text(ApiJson::spotsUpdatedEvent(m_backend->apiVisibleSpots()));
    m_spotsSent.append(socket);
    send(socket, m_spotsMessage);
    if (m_spotsDue.isEmpty())
        m_spotsMessage.clear(); // a large table is not held a moment longer than needed
    else
        m_spotsPump->start();
}

void WsServer::onBytesWritten()
{
    if (!m_spotsDue.isEmpty() && !m_spotsPump->isActive())
        m_spotsPump->start();
    if (!m_snapshotDue.isEmpty())
        serveSnapshots();
}

void WsServer::pushSpotStatusChanged(const QString &key, StationSpot::Status status)
{
    broadcast(QStringLiteral("spot.status.changed"),
              {{QStringLiteral("key"), key}, {QStringLiteral("status"), int(status)}});
}

void WsServer::pushRadioConnected()
{
    if (m_clients.isEmpty())
        return;
    pushRadioFrequencyEvent(QStringLiteral("radio.connected"), m_backend->apiRadioFreqKhz(),
                            m_backend->apiRadioMode());
}

void WsServer::pushRadioDisconnected()
{
    broadcast(QStringLiteral("radio.disconnected"), {});
}

void WsServer::pushRadioFrequency(double kHz, const QString &mode)
{
    pushRadioFrequencyEvent(QStringLiteral("radio.frequency"), kHz, mode);
}

void WsServer::pushRadioFrequencyEvent(const QString &event, double kHz, const QString &mode)
{
    broadcast(event, {{QStringLiteral("freq_khz"), kHz}, {QStringLiteral("mode"), mode}});
}

void WsServer::pushFilterChanged()
{
    broadcast(QStringLiteral("filter.changed"), {});
}

void WsServer::pushConfigChanged()
{
    broadcast(QStringLiteral("config.changed"), {});
}

void WsServer::pushLwConnected(const QString &host, quint16 port)
{
    broadcast(QStringLiteral("lw.connected"),
              {{QStringLiteral("host"), host}, {QStringLiteral("port"), port}});
}

void WsServer::pushLwDisconnected()
{
    broadcast(QStringLiteral("lw.disconnected"), {});
}

void WsServer::pushError(const QString &message)
{
    broadcast(QStringLiteral("error"), {{QStringLiteral("message"), message}});
}
