#pragma once

#include "sources/spotfetcher.h"

// Global Mountain Activity spots.
class GmaSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GmaSpotFetcher)

public:
    explicit GmaSpotFetcher(QObject *parent = nullptr, const QUrl &serviceUrl = QUrl())
        : SpotFetcher(WebSource::of(StationSpot::GMA), parent, serviceUrl)
    {}
};
