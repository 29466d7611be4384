#pragma once

#include <QObject>
#include <QString>

class BandMapView;
class MapView;
class QAction;
class QDockWidget;
class QMainWindow;
class QMenu;
class RadioRouter;
class SpotFilterProxyModel;
struct AppSettings;

// The map and the band map over the filtered table, each in a dock the
// operator shows, hides and places; the window's saved state keeps where.
// Both start hidden. The menu entries are the docks' own toggle actions.
class MapDocks final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MapDocks)

public:
    // Adds the docks to the window and their entries to viewMenu.
    MapDocks(QMainWindow &window, SpotFilterProxyModel *proxy, QMenu *viewMenu);
    ~MapDocks() override;

    QDockWidget *mapDock() const { return m_mapDock; }
    QDockWidget *bandMapDock() const { return m_bandMapDock; }
    MapView *mapView() const { return m_mapView; }
    BandMapView *bandMapView() const { return m_bandMapView; }
    QAction *mapAction() const;
    QAction *bandMapAction() const;

    // Whether the map is on the screen (a tab behind another dock is not).
    bool isMapShown() const { return m_mapShown; }

    void setSelectedKey(const QString &key);
    // The operator's position and band plan region.
    void applySettings(const AppSettings &settings);
    // The rig's frequency as the band map's marker, gone with the radio.
    void followRadio(const RadioRouter *radio);

    // The region a setting of 0 stands for: the one of the call's continent, else 2.
    static int regionFor(int setting, const QString &callsign);

signals:
    // The operator picked a spot in either view.
    void spotActivated(const QString &key);
    // The operator clicked the band map's scale where no spot is.
    void tuneRequested(double khz);
    void mapShownChanged(bool shown);

private:
    void onMapVisibility(bool visible);

    MapView *m_mapView;
    BandMapView *m_bandMapView;
    QDockWidget *m_mapDock;
    QDockWidget *m_bandMapDock;
    bool m_mapShown = false;
};
