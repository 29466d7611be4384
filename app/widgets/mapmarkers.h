#pragma once

#include "model/mapprojection.h"
#include "model/spotcolours.h"

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QTransform>

#include <vector>

class SpotFilterProxyModel;

// One spot the map can place.
struct MapMarker
{
    QString key;
    QString callsign;
    QString reference;
    QString mode;
    double frequencyKhz = 0.0;
    double lat = 0.0;
    double lon = 0.0;
    int band = -1;
    SpotColours::Shade shade = SpotColours::Active;
    QPointF plane; // on the projection's plane, radians

    bool operator==(const MapMarker &o) const
    {
        return key == o.key && lat == o.lat && lon == o.lon && band == o.band && shade == o.shade &&
               frequencyKhz == o.frequencyKhz && mode == o.mode && callsign == o.callsign &&
               reference == o.reference;
    }
    bool operator!=(const MapMarker &o) const { return !(*this == o); }
};

// Markers that share a cell of the screen, drawn as one with a count.
struct MapCluster
{
    QPointF screen;
    int first = 0; // into MapMarkers::clusterMembers()
    int count = 0;
    int band = -1;
    SpotColours::Shade shade = SpotColours::Active;
};

// What the map draws of the filtered table: the spots the proxy shows that
// have a position (their own, else their locator's), projected, and grouped
// by screen cell for one viewport. No widget; the canvas paints from it.
class MapMarkers final
{
public:
    // Reads the proxy's rows; true when anything the map shows changed.
    bool rebuild(const SpotFilterProxyModel &proxy, const MapProjection &projection);
    void reproject(const MapProjection &projection);

    const std::vector<MapMarker> &markers() const { return m_markers; }
    // Filtered spots with neither a position nor a locator.
    int unplacedCount() const { return m_unplaced; }
    int indexOfKey(const QString &key) const;

    // Groups the markers inside visible (screen pixels) by cells of cellPx.
    void cluster(const QTransform &planeToScreen, const QRectF &visible, double cellPx);
    const std::vector<MapCluster> &clusters() const { return m_clusters; }
    // Marker indices, cluster by cluster (MapCluster::first, count).
    const std::vector<int> &clusterMembers() const { return m_members; }
    // The cluster drawn nearest to a screen point within radius, or -1.
    int clusterAt(const QPointF &screen, double radius) const;
    // Whether the cluster's markers all stand on one spot of the earth.
    bool isStacked(int cluster) const;

private:
    std::vector<MapMarker> m_markers;
    int m_unplaced = 0;
    std::vector<MapCluster> m_clusters;
    std::vector<int> m_members;
};
