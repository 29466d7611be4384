#pragma once

#include "sources/spotfetcher.h"

// Summits on the Air spots. The service announces each change of its spot
// list with a new epoch; the list is fetched only when the epoch moved.
class SotaSpotFetcher final : public SpotFetcher
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SotaSpotFetcher)

public:
    static constexpr const char *k_defaultUrl = "https://api-db2.sota.org.uk";

    explicit SotaSpotFetcher(QObject *parent = nullptr,
                             const QUrl &serviceUrl = QUrl(QString::fromLatin1(k_defaultUrl)));

    QString sourceName() const override;
    QList<StationSpot> parseResponse(const QByteArray &body) override;

    // The parser itself, free of the fetcher: on a fault *error gets the
    // message and the result is empty.
    static QList<StationSpot> parseSpots(const QByteArray &body, QString *error);

public slots:
    void fetch() override;

private:
    QByteArray m_lastEpoch; // of the last list that came whole
};
