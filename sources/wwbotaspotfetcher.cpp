#include "sources/wwbotaspotfetcher.h"

WwbotaSpotFetcher::WwbotaSpotFetcher(QObject *parent, const QUrl &serviceUrl)
    : SpotFetcher(parent, serviceUrl)
{
}

void WwbotaSpotFetcher::fetch()
{
    sendGet(QStringLiteral("/spots/"));
}

QList<StationSpot> WwbotaSpotFetcher::parseResponse(const QByteArray &body)
{
    Q_UNUSED(body)
    return {};
}
