#include "sources/gmaspotfetcher.h"

#include "sources/spotjson.h"

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

GmaSpotFetcher::GmaSpotFetcher(QObject *parent, const QUrl &serviceUrl)
    : SpotFetcher(parent, serviceUrl)
{}

void GmaSpotFetcher::fetch()
{
    sendGet(QStringLiteral("/api/spots/gma/"));
}

QList<StationSpot> GmaSpotFetcher::parseResponse(const QByteArray &body)
{
    QString error;
    const std::optional<QJsonObject> document = SpotJson::parseObject(body, QStringLiteral("GMA"), &error);
    if (!document) {
        emit fetchError(error);
        return {};
    }

    const QJsonArray records = document->value(QStringLiteral("RCD")).toArray();
    return SpotJson::collectSpots(records, [](const QJsonObject &object) {
        StationSpot spot;
        spot.source = StationSpot::GMA;
        spot.callsign = SpotJson::text(object, QStringLiteral("ACTIVATOR")).toUpper();
        spot.reference = SpotJson::text(object, QStringLiteral("REF"));
        spot.referenceName = SpotJson::text(object, QStringLiteral("NAME"));
        spot.mode = SpotJson::text(object, QStringLiteral("MODE")).toUpper();
        spot.spotter = SpotJson::text(object, QStringLiteral("SPOTTER")).toUpper();
        spot.comments = SpotJson::text(object, QStringLiteral("TEXT"));
        spot.frequencyKhz = SpotJson::textToKhz(SpotJson::text(object, QStringLiteral("QRG")));
        spot.spotTime = gmaTime(SpotJson::text(object, QStringLiteral("DATE")),
                                SpotJson::text(object, QStringLiteral("TIME")));
        return spot;
    });
}
