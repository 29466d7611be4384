#include "app/mainwindow.h"

// The map and band map docks' wiring: a pick in either view is the
// operator's selection, a click on the band map's scale tunes, and the map
// being shown is reason enough to look up positions.

#include "app/coordinatecache.h"
#include "app/radiostation.h"
#include "app/widgets/mapdocks.h"
#include "app/widgets/spottable.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/radiocontrol.h"
#include "radio/radiorouter.h"

void MainWindow::setupMapDocks()
{
    m_mapDocks = new MapDocks(*this, m_proxy, m_ui.viewMenu);
    connect(m_mapDocks, &MapDocks::spotActivated, this, &MainWindow::selectSpotByOperator);
    // A frequency alone: the rig keeps the mode it is in.
    connect(m_mapDocks, &MapDocks::tuneRequested, this,
            [this](double kHz) { m_radio->router()->target().setFrequency(kHz); });
    connect(m_mapDocks, &MapDocks::mapShownChanged, this, &MainWindow::updateCoordLookups);
}

void MainWindow::selectSpotByOperator(const QString &key)
{
    const int row = SelectionKeeper::proxyRowForKey(*m_proxy, *m_model, key);
    if (row >= 0)
        m_ui.table->selectViewRow(row, true);
}

void MainWindow::updateCoordLookups()
{
    const bool wasOn = m_coords->lookupsEnabled();
    m_coords->setLookupsEnabled(m_settings.hasUserLocation || m_mapDocks->isMapShown());
    // The spots that came while nobody needed their positions.
    if (!wasOn && m_coords->lookupsEnabled())
        queueCoordLookups(m_model->spots());
}
