#pragma once

#include "app/logbook/logtarget.h"

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

// A record waiting for one online logbook.
struct OutboxEntry
{
    QString id;
    int targetIndex = 0; // in the settings' "logTargets"
    LogTarget::Type targetType = LogTarget::Type::Wavelog;
    QString record; // the ADIF record
    QDateTime created;

    // {"id", "target": {"index", "type"}, "record", "created"}: never a key.
    QJsonObject toJson() const;
    static std::optional<OutboxEntry> fromJson(const QJsonObject &json);
};

// The records that must still reach an online logbook, kept in a JSON-lines
// file so that neither a closed program nor a dead service loses one. Each
// record is written before its first attempt; a later line settles it as
// delivered or refused. Loading keeps only what is unsettled and rewrites the
// file to that, atomically. The file is the user's alone (0600).
class LogbookOutbox final
{
public:
    explicit LogbookOutbox(QString path);

    // "~/.tallis/logbook-outbox.jsonl".
    static QString defaultFilePath();
    QString path() const { return m_path; }

    // Reads the file (lines that make no sense are dropped) and compacts it.
    // False when the compacted file could not be written; the old one then stays.
    bool load();

    // The unsettled records, oldest first.
    const QList<OutboxEntry> &pending() const { return m_pending; }
    int pendingCount() const { return int(m_pending.size()); }

    // Queues entry, writing it first; false when it could not be written
    // (it is still tried while the program runs).
    bool add(const OutboxEntry &entry);
    // Settles a pending record; an unknown id is ignored.
    void settleDelivered(const QString &id);
    void settleRefused(const QString &id, const QString &reason);

private:
    bool appendLine(const QJsonObject &line);
    bool removePending(const QString &id);

    QString m_path;
    QList<OutboxEntry> m_pending;
};
