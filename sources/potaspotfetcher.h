#pragma once

#include "sources/spotfetcher.h"

// Parks on the Air spots.
class PotaSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PotaSpotFetcher)

public:
    explicit PotaSpotFetcher(QObject *parent = nullptr, const QUrl &serviceUrl = QUrl())
        : SpotFetcher(WebSource::of(StationSpot::POTA), parent, serviceUrl)
    {}
};
