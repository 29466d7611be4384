#pragma once

#include "model/stationspot.h"

#include <QList>
#include <QObject>
#include <QUrl>

class QNetworkAccessManager;
class QNetworkReply;
class QTimer;

// Polling base of every web spot source: owns the HTTP client and the refresh
// timer and turns a finished reply into spotsReady or fetchError.
class SpotFetcher : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SpotFetcher)

public:
    static constexpr const char *k_userAgent = "Tallis/0.1 (Brightwater)";

    explicit SpotFetcher(QObject *parent, const QUrl &serviceUrl = QUrl());
    ~SpotFetcher() override;

    void startAutoRefresh(int seconds);
    void stopAutoRefresh();
    bool isAutoRefreshing() const;
    int refreshIntervalMs() const;

    // Scheme, host and port of the service; the request path is the source's own.
    void setServiceUrl(const QUrl &url);
    QUrl serviceUrl() const { return m_serviceUrl; }

    // Pure parsing of a reply body; reports its own faults through fetchError.
    virtual QList<StationSpot> parseResponse(const QByteArray &body) = 0;

public slots:
    virtual void fetch() = 0;

signals:
    void spotsReady(QList<StationSpot> spots);
    void fetchError(QString error);
    void fetchStarted();

protected:
    // Emits fetchStarted and sends the GET for path on the service.
    void sendGet(const QString &path);
    void handleNetworkReply(QNetworkReply *reply);

private:
    QNetworkAccessManager *m_network;
    QTimer *m_refreshTimer;
    QUrl m_serviceUrl;
};
