#pragma once

#include "model/stationspot.h"

#include <QObject>
#include <QString>

class DxClusterPool;
class QStatusBar;
class SourceHealth;
class SpotFetcher;
class SpotIngestor;
class WindowLabels;

// What the window shows of the spot sources: the health and refresh labels,
// and the status-bar notices as fetches start, fail and clusters come and go.
class SourcesView final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SourcesView)

public:
    SourcesView(SourceHealth *health, SpotIngestor *ingestor, const DxClusterPool &clusters,
                WindowLabels &labels, QStatusBar *statusBar, QObject *parent = nullptr);

    // The fetcher's notices are shown; its health counts, but BOTA's (no
    // service yet) does not.
    void watch(StationSpot::Source source, SpotFetcher *fetcher);

    // sender: the fetcher that reported, a DX cluster client or a web source.
    void fetchStarted(const QObject *sender);
    void fetchFailed(const QString &error);
    void dxConnectionChanged(bool connected, const QObject *sender);
    // The DX source was switched on or off by the operator.
    void dxChosen(bool on, bool haveCallsign);

private:
    void showHealth();

    SourceHealth *m_health;
    const DxClusterPool &m_clusters;
    WindowLabels &m_labels;
    QStatusBar *m_statusBar;
};
