#pragma once

#include "api/apicommands.h"
#include "model/stationspot.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class ApiBackend;
class SpotDeltaTracker;
class QTimer;
class QWebSocket;
class QWebSocketCorsAuthenticator;
class QWebSocketServer;

// The local WebSocket JSON API: commands in, replies and pushed events out.
// Only this host's programs and pages are meant to reach it, so browser pages
// from elsewhere are refused at the handshake, and every client is held to
// limits on what it sends and what it lets pile up unread.
class WsServer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WsServer)

public:
    static constexpr int k_heartbeatMs = 1000;
    // "spots.updated" goes out at once, then at most once per hold while
    // merges keep coming, carrying the state at the time it is built. The hold
    // is 250 ms, and longer for big tables (250 ms a megabyte), so a flood into
    // a large table costs each client a few megabytes a second at most.
    static constexpr int k_spotsUpdateHoldMs = 250;
    static constexpr qint64 k_spotsUpdateHoldBytesPerMs = 1024 * 1024 / 250;
    // A client with more than this still unsent skips tables until it has
    // caught up, and then gets the newest: never two tables queued for one.
    static constexpr qint64 k_spotsBacklogBytes = 1024 * 1024;
    static constexpr int k_spotsCopiesInFlight = 2;
    static constexpr int k_maxClients = 64;
    static constexpr qint64 k_maxIncomingMessageBytes = 1024 * 1024;
    static constexpr qint64 k_maxUnsentBytes = 16 * 1024 * 1024;

    explicit WsServer(ApiBackend *backend, QObject *parent = nullptr);
    ~WsServer() override;

    // The view follower behind "spots.subscribe" {"mode": "delta"}; without
    // one, only full tables are offered.
    void setSpotTracker(SpotDeltaTracker *tracker);
    // Bytes a client has not yet taken (its socket's unsent bytes); tests
    // stand in a stalled reader.
    using BacklogProbe = std::function<qint64(const QWebSocket *)>;
    void setBacklogProbe(BacklogProbe probe);
    qint64 spotsVersion() const { return m_spotsVersion; }

    // "0.0.0.0" means every IPv4 interface; any other text must be an address.
    bool listen(quint16 port, const QString &host);
    void stopListening();
    bool isListening() const;
    quint16 port() const;
    int clientCount() const { return int(m_clients.size()); }

    // Serialised once, sent to every greeted client; nothing at all without clients.
    void broadcast(const QString &event, const QJsonObject &data);

    void pushStatus();
    void pushSpotStatusChanged(const QString &key, StationSpot::Status status);
    void pushSpotsUpdated();
    void pushRadioConnected();
    void pushRadioDisconnected();
    void pushRadioFrequency(double kHz, const QString &mode);
    void pushFilterChanged();
    void pushConfigChanged();
    void pushLwConnected(const QString &host, quint16 port);
    void pushLwDisconnected();
    void pushError(const QString &message);

    static bool isLocalOrigin(const QString &origin);
    static int spotsUpdateHoldMs(qint64 tableBytes);

private:
    void onNewConnection();
    void onOriginAuthenticationRequired(QWebSocketCorsAuthenticator *authenticator);
    void onTextMessage(QWebSocket *socket, const QString &text);
    void onDisconnected(QWebSocket *socket);
    void greet(QWebSocket *socket);
    void handleCommand(QWebSocket *socket, const QJsonObject &msg);
    void pushRadioFrequencyEvent(const QString &event, double kHz, const QString &mode);
    void broadcastMessage(const QByteArray &utf8);
    void sendSpotsUpdated();
    void onBytesWritten();
    static bool isBehind(const QWebSocket *socket);
    qint64 subscribeSpots(QWebSocket *socket, bool delta);
    bool isDeltaClient(QWebSocket *socket) const;
    bool isLagging(const QWebSocket *socket) const;
    void onSpotsChanged();
    int flushSpotDeltas();
    void serveSnapshots();
    void forgetClient(QWebSocket *socket);
    void send(QWebSocket *socket, const QString &message);
    void dropClient(QWebSocket *socket);
    ApiContext context(QWebSocket *socket = nullptr);
    // The context of one client's command, with its late reply.
    ApiContext commandContext(QWebSocket *socket, const QString &id);

    ApiBackend *m_backend;
    QWebSocketServer *m_server;
    QTimer *m_statusTimer;
    QTimer *m_spotsUpdateTimer;
    QTimer *m_spotsPump;
    bool m_spotsUpdatePending = false;
    // The newest table, kept until every client due for it has it; empty when
    // it has to be built again (an event went out after it was built).
    QString m_spotsMessage;
    QList<QWebSocket *> m_spotsDue;
    QList<QWebSocket *> m_spotsSent; // those that have the newest table, or have it on its way
    QList<QWebSocket *> m_clients;   // in order of connection
    QList<QWebSocket *> m_ungreeted; // connected, "hello" not yet sent
    // Delta clients: those that follow "spots.changed", and those waiting for
    // a snapshot (just subscribed, or fell behind and must catch up first).
    SpotDeltaTracker *m_tracker = nullptr;
    QTimer *m_deltaTimer;
    bool m_deltaPending = false;
    qint64 m_spotsVersion = 0;
    QList<QWebSocket *> m_deltaClients;
    QList<QWebSocket *> m_snapshotDue;
    // The snapshot being served at m_snapshotVersion, and those it went to.
    QString m_snapshotMessage;
    qint64 m_snapshotVersion = -1;
    QList<QWebSocket *> m_snapshotsSent;
    BacklogProbe m_backlogProbe;
    const QHash<QString, ApiCommand> m_commands;
};
