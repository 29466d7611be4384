#pragma once

#include "model/stationspot.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>
#include <optional>

class QNetworkAccessManager;
class QNetworkReply;
class QTimer;

// Polling base of every web spot source: owns the HTTP client and the refresh
// timer and turns a finished reply into spotsReady or fetchError. Every tick
// that sends anything emits one fetchStarted and ends in exactly one
// spotsReady or fetchError.
//
// It polls politely, as the services ask of their clients: requests are
// conditional on the last answer (an unchanged list costs the service a 304
// and gives the last batch again), and a service that answers 429 or 503 with
// Retry-After is left alone until then, its ticks skipped without a signal.
class SpotFetcher : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SpotFetcher)

public:
    static constexpr const char *k_userAgent = "Tallis/0.1 (Brightwater)";
    // A Retry-After longer than this is taken as this: a broken header must
    // not silence a source for days.
    static constexpr qint64 k_maxRetryAfterSecs = 3600;

    // Milliseconds since the Unix epoch; tests hand in their own.
    using Clock = std::function<qint64()>;

    explicit SpotFetcher(QObject *parent, const QUrl &serviceUrl = QUrl());
    ~SpotFetcher() override;

    void startAutoRefresh(int seconds);
    void stopAutoRefresh();
    bool isAutoRefreshing() const;
    int refreshIntervalMs() const;

    // Scheme, host and port of the service; the request path is the source's own.
    void setServiceUrl(const QUrl &url);
    QUrl serviceUrl() const { return m_serviceUrl; }

    void setClock(Clock clock);
    // Until when (clock milliseconds) the service asked to be left alone; 0: it did not.
    qint64 quietUntilMs() const { return m_quietUntilMs; }

    // The source's name in messages ("POTA", "SOTA" ...).
    virtual QString sourceName() const = 0;

    // Pure parsing of a reply body; reports its own faults through fetchError.
    virtual QList<StationSpot> parseResponse(const QByteArray &body) = 0;

public slots:
    virtual void fetch() = 0;

signals:
    void spotsReady(QList<StationSpot> spots);
    void fetchError(QString error);
    void fetchStarted();
    // Something the user should know once, not per tick: the service asked us
    // to wait.
    void notice(QString text);

protected:
    using Parser = QList<StationSpot> (*)(const QByteArray &body, QString *error);
    using TextHandler = std::function<void(std::optional<QByteArray> body)>;

    // Starts a tick: false (and nothing emitted) while the service asked to
    // be left alone, else emits fetchStarted.
    bool beginFetch();
    // A whole tick: beginFetch, then requestSpots(path).
    void sendGet(const QString &path);
    // GET of the spot list at path, ending the tick: spotsReady with the
    // parsed list (or the last one on a 304), or fetchError. onFresh runs
    // after a reply that parsed without fault or was unchanged.
    void requestSpots(const QString &path, std::function<void()> onFresh = {});
    // GET of a small text at path; done gets its body (the last one on a 304)
    // or nothing when it failed. A request the service refused for a while
    // ends the tick itself, without calling done.
    void requestText(const QString &path, TextHandler done);
    // Ends a tick with the last parsed batch again.
    void emitLastSpots();
    // Runs parser and reports its fault, if any, through fetchError.
    QList<StationSpot> parseReporting(const QByteArray &body, Parser parser);
    // Ends the tick of a spot-list reply; true when the list came whole and
    // without fault, or unchanged.
    bool handleNetworkReply(QNetworkReply *reply);

private:
    struct Validators
    {
        QByteArray etag;
        QByteArray lastModified;
        QByteArray body; // kept for requestText only
    };

    QNetworkReply *get(const QString &path);
    bool isNotModified(QNetworkReply *reply) const;
    void remember(const QString &path, QNetworkReply *reply, const QByteArray &body);
    // A 429 or 503 with Retry-After: ends the tick with fetchError, starts the
    // quiet time and tells the user once. False for any other reply.
    bool handleRefusal(QNetworkReply *reply);
    QString waitNotice() const;

    QNetworkAccessManager *m_network;
    QTimer *m_refreshTimer;
    QUrl m_serviceUrl;
    Clock m_clock;
    qint64 m_quietUntilMs = 0;
    QHash<QString, Validators> m_validators; // by path
    QList<StationSpot> m_lastSpots;
    bool m_parseFaulted = false;
};
