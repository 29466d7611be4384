#pragma once

#include "api/apibackend.h"
#include "app/selectionkeeper.h"
#include "app/settingsfile.h"
#include "app/stationdesk.h"
#include "app/widgets/mainwindowui.h"
#include "app/widgets/windowlabels.h"

#include <QMainWindow>

class AlertCenter;
class CoordinateCache;
class LogbookForwarder;
class MapDocks;
class QNetworkAccessManager;
class QUrl;
class RadioStation;
class SourcesView;
class SpotFilterProxyModel;
class SpotPoster;
class SpotSources;
class StationModel;
class UpdateChecker;
class WorkedImportLoader;
class WsServer;
enum class OperatorAction;
enum class TuneOrigin;
struct RadioCaps;
struct RadioState;
struct ExportFormat;
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

    bool anyDxConnected() const;
    bool isLwBridgeActive() const;

    // ApiBackend, in mainwindowapi.cpp.
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
    void onFetchStarted(const QObject *fetcher);
    void onDxConnectionChanged(bool connected, const QObject *client);
    void onModeFilterChanged() { applyFilter(true); }
    void onBandFilterChanged() { applyFilter(true); }
    void onStatusFilterChanged(int) { applyFilter(true); }
    void onTextFilterChanged(const QString &) { applyFilter(false); } // the search text is never saved
    void onSourceFilterChanged();
    void onSelectionChanged(bool byOperator = false);
    void onTuneClicked();
    void onMarkHeard() { markSelected(StationSpot::Heard); }
    void onMarkUnheard() { markSelected(StationSpot::NotHeard); }
    void onAddToLog() { logSelected(m_settings.confirmLog); }
    // Prefilled from the selection when asked to and there is one.
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
    void startupChecks();
    void onUpdateAvailable(const QString &version);
    void onCapabilitiesChanged(const RadioCaps &caps);
    void onRadioStateRead(const RadioState &state);

private:
    void setupUi();
    void setupMenuBar();
    void setupToolBar();
    void setupCentralWidget();
    void setupStatusBar();
    void setupMapDocks();
    void wireSources();
    void wireRadioEvents();
    void wireRadioPanel();
    void wireLogbook(const QUrl &qrzUrl);
    void wireSpotting();
    void startApiServer();
    void applyStyleSheet();
    void loadContactStatus() { m_desk.loadStatuses(); }
    void createDxFetchers();

    void loadCoordCache();
    void loadJsonSettings();
    void applySettingsToWidgets();
    void applyPreferences();
    void applyHideWorked() { m_desk.setHideWorked(m_settings.filter.hideWorked); }
    // Spots of the last session, shown at once until each source answers.
    void loadSpotSnapshot();
    void saveSpotSnapshot() const;
    // As a click would: the window comes forward and the row is selected.
    void selectSpot(const QString &key);
    // Picked in a view other than the table: selected, and so tuned.
    void selectSpotByOperator(const QString &key);
    // Positions are looked up while there is a home to measure from or a map to draw them on.
    void updateCoordLookups();
    void updateSpotCounts();
    void focusSearch();

    void afterMerge(const QList<StationSpot> &batch);
    void applyPersistedStatuses() { m_desk.applyPersistedStatuses(); }
    void queueCoordLookups(const QList<StationSpot> &batch);
    // Every tune goes to the router with its origin; only the operator's and the API's move the radio.
    bool tuneStation(double kHz, const QString &mode, TuneOrigin origin, bool autoAtu = false);
    void applyFilter(bool save);
    void runOperatorAction(OperatorAction action);
    void markSelected(StationSpot::Status status);
    // After the operator confirms the records in the log dialog when asked to.
    void logSelected(bool confirm);
    // Nothing when the operator cancels.
    std::optional<QList<RecordEdit>> confirmLogEdits(const QString &key);
    // The imported logbook: read at start and after an import, on a worker thread.
    void wireWorkedImport();
    void readWorkedLogbook();
    void exportLog(const ExportFormat &format);
    StationSpot spotForKey(const QString &key) const { return m_desk.spotForKey(key); }

    // Owned objects, in creation order.
    StationModel *m_model;
    SpotFilterProxyModel *m_proxy;
    SpotSources *m_sources;
    RadioStation *m_radio;
    UpdateChecker *m_updateChecker;
    QNetworkAccessManager *m_network;
    WsServer *m_wsServer = nullptr;
    CoordinateCache *m_coords;
    StationDesk m_desk;
    AlertCenter *m_alerts;
    LogbookForwarder *m_logbook;
    WorkedImportLoader *m_workedImport = nullptr;
    SpotPoster *m_spotPoster;

    AppSettings m_settings;
    SelectionKeeper m_selection;
    // Set while the settings file is applied: the widgets' change signals must not save.
    bool m_loadingSettings = false;

    MainWindowUi m_ui;
    WindowLabels m_labels;
    SourcesView *m_sourcesView = nullptr;
    MapDocks *m_mapDocks = nullptr;
};
