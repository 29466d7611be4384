#include "app/spotsources.h"

#include "app/huntedcalls.h"
#include "app/settingsfile.h"
#include "app/spotingestor.h"
#include "sources/dxclusterfetcher.h"
#include "sources/rbnclient.h"
#include "sources/skimmerfeed.h"
#include "sources/sourcehealth.h"
#include "sources/spotfetcher.h"

SpotSources::SpotSources(const ServiceUrls &services, StationModel *model, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_webFetchers(services, this)
    , m_dxClusters(this)
    , m_ingestor(new SpotIngestor(model, this))
    , m_skimmerFeed(new SkimmerFeed({}, this))
    , m_rbn(new RbnClient(this))
    , m_health(new SourceHealth(this))
{
    for (const auto &[source, fetcher] : m_webFetchers.all()) {
        connect(fetcher, &SpotFetcher::spotsReady, this, &SpotSources::take);
        connect(fetcher, &SpotFetcher::fetchError, this, &SpotSources::noteFetchError);
        connect(fetcher, &SpotFetcher::fetchStarted, this,
                [this, fetcher = fetcher] { noteFetchStarted(fetcher); });
    }
    for (const auto &[source, fetcher] : m_webFetchers.refreshOrder())
        m_ingestor->addWebSource(source, fetcher);
}

SpotSources::~SpotSources() = default;

void SpotSources::take(const QList<StationSpot> &spots)
{
    emit spotsArrived(spots);
    m_ingestor->receive(spots);
}

void SpotSources::noteFetchStarted(const QObject *fetcher)
{
    m_ingestor->noteFetchStarted();
    emit fetchStarted(fetcher);
}

void SpotSources::noteFetchError(const QString &error)
{
    m_ingestor->noteFetchError();
    emit fetchFailed(error);
}

void SpotSources::rebuildClusters(const AppSettings &settings)
{
    m_dxClusters.rebuild(settings.dxClusters, settings.callsign, [this](DxClusterFetcher *dx) {
        connect(dx, &DxClusterFetcher::spotsReady, this, &SpotSources::take);
        connect(dx, &DxClusterFetcher::skimmerReportReady, m_skimmerFeed, &SkimmerFeed::add);
        connect(dx, &DxClusterFetcher::fetchError, this, &SpotSources::noteFetchError);
        connect(dx, &DxClusterFetcher::fetchStarted, this, [this, dx] { noteFetchStarted(dx); });
        connect(dx, &DxClusterFetcher::connectionChanged, this,
                [this, dx](bool connected) { emit dxConnectionChanged(connected, dx); });
    });
    m_health->watchClusters(m_dxClusters.clients());
    if (settings.filter.isSourceEnabled(StationSpot::DX))
        m_dxClusters.connectAll();
}

void SpotSources::setDxEnabled(bool on) const
{
    on ? m_dxClusters.connectAll() : m_dxClusters.disconnectAll();
}

void SpotSources::setCallsign(const QString &callsign) const
{
    m_dxClusters.setCallsign(callsign);
    m_rbn->setCallsign(callsign);
}

void SpotSources::startRbn(const AppSettings &settings, std::function<int()> maxAgeMins)
{
    m_rbn->setHost(settings.rbnHost);
    m_rbn->setCallsign(settings.callsign);
    connect(m_rbn, &RbnClient::skimmerReportReady, m_skimmerFeed, &SkimmerFeed::add);
    connect(m_rbn, &RbnClient::fetchError, this, &SpotSources::noteFetchError);
    connect(m_rbn, &RbnClient::statusMessage, this, &SpotSources::statusMessage);
    connect(m_skimmerFeed, &SkimmerFeed::spotsReady, this, &SpotSources::take);
    m_health->watchFeedGroup(QStringLiteral("RBN"), {m_rbn->feeds().cbegin(), m_rbn->feeds().cend()});
    auto *hunted = new HuntedCalls(m_model, std::move(maxAgeMins), m_skimmerFeed);
    m_skimmerFeed->filter().setHuntedTest([hunted](const QString &call) { return hunted->contains(call); });
    applyRbnChoice(settings);
}

void SpotSources::applyRbnChoice(const AppSettings &settings)
{
    const bool on = settings.filter.isSourceEnabled(StationSpot::RBN);
    m_skimmerFeed->filter().setHuntedOnly(!settings.rbnAllStations);
    m_skimmerFeed->filter().setContinents(settings.rbnContinentsInEffect());
    m_skimmerFeed->setEnabled(on);
    on ? void(m_rbn->start()) : m_rbn->stop();
}
