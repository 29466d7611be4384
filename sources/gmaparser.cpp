#include "sources/webparsers.h"

#include "sources/servicejson.h"

namespace {

// The service gives "DATE" as yyyyMMdd and "TIME" as HHmm in UTC, dropping the
// leading zero of early hours ("930").
QDateTime gmaTime(const QString &dateText, const QString &timeText)
{
    const QString paddedTime = timeText.rightJustified(4, QLatin1Char('0'));
    if (dateText.size() != 8 || paddedTime.size() != 4)
        return {};
    // Parsed apart and joined as UTC, so a local daylight-saving gap cannot
    // swallow a valid wall-clock time.
    const QDate date = QDate::fromString(dateText, QStringLiteral("yyyyMMdd"));
    const QTime time = QTime::fromString(paddedTime, QStringLiteral("HHmm"));
    if (!date.isValid() || !time.isValid())
        return {};
    return QDateTime(date, time, Qt::UTC);
}

} // namespace

// Global Mountain Activity: an object with the spots under "RCD".
SpotParse WebParsers::gma(const QByteArray &body)
{
    SpotParse parse;
    const std::optional<QJsonObject> document = ServiceJson::parseObject(body, StationSpot::GMA, parse.error);
    if (!document)
        return parse;

    const QJsonArray records = document->value(QStringLiteral("RCD")).toArray();
    parse.spots = ServiceJson::collectSpots(records, [](const QJsonObject &object) {
        StationSpot spot;
        spot.source = StationSpot::GMA;
        spot.callsign = ServiceJson::text(object, QStringLiteral("ACTIVATOR")).toUpper();
        spot.reference = ServiceJson::text(object, QStringLiteral("REF"));
        spot.referenceName = ServiceJson::text(object, QStringLiteral("NAME"));
        spot.mode = ServiceJson::text(object, QStringLiteral("MODE")).toUpper();
        spot.spotter = ServiceJson::text(object, QStringLiteral("SPOTTER")).toUpper();
        spot.comments = ServiceJson::text(object, QStringLiteral("TEXT"));
        // MHz or kHz, as text or, from some service versions, as a number.
        spot.frequencyKhz =
            ServiceJson::mhzOrKhzToKhz(ServiceJson::frequency(object.value(QStringLiteral("QRG"))));
        spot.spotTime = gmaTime(ServiceJson::text(object, QStringLiteral("DATE")),
                                ServiceJson::text(object, QStringLiteral("TIME")));
        return spot;
    });
    return parse;
}
