#include "app/widgets/mapview.h"

#include "app/widgets/mapcanvas.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QStandardItemModel>
#include <QToolButton>
#include <QVBoxLayout>

MapView::MapView(SpotFilterProxyModel *proxy, QWidget *parent)
    : QWidget(parent)
    , m_canvas(new MapCanvas(proxy, this))
    , m_projectionCombo(new QComboBox(this))
    , m_resetButton(new QToolButton(this))
    , m_unplacedLabel(new QLabel(this))
{
    setObjectName(QStringLiteral("mapView"));
    m_projectionCombo->setObjectName(QStringLiteral("mapProjectionCombo"));
    m_projectionCombo->addItem(QStringLiteral("Flat world"), int(MapProjection::Equirectangular));
    m_projectionCombo->addItem(QStringLiteral("Great circles from home"),
                               int(MapProjection::AzimuthalEquidistant));
    m_resetButton->setObjectName(QStringLiteral("mapResetButton"));
    m_resetButton->setText(QStringLiteral("Whole world"));
    m_resetButton->setToolTip(QStringLiteral("Back to the whole world (Home)"));
    m_unplacedLabel->setObjectName(QStringLiteral("mapUnplacedLabel"));

    auto *bar = new QHBoxLayout;
    bar->setContentsMargins(4, 2, 4, 2);
    bar->addWidget(m_projectionCombo);
    bar->addWidget(m_resetButton);
    bar->addStretch(1);
    bar->addWidget(m_unplacedLabel);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(bar);
    layout->addWidget(m_canvas, 1);

    connect(m_projectionCombo, &QComboBox::activated, this, &MapView::onProjectionChosen);
    connect(m_resetButton, &QToolButton::clicked, m_canvas, &MapCanvas::resetView);
    connect(m_canvas, &MapCanvas::spotActivated, this, &MapView::spotActivated);
    connect(m_canvas, &MapCanvas::unplacedCountChanged, this, &MapView::showUnplaced);
    offerProjections();
}

MapView::~MapView() = default;

void MapView::setOwnPosition(double lat, double lon)
{
    m_canvas->setOwnPosition(lat, lon);
    offerProjections();
}

void MapView::clearOwnPosition()
{
    m_canvas->clearOwnPosition();
    offerProjections();
}

void MapView::setSelectedKey(const QString &key)
{
    m_canvas->setSelectedKey(key);
}

void MapView::setDistanceUnit(DistanceUnit unit)
{
    m_canvas->setDistanceUnit(unit);
}

void MapView::setProjectionKind(MapProjection::Kind kind)
{
    m_canvas->setProjectionKind(kind);
    offerProjections();
}

MapProjection::Kind MapView::projectionKind() const
{
    return m_canvas->projectionKind();
}

void MapView::onProjectionChosen(int index)
{
    m_canvas->setProjectionKind(MapProjection::Kind(m_projectionCombo->itemData(index).toInt()));
}

void MapView::offerProjections()
{
    // Great circles need a home to start from.
    auto *items = qobject_cast<QStandardItemModel *>(m_projectionCombo->model());
    if (items)
        items->item(1)->setEnabled(m_canvas->hasOwnPosition());
    m_projectionCombo->setCurrentIndex(m_canvas->projectionKind() == MapProjection::AzimuthalEquidistant ? 1
                                                                                                         : 0);
}

void MapView::showUnplaced(int count)
{
    m_unplacedLabel->setText(count > 0 ? QStringLiteral("%1 without a position, not drawn").arg(count)
                                       : QString());
}
