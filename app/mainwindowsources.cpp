#include "app/mainwindow.h"

// The road of a spot: the sources' wiring, each batch into the table, what
// follows a merge, and the table kept for the next start.

#include "api/spotdeltatracker.h"
#include "api/wsserver.h"
#include "app/coordinatecache.h"
#include "app/dialogs/dxclustersdialog.h"
#include "app/dialogs/lwbridgedialog.h"
#include "app/dialogs/preferencesdialog.h"
#include "app/dialogs/programsdialog.h"
#include "app/dialogs/radiosetupdialog.h"
#include "app/dialogs/windowdialogs.h"
#include "app/huntedcalls.h"
#include "app/logexport.h"
#include "app/serviceurls.h"
#include "app/spotingestor.h"
#include "app/spotting/spotposter.h"
#include "app/tallisdir.h"
#include "app/updatechecker.h"
#include "app/widgets/alertcenter.h"
#include "app/widgets/detailpanel.h"
#include "app/widgets/filterbar.h"
#include "app/widgets/mapdocks.h"
#include "app/widgets/radiopanel.h"
#include "app/widgets/radioview.h"
#include "app/widgets/sourcesview.h"
#include "app/widgets/spottable.h"
#include "app/widgets/updatebar.h"
#include "app/widgets/windowlayout.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamlibcontroller.h"
#include "radio/hamliblink.h"
#include "radio/lwclient.h"
#include "radio/radiorouter.h"
#include "sources/botaspotfetcher.h"
#include "sources/dxclusterfetcher.h"
#include "sources/gmaspotfetcher.h"
#include "sources/potaspotfetcher.h"
#include "sources/rbnclient.h"
#include "sources/skimmerfeed.h"
#include "sources/sotaspotfetcher.h"
#include "sources/sourcehealth.h"
#include "sources/wwbotaspotfetcher.h"
#include "sources/wwffspotfetcher.h"
#include <QCheckBox>
#include <QCloseEvent>
#include <QHeaderView>
#include <QJsonObject>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QPushButton>
#include <QShortcut>
#include <QStatusBar>
#include <QTimer>

void MainWindow::loadSpotSnapshot()
{
    const QList<StationSpot> seen = m_desk.restoreSnapshot(QDateTime::currentMSecsSinceEpoch());
    if (!seen.isEmpty())
        updateSpotCounts();
    m_alerts->seed(seen);
    // Kept fresh so that a crash loses at most two minutes of the table.
    m_snapshotTimer->setObjectName(QStringLiteral("spotSnapshotTimer"));
    connect(m_snapshotTimer, &QTimer::timeout, this, &MainWindow::saveSpotSnapshot);
    m_snapshotTimer->start(120000);
}

void MainWindow::wireSources()
{
    for (const auto &[source, fetcher] : m_webFetchers.all()) {
        connect(fetcher, &SpotFetcher::spotsReady, this, &MainWindow::onSpotsReady);
        connect(fetcher, &SpotFetcher::fetchError, this, &MainWindow::onFetchError);
        connect(fetcher, &SpotFetcher::fetchStarted, this, &MainWindow::onFetchStarted);
        m_sourcesView->watch(source, fetcher);
    }
    for (const auto &[source, fetcher] : m_webFetchers.refreshOrder())
        m_ingestor->addWebSource(source, fetcher);
    connect(m_ingestor, &SpotIngestor::aboutToMerge, this, [this] {
        // Without a row (a lost selection still being handled) the last row stands.
        if (const int row = m_ui.table->selectedRow(); row >= 0)
            m_selection.rememberRow(row);
    });
    connect(m_ingestor, &SpotIngestor::merged, this, &MainWindow::afterMerge);
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

void MainWindow::wireRbn()
{
    m_rbn->setHost(m_settings.rbnHost);
    m_rbn->setCallsign(m_settings.callsign);
    connect(m_rbn, &RbnClient::skimmerReportReady, m_skimmerFeed, &SkimmerFeed::add);
    connect(m_rbn, &RbnClient::fetchError, this, &MainWindow::onFetchError);
    connect(m_rbn, &RbnClient::statusMessage, this,
            [this](const QString &text) { statusBar()->showMessage(text, 8000); });
    connect(m_skimmerFeed, &SkimmerFeed::spotsReady, this, &MainWindow::onSpotsReady);
    m_sourceHealth->watchFeedGroup(QStringLiteral("RBN"), {m_rbn->feeds().cbegin(), m_rbn->feeds().cend()});
    auto *hunted = new HuntedCalls(
        m_model, [this] { return m_settings.filter.maxAgeMins; }, m_skimmerFeed);
    m_skimmerFeed->filter().setHuntedTest([hunted](const QString &call) { return hunted->contains(call); });
    applyRbnChoice();
}

void MainWindow::applyRbnChoice()
{
    const bool on = m_settings.filter.isSourceEnabled(StationSpot::RBN);
    m_skimmerFeed->filter().setHuntedOnly(!m_settings.rbnAllStations);
    m_skimmerFeed->filter().setContinents(m_settings.rbnContinentsInEffect());
    m_skimmerFeed->setEnabled(on);
    on ? void(m_rbn->start()) : m_rbn->stop();
}

void MainWindow::createDxFetchers()
{
    m_dxClusters.rebuild(m_settings.dxClusters, m_settings.callsign, [this](DxClusterFetcher *dx) {
        connect(dx, &DxClusterFetcher::spotsReady, this, &MainWindow::onSpotsReady);
        connect(dx, &DxClusterFetcher::skimmerReportReady, m_skimmerFeed, &SkimmerFeed::add);
        connect(dx, &DxClusterFetcher::fetchError, this, &MainWindow::onFetchError);
        connect(dx, &DxClusterFetcher::fetchStarted, this, &MainWindow::onFetchStarted);
        connect(dx, &DxClusterFetcher::connectionChanged, this, &MainWindow::onDxConnectionChanged);
    });
    m_sourceHealth->watchClusters(m_dxClusters.clients());
}

void MainWindow::onRefreshAll()
{
    m_ingestor->refreshAll(m_settings.filter);
}

void MainWindow::onSpotsReady(const QList<StationSpot> &spots)
{
    m_alerts->processBatch(spots);
    m_ingestor->receive(spots);
}

void MainWindow::onFetchError(const QString &error)
{
    m_ingestor->noteFetchError();
    m_sourcesView->fetchFailed(error);
}

void MainWindow::onFetchStarted()
{
    m_ingestor->noteFetchStarted();
    m_sourcesView->fetchStarted(sender());
}

void MainWindow::onDxConnectionChanged(bool connected)
{
    m_sourcesView->dxConnectionChanged(connected, sender());
}

void MainWindow::saveSpotSnapshot() const
{
    m_desk.saveSnapshot(QDateTime::currentMSecsSinceEpoch());
}

void MainWindow::queueCoordLookups(const QList<StationSpot> &batch)
{
    m_coords->queueLookups(batch);
}

void MainWindow::loadCoordCache()
{
    connect(m_coords, &CoordinateCache::referenceLocated, m_model, &StationModel::setReferenceLocation);
    m_coords->load();
}
