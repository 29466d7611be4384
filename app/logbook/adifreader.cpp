#include "app/logbook/adifreader.h"

#include <QIODevice>

#include <array>
#include <cstring>

namespace {

constexpr qsizetype k_chunk = 256 * 1024;
constexpr qsizetype k_maxTag = 128; // "<" name ":" length ":" type ">"

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool isContinuation(char c)
{
    return (uchar(c) & 0xC0) == 0x80;
}

bool sameName(QByteArrayView a, const char *b)
{
    return a.size() == qsizetype(std::strlen(b)) && qstrnicmp(a.data(), b, size_t(a.size())) == 0;
}

// The digits of a length, or -1.
qsizetype parseLength(QByteArrayView text)
{
    if (text.isEmpty() || text.size() > 9)
        return -1;
    qsizetype value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

} // namespace

void AdifRecord::clear()
{
    m_data.resize(0);
    m_spans.clear();
}

void AdifRecord::add(QByteArrayView name, QByteArrayView value)
{
    const qsizetype at = m_data.size();
    m_data.append(name.data(), name.size());
    m_data.append(value.data(), value.size());
    m_spans.append(Span{at, name.size(), at + name.size(), value.size()});
}

QByteArrayView AdifRecord::name(int i) const
{
    const Span &span = m_spans.at(i);
    return QByteArrayView(m_data.constData() + span.nameAt, span.nameSize);
}

QByteArrayView AdifRecord::rawValue(int i) const
{
    const Span &span = m_spans.at(i);
    return QByteArrayView(m_data.constData() + span.valueAt, span.valueSize);
}

QString AdifRecord::value(int i) const
{
    return QString::fromUtf8(rawValue(i));
}

QByteArrayView AdifRecord::rawValue(QByteArrayView wanted) const
{
    for (int i = 0; i < size(); ++i) {
        const QByteArrayView n = name(i);
        if (n.size() == wanted.size() && qstrnicmp(n.data(), wanted.data(), size_t(n.size())) == 0)
            return rawValue(i);
    }
    return {};
}

QString AdifRecord::value(QByteArrayView wanted) const
{
    return QString::fromUtf8(rawValue(wanted));
}

QList<std::pair<QString, QString>> AdifRecord::fields() const
{
    QList<std::pair<QString, QString>> list;
    // Names are ASCII in ADIF; only their ASCII letters change case, so a stray
    // byte such as "\xdf" cannot become "SS" and outgrow the tag it came in.
    for (int i = 0; i < size(); ++i)
        list.append({QString::fromLatin1(name(i).toByteArray().toUpper()), value(i)});
    return list;
}

AdifReader::AdifReader(QIODevice *device)
    : m_device(device)
{}

bool AdifReader::fill()
{
    if (m_atEnd)
        return false;
    // Only what is not yet read is kept: a field's bytes are copied into its record.
    m_buffer.remove(0, m_pos);
    m_pos = 0;
    const qsizetype had = m_buffer.size();
    m_buffer.resize(had + k_chunk);
    const qint64 got = m_device ? m_device->read(m_buffer.data() + had, k_chunk) : -1;
    m_buffer.resize(had + qMax<qint64>(got, 0));
    if (got <= 0)
        m_atEnd = true;
    return got > 0;
}

bool AdifReader::ensure(qsizetype size)
{
    while (m_buffer.size() < size) {
        if (!fill())
            return false;
    }
    return true;
}

bool AdifReader::readNext(AdifRecord &record)
{
    record.clear();
    for (;;) {
        qsizetype lt = m_buffer.indexOf('<', m_pos);
        while (lt < 0) {
            m_pos = m_buffer.size();
            if (!fill()) {
                // A last record without its <EOR>: the file was cut, the fields stand.
                if (record.isEmpty())
                    return false;
                ++m_records;
                return true;
            }
            lt = m_buffer.indexOf('<', m_pos);
        }
        m_pos = lt;
        bool endOfRecord = false;
        if (!readTag(record, endOfRecord))
            ++m_pos; // not a tag: look for the next "<"
        if (endOfRecord && !record.isEmpty()) {
            ++m_records;
            return true;
        }
    }
}

// Reads the tag at m_pos and its value; false when there is no tag there.
bool AdifReader::readTag(AdifRecord &record, bool &endOfRecord)
{
    ensure(m_pos + k_maxTag); // may move the buffer's content to its start
    const qsizetype lt = m_pos;
    const qsizetype limit = qMin(m_buffer.size(), lt + k_maxTag);
    qsizetype gt = lt + 1;
    while (gt < limit && m_buffer.at(gt) != '>' && m_buffer.at(gt) != '<' && uchar(m_buffer.at(gt)) >= 0x20)
        ++gt;
    if (gt >= limit || m_buffer.at(gt) != '>')
        return false;
    const QByteArrayView tag(m_buffer.constData() + lt + 1, gt - lt - 1);
    const qsizetype colon = tag.indexOf(':');
    const QByteArrayView name = colon < 0 ? tag : tag.first(colon);
    if (name.isEmpty() || name.contains(' '))
        return false;
    m_pos = gt + 1;
    if (colon < 0) {
        if (sameName(name, "EOR")) {
            endOfRecord = true;
        } else if (sameName(name, "EOH")) {
            // What came before was the header.
            std::swap(m_header, record);
            record.clear();
        }
        return true; // any other bare tag carries nothing
    }
    QByteArrayView rest = tag.sliced(colon + 1);
    const qsizetype typeColon = rest.indexOf(':');
    const qsizetype length = parseLength(typeColon < 0 ? rest : rest.first(typeColon));
    if (length < 0 || length > k_maxValueBytes || record.size() >= k_maxFields) {
        ++m_damaged;
        return true; // the value, if any, is passed over up to the next tag
    }
    // The name lives in the buffer, which reading the value may move.
    std::array<char, k_maxTag> nameCopy{};
    std::memcpy(nameCopy.data(), name.data(), size_t(name.size()));
    readValue(record, QByteArrayView(nameCopy.data(), name.size()), m_pos, length);
    return true;
}

void AdifReader::readValue(AdifRecord &record, QByteArrayView name, qsizetype start, qsizetype length)
{
    // Room for the length counted in four-byte characters and the byte after it.
    const qsizetype offset = start - m_pos;
    ensure(m_pos + offset + 4 * length + 1);
    start = m_pos + offset;
    const qsizetype end = valueEnd(start, length);
    if (end < 0) {
        ++m_damaged; // resume at the next tag
        return;
    }
    record.add(name, QByteArrayView(m_buffer.constData() + start, end - start));
    m_pos = end;
}

// Where the value ends, or -1 when no reading of its length ends it before the next tag.
qsizetype AdifReader::valueEnd(qsizetype start, qsizetype length) const
{
    const qsizetype available = m_buffer.size();
    const char *data = m_buffer.constData();
    // Characters first, as the format counts them (and as this program
    // writes): a producer that counted bytes differs only where a value holds
    // more than ASCII, and its value then ends cleanly as bytes below.
    qsizetype charEnd = start;
    qsizetype chars = 0;
    for (; chars < length && charEnd < available; ++chars) {
        ++charEnd;
        while (charEnd < available && isContinuation(data[charEnd]))
            ++charEnd;
    }
    if (chars == length && endsCleanly(charEnd))
        return charEnd;
    const qsizetype byteEnd = start + length;
    const bool onBoundary = byteEnd >= available || !isContinuation(data[byteEnd]);
    if (byteEnd <= available && onBoundary && endsCleanly(byteEnd))
        return byteEnd;
    // Text after the value up to the next tag is allowed; running into that tag is not.
    const qsizetype lt = m_buffer.indexOf('<', start);
    if (byteEnd <= available && (lt < 0 || byteEnd <= lt)) {
        qsizetype end = byteEnd;
        while (end > start && end < available && isContinuation(data[end]))
            --end; // never half a character
        return end;
    }
    return -1;
}

bool AdifReader::endsCleanly(qsizetype end) const
{
    if (end > m_buffer.size())
        return false;
    if (end == m_buffer.size())
        return m_atEnd;
    const char next = m_buffer.at(end);
    return next == '<' || isSpace(next);
}
