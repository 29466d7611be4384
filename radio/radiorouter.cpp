#include "radio/radiorouter.h"

#include "radio/hamliblink.h"

#include <QTimer>

#include <utility>

RadioRouter::RadioRouter(HamlibLink *rig, QTimer *pollTimer, QTimer *reconnectTimer, QObject *parent)
    : QObject(parent)
    , m_rig(rig)
    , m_pollTimer(pollTimer)
    , m_reconnectTimer(reconnectTimer)
{
    m_pollTimer->setObjectName(QStringLiteral("radioPollTimer"));
    m_reconnectTimer->setObjectName(QStringLiteral("rigReconnectTimer"));
}

RadioRouter::~RadioRouter() = default;

void RadioRouter::setBridge(RadioControl *bridge, std::function<bool()> isLinked)
{
    m_bridge = bridge;
    m_bridgeLinked = std::move(isLinked);
}

bool RadioRouter::isBridgeActive() const
{
    return m_bridgeEnabled && m_bridge && m_bridgeLinked && m_bridgeLinked();
}

bool RadioRouter::isRigConnected() const
{
    return m_rig->isConnected();
}

RadioControl &RadioRouter::target() const
{
    if (isBridgeActive())
        return *m_bridge;
    return *m_rig;
}

bool RadioRouter::tune(double kHz, const QString &mode)
{
    const bool viaBridge = isBridgeActive();
    target().tune(kHz, mode);
    return viaBridge;
}

void RadioRouter::startTune()
{
    target().startTune();
}

void RadioRouter::notePollResult(double kHz, const QString &mode)
{
    if (kHz > 0)
        m_lastFreqKhz = kHz;
    m_lastMode = mode;
}

void RadioRouter::noteBridgeFrequency(double kHz, const QString &mode)
{
    m_lastFreqKhz = kHz;
    m_lastMode = mode;
}

void RadioRouter::onRigConnectionChanged(bool connected)
{
    if (connected) {
        m_pollTimer->start();
        m_reconnectTimer->stop();
        m_rig->requestPoll();
        return;
    }
    m_pollTimer->stop();
    if (hasRigPort())
        m_reconnectTimer->start();
}

void RadioRouter::onBridgeLinked()
{
    // The companion program reports the radio now.
    m_reconnectTimer->stop();
    m_pollTimer->stop();
}

void RadioRouter::onBridgeUnlinked()
{
    if (m_rig->isConnected())
        m_pollTimer->start();
    else if (hasRigPort())
        m_reconnectTimer->start();
}

void RadioRouter::onReconnectTick()
{
    if (hasRigPort() && !m_rig->isConnected())
        m_rig->connectRig(m_rigConfig);
}

void RadioRouter::connectRigLater(int delayMs)
{
    if (!hasRigPort())
        return;
    // A copy now: the settings may change before the timer fires.
    const RigConfig config = m_rigConfig;
    QTimer::singleShot(delayMs, this, [this, config] { m_rig->connectRig(config); });
}
