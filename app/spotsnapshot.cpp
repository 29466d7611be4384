#include "app/spotsnapshot.h"

#include "api/apijson.h"
#include "api/jsonwriter.h"
#include "app/tallisdir.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace {

const QLatin1String k_fileName("spots-snapshot.json");

// Whole seconds, the usual case of the web sources, take the API's quick
// formatter; skimmer rows carry milliseconds.
QString isoText(const QDateTime &time)
{
    if (!time.isValid())
        return QString();
    if (time.timeSpec() == Qt::UTC && time.toMSecsSinceEpoch() % 1000 == 0)
        return ApiJson::isoTime(time);
    return time.toUTC().toString(Qt::ISODateWithMs);
}

QDateTime fromIsoText(const QString &text)
{
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    return time.isValid() ? time.toUTC() : QDateTime();
}

// Everything the table shows, sorts or groups by. The group number is left
// out: the model numbers the groups again when it merges. Written straight
// out: the file is rewritten every two minutes with the whole table, and a
// document built first would hold the window for a tenth of a second.
void writeSpot(JsonWriter &out, const StationSpot &spot)
{
    out.beginObject();
    out.integerField("source", int(spot.source));
    out.field("activation_id", spot.activationId);
    out.field("callsign", spot.callsign);
    out.field("reference", spot.reference);
    out.field("reference_name", spot.referenceName);
    out.numberField("frequency_khz", spot.frequencyKhz);
    out.field("mode", spot.mode);
    out.field("spot_time", isoText(spot.spotTime));
    out.field("spotter", spot.spotter);
    out.field("comments", spot.comments);
    out.field("grid", spot.grid);
    out.field("location", spot.locationDesc);
    out.booleanField("has_location", spot.hasLocation);
    out.numberField("lat", spot.lat);
    out.numberField("lon", spot.lon);
    out.integerField("status", int(spot.status));
    out.endObject();
}

// False for an element that cannot be a spot of the table.
bool readSpot(const QJsonObject &object, StationSpot &spot)
{
    const int source = object.value(QLatin1String("source")).toInt(-1);
    const int status = object.value(QLatin1String("status")).toInt(0);
    spot.callsign = object.value(QLatin1String("callsign")).toString();
    if (source < StationSpot::SOTA || source >= StationSpot::k_sourceCount || spot.callsign.isEmpty())
        return false;
    spot.source = StationSpot::Source(source);
    spot.reference = object.value(QLatin1String("reference")).toString();
    spot.referenceName = object.value(QLatin1String("reference_name")).toString();
    spot.frequencyKhz = object.value(QLatin1String("frequency_khz")).toDouble();
    spot.mode = object.value(QLatin1String("mode")).toString();
    spot.spotTime = fromIsoText(object.value(QLatin1String("spot_time")).toString());
    spot.spotter = object.value(QLatin1String("spotter")).toString();
    spot.comments = object.value(QLatin1String("comments")).toString();
    spot.grid = object.value(QLatin1String("grid")).toString();
    spot.locationDesc = object.value(QLatin1String("location")).toString();
    spot.activationId = object.value(QLatin1String("activation_id")).toString();
    spot.hasLocation = object.value(QLatin1String("has_location")).toBool();
    spot.lat = object.value(QLatin1String("lat")).toDouble();
    spot.lon = object.value(QLatin1String("lon")).toDouble();
    spot.status = status >= StationSpot::Unknown && status <= StationSpot::NotHeard
                      ? StationSpot::Status(status)
                      : StationSpot::Unknown;
    return true;
}

} // namespace

SpotSnapshot::SpotSnapshot(QString directory)
    : m_directory(directory.isEmpty() ? tallisDirPath() : std::move(directory))
{}

QString SpotSnapshot::filePath() const
{
    return QDir(m_directory).filePath(k_fileName);
}

bool SpotSnapshot::write(const QList<StationSpot> &spots, qint64 nowMs) const
{
    JsonWriter out(spots.size() * 400 + 64);
    out.beginObject();
    out.field("saved", isoText(QDateTime::fromMSecsSinceEpoch(nowMs, Qt::UTC)));
    out.key("spots");
    out.beginArray();
    for (const StationSpot &spot : spots)
        writeSpot(out, spot);
    out.endArray();
    out.endObject();

    if (m_directory == tallisDirPath())
        ensureTallisDir();
    else
        QDir().mkpath(m_directory);
    QSaveFile file(filePath());
    if (!file.open(QIODevice::WriteOnly))
        return false;
    keepPrivate(file);
    const QByteArray data = out.take();
    if (file.write(data) != data.size())
        return false; // QSaveFile drops the partial copy; the old file stays
    return file.commit();
}

QMap<StationSpot::Source, QList<StationSpot>> SpotSnapshot::read(qint64 nowMs) const
{
    QFile file(filePath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QJsonObject root = QJsonDocument::fromJson(file.readAll()).object();
    const QDateTime saved = fromIsoText(root.value(QLatin1String("saved")).toString());
    // A snapshot from long ago holds nothing current, not even its spots without a time.
    if (!saved.isValid() || nowMs - saved.toMSecsSinceEpoch() > k_maxAgeMs)
        return {};

    QMap<StationSpot::Source, QList<StationSpot>> bySource;
    const QJsonArray array = root.value(QLatin1String("spots")).toArray();
    for (const QJsonValue &value : array) {
        StationSpot spot;
        if (!value.isObject() || !readSpot(value.toObject(), spot))
            continue;
        if (spot.spotTime.isValid() && nowMs - spot.spotTime.toMSecsSinceEpoch() > k_maxAgeMs)
            continue;
        bySource[spot.source].append(spot);
    }
    return bySource;
}
