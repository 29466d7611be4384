#include "app/webfetchers.h"

#include "app/serviceurls.h"
#include "sources/botaspotfetcher.h"
#include "sources/gmaspotfetcher.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/wwbotaspotfetcher.h"
#include "sources/wwffspotfetcher.h"

#include <algorithm>

WebFetchers::WebFetchers(const ServiceUrls &services, QObject *parent)
    : m_all{{StationSpot::POTA, new PotaSpotFetcher(parent, services.pota)},
            {StationSpot::SOTA, new SotaSpotFetcher(parent, services.sota)},
            {StationSpot::WWFF, new WwffSpotFetcher(parent, services.wwff)},
            {StationSpot::WWBOTA, new WwbotaSpotFetcher(parent, services.wwbota)},
            {StationSpot::BOTA, new BotaSpotFetcher(parent)},
            {StationSpot::GMA, new GmaSpotFetcher(parent, services.gma)},
            {StationSpot::ZLOTA, new SpotFetcher(WebSource::of(StationSpot::ZLOTA), parent, services.zlota)},
            // ParksnPeaks' silos
            {StationSpot::SIOTA,
             new SpotFetcher(WebSource::of(StationSpot::SIOTA), parent, services.parksnpeaks)}}
{}

QList<WebFetchers::Entry> WebFetchers::refreshOrder() const
{
    QList<Entry> order = m_all;
    std::stable_partition(order.begin(), order.end(),
                          [](const Entry &e) { return e.first == StationSpot::SOTA; });
    return order;
}
