#include "app/widgets/mapdocks.h"

#include "app/settingsfile.h"
#include "app/widgets/bandmapview.h"
#include "app/widgets/mapview.h"
#include "model/bandplan.h"
#include "radio/radiorouter.h"
#include "sources/dxcc.h"

#include <QAction>
#include <QDockWidget>
#include <QMainWindow>
#include <QMenu>
#include <QSet>

namespace {

// The IARU region follows the continent, except that the Middle East, the
// former Soviet republics and Mongolia belong to Region 1 though in Asia.
int regionOfCall(const QString &callsign)
{
    static const QSet<QString> asiaInRegionOne = {
        QStringLiteral("Armenia"),
        QStringLiteral("Azerbaijan"),
        QStringLiteral("Bahrain"),
        QStringLiteral("Cyprus"),
        QStringLiteral("Georgia"),
        QStringLiteral("Iraq"),
        QStringLiteral("Israel"),
        QStringLiteral("Jordan"),
        QStringLiteral("Kazakhstan"),
        QStringLiteral("Kuwait"),
        QStringLiteral("Kyrgyzstan"),
        QStringLiteral("Lebanon"),
        QStringLiteral("Mongolia"),
        QStringLiteral("Oman"),
        QStringLiteral("Palestinian Authority"),
        QStringLiteral("Qatar"),
        QStringLiteral("Russia"),
        QStringLiteral("Saudi Arabia"),
        QStringLiteral("Syria"),
        QStringLiteral("Tajikistan"),
        QStringLiteral("Turkey"),
        QStringLiteral("Turkmenistan"),
        QStringLiteral("UK Sovereign Bases Cyprus"),
        QStringLiteral("United Arab Emirates"),
        QStringLiteral("Uzbekistan"),
        QStringLiteral("Yemen"),
    };
    if (asiaInRegionOne.contains(dxEntityForCallsign(callsign)))
        return 1;
    return BandPlan::regionForContinent(dxContinentForCallsign(callsign));
}

QDockWidget *makeDock(QMainWindow &window, const QString &title, const char *objectName, QWidget *view,
                      Qt::DockWidgetArea area)
{
    auto *dock = new QDockWidget(title, &window);
    dock->setObjectName(QLatin1String(objectName)); // the key saveState() files it under
    dock->setWidget(view);
    window.addDockWidget(area, dock);
    dock->hide(); // until the operator asks for it, or the saved layout has it
    return dock;
}

} // namespace

MapDocks::MapDocks(QMainWindow &window, SpotFilterProxyModel *proxy, QMenu *viewMenu)
    : QObject(&window)
    , m_mapView(new MapView(proxy))
    , m_bandMapView(new BandMapView(proxy))
    , m_mapDock(makeDock(window, QStringLiteral("Map"), "mapDock", m_mapView, Qt::BottomDockWidgetArea))
    , m_bandMapDock(
          makeDock(window, QStringLiteral("Band Map"), "bandMapDock", m_bandMapView, Qt::RightDockWidgetArea))
{
    mapAction()->setText(QStringLiteral("&Map"));
    bandMapAction()->setText(QStringLiteral("&Band Map"));
    if (viewMenu) {
        viewMenu->addAction(mapAction());
        viewMenu->addAction(bandMapAction());
    }
    connect(m_mapView, &MapView::spotActivated, this, &MapDocks::spotActivated);
    connect(m_bandMapView, &BandMapView::spotActivated, this, &MapDocks::spotActivated);
    connect(m_bandMapView, &BandMapView::tuneRequested, this, &MapDocks::tuneRequested);
    connect(m_mapDock, &QDockWidget::visibilityChanged, this, &MapDocks::onMapVisibility);
}

MapDocks::~MapDocks() = default;

QAction *MapDocks::mapAction() const
{
    return m_mapDock->toggleViewAction();
}

QAction *MapDocks::bandMapAction() const
{
    return m_bandMapDock->toggleViewAction();
}

void MapDocks::setSelectedKey(const QString &key)
{
    m_mapView->setSelectedKey(key);
    m_bandMapView->setSelectedKey(key);
}

void MapDocks::applySettings(const AppSettings &settings)
{
    if (settings.hasUserLocation)
        m_mapView->setOwnPosition(settings.latitude, settings.longitude);
    else
        m_mapView->clearOwnPosition();
    m_bandMapView->setRegion(regionFor(settings.bandPlanRegion, settings.callsign));
}

void MapDocks::followRadio(const RadioRouter *radio)
{
    connect(radio, &RadioRouter::frequencyChanged, m_bandMapView,
            [this](double kHz) { m_bandMapView->setRigFrequency(kHz); });
    // Gone when the path that reported it goes and no other has the radio.
    const auto lost = [this, radio] {
        if (!radio->isBridgeActive() && !radio->isRigConnected())
            m_bandMapView->setRigFrequency(0.0);
    };
    connect(radio, &RadioRouter::rigDisconnected, m_bandMapView, lost);
    connect(radio, &RadioRouter::bridgeUnlinked, m_bandMapView, lost);
}

int MapDocks::regionFor(int setting, const QString &callsign)
{
    if (setting >= 1 && setting <= 3)
        return setting;
    return regionOfCall(callsign);
}

void MapDocks::onMapVisibility(bool visible)
{
    if (visible == m_mapShown)
        return;
    m_mapShown = visible;
    emit mapShownChanged(visible);
}
