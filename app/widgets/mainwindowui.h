#pragma once

class DetailPanel;
class FilterBar;
class QAction;
class QMainWindow;
class QMenu;
class QSplitter;
class SpotFilterProxyModel;
class SpotTable;
class UpdateBar;
class WindowLabels;

// The window's menus, toolbar and central widgets, made as a Designer form
// would make them: the window calls the builders in its own order and
// connects what they made to its slots.
class MainWindowUi final
{
public:
    void buildMenuBar(QMainWindow &window);
    void buildToolBar(QMainWindow &window, WindowLabels &labels);
    // Filter bar, update bar, then the table beside the detail panel.
    void buildCentralWidget(QMainWindow &window, SpotFilterProxyModel *proxy);
    // The dark theme, for the whole application.
    static void applyStyleSheet();

    QAction *refreshAll = nullptr;
    QAction *exportSotaLog = nullptr;
    QAction *exportPotaLog = nullptr;
    QAction *exportAllContacts = nullptr;
    QAction *importWorkedLogbook = nullptr;
    QAction *clearSpots = nullptr;
    QAction *quit = nullptr;
    QAction *preferences = nullptr;
    QAction *radioSetup = nullptr;
    QAction *disconnectRadio = nullptr;
    QAction *connectRadio = nullptr;
    QAction *dxClusterSetup = nullptr;
    QAction *lwBridgeSetup = nullptr;
    QAction *spotStation = nullptr;
    QAction *about = nullptr;
    QMenu *viewMenu = nullptr;
    QAction *toolBarRefreshAll = nullptr;

    FilterBar *filterBar = nullptr;
    UpdateBar *updateBar = nullptr;
    QSplitter *splitter = nullptr;
    SpotTable *table = nullptr;
    DetailPanel *detailPanel = nullptr;
};
