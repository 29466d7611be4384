#include "app/widgets/bandmapview.h"

#include "app/widgets/bandmapcanvas.h"
#include "model/bands.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

BandMapView::BandMapView(SpotFilterProxyModel *proxy, QWidget *parent)
    : QWidget(parent)
    , m_canvas(new BandMapCanvas(proxy, this))
    , m_bandCombo(new QComboBox(this))
{
    setObjectName(QStringLiteral("bandMapView"));
    m_bandCombo->setObjectName(QStringLiteral("bandMapBandCombo"));
    for (const Band &band : k_bands)
        m_bandCombo->addItem(QString::fromLatin1(band.name));
    m_bandCombo->setCurrentIndex(m_canvas->band());
    auto *bar = new QHBoxLayout;
    bar->setContentsMargins(4, 2, 4, 2);
    bar->addWidget(new QLabel(QStringLiteral("Band:"), this));
    bar->addWidget(m_bandCombo);
    bar->addStretch(1);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(bar);
    layout->addWidget(m_canvas, 1);

    connect(m_bandCombo, &QComboBox::activated, m_canvas, &BandMapCanvas::setBand);
    connect(m_canvas, &BandMapCanvas::bandChanged, m_bandCombo, &QComboBox::setCurrentIndex);
    connect(m_canvas, &BandMapCanvas::spotActivated, this, &BandMapView::spotActivated);
    connect(m_canvas, &BandMapCanvas::tuneRequested, this, &BandMapView::tuneRequested);
}

BandMapView::~BandMapView() = default;

void BandMapView::setRigFrequency(double khz)
{
    m_canvas->setRigFrequency(khz);
    m_bandCombo->setEnabled(!(khz > 0.0 && bandIndexForFrequency(khz) >= 0));
}

void BandMapView::setRegion(int region)
{
    m_canvas->setRegion(region);
}

void BandMapView::setSelectedKey(const QString &key)
{
    m_canvas->setSelectedKey(key);
}
