#pragma once

#include "app/webfetchers.h"
#include "model/stationspot.h"
#include "sources/dxclusterpool.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class RbnClient;
class SkimmerFeed;
class SourceHealth;
class SpotIngestor;
class StationModel;
struct AppSettings;
struct FilterState;
struct ServiceUrls;

// Where the spots come from: the web services' fetchers, the DX cluster
// clients, the RBN client and its skimmer feed, the ingestor that merges
// their batches into the model, and the sources' health. Every batch, fetch
// and cluster link is reported as this object's signals.
class SpotSources final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SpotSources)

public:
    SpotSources(const ServiceUrls &services, StationModel *model, QObject *parent = nullptr);
    ~SpotSources() override;

    const WebFetchers &webFetchers() const { return m_webFetchers; }
    const DxClusterPool &dxClusters() const { return m_dxClusters; }
    SpotIngestor *ingestor() const { return m_ingestor; }
    SourceHealth *health() const { return m_health; }
    bool anyDxConnected() const { return m_dxClusters.anyConnected(); }

    // A client per node in the settings, connected when the DX source is ticked.
    void rebuildClusters(const AppSettings &settings);
    void setDxEnabled(bool on) const;
    // The DX clusters and the RBN log in with it next time.
    void setCallsign(const QString &callsign) const;
    // The RBN's host and call sign, the hunted stations it keeps (spotted
    // within maxAgeMins), then the operator's choice.
    void startRbn(const AppSettings &settings, std::function<int()> maxAgeMins);
    // The skimmer feed and its connections follow the RBN tick.
    void applyRbnChoice(const AppSettings &settings);

signals:
    // A batch from any source, just before the ingestor takes it.
    void spotsArrived(const QList<StationSpot> &spots);
    // fetcher: the web fetcher or DX cluster client that reported.
    void fetchStarted(const QObject *fetcher);
    void fetchFailed(const QString &error);
    void dxConnectionChanged(bool connected, const QObject *client);
    void statusMessage(const QString &text);

private:
    void take(const QList<StationSpot> &spots);
    void noteFetchStarted(const QObject *fetcher);
    void noteFetchError(const QString &error);

    StationModel *m_model;
    WebFetchers m_webFetchers;
    DxClusterPool m_dxClusters;
    SpotIngestor *m_ingestor;
    SkimmerFeed *m_skimmerFeed; // skimmer rows, one merge a second
    RbnClient *m_rbn;
    SourceHealth *m_health;
};
