#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QVarLengthArray>

#include <utility>

class QIODevice;

// The fields of one ADIF record, in file order, names as written. The reader
// fills it again for every record, reusing its memory.
class AdifRecord final
{
public:
    int size() const { return int(m_spans.size()); }
    bool isEmpty() const { return m_spans.isEmpty(); }
    void clear();

    QByteArrayView name(int i) const;
    QByteArrayView rawValue(int i) const; // UTF-8 bytes as in the file
    QString value(int i) const;

    // The first field called name, compared without regard to case; empty
    // when there is none.
    QByteArrayView rawValue(QByteArrayView name) const;
    QString value(QByteArrayView name) const;

    // Every field, names upper-cased, values decoded.
    QList<std::pair<QString, QString>> fields() const;

private:
    friend class AdifReader;
    void add(QByteArrayView name, QByteArrayView value);

    struct Span
    {
        qsizetype nameAt;
        qsizetype nameSize;
        qsizetype valueAt;
        qsizetype valueSize;
    };
    QByteArray m_data;
    QVarLengthArray<Span, 32> m_spans;
};

// Reads ADIF as any program writes it, record by record, without holding the
// file: tags in any case and order, a header or none, CRLF, data types after
// the length, user fields. A length counts UTF-8 characters, as the format
// says; where a producer counted bytes instead, the value that ends cleanly is taken.
// What cannot be read (a length past the end or into the next tag, a tag
// broken off, binary junk) is skipped, counted, and reading resumes at the
// next "<".
class AdifReader final
{
public:
    // Longer values are not ADIF a logbook writes; they are skipped.
    static constexpr qsizetype k_maxValueBytes = 1 << 20;
    // Fields past this many in one record are skipped.
    static constexpr int k_maxFields = 1000;

    // device: open for reading; it is read from its current position on.
    explicit AdifReader(QIODevice *device);

    // The next record into record; false at the end of the data. A record
    // broken off by the end of the file is still given.
    bool readNext(AdifRecord &record);

    // The header's fields, known once the first record is read.
    const AdifRecord &header() const { return m_header; }
    qint64 recordCount() const { return m_records; }
    // Fields skipped because they could not be read.
    qint64 damagedFieldCount() const { return m_damaged; }

private:
    bool fill();
    bool ensure(qsizetype size);
    bool readTag(AdifRecord &record, bool &endOfRecord);
    void readValue(AdifRecord &record, QByteArrayView name, qsizetype start, qsizetype length);
    qsizetype valueEnd(qsizetype start, qsizetype length) const;
    bool endsCleanly(qsizetype end) const;

    QIODevice *m_device;
    QByteArray m_buffer;
    qsizetype m_pos = 0;
    bool m_atEnd = false;
    AdifRecord m_header;
    qint64 m_records = 0;
    qint64 m_damaged = 0;
};
