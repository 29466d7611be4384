#pragma once

#include "sources/spotfetcher.h"

// Global Mountain Activity spots.
class GmaSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GmaSpotFetcher)

public:
    static constexpr const char *k_defaultUrl = "https://www.cqgma.org";

    explicit GmaSpotFetcher(QObject *parent = nullptr,
                            const QUrl &serviceUrl = QUrl(QString::fromLatin1(k_defaultUrl)));

    QList<StationSpot> parseResponse(const QByteArray &body) override;

public slots:
    void fetch() override;
};
