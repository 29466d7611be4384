#include "sources/webparsers.h"

#include "sources/servicejson.h"

#include <cmath>

namespace {

// Latest instant a QDateTime can show sensibly (9999-12-31T23:59:59Z); anything
// beyond is garbage from the service, not a time.
constexpr double k_maxEpochSecs = 253402300799.0;

QDateTime epochSecsToUtc(double secs)
{
    const double whole = std::trunc(secs);
    if (!(whole > 0.0) || whole > k_maxEpochSecs)
        return {};
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(whole), Qt::UTC);
}

} // namespace

// World Wide Flora & Fauna: an array of spots.
SpotParse WebParsers::wwff(const QByteArray &body)
{
    SpotParse parse;
    const std::optional<QJsonArray> array = ServiceJson::parseArray(body, StationSpot::WWFF, parse.error);
    if (!array)
        return parse;

    parse.spots = ServiceJson::collectSpots(*array, [](const QJsonObject &object) {
        StationSpot spot;
        spot.source = StationSpot::WWFF;
        spot.callsign = ServiceJson::text(object, QStringLiteral("activator"));
        spot.reference = ServiceJson::text(object, QStringLiteral("reference"));
        spot.referenceName = ServiceJson::text(object, QStringLiteral("reference_name"));
        spot.mode = ServiceJson::text(object, QStringLiteral("mode")).toUpper();
        spot.spotter = ServiceJson::text(object, QStringLiteral("spotter"));
        spot.comments = ServiceJson::text(object, QStringLiteral("remarks"));
        spot.frequencyKhz = ServiceJson::number(object, QStringLiteral("frequency_khz"));
        spot.spotTime = epochSecsToUtc(ServiceJson::number(object, QStringLiteral("spot_time")));
        return spot;
    });
    return parse;
}
