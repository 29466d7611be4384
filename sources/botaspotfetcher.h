#pragma once

#include "sources/spotfetcher.h"

// Beaches on the Air has no public spot service yet: the slot exists so the
// source can be ticked and counted, but it never sends anything.
class BotaSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BotaSpotFetcher)

public:
    explicit BotaSpotFetcher(QObject *parent = nullptr);

    QString sourceName() const override;
    QList<StationSpot> parseResponse(const QByteArray &body) override;

public slots:
    void fetch() override;
};
