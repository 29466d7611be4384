#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QTcpServer>

class QTcpSocket;

// A telnet DX cluster node on 127.0.0.1 for tests: greets every client (by
// default with a prompt that has no line feed, as real nodes do), records the
// lines clients send, and lets the test push text, half lines or garbage and
// drop connections from the node's side.
class ClusterTestServer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ClusterTestServer)

public:
    explicit ClusterTestServer(QObject *parent = nullptr);
    ~ClusterTestServer() override;

    // Listens on the given port, or any free one for 0.
    bool start(quint16 port = 0);
    // Stops accepting; connected clients stay.
    void stopListening();
    quint16 port() const { return m_port; }

    void setGreeting(const QByteArray &greeting) { m_greeting = greeting; }
    // Sent once per connection after the client's first line, on a line of its
    // own as nodes do once they have the call; empty: nothing.
    void setLoginReply(const QByteArray &reply) { m_loginReply = reply; }

    void send(const QByteArray &data);
    void sendLine(const QByteArray &line) { send(line + "\r\n"); }
    void dropClients();

    int connectionCount() const { return m_connectionCount; }
    int clientCount() const { return int(m_clients.size()); }

    // Lines from every client so far, line ends removed.
    QList<QByteArray> receivedLines() const { return m_lines; }
    int receivedCount(const QByteArray &line) const { return int(m_lines.count(line)); }
    void clearReceived() { m_lines.clear(); }

signals:
    void clientConnected();
    void lineReceived(const QByteArray &line);

private:
    void onNewConnection();
    void onReadyRead(QTcpSocket *socket);
    void onClientGone(QTcpSocket *socket);

    QTcpServer m_server;
    quint16 m_port = 0;
    QByteArray m_greeting = "login: ";
    QByteArray m_loginReply;
    QList<QTcpSocket *> m_clients;
    QHash<QTcpSocket *, QByteArray> m_buffers;
    QHash<QTcpSocket *, bool> m_greeted;
    QList<QByteArray> m_lines;
    int m_connectionCount = 0;
};
