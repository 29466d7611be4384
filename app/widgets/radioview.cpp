#include "app/widgets/radioview.h"

#include "api/wsserver.h"
#include "app/widgets/radiopanel.h"
#include "app/widgets/windowlabels.h"
#include "radio/lwclient.h"
#include "radio/radiorouter.h"

#include <QStatusBar>

RadioView::RadioView(RadioRouter *router, RadioPanel *panel, WindowLabels &labels, QStatusBar *statusBar,
                     QObject *parent)
    : QObject(parent)
    , m_router(router)
    , m_panel(panel)
    , m_labels(labels)
    , m_statusBar(statusBar)
{}

RadioView::~RadioView() = default;

void RadioView::rigConnectionChanged(bool connected)
{
    m_router->onRigConnectionChanged(connected);
    m_labels.showRigConnected(connected);
    if (connected) {
        m_statusBar->showMessage(QStringLiteral("Radio connection established — let the hunt commence."),
                                 4000);
        m_api->pushRadioConnected();
        return;
    }
    m_statusBar->showMessage(QStringLiteral("Radio connection severed."), 4000);
    m_panel->showDisconnected();
    m_api->pushRadioDisconnected();
}

void RadioView::rigPolled(double kHz, const QString &mode)
{
    m_router->notePollResult(kHz, mode);
    m_panel->showPollResult(kHz, mode);
    m_api->pushRadioFrequency(kHz, mode);
}

void RadioView::bridgeLinked()
{
    m_router->onBridgeLinked();
    m_labels.showBridgeLinked();
    m_statusBar->showMessage(QStringLiteral("Lampwick bridge connected — radio control delegated."), 5000);
    m_api->pushLwConnected(m_bridge->host(), m_bridge->port());
}

void RadioView::bridgeUnlinked()
{
    m_labels.showBridgeUnlinked(m_router->isRigConnected());
    m_statusBar->showMessage(
        QStringLiteral("Lampwick bridge disconnected — reverting to direct radio control."), 5000);
    m_router->onBridgeUnlinked();
    m_api->pushLwDisconnected();
}

void RadioView::bridgeFrequency(double kHz, const QString &mode)
{
    m_router->noteBridgeFrequency(kHz, mode);
    m_panel->showBridgeFrequency(kHz, mode);
    m_api->pushRadioFrequency(kHz, mode);
}

void RadioView::bridgeRigChanged(bool connected, bool bridgeEnabled)
{
    // Only while the bridge has the radio; otherwise the label is the rig's.
    if (bridgeEnabled && m_bridge && m_bridge->isLinked())
        m_labels.showBridgeRig(connected);
}

bool RadioView::tuneTo(double kHz, const QString &mode, bool autoAtu)
{
    if (kHz <= 0 || !(m_router->isBridgeActive() || m_router->isRigConnected()))
        return false;
    tuned(kHz, m_router->tune(kHz, mode));
    if (autoAtu && m_panel->canTune()) {
        m_router->startTune();
        m_statusBar->showMessage(QStringLiteral("Tuned to %1 kHz — ATU cycle triggered.").arg(kHz, 0, 'f', 0),
                                 4000);
    }
    return true;
}

void RadioView::tuned(double kHz, bool viaBridge)
{
    m_statusBar->showMessage(
        (viaBridge ? QStringLiteral("Tuned to %1 kHz via Lampwick — may fortune favour the bold.")
                   : QStringLiteral("Tuned to %1 kHz — may fortune favour the bold."))
            .arg(kHz, 0, 'f', 0),
        4000);
}
