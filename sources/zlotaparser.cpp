#include "sources/webparsers.h"

#include "sources/servicejson.h"

namespace {

// The id comes as a number or as its text; either way it only names the activation.
QString activationId(const QJsonValue &value)
{
    if (value.isString())
        return value.toString().trimmed();
    const double number = value.toDouble(-1.0);
    // Whole numbers only, and only those a double holds exactly.
    if (value.isDouble() && number >= 0.0 && number < 9.0e15 && number == double(qint64(number)))
        return QString::number(qint64(number));
    return QString();
}

} // namespace

// New Zealand on the Air: an array of spots, one per reference; an activation
// at several references is several rows under one id.
SpotParse WebParsers::zlota(const QByteArray &body)
{
    SpotParse parse;
    const std::optional<QJsonArray> array = ServiceJson::parseArray(body, StationSpot::ZLOTA, parse.error);
    if (!array)
        return parse;

    parse.spots = ServiceJson::collectSpots(*array, [](const QJsonObject &object) {
        StationSpot spot;
        spot.source = StationSpot::ZLOTA;
        spot.callsign = ServiceJson::text(object, QStringLiteral("activator")).toUpper();
        spot.reference = ServiceJson::text(object, QStringLiteral("reference"));
        spot.referenceName = ServiceJson::text(object, QStringLiteral("name"));
        spot.mode = ServiceJson::text(object, QStringLiteral("mode")).toUpper();
        spot.spotter = ServiceJson::text(object, QStringLiteral("spotter")).toUpper();
        spot.comments = ServiceJson::text(object, QStringLiteral("comments"));
        // Always MHz on this service, as text.
        spot.frequencyKhz =
            ServiceJson::mhzToKhz(ServiceJson::frequency(object.value(QStringLiteral("frequency"))));
        spot.spotTime =
            ServiceJson::isoTimeAssumingUtc(ServiceJson::text(object, QStringLiteral("referenced_time")));
        spot.activationId = activationId(object.value(QStringLiteral("id")));
        return spot;
    });
    return parse;
}
