#include "app/logbook/contactsexport.h"

#include "app/logexport.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>

namespace {

// The UTC day in "contacts-<source>-yyyy-MM-dd.jsonl"; invalid when the name has none.
QDate fileDate(const QString &fileName)
{
    static const QRegularExpression pattern(QStringLiteral("-(\\d{4}-\\d{2}-\\d{2})\\.jsonl$"));
    const QRegularExpressionMatch match = pattern.match(fileName);
    return match.hasMatch() ? QDate::fromString(match.captured(1), Qt::ISODate) : QDate();
}

void readFile(const QString &path, const QDate &from, QList<ContactRecord> &records)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        std::optional<ContactRecord> record = ContactRecord::fromLogLine(line);
        if (record && (!from.isValid() || record->loggedAt.date() >= from))
            records.append(std::move(*record));
    }
}

} // namespace

namespace ContactsExport {

QString title()
{
    return QStringLiteral("Export All Contacts");
}

QString nothingToExport()
{
    return QStringLiteral("No logged contacts found to export.");
}

QString exportedMessage()
{
    return QStringLiteral("All contacts exported: %1 QSO(s) written to %2");
}

QList<ContactRecord> collect(const QString &directory, const QDate &from)
{
    QList<ContactRecord> records;
    const QStringList names =
        QDir(directory).entryList({QStringLiteral("contacts-*.jsonl")}, QDir::Files, QDir::Name);
    for (const QString &name : names) {
        // A file is the log of one UTC day: older days need no reading.
        const QDate day = fileDate(name);
        if (from.isValid() && day.isValid() && day < from)
            continue;
        readFile(QDir(directory).filePath(name), from, records);
    }
    std::stable_sort(records.begin(), records.end(),
                     [](const ContactRecord &a, const ContactRecord &b) { return a.loggedAt < b.loggedAt; });
    return records;
}

QString adifText(const QList<ContactRecord> &records, const AdifStation &station, const QDateTime &now,
                 const QString &programVersion)
{
    return AdifWriter::document(records, station, now, programVersion);
}

qsizetype exportTo(const QString &path, const QString &directory, const QDate &from,
                   const AdifStation &station, const QDateTime &now, const QString &programVersion)
{
    const QList<ContactRecord> records = collect(directory, from);
    if (!LogExport::writeTextFile(path, adifText(records, station, now, programVersion)))
        return -1;
    return records.size();
}

} // namespace ContactsExport
