#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QTcpServer>

class QTcpSocket;

// A telnet DX cluster node on 127.0.0.1 for tests: greets every client with a prompt that has no line
// feed, as real nodes do, counts the lines clients send, and lets the test push text and drop connections
// from the node's side. Tests set no greeting for a node that prompts nothing, a banner for one that
// talks first, and a closing reply for one that refuses or drops at once.
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

    // Sent to every client as it connects; "login: " unless set.
    void setGreeting(const QByteArray &greeting) { m_greeting = greeting; }
    // Sent once per connection after the client's first line, as nodes do once they have the call, then
    // the connection is closed when thenClose is set; empty: nothing.
    void setLoginReply(const QByteArray &reply, bool thenClose = false)
    {
        m_loginReply = reply;
        m_closeAfterReply = thenClose;
    }

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
    QByteArray m_greeting = "login: ";
    QByteArray m_loginReply;
    bool m_closeAfterReply = false;
    QHash<QTcpSocket *, QByteArray> m_buffers; // one per connected client
    QSet<QTcpSocket *> m_greeted;              // sent their first line
    QHash<QByteArray, int> m_lines;
    int m_connectionCount = 0;
};
