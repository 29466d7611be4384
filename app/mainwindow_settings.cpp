// Moving the settings file's record into the window's widgets and back.
#include "app/filterbar.h"
#include "app/mainwindow.h"
#include "model/bands.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSet>
#include <QSplitter>
#include <QTableView>

namespace {
QSet<QString> toSet(const QStringList &list)
{
    return QSet<QString>(list.cbegin(), list.cend());
}
} // namespace

QString MainWindow::settingsFilePath() const
{
    return ::settingsFilePath();
}

void MainWindow::loadJsonSettings()
{
    m_loadingSettings = true;
    m_settings = SettingsFile(settingsFilePath()).load();
    if (!m_settings.fileExisted) {
        m_loadingSettings = false;
        resize(1200, 680);
        return;
    }
    applySettingsToWidgets();
    m_loadingSettings = false;
}

void MainWindow::applySettingsToWidgets()
{
    const AppSettings &s = m_settings;
    if (!s.callsign.isEmpty())
        m_callsignLabel->setText(QStringLiteral("DE: %1").arg(s.callsign));

    m_proxy->setMaxAgeMins(s.maxAgeMins);

    for (int source = 0; source < AppSettings::k_sourceCount; ++source)
        m_filterBar->setSourceEnabled(static_cast<StationSpot::Source>(source), s.sources[source]);
    for (int mode = 0; mode < AppSettings::k_modeCount; ++mode)
        m_filterBar->setModeEnabled(static_cast<FilterBar::ModeClass>(mode), s.modes[mode]);
    m_filterBar->statusCombo()->setCurrentIndex(s.statusFilter);

    // Unknown names in the list match no button and are ignored.
    const QSet<QString> disabled = toSet(s.disabledBands);
    for (QPushButton *button : m_filterBar->bandButtons())
        button->setChecked(!disabled.contains(button->text()));
    // The same rule as a click on a band button, so a restored filter behaves alike.
    m_proxy->setBandFilter(bandFilterFromButtons());

    m_proxy->setPotaPrograms(toSet(s.potaPrograms));
    m_proxy->setSotaAssociations(toSet(s.sotaAssociations));
    m_model->setWatchCallsigns(s.watchCallsigns);
    m_model->setWatchReferences(s.watchReferences);
    m_filterBar->setProgramFilterActive(!s.potaPrograms.isEmpty() || !s.sotaAssociations.isEmpty());

    onSourceFilterChanged();
    onModeFilterChanged();
    m_proxy->setStatusFilter(m_filterBar->statusFilterValue());
    updateSpotCounts();

    m_table->sortByColumn(s.sortColumn, s.sortOrder);

    if (s.windowGeometry.isEmpty())
        resize(1200, 680);
    else
        restoreGeometry(s.windowGeometry);
    if (!s.windowState.isEmpty())
        restoreState(s.windowState, 0);
    if (!s.splitterState.isEmpty())
        m_splitter->restoreState(s.splitterState);

    if (s.hasUserLocation)
        m_model->setUserLocation(s.latitude, s.longitude);
    m_table->setColumnHidden(8, !s.hasUserLocation);
    m_table->setColumnHidden(9, !s.hasUserLocation);

    m_filterBar->autoAtuCheck()->setChecked(s.autoAtu);
}

AppSettings MainWindow::collectSettings() const
{
    AppSettings s = m_settings;
    for (int source = 0; source < AppSettings::k_sourceCount; ++source)
        s.sources[source] = m_filterBar->isSourceEnabled(static_cast<StationSpot::Source>(source));
    for (int mode = 0; mode < AppSettings::k_modeCount; ++mode)
        s.modes[mode] = m_filterBar->isModeEnabled(static_cast<FilterBar::ModeClass>(mode));
    s.statusFilter = m_filterBar->statusCombo()->currentIndex();
    if (m_table->horizontalHeader()->sortIndicatorSection() >= 0)
        s.sortColumn = m_table->horizontalHeader()->sortIndicatorSection();
    s.sortOrder = m_table->horizontalHeader()->sortIndicatorOrder();
    s.disabledBands.clear();
    for (QPushButton *button : m_filterBar->bandButtons()) {
        if (!button->isChecked())
            s.disabledBands.append(button->text());
    }
    s.autoAtu = m_filterBar->autoAtuCheck()->isChecked();
    s.windowGeometry = saveGeometry();
    s.windowState = saveState(0);
    s.splitterState = m_splitter->saveState();
    return s;
}

void MainWindow::saveJsonSettings()
{
    // Widgets fire change signals while the file is being applied; saving then
    // would write a half-loaded state over the real one.
    if (m_loadingSettings)
        return;
    m_settings = collectSettings();
    SettingsFile(settingsFilePath()).save(m_settings);
}
