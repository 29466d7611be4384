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

    QString sourceName() const override;
    QList<StationSpot> parseResponse(const QByteArray &body) override;

    // The parser itself, free of the fetcher: on a fault *error gets the
    // message and the result is empty.
    static QList<StationSpot> parseSpots(const QByteArray &body, QString *error);

public slots:
    void fetch() override;
};
