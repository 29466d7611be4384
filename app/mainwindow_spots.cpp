// Spot ingestion, counts, filters and the DX cluster clients of the main window.
#include "app/detailpanel.h"
#include "app/filterbar.h"
#include "app/mainwindow.h"
#include "model/bands.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamlibcontroller.h"
#include "sources/botaspotfetcher.h"
#include "sources/dxclusterfetcher.h"
#include "sources/gmaspotfetcher.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/wwbotaspotfetcher.h"
#include "sources/wwffspotfetcher.h"

#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>

#include <algorithm>
#include <utility>

QList<std::pair<StationSpot::Source, SpotFetcher *>> MainWindow::webSources() const
{
    return {{StationSpot::SOTA, m_sotaFetcher}, {StationSpot::POTA, m_potaFetcher},
            {StationSpot::WWFF, m_wwffFetcher}, {StationSpot::WWBOTA, m_wwbotaFetcher},
            {StationSpot::BOTA, m_botaFetcher}, {StationSpot::GMA, m_gmaFetcher}};
}

void MainWindow::wireSources()
{
    for (SpotFetcher *fetcher : webFetchers()) {
        connect(fetcher, &SpotFetcher::spotsReady, this, &MainWindow::onSpotsReady);
        connect(fetcher, &SpotFetcher::fetchError, this, &MainWindow::onFetchError);
        connect(fetcher, &SpotFetcher::fetchStarted, this, &MainWindow::onFetchStarted);
    }
}

void MainWindow::onSpotsReady(const QList<StationSpot> &spots)
{
    // A busy cluster node sends a spot a line, often hundreds in one read.
    // Lines that arrive together are merged together once the read is done,
    // so a flood costs one merge per read instead of one per line.
    if (!spots.isEmpty() && spots.first().source == StationSpot::DX) {
        m_pendingDxSpots += spots;
        if (++m_pendingDxBatches == 1)
            QTimer::singleShot(0, this, &MainWindow::flushDxSpots);
        return;
    }
    ingestBatch(spots, 1);
}

void MainWindow::flushDxSpots()
{
    const QList<StationSpot> spots = std::exchange(m_pendingDxSpots, {});
    ingestBatch(spots, std::exchange(m_pendingDxBatches, 0));
}

void MainWindow::ingestBatch(const QList<StationSpot> &spots, int answers)
{
    m_pendingFetches -= answers;
    if (!spots.isEmpty()) {
        const StationSpot::Source source = spots.first().source;
        if (source != StationSpot::DX && source >= 0 && source < 7) {
            if (source != StationSpot::BOTA)
                m_lastRefresh[source] = QDateTime::currentDateTime();
            m_lastBatchSize[source] = int(spots.size());
        }
    }

    int previousRow = -1;
    if (!m_selectedKey.isEmpty()) {
        const QModelIndexList selected = m_table->selectionModel()->selectedRows();
        if (!selected.isEmpty())
            previousRow = selected.first().row();
    }

    m_model->mergeSpots(spots);
    updateSpotCounts();

    if (!m_selectedKey.isEmpty())
        restoreSelection(previousRow);

    if (m_pendingFetches > 0)
        return;
    m_pendingFetches = 0;
    m_statusRefresh->setText(
        QStringLiteral("Last refresh: %1").arg(QTime::currentTime().toString(QStringLiteral("HH:mm:ss"))));
}

void MainWindow::restoreSelection(int previousRow)
{
    const int rows = m_proxy->rowCount();
    const QList<StationSpot> &spots = m_model->spots();
    // The call sign leads the key: compare it first so most rows cost no string building.
    const QStringView selectedCall = QStringView(m_selectedKey).left(m_selectedKey.indexOf(QLatin1Char('|')));
    int target = -1;
    for (int row = 0; row < rows; ++row) {
        const StationSpot &spot = spots.at(m_proxy->mapToSource(m_proxy->index(row, 0)).row());
        if (spot.callsign == selectedCall && spot.key() == m_selectedKey) {
            target = row;
            break;
        }
    }
    if (target < 0 && rows > 0)
        target = qBound(0, previousRow, rows - 1);
    if (target < 0)
        return;
    // A restored selection is not the user's choice: it must not retune the radio.
    m_restoringSelection = true;
    selectProxyRow(target);
    m_restoringSelection = false;
}

void MainWindow::onFetchStarted()
{
    ++m_pendingFetches;
    if (auto *dx = qobject_cast<DxClusterFetcher *>(sender()))
        statusBar()->showMessage(QStringLiteral("Connecting to DX cluster %1…").arg(dx->host()), 10000);
    else
        statusBar()->showMessage(QStringLiteral("Consulting the celestial registry…"), 3000);
}

void MainWindow::onFetchError(const QString &error)
{
    m_pendingFetches = qMax(0, m_pendingFetches - 1);
    statusBar()->showMessage(QStringLiteral("The oracles have failed us: %1").arg(error), 8000);
}

void MainWindow::updateSpotCounts()
{
    const QList<StationSpot> &spots = m_model->spots();
    const int total = int(spots.size());
    const int dx = int(std::count_if(spots.cbegin(), spots.cend(),
                                     [](const StationSpot &spot) { return spot.source == StationSpot::DX; }));
    m_statusSpots->setText(QStringLiteral("Showing %1 of %2  S:%3 P:%4 W:%5 WB:%6 B:%7 DX:%8 G:%9")
                               .arg(m_proxy->rowCount())
                               .arg(total)
                               .arg(m_lastBatchSize[StationSpot::SOTA])
                               .arg(m_lastBatchSize[StationSpot::POTA])
                               .arg(m_lastBatchSize[StationSpot::WWFF])
                               .arg(m_lastBatchSize[StationSpot::WWBOTA])
                               .arg(m_lastBatchSize[StationSpot::BOTA])
                               .arg(dx)
                               .arg(m_lastBatchSize[StationSpot::GMA]));
}

void MainWindow::onRefreshAll()
{
    for (const auto &[source, fetcher] : webSources()) {
        if (m_filterBar->isSourceEnabled(source))
            fetcher->fetch();
    }
}

void MainWindow::onSourceFilterChanged()
{
    m_proxy->setSourceFilter(
        m_filterBar->isSourceEnabled(StationSpot::SOTA), m_filterBar->isSourceEnabled(StationSpot::POTA),
        m_filterBar->isSourceEnabled(StationSpot::WWFF), m_filterBar->isSourceEnabled(StationSpot::WWBOTA),
        m_filterBar->isSourceEnabled(StationSpot::BOTA), m_filterBar->isSourceEnabled(StationSpot::DX),
        m_filterBar->isSourceEnabled(StationSpot::GMA));
    for (const auto &[source, fetcher] : webSources()) {
        if (m_filterBar->isSourceEnabled(source))
            fetcher->startAutoRefresh(m_settings.refreshIntervalSecs);
        else
            fetcher->stopAutoRefresh();
    }
    if (m_filterBar->isSourceEnabled(StationSpot::DX)) {
        if (m_settings.callsign.isEmpty())
            statusBar()->showMessage(QStringLiteral("DX cluster: set your callsign in Preferences first"),
                                     8000);
        for (DxClusterFetcher *dx : std::as_const(m_dxFetchers))
            dx->connectToCluster();
    } else {
        for (DxClusterFetcher *dx : std::as_const(m_dxFetchers))
            dx->disconnectFromCluster();
        // A deliberate disconnect is not announced by the clients themselves.
        updateDxStatusLabel();
    }
    updateSpotCounts();
    saveJsonSettings();
}

void MainWindow::onModeFilterChanged()
{
    m_proxy->setModeFilter(m_filterBar->isModeEnabled(SpotFilterProxyModel::SsbMode),
                           m_filterBar->isModeEnabled(SpotFilterProxyModel::CwMode),
                           m_filterBar->isModeEnabled(SpotFilterProxyModel::AmMode),
                           m_filterBar->isModeEnabled(SpotFilterProxyModel::FmMode),
                           m_filterBar->isModeEnabled(SpotFilterProxyModel::OtherMode));
    updateSpotCounts();
    saveJsonSettings();
}

QSet<QString> MainWindow::bandFilterFromButtons() const
{
    QSet<QString> ticked;
    const QList<QPushButton *> &buttons = m_filterBar->bandButtons();
    for (QPushButton *button : buttons) {
        if (button->isChecked())
            ticked.insert(button->text());
    }
    // All bands ticked means no band test at all, so out-of-band spots still show.
    // None ticked must hide everything, but an empty set means "no test" to the
    // proxy: a name that no band has does the hiding.
    if (ticked.size() == buttons.size())
        ticked.clear();
    else if (ticked.isEmpty())
        ticked.insert(QString());
    return ticked;
}

void MainWindow::onBandFilterChanged()
{
    m_proxy->setBandFilter(bandFilterFromButtons());
    updateSpotCounts();
    saveJsonSettings();
}

void MainWindow::onStatusFilterChanged(int index)
{
    Q_UNUSED(index)
    m_proxy->setStatusFilter(m_filterBar->statusFilterValue());
    updateSpotCounts();
    saveJsonSettings();
}

void MainWindow::onTextFilterChanged(const QString &text)
{
    m_proxy->setTextFilter(text.trimmed());
    updateSpotCounts();
}

void MainWindow::onDxConnectionChanged(bool connected)
{
    updateDxStatusLabel();
    if (connected) {
        QString host;
        if (auto *dx = qobject_cast<DxClusterFetcher *>(sender()); dx && !dx->host().isEmpty())
            host = QStringLiteral(" — %1").arg(dx->host());
        statusBar()->showMessage(QStringLiteral("DX cluster connected%1").arg(host), 5000);
    } else {
        statusBar()->showMessage(QStringLiteral("DX cluster disconnected."), 4000);
    }
}

void MainWindow::createDxFetchers()
{
    for (DxClusterFetcher *dx : std::as_const(m_dxFetchers)) {
        dx->disconnectFromCluster();
        dx->disconnect(this);
        dx->deleteLater();
    }
    m_dxFetchers.clear();
    for (const DxClusterEntry &entry : std::as_const(m_settings.dxClusters)) {
        auto *dx = new DxClusterFetcher(this);
        dx->setHost(entry.host, entry.port);
        dx->setCallsign(m_settings.callsign);
        connect(dx, &DxClusterFetcher::spotsReady, this, &MainWindow::onSpotsReady);
        connect(dx, &DxClusterFetcher::fetchError, this, &MainWindow::onFetchError);
        connect(dx, &DxClusterFetcher::fetchStarted, this, &MainWindow::onFetchStarted);
        connect(dx, &DxClusterFetcher::connectionChanged, this, &MainWindow::onDxConnectionChanged);
        m_dxFetchers.append(dx);
    }
}

void MainWindow::updateDxStatusLabel()
{
    m_toolbarDxStatus->setText(anyDxConnected() ? QStringLiteral("DX: Connected")
                                                : QStringLiteral("DX: Disconnected"));
}

bool MainWindow::anyDxConnected() const
{
    for (const DxClusterFetcher *dx : m_dxFetchers) {
        if (dx->isConnected())
            return true;
    }
    return false;
}

StationSpot MainWindow::spotForKey(const QString &key) const
{
    for (const StationSpot &spot : m_model->spots()) {
        if (spot.key() == key)
            return spot;
    }
    return m_model->spotAt(-1);
}

void MainWindow::onSelectionChanged()
{
    const QModelIndexList selected = m_table->selectionModel()->selectedRows();
    if (selected.isEmpty()) {
        m_selectedKey.clear();
        m_model->setHighlightGroup(0);
        m_detailPanel->clear();
        return;
    }
    const StationSpot spot = m_model->spotAt(m_proxy->mapToSource(selected.first()).row());
    m_selectedKey = spot.key();
    m_model->setHighlightGroup(spot.groupId);

    QStringList partners;
    const QList<StationSpot> others =
        m_model->findMultiOpPartners(spot.reference, spot.frequencyKhz, spot.spotTime, spot.callsign);
    for (const StationSpot &other : others)
        partners.append(other.callsign);
    m_detailPanel->showSpot(spot, partners.join(QStringLiteral(", ")));

    if (!m_restoringSelection && spot.frequencyKhz > 0 && m_rig->isConnected())
        tuneStation(spot.frequencyKhz, spot.mode);
}
