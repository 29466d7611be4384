#include "app/mainwindow.h"

#include "api/wsserver.h"
#include "app/coordinatecache.h"
#include "app/dialogs/dxclustersdialog.h"
#include "app/dialogs/lwbridgedialog.h"
#include "app/dialogs/preferencesdialog.h"
#include "app/dialogs/programsdialog.h"
#include "app/dialogs/radiosetupdialog.h"
#include "app/dialogs/windowdialogs.h"
#include "app/logexport.h"
#include "app/spotingestor.h"
#include "app/tallisdir.h"
#include "app/updatechecker.h"
#include "app/widgets/alertcenter.h"
#include "app/widgets/detailpanel.h"
#include "app/widgets/filterbar.h"
#include "app/widgets/radiopanel.h"
#include "app/widgets/spottable.h"
#include "app/widgets/updatebar.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamlibcontroller.h"
#include "radio/lwclient.h"
#include "sources/botaspotfetcher.h"
#include "sources/dxclusterfetcher.h"
#include "sources/gmaspotfetcher.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/sourcehealth.h"
#include "sources/wwbotaspotfetcher.h"
#include "sources/wwffspotfetcher.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QFile>
#include <QHeaderView>
#include <QJsonObject>
#include <QLineEdit>
#include <QMenuBar>
#include <QNetworkAccessManager>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>
#include <QThread>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

MainWindow::MainWindow(QWidget *parent)
    : MainWindow(ServiceUrls::defaults(), parent)
{}

MainWindow::MainWindow(const ServiceUrls &services, QWidget *parent)
    : QMainWindow(parent)
    , m_model(new StationModel(this))
    , m_proxy(new SpotFilterProxyModel(this))
    , m_potaFetcher(new PotaSpotFetcher(this, services.pota))
    , m_sotaFetcher(new SotaSpotFetcher(this, services.sota))
    , m_wwffFetcher(new WwffSpotFetcher(this, services.wwff))
    , m_wwbotaFetcher(new WwbotaSpotFetcher(this, services.wwbota))
    , m_botaFetcher(new BotaSpotFetcher(this))
    , m_gmaFetcher(new GmaSpotFetcher(this, services.gma))
    , m_dxClusters(this)
    , m_rig(new HamlibController) // parentless: it moves to its own thread
    , m_updateChecker(new UpdateChecker(nullptr, this))
    , m_pollTimer(new QTimer(this))
    , m_reconnectTimer(new QTimer(this))
    , m_network(new QNetworkAccessManager(this))
    , m_rigLink(new HamlibLink(m_rig, this))
    , m_radio(new RadioRouter(m_rigLink, m_pollTimer, m_reconnectTimer, this))
    , m_coords(new CoordinateCache(m_network, this))
    , m_ingestor(new SpotIngestor(m_model, this))
    , m_sourceHealth(new SourceHealth(this))
    , m_alerts(new AlertCenter(&m_worked, this))
    , m_snapshotTimer(new QTimer(this))
{
    registerStationSpotMetaTypes();
    m_pollTimer->setObjectName(QStringLiteral("radioPollTimer"));
    m_reconnectTimer->setObjectName(QStringLiteral("rigReconnectTimer"));
    m_proxy->setSourceModel(m_model);
    ensureTallisDir();
    setupUi();
    setupStatusBar();
    applyStyleSheet();

    loadContactStatus();
    loadCoordCache();
    loadJsonSettings();
    m_worked.reload();
    applyHideWorked();
    connect(m_alerts, &AlertCenter::spotRequested, this, &MainWindow::selectSpot);
    loadSpotSnapshot();
    connect(m_table->horizontalHeader(), &QHeaderView::sortIndicatorChanged, this,
            &MainWindow::saveJsonSettings);

    wireSources();
    wireRig();

    // Sources the user switched off stay quiet until ticked again.
    m_ingestor->applySourceChoice(m_filter, m_settings.refreshIntervalSecs);
    createDxFetchers();
    if (m_filter.isSourceEnabled(StationSpot::DX))
        m_dxClusters.connectAll();

    connect(m_updateChecker, &UpdateChecker::updateAvailable, this, &MainWindow::onUpdateAvailable);
    m_updateChecker->checkForUpdates();
    QTimer::singleShot(0, this, &MainWindow::startupChecks);
    // Written at every start so the file always holds every key.
    saveJsonSettings();

    m_wsServer = new WsServer(this, this);
    m_radioView->setApiServer(m_wsServer);
    startApiServer();
    startBridge();
    // The operator's keys belong to the table from the start, not to the search field.
    m_table->setFocus(Qt::OtherFocusReason);
}

MainWindow::~MainWindow()
{
    m_pollTimer->stop();
    m_reconnectTimer->stop();
    m_rigThread->quit();
    m_rigThread->wait(3000);
    // Its shutdown reports a disconnection that nobody is left to show.
    m_rig->disconnect();
    delete m_rig;
    m_rig = nullptr;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    saveJsonSettings();
    saveSpotSnapshot();
    event->accept();
}

void MainWindow::loadSpotSnapshot()
{
    const QMap<StationSpot::Source, QList<StationSpot>> bySource =
        m_snapshot.read(QDateTime::currentMSecsSinceEpoch());
    QList<StationSpot> seen;
    for (const QList<StationSpot> &spots : bySource) {
        m_model->mergeSpots(spots);
        seen += spots;
    }
    applyPersistedStatuses();
    if (!seen.isEmpty())
        updateSpotCounts();
    m_alerts->seed(seen);
    // Kept fresh so that a crash loses at most two minutes of the table.
    m_snapshotTimer->setObjectName(QStringLiteral("spotSnapshotTimer"));
    connect(m_snapshotTimer, &QTimer::timeout, this, &MainWindow::saveSpotSnapshot);
    m_snapshotTimer->start(120000);
}

void MainWindow::saveSpotSnapshot() const
{
    m_snapshot.write(m_model->spots(), QDateTime::currentMSecsSinceEpoch());
}

void MainWindow::applyHideWorked()
{
    m_proxy->setHiddenTest(m_filter.hideWorked
                               ? SpotFilterProxyModel::HiddenTest([this](const StationSpot &spot) {
                                     return m_worked.isWorkedOnBand(spot);
                                 })
                               : SpotFilterProxyModel::HiddenTest());
}

void MainWindow::noteLogged(const StationSpot &spot)
{
    m_contactLog.append(spot, m_settings.callsign);
    m_worked.addContact(spot, m_contactLog.now());
    if (m_filter.hideWorked)
        applyHideWorked();
}

void MainWindow::selectSpot(const QString &key)
{
    // As a click would: the window comes forward and the row is selected.
    showNormal();
    raise();
    activateWindow();
    const int row = SelectionKeeper::proxyRowForKey(*m_proxy, *m_model, key);
    if (row >= 0)
        m_table->selectViewRow(row);
}

// ---- interface ------------------------------------------------------------

void MainWindow::setupUi()
{
    setWindowTitle(QStringLiteral("Tallis — built by the Brightwater hams"));
    setMinimumSize(960, 600);
    setupMenuBar();
    setupToolBar();
    setupCentralWidget();
}

void MainWindow::setupMenuBar()
{
    QMenu *file = menuBar()->addMenu(QStringLiteral("&File"));
    file->addAction(QStringLiteral("&Refresh All"), this, &MainWindow::onRefreshAll)
        ->setShortcut(QKeySequence::Refresh);
    file->addSeparator();
    file->addAction(QStringLiteral("Export &SOTA Log (CSV)"), this, &MainWindow::exportSotaLog);
    file->addAction(QStringLiteral("Export &POTA Log (ADIF)"), this, &MainWindow::exportPotaLog);
    file->addAction(QStringLiteral("&Clear Spots"), this, [this] {
        m_model->clearSpots();
        updateSpotCounts();
    });
    file->addAction(QStringLiteral("&Quit"), this, &QWidget::close);
    menuBar()
        ->addMenu(QStringLiteral("&Settings"))
        ->addAction(QStringLiteral("&Preferences..."), this, &MainWindow::onPreferences);
    QMenu *radio = menuBar()->addMenu(QStringLiteral("&Radio"));
    radio->addAction(QStringLiteral("Radio &Setup..."), this, &MainWindow::onRadioSetup);
    radio->addAction(QStringLiteral("&Disconnect Radio"), m_rigLink, &HamlibLink::disconnectRig);
    radio->addAction(QStringLiteral("DX &Cluster Setup..."), this, &MainWindow::onDxClusterSetup);
    radio->addAction(QStringLiteral("Lampwick &Bridge..."), this, &MainWindow::onLwBridgeSetup);
    menuBar()->addMenu(QStringLiteral("&Help"))->addAction(QStringLiteral("&About Tallis"), this, [this] {
        WindowDialogs::showAbout(this);
    });
}

void MainWindow::setupToolBar()
{
    QToolBar *bar = addToolBar(QStringLiteral("Main"));
    bar->setObjectName(QStringLiteral("mainToolbar"));
    bar->setMovable(false);
    bar->addAction(QStringLiteral("Refresh All"), this, &MainWindow::onRefreshAll);
    m_labels.addToToolBar(bar);
}

void MainWindow::setupCentralWidget()
{
    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    m_filterBar = new FilterBar(central);
    connect(m_filterBar, &FilterBar::sourcesChanged, this, &MainWindow::onSourceFilterChanged);
    connect(m_filterBar, &FilterBar::modesChanged, this, &MainWindow::onModeFilterChanged);
    connect(m_filterBar, &FilterBar::bandsChanged, this, &MainWindow::onBandFilterChanged);
    connect(m_filterBar, &FilterBar::statusChanged, this, &MainWindow::onStatusFilterChanged);
    connect(m_filterBar, &FilterBar::searchTextChanged, this, &MainWindow::onTextFilterChanged);
    connect(m_filterBar, &FilterBar::programsClicked, this, &MainWindow::onProgramsClicked);
    connect(m_filterBar, &FilterBar::hideWorkedChanged, this, [this] { applyFilter(true); });
    m_updateBar = new UpdateBar(central);

    m_splitter = new QSplitter(Qt::Horizontal, central);
    m_table = new SpotTable(m_proxy, m_splitter);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &MainWindow::onSelectionChanged);
    m_detailPanel = new DetailPanel(m_splitter);
    connect(m_detailPanel->tuneButton(), &QPushButton::clicked, this, &MainWindow::onTuneClicked);
    connect(m_detailPanel->heardButton(), &QPushButton::clicked, this, &MainWindow::onMarkHeard);
    connect(m_detailPanel->unheardButton(), &QPushButton::clicked, this, &MainWindow::onMarkUnheard);
    connect(m_detailPanel->addToLogButton(), &QPushButton::clicked, this, &MainWindow::onAddToLog);
    wireRadioPanel();
    m_radioView = new RadioView(m_radio, m_radioPanel, m_labels, statusBar(), this);
    m_splitter->setStretchFactor(0, 3);
    m_splitter->setStretchFactor(1, 1);

    layout->addWidget(m_filterBar);
    layout->addWidget(m_updateBar);
    layout->addWidget(m_splitter, 1);
    setCentralWidget(central);
}

void MainWindow::wireRadioPanel()
{
    // The panel's own controls always address the rig, also while the bridge has the radio.
    m_radioPanel = m_detailPanel->radioPanel();
    m_radioPanel->attachAutoAtuCheck(m_filterBar->autoAtuCheck());
    connect(m_radioPanel, &RadioPanel::volumeChanged, m_rigLink, &HamlibLink::setVolume);
    connect(m_radioPanel, &RadioPanel::rfPowerChanged, m_rigLink, &HamlibLink::setRfPower);
    connect(m_radioPanel, &RadioPanel::muteToggled, m_rigLink, &HamlibLink::setMute);
    connect(m_radioPanel, &RadioPanel::filterChosen, m_rigLink, &HamlibLink::setFilter);
    connect(m_radioPanel, &RadioPanel::breakInChosen, m_rigLink, &HamlibLink::setBreakIn);
    connect(m_radioPanel, &RadioPanel::keySpeedChanged, m_rigLink, &HamlibLink::setKeySpeed);
    connect(m_radioPanel, &RadioPanel::tuneAtuClicked, this, [this] {
        m_rigLink->startTune();
        statusBar()->showMessage(QStringLiteral("ATU tuning cycle started."), 4000);
    });
    connect(m_radioPanel, &RadioPanel::autoAtuToggled, this, [this](bool on) {
        m_settings.autoAtu = on;
        saveJsonSettings(); // skipped while the settings are being loaded
    });
}

void MainWindow::setupStatusBar()
{
    m_labels.addToStatusBar(statusBar());
}

void MainWindow::applyStyleSheet()
{
    QFile file(QStringLiteral(":/style.qss"));
    if (file.open(QIODevice::ReadOnly))
        qApp->setStyleSheet(QString::fromUtf8(file.readAll()));
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    // In the search field the letters are text.
    if (m_filterBar->searchEdit()->hasFocus())
        return QMainWindow::keyPressEvent(event);
    const auto clickIfEnabled = [](QPushButton *button) {
        if (button->isEnabled())
            button->click();
    };
    switch (event->key()) {
    case Qt::Key_H:
        return clickIfEnabled(m_detailPanel->heardButton());
    case Qt::Key_U:
    case Qt::Key_Q:
        return clickIfEnabled(m_detailPanel->unheardButton());
    case Qt::Key_L:
        return clickIfEnabled(m_detailPanel->addToLogButton());
    case Qt::Key_T:
        return clickIfEnabled(m_detailPanel->tuneButton());
    case Qt::Key_J:
    case Qt::Key_K:
        if (m_table->stepSelection(event->key() == Qt::Key_J ? 1 : -1))
            return;
        break;
    default:
        break;
    }
    QMainWindow::keyPressEvent(event);
}

// ---- spots ----------------------------------------------------------------

void MainWindow::wireSources()
{
    const QList<std::pair<StationSpot::Source, SpotFetcher *>> sources{
        {StationSpot::POTA, m_potaFetcher}, {StationSpot::SOTA, m_sotaFetcher},
        {StationSpot::WWFF, m_wwffFetcher}, {StationSpot::WWBOTA, m_wwbotaFetcher},
        {StationSpot::BOTA, m_botaFetcher}, {StationSpot::GMA, m_gmaFetcher}};
    for (const auto &[source, fetcher] : sources) {
        connect(fetcher, &SpotFetcher::spotsReady, this, &MainWindow::onSpotsReady);
        connect(fetcher, &SpotFetcher::fetchError, this, &MainWindow::onFetchError);
        connect(fetcher, &SpotFetcher::fetchStarted, this, &MainWindow::onFetchStarted);
        connect(fetcher, &SpotFetcher::notice, this,
                [this](const QString &text) { statusBar()->showMessage(text, 8000); });
        if (source != StationSpot::BOTA)
            m_sourceHealth->watch(fetcher, StationSpot::sourceName(source));
    }
    // Refresh order: SOTA first.
    for (const auto &[source, fetcher] :
         {sources[1], sources[0], sources[2], sources[3], sources[4], sources[5]})
        m_ingestor->addWebSource(source, fetcher);

    const auto showHealth = [this] {
        m_labels.showSources(m_sourceHealth->labelText(), m_sourceHealth->toolTip());
    };
    connect(m_sourceHealth, &SourceHealth::changed, this, showHealth);
    showHealth();
    connect(m_ingestor, &SpotIngestor::aboutToMerge, this,
            [this] { m_selection.rememberRow(m_table->selectedRow()); });
    connect(m_ingestor, &SpotIngestor::merged, this, &MainWindow::afterMerge);
    connect(m_ingestor, &SpotIngestor::allAnswered, this,
            [this](const QDateTime &at) { m_labels.showRefreshed(at); });
}

void MainWindow::onSpotsReady(const QList<StationSpot> &spots)
{
    m_alerts->processBatch(spots);
    m_ingestor->receive(spots);
}

void MainWindow::afterMerge(const QList<StationSpot> &batch)
{
    applyPersistedStatuses();
    queueCoordLookups(batch);
    updateSpotCounts();
    m_wsServer->pushSpotsUpdated();
    const int row = m_selection.rowToRestore(*m_proxy, *m_model);
    if (row < 0)
        return;
    const SelectionKeeper::Restoring restoring(m_selection);
    m_table->selectViewRow(row);
}

void MainWindow::onFetchStarted()
{
    m_ingestor->noteFetchStarted();
    if (auto *dx = qobject_cast<DxClusterFetcher *>(sender()))
        statusBar()->showMessage(QStringLiteral("Connecting to DX cluster %1…").arg(dx->host()), 10000);
    else
        statusBar()->showMessage(QStringLiteral("Consulting the celestial registry…"), 3000);
}

void MainWindow::onFetchError(const QString &error)
{
    m_ingestor->noteFetchError();
    statusBar()->showMessage(QStringLiteral("The oracles have failed us: %1").arg(error), 8000);
}

void MainWindow::updateSpotCounts()
{
    m_labels.showSpotCounts(m_ingestor->countsText(m_proxy->rowCount()));
}

void MainWindow::onRefreshAll()
{
    m_ingestor->refreshAll(m_filter);
}

void MainWindow::applyFilter(bool save)
{
    const bool hideWorked = m_filter.hideWorked;
    m_filterBar->updateState(m_filter);
    m_filter.applyTo(*m_proxy);
    if (m_filter.hideWorked != hideWorked)
        applyHideWorked();
    updateSpotCounts();
    if (save)
        saveJsonSettings();
    if (m_wsServer)
        m_wsServer->pushFilterChanged();
}

void MainWindow::onSourceFilterChanged()
{
    m_filterBar->updateState(m_filter);
    m_ingestor->applySourceChoice(m_filter, m_settings.refreshIntervalSecs);
    if (m_filter.isSourceEnabled(StationSpot::DX)) {
        if (m_settings.callsign.isEmpty())
            statusBar()->showMessage(QStringLiteral("DX cluster: set your callsign in Preferences first"),
                                     8000);
        m_dxClusters.connectAll();
    } else {
        m_dxClusters.disconnectAll();
        // A deliberate disconnect is not announced by the clients themselves.
        m_labels.showDxConnected(anyDxConnected());
    }
    applyFilter(true);
}

void MainWindow::createDxFetchers()
{
    m_dxClusters.rebuild(m_settings.dxClusters, m_settings.callsign, [this](DxClusterFetcher *dx) {
        connect(dx, &DxClusterFetcher::spotsReady, this, &MainWindow::onSpotsReady);
        connect(dx, &DxClusterFetcher::fetchError, this, &MainWindow::onFetchError);
        connect(dx, &DxClusterFetcher::fetchStarted, this, &MainWindow::onFetchStarted);
        connect(dx, &DxClusterFetcher::connectionChanged, this, &MainWindow::onDxConnectionChanged);
    });
}

void MainWindow::onDxConnectionChanged(bool connected)
{
    m_labels.showDxConnected(anyDxConnected());
    if (!connected)
        return statusBar()->showMessage(QStringLiteral("DX cluster disconnected."), 4000);
    QString host;
    if (auto *dx = qobject_cast<DxClusterFetcher *>(sender()); dx && !dx->host().isEmpty())
        host = QStringLiteral(" — %1").arg(dx->host());
    statusBar()->showMessage(QStringLiteral("DX cluster connected%1").arg(host), 5000);
}

StationSpot MainWindow::spotForKey(const QString &key) const
{
    return m_model->spotAt(SelectionKeeper::modelRowForKey(*m_model, key));
}

void MainWindow::onSelectionChanged()
{
    const int row = m_table->selectedRow();
    if (row < 0) {
        m_selection.setSelectedKey(QString());
        m_model->setHighlightGroup(0);
        return m_detailPanel->clear();
    }
    const StationSpot spot = m_model->spotAt(m_proxy->mapToSource(m_proxy->index(row, 0)).row());
    m_selection.setSelectedKey(spot.key());
    m_model->setHighlightGroup(spot.groupId);
    QStringList partners;
    for (const StationSpot &other :
         m_model->findMultiOpPartners(spot.reference, spot.frequencyKhz, spot.spotTime, spot.callsign))
        partners.append(other.callsign);
    m_detailPanel->showSpot(spot, partners.join(QStringLiteral(", ")));
    m_detailPanel->showWorked(m_worked.detailText(spot));

    if (m_selection.isRestoring() || spot.frequencyKhz <= 0 ||
        !(isLwBridgeActive() || m_rigLink->isConnected()))
        return;
    tuneStation(spot.frequencyKhz, spot.mode);
    if (m_settings.autoAtu && m_radioPanel->canTune()) {
        m_radio->startTune();
        statusBar()->showMessage(
            QStringLiteral("Tuned to %1 kHz — ATU cycle triggered.").arg(spot.frequencyKhz, 0, 'f', 0), 4000);
    }
}

// ---- marks, the log, positions --------------------------------------------

void MainWindow::markSelected(StationSpot::Status status)
{
    const QString key = m_selection.selectedKey();
    if (m_statusStore.markSelection(*m_model, key, status, ContactStatusStore::Spread::SimilarAndGroup)
            .isEmpty())
        return;
    saveJsonSettings();
    m_wsServer->pushSpotStatusChanged(key, status);
    onSelectionChanged();
}

void MainWindow::onAddToLog()
{
    const QString key = m_selection.selectedKey();
    const StationSpot spot = spotForKey(key);
    if (m_statusStore
            .markSelection(*m_model, key, StationSpot::Contacted, ContactStatusStore::Spread::SimilarOnly)
            .isEmpty())
        return;
    noteLogged(spot);
    saveJsonSettings();
    m_wsServer->pushSpotStatusChanged(key, StationSpot::Contacted);
    statusBar()->showMessage(m_contactLog.loggedMessage(spot), 6000);
    onSelectionChanged();
}

void MainWindow::exportLog(const ExportFormat &format)
{
    const QList<ContactRow> rows =
        LogExport::collectRows(m_model->spots(), format.source, m_statusStore, m_statusStore.now());
    const QString notice = WindowDialogs::exportLog(
        this, format, rows, LogExport::exportText(format, rows, m_settings.callsign, m_settings.sotaRef));
    if (!notice.isEmpty())
        statusBar()->showMessage(notice, 6000);
}

void MainWindow::loadCoordCache()
{
    connect(m_coords, &CoordinateCache::referenceLocated, m_model, &StationModel::setReferenceLocation);
    m_coords->load();
}

void MainWindow::queueCoordLookups(const QList<StationSpot> &batch)
{
    m_coords->queueLookups(batch);
}

// ---- radio ----------------------------------------------------------------

void MainWindow::wireRig()
{
    connect(m_rig, &HamlibController::connectionChanged, this, &MainWindow::onRadioConnectionChanged);
    connect(m_rig, &HamlibController::capabilitiesChanged, this, &MainWindow::onCapabilitiesChanged);
    connect(m_rig, &HamlibController::radioStateRead, this, &MainWindow::onRadioStateRead);
    connect(m_rig, &HamlibController::error, this,
            [this](const QString &message) { statusBar()->showMessage(message, 5000); });

    m_rigThread = new QThread(this);
    m_rigThread->setObjectName(QStringLiteral("rigThread"));
    m_rig->moveToThread(m_rigThread);
    m_rigThread->start(QThread::InheritPriority);

    m_pollTimer->setInterval(500);
    connect(m_pollTimer, &QTimer::timeout, m_rig, &HamlibController::requestPoll);
    connect(m_rig, &HamlibController::pollResult, this, &MainWindow::onRadioPollResult);
    m_reconnectTimer->setInterval(15000);
    connect(m_reconnectTimer, &QTimer::timeout, m_radio, &RadioRouter::onReconnectTick);
}

void MainWindow::startApiServer()
{
    if (!m_settings.wsEnabled)
        return;
    if (m_wsServer->listen(m_settings.wsPort, m_settings.wsHost))
        statusBar()->showMessage(
            QStringLiteral("WebSocket API listening on %1:%2").arg(m_settings.wsHost).arg(m_settings.wsPort),
            4000);
    else
        statusBar()->showMessage(
            QStringLiteral("WebSocket API: failed to listen on port %1").arg(m_settings.wsPort), 8000);
}

void MainWindow::startBridge()
{
    m_lwClient = new LwClient(this);
    m_radioView->setBridge(m_lwClient);
    m_lwClient->setTarget(m_settings.lwHost, m_settings.lwPort);
    m_radio->setBridge(m_lwClient, [client = m_lwClient] { return client->isLinked(); });
    m_radio->setBridgeEnabled(m_settings.lwEnabled);
    connect(m_lwClient, &LwClient::connectedToLw, this, &MainWindow::onLwConnected);
    connect(m_lwClient, &LwClient::disconnectedFromLw, this, &MainWindow::onLwDisconnected);
    connect(m_lwClient, &LwClient::radioFrequency, this, &MainWindow::onLwRadioFrequency);
    connect(m_lwClient, &LwClient::radioConnectedChanged, this, &MainWindow::onLwRadioConnectedChanged);
    if (m_settings.lwEnabled)
        m_lwClient->setEnabled(true);
}

void MainWindow::onTuneClicked()
{
    if (!m_selection.hasSelection())
        return;
    if (!isLwBridgeActive() && !m_rigLink->isConnected()) {
        if (WindowDialogs::askToConfigureRadio(this))
            onRadioSetup();
        return;
    }
    const StationSpot spot = spotForKey(m_selection.selectedKey());
    if (spot.frequencyKhz > 0)
        tuneStation(spot.frequencyKhz, spot.mode);
}

// ---- dialogs --------------------------------------------------------------

void MainWindow::onPreferences()
{
    PreferencesDialog dialog(Preferences::fromSettings(m_settings), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const AppSettings before = m_settings;
    dialog.preferences().applyTo(m_settings);
    const AppSettings &s = m_settings;
    m_filter.maxAgeMins = s.maxAgeMins;
    m_filter.applyTo(*m_proxy);
    applyPreferences();
    m_ingestor->applySourceChoice(m_filter, s.refreshIntervalSecs);
    for (DxClusterFetcher *dx : m_dxClusters.clients())
        dx->setCallsign(s.callsign);
    if (s.wsEnabled != before.wsEnabled || s.wsPort != before.wsPort || s.wsHost != before.wsHost) {
        m_wsServer->stopListening();
        startApiServer();
    }
    updateSpotCounts();
    saveJsonSettings();
    m_wsServer->pushConfigChanged();
}

void MainWindow::onRadioSetup()
{
    RadioSetupDialog dialog(m_settings.rig, m_rigLink->availableRigsAndWait(),
                            RadioSetupDialog::detectSerialPorts(), RigSetupCalls::through(*m_rigLink), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_settings.rig = dialog.rigConfig();
    m_radio->setRigConfig(m_settings.rig);
    saveJsonSettings();
}

void MainWindow::onDxClusterSetup()
{
    DxClustersDialog dialog(m_settings.dxClusters, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_settings.dxClusters = dialog.clusters();
    createDxFetchers();
    if (m_filter.isSourceEnabled(StationSpot::DX))
        m_dxClusters.connectAll();
    m_labels.showDxConnected(anyDxConnected());
    saveJsonSettings();
}

void MainWindow::onLwBridgeSetup()
{
    LwBridgeDialog dialog(LwBridgeSettings::fromSettings(m_settings), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const LwBridgeSettings chosen = dialog.settings();
    const bool retarget = m_settings.lwHost != chosen.host || m_settings.lwPort != chosen.port;
    chosen.applyTo(m_settings);
    m_lwClient->setTarget(chosen.host, chosen.port);
    m_radio->setBridgeEnabled(chosen.enabled);
    // A new target while linked takes effect at once, not at the next drop.
    if (retarget)
        m_lwClient->setEnabled(false);
    m_lwClient->setEnabled(chosen.enabled);
    saveJsonSettings();
}

void MainWindow::onProgramsClicked()
{
    ProgramsDialog dialog({m_model->potaPrograms(), m_model->sotaAssociations()},
                          {m_filter.potaPrograms, m_filter.sotaAssociations}, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_filter.potaPrograms = dialog.selection().potaPrograms;
    m_filter.sotaAssociations = dialog.selection().sotaAssociations;
    m_filterBar->setProgramFilterActive(m_filter.hasProgramFilter());
    applyFilter(true);
}

void MainWindow::onUpdateAvailable(const QString &buildTime)
{
    Q_UNUSED(buildTime)
    m_updateBar->show();
}

// ---- settings -------------------------------------------------------------

void MainWindow::loadJsonSettings()
{
    // Widgets fire change signals while the file is applied; saving then
    // would write a half-loaded state over the real one.
    m_loadingSettings = true;
    m_settings = SettingsFile(settingsFilePath()).load();
    m_filter = m_settings.filterState();
    m_radio->setRigConfig(m_settings.rig);
    applyPreferences();
    if (m_settings.fileExisted)
        applySettingsToWidgets();
    else
        resize(1200, 680);
    m_loadingSettings = false;
}

void MainWindow::applyPreferences()
{
    const AppSettings &s = m_settings;
    m_labels.showCallsign(s.callsign);
    m_model->setWatchCallsigns(s.watchCallsigns);
    m_model->setWatchReferences(s.watchReferences);
    m_alerts->applySettings(s);
    if (s.hasUserLocation)
        m_model->setUserLocation(s.latitude, s.longitude);
    else
        m_model->clearUserLocation();
    m_table->showDistanceColumns(s.hasUserLocation);
    m_coords->setLookupsEnabled(s.hasUserLocation);
}

void MainWindow::applySettingsToWidgets()
{
    const AppSettings &s = m_settings;
    m_filterBar->setState(m_filter);
    m_filter.applyTo(*m_proxy);
    updateSpotCounts();
    m_table->sortByColumn(s.sortColumn, s.sortOrder);
    if (s.windowGeometry.isEmpty() || !restoreGeometry(s.windowGeometry))
        resize(1200, 680);
    if (!s.windowState.isEmpty())
        restoreState(s.windowState, 0);
    if (!s.splitterState.isEmpty())
        m_splitter->restoreState(s.splitterState);
    m_filterBar->autoAtuCheck()->setChecked(s.autoAtu);
}

void MainWindow::saveJsonSettings()
{
    if (m_loadingSettings)
        return;
    m_settings.setFilterState(m_filter);
    if (m_table->horizontalHeader()->sortIndicatorSection() >= 0)
        m_settings.sortColumn = m_table->horizontalHeader()->sortIndicatorSection();
    m_settings.sortOrder = m_table->horizontalHeader()->sortIndicatorOrder();
    m_settings.autoAtu = m_filterBar->autoAtuCheck()->isChecked();
    m_settings.windowGeometry = saveGeometry();
    m_settings.windowState = saveState(0);
    m_settings.splitterState = m_splitter->saveState();
    SettingsFile(settingsFilePath()).save(m_settings);
}

// ---- API ------------------------------------------------------------------

void MainWindow::apiConfigSet(const QJsonObject &config)
{
    // The command has clamped the values already.
    if (config.contains(QStringLiteral("maxAgeMins"))) {
        m_filter.maxAgeMins = config.value(QStringLiteral("maxAgeMins")).toInt();
        m_filter.applyTo(*m_proxy);
        updateSpotCounts();
    }
    if (config.contains(QStringLiteral("refreshIntervalSecs"))) {
        m_settings.refreshIntervalSecs = config.value(QStringLiteral("refreshIntervalSecs")).toInt();
        m_ingestor->applySourceChoice(m_filter, m_settings.refreshIntervalSecs);
    }
    saveJsonSettings();
    m_wsServer->pushConfigChanged();
}

void MainWindow::apiFilterSet(const QJsonObject &filter)
{
    m_filter.mergeApiJson(filter);
    m_filterBar->setState(m_filter);
    applyHideWorked();
    onSourceFilterChanged(); // every filter, the sources' refresh and the DX link; saves; pushes
}

bool MainWindow::apiTuneToSpot(const QString &key)
{
    const StationSpot spot = spotForKey(key);
    if (spot.frequencyKhz <= 0 || !(isLwBridgeActive() || m_rigLink->isConnected()))
        return false;
    tuneStation(spot.frequencyKhz, spot.mode);
    return true;
}

void MainWindow::apiSetSpotStatus(const QString &key, StationSpot::Status status)
{
    m_statusStore.markKey(*m_model, key, status);
    saveJsonSettings();
    m_wsServer->pushSpotStatusChanged(key, status);
}

bool MainWindow::apiLogSpot(const QString &key)
{
    // Only the line: no mark, no status recorded.
    if (SelectionKeeper::modelRowForKey(*m_model, key) < 0)
        return false;
    noteLogged(spotForKey(key));
    return true;
}

void MainWindow::apiRadioConnect()
{
    if (!m_rigLink->isConnected())
        m_rigLink->connectRig(m_settings.rig);
}
