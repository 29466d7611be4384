#include "sources/websource.h"

#include "sources/webparsers.h"

#include <algorithm>
#include <iterator>

namespace {

// Every web spot source: a new one is a row here and a parser.
const WebSource k_webSources[] = {
    {StationSpot::POTA, "https://api.pota.app", "/spot/", &WebParsers::pota},
    // The epoch is a few bytes; the list is the heavy part.
    {StationSpot::SOTA, "https://api-db2.sota.org.uk", "/api/spots/-72", &WebParsers::sota,
     "/api/spots/epoch"},
    {StationSpot::WWFF, "https://spots.wwff.co", "/static/spots.json", &WebParsers::wwff},
    {StationSpot::WWBOTA, "https://api.wwbota.org", "/spots/", &WebParsers::wwbota},
    // Beaches on the Air has no public spot service yet.
    {StationSpot::BOTA},
    {StationSpot::GMA, "https://www.cqgma.org", "/api/spots/gma/", &WebParsers::gma},
    // A slow service: it gets longer than a hung request would.
    {StationSpot::ZLOTA, "https://ontheair.nz", "/api/spots.js?zlota_only=true", &WebParsers::zlota, nullptr,
     10000},
    {StationSpot::SIOTA, "https://www.parksnpeaks.org", "/api/ALL", &WebParsers::parksnpeaks},
};

} // namespace

WebSource WebSource::of(StationSpot::Source source)
{
    const auto found = std::find_if(std::begin(k_webSources), std::end(k_webSources),
                                    [source](const WebSource &row) { return row.source == source; });
    return found != std::end(k_webSources) ? *found : WebSource{source};
}
