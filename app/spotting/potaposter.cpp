#include "app/spotting/potaposter.h"

#include "app/spotting/spotrequest.h"

#include <QJsonDocument>
#include <QJsonObject>

QByteArray PotaPoster::body(const SpotRequest &request, const QString &spotter)
{
    // The service's own feed carries the frequency as text, and so does this.
    const QJsonObject spot{
        {QStringLiteral("activator"), request.callsign},
        {QStringLiteral("spotter"), spotter},
        {QStringLiteral("frequency"), QString::number(request.frequencyKhz, 'g', 12)},
        {QStringLiteral("reference"), request.reference},
        {QStringLiteral("mode"), request.mode},
        {QStringLiteral("source"), QLatin1String(k_sourceName)},
        {QStringLiteral("comments"), request.potaComment()},
    };
    return QJsonDocument(spot).toJson(QJsonDocument::Compact);
}
