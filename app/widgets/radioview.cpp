#include "app/widgets/radioview.h"

#include "app/radiostation.h"
#include "app/widgets/radiopanel.h"
#include "app/widgets/windowlabels.h"

#include <QStatusBar>

RadioView::RadioView(const RadioStation &station, RadioPanel *panel, WindowLabels &labels,
                     QStatusBar *statusBar, QObject *parent)
    : QObject(parent)
    , m_router(station.router())
    , m_panel(panel)
    , m_labels(labels)
    , m_statusBar(statusBar)
{
    const RadioRouter *router = m_router;
    connect(&station, &RadioStation::rigError, this,
            [this](const QString &message) { m_statusBar->showMessage(message, 5000); });
    connect(router, &RadioRouter::rigConnected, this, &RadioView::rigConnected);
    connect(router, &RadioRouter::rigDisconnected, this, &RadioView::rigDisconnected);
    connect(router, &RadioRouter::bridgeLinked, this, &RadioView::bridgeLinked);
    connect(router, &RadioRouter::bridgeUnlinked, this, &RadioView::bridgeUnlinked);
    connect(router, &RadioRouter::bridgeEnabledChanged, this, [this](bool enabled) {
        // Switched on, it retries until linked; switched off, the label goes.
        if (!m_router->isBridgeActive())
            m_labels.showBridgeRetrying(enabled);
    });
    connect(router, &RadioRouter::bridgeRigConnectionChanged, this,
            [this](bool connected) { m_labels.showBridgeRig(connected); });
    connect(router, &RadioRouter::frequencyChanged, this, &RadioView::frequencyChanged);
    connect(router, &RadioRouter::tuned, this, &RadioView::tuned);
    connect(router, &RadioRouter::atuCycleStarted, this, &RadioView::atuCycleStarted);
}

RadioView::~RadioView() = default;

void RadioView::rigConnected()
{
    m_labels.showRigConnected(true);
    m_statusBar->showMessage(QStringLiteral("Radio connection established — let the hunt commence."), 4000);
}

void RadioView::rigDisconnected()
{
    m_labels.showRigConnected(false);
    m_statusBar->showMessage(QStringLiteral("Radio connection severed."), 4000);
    m_panel->showDisconnected();
}

void RadioView::bridgeLinked()
{
    m_labels.showBridgeLinked();
    m_statusBar->showMessage(QStringLiteral("Lampwick bridge connected — radio control delegated."), 5000);
}

void RadioView::bridgeUnlinked()
{
    m_labels.showBridgeUnlinked(m_router->isRigConnected(), m_router->isBridgeEnabled());
    m_statusBar->showMessage(
        QStringLiteral("Lampwick bridge disconnected — reverting to direct radio control."), 5000);
}

void RadioView::frequencyChanged(double kHz, const QString &mode, RadioPath path)
{
    if (path == RadioPath::Bridge)
        m_panel->showBridgeFrequency(kHz, mode);
    else
        m_panel->showPollResult(kHz, mode);
}

void RadioView::tuned(double kHz, bool viaBridge)
{
    m_statusBar->showMessage(
        (viaBridge ? QStringLiteral("Tuned to %1 kHz via Lampwick — may fortune favour the bold.")
                   : QStringLiteral("Tuned to %1 kHz — may fortune favour the bold."))
            .arg(kHz, 0, 'f', 0),
        4000);
}

void RadioView::atuCycleStarted(double kHz)
{
    m_statusBar->showMessage(QStringLiteral("Tuned to %1 kHz — ATU cycle triggered.").arg(kHz, 0, 'f', 0),
                             4000);
}
