#include "app/contactstatusstore.h"

#include "app/tallisdir.h"
#include "model/stationmodel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace {

// A few hundred marks make a few kilobytes; anything this large is not ours.
constexpr qint64 k_maxFileSize = 16 * 1024 * 1024;

int rowOfKey(const QList<StationSpot> &spots, const QString &key)
{
    for (int row = 0; row < spots.size(); ++row) {
        if (spots.at(row).key() == key)
            return row;
    }
    return -1;
}

// A key's text up to its first "|"; of a call sign, the same cut, so that a
// call that itself holds "|" still meets its keys. Shares, never copies, a
// call without one.
QString callOfKey(const QString &text)
{
    const qsizetype bar = text.indexOf(QLatin1Char('|'));
    return bar < 0 ? text : text.left(bar);
}

} // namespace

ContactStatusStore::ContactStatusStore(Clock clock)
{
    setClock(std::move(clock));
}

QString ContactStatusStore::defaultFilePath()
{
    return tallisDirPath() + QStringLiteral("/contact-status.json");
}

void ContactStatusStore::setClock(Clock clock)
{
    m_clock = clock ? std::move(clock) : Clock(&QDateTime::currentDateTimeUtc);
}

QDateTime ContactStatusStore::now() const
{
    return m_clock().toUTC();
}

QDateTime ContactStatusStore::cutOff() const
{
    return now().addSecs(-k_retentionSecs);
}

bool ContactStatusStore::isLive(const Mark &mark) const
{
    return mark.time >= cutOff();
}

void ContactStatusStore::load(const QString &path)
{
    m_path = path;
    QFile file(path);
    if (file.size() > k_maxFileSize || !file.open(QIODevice::ReadOnly))
        return;
    const QDateTime oldest = cutOff();
    const QJsonArray entries = QJsonDocument::fromJson(file.readAll()).array();
    for (const QJsonValue &value : entries) {
        const QJsonObject entry = value.toObject();
        const QString key = entry.value(QStringLiteral("key")).toString();
        if (key.isEmpty())
            continue;
        const QDateTime time =
            QDateTime::fromString(entry.value(QStringLiteral("timestamp")).toString(), Qt::ISODate);
        if (!time.isValid() || time < oldest)
            continue;
        const int status = std::clamp(entry.value(QStringLiteral("status")).toInt(),
                                      int(StationSpot::Unknown), int(StationSpot::NotHeard));
        m_marks.insert(key, {StationSpot::Status(status), time.toUTC()});
    }
}

bool ContactStatusStore::save() const
{
    if (m_path.isEmpty())
        return false;
    const QDateTime oldest = cutOff();
    QStringList keys;
    for (auto it = m_marks.cbegin(); it != m_marks.cend(); ++it) {
        if (it->time >= oldest)
            keys.append(it.key());
    }
    // Sorted, so that the same marks always make the same file.
    keys.sort();
    QJsonArray entries;
    for (const QString &key : std::as_const(keys)) {
        const Mark mark = m_marks.value(key);
        entries.append(QJsonObject{{QStringLiteral("key"), key},
                                   {QStringLiteral("status"), int(mark.status)},
                                   {QStringLiteral("timestamp"), mark.time.toString(Qt::ISODate)}});
    }

    const QString directory = QFileInfo(m_path).absolutePath();
    if (directory == tallisDirPath())
        ensureTallisDir();
    else
        QDir().mkpath(directory);
    // Unbuffered, so that a short write shows here rather than inside commit().
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    keepPrivate(file);
    const QByteArray data = QJsonDocument(entries).toJson(QJsonDocument::Indented);
    if (file.write(data) != data.size())
        return false; // QSaveFile drops the partial copy; the old file stays
    return file.commit();
}

void ContactStatusStore::record(const QString &key, StationSpot::Status status)
{
    record(key, status, now());
}

void ContactStatusStore::record(const QString &key, StationSpot::Status status, const QDateTime &time)
{
    m_marks.insert(key, {status, time.toUTC()});
}

QDateTime ContactStatusStore::markTime(const QString &key) const
{
    const auto it = m_marks.constFind(key);
    return it == m_marks.cend() ? QDateTime() : it->time;
}

int ContactStatusStore::applyTo(StationModel &model) const
{
    if (m_marks.isEmpty())
        return 0;
    const QDateTime oldest = cutOff();
    // One pass over the rows instead of one model search per mark, building
    // keys only for rows whose call has a mark; rows that already show their
    // mark are left alone, so a refresh repaints nothing.
    QSet<QString> markedCalls;
    for (auto it = m_marks.cbegin(); it != m_marks.cend(); ++it)
        markedCalls.insert(callOfKey(it.key()));
    QHash<QString, StationSpot::Status> pending;
    const QList<StationSpot> &spots = model.spots();
    for (const StationSpot &spot : spots) {
        if (!markedCalls.contains(callOfKey(spot.callsign)))
            continue;
        const QString key = spot.key();
        const auto it = m_marks.constFind(key);
        if (it != m_marks.cend() && it->time >= oldest && it->status != spot.status && !pending.contains(key))
            pending.insert(key, it->status);
    }
    for (auto it = pending.cbegin(); it != pending.cend(); ++it)
        model.markSpot(it.key(), it.value());
    return int(pending.size());
}

QStringList ContactStatusStore::markSelection(StationModel &model, const QString &selectedKey,
                                              StationSpot::Status status, Spread spread)
{
    if (selectedKey.isEmpty())
        return {};
    const int selectedRow = rowOfKey(model.spots(), selectedKey);
    if (selectedRow < 0)
        return {};
    const StationSpot selected = model.spotAt(selectedRow);
    const QDateTime time = now();
    const bool spreadToGroup = spread == Spread::SimilarAndGroup && selected.groupId > 0;

    // What is shown marked is what is recorded, so a restart loses no mark: the similar
    // spots, and the group's spots of the same call.
    QList<int> rows = model.markSimilarSpots(selected.callsign, selected.frequencyKhz, status);
    if (spreadToGroup) {
        model.markGroupSpots(selected.groupId, status);
        for (int row = 0; row < model.spots().size(); ++row) {
            const StationSpot &spot = model.spots().at(row);
            if (spot.groupId == selected.groupId &&
                spot.callsign.compare(selected.callsign, Qt::CaseInsensitive) == 0)
                rows.append(row);
        }
    }
    QStringList recorded;
    for (int row : std::as_const(rows)) {
        const QString key = model.spots().at(row).key();
        record(key, status, time);
        if (!recorded.contains(key))
            recorded.append(key);
    }
    save();
    return recorded;
}

void ContactStatusStore::markKey(StationModel &model, const QString &key, StationSpot::Status status)
{
    model.markSpot(key, status);
    record(key, status);
    save();
}
