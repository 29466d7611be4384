#pragma once

#include "app/logbook/logdelivery.h"
#include "app/logbook/logtarget.h"

#include <QUrl>

// The QRZ Logbook API: KEY, ACTION=INSERT and the ADIF record, form-encoded;
// the answer is form-encoded too.
namespace QrzSender {

// The service's address; tests hand the forwarder a local one.
QUrl defaultApiUrl();

HttpPost post(const QUrl &apiUrl, const LogTarget &target, const QString &adifRecord);

// RESULT=OK, or a FAIL whose REASON says duplicate: delivered. RESULT=FAIL or
// AUTH otherwise: refused. Anything else (no answer, a server error, a page
// that is not the API's): retry. httpStatus is 0 when no answer came.
DeliveryOutcome outcome(int httpStatus, const QByteArray &body, const QString &networkError);

} // namespace QrzSender
