#include "sources/potaspotfetcher.h"

PotaSpotFetcher::PotaSpotFetcher(QObject *parent, const QUrl &serviceUrl)
    : SpotFetcher(parent, serviceUrl)
{
}

void PotaSpotFetcher::fetch()
{
    sendGet(QStringLiteral("/spot/"));
}

QList<StationSpot> PotaSpotFetcher::parseResponse(const QByteArray &body)
{
    Q_UNUSED(body)
    return {};
}
