#include "app/widgets/spotcanvas.h"

#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"

#include <QPixmap>
#include <QTimer>

SpotCanvas::SpotCanvas(SpotFilterProxyModel *proxy, QWidget *parent)
    : QWidget(parent)
    , m_proxy(proxy)
    , m_clock([] { return QDateTime::currentMSecsSinceEpoch(); })
    , m_tickTimer(new QTimer(this))
{
    if (proxy) {
        connect(proxy, &QAbstractItemModel::modelReset, this, &SpotCanvas::scheduleRebuild);
        connect(proxy, &QAbstractItemModel::layoutChanged, this, &SpotCanvas::scheduleRebuild);
        connect(proxy, &QAbstractItemModel::rowsInserted, this, &SpotCanvas::scheduleRebuild);
        connect(proxy, &QAbstractItemModel::rowsRemoved, this, &SpotCanvas::scheduleRebuild);
        connect(proxy, &QAbstractItemModel::rowsMoved, this, &SpotCanvas::scheduleRebuild);
        connect(proxy, &QAbstractItemModel::dataChanged, this, &SpotCanvas::onProxyDataChanged);
    }
    connect(m_tickTimer, &QTimer::timeout, this, [this] {
        if (isVisible() && agedSincePaint())
            update();
    });
    m_tickTimer->start(k_tickMs);
    scheduleRebuild();
}

SpotCanvas::~SpotCanvas() = default;

void SpotCanvas::onProxyDataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight)
{
    // The age column ticks every second and changes nothing drawn.
    if (topLeft.column() == StationModel::AgeColumn && bottomRight.column() == StationModel::AgeColumn)
        return;
    scheduleRebuild();
}

void SpotCanvas::scheduleRebuild()
{
    if (!isVisible()) {
        m_dirtyWhileHidden = true;
        return;
    }
    if (m_rebuildPending)
        return;
    m_rebuildPending = true;
    QTimer::singleShot(0, this, [this] {
        if (m_rebuildPending)
            rebuildNow();
    });
}

void SpotCanvas::rebuildNow()
{
    m_rebuildPending = false;
    m_dirtyWhileHidden = false;
    rebuild(m_proxy.data());
}

void SpotCanvas::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_dirtyWhileHidden)
        scheduleRebuild();
}

void SpotCanvas::setSelectedKey(const QString &key)
{
    if (key == m_selectedKey)
        return;
    m_selectedKey = key;
    update();
}

void SpotCanvas::activate(QString key)
{
    setSelectedKey(key);
    emit spotActivated(key);
}

void SpotCanvas::setClock(Clock clock)
{
    m_clock = std::move(clock);
    update();
}

QPixmap SpotCanvas::widgetPixmap(qreal dpr) const
{
    QPixmap pixmap(size() * dpr);
    pixmap.setDevicePixelRatio(dpr);
    return pixmap;
}
