#include "app/logbook/adifudpsender.h"

namespace AdifUdpSender {

QByteArray datagram(const ContactRecord &record, const AdifStation &station)
{
    return AdifWriter::record(record, station).toUtf8();
}

} // namespace AdifUdpSender
