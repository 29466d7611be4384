#include "app/logbook/workedtable.h"

namespace {

const WorkedTable::BandContacts *find(const QHash<QString, WorkedTable::BandContacts> &table,
                                      const QString &key)
{
    const auto it = table.constFind(key);
    return it == table.cend() ? nullptr : &it.value();
}

} // namespace

QString WorkedTable::folded(const QString &text)
{
    // Most references and call signs arrive upper-cased already and are then used without a copy.
    const QString trimmed = text.trimmed();
    return trimmed.isUpper() ? trimmed : trimmed.toUpper();
}

void WorkedTable::record(const QString &callsign, const QString &reference, int band, qint64 timeMs,
                         const QString &mode)
{
    recordIn(m_callsigns, folded(callsign), band, timeMs, mode);
    recordReference(reference, band, timeMs, mode);
    ++m_contactCount;
}

void WorkedTable::recordReference(const QString &reference, int band, qint64 timeMs, const QString &mode)
{
    const QString ref = folded(reference);
    if (!ref.isEmpty())
        recordIn(m_references, ref, band, timeMs, mode);
}

void WorkedTable::clear()
{
    m_references.clear();
    m_callsigns.clear();
    m_contactCount = 0;
}

const WorkedTable::BandContacts *WorkedTable::callsign(const QString &foldedCall) const
{
    return find(m_callsigns, foldedCall);
}

const WorkedTable::BandContacts *WorkedTable::reference(const QString &foldedReference) const
{
    return find(m_references, foldedReference);
}

void WorkedTable::recordIn(Table &table, const QString &subject, int band, qint64 timeMs, const QString &mode)
{
    BandContacts &contacts = table[subject];
    for (Contact &contact : contacts) {
        if (contact.band != band)
            continue;
        // Logs are not read in time order: keep the latest.
        if (timeMs >= contact.timeMs) {
            contact.timeMs = timeMs;
            contact.mode = mode;
        }
        return;
    }
    contacts.append(Contact{band, timeMs, mode});
}
