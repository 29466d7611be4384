#pragma once

#include <algorithm>

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>
#include <QUrl>

class QTcpSocket;

// A small HTTP/1.1 server on 127.0.0.1 for tests: serves chosen bodies and statuses per path, records
// every request, and can hold replies back so a test can act while a request is in flight. A route whose
// headers carry an ETag answers 304 to a request that names that ETag in If-None-Match.
class HttpTestServer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HttpTestServer)

public:
    struct Request
    {
        QByteArray path;
        QHash<QByteArray, QByteArray> headers; // names lower-cased
        QByteArray method;
        QByteArray body; // as long as Content-Length says
    };

    explicit HttpTestServer(QObject *parent = nullptr);
    ~HttpTestServer() override;

    bool start() { return m_server.listen(QHostAddress::LocalHost, 0); }
    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort())); }

    // Unknown paths get 404. headers: extra raw header lines, each ending in "\r\n".
    void setRoute(const QByteArray &path, const QByteArray &body, int status = 200,
                  const QByteArray &contentType = "application/json", const QByteArray &headers = {})
    {
        m_routes.insert(path, Route{body, status, contentType, headers});
    }
    void setHoldReplies(bool hold) { m_hold = hold; }
    // Answers the held requests.
    void releaseHeld();

    QList<Request> requests() const { return m_requests; }
    int requestCount() const { return int(m_requests.size()); }
    int requestCount(const QByteArray &path) const
    {
        return int(std::count_if(m_requests.cbegin(), m_requests.cend(),
                                 [&path](const Request &r) { return r.path == path; }));
    }
    void clearRequests() { m_requests.clear(); }

signals:
    void requestReceived(const QByteArray &path);

private:
    struct Route
    {
        QByteArray body;
        int status = 200;
        QByteArray contentType;
        QByteArray headers;
    };
    struct Pending
    {
        QPointer<QTcpSocket> socket;
        Request request;
    };

    void onNewConnection();
    void onReadyRead(QTcpSocket *socket);
    void respond(QTcpSocket *socket, const Request &request);

    QTcpServer m_server;
    QHash<QByteArray, Route> m_routes;
    QHash<QTcpSocket *, QByteArray> m_buffers;
    QList<Request> m_requests;
    QList<Pending> m_held;
    bool m_hold = false;
};
