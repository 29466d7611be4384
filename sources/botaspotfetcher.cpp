#include "sources/botaspotfetcher.h"

BotaSpotFetcher::BotaSpotFetcher(QObject *parent)
    : SpotFetcher(parent)
{}

QString BotaSpotFetcher::sourceName() const
{
    return QStringLiteral("BOTA");
}

void BotaSpotFetcher::fetch()
{}

QList<StationSpot> BotaSpotFetcher::parseResponse(const QByteArray &body)
{
    Q_UNUSED(body)
    return {};
}
