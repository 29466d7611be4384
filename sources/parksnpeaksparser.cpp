#include "sources/webparsers.h"

#include "sources/servicejson.h"

namespace {

// "yyyy-MM-dd HH:mm:ss", meant as UTC.
QDateTime parksnpeaksTime(QString text)
{
    if (text.size() > 10 && text.at(10) == QLatin1Char(' '))
        text[10] = QLatin1Char('T');
    return ServiceJson::isoTimeAssumingUtc(text);
}

} // namespace

// ParksnPeaks: an array of spots of every programme it knows. Only the silos
// are taken: POTA, SOTA and WWFF come from their own services, and a second
// batch under one of those sources would replace that source's rows.
SpotParse WebParsers::parksnpeaks(const QByteArray &body)
{
    SpotParse parse;
    const std::optional<QJsonArray> array = ServiceJson::parseArray(body, StationSpot::SIOTA, parse.error);
    if (!array)
        return parse;

    parse.spots = ServiceJson::collectSpots(*array, [](const QJsonObject &object) {
        StationSpot spot;
        if (ServiceJson::text(object, QStringLiteral("actClass"))
                .compare(QLatin1String("SiOTA"), Qt::CaseInsensitive) != 0)
            return spot; // no call sign: dropped
        spot.source = StationSpot::SIOTA;
        spot.callsign = ServiceJson::text(object, QStringLiteral("actCallsign")).toUpper();
        spot.reference = ServiceJson::text(object, QStringLiteral("actSiteID"));
        spot.referenceName = ServiceJson::text(object, QStringLiteral("actLocation"));
        spot.mode = ServiceJson::text(object, QStringLiteral("actMode")).toUpper();
        spot.spotter = ServiceJson::text(object, QStringLiteral("actSpoter")).toUpper(); // sic
        spot.comments = ServiceJson::text(object, QStringLiteral("actComments"));
        // Always MHz on this service, as text.
        spot.frequencyKhz =
            ServiceJson::mhzToKhz(ServiceJson::frequency(object.value(QStringLiteral("actFreq"))));
        spot.spotTime = parksnpeaksTime(ServiceJson::text(object, QStringLiteral("actTime")));
        return spot;
    });
    return parse;
}
