#include "app/logbook/logdelivery.h"

#include "app/logbook/adifmode.h"
#include "sources/spotfetcher.h"

#include <QStringList>

namespace LogDelivery {

QByteArray userAgent()
{
    return QByteArray(SpotFetcher::k_userAgent);
}

QString loggerMode(const ContactRecord &record)
{
    const AdifMode mode = AdifMode::forSpotMode(record.spot.mode, record.spot.frequencyKhz);
    if (!mode.submode.isEmpty())
        return mode.submode;
    return mode.isKnown() ? mode.mode : record.spot.mode.trimmed().toUpper();
}

QString loggerComment(const ContactRecord &record)
{
    QStringList parts;
    const StationSpot &spot = record.spot;
    if (spot.source != StationSpot::DX && !spot.reference.trimmed().isEmpty())
        parts.append(spot.sourceString() + QLatin1Char(' ') + spot.reference.trimmed());
    if (!spot.comments.trimmed().isEmpty())
        parts.append(spot.comments.trimmed());
    return parts.join(QStringLiteral(" "));
}

QString cleanReason(const QString &text, const QString &secret)
{
    QString reason = text.simplified();
    if (!secret.isEmpty())
        reason.replace(secret, QStringLiteral("…"));
    if (reason.size() > 200)
        reason = reason.left(199) + QStringLiteral("…");
    return reason;
}

} // namespace LogDelivery
