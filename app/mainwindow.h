#pragma once

#include "api/apibackend.h"
#include "app/contactlog.h"
#include "app/contactstatusstore.h"
#include "app/selectionkeeper.h"
#include "app/serviceurls.h"
#include "app/settingsfile.h"
#include "model/filterstate.h"
#include "model/stationspot.h"
#include "radio/rigtypes.h"
#include "sources/dxclusterpool.h"

#include <QList>
#include <QMainWindow>

class BotaSpotFetcher;
class CoordinateCache;
class DetailPanel;
class FilterBar;
class GmaSpotFetcher;
class HamlibController;
class HamlibLink;
class LwClient;
class PotaSpotFetcher;
class QLabel;
class QNetworkAccessManager;
class QSplitter;
class QTableView;
class QThread;
class QTimer;
class RadioPanel;
class RadioRouter;
class SotaSpotFetcher;
class SpotFilterProxyModel;
class SourceHealth;
class SpotIngestor;
struct ExportFormat;
class StationModel;
class UpdateBar;
class UpdateChecker;
class WsServer;
class WwbotaSpotFetcher;
class WwffSpotFetcher;

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

    // The functions behind the WebSocket API.
    bool apiIsRadioConnected() const override;
    double apiRadioFreqKhz() const override;
    QString apiRadioMode() const override;
    QString apiCallsign() const override { return m_settings.callsign; }
    int apiVisibleSpotCount() const override;
    int apiTotalSpotCount() const override;
    QList<StationSpot> apiVisibleSpots() const override;
    QList<StationSpot> apiAllSpots() const override;
    QJsonObject apiConfigGet() const override;
    void apiConfigSet(const QJsonObject &config) override;
    QJsonObject apiFilterGet() const override { return m_filter.toApiJson(); }
    void apiFilterSet(const QJsonObject &filter) override;
    bool apiTuneToSpot(const QString &key) override;
    void apiSetSpotStatus(const QString &key, StationSpot::Status status) override;
    bool apiLogSpot(const QString &key) override;
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

public slots:
    void onRefreshAll();
    void saveJsonSettings();

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void onSpotsReady(const QList<StationSpot> &spots);
    void onFetchError(const QString &error);
    void onFetchStarted();
    void onDxConnectionChanged(bool connected);
    void onSourceFilterChanged();
    void onModeFilterChanged();
    void onBandFilterChanged();
    void onStatusFilterChanged(int index);
    void onTextFilterChanged(const QString &text);
    void onSelectionChanged();
    void onTuneClicked();
    void onMarkHeard();
    void onMarkUnheard();
    void onAddToLog();
    void exportSotaLog();
    void exportPotaLog();
    void onPreferences();
    void onRadioSetup();
    void onDxClusterSetup();
    void onLwBridgeSetup();
    void onProgramsClicked();
    void onUpdateAvailable(const QString &buildTime);
    void onLwConnected();
    void onLwDisconnected();
    void onLwRadioFrequency(double kHz, const QString &mode);
    void onLwRadioConnectedChanged(bool connected);
    void onRadioConnectionChanged(bool connected);
    void onCapabilitiesChanged(const RadioCaps &caps);
    void onRadioStateRead(const RadioState &state);
    void onRadioPollResult(double kHz, const QString &mode);
    void startupChecks();
    void onAbout();

private:
    void setupUi();
    void setupMenuBar();
    void setupToolBar();
    void setupCentralWidget();
    void setupStatusBar();
    void applyStyleSheet();
    void wireSources();
    void wireRig();

    void loadContactStatus();
    void loadCoordCache();
    void applyPersistedStatuses();
    void queueCoordLookups(const QList<StationSpot> &batch);
    void markSelected(StationSpot::Status status);
    void exportLog(const ExportFormat &format);
    void startApiServer();
    void loadJsonSettings();
    void applySettingsToWidgets();

    void createDxFetchers();
    void updateDxStatusLabel();
    void afterMerge(const QList<StationSpot> &batch);
    void updateSpotCounts();
    // Filter changes: show, apply, count and (unless only the search text changed) save.
    void applyFilter(bool save);
    void selectProxyRow(int row);
    // The operator's keys; true when the key was one of them.
    bool handleOperatorKey(int key);
    void tuneStation(double kHz, const QString &mode);
    StationSpot spotForKey(const QString &key) const;

    // Owned objects, in creation order.
    StationModel *m_model;
    SpotFilterProxyModel *m_proxy;
    PotaSpotFetcher *m_potaFetcher;
    SotaSpotFetcher *m_sotaFetcher;
    WwffSpotFetcher *m_wwffFetcher;
    WwbotaSpotFetcher *m_wwbotaFetcher;
    BotaSpotFetcher *m_botaFetcher;
    GmaSpotFetcher *m_gmaFetcher;
    DxClusterPool m_dxClusters;
    HamlibController *m_rig;
    QThread *m_rigThread = nullptr;
    QTimer *m_pollTimer;
    QTimer *m_reconnectTimer;
    QNetworkAccessManager *m_network;
    HamlibLink *m_rigLink;
    RadioRouter *m_radio;
    UpdateChecker *m_updateChecker;
    CoordinateCache *m_coords;
    WsServer *m_wsServer = nullptr;
    LwClient *m_lwClient = nullptr;
    SpotIngestor *m_ingestor;
    SourceHealth *m_sourceHealth;
    ContactStatusStore m_statusStore;
    ContactLog m_contactLog;

    AppSettings m_settings;
    FilterState m_filter;
    SelectionKeeper m_selection;
    bool m_loadingSettings = false;

    // Widgets.
    FilterBar *m_filterBar = nullptr;
    QTableView *m_table = nullptr;
    DetailPanel *m_detailPanel = nullptr;
    RadioPanel *m_radioPanel = nullptr;
    UpdateBar *m_updateBar = nullptr;
    QSplitter *m_splitter = nullptr;
    // The tool bar's short radio state, and the status bar's longer one.
    QLabel *m_toolbarRadioStatus = nullptr;
    QLabel *m_toolbarDxStatus = nullptr;
    QLabel *m_callsignLabel = nullptr;
    QLabel *m_statusBarRadio = nullptr;
    QLabel *m_statusSpots = nullptr;
    QLabel *m_statusRefresh = nullptr;
    QLabel *m_statusBridge = nullptr;
    QLabel *m_statusSources = nullptr;
};
