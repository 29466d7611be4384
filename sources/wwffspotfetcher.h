#pragma once

#include "sources/spotfetcher.h"

// World Wide Flora & Fauna spots.
class WwffSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WwffSpotFetcher)

public:
    explicit WwffSpotFetcher(QObject *parent = nullptr, const QUrl &serviceUrl = QUrl())
        : SpotFetcher(WebSource::of(StationSpot::WWFF), parent, serviceUrl)
    {}
};
