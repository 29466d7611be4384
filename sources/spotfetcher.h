#pragma once

#include "sources/websource.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>
#include <optional>

class QNetworkAccessManager;
class QNetworkReply;
class QTimer;

// Polls one described web spot source: owns the HTTP client and the refresh
// timer and turns a finished reply into spotsReady or fetchError. Every tick
// that sends anything emits one fetchStarted and ends in exactly one
// spotsReady or fetchError; a parse fault is both, the error and then an
// empty batch.
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

    // Without a service URL the source's own default is used.
    explicit SpotFetcher(const WebSource &source, QObject *parent = nullptr, const QUrl &serviceUrl = QUrl());
    ~SpotFetcher() override;

    const WebSource &source() const { return m_source; }
    // The source's name in messages ("POTA", "SOTA" ...).
    QString sourceName() const { return m_source.name(); }
    // The source's parser on a reply body.
    SpotParse parseResponse(const QByteArray &body) const;

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

public slots:
    // One tick. A source without a service sends nothing and emits nothing.
    void fetch();

signals:
    void spotsReady(QList<StationSpot> spots);
    void fetchError(QString error);
    void fetchStarted();
    // Something the user should know once, not per tick: the service asked us
    // to wait.
    void notice(QString text);

private:
    using TextHandler = std::function<void(std::optional<QByteArray> body)>;

    struct Validators
    {
        QByteArray etag;
        QByteArray lastModified;
        QByteArray body; // kept for requestText only
    };

    // GET of the spot list, ending the tick: spotsReady with the parsed list
    // (or the last one on a 304), or fetchError. onFresh runs after a reply
    // that parsed without fault or was unchanged.
    void requestSpots(std::function<void()> onFresh = {});
    // GET of a small text at path; done gets its body (the last one on a 304)
    // or nothing when it failed. A request the service refused for a while
    // ends the tick itself, without calling done.
    void requestText(const QString &path, TextHandler done);
    // Ends the tick of a spot-list reply; true when the list came whole and
    // without fault, or unchanged.
    bool handleNetworkReply(QNetworkReply *reply);
    QNetworkReply *get(const QString &path);
    void remember(const QString &path, QNetworkReply *reply, const QByteArray &body);
    // A 429 or 503 with Retry-After: ends the tick with fetchError, starts the
    // quiet time and tells the user once. False for any other reply.
    bool handleRefusal(QNetworkReply *reply);
    QString waitNotice() const;

    const WebSource m_source;
    QNetworkAccessManager *m_network;
    QTimer *m_refreshTimer;
    QUrl m_serviceUrl;
    Clock m_clock;
    qint64 m_quietUntilMs = 0;
    QHash<QString, Validators> m_validators; // by path
    QList<StationSpot> m_lastSpots;
    QByteArray m_lastChange; // the change text of the last list that came whole
};
