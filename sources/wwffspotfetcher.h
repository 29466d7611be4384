#pragma once

#include "sources/spotfetcher.h"

// World Wide Flora & Fauna spots.
class WwffSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WwffSpotFetcher)

public:
    static constexpr const char *k_defaultUrl = "https://spots.wwff.co";

    explicit WwffSpotFetcher(QObject *parent = nullptr,
                             const QUrl &serviceUrl = QUrl(QString::fromLatin1(k_defaultUrl)));

    QList<StationSpot> parseResponse(const QByteArray &body) override;

public slots:
    void fetch() override;
};
