#include "app/mainwindow.h"

// The functions behind the WebSocket API: each hands the request to the
// object that owns its concern.

#include "api/wsserver.h"
#include "app/radiostation.h"
#include "app/spotingestor.h"
#include "app/spotsources.h"
#include "app/widgets/filterbar.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamliblink.h"
#include "radio/radiorouter.h"

#include <QJsonObject>

bool MainWindow::apiIsRadioConnected() const
{
    return m_radio->link()->isConnected();
}

double MainWindow::apiRadioFreqKhz() const
{
    return m_radio->router()->lastFreqKhz();
}

QString MainWindow::apiRadioMode() const
{
    return m_radio->router()->lastMode();
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
    return SelectionKeeper::visibleSpots(*m_proxy, *m_model);
}

QList<StationSpot> MainWindow::apiAllSpots() const
{
    return m_model->spots();
}

void MainWindow::apiFilterSet(const QJsonObject &filter)
{
    m_settings.filter.mergeApiJson(filter);
    m_ui.filterBar->setState(m_settings.filter);
    applyHideWorked();
    onSourceFilterChanged(); // every filter, the sources' refresh and the DX link; saves; pushes
}

bool MainWindow::apiTuneToSpot(const QString &key)
{
    const StationSpot spot = spotForKey(key);
    return tuneStation(spot.frequencyKhz, spot.mode, TuneOrigin::Api);
}

void MainWindow::apiSetSpotStatus(const QString &key, StationSpot::Status status)
{
    m_desk.statusStore().markKey(*m_model, key, status);
    saveJsonSettings();
    m_wsServer->pushSpotStatusChanged(key, status);
}

void MainWindow::apiRadioConnect()
{
    if (!m_radio->link()->isConnected())
        m_radio->router()->connectRig();
    else
        m_radio->router()->releaseDisconnectHold();
}

void MainWindow::apiRadioDisconnect()
{
    m_radio->router()->disconnectRig();
}

void MainWindow::apiSetRadioFreqKhz(double kHz)
{
    m_radio->router()->target().setFrequency(kHz);
}

void MainWindow::apiSetRadioMode(const QString &mode)
{
    // Always the rig, re-tuning the last known frequency in the new mode.
    m_radio->router()->retuneMode(mode, TuneOrigin::Api);
}

void MainWindow::apiSetVolume(int volume)
{
    m_radio->router()->target().setVolume(volume);
}

void MainWindow::apiSetRfPower(int power)
{
    m_radio->router()->target().setRfPower(power);
}

void MainWindow::apiSetMute(bool muted)
{
    m_radio->router()->target().setMute(muted);
}

void MainWindow::apiSetFilter(int filter)
{
    m_radio->router()->target().setFilter(filter);
}

void MainWindow::apiSetKeySpeed(int wpm)
{
    m_radio->router()->target().setKeySpeed(wpm);
}

void MainWindow::apiStartTune()
{
    m_radio->router()->startTune();
}

void MainWindow::apiConfigSet(const QJsonObject &config)
{
    // The command has clamped the values already.
    if (config.contains(QStringLiteral("maxAgeMins"))) {
        m_settings.filter.maxAgeMins = config.value(QStringLiteral("maxAgeMins")).toInt();
        m_settings.filter.applyTo(*m_proxy);
        updateSpotCounts();
    }
    if (config.contains(QStringLiteral("refreshIntervalSecs"))) {
        m_settings.refreshIntervalSecs = config.value(QStringLiteral("refreshIntervalSecs")).toInt();
        m_sources->ingestor()->applySourceChoice(m_settings.filter, m_settings.refreshIntervalSecs);
    }
    saveJsonSettings();
    m_wsServer->pushConfigChanged();
}
