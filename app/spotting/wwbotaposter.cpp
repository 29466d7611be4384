#include "app/spotting/wwbotaposter.h"

#include "app/spotting/spotrequest.h"

#include <QJsonDocument>
#include <QJsonObject>

QByteArray WwbotaPoster::body(const SpotRequest &request, const QString &spotter)
{
    const QJsonObject spot{
        {QStringLiteral("spotter"), spotter},
        {QStringLiteral("call"), request.callsign},
        {QStringLiteral("freq"), request.frequencyKhz / 1000.0},
        {QStringLiteral("mode"), request.mode},
        {QStringLiteral("comment"), request.wwbotaComment()},
        {QStringLiteral("type"), request.qrt ? QStringLiteral("QRT") : QStringLiteral("Live")},
    };
    return QJsonDocument(spot).toJson(QJsonDocument::Compact);
}
