#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>

class QNetworkAccessManager;

// Posts spots to one web service as JSON and reads its answer: taken (a 2xx
// status), refused (with the service's own words when it gives any), or no
// answer within the time allowed.
class WebSpotPoster final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WebSpotPoster)

public:
    // Called once: an empty text when the service took the spot.
    using Done = std::function<void(const QString &error)>;
    static constexpr int k_defaultTimeoutMs = 10000;

    WebSpotPoster(QString serviceName, QUrl url, QNetworkAccessManager *network, QObject *parent = nullptr);
    ~WebSpotPoster() override;

    QString serviceName() const { return m_serviceName; }
    QUrl url() const { return m_url; }
    void setTimeoutMs(int ms) { m_timeoutMs = ms; }

    void post(const QByteArray &jsonBody, Done done);

    // What a refusing service says: a JSON message ("message", "detail",
    // "error", or the first of a list of them) or a short plain text; empty
    // when the body says nothing readable.
    static QString refusalText(const QByteArray &body);

private:
    QString m_serviceName;
    QUrl m_url;
    QNetworkAccessManager *m_network;
    int m_timeoutMs = k_defaultTimeoutMs;
};
