#include "app/mainwindow.h"

// The radio's wiring: the rig's worker thread, the bridge, the radio panel,
// and the window's tune requests, which the router decides.

#include "api/wsserver.h"
#include "app/dialogs/windowdialogs.h"
#include "app/widgets/detailpanel.h"
#include "app/widgets/filterbar.h"
#include "app/widgets/mapdocks.h"
#include "app/widgets/radiopanel.h"
#include "radio/hamlibcontroller.h"
#include "radio/hamliblink.h"
#include "radio/lwclient.h"
#include "radio/radiorouter.h"

#include <QStatusBar>

void MainWindow::wireRig()
{
    connect(m_rig, &HamlibController::capabilitiesChanged, this, &MainWindow::onCapabilitiesChanged);
    connect(m_rig, &HamlibController::radioStateRead, this, &MainWindow::onRadioStateRead);
    connect(m_rig, &HamlibController::error, this,
            [this](const QString &message) { statusBar()->showMessage(message, 5000); });

    m_rigLink->startWorkerThread(this);
}

void MainWindow::wireRadioEvents()
{
    connect(m_radio, &RadioRouter::rigConnected, m_wsServer, &WsServer::pushRadioConnected);
    connect(m_radio, &RadioRouter::rigDisconnected, m_wsServer, &WsServer::pushRadioDisconnected);
    connect(m_radio, &RadioRouter::frequencyChanged, m_wsServer, &WsServer::pushRadioFrequency);
    connect(m_radio, &RadioRouter::bridgeLinked, m_wsServer, &WsServer::pushLwConnected);
    connect(m_radio, &RadioRouter::bridgeUnlinked, m_wsServer, &WsServer::pushLwDisconnected);
    m_mapDocks->followRadio(m_radio);
}

void MainWindow::wireRadioPanel()
{
    m_radioPanel = m_ui.detailPanel->radioPanel();
    m_radioPanel->attachAutoAtuCheck(m_ui.filterBar->autoAtuCheck());
    m_radioPanel->driveRig(m_rigLink);
    connect(m_radioPanel, &RadioPanel::tuneAtuClicked, this, [this] {
        m_radio->startRigTune();
        statusBar()->showMessage(QStringLiteral("ATU tuning cycle started."), 4000);
    });
    connect(m_radioPanel, &RadioPanel::autoAtuToggled, this, [this](bool on) {
        m_settings.autoAtu = on;
        saveJsonSettings(); // skipped while the settings are being loaded
    });
}

void MainWindow::startBridge()
{
    m_lwClient = new LwClient(this);
    m_lwClient->setTarget(m_settings.lwHost, m_settings.lwPort);
    m_radio->setBridge(m_lwClient);
    m_radio->setBridgeEnabled(m_settings.lwEnabled);
    if (m_settings.lwEnabled)
        m_lwClient->setEnabled(true);
}

void MainWindow::onTuneClicked()
{
    if (!m_selection.hasSelection())
        return;
    if (!isLwBridgeActive() && !m_rigLink->isConnected()) {
        if (WindowDialogs::askToConfigureRadio(this))
            onRadioSetup();
        return;
    }
    const StationSpot spot = spotForKey(m_selection.selectedKey());
    m_radio->tune(spot.frequencyKhz, spot.mode, TuneOrigin::Operator);
}

void MainWindow::onCapabilitiesChanged(const RadioCaps &caps)
{
    m_radioPanel->applyCapabilities(caps);
}

void MainWindow::onRadioStateRead(const RadioState &state)
{
    m_radioPanel->applyState(state);
}

void MainWindow::startupChecks()
{
    m_radio->connectRigLater(1500); // let the window appear first
}
