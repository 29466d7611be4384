// One web service's reply body, as its fetcher's parser reads it. Built once
// per service: TALLIS_FUZZ_HEADER names the fetcher's header and
// TALLIS_FUZZ_PARSER its class.
#include TALLIS_FUZZ_HEADER

#include "api/apijson.h"
#include "fuzz/fuzzsupport.h"

#include <QJsonDocument>
#include <QJsonObject>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray body = FuzzSupport::bytes(data, size);
    QString error;
    const QList<StationSpot> spots = TALLIS_FUZZ_PARSER::parseSpots(body, &error);
    if (!error.isEmpty() && !spots.isEmpty())
        FuzzSupport::fail("a reply reported as faulty still gave spots", error);
    // Whatever text the service sent reaches API clients; it must stay JSON.
    const QByteArray json = ApiJson::spotListJson(spots);
    FuzzSupport::requireValidJson(json, "the API's spot list is not JSON");
    if (QJsonDocument::fromJson(json).object().value(QStringLiteral("count")).toInt(-1) != spots.size())
        FuzzSupport::fail("the API's spot list lost spots");
    return 0;
}
