#include "sources/wwbotaspotfetcher.h"

#include "sources/spotjson.h"

namespace {

// The service sends its times with a zone; one without is read as this
// computer's local time, unlike the other sources.
QDateTime parseActivationTime(const QString &text)
{
    QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!time.isValid())
        time = QDateTime::fromString(text, Qt::ISODate);
    if (time.isValid() && time.timeSpec() != Qt::UTC)
        time = time.toUTC();
    return time;
}

QString activationComment(const QJsonObject &activation)
{
    const QString comment = SpotJson::text(activation, QStringLiteral("comment"));
    const QString type = SpotJson::text(activation, QStringLiteral("type"));
    if (type.compare(QLatin1String("QRT"), Qt::CaseInsensitive) != 0)
        return comment;
    // Marking the comment lets the table and the filters see the station has gone.
    return comment.isEmpty() ? QStringLiteral("QRT") : QStringLiteral("QRT ") + comment;
}

} // namespace

WwbotaSpotFetcher::WwbotaSpotFetcher(QObject *parent, const QUrl &serviceUrl)
    : SpotFetcher(parent, serviceUrl)
{}

void WwbotaSpotFetcher::fetch()
{
    sendGet(QStringLiteral("/spots/"));
}

QList<StationSpot> WwbotaSpotFetcher::parseResponse(const QByteArray &body)
{
    QString error;
    const std::optional<QJsonArray> array = SpotJson::parseArray(body, QStringLiteral("WWBOTA"), &error);
    if (!array) {
        emit fetchError(error);
        return {};
    }

    QList<StationSpot> spots;
    spots.reserve(array->size());
    for (const QJsonValue &value : *array) {
        if (!value.isObject())
            continue;
        const QJsonObject activation = value.toObject();
        const QJsonArray references = activation.value(QStringLiteral("references")).toArray();
        if (references.isEmpty())
            continue;

        // One activation may count for several bunkers at once: each becomes its own spot.
        StationSpot base;
        base.source = StationSpot::WWBOTA;
        base.callsign = SpotJson::text(activation, QStringLiteral("call"));
        if (base.callsign.isEmpty())
            continue;
        // Always MHz on this service.
        base.frequencyKhz = SpotJson::number(activation, QStringLiteral("freq")) * 1000.0;
        base.mode = SpotJson::text(activation, QStringLiteral("mode")).toUpper();
        base.spotter = SpotJson::text(activation, QStringLiteral("spotter"));
        base.comments = activationComment(activation);
        base.spotTime = parseActivationTime(SpotJson::text(activation, QStringLiteral("time")));

        for (const QJsonValue &referenceValue : references) {
            const QJsonObject reference = referenceValue.toObject();
            StationSpot spot = base;
            spot.reference = SpotJson::text(reference, QStringLiteral("reference"));
            if (spot.reference.isEmpty())
                continue;
            spot.referenceName = SpotJson::text(reference, QStringLiteral("name"));
            spots.append(std::move(spot));
        }
    }
    return spots;
}
