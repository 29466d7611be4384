#include "sources/webparsers.h"

#include "sources/servicejson.h"

namespace {

// The older service sends the summit code without its association
// ("SE-029" and "W5N"); the current one sends the whole reference.
QString summitReference(const QJsonObject &object)
{
    const QString code = ServiceJson::text(object, QStringLiteral("summitCode"));
    const QString association = ServiceJson::text(object, QStringLiteral("associationCode"));
    if (code.contains(QLatin1Char('/')) || association.isEmpty())
        return code;
    return association + QLatin1Char('/') + code;
}

// The current service names the summit in "summitName"; the older one
// described it in "summitDetails".
QString summitName(const QJsonObject &object)
{
    const QString details = ServiceJson::text(object, QStringLiteral("summitDetails"));
    return details.isEmpty() ? ServiceJson::text(object, QStringLiteral("summitName")) : details;
}

} // namespace

// Summits on the Air: an array of spots, in the current shape or the older one.
SpotParse WebParsers::sota(const QByteArray &body)
{
    SpotParse parse;
    const std::optional<QJsonArray> array = ServiceJson::parseArray(body, StationSpot::SOTA, parse.error);
    if (!array)
        return parse;

    parse.spots = ServiceJson::collectSpots(*array, [](const QJsonObject &object) {
        StationSpot spot;
        // The service marks spots posted to try it out; they are no activation.
        const QString type = ServiceJson::text(object, QStringLiteral("type"));
        if (type.compare(QLatin1String("TEST"), Qt::CaseInsensitive) == 0)
            return spot; // without a call sign, so it is dropped
        spot.source = StationSpot::SOTA;
        spot.callsign = ServiceJson::text(object, QStringLiteral("activatorCallsign"));
        spot.reference = summitReference(object);
        spot.referenceName = summitName(object);
        spot.mode = ServiceJson::text(object, QStringLiteral("mode")).toUpper();
        // "callsign" is whoever posted the spot, not the activator.
        spot.spotter = ServiceJson::text(object, QStringLiteral("callsign"));
        spot.comments = ServiceJson::text(object, QStringLiteral("comments"));
        // The service marks an activator gone off the air in "type"; the
        // comment carries it to the table and the filters, as for WWBOTA.
        if (type.compare(QLatin1String("QRT"), Qt::CaseInsensitive) == 0)
            spot.comments = ServiceJson::qrtComment(spot.comments);
        // MHz now as a number, formerly as text, sometimes with a decimal comma.
        spot.frequencyKhz = ServiceJson::mhzOrKhzToKhz(ServiceJson::frequency(
            object.value(QStringLiteral("frequency")), ServiceJson::DecimalComma::Accepted));
        spot.spotTime =
            ServiceJson::isoTimeAssumingUtc(ServiceJson::text(object, QStringLiteral("timeStamp")));

        const QJsonValue lat = object.value(QStringLiteral("highlat"));
        const QJsonValue lon = object.value(QStringLiteral("highlon"));
        if (lat.isDouble() && lon.isDouble()) {
            spot.lat = lat.toDouble();
            spot.lon = lon.toDouble();
            spot.hasLocation = true;
        }
        return spot;
    });
    return parse;
}
