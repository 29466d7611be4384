#include "sources/spotfetcher.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

SpotFetcher::SpotFetcher(QObject *parent, const QUrl &serviceUrl)
    : QObject(parent)
    , m_network(new QNetworkAccessManager(this))
    , m_refreshTimer(new QTimer(this))
    , m_serviceUrl(serviceUrl)
{
    registerStationSpotMetaTypes();
    m_refreshTimer->setSingleShot(false);
    connect(m_refreshTimer, &QTimer::timeout, this, &SpotFetcher::fetch);
}

SpotFetcher::~SpotFetcher() = default;

void SpotFetcher::startAutoRefresh(int seconds)
{
    const bool wasRunning = m_refreshTimer->isActive();
    m_refreshTimer->start(seconds * 1000);
    // The first data should arrive at once, not after a whole interval.
    if (!wasRunning)
        QTimer::singleShot(0, this, &SpotFetcher::fetch);
}

void SpotFetcher::stopAutoRefresh()
{
    m_refreshTimer->stop();
}

bool SpotFetcher::isAutoRefreshing() const
{
    return m_refreshTimer->isActive();
}

int SpotFetcher::refreshIntervalMs() const
{
    return m_refreshTimer->interval();
}

void SpotFetcher::setServiceUrl(const QUrl &url)
{
    m_serviceUrl = url;
}

void SpotFetcher::sendGet(const QString &path)
{
    emit fetchStarted();
    QUrl url = m_serviceUrl;
    url.setPath(path);
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, QString::fromLatin1(k_userAgent));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    QNetworkReply *reply = m_network->get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply] { handleNetworkReply(reply); });
}

void SpotFetcher::handleNetworkReply(QNetworkReply *reply)
{
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
        emit fetchError(reply->errorString());
        return;
    }
    const QByteArray body = reply->readAll();
    emit spotsReady(parseResponse(body));
}
