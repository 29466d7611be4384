#pragma once

#include "app/logbook/contactrecord.h"
#include "model/stationspot.h"

#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QString>

#include <functional>

// The daily contact logs: one JSON line per logged contact, appended to
// "contacts-<source>-<UTC date>.jsonl" in the data directory. Files are only
// ever appended to, never rewritten.
class ContactLog final
{
public:
    // The current time, UTC; tests inject a fixed one.
    using Clock = std::function<QDateTime()>;

    // directory: where the logs go, by default the per-user data directory.
    explicit ContactLog(QString directory = QString(), Clock clock = {});

    QString directory() const { return m_directory; }
    void setClock(Clock clock);
    QDateTime now() const;

    // "contacts-pota-2026-11-14.jsonl": the lower-cased source name and the UTC date.
    static QString fileName(const QString &sourceName, const QDate &utcDate);
    // The file a contact with spot logged now goes to.
    QString filePath(const StationSpot &spot) const;

    // The record of spot logged at loggedAt with the mode's default reports,
    // compact, keys ascending, with "\n".
    static QByteArray recordLine(const StationSpot &spot, const QString &myCallsign,
                                 const QDateTime &loggedAt);

    // Appends the record of spot, logged now, and flushes it to disk. A file
    // that cannot be opened loses the line; false says so.
    bool append(const StationSpot &spot, const QString &myCallsign) const;
    // Appends record to the daily file of its source and of the day it was logged.
    bool append(const ContactRecord &record) const;

    // The status-bar notice for a contact with spot logged now.
    QString loggedMessage(const StationSpot &spot) const;

private:
    QString m_directory;
    Clock m_clock;
};
