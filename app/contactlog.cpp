#include "app/contactlog.h"

#include "app/tallisdir.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QString isoText(const QDateTime &time)
{
    return time.isValid() ? time.toUTC().toString(Qt::ISODate) : QString();
}

QString dateText(const QDate &date)
{
    return date.toString(QStringLiteral("yyyy-MM-dd"));
}

} // namespace

ContactLog::ContactLog(QString directory, Clock clock)
    : m_directory(directory.isEmpty() ? tallisDirPath() : std::move(directory))
{
    setClock(std::move(clock));
}

void ContactLog::setClock(Clock clock)
{
    m_clock = clock ? std::move(clock) : Clock(&QDateTime::currentDateTimeUtc);
}

QDateTime ContactLog::now() const
{
    return m_clock().toUTC();
}

QString ContactLog::fileName(const QString &sourceName, const QDate &utcDate)
{
    return QStringLiteral("contacts-%1-%2.jsonl").arg(sourceName.toLower(), dateText(utcDate));
}

QString ContactLog::filePath(const StationSpot &spot) const
{
    return m_directory + QLatin1Char('/') + fileName(spot.sourceString(), now().date());
}

QByteArray ContactLog::recordLine(const StationSpot &spot, const QString &myCallsign,
                                  const QDateTime &loggedAt)
{
    // QJsonObject keeps its keys sorted, which is the order the file promises.
    const QJsonObject record{
        {QStringLiteral("callsign"), spot.callsign},
        {QStringLiteral("comments"), spot.comments},
        {QStringLiteral("frequency_khz"), spot.frequencyKhz},
        {QStringLiteral("grid"), spot.grid},
        {QStringLiteral("location"), spot.locationDesc},
        {QStringLiteral("mode"), spot.mode},
        {QStringLiteral("my_callsign"), myCallsign},
        {QStringLiteral("reference"), spot.reference},
        {QStringLiteral("reference_name"), spot.referenceName},
        {QStringLiteral("source"), spot.sourceString()},
        {QStringLiteral("spot_time"), isoText(spot.spotTime)},
        {QStringLiteral("spotter"), spot.spotter},
        {QStringLiteral("timestamp"), isoText(loggedAt)},
    };
    return QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n';
}

bool ContactLog::append(const StationSpot &spot, const QString &myCallsign) const
{
    const QDateTime loggedAt = now();
    if (m_directory == tallisDirPath())
        ensureTallisDir();
    else
        QDir().mkpath(m_directory);
    QFile file(m_directory + QLatin1Char('/') + fileName(spot.sourceString(), loggedAt.date()));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return false;
    const QByteArray line = recordLine(spot, myCallsign, loggedAt);
    // One write of the whole line, flushed before returning: a crash loses at
    // most this contact, never an earlier one.
    return file.write(line) == line.size() && file.flush();
}

QString ContactLog::loggedMessage(const StationSpot &spot) const
{
    return QStringLiteral("Contact with %1 recorded — logged to ~/.tallis/contacts-%2-%3.jsonl")
        .arg(spot.callsign, spot.sourceString().toLower(), dateText(now().date()));
}
