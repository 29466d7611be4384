#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QTcpServer>

class QTcpSocket;

// A telnet DX cluster node on 127.0.0.1 for tests: greets every client with a
// prompt that has no line feed, as real nodes do, counts the lines clients
// send, and lets the test push text and drop connections from the node's side.
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
    void stopListening() { m_server.close(); }
    quint16 port() const { return m_port; }

    // Sent once per connection after the client's first line, as nodes do
    // once they have the call; empty: nothing.
    void setLoginReply(const QByteArray &reply) { m_loginReply = reply; }

    void send(const QByteArray &data);
    void sendLine(const QByteArray &line) { send(line + "\r\n"); }
    void dropClients();

    int connectionCount() const { return m_connectionCount; }
    int clientCount() const { return int(m_buffers.size()); }
    // How often a client has sent this line, line end removed.
    int receivedCount(const QByteArray &line) const { return m_lines.value(line); }

private:
    void onNewConnection();
    void onReadyRead(QTcpSocket *socket);

    QTcpServer m_server;
    quint16 m_port = 0;
    QByteArray m_loginReply;
    QHash<QTcpSocket *, QByteArray> m_buffers; // one per connected client
    QSet<QTcpSocket *> m_greeted;              // sent their first line
    QHash<QByteArray, int> m_lines;
    int m_connectionCount = 0;
};
