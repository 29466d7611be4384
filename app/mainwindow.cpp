#include "app/mainwindow.h"

#include "api/wsserver.h"
#include "app/coordinatecache.h"
#include "app/dialogs/dxclustersdialog.h"
#include "app/dialogs/lwbridgedialog.h"
#include "app/dialogs/preferencesdialog.h"
#include "app/dialogs/programsdialog.h"
#include "app/dialogs/radiosetupdialog.h"
#include "app/logexport.h"
#include "app/spotingestor.h"
#include "app/tallisdir.h"
#include "app/updatechecker.h"
#include "app/widgets/detailpanel.h"
#include "app/widgets/filterbar.h"
#include "app/widgets/radiopanel.h"
#include "app/widgets/updatebar.h"
#include "buildinfo.h"
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
#include "sources/sotaspotfetcher.h"
#include "sources/sourcehealth.h"
#include "sources/wwbotaspotfetcher.h"
#include "sources/wwffspotfetcher.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QJsonObject>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>
#include <QTableView>
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
    , m_pollTimer(new QTimer(this))
    , m_reconnectTimer(new QTimer(this))
    , m_network(new QNetworkAccessManager(this))
    , m_rigLink(new HamlibLink(m_rig, this))
    , m_radio(new RadioRouter(m_rigLink, m_pollTimer, m_reconnectTimer, this))
    , m_updateChecker(new UpdateChecker(m_network, this))
    , m_coords(new CoordinateCache(m_network, this))
    , m_ingestor(new SpotIngestor(m_model, this))
    , m_sourceHealth(new SourceHealth(this))
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
    startApiServer();

    m_lwClient = new LwClient(this);
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

MainWindow::~MainWindow()
{
    m_pollTimer->stop();
    m_reconnectTimer->stop();
    m_rigThread->quit();
    m_rigThread->wait(3000);
    delete m_rig;
    m_rig = nullptr;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    saveJsonSettings();
    event->accept();
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
    QAction *refresh = file->addAction(QStringLiteral("&Refresh All"), this, &MainWindow::onRefreshAll);
    refresh->setShortcut(QKeySequence::Refresh);
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
    radio->addAction(QStringLiteral("&Disconnect Radio"), this, [this] { m_rigLink->disconnectRig(); });
    radio->addAction(QStringLiteral("DX &Cluster Setup..."), this, &MainWindow::onDxClusterSetup);
    radio->addAction(QStringLiteral("Lampwick &Bridge..."), this, &MainWindow::onLwBridgeSetup);

    QMenu *help = menuBar()->addMenu(QStringLiteral("&Help"));
    help->addAction(QStringLiteral("&About Tallis"), this, &MainWindow::onAbout);
}

void MainWindow::setupToolBar()
{
    QToolBar *bar = addToolBar(QStringLiteral("Main"));
    bar->setObjectName(QStringLiteral("mainToolbar"));
    bar->setMovable(false);
    bar->addAction(QStringLiteral("Refresh All"), this, &MainWindow::onRefreshAll);
    const auto addLabel = [bar](const QString &text, const QString &objectName) {
        bar->addSeparator();
        auto *label = new QLabel(text, bar);
        label->setObjectName(objectName);
        bar->addWidget(label);
        return label;
    };
    m_toolbarRadioStatus =
        addLabel(QStringLiteral("Radio: Not Connected"), QStringLiteral("toolbarRadioStatus"));
    m_toolbarDxStatus = addLabel(QStringLiteral("DX: Disconnected"), QStringLiteral("toolbarDxStatus"));
    m_callsignLabel = addLabel(QStringLiteral("DE: [not set]"), QStringLiteral("callsignLabel"));
}

void MainWindow::setupCentralWidget()
{
    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    m_filterBar = new FilterBar(central);
    layout->addWidget(m_filterBar);
    connect(m_filterBar, &FilterBar::sourcesChanged, this, &MainWindow::onSourceFilterChanged);
    connect(m_filterBar, &FilterBar::modesChanged, this, &MainWindow::onModeFilterChanged);
    connect(m_filterBar, &FilterBar::bandsChanged, this, &MainWindow::onBandFilterChanged);
    connect(m_filterBar, &FilterBar::statusChanged, this, &MainWindow::onStatusFilterChanged);
    connect(m_filterBar, &FilterBar::searchTextChanged, this, &MainWindow::onTextFilterChanged);
    connect(m_filterBar, &FilterBar::programsClicked, this, &MainWindow::onProgramsClicked);
    m_updateBar = new UpdateBar(central);
    layout->addWidget(m_updateBar);

    m_splitter = new QSplitter(Qt::Horizontal, central);
    m_table = new QTableView(m_splitter);
    m_table->setObjectName(QStringLiteral("spotTable"));
    m_table->setModel(m_proxy);
    m_table->setSortingEnabled(true);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setAlternatingRowColors(true);
    m_table->setWordWrap(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(22);
    // The operator's keys must work after a click on a row too.
    m_table->installEventFilter(this);
    // Fixed starting widths: fitting columns to their contents would measure
    // every row after every merge. The park or summit name takes the slack.
    static constexpr int k_columnWidths[StationModel::ColumnCount] = {70, 100, 110, 0,  95,
                                                                      60, 75,  85,  75, 70};
    for (int column = 0; column < StationModel::ColumnCount; ++column)
        m_table->horizontalHeader()->resizeSection(column, k_columnWidths[column]);
    m_table->horizontalHeader()->setSectionResizeMode(StationModel::NameColumn, QHeaderView::Stretch);
    m_table->sortByColumn(StationModel::AgeColumn, Qt::DescendingOrder);
    // Distance and bearing mean nothing until the operator's position is known.
    m_table->setColumnHidden(StationModel::DistanceColumn, true);
    m_table->setColumnHidden(StationModel::BearingColumn, true);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &MainWindow::onSelectionChanged);

    m_detailPanel = new DetailPanel(m_splitter);
    connect(m_detailPanel->tuneButton(), &QPushButton::clicked, this, &MainWindow::onTuneClicked);
    connect(m_detailPanel->heardButton(), &QPushButton::clicked, this, &MainWindow::onMarkHeard);
    connect(m_detailPanel->unheardButton(), &QPushButton::clicked, this, &MainWindow::onMarkUnheard);
    connect(m_detailPanel->addToLogButton(), &QPushButton::clicked, this, &MainWindow::onAddToLog);

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
    m_splitter->addWidget(m_table);
    m_splitter->addWidget(m_detailPanel);
    m_splitter->setStretchFactor(0, 3);
    m_splitter->setStretchFactor(1, 1);
    layout->addWidget(m_splitter, 1);
    setCentralWidget(central);
}

void MainWindow::setupStatusBar()
{
    m_statusBarRadio = new QLabel(QStringLiteral("Radio unconfigured — consult the settings"), this);
    m_statusBarRadio->setObjectName(QStringLiteral("statusRadio"));
    statusBar()->addWidget(m_statusBarRadio, 0);

    m_statusSpots = new QLabel(QStringLiteral("No spots"), this);
    m_statusSpots->setObjectName(QStringLiteral("statusSpots"));
    m_statusSpots->setAlignment(Qt::AlignCenter);
    statusBar()->addWidget(m_statusSpots, 1);

    m_statusRefresh = new QLabel(QStringLiteral("Last refresh: not yet (the scribes are en route…)"), this);
    m_statusRefresh->setObjectName(QStringLiteral("statusRefresh"));
    m_statusRefresh->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    statusBar()->addPermanentWidget(m_statusRefresh);

    m_statusBridge = new QLabel(QStringLiteral("LW: linked"), this);
    m_statusBridge->setObjectName(QStringLiteral("statusBridge"));
    m_statusBridge->setStyleSheet(QStringLiteral("color: #7fbf7f; font-weight: bold; padding: 0 8px;"));
    statusBar()->addPermanentWidget(m_statusBridge);
    m_statusBridge->hide();

    m_statusSources = new QLabel(this);
    m_statusSources->setObjectName(QStringLiteral("statusSources"));
    statusBar()->addPermanentWidget(m_statusSources);
    connect(m_sourceHealth, &SourceHealth::changed, this, [this] {
        m_statusSources->setText(m_sourceHealth->labelText());
        m_statusSources->setToolTip(m_sourceHealth->toolTip());
    });
}

void MainWindow::applyStyleSheet()
{
    QFile file(QStringLiteral(":/style.qss"));
    if (file.open(QIODevice::ReadOnly))
        qApp->setStyleSheet(QString::fromUtf8(file.readAll()));
}

void MainWindow::onAbout()
{
    const QDateTime built = QDateTime::fromSecsSinceEpoch(BuildInfo::k_buildTime, Qt::UTC);
    QMessageBox box(this);
    box.setWindowTitle(QStringLiteral("About Tallis"));
    box.setIconPixmap(
        QPixmap(QStringLiteral(":/logo.jpg")).scaled(96, 96, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    box.setTextFormat(Qt::RichText);
    box.setText(QStringLiteral("<p align=\"center\">Version %1<br>Built: %2<br>Release: %3</p>")
                    .arg(QString::fromLatin1(BuildInfo::k_version),
                         built.toString(QStringLiteral("yyyy-MM-dd HH:mm 'UTC'")),
                         QLocale::c().toString(built.date(), QStringLiteral("MMM d yyyy"))));
    box.exec();
}

// ---- keys -----------------------------------------------------------------

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    if (m_filterBar->searchEdit()->hasFocus() || !handleOperatorKey(event->key()))
        QMainWindow::keyPressEvent(event);
}

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    // The table's type-to-search would swallow the operator's letters.
    if (watched == m_table && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->modifiers() == Qt::NoModifier)
        return handleOperatorKey(static_cast<QKeyEvent *>(event)->key());
    return QMainWindow::eventFilter(watched, event);
}

bool MainWindow::handleOperatorKey(int key)
{
    const auto clickIfEnabled = [](QPushButton *button) {
        if (button->isEnabled())
            button->click();
        return true; // swallowed either way
    };
    switch (key) {
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
    case Qt::Key_K: {
        const int rows = m_proxy->rowCount();
        if (rows == 0)
            return false;
        const QModelIndexList selected = m_table->selectionModel()->selectedRows();
        const int step = key == Qt::Key_J ? 1 : -1;
        if (selected.isEmpty())
            selectProxyRow(step > 0 ? 0 : rows - 1);
        else
            selectProxyRow(qBound(0, selected.first().row() + step, rows - 1));
        return true;
    }
    default:
        return false;
    }
}

void MainWindow::selectProxyRow(int row)
{
    const QModelIndex index = m_proxy->index(row, 0);
    m_table->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_table->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    m_table->scrollTo(index);
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
    m_statusSources->setText(m_sourceHealth->labelText());
    // Refresh order: SOTA first.
    for (const auto &[source, fetcher] :
         {sources[1], sources[0], sources[2], sources[3], sources[4], sources[5]})
        m_ingestor->addWebSource(source, fetcher);

    connect(m_ingestor, &SpotIngestor::aboutToMerge, this, [this] {
        const QModelIndexList selected = m_table->selectionModel()->selectedRows();
        m_selection.rememberRow(selected.isEmpty() ? -1 : selected.first().row());
    });
    connect(m_ingestor, &SpotIngestor::merged, this, &MainWindow::afterMerge);
    connect(m_ingestor, &SpotIngestor::allAnswered, this, [this](const QDateTime &at) {
        m_statusRefresh->setText(
            QStringLiteral("Last refresh: %1").arg(at.toString(QStringLiteral("HH:mm:ss"))));
    });
}

void MainWindow::onSpotsReady(const QList<StationSpot> &spots)
{
    m_ingestor->receive(spots);
}

void MainWindow::afterMerge(const QList<StationSpot> &batch)
{
    applyPersistedStatuses();
    queueCoordLookups(batch);
    updateSpotCounts();
    if (m_wsServer)
        m_wsServer->pushSpotsUpdated();
    const int row = m_selection.rowToRestore(*m_proxy, *m_model);
    if (row < 0)
        return;
    const SelectionKeeper::Restoring restoring(m_selection);
    selectProxyRow(row);
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
    m_statusSpots->setText(m_ingestor->countsText(m_proxy->rowCount()));
}

void MainWindow::onRefreshAll()
{
    m_ingestor->refreshAll(m_filter);
}

void MainWindow::applyFilter(bool save)
{
    m_filterBar->updateState(m_filter);
    m_filter.applyTo(*m_proxy);
    updateSpotCounts();
    if (save)
        saveJsonSettings();
    if (m_wsServer)
        m_wsServer->pushFilterChanged();
}

void MainWindow::onSourceFilterChanged()
{
    m_filterBar->updateState(m_filter);
    m_filter.applyTo(*m_proxy);
    m_ingestor->applySourceChoice(m_filter, m_settings.refreshIntervalSecs);
    if (m_filter.isSourceEnabled(StationSpot::DX)) {
        if (m_settings.callsign.isEmpty())
            statusBar()->showMessage(QStringLiteral("DX cluster: set your callsign in Preferences first"),
                                     8000);
        m_dxClusters.connectAll();
    } else {
        m_dxClusters.disconnectAll();
        // A deliberate disconnect is not announced by the clients themselves.
        updateDxStatusLabel();
    }
    applyFilter(true);
}

void MainWindow::onModeFilterChanged()
{
    applyFilter(true);
}

void MainWindow::onBandFilterChanged()
{
    applyFilter(true);
}

void MainWindow::onStatusFilterChanged(int index)
{
    Q_UNUSED(index)
    applyFilter(true);
}

void MainWindow::onTextFilterChanged(const QString &text)
{
    Q_UNUSED(text)
    applyFilter(false); // the search text is never saved
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
    updateDxStatusLabel();
    if (!connected) {
        statusBar()->showMessage(QStringLiteral("DX cluster disconnected."), 4000);
        return;
    }
    QString host;
    if (auto *dx = qobject_cast<DxClusterFetcher *>(sender()); dx && !dx->host().isEmpty())
        host = QStringLiteral(" — %1").arg(dx->host());
    statusBar()->showMessage(QStringLiteral("DX cluster connected%1").arg(host), 5000);
}

void MainWindow::updateDxStatusLabel()
{
    m_toolbarDxStatus->setText(anyDxConnected() ? QStringLiteral("DX: Connected")
                                                : QStringLiteral("DX: Disconnected"));
}

bool MainWindow::anyDxConnected() const
{
    return m_dxClusters.anyConnected();
}

StationSpot MainWindow::spotForKey(const QString &key) const
{
    return m_model->spotAt(SelectionKeeper::modelRowForKey(*m_model, key));
}

void MainWindow::onSelectionChanged()
{
    const QModelIndexList selected = m_table->selectionModel()->selectedRows();
    if (selected.isEmpty()) {
        m_selection.setSelectedKey(QString());
        m_model->setHighlightGroup(0);
        m_detailPanel->clear();
        return;
    }
    const StationSpot spot = m_model->spotAt(m_proxy->mapToSource(selected.first()).row());
    m_selection.setSelectedKey(spot.key());
    m_model->setHighlightGroup(spot.groupId);

    QStringList partners;
    for (const StationSpot &other :
         m_model->findMultiOpPartners(spot.reference, spot.frequencyKhz, spot.spotTime, spot.callsign))
        partners.append(other.callsign);
    m_detailPanel->showSpot(spot, partners.join(QStringLiteral(", ")));

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

// ---- marks and the log ----------------------------------------------------

void MainWindow::loadContactStatus()
{
    m_statusStore.load(ContactStatusStore::defaultFilePath());
}

void MainWindow::applyPersistedStatuses()
{
    m_statusStore.applyTo(*m_model);
}

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

void MainWindow::onMarkHeard()
{
    markSelected(StationSpot::Heard);
}

void MainWindow::onMarkUnheard()
{
    markSelected(StationSpot::NotHeard);
}

void MainWindow::onAddToLog()
{
    const QString key = m_selection.selectedKey();
    const StationSpot spot = spotForKey(key);
    if (m_statusStore
            .markSelection(*m_model, key, StationSpot::Contacted, ContactStatusStore::Spread::SimilarOnly)
            .isEmpty())
        return;
    m_contactLog.append(spot, m_settings.callsign);
    saveJsonSettings();
    m_wsServer->pushSpotStatusChanged(key, StationSpot::Contacted);
    statusBar()->showMessage(m_contactLog.loggedMessage(spot), 6000);
    onSelectionChanged();
}

void MainWindow::exportSotaLog()
{
    exportLog(LogExport::sotaFormat());
}

void MainWindow::exportPotaLog()
{
    exportLog(LogExport::potaFormat());
}

void MainWindow::exportLog(const ExportFormat &format)
{
    const QList<ContactRow> rows =
        LogExport::collectRows(m_model->spots(), format.source, m_statusStore, m_statusStore.now());
    if (rows.isEmpty()) {
        QMessageBox::information(this, format.title, format.nothingToExport);
        return;
    }
    const QString path = QFileDialog::getSaveFileName(
        this, format.title, QDir::homePath() + QLatin1Char('/') + format.proposedFileName, format.fileFilter);
    if (path.isEmpty())
        return;
    if (!LogExport::writeTextFile(
            path, LogExport::exportText(format, rows, m_settings.callsign, m_settings.sotaRef))) {
        QMessageBox::warning(this, QStringLiteral("Export Failed"),
                             QStringLiteral("Could not open file for writing:\n%1").arg(path));
        return;
    }
    statusBar()->showMessage(format.exported.arg(rows.size()).arg(path), 6000);
}

// ---- positions ------------------------------------------------------------

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

void MainWindow::startupChecks()
{
    // Let the window appear before a slow serial rig is opened.
    m_radio->connectRigLater(1500);
}

bool MainWindow::isLwBridgeActive() const
{
    return m_radio->isBridgeActive();
}

void MainWindow::tuneStation(double kHz, const QString &mode)
{
    const bool viaBridge = m_radio->tune(kHz, mode);
    statusBar()->showMessage(
        (viaBridge ? QStringLiteral("Tuned to %1 kHz via Lampwick — may fortune favour the bold.")
                   : QStringLiteral("Tuned to %1 kHz — may fortune favour the bold."))
            .arg(kHz, 0, 'f', 0),
        4000);
}

void MainWindow::onTuneClicked()
{
    if (!m_selection.hasSelection())
        return;
    if (!isLwBridgeActive() && !m_rigLink->isConnected()) {
        const auto answer = QMessageBox::question(
            this, QStringLiteral("Radio Not Connected"),
            QStringLiteral(
                "The radio has not yet been graced with a connection.\nWould you care to configure it now?"),
            QMessageBox::Yes | QMessageBox::No);
        if (answer == QMessageBox::Yes)
            onRadioSetup();
        return;
    }
    const StationSpot spot = spotForKey(m_selection.selectedKey());
    if (spot.frequencyKhz > 0)
        tuneStation(spot.frequencyKhz, spot.mode);
}

void MainWindow::onRadioConnectionChanged(bool connected)
{
    m_radio->onRigConnectionChanged(connected);
    m_toolbarRadioStatus->setText(connected ? QStringLiteral("Radio: Connected")
                                            : QStringLiteral("Radio: Not Connected"));
    if (connected) {
        m_statusBarRadio->setText(QStringLiteral("Radio: Connected"));
        statusBar()->showMessage(QStringLiteral("Radio connection established — let the hunt commence."),
                                 4000);
        m_wsServer->pushRadioConnected();
        return;
    }
    m_statusBarRadio->setText(QStringLiteral("Radio unconfigured — consult the settings"));
    statusBar()->showMessage(QStringLiteral("Radio connection severed."), 4000);
    m_radioPanel->showDisconnected();
    m_wsServer->pushRadioDisconnected();
}

void MainWindow::onCapabilitiesChanged(const RadioCaps &caps)
{
    m_radioPanel->applyCapabilities(caps);
}

void MainWindow::onRadioStateRead(const RadioState &state)
{
    m_radioPanel->applyState(state);
}

void MainWindow::onRadioPollResult(double kHz, const QString &mode)
{
    m_radio->notePollResult(kHz, mode);
    m_radioPanel->showPollResult(kHz, mode);
    if (m_wsServer->clientCount() > 0)
        m_wsServer->pushRadioFrequency(kHz, mode);
}

void MainWindow::onLwConnected()
{
    m_radio->onBridgeLinked();
    m_statusBarRadio->setText(QStringLiteral("Radio: Connected (via Lampwick)"));
    m_statusBridge->show();
    statusBar()->showMessage(QStringLiteral("Lampwick bridge connected — radio control delegated."), 5000);
    m_wsServer->pushLwConnected(m_lwClient->host(), m_lwClient->port());
}

void MainWindow::onLwDisconnected()
{
    m_statusBridge->hide();
    m_statusBarRadio->setText(m_rigLink->isConnected()
                                  ? QStringLiteral("Radio: Connected")
                                  : QStringLiteral("Radio unconfigured — consult the settings"));
    statusBar()->showMessage(
        QStringLiteral("Lampwick bridge disconnected — reverting to direct radio control."), 5000);
    m_radio->onBridgeUnlinked();
    m_wsServer->pushLwDisconnected();
}

void MainWindow::onLwRadioFrequency(double kHz, const QString &mode)
{
    m_radio->noteBridgeFrequency(kHz, mode);
    m_radioPanel->showBridgeFrequency(kHz, mode);
    if (m_wsServer->clientCount() > 0)
        m_wsServer->pushRadioFrequency(kHz, mode);
}

void MainWindow::onLwRadioConnectedChanged(bool connected)
{
    // Only while the bridge has the radio; otherwise the label is the rig's.
    if (!m_settings.lwEnabled || !m_lwClient || !m_lwClient->isLinked())
        return;
    m_statusBarRadio->setText(connected ? QStringLiteral("Radio: Connected (via Lampwick)")
                                        : QStringLiteral("Radio: Lampwick rig not connected"));
}

// ---- dialogs --------------------------------------------------------------

void MainWindow::onPreferences()
{
    PreferencesDialog dialog(Preferences::fromSettings(m_settings), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const AppSettings before = m_settings;
    dialog.preferences().applyTo(m_settings);
    m_filter.maxAgeMins = m_settings.maxAgeMins;
    const AppSettings &s = m_settings;
    m_callsignLabel->setText(s.callsign.isEmpty() ? QStringLiteral("DE: [not set]")
                                                  : QStringLiteral("DE: %1").arg(s.callsign));
    m_filter.applyTo(*m_proxy);
    m_ingestor->applySourceChoice(m_filter, s.refreshIntervalSecs);
    if (s.hasUserLocation)
        m_model->setUserLocation(s.latitude, s.longitude);
    else
        m_model->clearUserLocation();
    m_table->setColumnHidden(StationModel::DistanceColumn, !s.hasUserLocation);
    m_table->setColumnHidden(StationModel::BearingColumn, !s.hasUserLocation);
    m_coords->setLookupsEnabled(s.hasUserLocation);
    m_model->setWatchCallsigns(s.watchCallsigns);
    m_model->setWatchReferences(s.watchReferences);
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
    RigSetupCalls calls;
    calls.isConnected = [this] { return m_rigLink->isConnected(); };
    calls.connectRig = [this](const RigConfig &config) { return m_rigLink->connectRigAndWait(config); };
    calls.disconnectRig = [this] { m_rigLink->disconnectRigAndWait(); };
    calls.frequencyKhz = [this] {
        double kHz = 0.0;
        QString mode;
        return m_rigLink->readFrequencyAndWait(kHz, mode) ? kHz : 0.0;
    };
    calls.mode = [this] {
        double kHz = 0.0;
        QString mode;
        m_rigLink->readFrequencyAndWait(kHz, mode);
        return mode;
    };
    RadioSetupDialog dialog(m_settings.rig, m_rigLink->availableRigsAndWait(),
                            RadioSetupDialog::detectSerialPorts(), calls, this);
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
    updateDxStatusLabel();
    saveJsonSettings();
}

void MainWindow::onLwBridgeSetup()
{
    LwBridgeDialog dialog(LwBridgeSettings::fromSettings(m_settings), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const bool retarget =
        m_settings.lwHost != dialog.settings().host || m_settings.lwPort != dialog.settings().port;
    dialog.settings().applyTo(m_settings);
    m_lwClient->setTarget(m_settings.lwHost, m_settings.lwPort);
    m_radio->setBridgeEnabled(m_settings.lwEnabled);
    // A new target while linked takes effect at once, not at the next drop.
    if (retarget && m_lwClient->isEnabled())
        m_lwClient->setEnabled(false);
    m_lwClient->setEnabled(m_settings.lwEnabled);
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
    m_coords->setLookupsEnabled(m_settings.hasUserLocation);
    if (m_settings.fileExisted)
        applySettingsToWidgets();
    else
        resize(1200, 680);
    m_loadingSettings = false;
}

void MainWindow::applySettingsToWidgets()
{
    const AppSettings &s = m_settings;
    if (!s.callsign.isEmpty())
        m_callsignLabel->setText(QStringLiteral("DE: %1").arg(s.callsign));
    m_filterBar->setState(m_filter);
    m_filter.applyTo(*m_proxy);
    m_model->setWatchCallsigns(s.watchCallsigns);
    m_model->setWatchReferences(s.watchReferences);
    updateSpotCounts();

    m_table->sortByColumn(s.sortColumn, s.sortOrder);
    if (s.windowGeometry.isEmpty())
        resize(1200, 680);
    else
        restoreGeometry(s.windowGeometry);
    if (!s.windowState.isEmpty())
        restoreState(s.windowState, 0);
    if (!s.splitterState.isEmpty())
        m_splitter->restoreState(s.splitterState);

    if (s.hasUserLocation)
        m_model->setUserLocation(s.latitude, s.longitude);
    m_table->setColumnHidden(StationModel::DistanceColumn, !s.hasUserLocation);
    m_table->setColumnHidden(StationModel::BearingColumn, !s.hasUserLocation);
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

bool MainWindow::apiIsRadioConnected() const
{
    return m_rigLink->isConnected();
}

double MainWindow::apiRadioFreqKhz() const
{
    return m_radio->lastFreqKhz();
}

QString MainWindow::apiRadioMode() const
{
    return m_radio->lastMode();
}

int MainWindow::apiVisibleSpotCount() const
{
    return m_proxy->rowCount();
}

int MainWindow::apiTotalSpotCount() const
{
    return m_model->rowCount();
}

QList<StationSpot> MainWindow::apiVisibleSpots() const
{
    QList<StationSpot> spots;
    const int rows = m_proxy->rowCount();
    spots.reserve(rows);
    for (int row = 0; row < rows; ++row)
        spots.append(m_model->spots().at(m_proxy->mapToSource(m_proxy->index(row, 0)).row()));
    return spots;
}

QList<StationSpot> MainWindow::apiAllSpots() const
{
    return m_model->spots();
}

QJsonObject MainWindow::apiConfigGet() const
{
    return QJsonObject{{QStringLiteral("callsign"), m_settings.callsign},
                       {QStringLiteral("sotaRef"), m_settings.sotaRef},
                       {QStringLiteral("maxAgeMins"), m_filter.maxAgeMins},
                       {QStringLiteral("refreshIntervalSecs"), m_settings.refreshIntervalSecs},
                       {QStringLiteral("wsEnabled"), m_settings.wsEnabled},
                       {QStringLiteral("wsPort"), m_settings.wsPort},
                       {QStringLiteral("wsHost"), m_settings.wsHost}};
}

void MainWindow::apiConfigSet(const QJsonObject &config)
{
    if (config.contains(QStringLiteral("maxAgeMins"))) {
        m_filter.maxAgeMins = qBound(1, config.value(QStringLiteral("maxAgeMins")).toInt(), 720);
        m_filter.applyTo(*m_proxy);
        updateSpotCounts();
    }
    if (config.contains(QStringLiteral("refreshIntervalSecs"))) {
        m_settings.refreshIntervalSecs =
            qMax(60, config.value(QStringLiteral("refreshIntervalSecs")).toInt());
        m_ingestor->applySourceChoice(m_filter, m_settings.refreshIntervalSecs);
    }
    saveJsonSettings();
    m_wsServer->pushConfigChanged();
}

void MainWindow::apiFilterSet(const QJsonObject &filter)
{
    m_filter.mergeApiJson(filter);
    m_filterBar->setState(m_filter);
    onSourceFilterChanged(); // re-runs every filter, the sources' refresh and the DX link; saves; pushes
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
    if (SelectionKeeper::modelRowForKey(*m_model, key) < 0)
        return false;
    m_contactLog.append(spotForKey(key), m_settings.callsign);
    return true;
}

void MainWindow::apiRadioConnect()
{
    if (!m_rigLink->isConnected())
        m_rigLink->connectRig(m_settings.rig);
}

void MainWindow::apiRadioDisconnect()
{
    m_rigLink->disconnectRig();
}

void MainWindow::apiSetRadioFreqKhz(double kHz)
{
    m_radio->target().setFrequency(kHz);
}

void MainWindow::apiSetRadioMode(const QString &mode)
{
    // Always the rig, re-tuning the last known frequency in the new mode.
    m_rigLink->tune(m_radio->lastFreqKhz(), mode);
}

void MainWindow::apiSetVolume(int volume)
{
    m_radio->target().setVolume(volume);
}

void MainWindow::apiSetRfPower(int power)
{
    m_radio->target().setRfPower(power);
}

void MainWindow::apiSetMute(bool muted)
{
    m_radio->target().setMute(muted);
}

void MainWindow::apiSetFilter(int filter)
{
    m_radio->target().setFilter(filter);
}

void MainWindow::apiSetKeySpeed(int wpm)
{
    m_radio->target().setKeySpeed(wpm);
}

void MainWindow::apiStartTune()
{
    m_radio->startTune();
}
