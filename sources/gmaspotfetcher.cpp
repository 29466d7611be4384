#include "sources/gmaspotfetcher.h"

GmaSpotFetcher::GmaSpotFetcher(QObject *parent, const QUrl &serviceUrl)
    : SpotFetcher(parent, serviceUrl)
{
}

void GmaSpotFetcher::fetch()
{
    sendGet(QStringLiteral("/api/spots/gma/"));
}

QList<StationSpot> GmaSpotFetcher::parseResponse(const QByteArray &body)
{
    Q_UNUSED(body)
    return {};
}
