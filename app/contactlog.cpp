#include "app/contactlog.h"

#include "app/tallisdir.h"

#include <QDir>
#include <QFile>

namespace {

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
    return ContactRecord::fromSpot(spot, myCallsign, loggedAt).logLine();
}

bool ContactLog::append(const StationSpot &spot, const QString &myCallsign) const
{
    return append(ContactRecord::fromSpot(spot, myCallsign, now()));
}

bool ContactLog::append(const ContactRecord &record) const
{
    if (m_directory == tallisDirPath())
        ensureTallisDir();
    else
        QDir().mkpath(m_directory);
    QFile file(m_directory + QLatin1Char('/') +
               fileName(record.spot.sourceString(), record.loggedAt.toUTC().date()));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text))
        return false;
    keepPrivate(file);
    const QByteArray line = record.logLine();
    // One write of the whole line, flushed before returning: a crash loses at
    // most this contact, never an earlier one.
    return file.write(line) == line.size() && file.flush();
}

QString ContactLog::loggedMessage(const StationSpot &spot) const
{
    return QStringLiteral("Contact with %1 recorded — logged to ~/.tallis/contacts-%2-%3.jsonl")
        .arg(spot.callsign, spot.sourceString().toLower(), dateText(now().date()));
}
