#include "app/mainwindow.h"

// The operator's dialogs and exports: each opens, and on OK hands the
// choice to the objects that own it.

#include "api/wsserver.h"
#include "app/dialogs/contactsexportdialog.h"
#include "app/dialogs/dxclustersdialog.h"
#include "app/dialogs/logcontactdialog.h"
#include "app/dialogs/lwbridgedialog.h"
#include "app/dialogs/preferencesdialog.h"
#include "app/dialogs/programsdialog.h"
#include "app/dialogs/radiosetupdialog.h"
#include "app/dialogs/windowdialogs.h"
#include "app/logbook/logbookforwarder.h"
#include "app/logbook/workedimport.h"
#include "app/logexport.h"
#include "app/radiostation.h"
#include "app/spotingestor.h"
#include "app/spotsources.h"
#include "app/tallisdir.h"
#include "app/widgets/detailpanel.h"
#include "app/widgets/filterbar.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamliblink.h"
#include "radio/radiorouter.h"

#include <QDir>
#include <QFileDialog>
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
    m_sources->ingestor()->applySourceChoice(m_settings.filter, s.refreshIntervalSecs);
    m_sources->setCallsign(s.callsign);
    m_sources->applyRbnChoice(m_settings);
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
    RigSetupCalls calls = RigSetupCalls::through(*m_radio->link());
    // The dialog's Connect is the operator's: it ends a disconnect's hold.
    calls.connectRig = [this, connectRig = calls.connectRig](const RigConfig &config) {
        m_radio->router()->releaseDisconnectHold();
        return connectRig(config);
    };
    RadioSetupDialog dialog(m_settings.rig, m_radio->link()->rigModelsAndWait(),
                            RadioSetupDialog::detectSerialPorts(), calls, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_settings.rig = dialog.rigConfig();
    m_radio->router()->setRigConfig(m_settings.rig);
    m_radio->router()->releaseDisconnectHold();
    saveJsonSettings();
}

void MainWindow::onDxClusterSetup()
{
    DxClustersDialog dialog(m_settings.dxClusters, this);
    dialog.followClients(m_sources->dxClusters());
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_settings.dxClusters = dialog.clusters();
    createDxFetchers();
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
    m_radio->retargetBridge(chosen.host, chosen.port, chosen.enabled);
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

void MainWindow::exportSotaLog()
{
    exportLog(LogExport::sotaFormat());
}

void MainWindow::exportPotaLog()
{
    exportLog(LogExport::potaFormat());
}

void MainWindow::exportAllContacts()
{
    const AdifStation station{m_settings.callsign, m_settings.hasUserLocation, m_settings.latitude,
                              m_settings.longitude};
    const QString notice =
        ContactsExportDialog::run(this, tallisDirPath(), station, QDateTime::currentDateTimeUtc());
    if (!notice.isEmpty())
        statusBar()->showMessage(notice, 6000);
}

void MainWindow::logSelected(bool confirm)
{
    const QString key = m_selection.selectedKey();
    const std::optional<QList<RecordEdit>> edits =
        confirm ? confirmLogEdits(key) : std::optional<QList<RecordEdit>>(QList<RecordEdit>());
    if (!edits)
        return;
    const QString notice = m_desk.logSelection(key, m_settings.callsign, *edits);
    if (notice.isEmpty())
        return;
    saveJsonSettings();
    m_wsServer->pushSpotStatusChanged(key, StationSpot::Contacted);
    statusBar()->showMessage(notice, 6000);
    onSelectionChanged(false); // the panel and buttons anew; the radio stays where it is
}

std::optional<QList<RecordEdit>> MainWindow::confirmLogEdits(const QString &key)
{
    const QList<ContactRecord> records = m_desk.selectionRecords(key, m_settings.callsign);
    if (records.isEmpty())
        return std::nullopt;
    LogContactDialog dialog(records, this);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.edits();
}

void MainWindow::importWorkedLogbook()
{
    const QStringList paths = QFileDialog::getOpenFileNames(
        this, QStringLiteral("Import Logbook for Worked Before"), QDir::homePath(),
        QStringLiteral("ADIF files (*.adi *.adif *.ADI *.ADIF);;All files (*)"));
    if (paths.isEmpty())
        return;
    m_settings.workedAdifFiles = paths;
    saveJsonSettings();
    readWorkedLogbook();
}

void MainWindow::wireWorkedImport()
{
    m_workedImport = new WorkedImportLoader(this);
    connect(m_workedImport, &WorkedImportLoader::loaded, this,
            [this](std::shared_ptr<const WorkedTable> table, const WorkedImportSummary &summary) {
                m_desk.setImportedWorked(std::move(table));
                updateSpotCounts();
                if (m_selection.hasSelection())
                    m_ui.detailPanel->showWorked(
                        m_desk.worked().detailText(spotForKey(m_selection.selectedKey())));
                statusBar()->showMessage(summary.message());
            });
    if (!m_settings.workedAdifFiles.isEmpty())
        readWorkedLogbook();
}

void MainWindow::readWorkedLogbook()
{
    statusBar()->showMessage(QStringLiteral("Reading your logbook for worked before…"));
    m_workedImport->load(m_settings.workedAdifFiles);
}
