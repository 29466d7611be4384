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

    QString sourceName() const override;
    QList<StationSpot> parseResponse(const QByteArray &body) override;

    // The parser itself, free of the fetcher: on a fault *error gets the
    // message and the result is empty.
    static QList<StationSpot> parseSpots(const QByteArray &body, QString *error);

public slots:
    void fetch() override;
};
