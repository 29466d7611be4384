#pragma once

#include "model/stationspot.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

class QNetworkAccessManager;
class QNetworkReply;
class QTimer;

// Home directory + "/.tallis/coord-cache.json". Creates nothing.
QString coordCacheFilePath();

// Positions of POTA parks and SOTA summits, looked up once per reference from
// the programmes' own services and kept on disk for 30 days, so the distance
// and bearing columns fill in for spots that come without a position.
class CoordinateCache final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CoordinateCache)

public:
    static constexpr const char *k_potaUrl = "https://api.pota.app";
    static constexpr const char *k_sotaUrl = "https://api-db2.sota.org.uk";
    static constexpr int k_retentionDays = 30;
    // Answers come in bursts of hundreds on a first start; one write per burst, not per answer.
    static constexpr int k_saveDelayMs = 1000;

    struct Position
    {
        double latitude = 0.0;
        double longitude = 0.0;
    };

    // Milliseconds since the Unix epoch, UTC.
    using Clock = std::function<qint64()>;

    // Requests go through network, which the caller owns and keeps alive.
    explicit CoordinateCache(QNetworkAccessManager *network, QObject *parent = nullptr);
    ~CoordinateCache() override;

    // Scheme, host and port of the two services; the request paths are their own.
    void setServiceUrls(const QUrl &pota, const QUrl &sota);
    void setClock(Clock clock);

    // Look-ups are only worth their requests while the user has a position of their own.
    void setLookupsEnabled(bool enabled) { m_lookupsEnabled = enabled; }
    bool lookupsEnabled() const { return m_lookupsEnabled; }

    // Reads the file, dropping entries older than the retention period.
    void load();
    // Rewrites the file from memory; a reference keeps the time it was first written.
    void save();
    bool isSavePending() const;
    int saveDelayMs() const;
    void setSaveDelayMs(int ms);

    // Asks once for each uncached park or summit of the batch, at most
    // k_maxRequestsInFlight at a time, then reports the cached position of every
    // spot of the batch that lacks one.
    void queueLookups(const QList<StationSpot> &spots);

    // A full table asks for thousands of positions: a few at a time is polite
    // to the services and keeps thousands of replies from landing at once.
    static constexpr int k_maxRequestsInFlight = 4;

    std::optional<Position> lookup(const QString &reference) const;
    int size() const { return int(m_positions.size()); }
    bool isPending(const QString &reference) const { return m_pending.contains(reference); }
    int pendingCount() const { return int(m_pending.size()); }

signals:
    // Every spot of this reference may take this position (StationModel::setReferenceLocation).
    void referenceLocated(const QString &reference, double latitude, double longitude);

private:
    void requestPosition(StationSpot::Source source, const QString &reference);
    void sendWaiting();
    void onReply(QNetworkReply *reply, const QString &reference);
    qint64 cutoffMSecs() const;

    QNetworkAccessManager *m_network;
    QUrl m_potaUrl;
    QUrl m_sotaUrl;
    Clock m_clock;
    QTimer *m_saveTimer;
    bool m_lookupsEnabled = false;
    QHash<QString, Position> m_positions;
    QSet<QString> m_pending;
    QList<std::pair<StationSpot::Source, QString>> m_waiting;
    int m_inFlight = 0;
};
