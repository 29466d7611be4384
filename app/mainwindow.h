#pragma once

#include "api/apibackend.h"
#include "api/wsserver.h"
#include "app/coordinatecache.h"
#include "app/dialogs/windowdialogs.h"
#include "app/logexport.h"
#include "app/selectionkeeper.h"
#include "app/serviceurls.h"
#include "app/settingsfile.h"
#include "app/spotingestor.h"
#include "app/stationdesk.h"
#include "app/widgets/alertcenter.h"
#include "app/widgets/filterbar.h"
#include "app/widgets/mainwindowui.h"
#include "app/widgets/radiopanel.h"
#include "app/widgets/radioview.h"
#include "app/widgets/sourcesview.h"
#include "app/widgets/spottable.h"
#include "app/widgets/updatebar.h"
#include "app/widgets/windowlabels.h"
#include "app/widgets/windowlayout.h"
#include "model/filterstate.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "model/stationspot.h"
#include "radio/hamliblink.h"
#include "radio/radiorouter.h"
#include "radio/rigtypes.h"
#include "sources/dxclusterpool.h"

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QList>
#include <QMainWindow>
#include <QStatusBar>

class BotaSpotFetcher;
class DetailPanel;
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
class UpdateChecker;
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
    void apiFilterSet(const QJsonObject &filter) override
    {
        m_filter.mergeApiJson(filter);
        m_ui.filterBar->setState(m_filter);
        applyHideWorked();
        onSourceFilterChanged(); // every filter, the sources' refresh and the DX link; saves; pushes
    }
    bool apiTuneToSpot(const QString &key) override
    {
        const StationSpot spot = spotForKey(key);
        return tuneStation(spot.frequencyKhz, spot.mode, TuneOrigin::Api);
    }
    void apiSetSpotStatus(const QString &key, StationSpot::Status status) override
    {
        m_desk.statusStore().markKey(*m_model, key, status);
        saveJsonSettings();
        m_wsServer->pushSpotStatusChanged(key, status);
    }
    bool apiLogSpot(const QString &key) override { return m_desk.logKey(key, m_settings.callsign); }
    void apiRadioConnect() override
    {
        if (!m_rigLink->isConnected())
            m_rigLink->connectRig(m_settings.rig);
    }
    void apiRadioDisconnect() override { m_rigLink->disconnectRig(); }
    void apiSetRadioFreqKhz(double kHz) override { m_radio->target().setFrequency(kHz); }
    // Always the rig, re-tuning the last known frequency in the new mode.
    void apiSetRadioMode(const QString &mode) override { m_radio->retuneMode(mode, TuneOrigin::Api); }
    void apiSetVolume(int volume) override { m_radio->target().setVolume(volume); }
    void apiSetRfPower(int power) override { m_radio->target().setRfPower(power); }
    void apiSetMute(bool muted) override { m_radio->target().setMute(muted); }
    void apiSetFilter(int filter) override { m_radio->target().setFilter(filter); }
    void apiSetKeySpeed(int wpm) override { m_radio->target().setKeySpeed(wpm); }
    void apiStartTune() override { m_radio->startTune(); }
    void apiRefresh() override { onRefreshAll(); }

public slots:
    void onRefreshAll() { m_ingestor->refreshAll(m_filter); }
    void saveJsonSettings()
    {
        if (m_loadingSettings)
            return;
        m_settings.setFilterState(m_filter);
        m_settings.autoAtu = m_ui.filterBar->autoAtuCheck()->isChecked();
        WindowLayout::capture(*this, *m_ui.table, *m_ui.splitter, m_settings);
        SettingsFile(settingsFilePath()).save(m_settings);
    }

protected:
    void closeEvent(QCloseEvent *event) override
    {
        saveJsonSettings();
        saveSpotSnapshot();
        event->accept();
    }
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void onSpotsReady(const QList<StationSpot> &spots)
    {
        m_alerts->processBatch(spots);
        m_ingestor->receive(spots);
    }
    void onFetchError(const QString &error)
    {
        m_ingestor->noteFetchError();
        m_sourcesView->fetchFailed(error);
    }
    void onFetchStarted()
    {
        m_ingestor->noteFetchStarted();
        m_sourcesView->fetchStarted(sender());
    }
    void onDxConnectionChanged(bool connected) { m_sourcesView->dxConnectionChanged(connected, sender()); }
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
    void onUpdateAvailable(const QString &) { m_ui.updateBar->show(); }
    void onCapabilitiesChanged(const RadioCaps &caps) { m_radioPanel->applyCapabilities(caps); }
    void onRadioStateRead(const RadioState &state) { m_radioPanel->applyState(state); }
    void startupChecks() { m_radio->connectRigLater(1500); } // let the window appear first

private:
    void setupUi();
    void setupMenuBar();
    void setupToolBar()
    {
        m_ui.buildToolBar(*this, m_labels);
        connect(m_ui.toolBarRefreshAll, &QAction::triggered, this, &MainWindow::onRefreshAll);
    }
    void setupCentralWidget();
    void setupStatusBar();
    void applyStyleSheet() { MainWindowUi::applyStyleSheet(); }
    void wireSources();
    void wireRig();
    void wireRadioEvents();
    void wireRadioPanel();
    void startApiServer();
    void startBridge();

    void loadContactStatus() { m_desk.loadStatuses(); }
    void loadCoordCache()
    {
        connect(m_coords, &CoordinateCache::referenceLocated, m_model, &StationModel::setReferenceLocation);
        m_coords->load();
    }
    void loadJsonSettings();
    void applySettingsToWidgets()
    {
        m_ui.filterBar->setState(m_filter);
        m_filter.applyTo(*m_proxy);
        updateSpotCounts();
        WindowLayout::restore(*this, *m_ui.table, *m_ui.splitter, m_settings);
        m_ui.filterBar->autoAtuCheck()->setChecked(m_settings.autoAtu);
    }
    // What the preferences hold, on the model, labels, table and helpers.
    void applyPreferences();
    void applyPersistedStatuses() { m_desk.applyPersistedStatuses(); }
    // Spots of the last session, shown at once until each source answers.
    void loadSpotSnapshot();
    void saveSpotSnapshot() const { m_desk.saveSnapshot(QDateTime::currentMSecsSinceEpoch()); }
    void applyHideWorked() { m_desk.setHideWorked(m_filter.hideWorked); }
    void selectSpot(const QString &key)
    {
        // As a click would: the window comes forward and the row is selected.
        showNormal();
        raise();
        activateWindow();
        const int row = SelectionKeeper::proxyRowForKey(*m_proxy, *m_model, key);
        if (row >= 0)
            m_ui.table->selectViewRow(row);
    }
    void queueCoordLookups(const QList<StationSpot> &batch) { m_coords->queueLookups(batch); }
    void updateSpotCounts() { m_labels.showSpotCounts(m_ingestor->countsText(m_proxy->rowCount())); }

    void createDxFetchers();
    void afterMerge(const QList<StationSpot> &batch);
    // Filter changes: read the bar, apply, count, save (unless only the search changed), push.
    void applyFilter(bool save);
    void markSelected(StationSpot::Status status)
    {
        const QString key = m_selection.selectedKey();
        if (!m_desk.markSelection(key, status))
            return;
        saveJsonSettings();
        m_wsServer->pushSpotStatusChanged(key, status);
        onSelectionChanged();
    }
    void exportLog(const ExportFormat &format)
    {
        const QList<ContactRow> rows = m_desk.exportRows(format.source);
        const QString notice = WindowDialogs::exportLog(
            this, format, rows, LogExport::exportText(format, rows, m_settings.callsign, m_settings.sotaRef));
        if (!notice.isEmpty())
            statusBar()->showMessage(notice, 6000);
    }
    // False when no radio path is up, the frequency is unknown or the program asked.
    bool tuneStation(double kHz, const QString &mode, TuneOrigin origin, bool autoAtu = false)
    {
        return m_radio->tune(kHz, mode, origin, autoAtu);
    }
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
    StationDesk m_desk;
    AlertCenter *m_alerts;
    QTimer *m_snapshotTimer;

    AppSettings m_settings;
    FilterState m_filter;
    SelectionKeeper m_selection;
    bool m_loadingSettings = false;

    // Widgets.
    MainWindowUi m_ui;
    WindowLabels m_labels;
    RadioPanel *m_radioPanel = nullptr;
    RadioView *m_radioView = nullptr;
    SourcesView *m_sourcesView = nullptr;
};
