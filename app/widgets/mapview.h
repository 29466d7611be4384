#pragma once

#include "model/greatcircle.h"
#include "model/mapprojection.h"

#include <QWidget>

class MapCanvas;
class QComboBox;
class QLabel;
class QToolButton;
class SpotFilterProxyModel;

// The map dock's content: the canvas with a projection chooser, a button
// back to the whole world, and the count of spots it cannot place.
class MapView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MapView)

public:
    explicit MapView(SpotFilterProxyModel *proxy, QWidget *parent = nullptr);
    ~MapView() override;

    MapCanvas *canvas() const { return m_canvas; }
    void setOwnPosition(double lat, double lon);
    void clearOwnPosition();
    void setSelectedKey(const QString &key);
    void setDistanceUnit(DistanceUnit unit);
    void setProjectionKind(MapProjection::Kind kind);
    MapProjection::Kind projectionKind() const;

signals:
    // The operator picked this spot on the map: select it in the table (and so tune).
    void spotActivated(const QString &key);

private:
    void onProjectionChosen(int index);
    void showUnplaced(int count);
    void offerProjections();

    MapCanvas *m_canvas;
    QComboBox *m_projectionCombo;
    QToolButton *m_resetButton;
    QLabel *m_unplacedLabel;
};
