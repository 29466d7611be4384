#include "model/stationspot.h"

#include <cmath>

qint64 StationSpot::keyKhz(double frequencyKhz)
{
    // Truncation toward zero; a value no integer can hold (NaN, huge) keys as 0
    // rather than invoking undefined behaviour.
    const bool representable = std::isfinite(frequencyKhz) && std::fabs(frequencyKhz) < 9.0e18;
    return representable ? static_cast<qint64>(frequencyKhz) : qint64(0);
}

QString StationSpot::key() const
{
    return callsign + QLatin1Char('|') + reference + QLatin1Char('|') + QString::number(keyKhz(frequencyKhz));
}

QString StationSpot::sourceString() const
{
    return sourceName(source);
}

QString StationSpot::sourceName(int source)
{
    switch (source) {
    case SOTA:
        return QStringLiteral("SOTA");
    case POTA:
        return QStringLiteral("POTA");
    case WWFF:
        return QStringLiteral("WWFF");
    case WWBOTA:
        return QStringLiteral("WWBOTA");
    case BOTA:
        return QStringLiteral("BOTA");
    case DX:
        return QStringLiteral("DX");
    case GMA:
        return QStringLiteral("GMA");
    case RBN:
        return QStringLiteral("RBN");
    case ZLOTA:
        return QStringLiteral("ZLOTA");
    case SIOTA:
        return QStringLiteral("SIOTA");
    default:
        return QStringLiteral("?");
    }
}

QString StationSpot::statusText(Status status)
{
    switch (status) {
    case Heard:
        return QStringLiteral("Heard");
    case Contacted:
        return QStringLiteral("Contacted");
    case NotHeard:
        return QStringLiteral("Not Heard");
    case Unknown:
        break;
    }
    return QString();
}

void registerStationSpotMetaTypes()
{
    qRegisterMetaType<StationSpot>("StationSpot");
    qRegisterMetaType<QList<StationSpot>>("QList<StationSpot>");
}
