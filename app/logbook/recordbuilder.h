#pragma once

#include "app/logbook/contactrecord.h"
#include "model/stationspot.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

// What the operator changes in one record before it is logged; unset fields
// keep the record's own. The record is the one of reference (any case).
struct RecordEdit
{
    QString reference;
    bool logged = true; // false leaves this reference out of the contact
    std::optional<QString> rstSent;
    std::optional<QString> rstRcvd;
    std::optional<QString> comments;
};

// The records of one contact: one for each distinct reference worked. Working
// a station marks its rows of the same call (any case) within 1 kHz contacted
// (a summit and a park of one activation, a two-fer given as two rows), and
// each of their references gets a record built from its own row. Rows without
// a reference add nothing beside referenced ones; a contact with none at all
// still gives one record, of the selected spot.
class RecordBuilder final
{
public:
    // spots: the table's rows, in model order.
    RecordBuilder(QList<StationSpot> spots, QString myCallsign);

    // The operator's changes, applied by build(); a later edit of the same
    // reference wins.
    void setEdits(QList<RecordEdit> edits);

    // The rows worked with selected, one per reference: selected first, then
    // the others in model order.
    QList<StationSpot> workedRows(const StationSpot &selected) const;

    // The records, all logged at loggedAt, reports defaulted by mode, edits applied.
    QList<ContactRecord> build(const StationSpot &selected, const QDateTime &loggedAt) const;

private:
    const RecordEdit *editFor(const QString &reference) const;

    QList<StationSpot> m_spots;
    QString m_myCallsign;
    QList<RecordEdit> m_edits;
};
