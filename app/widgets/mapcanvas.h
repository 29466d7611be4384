#pragma once

#include "app/widgets/mapmarkers.h"
#include "app/widgets/spotcanvas.h"
#include "model/greatcircle.h"
#include "model/mapprojection.h"

#include <QHash>
#include <QPainterPath>
#include <QPixmap>
#include <QPolygonF>

#include <array>

class SpotFilterProxyModel;

// The world drawn with the spots the table shows: land, graticule and the
// night side in a pixmap kept per viewport; markers stamped from images made
// once; the selected spot's short path from the operator.
class MapCanvas final : public SpotCanvas
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MapCanvas)

public:
    static constexpr double k_maxZoom = 64.0;
    static constexpr double k_cellPx = 10.0;

    explicit MapCanvas(SpotFilterProxyModel *proxy, QWidget *parent = nullptr);
    ~MapCanvas() override;

    void setOwnPosition(double lat, double lon);
    void clearOwnPosition();
    bool hasOwnPosition() const { return m_hasOwn; }
    // Azimuthal needs the operator's position; without one the map stays equirectangular.
    void setProjectionKind(MapProjection::Kind kind);
    MapProjection::Kind projectionKind() const { return m_projection.kind(); }
    void setDistanceUnit(DistanceUnit unit);
    void resetView();
    double zoom() const { return m_zoom; }

    const MapMarkers &markers() const { return m_markers; }
    // Where a marker is drawn, in widget pixels; false when it is not shown.
    bool markerScreenPos(const QString &key, QPointF &pos);
    // The text of the selection's path: distance and bearing, short and long.
    QString pathText() const;

signals:
    // The count of filtered spots the map cannot place changed.
    void unplacedCountChanged(int count);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void rebuild(const SpotFilterProxyModel *proxy) override;
    bool agedSincePaint() const override;

private:
    struct BaseKey
    {
        QSize size;
        qreal dpr = 0.0;
        MapProjection projection;
        double zoom = 0.0;
        QPointF centre;
        qint64 minute = -1;
        bool operator==(const BaseKey &o) const
        {
            return size == o.size && dpr == o.dpr && projection == o.projection && zoom == o.zoom &&
                   centre == o.centre && minute == o.minute;
        }
    };

    void applyProjection(const MapProjection &projection);
    QTransform planeToScreen() const;
    void zoomAt(const QPointF &screen, double factor);
    void clampCentre();
    qint64 currentMinute() const;
    void ensureBase();
    void paintBase(QPainter &p);
    void ensureClusters();
    void ensureStamps();
    const QPixmap &countStamp(int count);
    void paintMarkers(QPainter &p);
    void paintSelection(QPainter &p);
    void activateCluster(int cluster, const QPoint &globalPos);
    QString tooltipFor(int cluster) const;
    void viewChanged();

    MapMarkers m_markers;
    MapProjection m_projection;
    MapProjection::Kind m_wantedKind = MapProjection::Equirectangular;
    bool m_hasOwn = false;
    double m_ownLat = 0.0;
    double m_ownLon = 0.0;
    DistanceUnit m_unit = DistanceUnit::Miles;
    double m_zoom = 1.0;
    QPointF m_centre;

    // Land and graticule for the projection in use; the night for a minute.
    QList<QPolygonF> m_land;
    QPainterPath m_landPath;
    QPainterPath m_graticule;
    QPainterPath m_night;
    qint64 m_nightMinute = -1;
    QPixmap m_base;
    BaseKey m_baseKey;
    bool m_clustersValid = false;
    BaseKey m_clusterKey;

    // Stamps: [band + 1][shade] dots and clusters; counts made on demand.
    static constexpr int k_bandSlots = 14;
    std::array<std::array<QPixmap, 3>, k_bandSlots> m_dots;
    std::array<std::array<QPixmap, 3>, k_bandSlots> m_clusterDots;
    QPixmap m_selectedRing;
    QHash<int, QPixmap> m_counts;
    qreal m_stampDpr = 0.0;

    QPoint m_pressPos;
    QPointF m_pressCentre;
    bool m_dragging = false;
    bool m_pressed = false;
};
