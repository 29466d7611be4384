#pragma once

#include "model/stationspot.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

// Readers for the JSON the spot services send (the API's own JSON writer is
// elsewhere). The services are not ours, so every reader is lenient: a missing
// or wrongly typed value reads as empty or zero instead of failing the reply.
namespace ServiceJson {

// The body as a top-level array or object. On failure no value is returned and
// error holds the text shown to the user, prefixed with the source's name
// ("SOTA JSON parse error: ...", "SOTA response is not a JSON array").
std::optional<QJsonArray> parseArray(const QByteArray &body, StationSpot::Source source, QString &error);
std::optional<QJsonObject> parseObject(const QByteArray &body, StationSpot::Source source, QString &error);

// The value under key if it is a JSON string, trimmed; otherwise empty.
QString text(const QJsonObject &object, const QString &key);

// The value under key if it is a finite JSON number; otherwise 0.
double number(const QJsonObject &object, const QString &key);

enum class DecimalComma { Rejected, Accepted };

// A frequency as the services send it: numeric text (the form they were built
// with) or, from newer service versions, a plain JSON number. Anything else,
// null included, and anything not finite gives 0. With DecimalComma::Accepted
// a text with a comma and no point ("14,061") is read with the comma as point.
double frequency(const QJsonValue &value, DecimalComma comma = DecimalComma::Rejected);

// MHz to kHz, to the nearest Hz: "4.047" times 1000 is a hair under 4047,
// and a spot's key truncates the kHz.
double mhzToKhz(double mhz);

// A value that may be MHz or kHz: 1000 or less is MHz and is scaled.
double mhzOrKhzToKhz(double value);

// A comment marked so that the table and the filters see the station has gone.
QString qrtComment(const QString &comment);

// An ISO 8601 time stamp that the service means as UTC even when it carries no
// zone: a "Z" is appended unless the text already ends in one or has a "+"
// offset (the services send no negative offsets; one would get the "Z" and then
// fail to parse). The result is in UTC, or invalid for empty or unparsable text.
QDateTime isoTimeAssumingUtc(const QString &text);
// The same through Qt's ISO reader alone: the fallback, and the yardstick of the fast path.
QDateTime isoTimeAssumingUtcByQt(const QString &text);

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

} // namespace ServiceJson
