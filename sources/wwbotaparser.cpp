#include "sources/webparsers.h"

#include "sources/servicejson.h"

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

} // namespace

// Bunkers on the Air: an array of activations, each for one or more bunkers.
SpotParse WebParsers::wwbota(const QByteArray &body)
{
    SpotParse parse;
    const std::optional<QJsonArray> array = ServiceJson::parseArray(body, StationSpot::WWBOTA, parse.error);
    if (!array)
        return parse;

    QList<StationSpot> &spots = parse.spots;
    spots.reserve(array->size());
    for (const QJsonValue &value : *array) {
        if (!value.isObject())
            continue;
        const QJsonObject activation = value.toObject();
        // The service marks spots posted to try it out; they are no activation.
        const QString type = ServiceJson::text(activation, QStringLiteral("type"));
        if (type.compare(QLatin1String("Test"), Qt::CaseInsensitive) == 0)
            continue;
        const QJsonArray references = activation.value(QStringLiteral("references")).toArray();
        if (references.isEmpty())
            continue;

        // One activation may count for several bunkers at once: each becomes its own spot.
        StationSpot base;
        base.source = StationSpot::WWBOTA;
        base.callsign = ServiceJson::text(activation, QStringLiteral("call"));
        if (base.callsign.isEmpty())
            continue;
        // Always MHz on this service.
        base.frequencyKhz = ServiceJson::number(activation, QStringLiteral("freq")) * 1000.0;
        base.mode = ServiceJson::text(activation, QStringLiteral("mode")).toUpper();
        base.spotter = ServiceJson::text(activation, QStringLiteral("spotter"));
        base.comments = ServiceJson::text(activation, QStringLiteral("comment"));
        if (type.compare(QLatin1String("QRT"), Qt::CaseInsensitive) == 0)
            base.comments = ServiceJson::qrtComment(base.comments);
        base.spotTime = parseActivationTime(ServiceJson::text(activation, QStringLiteral("time")));

        for (const QJsonValue &referenceValue : references) {
            const QJsonObject reference = referenceValue.toObject();
            StationSpot spot = base;
            spot.reference = ServiceJson::text(reference, QStringLiteral("reference"));
            if (spot.reference.isEmpty())
                continue;
            spot.referenceName = ServiceJson::text(reference, QStringLiteral("name"));
            spots.append(std::move(spot));
        }
    }
    return parse;
}
