#pragma once

#include "model/stationspot.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

// One logged contact with one reference: the row worked, who logged it, when,
// and the reports. A contact with a summit and a park is two of these, one
// per reference, sharing the time. It is what the daily log holds, one JSON
// line each, and what every ADIF Tallis writes is made from.
struct ContactRecord
{
    StationSpot spot; // the row worked; its comments are the record's comment
    QString myCallsign;
    QDateTime loggedAt; // UTC
    QString rstSent;
    QString rstRcvd;

    // A record of spot with the mode's default reports.
    static ContactRecord fromSpot(const StationSpot &spot, const QString &myCallsign,
                                  const QDateTime &loggedAt);

    // The band of the spot's frequency, empty outside every band.
    QString band() const;

    // The log line: compact JSON, keys ascending, then "\n".
    QByteArray logLine() const;
    // A log line read back. Lines written before "band" and the reports
    // existed read too, with empty reports. Nothing for a line that is not a
    // contact: no call sign or no valid time stamp.
    static std::optional<ContactRecord> fromLogLine(const QByteArray &line);
};
