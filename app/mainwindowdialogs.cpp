#include "app/mainwindow.h"

// The operator's dialogs and exports: each opens, and on OK hands the
// choice to the objects that own it.

#include "api/wsserver.h"
#include "app/dialogs/dxclustersdialog.h"
#include "app/dialogs/lwbridgedialog.h"
#include "app/dialogs/preferencesdialog.h"
#include "app/dialogs/programsdialog.h"
#include "app/dialogs/radiosetupdialog.h"
#include "app/dialogs/windowdialogs.h"
#include "app/logbook/logbookforwarder.h"
#include "app/logexport.h"
#include "app/spotingestor.h"
#include "app/widgets/filterbar.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamliblink.h"
#include "radio/lwclient.h"
#include "radio/radiorouter.h"

#include <QStatusBar>

void MainWindow::onPreferences()
{
    PreferencesDialog dialog(Preferences::fromSettings(m_settings), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const AppSettings before = m_settings;
    dialog.preferences().applyTo(m_settings);
    const AppSettings &s = m_settings;
    m_settings.filter.applyTo(*m_proxy);
    applyPreferences();
    m_ingestor->applySourceChoice(m_settings.filter, s.refreshIntervalSecs);
    m_dxClusters.setCallsign(s.callsign);
    if (s.wsEnabled != before.wsEnabled || s.wsPort != before.wsPort || s.wsHost != before.wsHost) {
        m_wsServer->stopListening();
        startApiServer();
    }
    updateSpotCounts();
    saveJsonSettings();
    m_wsServer->pushConfigChanged();
}

void MainWindow::onRadioSetup()
{
    RigSetupCalls calls = RigSetupCalls::through(*m_rigLink);
    // The dialog's Connect is the operator's: it ends a disconnect's hold.
    calls.connectRig = [this, connectRig = calls.connectRig](const RigConfig &config) {
        m_radio->releaseDisconnectHold();
        return connectRig(config);
    };
    RadioSetupDialog dialog(m_settings.rig, m_rigLink->rigModelsAndWait(),
                            RadioSetupDialog::detectSerialPorts(), calls, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_settings.rig = dialog.rigConfig();
    m_radio->setRigConfig(m_settings.rig);
    m_radio->releaseDisconnectHold();
    saveJsonSettings();
}

void MainWindow::onDxClusterSetup()
{
    DxClustersDialog dialog(m_settings.dxClusters, this);
    dialog.followClients(m_dxClusters);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_settings.dxClusters = dialog.clusters();
    createDxFetchers();
    if (m_settings.filter.isSourceEnabled(StationSpot::DX))
        m_dxClusters.connectAll();
    m_labels.showDxConnected(anyDxConnected());
    saveJsonSettings();
}

void MainWindow::onLwBridgeSetup()
{
    LwBridgeDialog dialog(LwBridgeSettings::fromSettings(m_settings), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const LwBridgeSettings chosen = dialog.settings();
    chosen.applyTo(m_settings);
    m_radio->setBridgeEnabled(chosen.enabled);
    m_lwClient->retarget(chosen.host, chosen.port, chosen.enabled);
    saveJsonSettings();
}

void MainWindow::onProgramsClicked()
{
    ProgramsDialog dialog({m_model->potaPrograms(), m_model->sotaAssociations()},
                          {m_settings.filter.potaPrograms, m_settings.filter.sotaAssociations}, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_settings.filter.potaPrograms = dialog.selection().potaPrograms;
    m_settings.filter.sotaAssociations = dialog.selection().sotaAssociations;
    m_ui.filterBar->setProgramFilterActive(m_settings.filter.hasProgramFilter());
    applyFilter(true);
}

void MainWindow::exportSotaLog()
{
    exportLog(LogExport::sotaFormat());
}

void MainWindow::exportPotaLog()
{
    exportLog(LogExport::potaFormat());
}

void MainWindow::exportLog(const ExportFormat &format)
{
    const QList<ContactRow> rows = m_desk.exportRows(format.source);
    const QString notice = WindowDialogs::exportLog(
        this, format, rows, LogExport::exportText(format, rows, m_settings.callsign, m_settings.sotaRef));
    if (!notice.isEmpty())
        statusBar()->showMessage(notice, 6000);
}

void MainWindow::wireLogbook(const QUrl &qrzUrl)
{
    // Every contact logged, by key, dialog or API, goes on to the operator's logbooks.
    connect(m_logbook, &LogbookForwarder::statusChanged, this,
            [this](const QString &text, const QString &toolTip) { m_labels.showLogbook(text, toolTip); });
    connect(m_logbook, &LogbookForwarder::notice, this,
            [this](const QString &text) { statusBar()->showMessage(text, 10000); });
    m_desk.setLoggedHandler([this](const QList<ContactRecord> &records) { m_logbook->forward(records); });
    if (qrzUrl.isValid())
        m_logbook->setQrzUrl(qrzUrl);
}
