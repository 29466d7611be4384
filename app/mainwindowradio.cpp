#include "app/mainwindow.h"

// The radio's wiring: the rig's worker thread, the bridge, the radio panel,
// and the window's tune requests, which the router decides.

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

void MainWindow::wireRig()
{
    connect(m_radio, &RadioStation::capabilitiesChanged, m_radioPanel, &RadioPanel::applyCapabilities);
    connect(m_radio, &RadioStation::radioStateRead, m_radioPanel, &RadioPanel::applyState);
    connect(m_radio, &RadioStation::rigError, this,
            [this](const QString &message) { statusBar()->showMessage(message, 5000); });
    m_radio->startWorker();
}

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
    m_radioPanel = m_ui.detailPanel->radioPanel();
    m_radioPanel->attachAutoAtuCheck(m_ui.filterBar->autoAtuCheck());
    m_radioPanel->driveRig(m_radio->link());
    connect(m_radioPanel, &RadioPanel::tuneAtuClicked, this, [this] {
        m_radio->router()->startRigTune();
        statusBar()->showMessage(QStringLiteral("ATU tuning cycle started."), 4000);
    });
    connect(m_radioPanel, &RadioPanel::autoAtuToggled, this, [this](bool on) {
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
    m_radio->router()->tune(spot.frequencyKhz, spot.mode, TuneOrigin::Operator);
}

void MainWindow::startupChecks()
{
    m_radio->router()->connectRigLater(1500); // let the window appear first
}
