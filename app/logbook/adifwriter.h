#pragma once

#include "app/logbook/contactrecord.h"

#include <QDateTime>
#include <QList>
#include <QString>

// The operator's own station, for the fields about it.
struct AdifStation
{
    QString callsign; // taken when a record carries no call of its own
    bool hasLocation = false;
    double latitude = 0.0;
    double longitude = 0.0;
};

// Writes every ADIF Tallis produces: fields, the header, one record per
// logged reference. Lengths count characters, as the format says.
namespace AdifWriter {

// "<NAME:length>value " with the length in characters, not bytes or UTF-16 units.
QString field(const QString &name, const QString &value);

// A free line, then ADIF_VER 3.1.4, PROGRAMID "Tallis", PROGRAMVERSION and
// CREATED_TIMESTAMP (UTC), then <EOH>.
QString header(const QDateTime &created, const QString &programVersion);

// One record, "<EOR>" and a blank line after it. Empty values are left out.
QString record(const ContactRecord &record, const AdifStation &station);

// A whole file: the header and the records in the given order.
QString document(const QList<ContactRecord> &records, const AdifStation &station, const QDateTime &created,
                 const QString &programVersion);

// The six-character Maidenhead locator of a position, such as "IO84mj".
QString gridSquare(double latitude, double longitude);

} // namespace AdifWriter
