#include "support/clustertestserver.h"

#include <QTcpSocket>

ClusterTestServer::ClusterTestServer(QObject *parent)
    : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &ClusterTestServer::onNewConnection);
}

ClusterTestServer::~ClusterTestServer()
{
    for (QTcpSocket *socket : m_buffers.keys()) {
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

void ClusterTestServer::send(const QByteArray &data)
{
    for (QTcpSocket *socket : m_buffers.keys()) {
        socket->write(data);
        socket->flush();
    }
}

void ClusterTestServer::dropClients()
{
    for (QTcpSocket *socket : m_buffers.keys())
        socket->disconnectFromHost();
}

void ClusterTestServer::onNewConnection()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        ++m_connectionCount;
        m_buffers.insert(socket, QByteArray());
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1); // each send() its own segment
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            m_buffers.remove(socket);
            m_greeted.remove(socket);
            socket->deleteLater();
        });
        socket->write(m_greeting);
    }
}

void ClusterTestServer::onReadyRead(QTcpSocket *socket)
{
    const auto it = m_buffers.find(socket);
    if (it == m_buffers.end())
        return;
    QByteArray &buffer = *it;
    buffer += socket->readAll();
    for (qsizetype lineFeed = buffer.indexOf('\n'); lineFeed >= 0; lineFeed = buffer.indexOf('\n')) {
        QByteArray line = buffer.left(lineFeed);
        buffer.remove(0, lineFeed + 1);
        if (line.endsWith('\r'))
            line.chop(1);
        ++m_lines[line];
        const bool first = !m_greeted.contains(socket);
        m_greeted.insert(socket);
        if (first && !m_loginReply.isEmpty()) {
            socket->write("\r\n" + m_loginReply);
            if (m_closeAfterReply) {
                socket->disconnectFromHost();
                return;
            }
        }
    }
}
