#pragma once

#include "app/logbook/contactrecord.h"

#include <QByteArray>
#include <QNetworkRequest>
#include <QString>

// What became of one attempt to hand a record to an online logbook.
struct DeliveryOutcome
{
    enum class Kind {
        Delivered, // the service holds the record (or said it already did)
        Refused,   // the service will not take it: shown, never retried
        Retry,     // no verdict (no answer, a server error): tried again later
    };
    Kind kind = Kind::Retry;
    QString reason; // the service's own words, or what went wrong on the way

    static DeliveryOutcome delivered(const QString &reason = QString()) { return {Kind::Delivered, reason}; }
    static DeliveryOutcome refused(const QString &reason) { return {Kind::Refused, reason}; }
    static DeliveryOutcome retry(const QString &reason) { return {Kind::Retry, reason}; }
};

// One HTTP POST, ready to go.
struct HttpPost
{
    QNetworkRequest request;
    QByteArray body;
};

// What the record says, in the shape loggers without ADIF fields take it.
namespace LogDelivery {

// Who Tallis says it is to every service.
QByteArray userAgent();
// One name for the mode: the submode where ADIF has one (FT4, USB), else the mode,
// else the spot's own text upper-cased.
QString loggerMode(const ContactRecord &record);
// The programme and reference ("POTA US-1234"), then the spot's comments.
QString loggerComment(const ContactRecord &record);
// The text of a service's answer fit for the status bar: one line, at most
// 200 characters, with any occurrence of secret cut out.
QString cleanReason(const QString &text, const QString &secret);

} // namespace LogDelivery
