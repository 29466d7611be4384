#pragma once

#include "sources/spotfetcher.h"

// Beaches on the Air: a slot that is ticked and counted but never sends.
class BotaSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BotaSpotFetcher)

public:
    explicit BotaSpotFetcher(QObject *parent = nullptr, const QUrl &serviceUrl = QUrl())
        : SpotFetcher(WebSource::of(StationSpot::BOTA), parent, serviceUrl)
    {}
};
