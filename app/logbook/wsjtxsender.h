#pragma once

#include "app/logbook/adifwriter.h"

#include <QByteArray>
#include <QList>
#include <QString>

// The datagrams WSJT-X sends when it logs a contact, so that what listens to
// it (GridTracker, JTAlert, Log4OM, QLog ...) takes Tallis's contacts too.
// Only the two logging messages are ever built: the others would steer a
// WSJT-X instance sharing the port.
namespace WsjtxSender {

inline constexpr quint32 k_magic = 0xADBCCBDA;
inline constexpr quint32 k_schema = 2;
inline constexpr quint32 k_qsoLogged = 5;
inline constexpr quint32 k_loggedAdif = 12;
inline constexpr char k_clientId[] = "Tallis";

// "QSO Logged": the contact's fields, times on and off both the log time;
// empty fields go as null strings, as WSJT-X sends its unset ones.
QByteArray qsoLogged(const ContactRecord &record, const AdifStation &station);
// "Logged ADIF": a whole ADIF text, header and one record.
QByteArray loggedAdif(const QString &adifDocument);
// What a target with this "message" choice gets: "qso", "adif" or both, QSO Logged first.
QList<QByteArray> datagrams(const QString &message, const ContactRecord &record, const AdifStation &station,
                            const QString &adifDocument);

} // namespace WsjtxSender
