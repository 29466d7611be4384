#include "app/logbook/wsjtxsender.h"

#include "app/logbook/logdelivery.h"

#include <QDataStream>
#include <QIODevice>

#include <cmath>

namespace {

// Qt 5.2's stream format, the one the protocol's schema 2 names; big-endian.
class Message final
{
public:
    explicit Message(quint32 type)
        : m_stream(&m_bytes, QIODevice::WriteOnly)
    {
        m_stream.setVersion(QDataStream::Qt_5_2);
        m_stream << WsjtxSender::k_magic << WsjtxSender::k_schema << type;
        text(QString::fromLatin1(WsjtxSender::k_clientId));
    }

    // A count of UTF-8 bytes then the bytes; 0xffffffff for an empty text.
    Message &text(const QString &value)
    {
        m_stream << (value.isEmpty() ? QByteArray() : value.toUtf8());
        return *this;
    }
    Message &time(const QDateTime &value)
    {
        m_stream << value.toUTC();
        return *this;
    }
    Message &number(quint64 value)
    {
        m_stream << value;
        return *this;
    }
    QByteArray bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
    QDataStream m_stream;
};

} // namespace

namespace WsjtxSender {

QByteArray qsoLogged(const ContactRecord &record, const AdifStation &station)
{
    const StationSpot &spot = record.spot;
    const QString own =
        record.myCallsign.trimmed().isEmpty() ? station.callsign.trimmed() : record.myCallsign.trimmed();
    const QString myGrid =
        station.hasLocation ? AdifWriter::gridSquare(station.latitude, station.longitude) : QString();
    const quint64 hz = spot.frequencyKhz > 0.0 ? quint64(std::llround(spot.frequencyKhz * 1000.0)) : 0;
    Message message(k_qsoLogged);
    message.time(record.loggedAt)
        .text(spot.callsign.trimmed())
        .text(spot.grid.trimmed())
        .number(hz)
        .text(LogDelivery::loggerMode(record))
        .text(record.rstSent.trimmed())
        .text(record.rstRcvd.trimmed())
        .text(QString()) // TX power
        .text(LogDelivery::loggerComment(record))
        .text(QString()) // name
        .time(record.loggedAt)
        .text(own) // operator
        .text(own)
        .text(myGrid)
        .text(QString())  // exchange sent
        .text(QString())  // exchange received
        .text(QString()); // propagation mode
    return message.bytes();
}

QByteArray loggedAdif(const QString &adifDocument)
{
    return Message(k_loggedAdif).text(adifDocument).bytes();
}

QList<QByteArray> datagrams(const QString &message, const ContactRecord &record, const AdifStation &station,
                            const QString &adifDocument)
{
    QList<QByteArray> list;
    if (message != QLatin1String("adif"))
        list.append(qsoLogged(record, station));
    if (message != QLatin1String("qso"))
        list.append(loggedAdif(adifDocument));
    return list;
}

} // namespace WsjtxSender
