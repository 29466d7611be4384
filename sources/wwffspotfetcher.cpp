#include "sources/wwffspotfetcher.h"

#include "sources/spotjson.h"

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

WwffSpotFetcher::WwffSpotFetcher(QObject *parent, const QUrl &serviceUrl)
    : SpotFetcher(parent, serviceUrl)
{}

void WwffSpotFetcher::fetch()
{
    sendGet(QStringLiteral("/static/spots.json"));
}

QList<StationSpot> WwffSpotFetcher::parseResponse(const QByteArray &body)
{
    QString error;
    const std::optional<QJsonArray> array = SpotJson::parseArray(body, QStringLiteral("WWFF"), &error);
    if (!array) {
        emit fetchError(error);
        return {};
    }

    return SpotJson::collectSpots(*array, [](const QJsonObject &object) {
        StationSpot spot;
        spot.source = StationSpot::WWFF;
        spot.callsign = SpotJson::text(object, QStringLiteral("activator"));
        spot.reference = SpotJson::text(object, QStringLiteral("reference"));
        spot.referenceName = SpotJson::text(object, QStringLiteral("reference_name"));
        spot.mode = SpotJson::text(object, QStringLiteral("mode")).toUpper();
        spot.spotter = SpotJson::text(object, QStringLiteral("spotter"));
        spot.comments = SpotJson::text(object, QStringLiteral("remarks"));
        spot.frequencyKhz = SpotJson::number(object, QStringLiteral("frequency_khz"));
        spot.spotTime = epochSecsToUtc(SpotJson::number(object, QStringLiteral("spot_time")));
        return spot;
    });
}
