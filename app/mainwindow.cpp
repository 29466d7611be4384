#include "app/mainwindow.h"

#include "app/detailpanel.h"
#include "app/filterbar.h"
#include "app/tallisdir.h"
#include "buildinfo.h"
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

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QFile>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
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
    , m_rig(new HamlibController) // parentless: it moves to its own thread
    , m_pollTimer(new QTimer(this))
    , m_reconnectTimer(new QTimer(this))
{
    registerStationSpotMetaTypes();
    m_proxy->setSourceModel(m_model);
    ensureTallisDir();
    setupUi();
    setupStatusBar();
    applyStyleSheet();

    loadJsonSettings();
    connect(m_table->horizontalHeader(), &QHeaderView::sortIndicatorChanged, this,
            &MainWindow::saveJsonSettings);

    wireSources();
    wireRig();

    // Sources the user switched off stay quiet until ticked again.
    for (const auto &[source, fetcher] : webSources()) {
        if (m_filterBar->isSourceEnabled(source))
            fetcher->startAutoRefresh(m_settings.refreshIntervalSecs);
    }

    createDxFetchers();
    if (m_filterBar->isSourceEnabled(StationSpot::DX)) {
        for (DxClusterFetcher *dx : std::as_const(m_dxFetchers))
            dx->connectToCluster();
    }

    QTimer::singleShot(0, this, &MainWindow::startupChecks);
    // Written at every start so the file always holds every key.
    saveJsonSettings();
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

QList<SpotFetcher *> MainWindow::webFetchers() const
{
    return {m_potaFetcher, m_sotaFetcher, m_wwffFetcher, m_wwbotaFetcher, m_botaFetcher, m_gmaFetcher};
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    saveJsonSettings();
    event->accept();
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
    QMenu *file = menuBar()->addMenu(QStringLiteral("&File"));
    QAction *refresh = file->addAction(QStringLiteral("&Refresh All"), this, &MainWindow::onRefreshAll);
    refresh->setShortcut(QKeySequence::Refresh);
    file->addSeparator();
    file->addAction(QStringLiteral("&Clear Spots"), this, [this] {
        m_model->clearSpots();
        updateSpotCounts();
    });
    file->addAction(QStringLiteral("&Quit"), this, &QWidget::close);

    QMenu *radio = menuBar()->addMenu(QStringLiteral("&Radio"));
    radio->addAction(QStringLiteral("&Disconnect Radio"), this,
                     [this] { QMetaObject::invokeMethod(m_rig, "disconnectRig", Qt::QueuedConnection); });

    QMenu *help = menuBar()->addMenu(QStringLiteral("&Help"));
    help->addAction(QStringLiteral("&About Tallis"), this, &MainWindow::onAbout);
}

void MainWindow::setupToolBar()
{
    QToolBar *bar = addToolBar(QStringLiteral("Main"));
    bar->setObjectName(QStringLiteral("mainToolbar"));
    bar->setMovable(false);
    bar->addAction(QStringLiteral("Refresh All"), this, &MainWindow::onRefreshAll);
    bar->addSeparator();
    m_toolbarRadioStatus = new QLabel(QStringLiteral("Radio: Not Connected"), bar);
    m_toolbarRadioStatus->setObjectName(QStringLiteral("toolbarRadioStatus"));
    bar->addWidget(m_toolbarRadioStatus);
    bar->addSeparator();
    m_toolbarDxStatus = new QLabel(QStringLiteral("DX: Disconnected"), bar);
    m_toolbarDxStatus->setObjectName(QStringLiteral("toolbarDxStatus"));
    bar->addWidget(m_toolbarDxStatus);
    bar->addSeparator();
    m_callsignLabel = new QLabel(QStringLiteral("DE: [not set]"), bar);
    m_callsignLabel->setObjectName(QStringLiteral("callsignLabel"));
    bar->addWidget(m_callsignLabel);
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
    connect(m_filterBar->autoAtuCheck(), &QCheckBox::toggled, this, [this](bool on) {
        m_settings.autoAtu = on;
        saveJsonSettings();
    });

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
    // Fixed starting widths: fitting columns to their contents would measure
    // every row after every merge. The park or summit name takes the slack.
    static constexpr int k_columnWidths[] = {70, 100, 110, 0, 95, 60, 75, 85, 75, 70};
    for (int column = 0; column < 10; ++column)
        m_table->horizontalHeader()->resizeSection(column, k_columnWidths[column]);
    m_table->horizontalHeader()->setSectionResizeMode(3, QHeaderView::Stretch);
    m_table->sortByColumn(6, Qt::DescendingOrder);
    // Distance and bearing mean nothing until the operator's position is known.
    m_table->setColumnHidden(8, true);
    m_table->setColumnHidden(9, true);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &MainWindow::onSelectionChanged);

    m_detailPanel = new DetailPanel(m_splitter);
    m_splitter->addWidget(m_table);
    m_splitter->addWidget(m_detailPanel);
    m_splitter->setStretchFactor(0, 3);
    m_splitter->setStretchFactor(1, 1);
    layout->addWidget(m_splitter, 1);
    setCentralWidget(central);
}

void MainWindow::setupStatusBar()
{
    m_statusRadio = new QLabel(QStringLiteral("Radio unconfigured — consult the settings"), this);
    m_statusRadio->setObjectName(QStringLiteral("statusRadio"));
    statusBar()->addWidget(m_statusRadio, 0);

    m_statusSpots = new QLabel(QStringLiteral("No spots"), this);
    m_statusSpots->setObjectName(QStringLiteral("statusSpots"));
    m_statusSpots->setAlignment(Qt::AlignCenter);
    statusBar()->addWidget(m_statusSpots, 1);

    m_statusRefresh = new QLabel(QStringLiteral("Last refresh: not yet (the scribes are en route…)"), this);
    m_statusRefresh->setObjectName(QStringLiteral("statusRefresh"));
    m_statusRefresh->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    statusBar()->addPermanentWidget(m_statusRefresh);

    m_statusBridge = new QLabel(QStringLiteral("LW: linked"), this);
    m_statusBridge->setStyleSheet(QStringLiteral("color: #7fbf7f; font-weight: bold; padding: 0 8px;"));
    statusBar()->addPermanentWidget(m_statusBridge);
    m_statusBridge->hide();
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

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    if (m_filterBar->searchEdit()->hasFocus()) {
        QMainWindow::keyPressEvent(event);
        return;
    }
    const auto clickIfEnabled = [](QPushButton *button) {
        if (button->isEnabled())
            button->click();
    };
    switch (event->key()) {
    case Qt::Key_H:
        clickIfEnabled(m_detailPanel->heardButton());
        return;
    case Qt::Key_U:
    case Qt::Key_Q:
        clickIfEnabled(m_detailPanel->unheardButton());
        return;
    case Qt::Key_L:
        clickIfEnabled(m_detailPanel->addToLogButton());
        return;
    case Qt::Key_T:
        clickIfEnabled(m_detailPanel->tuneButton());
        return;
    case Qt::Key_J:
    case Qt::Key_K: {
        const int rows = m_proxy->rowCount();
        if (rows == 0)
            break;
        const QModelIndexList selected = m_table->selectionModel()->selectedRows();
        int row;
        if (selected.isEmpty())
            row = event->key() == Qt::Key_J ? 0 : rows - 1;
        else
            row = qBound(0, selected.first().row() + (event->key() == Qt::Key_J ? 1 : -1), rows - 1);
        selectProxyRow(row);
        return;
    }
    default:
        break;
    }
    QMainWindow::keyPressEvent(event);
}

void MainWindow::selectProxyRow(int row)
{
    const QModelIndex index = m_proxy->index(row, 0);
    m_table->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_table->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    m_table->scrollTo(index);
}
