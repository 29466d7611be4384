#include "support/clustertestserver.h"

#include <QTcpSocket>

ClusterTestServer::ClusterTestServer(QObject *parent)
    : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &ClusterTestServer::onNewConnection);
}

ClusterTestServer::~ClusterTestServer()
{
    for (QTcpSocket *socket : std::as_const(m_clients)) {
        socket->disconnect(this);
        socket->abort();
    }
}

bool ClusterTestServer::start(quint16 port)
{
    if (!m_server.listen(QHostAddress::LocalHost, port))
        return false;
    m_port = m_server.serverPort();
    return true;
}

void ClusterTestServer::stopListening()
{
    m_server.close();
}

void ClusterTestServer::send(const QByteArray &data)
{
    for (QTcpSocket *socket : std::as_const(m_clients)) {
        socket->write(data);
        socket->flush();
    }
}

void ClusterTestServer::dropClients()
{
    const QList<QTcpSocket *> clients = m_clients;
    for (QTcpSocket *socket : clients)
        socket->disconnectFromHost();
}

void ClusterTestServer::onNewConnection()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        ++m_connectionCount;
        m_clients.append(socket);
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1); // each send() its own segment
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] { onClientGone(socket); });
        if (!m_greeting.isEmpty())
            socket->write(m_greeting);
        emit clientConnected();
    }
}

void ClusterTestServer::onReadyRead(QTcpSocket *socket)
{
    QByteArray &buffer = m_buffers[socket];
    buffer += socket->readAll();
    for (qsizetype lineFeed = buffer.indexOf('\n'); lineFeed >= 0; lineFeed = buffer.indexOf('\n')) {
        QByteArray line = buffer.left(lineFeed);
        buffer.remove(0, lineFeed + 1);
        if (line.endsWith('\r'))
            line.chop(1);
        m_lines.append(line);
        if (!m_greeted.value(socket) && !m_loginReply.isEmpty())
            socket->write("\r\n" + m_loginReply);
        m_greeted.insert(socket, true);
        emit lineReceived(line);
    }
}

void ClusterTestServer::onClientGone(QTcpSocket *socket)
{
    m_clients.removeAll(socket);
    m_buffers.remove(socket);
    m_greeted.remove(socket);
    socket->deleteLater();
}
