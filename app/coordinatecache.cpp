#include "app/coordinatecache.h"

#include "app/tallisdir.h"
#include "sources/spotfetcher.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSaveFile>
#include <QTimer>

#include <algorithm>
#include <cmath>

namespace {

// Tens of thousands of references fit in a few megabytes; a larger file is not ours.
constexpr qint64 k_maxFileSize = 64 * 1024 * 1024;
constexpr qint64 k_msPerDay = 24 * 3600 * 1000;

struct FileEntry
{
    QString reference;
    QString savedAt; // as written, so a rewrite keeps it character for character
    CoordinateCache::Position position;
};

// The file's entries that carry a reference and a valid time not before the cut-off.
QList<FileEntry> readFileEntries(const QString &path, qint64 cutoffMs)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > k_maxFileSize)
        return {};
    const QJsonArray array = QJsonDocument::fromJson(file.readAll()).array();
    QList<FileEntry> entries;
    entries.reserve(array.size());
    for (const QJsonValue &value : array) {
        const QJsonObject object = value.toObject();
        FileEntry entry;
        entry.reference = object.value(QStringLiteral("reference")).toString();
        entry.savedAt = object.value(QStringLiteral("saved_at")).toString();
        const QDateTime savedAt = QDateTime::fromString(entry.savedAt, Qt::ISODate);
        if (entry.reference.isEmpty() || !savedAt.isValid() || savedAt.toMSecsSinceEpoch() < cutoffMs)
            continue;
        entry.position.latitude = object.value(QStringLiteral("latitude")).toDouble(0.0);
        entry.position.longitude = object.value(QStringLiteral("longitude")).toDouble(0.0);
        entries.append(entry);
    }
    return entries;
}

bool isNoPosition(const CoordinateCache::Position &p)
{
    return p.latitude == 0.0 && p.longitude == 0.0;
}

// Texts such as "nan" or "1e9" convert, and a hand-edited file may say 500,
// but neither is a place on Earth.
bool isPlace(const CoordinateCache::Position &p)
{
    return std::abs(p.latitude) <= 90.0 && std::abs(p.longitude) <= 180.0 && !isNoPosition(p);
}

// Numbers, or numeric texts as some services send, but never one of each.
std::optional<CoordinateCache::Position> parsePosition(const QByteArray &body)
{
    const QJsonObject object = QJsonDocument::fromJson(body).object();
    const QJsonValue lat = object.value(QStringLiteral("latitude"));
    const QJsonValue lon = object.value(QStringLiteral("longitude"));
    CoordinateCache::Position p;
    if (lat.isDouble() && lon.isDouble()) {
        p = {lat.toDouble(), lon.toDouble()};
    } else if (lat.isString() && lon.isString()) {
        bool latOk = false;
        bool lonOk = false;
        p = {lat.toString().toDouble(&latOk), lon.toString().toDouble(&lonOk)};
        if (!latOk || !lonOk)
            return std::nullopt;
    } else {
        return std::nullopt;
    }
    if (!isPlace(p))
        return std::nullopt;
    return p;
}

} // namespace

QString coordCacheFilePath()
{
    return tallisDirPath() + QStringLiteral("/coord-cache.json");
}

CoordinateCache::CoordinateCache(QNetworkAccessManager *network, QObject *parent)
    : QObject(parent)
    , m_network(network)
    , m_potaUrl(QString::fromLatin1(k_potaUrl))
    , m_sotaUrl(QString::fromLatin1(k_sotaUrl))
    , m_clock([] { return QDateTime::currentMSecsSinceEpoch(); })
    , m_saveTimer(new QTimer(this))
{
    m_saveTimer->setSingleShot(true);
    m_saveTimer->setInterval(k_saveDelayMs);
    connect(m_saveTimer, &QTimer::timeout, this, &CoordinateCache::save);
}

CoordinateCache::~CoordinateCache()
{
    // The last answers of a run are kept too.
    if (m_saveTimer->isActive())
        save();
}

bool CoordinateCache::isSavePending() const
{
    return m_saveTimer->isActive();
}

int CoordinateCache::saveDelayMs() const
{
    return m_saveTimer->interval();
}

void CoordinateCache::setSaveDelayMs(int ms)
{
    m_saveTimer->setInterval(ms);
}

void CoordinateCache::setServiceUrls(const QUrl &pota, const QUrl &sota)
{
    m_potaUrl = pota;
    m_sotaUrl = sota;
}

void CoordinateCache::setClock(Clock clock)
{
    m_clock = std::move(clock);
}

qint64 CoordinateCache::cutoffMSecs() const
{
    return m_clock() - k_retentionDays * k_msPerDay;
}

void CoordinateCache::load()
{
    const QList<FileEntry> entries = readFileEntries(coordCacheFilePath(), cutoffMSecs());
    for (const FileEntry &entry : entries) {
        if (isPlace(entry.position))
            m_positions.insert(entry.reference, entry.position);
    }
}

void CoordinateCache::save()
{
    m_saveTimer->stop();
    ensureTallisDir();
    const QString path = coordCacheFilePath();
    QHash<QString, QString> firstSaved;
    for (const FileEntry &entry : readFileEntries(path, cutoffMSecs()))
        firstSaved.insert(entry.reference, entry.savedAt);
    const QString now = QDateTime::fromMSecsSinceEpoch(m_clock(), Qt::UTC).toString(Qt::ISODate);

    // Sorted, so that successive files differ only where the cache did.
    QStringList references = m_positions.keys();
    std::sort(references.begin(), references.end());
    QJsonArray array;
    for (const QString &reference : std::as_const(references)) {
        const Position p = m_positions.value(reference);
        array.append(QJsonObject{{QStringLiteral("reference"), reference},
                                 {QStringLiteral("latitude"), p.latitude},
                                 {QStringLiteral("longitude"), p.longitude},
                                 {QStringLiteral("saved_at"), firstSaved.value(reference, now)}});
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return;
    keepPrivate(file);
    file.write(QJsonDocument(array).toJson(QJsonDocument::Indented));
    file.commit();
}

void CoordinateCache::queueLookups(const QList<StationSpot> &spots)
{
    if (!m_lookupsEnabled)
        return;
    for (const StationSpot &spot : spots) {
        if ((spot.source != StationSpot::SOTA && spot.source != StationSpot::POTA) ||
            spot.reference.isEmpty())
            continue;
        if (m_positions.contains(spot.reference) || m_pending.contains(spot.reference))
            continue;
        m_pending.insert(spot.reference);
        m_waiting.append({spot.source, spot.reference});
    }
    sendWaiting();
    // Once per reference: the model gives the position to every spot of it.
    QSet<QString> located;
    for (const StationSpot &spot : spots) {
        if (spot.hasLocation || located.contains(spot.reference))
            continue;
        const auto it = m_positions.constFind(spot.reference);
        if (it == m_positions.constEnd())
            continue;
        located.insert(spot.reference);
        emit referenceLocated(spot.reference, it->latitude, it->longitude);
    }
}

std::optional<CoordinateCache::Position> CoordinateCache::lookup(const QString &reference) const
{
    const auto it = m_positions.constFind(reference);
    if (it == m_positions.constEnd())
        return std::nullopt;
    return *it;
}

void CoordinateCache::sendWaiting()
{
    while (m_inFlight < k_maxRequestsInFlight && !m_waiting.isEmpty()) {
        const auto [source, reference] = m_waiting.takeFirst();
        ++m_inFlight;
        requestPosition(source, reference);
    }
}

void CoordinateCache::requestPosition(StationSpot::Source source, const QString &reference)
{
    QUrl url = source == StationSpot::POTA ? m_potaUrl : m_sotaUrl;
    url.setPath((source == StationSpot::POTA ? QStringLiteral("/park/") : QStringLiteral("/api/summits/")) +
                reference);
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, QString::fromLatin1(SpotFetcher::k_userAgent));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    QNetworkReply *reply = m_network->get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply, reference] { onReply(reply, reference); });
}

void CoordinateCache::onReply(QNetworkReply *reply, const QString &reference)
{
    reply->deleteLater();
    // Freed on failure too: the next batch that names the reference asks again.
    m_pending.remove(reference);
    --m_inFlight;
    sendWaiting();
    if (reply->error() != QNetworkReply::NoError)
        return;
    const std::optional<Position> p = parsePosition(reply->readAll());
    if (!p)
        return;
    m_positions.insert(reference, *p);
    emit referenceLocated(reference, p->latitude, p->longitude);
    // Not restarted by later answers, so a steady trickle still reaches the disk.
    if (!m_saveTimer->isActive())
        m_saveTimer->start();
}
