#include "app/logbook/wavelogsender.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QUrl>

namespace {

// What the service says, from "messages" (a list or a text) and "reason".
QString serviceWords(const QByteArray &body)
{
    const QJsonObject json = QJsonDocument::fromJson(body).object();
    QStringList words;
    const QJsonValue messages = json.value(QLatin1String("messages"));
    const QJsonArray list = messages.isArray() ? messages.toArray() : QJsonArray{messages};
    for (const QJsonValue &message : list) {
        if (message.isString())
            words.append(message.toString());
    }
    const QString reason = json.value(QLatin1String("reason")).toString();
    if (!reason.isEmpty())
        words.append(reason);
    return words.join(QStringLiteral("; "));
}

} // namespace

namespace WavelogSender {

HttpPost post(const LogTarget &target, const QString &adifRecord)
{
    QString base = target.url.trimmed();
    while (base.endsWith(QLatin1Char('/')))
        base.chop(1);
    QNetworkRequest request(QUrl(base + QStringLiteral("/api/qso")));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/json"));
    request.setRawHeader("Accept", "application/json");
    request.setHeader(QNetworkRequest::UserAgentHeader, LogDelivery::userAgent());
    const QJsonObject body{{QStringLiteral("key"), target.key},
                           {QStringLiteral("station_profile_id"), target.stationId},
                           {QStringLiteral("type"), QStringLiteral("adif")},
                           {QStringLiteral("string"), adifRecord}};
    return {request, QJsonDocument(body).toJson(QJsonDocument::Compact)};
}

DeliveryOutcome outcome(int httpStatus, const QByteArray &body, const QString &networkError)
{
    const QString words = serviceWords(body);
    if (httpStatus == 201)
        return DeliveryOutcome::delivered();
    if (httpStatus >= 400 && httpStatus < 500) {
        if (words.contains(QLatin1String("duplicate"), Qt::CaseInsensitive))
            return DeliveryOutcome::delivered(words);
        const QString status = QStringLiteral("HTTP %1").arg(httpStatus);
        return DeliveryOutcome::refused(words.isEmpty() ? status : words);
    }
    if (httpStatus == 0)
        return DeliveryOutcome::retry(networkError.isEmpty() ? QStringLiteral("no answer") : networkError);
    return DeliveryOutcome::retry(QStringLiteral("HTTP %1").arg(httpStatus));
}

} // namespace WavelogSender
