#pragma once

#include "sources/spotfetcher.h"

// Summits on the Air spots.
class SotaSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SotaSpotFetcher)

public:
    static constexpr const char *k_defaultUrl = "https://api-db2.sota.org.uk";

    explicit SotaSpotFetcher(QObject *parent = nullptr,
                             const QUrl &serviceUrl = QUrl(QString::fromLatin1(k_defaultUrl)));

    QList<StationSpot> parseResponse(const QByteArray &body) override;

public slots:
    void fetch() override;
};
