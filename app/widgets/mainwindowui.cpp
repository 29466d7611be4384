#include "app/widgets/mainwindowui.h"

#include "app/widgets/detailpanel.h"
#include "app/widgets/filterbar.h"
#include "app/widgets/spottable.h"
#include "app/widgets/updatebar.h"
#include "app/widgets/windowlabels.h"

#include <QApplication>
#include <QFile>
#include <QMainWindow>
#include <QMenuBar>
#include <QSplitter>
#include <QToolBar>
#include <QVBoxLayout>

void MainWindowUi::buildMenuBar(QMainWindow &window)
{
    QMenuBar *bar = window.menuBar();
    QMenu *file = bar->addMenu(QStringLiteral("&File"));
    refreshAll = file->addAction(QStringLiteral("&Refresh All"));
    refreshAll->setShortcut(QKeySequence::Refresh);
    file->addSeparator();
    exportSotaLog = file->addAction(QStringLiteral("Export &SOTA Log (CSV)"));
    exportPotaLog = file->addAction(QStringLiteral("Export &POTA Log (ADIF)"));
    exportAllContacts = file->addAction(QStringLiteral("Export All Contacts (ADIF)…"));
    importWorkedLogbook = file->addAction(QStringLiteral("Import Logbook for Worked Before…"));
    clearSpots = file->addAction(QStringLiteral("&Clear Spots"));
    file->addSeparator();
    quit = file->addAction(QStringLiteral("&Quit"));
    preferences = bar->addMenu(QStringLiteral("&Settings"))->addAction(QStringLiteral("&Preferences..."));
    QMenu *radio = bar->addMenu(QStringLiteral("&Radio"));
    radioSetup = radio->addAction(QStringLiteral("Radio &Setup..."));
    disconnectRadio = radio->addAction(QStringLiteral("&Disconnect Radio"));
    connectRadio = radio->addAction(QStringLiteral("&Connect Radio"));
    dxClusterSetup = radio->addAction(QStringLiteral("DX &Cluster Setup..."));
    lwBridgeSetup = radio->addAction(QStringLiteral("Lampwick &Bridge..."));
    viewMenu = bar->addMenu(QStringLiteral("&View")); // filled by the docks
    // An empty form: any station, the operator's own included.
    spotStation = bar->addMenu(QStringLiteral("&Spot"))->addAction(QStringLiteral("Spot a Station…"));
    about = bar->addMenu(QStringLiteral("&Help"))->addAction(QStringLiteral("&About Tallis"));
}

void MainWindowUi::buildToolBar(QMainWindow &window, WindowLabels &labels)
{
    QToolBar *bar = window.addToolBar(QStringLiteral("Main"));
    bar->setObjectName(QStringLiteral("mainToolbar"));
    bar->setMovable(false);
    toolBarRefreshAll = bar->addAction(QStringLiteral("Refresh All"));
    labels.addToToolBar(bar);
}

void MainWindowUi::buildCentralWidget(QMainWindow &window, SpotFilterProxyModel *proxy)
{
    auto *central = new QWidget(&window);
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    filterBar = new FilterBar(central);
    updateBar = new UpdateBar(central);
    splitter = new QSplitter(Qt::Horizontal, central);
    table = new SpotTable(proxy, splitter);
    detailPanel = new DetailPanel(splitter);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    layout->addWidget(filterBar);
    layout->addWidget(updateBar);
    layout->addWidget(splitter, 1);
    window.setCentralWidget(central);
}

void MainWindowUi::applyStyleSheet()
{
    QFile file(QStringLiteral(":/style.qss"));
    if (file.open(QIODevice::ReadOnly))
        qApp->setStyleSheet(QString::fromUtf8(file.readAll()));
}
