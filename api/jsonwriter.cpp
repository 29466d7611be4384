#include "api/jsonwriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

namespace {

constexpr char k_hex[] = "0123456789abcdef";

// Writes one UTF-16 unit run as escaped UTF-8; returns the new end. The caller
// has made room for six bytes per unit (the \u00XX form is the longest).
char *escapeInto(char *p, QStringView text)
{
    const QChar *s = text.data();
    const QChar *const end = s + text.size();
    while (s < end) {
        const char16_t c = s->unicode();
        ++s;
        if (c < 0x80) {
            if (c >= 0x20 && c != u'"' && c != u'\\') {
                *p++ = char(c);
                continue;
            }
            *p++ = '\\';
            switch (c) {
            case u'"':
                *p++ = '"';
                break;
            case u'\\':
                *p++ = '\\';
                break;
            case u'\n':
                *p++ = 'n';
                break;
            case u'\r':
                *p++ = 'r';
                break;
            case u'\t':
                *p++ = 't';
                break;
            case u'\b':
                *p++ = 'b';
                break;
            case u'\f':
                *p++ = 'f';
                break;
            default:
                *p++ = 'u';
                *p++ = '0';
                *p++ = '0';
                *p++ = k_hex[c >> 4];
                *p++ = k_hex[c & 0xf];
            }
            continue;
        }
        char32_t code = c;
        if (QChar::isHighSurrogate(c) && s < end && s->isLowSurrogate()) {
            code = QChar::surrogateToUcs4(c, s->unicode());
            ++s;
        } else if (QChar::isSurrogate(c)) {
            code = 0xfffd; // a lone half of a pair has no UTF-8 form
        }
        if (code < 0x800) {
            *p++ = char(0xc0 | (code >> 6));
        } else {
            if (code < 0x10000) {
                *p++ = char(0xe0 | (code >> 12));
            } else {
                *p++ = char(0xf0 | (code >> 18));
                *p++ = char(0x80 | ((code >> 12) & 0x3f));
            }
            *p++ = char(0x80 | ((code >> 6) & 0x3f));
        }
        *p++ = char(0x80 | (code & 0x3f));
    }
    return p;
}

} // namespace

JsonWriter::JsonWriter(qsizetype reserveBytes)
    : m_out(std::max<qsizetype>(reserveBytes, 16), Qt::Uninitialized)
{}

QByteArray JsonWriter::take()
{
    m_out.truncate(m_size);
    m_size = 0;
    m_needComma = false;
    return std::exchange(m_out, QByteArray(16, Qt::Uninitialized));
}

char *JsonWriter::reserveMore(qsizetype maxBytes)
{
    if (m_size + maxBytes > m_out.size())
        m_out.resize(std::max(2 * m_out.size(), m_size + maxBytes));
    return m_out.data() + m_size;
}

void JsonWriter::append(char c)
{
    *reserveMore(1) = c;
    ++m_size;
}

void JsonWriter::append(QByteArrayView bytes)
{
    std::memcpy(reserveMore(bytes.size()), bytes.data(), size_t(bytes.size()));
    m_size += bytes.size();
}

void JsonWriter::separate()
{
    if (m_needComma)
        append(',');
    m_needComma = true;
}

void JsonWriter::open(char bracket)
{
    separate();
    append(bracket);
    m_needComma = false;
}

void JsonWriter::close(char bracket)
{
    append(bracket);
    m_needComma = true;
}

void JsonWriter::beginObject()
{
    open('{');
}

void JsonWriter::endObject()
{
    close('}');
}

void JsonWriter::beginArray()
{
    open('[');
}

void JsonWriter::endArray()
{
    close(']');
}

void JsonWriter::key(const char *asciiKey)
{
    separate();
    const auto length = qsizetype(std::strlen(asciiKey));
    char *p = reserveMore(length + 3);
    *p++ = '"';
    p = std::copy_n(asciiKey, length, p);
    *p++ = '"';
    *p++ = ':';
    commit(p);
    m_needComma = false;
}

void JsonWriter::string(QStringView text)
{
    separate();
    char *p = reserveMore(6 * text.size() + 2);
    *p++ = '"';
    p = escapeInto(p, text);
    *p++ = '"';
    commit(p);
}

void JsonWriter::number(double value)
{
    if (!std::isfinite(value)) {
        null();
        return;
    }
    separate();
    char *p = reserveMore(32);
    // Shortest text that reads back as the same double.
    p = std::to_chars(p, p + 32, value).ptr;
    commit(p);
}

void JsonWriter::integer(qint64 value)
{
    separate();
    char *p = reserveMore(24);
    p = std::to_chars(p, p + 24, value).ptr;
    commit(p);
}

void JsonWriter::boolean(bool value)
{
    separate();
    append(value ? QByteArrayView("true") : QByteArrayView("false"));
}

void JsonWriter::null()
{
    separate();
    append(QByteArrayView("null"));
}

void JsonWriter::raw(QByteArrayView json)
{
    separate();
    append(json);
}
