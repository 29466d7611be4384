#include "app/widgets/mapmarkers.h"

#include "model/bands.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"

#include <algorithm>
#include <cmath>

bool MapMarkers::rebuild(const SpotFilterProxyModel &proxy, const MapProjection &projection)
{
    const auto *model = qobject_cast<const StationModel *>(proxy.sourceModel());
    std::vector<MapMarker> markers;
    int unplaced = 0;
    if (model) {
        const QList<StationSpot> &spots = model->spots();
        const int rows = proxy.rowCount();
        markers.reserve(size_t(rows));
        for (int r = 0; r < rows; ++r) {
            const int source = proxy.mapToSource(proxy.index(r, 0)).row();
            if (source < 0 || source >= spots.size())
                continue;
            const StationSpot &spot = spots.at(source);
            MapMarker m;
            if (spot.hasLocation) {
                m.lat = spot.lat;
                m.lon = spot.lon;
            } else if (!StationModel::gridToLatLon(spot.grid.trimmed(), m.lat, m.lon)) {
                ++unplaced;
                continue;
            }
            m.key = spot.key();
            m.callsign = spot.callsign;
            m.reference = spot.reference;
            m.mode = spot.mode;
            m.frequencyKhz = spot.frequencyKhz;
            m.band = bandIndexForFrequency(spot.frequencyKhz);
            m.shade = SpotColours::shade(spot.status);
            m.plane = projection.project(m.lat, m.lon);
            markers.push_back(std::move(m));
        }
    }
    const bool changed = unplaced != m_unplaced || markers != m_markers;
    if (changed) {
        m_markers = std::move(markers);
        m_unplaced = unplaced;
        m_clusters.clear();
        m_members.clear();
    }
    return changed;
}

void MapMarkers::reproject(const MapProjection &projection)
{
    for (MapMarker &m : m_markers)
        m.plane = projection.project(m.lat, m.lon);
}

int MapMarkers::indexOfKey(const QString &key) const
{
    if (key.isEmpty())
        return -1;
    for (size_t i = 0; i < m_markers.size(); ++i) {
        if (m_markers[i].key == key)
            return int(i);
    }
    return -1;
}

void MapMarkers::cluster(const QTransform &planeToScreen, const QRectF &visible, double cellPx)
{
    struct Placed
    {
        qint64 cell;
        int marker;
        QPointF screen;
    };
    std::vector<Placed> placed;
    placed.reserve(m_markers.size());
    for (size_t i = 0; i < m_markers.size(); ++i) {
        const QPointF s = planeToScreen.map(m_markers[i].plane);
        if (!visible.contains(s))
            continue;
        const qint64 cx = qint64(std::floor(s.x() / cellPx));
        const qint64 cy = qint64(std::floor(s.y() / cellPx));
        placed.push_back({(cy << 32) + cx, int(i), s});
    }
    // By cell, and within a cell in the table's order, so the first member is stable.
    std::sort(placed.begin(), placed.end(), [](const Placed &a, const Placed &b) {
        return a.cell != b.cell ? a.cell < b.cell : a.marker < b.marker;
    });
    m_clusters.clear();
    m_members.clear();
    m_members.reserve(placed.size());
    for (size_t i = 0; i < placed.size();) {
        MapCluster c;
        c.first = int(m_members.size());
        c.band = m_markers[size_t(placed[i].marker)].band;
        c.shade = SpotColours::Greyed;
        QPointF sum;
        size_t j = i;
        for (; j < placed.size() && placed[j].cell == placed[i].cell; ++j) {
            const MapMarker &m = m_markers[size_t(placed[j].marker)];
            m_members.push_back(placed[j].marker);
            sum += placed[j].screen;
            // A cluster is shown as found while any member is.
            c.shade = std::min(c.shade, m.shade);
        }
        c.count = int(j - i);
        c.screen = sum / c.count;
        m_clusters.push_back(c);
        i = j;
    }
}

int MapMarkers::clusterAt(const QPointF &screen, double radius) const
{
    int best = -1;
    double bestDistance = radius * radius;
    for (size_t i = 0; i < m_clusters.size(); ++i) {
        const QPointF d = m_clusters[i].screen - screen;
        const double distance = d.x() * d.x() + d.y() * d.y();
        if (distance <= bestDistance) {
            bestDistance = distance;
            best = int(i);
        }
    }
    return best;
}

bool MapMarkers::isStacked(int cluster) const
{
    if (cluster < 0 || cluster >= int(m_clusters.size()))
        return false;
    const MapCluster &c = m_clusters[size_t(cluster)];
    const MapMarker &first = m_markers[size_t(m_members[size_t(c.first)])];
    for (int i = 1; i < c.count; ++i) {
        const MapMarker &m = m_markers[size_t(m_members[size_t(c.first + i)])];
        if (std::abs(m.lat - first.lat) > 1e-4 || std::abs(m.lon - first.lon) > 1e-4)
            return false;
    }
    return true;
}
