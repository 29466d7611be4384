#include "sources/potaspotfetcher.h"

#include "model/stationmodel.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

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

QDateTime PotaSpotFetcher::parseSpotTime(const QString &text)
{
    QString stamp = text.trimmed();
    if (stamp.isEmpty())
        return {};
    // Only "+" marks an offset: a negative one gets the "Z" too and then fails
    // to parse, as the service never sends one.
    if (!stamp.endsWith(QLatin1Char('Z')) && !stamp.contains(QLatin1Char('+')))
        stamp += QLatin1Char('Z');
    QDateTime time = QDateTime::fromString(stamp, Qt::ISODate);
    if (!time.isValid())
        time = QDateTime::fromString(stamp, Qt::ISODateWithMs);
    if (time.isValid() && time.timeSpec() != Qt::UTC)
        time = time.toUTC();
    return time;
}

QList<StationSpot> PotaSpotFetcher::parseSpots(const QByteArray &body, QString *error)
{
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(body, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        if (error)
            *error = QStringLiteral("POTA JSON parse error: %1").arg(parseError.errorString());
        return {};
    }
    if (!doc.isArray()) {
        if (error)
            *error = QStringLiteral("POTA response is not a JSON array");
        return {};
    }
    const QJsonArray array = doc.array();
    QList<StationSpot> spots;
    spots.reserve(array.size());
    for (const QJsonValue &value : array) {
        if (!value.isObject())
            continue;
        const QJsonObject obj = value.toObject();
        const auto text = [&obj](QLatin1String key) { return obj.value(key).toString().trimmed(); };
        StationSpot spot;
        spot.source = StationSpot::POTA;
        spot.callsign = text(QLatin1String("activator"));
        if (spot.callsign.isEmpty())
            continue;
        spot.reference = text(QLatin1String("reference"));
        spot.referenceName = text(QLatin1String("name"));
        spot.mode = text(QLatin1String("mode")).toUpper();
        spot.spotter = text(QLatin1String("spotter"));
        spot.comments = text(QLatin1String("comments"));
        spot.locationDesc = text(QLatin1String("locationDesc"));
        spot.grid = text(QLatin1String("grid6"));
        double lat = 0.0;
        double lon = 0.0;
        if (StationModel::gridToLatLon(spot.grid, lat, lon)) {
            spot.hasLocation = true;
            spot.lat = lat;
            spot.lon = lon;
        }
        bool ok = false;
        const double khz = text(QLatin1String("frequency")).toDouble(&ok);
        // "nan" and "inf" convert, but are no frequency either.
        spot.frequencyKhz = ok && std::isfinite(khz) ? khz : 0.0;
        spot.spotTime = parseSpotTime(obj.value(QLatin1String("spotTime")).toString());
        spots.append(std::move(spot));
    }
    return spots;
}
