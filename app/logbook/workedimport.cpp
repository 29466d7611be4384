#include "app/logbook/workedimport.h"

#include "app/logbook/adifreader.h"
#include "model/bands.h"

#include <QDate>
#include <QFile>
#include <QHash>
#include <QThread>

#include <array>
#include <cstring>

namespace {

// The fields read, by position in this list.
enum Field {
    Call,
    QsoDate,
    TimeOn,
    BandName,
    Freq,
    Mode,
    Submode,
    Sig,
    SigInfo,
    PotaRef,
    SotaRef,
    WwffRef,
    FieldCount
};
constexpr std::array<const char *, FieldCount> k_fieldNames = {
    "CALL",    "QSO_DATE", "TIME_ON",  "BAND",     "FREQ",     "MODE",
    "SUBMODE", "SIG",      "SIG_INFO", "POTA_REF", "SOTA_REF", "WWFF_REF"};

int fieldOf(QByteArrayView name)
{
    for (int i = 0; i < FieldCount; ++i) {
        const char *wanted = k_fieldNames[size_t(i)];
        if (qsizetype(std::strlen(wanted)) == name.size() &&
            qstrnicmp(name.data(), wanted, size_t(name.size())) == 0)
            return i;
    }
    return -1;
}

int digitsValue(QByteArrayView text, qsizetype from, qsizetype count)
{
    int value = 0;
    for (qsizetype i = from; i < from + count; ++i) {
        if (i >= text.size() || text[i] < '0' || text[i] > '9')
            return -1;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

// QSO_DATE "YYYYMMDD" and TIME_ON "HHMM" or "HHMMSS" as UTC milliseconds; -1 without a valid date.
qint64 timeOf(QByteArrayView date, QByteArrayView time)
{
    date = date.trimmed();
    time = time.trimmed();
    const QDate day(digitsValue(date, 0, 4), digitsValue(date, 4, 2), digitsValue(date, 6, 2));
    if (date.size() != 8 || !day.isValid())
        return -1;
    const int hours = digitsValue(time, 0, 2);
    const int minutes = digitsValue(time, 2, 2);
    const int seconds = time.size() >= 6 ? digitsValue(time, 4, 2) : 0;
    const bool timeValid =
        hours >= 0 && hours < 24 && minutes >= 0 && minutes < 60 && seconds >= 0 && seconds < 60;
    const qint64 secs = timeValid ? hours * 3600 + minutes * 60 + seconds : 0;
    return (day.toJulianDay() - QDate(1970, 1, 1).toJulianDay()) * 86400000 + secs * 1000;
}

int bandOf(QByteArrayView band, QByteArrayView freqMhz)
{
    const QString name = QString::fromLatin1(band.trimmed()).toLower();
    const int index = name.isEmpty() ? -1 : bandIndex(name);
    if (index >= 0)
        return index;
    bool ok = false;
    const double mhz =
        QString::fromLatin1(freqMhz.trimmed()).replace(QLatin1Char(','), QLatin1Char('.')).toDouble(&ok);
    return ok ? bandIndexForFrequency(mhz * 1000.0) : WorkedTable::k_noBand;
}

// "K-0001,K-0002@US-ME" and the like: each reference, without its location.
void appendReferences(QStringList &references, QByteArrayView list)
{
    for (const QString &item : QString::fromUtf8(list).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString reference = WorkedTable::folded(item.section(QLatin1Char('@'), 0, 0));
        if (!reference.isEmpty() && !references.contains(reference))
            references.append(reference);
    }
}

// The few mode names of a logbook, shared instead of one copy per contact.
QString internedMode(QByteArrayView raw)
{
    thread_local QHash<QByteArray, QString> modes;
    const QByteArray key = QByteArray::fromRawData(raw.data(), raw.size());
    auto it = modes.constFind(key);
    if (it == modes.cend())
        it = modes.insert(QByteArray(raw.data(), raw.size()), QString::fromUtf8(raw).trimmed().toUpper());
    return it.value();
}

} // namespace

QString WorkedImportSummary::message() const
{
    QString text =
        QStringLiteral("Logbook read: %1 contacts taken, %2 records skipped.").arg(taken).arg(skipped);
    if (!unreadableFiles.isEmpty())
        text += QStringLiteral(" Could not read: %1").arg(unreadableFiles.join(QStringLiteral(", ")));
    return text;
}

namespace WorkedImport {

bool addRecord(const AdifRecord &record, WorkedTable &table)
{
    std::array<QByteArrayView, FieldCount> values;
    for (int i = 0; i < record.size(); ++i) {
        const int field = fieldOf(record.name(i));
        if (field >= 0 && values[size_t(field)].isEmpty())
            values[size_t(field)] = record.rawValue(i);
    }
    const QString call = QString::fromUtf8(values[Call]).trimmed();
    const qint64 timeMs = timeOf(values[QsoDate], values[TimeOn]);
    if (call.isEmpty() || timeMs < 0)
        return false;
    const QByteArrayView family = values[Mode].trimmed();
    // MFSK/FT4 says FT4; SSB/USB says SSB.
    const bool bySubmode =
        !values[Submode].trimmed().isEmpty() && family.compare("SSB", Qt::CaseInsensitive) != 0;
    const QString mode = internedMode(bySubmode ? values[Submode] : family);
    const int band = bandOf(values[BandName], values[Freq]);

    QStringList references;
    if (!values[Sig].trimmed().isEmpty())
        appendReferences(references, values[SigInfo]);
    appendReferences(references, values[PotaRef]);
    appendReferences(references, values[SotaRef]);
    appendReferences(references, values[WwffRef]);
    table.record(call, references.value(0), band, timeMs, mode);
    for (qsizetype i = 1; i < references.size(); ++i)
        table.recordReference(references.at(i), band, timeMs, mode);
    return true;
}

WorkedImportSummary readAdif(QIODevice &device, WorkedTable &table, const std::atomic_bool *stop)
{
    WorkedImportSummary summary;
    AdifReader reader(&device);
    AdifRecord record;
    while ((!stop || !stop->load()) && reader.readNext(record)) {
        if (addRecord(record, table))
            ++summary.taken;
        else
            ++summary.skipped;
    }
    summary.damagedFields = reader.damagedFieldCount();
    return summary;
}

WorkedImportSummary readFiles(const QStringList &paths, WorkedTable &table, const std::atomic_bool *stop)
{
    WorkedImportSummary total;
    for (const QString &path : paths) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            total.unreadableFiles.append(path);
            continue;
        }
        const WorkedImportSummary one = readAdif(file, table, stop);
        total.taken += one.taken;
        total.skipped += one.skipped;
        total.damagedFields += one.damagedFields;
    }
    return total;
}

} // namespace WorkedImport

WorkedImportLoader::WorkedImportLoader(QObject *parent)
    : QObject(parent)
{}

WorkedImportLoader::~WorkedImportLoader()
{
    if (m_stop)
        m_stop->store(true);
    for (QThread *thread : std::as_const(m_threads)) {
        thread->wait();
        delete thread;
    }
}

void WorkedImportLoader::load(const QStringList &paths)
{
    if (m_stop)
        m_stop->store(true); // the earlier load's table would be dropped anyway
    m_stop = std::make_shared<std::atomic_bool>(false);
    const quint64 generation = ++m_generation;
    const std::shared_ptr<std::atomic_bool> stop = m_stop;
    QThread *thread = QThread::create([this, paths, stop, generation] {
        auto table = std::make_shared<WorkedTable>();
        const WorkedImportSummary summary = WorkedImport::readFiles(paths, *table, stop.get());
        if (stop->load())
            return;
        // Delivered on the loader's thread; dropped with the loader if it is gone by then.
        QMetaObject::invokeMethod(
            this, [this, generation, table, summary] { finish(generation, table, summary); },
            Qt::QueuedConnection);
    });
    connect(thread, &QThread::finished, this, [this, thread] {
        --m_running;
        m_threads.removeOne(thread);
        thread->deleteLater();
    });
    m_threads.append(thread);
    ++m_running;
    thread->start(QThread::LowPriority);
}

void WorkedImportLoader::finish(quint64 generation, const std::shared_ptr<const WorkedTable> &table,
                                const WorkedImportSummary &summary)
{
    if (generation == m_generation)
        emit loaded(table, summary);
}
