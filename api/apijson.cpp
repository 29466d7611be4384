#include "api/apijson.h"

#include "api/apibackend.h"
#include "api/jsonwriter.h"
#include "api/spotdeltatracker.h"

namespace {

// A spot object is about 330 bytes; reserving once avoids regrowing a
// multi-megabyte buffer several times.
constexpr qsizetype k_spotBytesEstimate = 400;

// Days since 1970-01-01 to a proleptic Gregorian date (H. Hinnant's civil_from_days).
void civilFromDays(qint64 days, int &year, int &month, int &day)
{
    days += 719468;
    const qint64 era = (days >= 0 ? days : days - 146096) / 146097;
    const auto doe = int(days - era * 146097);
    const int yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int mp = (5 * doy + 2) / 153;
    day = doy - (153 * mp + 2) / 5 + 1;
    month = mp < 10 ? mp + 3 : mp - 9;
    year = int(yoe + era * 400) + (month <= 2 ? 1 : 0);
}

void twoDigits(char16_t *p, int value)
{
    p[0] = char16_t(u'0' + value / 10);
    p[1] = char16_t(u'0' + value % 10);
}

} // namespace

namespace ApiJson {

namespace {

void writeSpotList(JsonWriter &out, const QList<StationSpot> &spots)
{
    out.beginObject();
    out.key("spots");
    out.beginArray();
    for (const StationSpot &spot : spots)
        spotToJson(out, spot);
    out.endArray();
    out.integerField("count", spots.size());
    out.endObject();
}

// {"type":"event","event":<event>,"data": -- the caller writes the data and closes.
void beginEvent(JsonWriter &out, QStringView event)
{
    out.beginObject();
    out.field("type", u"event");
    out.field("event", event);
    out.key("data");
}

void beginReply(JsonWriter &out, const QString &id, bool ok)
{
    out.beginObject();
    out.field("type", u"reply");
    out.field("id", id);
    out.booleanField("ok", ok);
}

} // namespace

QString isoTime(const QDateTime &time)
{
    if (!time.isValid())
        return QString();
    if (time.timeSpec() != Qt::UTC)
        return time.toString(Qt::ISODate);
    // QDateTime::toString costs microseconds a call, which adds up over
    // thousands of spots; UTC, the only kind the sources produce, is cheap to format.
    const qint64 ms = time.toMSecsSinceEpoch();
    const qint64 secs = (ms >= 0 ? ms : ms - 999) / 1000;
    const qint64 days = (secs >= 0 ? secs : secs - 86399) / 86400;
    const auto secOfDay = int(secs - days * 86400);
    int year = 0, month = 0, day = 0;
    civilFromDays(days, year, month, day);
    if (year < 0 || year > 9999)
        return time.toString(Qt::ISODate);
    QString text(20, Qt::Uninitialized);
    auto *p = reinterpret_cast<char16_t *>(text.data());
    twoDigits(p, year / 100);
    twoDigits(p + 2, year % 100);
    p[4] = u'-';
    twoDigits(p + 5, month);
    p[7] = u'-';
    twoDigits(p + 8, day);
    p[10] = u'T';
    twoDigits(p + 11, secOfDay / 3600);
    p[13] = u':';
    twoDigits(p + 14, secOfDay / 60 % 60);
    p[16] = u':';
    twoDigits(p + 17, secOfDay % 60);
    p[19] = u'Z';
    return text;
}

void spotToJson(JsonWriter &out, const StationSpot &spot)
{
    out.beginObject();
    out.field("key", spot.key());
    out.field("source", spot.sourceString());
    out.field("callsign", spot.callsign);
    out.field("reference", spot.reference);
    out.field("reference_name", spot.referenceName);
    out.numberField("freq_khz", spot.frequencyKhz);
    out.field("mode", spot.mode);
    out.field("spot_time", isoTime(spot.spotTime));
    out.field("spotter", spot.spotter);
    out.field("comments", spot.comments);
    out.field("grid", spot.grid);
    out.integerField("status", spot.status);
    out.field("status_str", StationSpot::statusText(spot.status));
    if (spot.hasLocation) {
        out.numberField("lat", spot.lat);
        out.numberField("lon", spot.lon);
    }
    out.endObject();
}

QByteArray spotListJson(const QList<StationSpot> &spots)
{
    JsonWriter out(spots.size() * k_spotBytesEstimate + 64);
    writeSpotList(out, spots);
    return out.take();
}

QByteArray spotsUpdatedEvent(const QList<StationSpot> &spots)
{
    JsonWriter out(spots.size() * k_spotBytesEstimate + 128);
    beginEvent(out, u"spots.updated");
    writeSpotList(out, spots);
    out.endObject();
    return out.take();
}

bool sameSpotJson(const StationSpot &a, const StationSpot &b)
{
    // The fields spotToJson writes (the key is made of three of them).
    return a.source == b.source && a.callsign == b.callsign && a.reference == b.reference &&
           a.referenceName == b.referenceName && a.frequencyKhz == b.frequencyKhz && a.mode == b.mode &&
           a.spotTime == b.spotTime && a.spotter == b.spotter && a.comments == b.comments &&
           a.grid == b.grid && a.status == b.status && a.hasLocation == b.hasLocation &&
           (!a.hasLocation || (a.lat == b.lat && a.lon == b.lon));
}

QByteArray spotsChangedEvent(qint64 version, const SpotDelta &delta)
{
    JsonWriter out((delta.added.size() + delta.updated.size()) * k_spotBytesEstimate +
                   40 * delta.removed.size() + 128);
    beginEvent(out, u"spots.changed");
    out.beginObject();
    out.integerField("version", version);
    for (const auto &[name, spots] :
         {std::pair{"added", &delta.added}, std::pair{"updated", &delta.updated}}) {
        out.key(name);
        out.beginArray();
        for (const StationSpot &spot : *spots)
            spotToJson(out, spot);
        out.endArray();
    }
    out.key("removed");
    out.beginArray();
    for (const QString &key : delta.removed)
        out.string(key);
    out.endArray();
    out.endObject();
    out.endObject();
    return out.take();
}

QByteArray spotsSnapshotEvent(qint64 version, const QList<StationSpot> &spots)
{
    JsonWriter out(spots.size() * k_spotBytesEstimate + 128);
    beginEvent(out, u"spots.snapshot");
    out.beginObject();
    out.integerField("version", version);
    out.key("spots");
    out.beginArray();
    for (const StationSpot &spot : spots)
        spotToJson(out, spot);
    out.endArray();
    out.endObject();
    out.endObject();
    return out.take();
}

QByteArray statusJson(const ApiContext &context)
{
    const ApiBackend &backend = context.backend;
    JsonWriter out;
    out.beginObject();
    out.booleanField("radio_connected", backend.apiIsRadioConnected());
    out.numberField("radio_freq_khz", backend.apiRadioFreqKhz());
    out.field("radio_mode", backend.apiRadioMode());
    out.field("callsign", backend.apiCallsign());
    out.integerField("visible_spots", backend.apiVisibleSpotCount());
    out.integerField("total_spots", backend.apiTotalSpotCount());
    out.integerField("ws_port", context.port);
    out.integerField("ws_clients", context.clientCount);
    out.endObject();
    return out.take();
}

QByteArray eventMessage(QStringView event, QByteArrayView dataJson)
{
    JsonWriter out(dataJson.size() + 64);
    beginEvent(out, event);
    out.raw(dataJson);
    out.endObject();
    return out.take();
}

QByteArray replyMessage(const QString &id, QByteArrayView dataJson)
{
    JsonWriter out(dataJson.size() + id.size() + 64);
    beginReply(out, id, true);
    out.key("data");
    out.raw(dataJson);
    out.endObject();
    return out.take();
}

QByteArray errorMessage(const QString &id, const QString &message)
{
    JsonWriter out;
    beginReply(out, id, false);
    out.field("error", message);
    out.endObject();
    return out.take();
}

} // namespace ApiJson
