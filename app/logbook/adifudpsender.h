#pragma once

#include "app/logbook/adifwriter.h"

#include <QByteArray>

// Plain ADIF over UDP, one record a datagram, as WSJT-X's secondary UDP
// server sends it; Wavelog's gateway and other loggers listen for it.
namespace AdifUdpSender {

// The record's ADIF text, UTF-8, no header.
QByteArray datagram(const ContactRecord &record, const AdifStation &station);

} // namespace AdifUdpSender
