#include "app/serviceurls.h"

#include "app/coordinatecache.h"
#include "app/logbook/qrzsender.h"
#include "sources/websource.h"

namespace {

constexpr const char *k_potaPostPath = "/spot";
constexpr const char *k_wwbotaPostPath = "/spots/";

QUrl defaultUrl(StationSpot::Source source)
{
    return QUrl(QString::fromLatin1(WebSource::of(source).defaultUrl));
}

QUrl withPath(QUrl base, const char *path)
{
    base.setPath(QString::fromLatin1(path));
    return base;
}

} // namespace

ServiceUrls ServiceUrls::defaults()
{
    const QUrl pota = defaultUrl(StationSpot::POTA);
    const QUrl wwbota = defaultUrl(StationSpot::WWBOTA);
    return ServiceUrls{pota,
                       defaultUrl(StationSpot::SOTA),
                       defaultUrl(StationSpot::WWFF),
                       wwbota,
                       defaultUrl(StationSpot::GMA),
                       QUrl(QString::fromLatin1(CoordinateCache::k_potaUrl)),
                       QUrl(QString::fromLatin1(CoordinateCache::k_sotaUrl)),
                       defaultUrl(StationSpot::ZLOTA),
                       defaultUrl(StationSpot::SIOTA),
                       withPath(pota, k_potaPostPath),
                       withPath(wwbota, k_wwbotaPostPath),
                       QrzSender::defaultApiUrl()};
}

ServiceUrls ServiceUrls::allAt(const QUrl &base)
{
    QUrl qrz = base;
    qrz.setPath(QStringLiteral("/api"));
    return ServiceUrls{base,
                       base,
                       base,
                       base,
                       base,
                       base,
                       base,
                       base,
                       base,
                       withPath(base, k_potaPostPath),
                       withPath(base, k_wwbotaPostPath),
                       qrz};
}
