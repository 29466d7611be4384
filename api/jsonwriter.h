#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QStringView>

// Writes compact UTF-8 JSON in the order it is told, without building a
// document first: the API's spot lists are large, sent often, and must keep
// their key order, which QJsonObject cannot (it sorts).
// Keys are ASCII literals and are written as given; string values are escaped.
class JsonWriter final
{
public:
    explicit JsonWriter(qsizetype reserveBytes = 256);

    void beginObject();
    void endObject();
    void beginArray();
    void endArray();

    void key(const char *asciiKey);
    void string(QStringView text);
    void number(double value); // non-finite values are written as null, as QJsonDocument does
    void integer(qint64 value);
    void boolean(bool value);
    void null();
    // A value that is already compact JSON.
    void raw(QByteArrayView json);

    // A key and its value.
    void field(const char *asciiKey, QStringView text)
    {
        key(asciiKey);
        string(text);
    }
    void numberField(const char *asciiKey, double value)
    {
        key(asciiKey);
        number(value);
    }
    void integerField(const char *asciiKey, qint64 value)
    {
        key(asciiKey);
        integer(value);
    }
    void booleanField(const char *asciiKey, bool value)
    {
        key(asciiKey);
        boolean(value);
    }

    QByteArrayView bytes() const { return QByteArrayView(m_out.constData(), m_size); }
    QByteArray take();

private:
    void separate();
    void open(char bracket);
    void close(char bracket);
    char *reserveMore(qsizetype maxBytes); // room for maxBytes more, returns where to write
    void commit(const char *end) { m_size = end - m_out.constData(); }
    void append(char c);
    void append(QByteArrayView bytes);

    // m_out is kept larger than what was written (m_size), so that small
    // writes are plain stores rather than container calls.
    QByteArray m_out;
    qsizetype m_size = 0;
    bool m_needComma = false;
};
