#include "app/serviceurls.h"

#include "app/coordinatecache.h"
#include "app/logbook/qrzsender.h"
#include "sources/websource.h"

namespace {

QUrl defaultUrl(StationSpot::Source source)
{
    return QUrl(QString::fromLatin1(WebSource::of(source).defaultUrl));
}

} // namespace

ServiceUrls ServiceUrls::defaults()
{
    return ServiceUrls{defaultUrl(StationSpot::POTA),
                       defaultUrl(StationSpot::SOTA),
                       defaultUrl(StationSpot::WWFF),
                       defaultUrl(StationSpot::WWBOTA),
                       defaultUrl(StationSpot::GMA),
                       QUrl(QString::fromLatin1(CoordinateCache::k_potaUrl)),
                       QUrl(QString::fromLatin1(CoordinateCache::k_sotaUrl)),
                       defaultUrl(StationSpot::ZLOTA),
                       defaultUrl(StationSpot::SIOTA),
                       QrzSender::defaultApiUrl()};
}

ServiceUrls ServiceUrls::allAt(const QUrl &base)
{
    QUrl qrz = base;
    qrz.setPath(QStringLiteral("/api"));
    return ServiceUrls{base, base, base, base, base, base, base, base, base, qrz};
}
