#pragma once

#include "app/serviceurls.h"
#include "app/settingsfile.h"
#include "model/stationspot.h"
#include "radio/rigtypes.h"

#include <QDateTime>
#include <QList>
#include <QMainWindow>
#include <QSet>

#include <utility>

class DetailPanel;
class DxClusterFetcher;
class FilterBar;
class HamlibController;
class QLabel;
class QSplitter;
class QTableView;
class QThread;
class QTimer;
class SpotFetcher;
class SpotFilterProxyModel;
class StationModel;
class PotaSpotFetcher;
class SotaSpotFetcher;
class WwffSpotFetcher;
class WwbotaSpotFetcher;
class BotaSpotFetcher;
class GmaSpotFetcher;

// The application controller: owns every long-lived object, builds the
// interface, loads the stored state and wires the signals.
class MainWindow final : public QMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainWindow)

public:
    explicit MainWindow(QWidget *parent = nullptr);
    explicit MainWindow(const ServiceUrls &services, QWidget *parent = nullptr);
    ~MainWindow() override;

    StationModel *stationModel() const { return m_model; }
    SpotFilterProxyModel *filterProxy() const { return m_proxy; }
    QTableView *spotTable() const { return m_table; }
    // POTA, SOTA, WWFF, WWBOTA, BOTA, GMA.
    QList<SpotFetcher *> webFetchers() const;
    QList<DxClusterFetcher *> dxFetchers() const { return m_dxFetchers; }
    HamlibController *rigController() const { return m_rig; }
    QTimer *radioPollTimer() const { return m_pollTimer; }
    QTimer *rigReconnectTimer() const { return m_reconnectTimer; }

    QString settingsFilePath() const;
    bool anyDxConnected() const;

public slots:
    void onRefreshAll();
    void saveJsonSettings();

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void onSpotsReady(const QList<StationSpot> &spots);
    void flushDxSpots();
    void onFetchError(const QString &error);
    void onFetchStarted();
    void onDxConnectionChanged(bool connected);
    void onSourceFilterChanged();
    void onModeFilterChanged();
    void onBandFilterChanged();
    void onStatusFilterChanged(int index);
    void onTextFilterChanged(const QString &text);
    void onSelectionChanged();
    void onRadioConnectionChanged(bool connected);
    void onCapabilitiesChanged(const RadioCaps &caps);
    void onRadioStateRead(const RadioState &state);
    void onRadioPollResult(double kHz, const QString &mode);
    void startupChecks();
    void onRigReconnectTick();
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

    void loadJsonSettings();
    void applySettingsToWidgets();
    AppSettings collectSettings() const;

    // The web sources in refresh order: SOTA, POTA, WWFF, WWBOTA, BOTA, GMA.
    QList<std::pair<StationSpot::Source, SpotFetcher *>> webSources() const;
    QSet<QString> bandFilterFromButtons() const;
    void createDxFetchers();
    void updateDxStatusLabel();
    // Merges one batch (or several coalesced DX batches, answers > 1) and
    // updates everything that follows a merge.
    void ingestBatch(const QList<StationSpot> &spots, int answers);
    void updateSpotCounts();
    void restoreSelection(int previousRow);
    void selectProxyRow(int row);
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
    QList<DxClusterFetcher *> m_dxFetchers;
    HamlibController *m_rig;
    QThread *m_rigThread = nullptr;
    QTimer *m_pollTimer;
    QTimer *m_reconnectTimer;

    // Everything persisted that no widget holds.
    AppSettings m_settings;
    bool m_loadingSettings = false;

    // Widgets.
    FilterBar *m_filterBar = nullptr;
    QTableView *m_table = nullptr;
    DetailPanel *m_detailPanel = nullptr;
    QSplitter *m_splitter = nullptr;
    QLabel *m_toolbarRadioStatus = nullptr;
    QLabel *m_toolbarDxStatus = nullptr;
    QLabel *m_callsignLabel = nullptr;
    QLabel *m_statusRadio = nullptr;
    QLabel *m_statusSpots = nullptr;
    QLabel *m_statusRefresh = nullptr;
    QLabel *m_statusBridge = nullptr;

    // Ingestion state.
    int m_pendingFetches = 0;
    QDateTime m_lastRefresh[7];
    int m_lastBatchSize[7] = {};
    QList<StationSpot> m_pendingDxSpots;
    int m_pendingDxBatches = 0;
    QString m_selectedKey;
    bool m_restoringSelection = false;

    // Radio state.
    double m_lastFreqKhz = 0.0;
    QString m_lastMode;
};
