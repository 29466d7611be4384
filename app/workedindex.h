#pragma once

#include "model/stationspot.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <QVarLengthArray>

// What the operator has worked, read from their own contact logs: every
// reference and every call sign, band by band, with the latest contact on
// each band. Answers "worked before?" for the detail panel, the "Hide worked"
// filter and the alerts.
class WorkedIndex final
{
public:
    // Index into k_bands, or this for a frequency outside every band.
    static constexpr int k_noBand = -1;

    // The latest contact with one reference or call sign on one band.
    struct Contact
    {
        int band = k_noBand;
        qint64 timeMs = 0; // when it was logged, UTC
        QString mode;
    };

    // directory: where the "contacts-*.jsonl" logs are, by default the per-user data directory.
    explicit WorkedIndex(QString directory = QString());

    QString directory() const { return m_directory; }

    // Forgets everything and reads every "contacts-*.jsonl" of the directory.
    void reload();
    // One log line as the log writer appends it. A malformed line is counted
    // and skipped; an empty one is ignored. Returns whether a contact was taken.
    bool addLine(const QByteArray &line);
    // A contact just logged: the same as adding its log line.
    void addContact(const StationSpot &spot, const QDateTime &loggedAtUtc);

    int contactCount() const { return m_contactCount; }
    int malformedLineCount() const { return m_malformedCount; }

    // The "Hide worked" test: the spot's reference (or, without one, its call
    // sign) was worked on the spot's band.
    bool isWorkedOnBand(const StationSpot &spot) const;
    // Whether the reference was worked on any band.
    bool isReferenceWorked(const QString &reference) const;
    // The latest contact with the spot's reference (or call sign) on its band.
    const Contact *contactOnBand(const StationSpot &spot) const;

    // "Worked before: <date> on <band> <mode>", "New band" when only other
    // bands were worked, otherwise "Not worked before".
    QString detailText(const StationSpot &spot) const;

private:
    using BandContacts = QVarLengthArray<Contact, 2>;
    using Table = QHash<QString, BandContacts>;

    void record(const QString &callsign, const QString &reference, double frequencyKhz, qint64 timeMs,
                const QString &mode);
    static void recordIn(Table &table, const QString &subject, int band, qint64 timeMs, const QString &mode);
    // The contacts of the spot's reference, or of its call sign when it has none.
    const BandContacts *subjectContacts(const StationSpot &spot) const;
    void readFile(const QString &path);

    QString m_directory;
    Table m_references; // by upper-cased reference
    Table m_callsigns;  // by upper-cased call sign
    int m_contactCount = 0;
    int m_malformedCount = 0;
};
