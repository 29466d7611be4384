#include "app/mainwindow.h"

#include "api/spotdeltatracker.h"
#include "api/wsserver.h"
#include "app/coordinatecache.h"
#include "app/dialogs/dxclustersdialog.h"
#include "app/dialogs/lwbridgedialog.h"
#include "app/dialogs/preferencesdialog.h"
#include "app/dialogs/programsdialog.h"
#include "app/dialogs/radiosetupdialog.h"
#include "app/dialogs/windowdialogs.h"
#include "app/logbook/logbookforwarder.h"
#include "app/logexport.h"
#include "app/operatorkeys.h"
#include "app/radiostation.h"
#include "app/serviceurls.h"
#include "app/spotingestor.h"
#include "app/spotsources.h"
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
#include "radio/radiorouter.h"

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

MainWindow::MainWindow(QWidget *parent)
    : MainWindow(ServiceUrls::defaults(), parent)
{}

MainWindow::MainWindow(const ServiceUrls &services, QWidget *parent)
    : QMainWindow(parent)
    , m_model(new StationModel(this))
    , m_proxy(new SpotFilterProxyModel(this))
    , m_sources(new SpotSources(services, m_model, this))
    , m_radio(new RadioStation(this))
    , m_updateChecker(new UpdateChecker(nullptr, this))
    , m_network(new QNetworkAccessManager(this))
    , m_coords(new CoordinateCache(m_network, this))
    , m_desk(*m_model, *m_proxy)
    , m_alerts(new AlertCenter(&m_desk.worked(), this))
    , m_logbook(new LogbookForwarder(LogbookOutbox::defaultFilePath(), this))
    , m_spotPoster(new SpotPoster(services, m_sources->dxClusters(), this))
{
    registerStationSpotMetaTypes();
    m_proxy->setSourceModel(m_model);
    m_coords->setServiceUrls(services.parkPositions, services.summitPositions);
    ensureTallisDir();
    setupUi();
    setupStatusBar();
    applyStyleSheet();

    wireLogbook(services.qrzLogbook);
    loadContactStatus();
    loadCoordCache();
    loadJsonSettings();
    m_desk.reloadWorked();
    applyHideWorked();
    wireWorkedImport();
    connect(m_alerts, &AlertCenter::spotRequested, this, &MainWindow::selectSpot);
    loadSpotSnapshot();
    connect(m_ui.table->horizontalHeader(), &QHeaderView::sortIndicatorChanged, this,
            &MainWindow::saveJsonSettings);

    wireSources();
    m_radio->startWorker();
    wireSpotting();

    // Sources the user switched off stay quiet until ticked again.
    m_sources->ingestor()->applySourceChoice(m_settings.filter, m_settings.refreshIntervalSecs);
    createDxFetchers();
    m_sources->startRbn(m_settings, [this] { return m_settings.filter.maxAgeMins; });

    connect(m_updateChecker, &UpdateChecker::updateAvailable, this, &MainWindow::onUpdateAvailable);
    m_updateChecker->checkForUpdates();
    QTimer::singleShot(0, this, &MainWindow::startupChecks);
    // Written at every start so the file always holds every key.
    saveJsonSettings();

    m_wsServer = new WsServer(this, this);
    m_wsServer->setSpotTracker(new SpotDeltaTracker(m_model, m_proxy, m_wsServer));
    wireRadioEvents();
    startApiServer();
    m_radio->startBridge(m_settings.lwHost, m_settings.lwPort, m_settings.lwEnabled);
    // The operator's keys belong to the table from the start, not to the search field.
    m_ui.table->setFocus(Qt::OtherFocusReason);
}

MainWindow::~MainWindow()
{
    // The children outlive this body: what they signal while they are torn down
    // (a dock hidden, a view emptied) must not reach a window that is no longer one.
    for (QObject *child : findChildren<QObject *>())
        child->disconnect(this);
    m_radio->shutdown();
}

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
    m_ui.buildMenuBar(*this);
    connect(m_ui.refreshAll, &QAction::triggered, this, &MainWindow::onRefreshAll);
    connect(m_ui.exportSotaLog, &QAction::triggered, this, &MainWindow::exportSotaLog);
    connect(m_ui.exportPotaLog, &QAction::triggered, this, &MainWindow::exportPotaLog);
    connect(m_ui.exportAllContacts, &QAction::triggered, this, &MainWindow::exportAllContacts);
    connect(m_ui.importWorkedLogbook, &QAction::triggered, this, &MainWindow::importWorkedLogbook);
    connect(m_ui.clearSpots, &QAction::triggered, this, [this] {
        m_model->clearSpots(); // the selection goes with the rows
        updateSpotCounts();
    });
    connect(m_ui.quit, &QAction::triggered, this, &QWidget::close);
    connect(m_ui.preferences, &QAction::triggered, this, &MainWindow::onPreferences);
    connect(m_ui.radioSetup, &QAction::triggered, this, &MainWindow::onRadioSetup);
    RadioRouter *radio = m_radio->router();
    connect(m_ui.disconnectRadio, &QAction::triggered, radio, &RadioRouter::disconnectRig);
    connect(m_ui.connectRadio, &QAction::triggered, radio, &RadioRouter::connectRig);
    // Connect is offered while the rig is disconnected.
    connect(radio, &RadioRouter::rigConnected, m_ui.connectRadio,
            [this] { m_ui.connectRadio->setEnabled(false); });
    connect(radio, &RadioRouter::rigDisconnected, m_ui.connectRadio,
            [this] { m_ui.connectRadio->setEnabled(true); });
    connect(m_ui.dxClusterSetup, &QAction::triggered, this, &MainWindow::onDxClusterSetup);
    connect(m_ui.lwBridgeSetup, &QAction::triggered, this, &MainWindow::onLwBridgeSetup);
    connect(m_ui.about, &QAction::triggered, this, [this] { WindowDialogs::showAbout(this); });
}

void MainWindow::setupCentralWidget()
{
    m_ui.buildCentralWidget(*this, m_proxy);
    const FilterBar *bar = m_ui.filterBar;
    connect(bar, &FilterBar::sourcesChanged, this, &MainWindow::onSourceFilterChanged);
    connect(bar, &FilterBar::modesChanged, this, &MainWindow::onModeFilterChanged);
    connect(bar, &FilterBar::bandsChanged, this, &MainWindow::onBandFilterChanged);
    connect(bar, &FilterBar::statusChanged, this, &MainWindow::onStatusFilterChanged);
    // The search text is never saved.
    connect(bar, &FilterBar::searchTextChanged, this, &MainWindow::onTextFilterChanged);
    connect(bar, &FilterBar::programsClicked, this, &MainWindow::onProgramsClicked);
    connect(bar, &FilterBar::hideWorkedChanged, this, [this] { applyFilter(true); });
    // A selection lost to a filter is reported while the proxy is mid-change, and the handler
    // touches the model: it waits for the change to finish.
    connect(m_ui.table, &SpotTable::spotSelectionChanged, this,
            [this](bool byOperator, bool duringModelChange) {
                if (!duringModelChange)
                    return onSelectionChanged(byOperator);
                QMetaObject::invokeMethod(
                    this, [this] { onSelectionChanged(false); }, Qt::QueuedConnection);
            });
    // A reset clears the selection without a word; a lost spot must still clear the panel.
    connect(
        m_proxy, &QAbstractItemModel::modelReset, this, [this] { onSelectionChanged(false); },
        Qt::QueuedConnection);
    connect(m_ui.table, &SpotTable::searchRequested, this, &MainWindow::focusSearch);
    new QShortcut(QKeySequence::Find, this, this, &MainWindow::focusSearch);
    setTabOrder(m_ui.table, m_ui.filterBar->searchEdit());
    auto *backToTable = new QShortcut(Qt::Key_Escape, m_ui.filterBar->searchEdit());
    backToTable->setContext(Qt::WidgetShortcut);
    connect(backToTable, &QShortcut::activated, m_ui.table,
            [this] { m_ui.table->setFocus(Qt::ShortcutFocusReason); });
    const DetailPanel *panel = m_ui.detailPanel;
    connect(panel->tuneButton(), &QPushButton::clicked, this, &MainWindow::onTuneClicked);
    connect(panel->heardButton(), &QPushButton::clicked, this, &MainWindow::onMarkHeard);
    connect(panel->unheardButton(), &QPushButton::clicked, this, &MainWindow::onMarkUnheard);
    connect(panel->addToLogButton(), &QPushButton::clicked, this, &MainWindow::onAddToLog);
    connect(panel, &DetailPanel::preferencesRequested, this, &MainWindow::onPreferences);
    connect(panel, &DetailPanel::radioSetupRequested, this, &MainWindow::onRadioSetup);
    wireRadioPanel();
    new RadioView(*m_radio, m_ui.detailPanel->radioPanel(), m_labels, statusBar(), this);
    setupMapDocks();
}

void MainWindow::setupStatusBar()
{
    m_labels.addToStatusBar(statusBar());
    // Whatever changes what the table shows (marks under a status filter, the minute's
    // re-filter, Hide worked) recounts, once per turn of the event loop.
    auto *countsTimer = new QTimer(this);
    countsTimer->setSingleShot(true);
    countsTimer->setInterval(0);
    connect(countsTimer, &QTimer::timeout, this, &MainWindow::updateSpotCounts);
    const auto recount = [countsTimer] { countsTimer->start(); };
    connect(m_proxy, &QAbstractItemModel::rowsInserted, countsTimer, recount);
    connect(m_proxy, &QAbstractItemModel::rowsRemoved, countsTimer, recount);
    connect(m_proxy, &QAbstractItemModel::modelReset, countsTimer, recount);
    connect(m_proxy, &QAbstractItemModel::layoutChanged, countsTimer, recount);
    m_sourcesView = new SourcesView(m_sources->health(), m_sources->ingestor(), m_sources->dxClusters(),
                                    m_labels, statusBar(), this);
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    // In the search field the letters are text.
    const std::optional<OperatorKey> key = operatorKeyFor(event->key(), event->modifiers());
    if (!key || m_ui.filterBar->searchEdit()->hasFocus())
        return QMainWindow::keyPressEvent(event);
    if (!key->needsSelection || m_selection.hasSelection())
        runOperatorAction(key->action);
}

void MainWindow::runOperatorAction(OperatorAction action)
{
    switch (action) {
    case OperatorAction::Tune:
        return onTuneClicked();
    case OperatorAction::MarkHeard:
        return onMarkHeard();
    case OperatorAction::MarkNotHeard:
        return onMarkUnheard();
    case OperatorAction::Log:
        return onAddToLog();
    case OperatorAction::Spot:
        return onSpotStation(true);
    case OperatorAction::LogWithDialog:
        return logSelected(true);
    case OperatorAction::NextSpot:
    case OperatorAction::PreviousSpot:
        const int row = m_selection.stepTarget(action == OperatorAction::NextSpot ? 1 : -1,
                                               m_proxy->rowCount(), m_ui.table->selectedRow());
        if (row >= 0)
            m_ui.table->selectViewRow(row, true);
        return;
    }
}

void MainWindow::applyFilter(bool save)
{
    const bool hideWorked = m_settings.filter.hideWorked;
    m_ui.filterBar->updateState(m_settings.filter);
    m_settings.filter.applyTo(*m_proxy);
    if (m_settings.filter.hideWorked != hideWorked)
        applyHideWorked();
    updateSpotCounts();
    if (save)
        saveJsonSettings();
    if (m_wsServer)
        m_wsServer->pushFilterChanged();
}

void MainWindow::onSourceFilterChanged()
{
    m_ui.filterBar->updateState(m_settings.filter);
    m_sources->ingestor()->applySourceChoice(m_settings.filter, m_settings.refreshIntervalSecs);
    const bool dxOn = m_settings.filter.isSourceEnabled(StationSpot::DX);
    m_sources->setDxEnabled(dxOn);
    m_sourcesView->dxChosen(dxOn, !m_settings.callsign.isEmpty());
    m_sources->applyRbnChoice(m_settings);
    applyFilter(true);
}

void MainWindow::onSelectionChanged(bool byOperator)
{
    // Runs queued, never inside a model change: it reads the selection afresh.
    const int row = m_ui.table->selectedRow();
    if (row < 0) {
        m_selection.lose();
        m_mapDocks->setSelectedKey(QString());
        m_model->setHighlightGroup(0);
        return m_ui.detailPanel->clear();
    }
    const StationSpot spot = m_model->spotAt(m_proxy->mapToSource(m_proxy->index(row, 0)).row());
    m_selection.setSelectedKey(spot.key());
    m_selection.rememberRow(row);
    m_mapDocks->setSelectedKey(spot.key());
    m_model->setHighlightGroup(spot.groupId);
    m_ui.detailPanel->showSpot(spot, m_model->multiOpPartnerCalls(spot).join(QStringLiteral(", ")));
    m_ui.detailPanel->showWorked(m_desk.worked().detailText(spot));
    // Only the operator's own choice moves the radio.
    tuneStation(spot.frequencyKhz, spot.mode, byOperator ? TuneOrigin::Operator : TuneOrigin::Program,
                m_settings.autoAtu);
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

void MainWindow::loadJsonSettings()
{
    // Widgets fire change signals while the file is applied; saving then
    // would write a half-loaded state over the real one.
    m_loadingSettings = true;
    m_settings = SettingsFile(settingsFilePath()).load();
    m_radio->router()->setRigConfig(m_settings.rig);
    applyPreferences();
    if (m_settings.fileExisted)
        applySettingsToWidgets();
    else
        WindowLayout::applyDefaultSize(*this);
    m_loadingSettings = false;
}

void MainWindow::applyPreferences()
{
    const AppSettings &s = m_settings;
    m_labels.showCallsign(s.callsign);
    m_ui.detailPanel->showWelcome(s.callsign.isEmpty());
    m_spotPoster->setOwnCallsign(s.callsign);
    m_model->setWatchCallsigns(s.watchCallsigns);
    m_model->setWatchReferences(s.watchReferences);
    m_alerts->applySettings(s);
    if (s.hasUserLocation)
        m_model->setUserLocation(s.latitude, s.longitude);
    else
        m_model->clearUserLocation();
    m_ui.table->showDistanceColumns(s.hasUserLocation);
    m_mapDocks->applySettings(s);
    updateCoordLookups();
    m_logbook->configure(s.logTargets, AdifStation{s.callsign, s.hasUserLocation, s.latitude, s.longitude});
}

bool MainWindow::anyDxConnected() const
{
    return m_sources->anyDxConnected();
}

bool MainWindow::isLwBridgeActive() const
{
    return m_radio->router()->isBridgeActive();
}

void MainWindow::applyStyleSheet()
{
    MainWindowUi::applyStyleSheet();
}

void MainWindow::onUpdateAvailable(const QString &)
{
    m_ui.updateBar->show();
}

void MainWindow::saveJsonSettings()
{
    if (m_loadingSettings)
        return;
    WindowLayout::capture(*this, *m_ui.table, *m_ui.splitter, m_settings);
    SettingsFile(settingsFilePath()).save(m_settings);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    saveJsonSettings();
    saveSpotSnapshot();
    event->accept();
}

void MainWindow::setupToolBar()
{
    m_ui.buildToolBar(*this, m_labels);
    connect(m_ui.toolBarRefreshAll, &QAction::triggered, this, &MainWindow::onRefreshAll);
}

void MainWindow::applySettingsToWidgets()
{
    m_ui.filterBar->setState(m_settings.filter);
    m_settings.filter.applyTo(*m_proxy);
    updateSpotCounts();
    WindowLayout::restore(*this, *m_ui.table, *m_ui.splitter, m_settings);
    m_ui.filterBar->autoAtuCheck()->setChecked(m_settings.autoAtu);
}

void MainWindow::selectSpot(const QString &key)
{
    showNormal();
    raise();
    activateWindow();
    const int row = SelectionKeeper::proxyRowForKey(*m_proxy, *m_model, key);
    if (row >= 0)
        m_ui.table->selectViewRow(row);
}

void MainWindow::focusSearch()
{
    QLineEdit *search = m_ui.filterBar->searchEdit();
    search->setFocus(Qt::ShortcutFocusReason);
    search->selectAll();
}

void MainWindow::updateSpotCounts()
{
    m_labels.showSpotCounts(m_sources->ingestor()->countsText(m_proxy->rowCount()));
}

void MainWindow::markSelected(StationSpot::Status status)
{
    const QString key = m_selection.selectedKey();
    if (m_desk.statusStore()
            .markSelection(*m_model, key, status, ContactStatusStore::Spread::SimilarAndGroup)
            .isEmpty())
        return;
    saveJsonSettings();
    m_wsServer->pushSpotStatusChanged(key, status);
    onSelectionChanged(false); // the panel and buttons anew; the radio stays where it is
}
