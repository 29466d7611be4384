#pragma once

#include "app/logbook/workedtable.h"
#include "model/stationspot.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QVarLengthArray>

#include <memory>

// What the operator has worked: every reference and every call sign, band
// by band, with the latest contact on each band, read from their own contact
// logs and, alongside, from the logbook they imported. Answers "worked
// before?" for the detail panel, the "Hide worked" filter and the alerts.
class WorkedIndex final
{
public:
    static constexpr int k_noBand = WorkedTable::k_noBand;
    using Contact = WorkedTable::Contact;

    // directory: where the "contacts-*.jsonl" logs are, by default the per-user data directory.
    explicit WorkedIndex(QString directory = QString());

    QString directory() const { return m_directory; }

    // Forgets the logs' contacts and reads every "contacts-*.jsonl" of the
    // directory again; the imported logbook stays.
    void reload();
    // One log line as the log writer appends it. A malformed line is counted
    // and skipped; an empty one is ignored. Returns whether a contact was taken.
    bool addLine(const QByteArray &line);
    // A contact just logged: the same as adding its log line.
    void addContact(const StationSpot &spot, const QDateTime &loggedAtUtc);

    // The contacts of an imported logbook, answered alongside the logs'
    // from now on; null forgets them.
    void setImported(std::shared_ptr<const WorkedTable> imported);
    int importedCount() const { return m_imported ? m_imported->contactCount() : 0; }

    int contactCount() const { return m_log.contactCount(); }
    int malformedLineCount() const { return m_malformedCount; }

    // The "Hide worked" test: the spot's reference (or, without one, its call
    // sign) was worked on the spot's band.
    bool isWorkedOnBand(const StationSpot &spot) const;
    // Whether the reference was worked on any band.
    bool isReferenceWorked(const QString &reference) const;
    // The latest contact with the spot's reference (or call sign) on its
    // band, from the logs or the imported logbook.
    const Contact *contactOnBand(const StationSpot &spot) const;

    // "Worked before: <date> on <band> <mode>", "New band" when only other
    // bands were worked, otherwise "Not worked before".
    QString detailText(const StationSpot &spot) const;

private:
    // The tables asked: the logs' and, when there is one, the imported.
    QVarLengthArray<const WorkedTable *, 2> tables() const;
    // Whether the spot's reference (or call sign when it has none) was worked at all.
    bool isSubjectWorked(const StationSpot &spot) const;
    void readFile(const QString &path);

    QString m_directory;
    WorkedTable m_log;
    std::shared_ptr<const WorkedTable> m_imported;
    int m_malformedCount = 0;
};
