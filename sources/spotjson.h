#pragma once

#include "model/stationspot.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

// Small readers shared by the JSON spot parsers. The services are not ours, so
// every reader is lenient: a missing or wrongly typed value reads as empty or
// zero instead of failing the whole reply.
namespace SpotJson {

// The body as a top-level array or object. On failure no value is returned and
// *error holds the text shown to the user, prefixed with the source name
// ("SOTA JSON parse error: ...", "SOTA response is not a JSON array").
std::optional<QJsonArray> parseArray(const QByteArray &body, const QString &sourceName, QString *error);
std::optional<QJsonObject> parseObject(const QByteArray &body, const QString &sourceName, QString *error);

// The value under key if it is a JSON string, trimmed; otherwise empty.
QString text(const QJsonObject &object, const QString &key);

// The value under key if it is a finite JSON number; otherwise 0.
double number(const QJsonObject &object, const QString &key);

// Text that may carry either MHz or kHz: a value of 1000 or less is MHz and is
// scaled, a larger one is already kHz. Text that is not a finite number gives 0.
double textToKhz(const QString &text);

// An ISO 8601 time stamp that the service means as UTC even when it carries no
// zone: a "Z" is appended unless the text already ends in one or has a "+"
// offset (the services send no negative offsets; one would get the "Z" and then
// fail to parse). The result is in UTC, or invalid for empty or unparsable text.
QDateTime isoTimeAssumingUtc(const QString &text);

// Walks an array of spot objects in order: elements that are not objects are
// skipped, and so is every built spot without a call sign.
template <typename BuildSpot>
QList<StationSpot> collectSpots(const QJsonArray &array, BuildSpot buildSpot)
{
    QList<StationSpot> spots;
    spots.reserve(array.size());
    for (const QJsonValue &value : array) {
        if (!value.isObject())
            continue;
        StationSpot spot = buildSpot(value.toObject());
        if (!spot.callsign.isEmpty())
            spots.append(std::move(spot));
    }
    return spots;
}

} // namespace SpotJson
