#pragma once

#include "app/logbook/logdelivery.h"
#include "app/logbook/logtarget.h"

// Wavelog's and Cloudlog's QSO API: the ADIF record posted as JSON with the
// user's API key and station profile.
namespace WavelogSender {

// POST <url>/api/qso; the URL is the installation's, such as https://log.example.org/index.php.
HttpPost post(const LogTarget &target, const QString &adifRecord);

// 201, or a 4xx whose messages call it a duplicate: delivered. Other 4xx
// (401 and 403 for a bad key among them): refused. The rest: retry.
// httpStatus is 0 when no answer came.
DeliveryOutcome outcome(int httpStatus, const QByteArray &body, const QString &networkError);

} // namespace WavelogSender
