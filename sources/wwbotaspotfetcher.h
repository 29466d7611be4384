#pragma once

#include "sources/spotfetcher.h"

// Bunkers on the Air spots.
class WwbotaSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WwbotaSpotFetcher)

public:
    static constexpr const char *k_defaultUrl = "https://api.wwbota.org";

    explicit WwbotaSpotFetcher(QObject *parent = nullptr,
                               const QUrl &serviceUrl = QUrl(QString::fromLatin1(k_defaultUrl)));

    QList<StationSpot> parseResponse(const QByteArray &body) override;

public slots:
    void fetch() override;
};
