// The logbook outbox: records waiting for an online logbook, read at start.
#include "app/logbook/logbookoutbox.h"
#include "fuzz/fuzzsupport.h"

#include <QFile>
#include <QSet>

namespace {

QString describe(const OutboxEntry &entry)
{
    return entry.id + QLatin1Char('|') + QString::number(entry.targetIndex) + QLatin1Char('|') +
           LogTarget::typeName(entry.targetType) + QLatin1Char('|') + entry.record + QLatin1Char('|') +
           entry.created.toString(Qt::ISODateWithMs);
}

QStringList describe(const QList<OutboxEntry> &entries)
{
    QStringList list;
    for (const OutboxEntry &entry : entries)
        list.append(describe(entry));
    return list;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = FuzzSupport::tallisDirPath() + QStringLiteral("/logbook-outbox.jsonl");
    FuzzSupport::writeFile(path, FuzzSupport::bytes(data, size));
    LogbookOutbox outbox(path);
    if (!outbox.load())
        FuzzSupport::fail("the outbox cannot be compacted");

    // Compacted: one valid line per pending record, each record once.
    QSet<QString> ids;
    for (const OutboxEntry &entry : outbox.pending()) {
        if (ids.contains(entry.id))
            FuzzSupport::fail("a record is pending twice", entry.id);
        ids.insert(entry.id);
    }
    const QList<QByteArray> lines = readAll(path).split('\n');
    if (lines.size() != outbox.pendingCount() + 1 || !lines.constLast().isEmpty())
        FuzzSupport::fail("the compacted file is not one line per pending record");
    for (qsizetype i = 0; i + 1 < lines.size(); ++i)
        FuzzSupport::requireValidJson(lines[i], "a compacted line");

    // What waits is what waits after the next start, too; a settled record never comes back.
    LogbookOutbox again(path);
    again.load();
    if (describe(again.pending()) != describe(outbox.pending()))
        FuzzSupport::fail("pending records changed when compacted and read again");
    QStringList expected = describe(again.pending());
    if (!again.pending().isEmpty()) {
        again.settleDelivered(again.pending().constFirst().id);
        expected.removeFirst();
    }
    const OutboxEntry fresh{QStringLiteral("fresh"), 3, LogTarget::Type::Qrz,
                            QStringLiteral("<CALL:3>K1A <EOR>"),
                            QDateTime(QDate(2026, 11, 22), QTime(12, 0), Qt::UTC)};
    if (!ids.contains(fresh.id)) {
        again.add(fresh);
        expected.append(describe(fresh));
    }
    LogbookOutbox third(path);
    third.load();
    if (describe(third.pending()) != expected)
        FuzzSupport::fail("a settled or added record was lost or came back");
    return 0;
}
