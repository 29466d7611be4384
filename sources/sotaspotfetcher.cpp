#include "sources/sotaspotfetcher.h"

#include "sources/spotjson.h"

SotaSpotFetcher::SotaSpotFetcher(QObject *parent, const QUrl &serviceUrl)
    : SpotFetcher(parent, serviceUrl)
{}

void SotaSpotFetcher::fetch()
{
    sendGet(QStringLiteral("/api/spots/-72"));
}

QList<StationSpot> SotaSpotFetcher::parseResponse(const QByteArray &body)
{
    QString error;
    const std::optional<QJsonArray> array = SpotJson::parseArray(body, QStringLiteral("SOTA"), &error);
    if (!array) {
        emit fetchError(error);
        return {};
    }

    return SpotJson::collectSpots(*array, [](const QJsonObject &object) {
        StationSpot spot;
        spot.source = StationSpot::SOTA;
        spot.callsign = SpotJson::text(object, QStringLiteral("activatorCallsign"));
        spot.reference = SpotJson::text(object, QStringLiteral("summitCode"));
        spot.referenceName = SpotJson::text(object, QStringLiteral("summitDetails"));
        spot.mode = SpotJson::text(object, QStringLiteral("mode")).toUpper();
        // "callsign" is whoever posted the spot, not the activator.
        spot.spotter = SpotJson::text(object, QStringLiteral("callsign"));
        spot.comments = SpotJson::text(object, QStringLiteral("comments"));
        spot.frequencyKhz = SpotJson::textToKhz(SpotJson::text(object, QStringLiteral("frequency")));
        spot.spotTime = SpotJson::isoTimeAssumingUtc(SpotJson::text(object, QStringLiteral("timeStamp")));

        const QJsonValue lat = object.value(QStringLiteral("highlat"));
        const QJsonValue lon = object.value(QStringLiteral("highlon"));
        if (lat.isDouble() && lon.isDouble()) {
            spot.lat = lat.toDouble();
            spot.lon = lon.toDouble();
            spot.hasLocation = true;
        }
        return spot;
    });
}
