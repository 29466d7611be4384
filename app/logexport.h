#pragma once

#include "model/stationspot.h"

#include <QDateTime>
#include <QList>
#include <QString>

class ContactStatusStore;

// One contacted spot as an export writes it.
struct ContactRow
{
    QString callsign;
    QString reference;
    double frequencyKhz = 0.0;
    QString band;   // SOTA: the band name, empty outside every band
    QString mode;   // SOTA: the mapped mode; POTA: the spot's mode upper-cased
    QDateTime time; // UTC
};

// The texts of one export: the dialogs' title, what is proposed and offered,
// and the notices. The window asks; the texts and the writing live here.
struct ExportFormat
{
    StationSpot::Source source;
    QString title;
    QString nothingToExport;
    QString proposedFileName; // in the home directory
    QString fileFilter;
    QString exported; // %1 the row count, %2 the path
};

// The SOTA CSV and POTA ADIF logs, built as text from the contacted spots so
// that they can be checked byte for byte without a dialog or a file.
namespace LogExport {

const ExportFormat &sotaFormat();
const ExportFormat &potaFormat();

// The contacted spots of source in model order, filtered or not; a row's time
// is its mark's time from store, or now for a spot without one.
QList<ContactRow> collectRows(const QList<StationSpot> &spots, StationSpot::Source source,
                              const ContactStatusStore &store, const QDateTime &now);

// CW, FM, AM, SSB, or DATA for everything else, empty included.
QString sotaMode(const QString &mode);

// "V2" lines, no header. Empty own data are written "UNKNOWN" and "XX/XX-000".
QString sotaCsv(const QList<ContactRow> &rows, const QString &myCallsign, const QString &mySummit);

// "<NAME:length>value " with the length in characters, not bytes.
QString adifField(const QString &name, const QString &value);
QString potaAdif(const QList<ContactRow> &rows, const QString &myCallsign);

// The text of format's export; mySummit matters to SOTA only.
QString exportText(const ExportFormat &format, const QList<ContactRow> &rows, const QString &myCallsign,
                   const QString &mySummit);

// Replaces path's content with text in UTF-8; false when it could not be
// written, in which case an existing file keeps its old content.
bool writeTextFile(const QString &path, const QString &text);

} // namespace LogExport
