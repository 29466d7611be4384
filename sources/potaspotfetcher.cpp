#include "sources/potaspotfetcher.h"

#include "model/stationmodel.h"
#include "sources/spotjson.h"

#include <cmath>

PotaSpotFetcher::PotaSpotFetcher(QObject *parent, const QUrl &serviceUrl)
    : SpotFetcher(parent, serviceUrl)
{}

void PotaSpotFetcher::fetch()
{
    sendGet(QStringLiteral("/spot/"));
}

QList<StationSpot> PotaSpotFetcher::parseResponse(const QByteArray &body)
{
    QString error;
    QList<StationSpot> spots = parseSpots(body, &error);
    if (!error.isEmpty())
        emit fetchError(error);
    return spots;
}

QList<StationSpot> PotaSpotFetcher::parseSpots(const QByteArray &body, QString *error)
{
    QString fault;
    const std::optional<QJsonArray> array = SpotJson::parseArray(body, QStringLiteral("POTA"), &fault);
    if (!array) {
        if (error)
            *error = fault;
        return {};
    }

    return SpotJson::collectSpots(*array, [](const QJsonObject &object) {
        StationSpot spot;
        spot.source = StationSpot::POTA;
        spot.callsign = SpotJson::text(object, QStringLiteral("activator"));
        spot.reference = SpotJson::text(object, QStringLiteral("reference"));
        spot.referenceName = SpotJson::text(object, QStringLiteral("name"));
        spot.mode = SpotJson::text(object, QStringLiteral("mode")).toUpper();
        spot.spotter = SpotJson::text(object, QStringLiteral("spotter"));
        spot.comments = SpotJson::text(object, QStringLiteral("comments"));
        spot.locationDesc = SpotJson::text(object, QStringLiteral("locationDesc"));
        spot.grid = SpotJson::text(object, QStringLiteral("grid6"));
        double lat = 0.0;
        double lon = 0.0;
        if (StationModel::gridToLatLon(spot.grid, lat, lon)) {
            spot.hasLocation = true;
            spot.lat = lat;
            spot.lon = lon;
        }
        // Always kHz on this service; "nan" and "inf" convert, but are no frequency.
        bool ok = false;
        const double khz = SpotJson::text(object, QStringLiteral("frequency")).toDouble(&ok);
        spot.frequencyKhz = ok && std::isfinite(khz) ? khz : 0.0;
        spot.spotTime = SpotJson::isoTimeAssumingUtc(SpotJson::text(object, QStringLiteral("spotTime")));
        return spot;
    });
}
