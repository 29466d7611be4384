#include "sources/sotaspotfetcher.h"

SotaSpotFetcher::SotaSpotFetcher(QObject *parent, const QUrl &serviceUrl)
    : SpotFetcher(parent, serviceUrl)
{
}

void SotaSpotFetcher::fetch()
{
    sendGet(QStringLiteral("/api/spots/-72"));
}

QList<StationSpot> SotaSpotFetcher::parseResponse(const QByteArray &body)
{
    Q_UNUSED(body)
    return {};
}
