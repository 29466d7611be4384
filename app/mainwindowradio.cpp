#include "app/mainwindow.h"

// The radio's wiring to the window: the radio panel's controls, the API's
// radio events, and the window's tune requests, which the router decides.

#include "api/wsserver.h"
#include "app/dialogs/windowdialogs.h"
#include "app/radiostation.h"
#include "app/widgets/detailpanel.h"
#include "app/widgets/filterbar.h"
#include "app/widgets/mapdocks.h"
#include "app/widgets/radiopanel.h"
#include "radio/hamliblink.h"
#include "radio/radiorouter.h"

#include <QStatusBar>

void MainWindow::wireRadioEvents()
{
    const RadioRouter *radio = m_radio->router();
    connect(radio, &RadioRouter::rigConnected, m_wsServer, &WsServer::pushRadioConnected);
    connect(radio, &RadioRouter::rigDisconnected, m_wsServer, &WsServer::pushRadioDisconnected);
    connect(radio, &RadioRouter::frequencyChanged, m_wsServer, &WsServer::pushRadioFrequency);
    connect(radio, &RadioRouter::bridgeLinked, m_wsServer, &WsServer::pushLwConnected);
    connect(radio, &RadioRouter::bridgeUnlinked, m_wsServer, &WsServer::pushLwDisconnected);
    m_mapDocks->followRadio(m_radio->router());
}

void MainWindow::wireRadioPanel()
{
    RadioPanel *panel = m_ui.detailPanel->radioPanel();
    connect(m_radio, &RadioStation::capabilitiesChanged, this, &MainWindow::onCapabilitiesChanged);
    connect(m_radio, &RadioStation::radioStateRead, this, &MainWindow::onRadioStateRead);
    panel->attachAutoAtuCheck(m_ui.filterBar->autoAtuCheck());
    panel->driveRig(m_radio->link());
    connect(panel, &RadioPanel::tuneAtuClicked, this, [this] {
        m_radio->router()->startRigTune();
        statusBar()->showMessage(QStringLiteral("ATU tuning cycle started."), 4000);
    });
    connect(panel, &RadioPanel::autoAtuToggled, this, [this](bool on) {
        m_settings.autoAtu = on;
        saveJsonSettings(); // skipped while the settings are being loaded
    });
}

void MainWindow::onTuneClicked()
{
    if (!m_selection.hasSelection())
        return;
    if (!isLwBridgeActive() && !m_radio->link()->isConnected()) {
        if (WindowDialogs::askToConfigureRadio(this))
            onRadioSetup();
        return;
    }
    const StationSpot spot = spotForKey(m_selection.selectedKey());
    tuneStation(spot.frequencyKhz, spot.mode, TuneOrigin::Operator);
}

bool MainWindow::tuneStation(double kHz, const QString &mode, TuneOrigin origin, bool autoAtu)
{
    return m_radio->router()->tune(kHz, mode, origin, autoAtu);
}

void MainWindow::onCapabilitiesChanged(const RadioCaps &caps)
{
    m_ui.detailPanel->radioPanel()->applyCapabilities(caps);
}

void MainWindow::onRadioStateRead(const RadioState &state)
{
    m_ui.detailPanel->radioPanel()->applyState(state);
}

void MainWindow::startupChecks()
{
    m_radio->router()->connectRigLater(1500); // let the window appear first
}
