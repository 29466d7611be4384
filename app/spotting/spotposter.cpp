#include "app/spotting/spotposter.h"

#include "app/serviceurls.h"
#include "app/spotting/potaposter.h"
#include "app/spotting/webspotposter.h"
#include "app/spotting/wwbotaposter.h"

#include <QDateTime>
#include <QNetworkAccessManager>

#include <algorithm>
#include <utility>

SpotPoster::SpotPoster(const ServiceUrls &services, const DxClusterPool &clusters, QObject *parent)
    : QObject(parent)
    , m_network(new QNetworkAccessManager(this))
    , m_pota(new WebSpotPoster(QStringLiteral("POTA"), services.potaSpotPost, m_network, this))
    , m_wwbota(new WebSpotPoster(QStringLiteral("WWBOTA"), services.wwbotaSpotPost, m_network, this))
    , m_cluster(clusters)
    , m_clock([] { return QDateTime::currentMSecsSinceEpoch(); })
{
    registerStationSpotMetaTypes();
}

SpotPoster::~SpotPoster() = default;

void SpotPoster::setClock(Clock clock)
{
    m_clock = std::move(clock);
}

void SpotPoster::setAnswerTimeoutMs(int ms)
{
    m_pota->setTimeoutMs(ms);
    m_wwbota->setTimeoutMs(ms);
}

QString SpotPoster::problem(const SpotRequest &request) const
{
    const SpotRequest r = request.normalized();
    QString found = r.problem(m_ownCallsign);
    if (found.isEmpty() && r.target == StationSpot::DX && !m_cluster.nodeFor(r.clusterNode))
        found = QStringLiteral("no cluster node logged in");
    return found;
}

bool SpotPoster::isRepeat(const SpotRequest &request) const
{
    return m_memory.isRepeat(request.normalized(), m_clock());
}

void SpotPoster::post(const SpotRequest &request, bool force, Done done)
{
    const SpotRequest r = request.normalized();
    const QString service =
        r.target == StationSpot::DX ? QStringLiteral("the DX cluster") : StationSpot::sourceName(r.target);
    QString error = problem(r);
    if (error.isEmpty() && !force && isRepeat(r))
        error = QStringLiteral("already spotted in the last 5 minutes");
    if (!error.isEmpty())
        return done(Outcome{service, error});

    switch (r.target) {
    case StationSpot::POTA:
        return postToWeb(m_pota, PotaPoster::body(r, m_ownCallsign), r, std::move(done));
    case StationSpot::WWBOTA:
        return postToWeb(m_wwbota, WwbotaPoster::body(r, m_ownCallsign), r, std::move(done));
    default: {
        // Written to a logged-in node is all a cluster ever confirms.
        const QString host = m_cluster.post(r);
        if (host.isEmpty())
            return done(Outcome{service, QStringLiteral("no cluster node logged in")});
        m_memory.remember(r, m_clock());
        return done(Outcome{host, QString()});
    }
    }
}

void SpotPoster::postToWeb(WebSpotPoster *poster, const QByteArray &body, const SpotRequest &request,
                           Done done)
{
    poster->post(body, [this, poster, request, done = std::move(done)](const QString &error) {
        if (error.isEmpty())
            taken(request);
        done(Outcome{poster->serviceName(), error});
    });
}

void SpotPoster::taken(const SpotRequest &request)
{
    m_memory.remember(request, m_clock());
    emit ownSpotsPosted(ownSpots(request));
}

QList<StationSpot> SpotPoster::ownSpots(const SpotRequest &request) const
{
    QList<StationSpot> spots;
    const QStringList refs = request.references();
    for (const QString &ref : refs) {
        StationSpot spot;
        spot.source = request.target;
        spot.callsign = request.callsign;
        spot.reference = ref;
        spot.referenceName = refs.size() == 1 ? request.referenceName : QString();
        spot.frequencyKhz = request.frequencyKhz;
        spot.mode = request.mode;
        spot.spotTime = QDateTime::fromMSecsSinceEpoch(m_clock(), Qt::UTC);
        spot.spotter = m_ownCallsign;
        // As the service's own feed will show it: a QRT spot says so.
        spot.comments = request.target == StationSpot::POTA ? request.potaComment()
                        : request.qrt                       ? QStringLiteral("QRT ") + request.wwbotaComment()
                                                            : request.wwbotaComment();
        spots << spot;
    }
    return spots;
}

void SpotPoster::describeFromTable(QList<StationSpot> &own, const QList<StationSpot> &table)
{
    for (StationSpot &spot : own) {
        const auto row = std::find_if(table.cbegin(), table.cend(), [&spot](const StationSpot &s) {
            return s.source == spot.source && s.reference == spot.reference;
        });
        if (row == table.cend())
            continue;
        if (spot.referenceName.isEmpty())
            spot.referenceName = row->referenceName;
        spot.grid = row->grid;
        spot.locationDesc = row->locationDesc;
        spot.hasLocation = row->hasLocation;
        spot.lat = row->lat;
        spot.lon = row->lon;
    }
}

QString SpotPoster::outcomeText(const QString &callsign, const Outcome &outcome)
{
    if (outcome.error.isEmpty())
        return QStringLiteral("Spotted %1 on %2").arg(callsign.trimmed().toUpper(), outcome.service);
    return QStringLiteral("Spot not taken by %1: %2").arg(outcome.service, outcome.error);
}
