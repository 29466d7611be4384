#include "support/httptestserver.h"

#include <QTcpSocket>

#include <utility>

HttpTestServer::HttpTestServer(QObject *parent)
    : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &HttpTestServer::onNewConnection);
}

HttpTestServer::~HttpTestServer()
{
    // The sockets die with m_server, after the bookkeeping they would update.
    const QList<QTcpSocket *> sockets = m_server.findChildren<QTcpSocket *>();
    for (QTcpSocket *socket : sockets)
        socket->disconnect(this);
}

void HttpTestServer::releaseHeld()
{
    for (const Pending &p : std::exchange(m_held, {})) {
        if (p.socket)
            respond(p.socket, p.request);
    }
}

void HttpTestServer::onNewConnection()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QObject::destroyed, this, [this, socket] { m_buffers.remove(socket); });
    }
}

void HttpTestServer::onReadyRead(QTcpSocket *socket)
{
    QByteArray &buffer = m_buffers[socket];
    buffer += socket->readAll();
    const int headerEnd = int(buffer.indexOf("\r\n\r\n"));
    if (headerEnd < 0)
        return;

    Request request;
    const QList<QByteArray> lines = buffer.left(headerEnd).split('\n');
    const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
    request.method = first.value(0);
    request.path = first.value(1);
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = int(lines[i].indexOf(':'));
        if (colon > 0)
            request.headers.insert(lines[i].left(colon).trimmed().toLower(),
                                   lines[i].mid(colon + 1).trimmed());
    }
    const qsizetype bodyLength = request.headers.value("content-length").toLongLong();
    if (buffer.size() < headerEnd + 4 + bodyLength)
        return; // the rest of the body is on its way
    request.body = buffer.mid(headerEnd + 4, bodyLength);
    buffer.clear();

    m_requests.append(request);
    emit requestReceived(request.path);
    if (m_hold)
        m_held.append(Pending{socket, request});
    else
        respond(socket, request);
}

void HttpTestServer::respond(QTcpSocket *socket, const Request &request)
{
    const auto it = m_routes.constFind(request.path);
    Route route = it != m_routes.constEnd() ? *it : Route{"not found", 404, "text/plain", {}};
    const QByteArray etag = request.headers.value("if-none-match");
    if (!etag.isEmpty() && route.headers.contains(QByteArray("ETag: " + etag + "\r\n"))) {
        route.status = 304;
        route.body.clear();
    }
    QByteArray reply = "HTTP/1.1 " + QByteArray::number(route.status) + " Status\r\n";
    reply += "Content-Type: " + route.contentType + "\r\n";
    reply += "Content-Length: " + QByteArray::number(route.body.size()) + "\r\n";
    reply += route.headers + "Connection: close\r\n\r\n";
    reply += route.body;
    socket->write(reply);
    socket->disconnectFromHost();
}
