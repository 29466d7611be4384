// An imported logbook: ADIF from any program, or something that only claims to be.
#include "app/logbook/adifreader.h"
#include "app/logbook/adifwriter.h"
#include "app/logbook/workedimport.h"
#include "fuzz/fuzzsupport.h"

#include <QBuffer>

namespace {

QList<QList<std::pair<QString, QString>>> readAll(const QByteArray &data, WorkedTable *table)
{
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    AdifReader reader(&buffer);
    AdifRecord record;
    QList<QList<std::pair<QString, QString>>> records;
    while (reader.readNext(record)) {
        if (table)
            WorkedImport::addRecord(record, *table);
        records.append(record.fields());
    }
    if (reader.recordCount() != records.size())
        FuzzSupport::fail("the record count is not the records read");
    return records;
}

bool isAscii(const QString &text)
{
    for (const QChar c : text) {
        if (c.unicode() >= 0x80)
            return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input = FuzzSupport::bytes(data, size);
    WorkedTable table;
    const auto records = readAll(input, &table);
    if (records.size() > input.count('<'))
        FuzzSupport::fail("more records than tags");

    // Whatever was read, written again, reads back the same, field for field.
    QString written;
    QList<QList<std::pair<QString, QString>>> kept;
    for (const auto &fields : records) {
        bool plainNames = true;
        QString text;
        for (const auto &[name, value] : fields) {
            plainNames = plainNames && isAscii(name);
            text += AdifWriter::field(name, value);
        }
        if (!plainNames)
            continue;
        written += text + QStringLiteral("<EOR>\n");
        kept.append(fields);
    }
    if (readAll(written.toUtf8(), nullptr) != kept)
        FuzzSupport::fail("records changed when written and read again");
    return 0;
}
