#include "app/logbook/qrzsender.h"

#include <QHash>

namespace {

QByteArray formValue(const QByteArray &value)
{
    return QUrl::toPercentEncoding(QString::fromUtf8(value));
}

QHash<QString, QString> formFields(const QByteArray &body)
{
    QHash<QString, QString> fields;
    const QList<QByteArray> pairs = body.trimmed().split('&');
    for (const QByteArray &pair : pairs) {
        const qsizetype equals = pair.indexOf('=');
        if (equals <= 0)
            continue;
        QByteArray value = pair.mid(equals + 1);
        value.replace('+', ' ');
        fields.insert(QString::fromUtf8(pair.left(equals)).trimmed().toUpper(),
                      QUrl::fromPercentEncoding(value));
    }
    return fields;
}

} // namespace

namespace QrzSender {

QUrl defaultApiUrl()
{
    return QUrl(QStringLiteral("https://logbook.qrz.com/api"));
}

HttpPost post(const QUrl &apiUrl, const LogTarget &target, const QString &adifRecord)
{
    QNetworkRequest request(apiUrl);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/x-www-form-urlencoded"));
    request.setHeader(QNetworkRequest::UserAgentHeader, LogDelivery::userAgent());
    const QByteArray body = "KEY=" + formValue(target.key.toUtf8()) +
                            "&ACTION=INSERT&ADIF=" + formValue(adifRecord.trimmed().toUtf8());
    return {request, body};
}

DeliveryOutcome outcome(int httpStatus, const QByteArray &body, const QString &networkError)
{
    if (httpStatus == 0)
        return DeliveryOutcome::retry(networkError.isEmpty() ? QStringLiteral("no answer") : networkError);
    if (httpStatus != 200)
        return DeliveryOutcome::retry(QStringLiteral("HTTP %1").arg(httpStatus));
    const QHash<QString, QString> fields = formFields(body);
    const QString result = fields.value(QStringLiteral("RESULT")).trimmed().toUpper();
    const QString reason = fields.value(QStringLiteral("REASON"));
    if (result == QLatin1String("OK"))
        return DeliveryOutcome::delivered();
    if (result == QLatin1String("FAIL") && reason.contains(QLatin1String("duplicate"), Qt::CaseInsensitive))
        return DeliveryOutcome::delivered(reason);
    if (result == QLatin1String("FAIL") || result == QLatin1String("AUTH"))
        return DeliveryOutcome::refused(reason.isEmpty() ? QStringLiteral("RESULT=%1").arg(result) : reason);
    return DeliveryOutcome::retry(QStringLiteral("an answer without RESULT"));
}

} // namespace QrzSender
