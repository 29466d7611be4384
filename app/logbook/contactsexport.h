#pragma once

#include "app/logbook/adifwriter.h"
#include "app/logbook/contactrecord.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QString>

// "Export All Contacts (ADIF)": every contact the daily logs hold, not only
// the marks of the last hours, as one ADIF file for the operator's logbook.
namespace ContactsExport {

QString title(); // "Export All Contacts"
QString nothingToExport();
QString exportedMessage(); // %1 the record count, %2 the path

// Every record of every "contacts-*.jsonl" of directory logged on or after
// from (a UTC date; an invalid date takes all), oldest first. Lines that are
// not contacts are passed over.
QList<ContactRecord> collect(const QString &directory, const QDate &from);

// The ADIF text of records, created at now, for programVersion.
QString adifText(const QList<ContactRecord> &records, const AdifStation &station, const QDateTime &now,
                 const QString &programVersion);

// Collects and writes to path; the number of records written, or -1 when the
// file could not be written (an existing one then keeps its content).
qsizetype exportTo(const QString &path, const QString &directory, const QDate &from,
                   const AdifStation &station, const QDateTime &now, const QString &programVersion);

} // namespace ContactsExport
