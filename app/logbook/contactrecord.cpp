#include "app/logbook/contactrecord.h"

#include "app/logbook/adifmode.h"
#include "model/bands.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

QString isoText(const QDateTime &time)
{
    return time.isValid() ? time.toUTC().toString(Qt::ISODate) : QString();
}

QDateTime utcFromIso(const QString &text)
{
    QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (time.isValid() && time.timeSpec() == Qt::LocalTime)
        time.setTimeSpec(Qt::UTC); // the log writes UTC; a stamp without a zone means it too
    return time.toUTC();
}

StationSpot::Source sourceFromName(const QString &name)
{
    for (int source = 0; source < StationSpot::k_sourceCount; ++source) {
        if (StationSpot::sourceName(source).compare(name, Qt::CaseInsensitive) == 0)
            return StationSpot::Source(source);
    }
    return StationSpot::DX; // no programme: the reference, if any, is kept but not claimed
}

} // namespace

ContactRecord ContactRecord::fromSpot(const StationSpot &spot, const QString &myCallsign,
                                      const QDateTime &loggedAt)
{
    const QString report = AdifMode::defaultReport(spot.mode);
    return ContactRecord{spot, myCallsign, loggedAt.toUTC(), report, report};
}

QString ContactRecord::band() const
{
    return bandForFrequency(spot.frequencyKhz);
}

QByteArray ContactRecord::logLine() const
{
    // QJsonObject keeps its keys sorted, which is the order the file promises.
    const QJsonObject record{
        {QStringLiteral("band"), band()},
        {QStringLiteral("callsign"), spot.callsign},
        {QStringLiteral("comments"), spot.comments},
        {QStringLiteral("frequency_khz"), spot.frequencyKhz},
        {QStringLiteral("grid"), spot.grid},
        {QStringLiteral("location"), spot.locationDesc},
        {QStringLiteral("mode"), spot.mode},
        {QStringLiteral("my_callsign"), myCallsign},
        {QStringLiteral("reference"), spot.reference},
        {QStringLiteral("reference_name"), spot.referenceName},
        {QStringLiteral("rst_rcvd"), rstRcvd},
        {QStringLiteral("rst_sent"), rstSent},
        {QStringLiteral("source"), spot.sourceString()},
        {QStringLiteral("spot_time"), isoText(spot.spotTime)},
        {QStringLiteral("spotter"), spot.spotter},
        {QStringLiteral("timestamp"), isoText(loggedAt)},
    };
    return QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<ContactRecord> ContactRecord::fromLogLine(const QByteArray &line)
{
    const QJsonObject json = QJsonDocument::fromJson(line).object();
    const auto text = [&json](const char *key) { return json.value(QLatin1String(key)).toString(); };
    ContactRecord record;
    record.loggedAt = utcFromIso(text("timestamp"));
    record.spot.callsign = text("callsign").trimmed();
    if (record.spot.callsign.isEmpty() || !record.loggedAt.isValid())
        return std::nullopt;
    record.spot.source = sourceFromName(text("source"));
    record.spot.comments = text("comments");
    record.spot.frequencyKhz = json.value(QLatin1String("frequency_khz")).toDouble();
    record.spot.grid = text("grid");
    record.spot.locationDesc = text("location");
    record.spot.mode = text("mode");
    record.spot.reference = text("reference");
    record.spot.referenceName = text("reference_name");
    record.spot.spotTime = utcFromIso(text("spot_time"));
    record.spot.spotter = text("spotter");
    record.spot.status = StationSpot::Contacted;
    record.myCallsign = text("my_callsign");
    record.rstRcvd = text("rst_rcvd");
    record.rstSent = text("rst_sent");
    return record;
}
