#pragma once

#include <QHash>
#include <QString>
#include <QVarLengthArray>

// Worked call signs and references, band by band, with the latest contact on
// each band. One is built from the contact logs, another from an imported
// logbook (on a worker thread, then handed over whole).
class WorkedTable final
{
public:
    // Index into k_bands, or this for a frequency outside every band.
    static constexpr int k_noBand = -1;

    // The latest contact with one reference or call sign on one band.
    struct Contact
    {
        int band = k_noBand;
        qint64 timeMs = 0; // UTC
        QString mode;
    };
    using BandContacts = QVarLengthArray<Contact, 2>;

    // The key a call sign or reference is kept under: trimmed, upper-cased.
    static QString folded(const QString &text);

    // One contact with callsign and, when not empty, reference.
    void record(const QString &callsign, const QString &reference, int band, qint64 timeMs,
                const QString &mode);
    // A further reference worked in the contact just recorded (a two-fer).
    void recordReference(const QString &reference, int band, qint64 timeMs, const QString &mode);

    void clear();
    int contactCount() const { return m_contactCount; }

    // Contacts by folded call sign or reference; null when never worked.
    const BandContacts *callsign(const QString &foldedCall) const;
    const BandContacts *reference(const QString &foldedReference) const;

private:
    using Table = QHash<QString, BandContacts>;
    static void recordIn(Table &table, const QString &subject, int band, qint64 timeMs, const QString &mode);

    Table m_references;
    Table m_callsigns;
    int m_contactCount = 0;
};
