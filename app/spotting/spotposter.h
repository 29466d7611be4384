#pragma once

#include "app/spotting/clusterposter.h"
#include "app/spotting/spotmemory.h"
#include "app/spotting/spotrequest.h"
#include "model/stationspot.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class DxClusterPool;
class QNetworkAccessManager;
class WebSpotPoster;
struct ServiceUrls;

// Posts the operator's spots: to POTA or WWBOTA on the addresses of the
// service table, or as a "DX" line through one logged-in cluster node. It
// checks every request first, remembers what was posted so a repeat asks
// first, and reports each posted programme spot so the table shows it at once.
// Nothing reaches it but a confirmed dialog or an API command.
class SpotPoster final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SpotPoster)

public:
    struct Outcome
    {
        QString service; // "POTA", "WWBOTA" or the node's host; who was asked
        QString error;   // empty: taken
    };
    // Called exactly once per post, perhaps before post() returns.
    using Done = std::function<void(const Outcome &outcome)>;
    using Clock = std::function<qint64()>; // milliseconds since the epoch

    SpotPoster(const ServiceUrls &services, const DxClusterPool &clusters, QObject *parent = nullptr);
    ~SpotPoster() override;

    // The spotter: the operator's call sign.
    void setOwnCallsign(const QString &callsign) { m_ownCallsign = callsign.trimmed().toUpper(); }
    QString ownCallsign() const { return m_ownCallsign; }
    void setClock(Clock clock);
    // How long a web service may take to answer.
    void setAnswerTimeoutMs(int ms);

    QStringList loggedInNodes() const { return m_cluster.loggedInNodes(); }
    // The first check that fails (a cluster spot needs a logged-in node),
    // empty when the request may go.
    QString problem(const SpotRequest &request) const;
    // Posted already in the last five minutes.
    bool isRepeat(const SpotRequest &request) const;
    // Checks, and unless forced the repeat rule, then posts.
    void post(const SpotRequest &request, bool force, Done done);

    // Own spots take the name, locator and position of a table row of the same
    // programme and reference, which a posted spot does not carry.
    static void describeFromTable(QList<StationSpot> &own, const QList<StationSpot> &table);

    // The status-bar line for an outcome of a spot of that call sign.
    static QString outcomeText(const QString &callsign, const Outcome &outcome);

signals:
    // Programme spots as posted, one per reference, for the table.
    void ownSpotsPosted(const QList<StationSpot> &spots);

private:
    void postToWeb(WebSpotPoster *poster, const QByteArray &body, const SpotRequest &request, Done done);
    void taken(const SpotRequest &request);
    QList<StationSpot> ownSpots(const SpotRequest &request) const;

    QNetworkAccessManager *m_network;
    WebSpotPoster *m_pota;
    WebSpotPoster *m_wwbota;
    ClusterPoster m_cluster;
    SpotMemory m_memory;
    Clock m_clock;
    QString m_ownCallsign;
};
