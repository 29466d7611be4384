#pragma once

#include "api/apibackend.h"
#include "app/operatorkeys.h"
#include "app/selectionkeeper.h"
#include "app/settingsfile.h"
#include "app/stationdesk.h"
#include "app/widgets/mainwindowui.h"
#include "app/widgets/windowlabels.h"
#include "radio/rigtypes.h"
#include "sources/dxclusterpool.h"

#include <QMainWindow>

class AlertCenter;
class BotaSpotFetcher;
class CoordinateCache;
class GmaSpotFetcher;
class HamlibController;
class HamlibLink;
class LogbookForwarder;
class LwClient;
class MapDocks;
class PotaSpotFetcher;
class RbnClient;
class QNetworkAccessManager;
class QThread;
class QTimer;
class QUrl;
class RadioPanel;
class RadioRouter;
class RadioView;
class SkimmerFeed;
class SotaSpotFetcher;
class SourceHealth;
class SourcesView;
class SpotFetcher;
class SpotFilterProxyModel;
class SpotIngestor;
class SpotPoster;
class StationModel;
class UpdateChecker;
class WorkedImportLoader;
class WsServer;
class WwbotaSpotFetcher;
class WwffSpotFetcher;
struct ExportFormat;
enum class TuneOrigin;
struct ServiceUrls;

// The application controller: owns every long-lived object in a fixed order,
// builds the interface, loads the stored state and wires the signals. The
// work itself is done by the small classes it owns; its slots delegate.
class MainWindow final : public QMainWindow, public ApiBackend
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainWindow)

public:
    explicit MainWindow(QWidget *parent = nullptr);
    explicit MainWindow(const ServiceUrls &services, QWidget *parent = nullptr);
    ~MainWindow() override;

    bool anyDxConnected() const { return m_dxClusters.anyConnected(); }
    bool isLwBridgeActive() const;

    // The functions behind the WebSocket API.
    bool apiIsRadioConnected() const override;
    double apiRadioFreqKhz() const override;
    QString apiRadioMode() const override;
    QString apiCallsign() const override { return m_settings.callsign; }
    int apiVisibleSpotCount() const override;
    int apiTotalSpotCount() const override;
    QList<StationSpot> apiVisibleSpots() const override;
    QList<StationSpot> apiAllSpots() const override;
    QJsonObject apiConfigGet() const override { return m_settings.apiConfig(); }
    void apiConfigSet(const QJsonObject &config) override;
    QJsonObject apiFilterGet() const override { return m_settings.filter.toApiJson(); }
    void apiFilterSet(const QJsonObject &filter) override;
    bool apiTuneToSpot(const QString &key) override;
    void apiSetSpotStatus(const QString &key, StationSpot::Status status) override;
    bool apiLogSpot(const QString &key) override { return m_desk.logKey(key, m_settings.callsign); }
    void apiRadioConnect() override;
    void apiRadioDisconnect() override;
    void apiSetRadioFreqKhz(double kHz) override;
    void apiSetRadioMode(const QString &mode) override;
    void apiSetVolume(int volume) override;
    void apiSetRfPower(int power) override;
    void apiSetMute(bool muted) override;
    void apiSetFilter(int filter) override;
    void apiSetKeySpeed(int wpm) override;
    void apiStartTune() override;
    void apiRefresh() override { onRefreshAll(); }
    void apiPostSpot(const ApiSpotPost &post, ApiSpotAnswer answer) override;

public slots:
    void onRefreshAll();
    void saveJsonSettings();

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void onSpotsReady(const QList<StationSpot> &spots);
    void onFetchError(const QString &error);
    void onFetchStarted();
    void onDxConnectionChanged(bool connected);
    void onSourceFilterChanged();
    void onModeFilterChanged() { applyFilter(true); }
    void onBandFilterChanged() { applyFilter(true); }
    void onStatusFilterChanged(int) { applyFilter(true); }
    void onTextFilterChanged(const QString &) { applyFilter(false); } // the search text is never saved
    void onSelectionChanged(bool byOperator = false);
    void onTuneClicked();
    void onMarkHeard() { markSelected(StationSpot::Heard); }
    void onMarkUnheard() { markSelected(StationSpot::NotHeard); }
    void onAddToLog() { logSelected(m_settings.confirmLog); }
    // The spot dialog, prefilled from the selection when asked to and there is one.
    void onSpotStation(bool fromSelection);
    void exportSotaLog();
    void exportPotaLog();
    void exportAllContacts();
    void importWorkedLogbook();
    void onPreferences();
    void onRadioSetup();
    void onDxClusterSetup();
    void onLwBridgeSetup();
    void onProgramsClicked();
    void onUpdateAvailable(const QString &version);
    void onCapabilitiesChanged(const RadioCaps &caps);
    void onRadioStateRead(const RadioState &state);
    void startupChecks();

private:
    void setupUi();
    void setupMenuBar();
    void setupToolBar();
    void setupCentralWidget();
    void setupStatusBar();
    // The map and the band map, in docks under the View menu.
    void setupMapDocks();
    void applyStyleSheet() { MainWindowUi::applyStyleSheet(); }
    void wireSources();
    void wireRig();
    void wireRadioEvents();
    void wireRadioPanel();
    void startApiServer();
    void startBridge();
    // Logged contacts to the operator's logbooks; the forwarder's status to the status bar.
    void wireLogbook(const QUrl &qrzUrl);
    void wireSpotting();

    void loadContactStatus() { m_desk.loadStatuses(); }
    void loadCoordCache();
    void loadJsonSettings();
    void applySettingsToWidgets();
    // What the preferences hold, on the model, labels, table and helpers.
    void applyPreferences();
    void applyPersistedStatuses() { m_desk.applyPersistedStatuses(); }
    // Spots of the last session, shown at once until each source answers.
    void loadSpotSnapshot();
    void saveSpotSnapshot() const;
    void applyHideWorked() { m_desk.setHideWorked(m_settings.filter.hideWorked); }
    // As a click would: the window comes forward and the row is selected.
    void selectSpot(const QString &key);
    // The operator picked the spot in a view other than the table: selected, and so tuned.
    void selectSpotByOperator(const QString &key);
    // Positions are looked up while there is a home to measure from or a map to draw them on.
    void updateCoordLookups();
    void queueCoordLookups(const QList<StationSpot> &batch);
    void updateSpotCounts();
    // Ctrl+F and "/": the search field, its text selected.
    void focusSearch();

    void createDxFetchers();
    void wireRbn();
    // The skimmer feed and its connections follow the RBN tick.
    void applyRbnChoice();
    void afterMerge(const QList<StationSpot> &batch);
    // Filter changes: read the bar, apply, count, save (unless only the search changed), push.
    void applyFilter(bool save);
    void runOperatorAction(OperatorAction action);
    void markSelected(StationSpot::Status status);
    // Logs the selection, after the operator confirms it in the log dialog when asked to.
    void logSelected(bool confirm);
    // The operator's changes to the selection's records; nothing when they cancel.
    std::optional<QList<RecordEdit>> confirmLogEdits(const QString &key);
    // The imported logbook: read at start and after an import, on a worker thread.
    void wireWorkedImport();
    void readWorkedLogbook();
    void exportLog(const ExportFormat &format);
    // False when no radio path is up, the frequency is unknown or the program asked.
    bool tuneStation(double kHz, const QString &mode, TuneOrigin origin, bool autoAtu = false);
    StationSpot spotForKey(const QString &key) const { return m_desk.spotForKey(key); }

    // Owned objects, in creation order.
    StationModel *m_model;
    SpotFilterProxyModel *m_proxy;
    PotaSpotFetcher *m_potaFetcher;
    SotaSpotFetcher *m_sotaFetcher;
    WwffSpotFetcher *m_wwffFetcher;
    WwbotaSpotFetcher *m_wwbotaFetcher;
    BotaSpotFetcher *m_botaFetcher;
    GmaSpotFetcher *m_gmaFetcher;
    SpotFetcher *m_zlotaFetcher;
    SpotFetcher *m_siotaFetcher; // ParksnPeaks' silos
    DxClusterPool m_dxClusters;
    HamlibController *m_rig;
    QThread *m_rigThread = nullptr;
    UpdateChecker *m_updateChecker;
    QTimer *m_pollTimer;
    QTimer *m_reconnectTimer;
    QNetworkAccessManager *m_network;
    WsServer *m_wsServer = nullptr;
    LwClient *m_lwClient = nullptr;
    HamlibLink *m_rigLink;
    RadioRouter *m_radio;
    CoordinateCache *m_coords;
    SpotIngestor *m_ingestor;
    SkimmerFeed *m_skimmerFeed; // skimmer rows, one merge a second
    RbnClient *m_rbn;
    SourceHealth *m_sourceHealth;
    StationDesk m_desk;
    AlertCenter *m_alerts;
    QTimer *m_snapshotTimer;
    LogbookForwarder *m_logbook;
    WorkedImportLoader *m_workedImport = nullptr;
    QTimer *m_countsTimer = nullptr;
    SpotPoster *m_spotPoster;

    AppSettings m_settings;
    SelectionKeeper m_selection;
    bool m_loadingSettings = false;

    // Widgets.
    MainWindowUi m_ui;
    WindowLabels m_labels;
    RadioPanel *m_radioPanel = nullptr;
    RadioView *m_radioView = nullptr;
    SourcesView *m_sourcesView = nullptr;
    MapDocks *m_mapDocks = nullptr;
};
