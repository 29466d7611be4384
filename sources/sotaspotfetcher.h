#pragma once

#include "sources/spotfetcher.h"

// Summits on the Air spots, asked for only when the service's epoch moved.
class SotaSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SotaSpotFetcher)

public:
    explicit SotaSpotFetcher(QObject *parent = nullptr, const QUrl &serviceUrl = QUrl())
        : SpotFetcher(WebSource::of(StationSpot::SOTA), parent, serviceUrl)
    {}
};
