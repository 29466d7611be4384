#pragma once

#include "api/apibackend.h"
#include "app/contactlog.h"
#include "app/contactstatusstore.h"
#include "app/logexport.h"
#include "app/selectionkeeper.h"
#include "app/serviceurls.h"
#include "app/settingsfile.h"
#include "app/spotsnapshot.h"
#include "app/widgets/radiopanel.h"
#include "app/widgets/radioview.h"
#include "app/widgets/windowlabels.h"
#include "app/workedindex.h"
#include "model/filterstate.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "model/stationspot.h"
#include "radio/hamliblink.h"
#include "radio/radiorouter.h"
#include "radio/rigtypes.h"
#include "sources/dxclusterpool.h"

#include <QList>
#include <QMainWindow>

class AlertCenter;
class BotaSpotFetcher;
class CoordinateCache;
class DetailPanel;
class FilterBar;
class GmaSpotFetcher;
class HamlibController;
class LwClient;
class PotaSpotFetcher;
class QNetworkAccessManager;
class QSplitter;
class QThread;
class QTimer;
class SotaSpotFetcher;
class SourceHealth;
class SpotIngestor;
class SpotTable;
class UpdateBar;
class UpdateChecker;
class WsServer;
class WwbotaSpotFetcher;
class WwffSpotFetcher;
struct ExportFormat;

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
    bool isLwBridgeActive() const { return m_radio->isBridgeActive(); }

    // The functions behind the WebSocket API.
    bool apiIsRadioConnected() const override { return m_rigLink->isConnected(); }
    double apiRadioFreqKhz() const override { return m_radio->lastFreqKhz(); }
    QString apiRadioMode() const override { return m_radio->lastMode(); }
    QString apiCallsign() const override { return m_settings.callsign; }
    int apiVisibleSpotCount() const override { return m_proxy->rowCount(); }
    int apiTotalSpotCount() const override { return m_model->rowCount(); }
    QList<StationSpot> apiVisibleSpots() const override
    {
        return SelectionKeeper::visibleSpots(*m_proxy, *m_model);
    }
    QList<StationSpot> apiAllSpots() const override { return m_model->spots(); }
    QJsonObject apiConfigGet() const override { return m_settings.apiConfig(); }
    void apiConfigSet(const QJsonObject &config) override;
    QJsonObject apiFilterGet() const override { return m_filter.toApiJson(); }
    void apiFilterSet(const QJsonObject &filter) override;
    bool apiTuneToSpot(const QString &key) override;
    void apiSetSpotStatus(const QString &key, StationSpot::Status status) override;
    bool apiLogSpot(const QString &key) override;
    void apiRadioConnect() override;
    void apiRadioDisconnect() override { m_rigLink->disconnectRig(); }
    void apiSetRadioFreqKhz(double kHz) override { m_radio->target().setFrequency(kHz); }
    // Always the rig, re-tuning the last known frequency in the new mode.
    void apiSetRadioMode(const QString &mode) override { m_rigLink->tune(m_radio->lastFreqKhz(), mode); }
    void apiSetVolume(int volume) override { m_radio->target().setVolume(volume); }
    void apiSetRfPower(int power) override { m_radio->target().setRfPower(power); }
    void apiSetMute(bool muted) override { m_radio->target().setMute(muted); }
    void apiSetFilter(int filter) override { m_radio->target().setFilter(filter); }
    void apiSetKeySpeed(int wpm) override { m_radio->target().setKeySpeed(wpm); }
    void apiStartTune() override { m_radio->startTune(); }
    void apiRefresh() override { onRefreshAll(); }

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
    void onSelectionChanged();
    void onTuneClicked();
    void onMarkHeard() { markSelected(StationSpot::Heard); }
    void onMarkUnheard() { markSelected(StationSpot::NotHeard); }
    void onAddToLog();
    void exportSotaLog() { exportLog(LogExport::sotaFormat()); }
    void exportPotaLog() { exportLog(LogExport::potaFormat()); }
    void onPreferences();
    void onRadioSetup();
    void onDxClusterSetup();
    void onLwBridgeSetup();
    void onProgramsClicked();
    void onUpdateAvailable(const QString &buildTime);
    void onRadioConnectionChanged(bool connected) { m_radioView->rigConnectionChanged(connected); }
    void onCapabilitiesChanged(const RadioCaps &caps) { m_radioPanel->applyCapabilities(caps); }
    void onRadioStateRead(const RadioState &state) { m_radioPanel->applyState(state); }
    void onRadioPollResult(double kHz, const QString &mode) { m_radioView->rigPolled(kHz, mode); }
    void onLwConnected() { m_radioView->bridgeLinked(); }
    void onLwDisconnected() { m_radioView->bridgeUnlinked(); }
    void onLwRadioFrequency(double kHz, const QString &mode) { m_radioView->bridgeFrequency(kHz, mode); }
    void onLwRadioConnectedChanged(bool connected)
    {
        m_radioView->bridgeRigChanged(connected, m_settings.lwEnabled);
    }
    void startupChecks() { m_radio->connectRigLater(1500); } // let the window appear first

private:
    void setupUi();
    void setupMenuBar();
    void setupToolBar();
    void setupCentralWidget();
    void setupStatusBar();
    void applyStyleSheet();
    void wireSources();
    void wireRig();
    void wireRadioPanel();
    void startApiServer();
    void startBridge();

    void loadContactStatus() { m_statusStore.load(ContactStatusStore::defaultFilePath()); }
    void loadCoordCache();
    void loadJsonSettings();
    void applySettingsToWidgets();
    // What the preferences hold, on the model, labels, table and helpers.
    void applyPreferences();
    void applyPersistedStatuses() { m_statusStore.applyTo(*m_model); }
    // Spots of the last session, shown at once until each source answers.
    void loadSpotSnapshot();
    void saveSpotSnapshot() const;
    void applyHideWorked();
    void noteLogged(const StationSpot &spot);
    void selectSpot(const QString &key);
    void queueCoordLookups(const QList<StationSpot> &batch);
    void updateSpotCounts();

    void createDxFetchers();
    void afterMerge(const QList<StationSpot> &batch);
    // Filter changes: read the bar, apply, count, save (unless only the search changed), push.
    void applyFilter(bool save);
    void markSelected(StationSpot::Status status);
    void exportLog(const ExportFormat &format);
    void tuneStation(double kHz, const QString &mode) { m_radioView->tuned(kHz, m_radio->tune(kHz, mode)); }
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
    SourceHealth *m_sourceHealth;
    ContactStatusStore m_statusStore;
    ContactLog m_contactLog;
    WorkedIndex m_worked;
    SpotSnapshot m_snapshot;
    AlertCenter *m_alerts;
    QTimer *m_snapshotTimer;

    AppSettings m_settings;
    FilterState m_filter;
    SelectionKeeper m_selection;
    bool m_loadingSettings = false;

    // Widgets.
    WindowLabels m_labels;
    FilterBar *m_filterBar = nullptr;
    SpotTable *m_table = nullptr;
    DetailPanel *m_detailPanel = nullptr;
    RadioPanel *m_radioPanel = nullptr;
    RadioView *m_radioView = nullptr;
    UpdateBar *m_updateBar = nullptr;
    QSplitter *m_splitter = nullptr;
};
