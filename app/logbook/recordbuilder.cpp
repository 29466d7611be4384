#include "app/logbook/recordbuilder.h"

#include "model/stationmodel.h"

#include <cmath>

namespace {

QString referenceKey(const QString &reference)
{
    return reference.trimmed().toUpper();
}

} // namespace

RecordBuilder::RecordBuilder(QList<StationSpot> spots, QString myCallsign)
    : m_spots(std::move(spots))
    , m_myCallsign(std::move(myCallsign))
{}

void RecordBuilder::setEdits(QList<RecordEdit> edits)
{
    m_edits = std::move(edits);
}

QList<StationSpot> RecordBuilder::workedRows(const StationSpot &selected) const
{
    QList<StationSpot> rows{selected};
    QStringList seen{referenceKey(selected.reference)};
    for (const StationSpot &spot : m_spots) {
        if (spot.callsign.compare(selected.callsign, Qt::CaseInsensitive) != 0 ||
            std::fabs(spot.frequencyKhz - selected.frequencyKhz) > StationModel::k_similarFreqKhz)
            continue;
        const QString reference = referenceKey(spot.reference);
        if (reference.isEmpty() || seen.contains(reference))
            continue;
        seen.append(reference);
        rows.append(spot);
    }
    // A cluster spot of the activator says nothing the programme's own spot does not.
    if (rows.size() > 1 && seen.first().isEmpty())
        rows.removeFirst();
    return rows;
}

QList<ContactRecord> RecordBuilder::build(const StationSpot &selected, const QDateTime &loggedAt) const
{
    QList<ContactRecord> records;
    for (const StationSpot &row : workedRows(selected)) {
        ContactRecord record = ContactRecord::fromSpot(row, m_myCallsign, loggedAt);
        record.spot.status = StationSpot::Contacted;
        if (const RecordEdit *edit = editFor(row.reference)) {
            if (!edit->logged)
                continue;
            record.rstSent = edit->rstSent.value_or(record.rstSent);
            record.rstRcvd = edit->rstRcvd.value_or(record.rstRcvd);
            record.spot.comments = edit->comments.value_or(record.spot.comments);
        }
        records.append(record);
    }
    return records;
}

const RecordEdit *RecordBuilder::editFor(const QString &reference) const
{
    const QString key = referenceKey(reference);
    for (auto it = m_edits.crbegin(); it != m_edits.crend(); ++it) {
        if (referenceKey(it->reference) == key)
            return &*it;
    }
    return nullptr;
}
