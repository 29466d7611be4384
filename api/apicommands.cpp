#include "api/apicommands.h"

#include "api/apibackend.h"
#include "api/jsonwriter.h"
#include "buildinfo.h"

#include <QJsonDocument>

#include <algorithm>
#include <climits>
#include <iterator>

namespace {

const QByteArray k_empty = QByteArrayLiteral("{}");

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QString stringArg(const QJsonObject &data, QLatin1String name)
{
    return data.value(name).toString();
}

QString requiredKey(const QJsonObject &data)
{
    const QString key = stringArg(data, QLatin1String("key"));
    if (key.isEmpty())
        throw QStringLiteral("missing key");
    return key;
}

// A number argument; anything but a JSON number counts as missing, so a
// mistyped value never reaches the radio as 0.
double numberArg(const QJsonObject &data, QLatin1String name, const QString &missing)
{
    const QJsonValue value = data.value(name);
    if (!value.isDouble())
        throw missing;
    return value.toDouble();
}

// The radio panel's settings: one whole number each, passed on unclamped.
QByteArray setInt(const ApiContext &context, const QJsonObject &data, void (ApiBackend::*set)(int),
                  const char *name, const char *missing)
{
    const double value = numberArg(data, QLatin1String(name), QString::fromLatin1(missing));
    (context.backend.*set)(int(std::clamp(value, double(INT_MIN), double(INT_MAX))));
    return k_empty;
}

void requireRadio(const ApiContext &context)
{
    if (!context.backend.apiIsRadioConnected())
        throw QStringLiteral("radio not connected");
}

QByteArray cmdStatusGet(const ApiContext &context, const QJsonObject &)
{
    return ApiJson::statusJson(context);
}

QByteArray cmdConfigGet(const ApiContext &context, const QJsonObject &)
{
    return compact(context.backend.apiConfigGet());
}

// Only the two limits may be changed here, brought into range first; a value
// that is not a number is left out.
QByteArray cmdConfigSet(const ApiContext &context, const QJsonObject &data)
{
    QJsonObject config;
    const QJsonValue maxAge = data.value(QLatin1String("maxAgeMins"));
    if (maxAge.isDouble())
        config.insert(QLatin1String("maxAgeMins"), int(std::clamp(maxAge.toDouble(), 1.0, 720.0)));
    const QJsonValue interval = data.value(QLatin1String("refreshIntervalSecs"));
    if (interval.isDouble())
        config.insert(QLatin1String("refreshIntervalSecs"),
                      int(std::clamp(interval.toDouble(), 60.0, 1.0e9)));
    context.backend.apiConfigSet(config);
    return k_empty;
}

QByteArray cmdSpotsGet(const ApiContext &context, const QJsonObject &)
{
    return ApiJson::spotListJson(context.backend.apiVisibleSpots());
}

QByteArray cmdSpotsSubscribe(const ApiContext &context, const QJsonObject &data)
{
    const QString mode = stringArg(data, QLatin1String("mode"));
    if (mode != QLatin1String("delta") && mode != QLatin1String("full"))
        throw QStringLiteral("mode must be \"delta\" or \"full\"");
    if (!context.subscribeSpots)
        throw QStringLiteral("spot deltas are not available");
    JsonWriter out;
    out.beginObject();
    out.integerField("version", context.subscribeSpots(mode == QLatin1String("delta")));
    out.endObject();
    return out.take();
}

QByteArray cmdSpotsGetAll(const ApiContext &context, const QJsonObject &)
{
    return ApiJson::spotListJson(context.backend.apiAllSpots());
}

QByteArray cmdSpotTune(const ApiContext &context, const QJsonObject &data)
{
    if (!context.backend.apiTuneToSpot(requiredKey(data)))
        throw QStringLiteral("spot not found or radio not connected");
    return k_empty;
}

QByteArray cmdSpotStatusSet(const ApiContext &context, const QJsonObject &data)
{
    const QString key = requiredKey(data);
    if (!data.contains(QLatin1String("status")))
        throw QStringLiteral("missing status (0=Unknown 1=Heard 2=Contacted 3=NotHeard)");
    const int status = data.value(QLatin1String("status")).toInt();
    if (status < StationSpot::Unknown || status > StationSpot::NotHeard)
        throw QStringLiteral("status must be 0-3");
    context.backend.apiSetSpotStatus(key, StationSpot::Status(status));
    return k_empty;
}

QByteArray cmdSpotLog(const ApiContext &context, const QJsonObject &data)
{
    if (!context.backend.apiLogSpot(requiredKey(data)))
        throw QStringLiteral("spot not found");
    return k_empty;
}

QByteArray cmdFilterGet(const ApiContext &context, const QJsonObject &)
{
    return compact(context.backend.apiFilterGet());
}

QByteArray cmdFilterSet(const ApiContext &context, const QJsonObject &data)
{
    context.backend.apiFilterSet(data);
    return k_empty;
}

QByteArray cmdRadioGet(const ApiContext &context, const QJsonObject &)
{
    JsonWriter out;
    out.beginObject();
    out.booleanField("connected", context.backend.apiIsRadioConnected());
    out.numberField("freq_khz", context.backend.apiRadioFreqKhz());
    out.field("mode", context.backend.apiRadioMode());
    out.endObject();
    return out.take();
}

QByteArray cmdRadioConnect(const ApiContext &context, const QJsonObject &)
{
    context.backend.apiRadioConnect();
    return k_empty;
}

QByteArray cmdRadioDisconnect(const ApiContext &context, const QJsonObject &)
{
    context.backend.apiRadioDisconnect();
    return k_empty;
}

QByteArray cmdRadioFrequencySet(const ApiContext &context, const QJsonObject &data)
{
    const double kHz = numberArg(data, QLatin1String("freq_khz"), QStringLiteral("missing freq_khz"));
    requireRadio(context);
    context.backend.apiSetRadioFreqKhz(kHz);
    JsonWriter out;
    out.beginObject();
    out.numberField("freq_khz", kHz);
    out.endObject();
    return out.take();
}

QByteArray cmdRadioModeSet(const ApiContext &context, const QJsonObject &data)
{
    const QString mode = stringArg(data, QLatin1String("mode"));
    if (mode.isEmpty())
        throw QStringLiteral("missing mode");
    requireRadio(context);
    context.backend.apiSetRadioMode(mode);
    return k_empty;
}

QByteArray cmdRadioVolumeSet(const ApiContext &context, const QJsonObject &data)
{
    return setInt(context, data, &ApiBackend::apiSetVolume, "volume", "missing volume (0-100)");
}

QByteArray cmdRadioPowerSet(const ApiContext &context, const QJsonObject &data)
{
    return setInt(context, data, &ApiBackend::apiSetRfPower, "power", "missing power (0-100)");
}

QByteArray cmdRadioMute(const ApiContext &context, const QJsonObject &data)
{
    context.backend.apiSetMute(data.value(QLatin1String("muted")).toBool(false));
    return k_empty;
}

QByteArray cmdRadioFilterSet(const ApiContext &context, const QJsonObject &data)
{
    return setInt(context, data, &ApiBackend::apiSetFilter, "filter",
                  "missing filter (0=narrow 1=normal 2=wide)");
}

QByteArray cmdRadioKeySpeedSet(const ApiContext &context, const QJsonObject &data)
{
    return setInt(context, data, &ApiBackend::apiSetKeySpeed, "wpm", "missing wpm");
}

QByteArray cmdRadioTune(const ApiContext &context, const QJsonObject &)
{
    context.backend.apiStartTune();
    return k_empty;
}

QByteArray cmdRefresh(const ApiContext &context, const QJsonObject &)
{
    context.backend.apiRefresh();
    return k_empty;
}

// The program asking is its own confirmation; the reply waits for the service.
QByteArray cmdSpotPost(const ApiContext &context, const QJsonObject &data)
{
    if (!context.localPeer)
        throw QStringLiteral("spot.post is accepted from this computer only");
    ApiSpotPost post;
    StationSpot &spot = post.spot;
    spot.callsign = stringArg(data, QLatin1String("callsign")).trimmed();
    if (spot.callsign.isEmpty())
        throw QStringLiteral("missing callsign");
    spot.frequencyKhz = numberArg(data, QLatin1String("freq_khz"), QStringLiteral("missing freq_khz"));
    spot.mode = stringArg(data, QLatin1String("mode")).trimmed();
    if (spot.mode.isEmpty())
        throw QStringLiteral("missing mode");
    const QString source = stringArg(data, QLatin1String("source"));
    static const StationSpot::Source targets[] = {StationSpot::POTA, StationSpot::WWBOTA, StationSpot::DX};
    const auto target =
        std::find_if(std::begin(targets), std::end(targets),
                     [&source](StationSpot::Source s) { return StationSpot::sourceName(s) == source; });
    if (target == std::end(targets))
        throw QStringLiteral("unknown source");
    spot.source = *target;
    spot.reference = stringArg(data, QLatin1String("reference"));
    spot.comments = stringArg(data, QLatin1String("comments"));
    post.qrt = data.value(QLatin1String("qrt")).toBool(false);
    post.force = data.value(QLatin1String("force")).toBool(false);
    const ApiLateReply reply = context.lateReply;
    context.backend.apiPostSpot(post, [reply](const QString &postedTo, const QString &error) {
        if (!reply)
            return;
        if (!error.isEmpty())
            return reply(error, QByteArray());
        JsonWriter out;
        out.beginObject();
        out.field("posted_to", postedTo);
        out.endObject();
        reply(QString(), out.take());
    });
    return QByteArray(); // answered by the late reply
}

QByteArray cmdVersionGet(const ApiContext &, const QJsonObject &)
{
    JsonWriter out;
    out.beginObject();
    out.field("version", QString::fromLatin1(BuildInfo::k_version));
    out.field("app", u"Tallis");
    out.integerField("build_time", BuildInfo::k_buildTime);
    out.endObject();
    return out.take();
}

} // namespace

QHash<QString, ApiCommand> apiCommandTable()
{
    return {
        {QStringLiteral("status.get"), cmdStatusGet},
        {QStringLiteral("config.get"), cmdConfigGet},
        {QStringLiteral("config.set"), cmdConfigSet},
        {QStringLiteral("spots.get"), cmdSpotsGet},
        {QStringLiteral("spots.get_all"), cmdSpotsGetAll},
        {QStringLiteral("spots.subscribe"), cmdSpotsSubscribe},
        {QStringLiteral("spot.tune"), cmdSpotTune},
        {QStringLiteral("spot.status.set"), cmdSpotStatusSet},
        {QStringLiteral("spot.log"), cmdSpotLog},
        {QStringLiteral("spot.post"), cmdSpotPost},
        {QStringLiteral("filter.get"), cmdFilterGet},
        {QStringLiteral("filter.set"), cmdFilterSet},
        {QStringLiteral("radio.get"), cmdRadioGet},
        {QStringLiteral("radio.connect"), cmdRadioConnect},
        {QStringLiteral("radio.disconnect"), cmdRadioDisconnect},
        {QStringLiteral("radio.frequency.set"), cmdRadioFrequencySet},
        {QStringLiteral("radio.mode.set"), cmdRadioModeSet},
        {QStringLiteral("radio.volume.set"), cmdRadioVolumeSet},
        {QStringLiteral("radio.power.set"), cmdRadioPowerSet},
        {QStringLiteral("radio.mute"), cmdRadioMute},
        {QStringLiteral("radio.filter.set"), cmdRadioFilterSet},
        {QStringLiteral("radio.keyspeed.set"), cmdRadioKeySpeedSet},
        {QStringLiteral("radio.tune"), cmdRadioTune},
        {QStringLiteral("refresh"), cmdRefresh},
        {QStringLiteral("version.get"), cmdVersionGet},
    };
}
