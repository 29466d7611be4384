#include "sources/webparsers.h"

#include "model/stationmodel.h"
#include "sources/servicejson.h"

// Parks on the Air: an array of spots.
SpotParse WebParsers::pota(const QByteArray &body)
{
    SpotParse parse;
    const std::optional<QJsonArray> array = ServiceJson::parseArray(body, StationSpot::POTA, parse.error);
    if (!array)
        return parse;

    parse.spots = ServiceJson::collectSpots(*array, [](const QJsonObject &object) {
        StationSpot spot;
        spot.source = StationSpot::POTA;
        spot.callsign = ServiceJson::text(object, QStringLiteral("activator"));
        spot.reference = ServiceJson::text(object, QStringLiteral("reference"));
        spot.referenceName = ServiceJson::text(object, QStringLiteral("name"));
        spot.mode = ServiceJson::text(object, QStringLiteral("mode")).toUpper();
        spot.spotter = ServiceJson::text(object, QStringLiteral("spotter"));
        spot.comments = ServiceJson::text(object, QStringLiteral("comments"));
        spot.locationDesc = ServiceJson::text(object, QStringLiteral("locationDesc"));
        spot.grid = ServiceJson::text(object, QStringLiteral("grid6"));
        double lat = 0.0;
        double lon = 0.0;
        if (StationModel::gridToLatLon(spot.grid, lat, lon)) {
            spot.hasLocation = true;
            spot.lat = lat;
            spot.lon = lon;
        }
        // Always kHz on this service, as text or as a number.
        spot.frequencyKhz = ServiceJson::frequency(object.value(QStringLiteral("frequency")));
        spot.spotTime =
            ServiceJson::isoTimeAssumingUtc(ServiceJson::text(object, QStringLiteral("spotTime")));
        return spot;
    });
    return parse;
}
