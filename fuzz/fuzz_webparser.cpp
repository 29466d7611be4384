// One web service's reply body, as its parser reads it. Built once per
// service: TALLIS_FUZZ_SOURCE names the source.
#include "api/apijson.h"
#include "fuzz/fuzzsupport.h"
#include "sources/websource.h"

#include <QJsonDocument>
#include <QJsonObject>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray body = FuzzSupport::bytes(data, size);
    const SpotParse parsed = WebSource::of(StationSpot::TALLIS_FUZZ_SOURCE).parse(body);
    const QList<StationSpot> &spots = parsed.spots;
    if (!parsed.error.isEmpty() && !spots.isEmpty())
        FuzzSupport::fail("a reply reported as faulty still gave spots", parsed.error);
    // Whatever text the service sent reaches API clients; it must stay JSON.
    const QByteArray json = ApiJson::spotListJson(spots);
    FuzzSupport::requireValidJson(json, "the API's spot list is not JSON");
    if (QJsonDocument::fromJson(json).object().value(QStringLiteral("count")).toInt(-1) != spots.size())
        FuzzSupport::fail("the API's spot list lost spots");
    return 0;
}
