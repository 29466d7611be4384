#include "sources/wwffspotfetcher.h"

WwffSpotFetcher::WwffSpotFetcher(QObject *parent, const QUrl &serviceUrl)
    : SpotFetcher(parent, serviceUrl)
{
}

void WwffSpotFetcher::fetch()
{
    sendGet(QStringLiteral("/static/spots.json"));
}

QList<StationSpot> WwffSpotFetcher::parseResponse(const QByteArray &body)
{
    Q_UNUSED(body)
    return {};
}
