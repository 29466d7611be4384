#include "app/mainwindow.h"

// The road of a spot: the sources' wiring, each batch into the table, what
// follows a merge, and the table kept for the next start.

#include "api/wsserver.h"
#include "app/coordinatecache.h"
#include "app/spotingestor.h"
#include "app/spotsources.h"
#include "app/widgets/alertcenter.h"
#include "app/widgets/sourcesview.h"
#include "app/widgets/spottable.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"

#include <QStatusBar>
#include <QTimer>

void MainWindow::loadSpotSnapshot()
{
    const QList<StationSpot> seen = m_desk.restoreSnapshot(QDateTime::currentMSecsSinceEpoch());
    if (!seen.isEmpty())
        updateSpotCounts();
    m_alerts->seed(seen);
    // Kept fresh so that a crash loses at most two minutes of the table.
    auto *snapshotTimer = new QTimer(this);
    snapshotTimer->setObjectName(QStringLiteral("spotSnapshotTimer"));
    connect(snapshotTimer, &QTimer::timeout, this, &MainWindow::saveSpotSnapshot);
    snapshotTimer->start(120000);
}

void MainWindow::wireSources()
{
    for (const auto &[source, fetcher] : m_sources->webFetchers().all())
        m_sourcesView->watch(source, fetcher);
    connect(m_sources, &SpotSources::spotsArrived, this, &MainWindow::onSpotsReady);
    connect(m_sources, &SpotSources::fetchStarted, this, &MainWindow::onFetchStarted);
    connect(m_sources, &SpotSources::fetchFailed, this, &MainWindow::onFetchError);
    connect(m_sources, &SpotSources::dxConnectionChanged, this, &MainWindow::onDxConnectionChanged);
    connect(m_sources, &SpotSources::statusMessage, this,
            [this](const QString &text) { statusBar()->showMessage(text, 8000); });
    const SpotIngestor *ingestor = m_sources->ingestor();
    connect(ingestor, &SpotIngestor::aboutToMerge, this, [this] {
        // Without a row (a lost selection still being handled) the last row stands.
        if (const int row = m_ui.table->selectedRow(); row >= 0)
            m_selection.rememberRow(row);
    });
    connect(ingestor, &SpotIngestor::merged, this, &MainWindow::afterMerge);
}

void MainWindow::afterMerge(const QList<StationSpot> &batch)
{
    applyPersistedStatuses();
    queueCoordLookups(batch);
    updateSpotCounts();
    m_wsServer->pushSpotsUpdated();
    // The same spot again, wherever it went; never another in its place.
    const int row = m_selection.rowToRestore(*m_proxy, *m_model);
    if (row >= 0)
        m_ui.table->selectViewRow(row);
}

// The sources ingest each batch themselves; the window has the alerts look at it first.
void MainWindow::onSpotsReady(const QList<StationSpot> &spots)
{
    m_alerts->processBatch(spots);
}

void MainWindow::onFetchError(const QString &error)
{
    m_sourcesView->fetchFailed(error);
}

void MainWindow::onFetchStarted(const QObject *fetcher)
{
    m_sourcesView->fetchStarted(fetcher);
}

void MainWindow::onDxConnectionChanged(bool connected, const QObject *client)
{
    m_sourcesView->dxConnectionChanged(connected, client);
}

void MainWindow::createDxFetchers()
{
    m_sources->rebuildClusters(m_settings);
}

void MainWindow::queueCoordLookups(const QList<StationSpot> &batch)
{
    m_coords->queueLookups(batch);
}

void MainWindow::onRefreshAll()
{
    m_sources->ingestor()->refreshAll(m_settings.filter);
}

void MainWindow::saveSpotSnapshot() const
{
    m_desk.saveSnapshot(QDateTime::currentMSecsSinceEpoch());
}

void MainWindow::loadCoordCache()
{
    connect(m_coords, &CoordinateCache::referenceLocated, m_model, &StationModel::setReferenceLocation);
    m_coords->load();
}
