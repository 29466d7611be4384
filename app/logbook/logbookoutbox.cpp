#include "app/logbook/logbookoutbox.h"

#include "app/tallisdir.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <utility>

namespace {

QString key(const char *name)
{
    return QString::fromLatin1(name);
}

// Ids are UUIDs; anything but short plain ASCII was not written here.
bool isId(const QString &id)
{
    return !id.isEmpty() && id.size() <= 64 && std::all_of(id.cbegin(), id.cend(), [](QChar c) {
        return c.unicode() > 0x20 && c.unicode() < 0x7f;
    });
}

QByteArray lineOf(const QJsonObject &json)
{
    return QJsonDocument(json).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

QJsonObject OutboxEntry::toJson() const
{
    return QJsonObject{
        {key("id"), id},
        {key("target"),
         QJsonObject{{key("index"), targetIndex}, {key("type"), LogTarget::typeName(targetType)}}},
        {key("record"), record},
        {key("created"), created.toUTC().toString(Qt::ISODateWithMs)},
    };
}

std::optional<OutboxEntry> OutboxEntry::fromJson(const QJsonObject &json)
{
    const QJsonObject target = json.value(key("target")).toObject();
    const std::optional<LogTarget::Type> type = LogTarget::typeFromName(target.value(key("type")).toString());
    const QJsonValue index = target.value(key("index"));
    OutboxEntry entry;
    entry.id = json.value(key("id")).toString();
    entry.record = json.value(key("record")).toString();
    if (!isId(entry.id) || entry.record.isEmpty() || !type || !index.isDouble())
        return std::nullopt;
    const double at = index.toDouble();
    if (!(at >= 0.0 && at <= 1e6) || at != double(int(at)))
        return std::nullopt;
    entry.targetIndex = int(at);
    entry.targetType = *type;
    entry.created = QDateTime::fromString(json.value(key("created")).toString(), Qt::ISODateWithMs).toUTC();
    if (entry.created.isValid() && (entry.created.date().year() < 1 || entry.created.date().year() > 9999))
        entry.created = QDateTime(); // not a time this program wrote, and not one ISO text can carry
    return entry;
}

LogbookOutbox::LogbookOutbox(QString path)
    : m_path(std::move(path))
{}

QString LogbookOutbox::defaultFilePath()
{
    return tallisDirPath() + QStringLiteral("/logbook-outbox.jsonl");
}

bool LogbookOutbox::load()
{
    m_pending.clear();
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return true; // nothing was ever queued
    QSet<QString> seen;
    QSet<QString> settled;
    while (!file.atEnd()) {
        const QJsonObject json = QJsonDocument::fromJson(file.readLine()).object();
        const QString id = json.value(key("id")).toString();
        if (id.isEmpty())
            continue;
        if (json.value(key("delivered")).toBool() || json.value(key("refused")).isString()) {
            settled.insert(id);
        } else if (const std::optional<OutboxEntry> entry = OutboxEntry::fromJson(json)) {
            if (!seen.contains(id)) // a record queued twice under one id is one record
                m_pending.append(*entry);
            seen.insert(id);
        }
    }
    file.close();
    m_pending.erase(
        std::remove_if(m_pending.begin(), m_pending.end(),
                       [&settled](const OutboxEntry &entry) { return settled.contains(entry.id); }),
        m_pending.end());

    ensureTallisDir();
    QSaveFile compacted(m_path);
    if (!compacted.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    keepPrivate(compacted);
    for (const OutboxEntry &entry : std::as_const(m_pending)) {
        const QByteArray line = lineOf(entry.toJson());
        if (compacted.write(line) != line.size())
            return false; // the partial copy is discarded; the old file stays
    }
    return compacted.commit();
}

bool LogbookOutbox::add(const OutboxEntry &entry)
{
    m_pending.append(entry);
    return appendLine(entry.toJson());
}

void LogbookOutbox::settleDelivered(const QString &id)
{
    if (removePending(id))
        appendLine(QJsonObject{{key("id"), id}, {key("delivered"), true}});
}

void LogbookOutbox::settleRefused(const QString &id, const QString &reason)
{
    if (removePending(id))
        appendLine(QJsonObject{{key("id"), id}, {key("refused"), reason}});
}

bool LogbookOutbox::appendLine(const QJsonObject &line)
{
    ensureTallisDir();
    QFile file(m_path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return false;
    keepPrivate(file);
    const QByteArray bytes = lineOf(line);
    return file.write(bytes) == bytes.size() && file.flush();
}

bool LogbookOutbox::removePending(const QString &id)
{
    const auto it = std::find_if(m_pending.begin(), m_pending.end(),
                                 [&id](const OutboxEntry &entry) { return entry.id == id; });
    if (it == m_pending.end())
        return false;
    m_pending.erase(it);
    return true;
}
