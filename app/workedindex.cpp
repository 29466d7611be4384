#include "app/workedindex.h"

#include "app/tallisdir.h"
#include "model/bands.h"

#include <QDirIterator>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cctype>
#include <optional>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

bool isBlank(const QByteArray &line)
{
    for (const char c : line) {
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n')
            return false;
    }
    return true;
}

// The whole file, or nothing. On Unix without the three status queries QFile
// makes per file: with thousands of small daily logs they cost more than the reading.
QByteArray readWholeFile(const QString &path)
{
#ifdef Q_OS_UNIX
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return {};
    QByteArray content;
    char chunk[16384];
    for (;;) {
        const ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        content.append(chunk, qsizetype(n));
    }
    ::close(fd);
    return content;
#else
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
#endif
}

// What the index takes from a log line; a field of the wrong JSON type is empty.
struct LineFields
{
    QString callsign;
    QString reference;
    QString mode;
    QString timestamp;
    std::optional<double> frequencyKhz;
};

LineFields parseLine(const QByteArray &line)
{
    const QJsonObject entry = QJsonDocument::fromJson(line).object();
    const QJsonValue frequency = entry.value(QLatin1String("frequency_khz"));
    return LineFields{
        entry.value(QLatin1String("callsign")).toString(), entry.value(QLatin1String("reference")).toString(),
        entry.value(QLatin1String("mode")).toString(), entry.value(QLatin1String("timestamp")).toString(),
        frequency.isDouble() ? std::optional<double>(frequency.toDouble()) : std::nullopt};
}

// Reading years of logs spent more time in the general JSON parser than
// anywhere but the file system. This reader of the flat objects the log
// writer appends costs a fraction of that; it accepts only plain ASCII strings
// without escapes, numbers and literals, and leaves anything else (escapes,
// other text, nesting, bad syntax) to parseLine.
class PlainLineScanner
{
public:
    explicit PlainLineScanner(const QByteArray &line)
        : m_p(line.constData())
        , m_end(line.constData() + line.size())
    {}

    std::optional<LineFields> scan()
    {
        LineFields fields;
        if (!take('{'))
            return std::nullopt;
        if (!take('}')) {
            do {
                QByteArrayView key;
                if (!string(key) || !take(':') || !value(key, fields))
                    return std::nullopt;
            } while (take(','));
            if (!take('}'))
                return std::nullopt;
        }
        skipSpace();
        return m_p == m_end ? std::optional<LineFields>(std::move(fields)) : std::nullopt;
    }

private:
    void skipSpace()
    {
        while (m_p < m_end && (*m_p == ' ' || *m_p == '\t' || *m_p == '\r' || *m_p == '\n'))
            ++m_p;
    }

    bool take(char c)
    {
        skipSpace();
        if (m_p == m_end || *m_p != c)
            return false;
        ++m_p;
        return true;
    }

    bool string(QByteArrayView &text)
    {
        if (!take('"'))
            return false;
        const char *start = m_p;
        for (; m_p < m_end && *m_p != '"'; ++m_p) {
            const auto c = uchar(*m_p);
            if (c < 0x20 || c >= 0x80 || c == '\\')
                return false;
        }
        if (m_p == m_end)
            return false;
        text = QByteArrayView(start, m_p++ - start);
        return true;
    }

    bool value(QByteArrayView key, LineFields &fields)
    {
        skipSpace();
        if (m_p < m_end && *m_p == '"') {
            QByteArrayView text;
            if (!string(text))
                return false;
            if (QString *field = textField(key, fields))
                *field = QString::fromLatin1(text);
            return true;
        }
        const char *start = m_p;
        while (m_p < m_end && (std::isalnum(uchar(*m_p)) || *m_p == '-' || *m_p == '+' || *m_p == '.'))
            ++m_p;
        const QByteArrayView token(start, m_p - start);
        if (token == "true" || token == "false" || token == "null")
            return true;
        if (!isJsonNumber(token))
            return false;
        if (key == "frequency_khz")
            fields.frequencyKhz = QByteArray::fromRawData(token.data(), token.size()).toDouble();
        return true;
    }

    static QString *textField(QByteArrayView key, LineFields &fields)
    {
        if (key == "callsign")
            return &fields.callsign;
        if (key == "reference")
            return &fields.reference;
        if (key == "mode")
            return &fields.mode;
        if (key == "timestamp")
            return &fields.timestamp;
        return nullptr;
    }

    // -?(0|[1-9][0-9]*)(.[0-9]+)?([eE][+-]?[0-9]+)?
    static bool isJsonNumber(QByteArrayView token)
    {
        const char *p = token.begin();
        const char *end = token.end();
        const auto digits = [&p, end] {
            const char *start = p;
            while (p < end && *p >= '0' && *p <= '9')
                ++p;
            return p > start;
        };
        if (p < end && *p == '-')
            ++p;
        if (p < end && *p == '0')
            ++p;
        else if (!digits())
            return false;
        if (p < end && *p == '.' && (++p, !digits()))
            return false;
        if (p < end && (*p == 'e' || *p == 'E')) {
            ++p;
            if (p < end && (*p == '+' || *p == '-'))
                ++p;
            if (!digits())
                return false;
        }
        return p == end;
    }

    const char *m_p;
    const char *m_end;
};

} // namespace

WorkedIndex::WorkedIndex(QString directory)
    : m_directory(directory.isEmpty() ? tallisDirPath() : std::move(directory))
{}

void WorkedIndex::reload()
{
    m_log.clear();
    m_malformedCount = 0;
    // Unsorted, and without the directory listing's extra checks: a few
    // thousand daily files are usual, and the latest contact wins whatever the order.
    QDirIterator files(m_directory, {QStringLiteral("contacts-*.jsonl")}, QDir::Files);
    while (files.hasNext())
        readFile(files.next());
}

void WorkedIndex::readFile(const QString &path)
{
    const QByteArray content = readWholeFile(path);
    qsizetype start = 0;
    while (start < content.size()) {
        qsizetype end = content.indexOf('\n', start);
        if (end < 0)
            end = content.size();
        // A view into content: the parser copies what it keeps.
        addLine(QByteArray::fromRawData(content.constData() + start, end - start));
        start = end + 1;
    }
}

bool WorkedIndex::addLine(const QByteArray &line)
{
    if (isBlank(line))
        return false;
    std::optional<LineFields> fields = PlainLineScanner(line).scan();
    if (!fields)
        fields = parseLine(line);
    QDateTime loggedAt = QDateTime::fromString(fields->timestamp, Qt::ISODateWithMs);
    if (loggedAt.timeSpec() == Qt::LocalTime)
        loggedAt.setTimeSpec(Qt::UTC); // the log writes UTC; a stamp without a zone means it too
    if (fields->callsign.trimmed().isEmpty() || !fields->frequencyKhz || !loggedAt.isValid()) {
        ++m_malformedCount;
        return false;
    }
    m_log.record(fields->callsign, fields->reference, bandIndexForFrequency(*fields->frequencyKhz),
                 loggedAt.toMSecsSinceEpoch(), fields->mode.trimmed());
    return true;
}

void WorkedIndex::addContact(const StationSpot &spot, const QDateTime &loggedAtUtc)
{
    if (spot.callsign.trimmed().isEmpty() || !loggedAtUtc.isValid())
        return;
    m_log.record(spot.callsign, spot.reference, bandIndexForFrequency(spot.frequencyKhz),
                 loggedAtUtc.toMSecsSinceEpoch(), spot.mode.trimmed());
}

void WorkedIndex::setImported(std::shared_ptr<const WorkedTable> imported)
{
    m_imported = std::move(imported);
}

QVarLengthArray<const WorkedTable *, 2> WorkedIndex::tables() const
{
    QVarLengthArray<const WorkedTable *, 2> list{&m_log};
    if (m_imported)
        list.append(m_imported.get());
    return list;
}

const WorkedIndex::Contact *WorkedIndex::contactOnBand(const StationSpot &spot) const
{
    const QString ref = WorkedTable::folded(spot.reference);
    const QString subject = ref.isEmpty() ? WorkedTable::folded(spot.callsign) : ref;
    const int band = bandIndexForFrequency(spot.frequencyKhz);
    const Contact *latest = nullptr;
    for (const WorkedTable *table : tables()) {
        const WorkedTable::BandContacts *contacts =
            ref.isEmpty() ? table->callsign(subject) : table->reference(subject);
        if (!contacts)
            continue;
        for (const Contact &contact : *contacts) {
            if (contact.band == band && (!latest || contact.timeMs > latest->timeMs))
                latest = &contact;
        }
    }
    return latest;
}

bool WorkedIndex::isSubjectWorked(const StationSpot &spot) const
{
    const QString ref = WorkedTable::folded(spot.reference);
    for (const WorkedTable *table : tables()) {
        if (ref.isEmpty() ? table->callsign(WorkedTable::folded(spot.callsign)) : table->reference(ref))
            return true;
    }
    return false;
}

bool WorkedIndex::isWorkedOnBand(const StationSpot &spot) const
{
    return contactOnBand(spot) != nullptr;
}

bool WorkedIndex::isReferenceWorked(const QString &reference) const
{
    const QString ref = WorkedTable::folded(reference);
    if (ref.isEmpty())
        return false;
    for (const WorkedTable *table : tables()) {
        if (table->reference(ref))
            return true;
    }
    return false;
}

QString WorkedIndex::detailText(const StationSpot &spot) const
{
    if (const Contact *contact = contactOnBand(spot)) {
        const QString date =
            QDateTime::fromMSecsSinceEpoch(contact->timeMs, Qt::UTC).toString(QStringLiteral("yyyy-MM-dd"));
        const QString band = contact->band == k_noBand ? QStringLiteral("?")
                                                       : QString::fromLatin1(k_bands[contact->band].name);
        return QStringLiteral("Worked before: %1 on %2 %3").arg(date, band, contact->mode).trimmed();
    }
    return isSubjectWorked(spot) ? QStringLiteral("New band") : QStringLiteral("Not worked before");
}
