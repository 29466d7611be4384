#pragma once

#include "sources/spotfetcher.h"

// Bunkers on the Air spots.
class WwbotaSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WwbotaSpotFetcher)

public:
    explicit WwbotaSpotFetcher(QObject *parent = nullptr, const QUrl &serviceUrl = QUrl())
        : SpotFetcher(WebSource::of(StationSpot::WWBOTA), parent, serviceUrl)
    {}
};
