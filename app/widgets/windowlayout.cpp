#include "app/widgets/windowlayout.h"

#include "app/settingsfile.h"
#include "app/widgets/spottable.h"

#include <QHeaderView>
#include <QMainWindow>
#include <QSplitter>

namespace WindowLayout {

void restore(QMainWindow &window, SpotTable &table, QSplitter &splitter, const AppSettings &settings)
{
    table.sortByColumn(settings.sortColumn, settings.sortOrder);
    if (settings.windowGeometry.isEmpty() || !window.restoreGeometry(settings.windowGeometry))
        applyDefaultSize(window);
    if (!settings.windowState.isEmpty())
        window.restoreState(settings.windowState, 0);
    if (!settings.splitterState.isEmpty())
        splitter.restoreState(settings.splitterState);
}

void capture(const QMainWindow &window, const SpotTable &table, const QSplitter &splitter,
             AppSettings &settings)
{
    const QHeaderView *header = table.horizontalHeader();
    if (header->sortIndicatorSection() >= 0)
        settings.sortColumn = header->sortIndicatorSection();
    settings.sortOrder = header->sortIndicatorOrder();
    settings.windowGeometry = window.saveGeometry();
    settings.windowState = window.saveState(0);
    settings.splitterState = splitter.saveState();
}

void applyDefaultSize(QMainWindow &window)
{
    window.resize(1200, 680);
}

} // namespace WindowLayout
