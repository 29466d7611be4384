#include "radio/radiorouter.h"

#include "model/bands.h"
#include "radio/hamliblink.h"
#include "radio/lwclient.h"

#include <QTimer>

#include <cmath>

RadioRouter::RadioRouter(HamlibLink *rig, QTimer *pollTimer, QTimer *reconnectTimer, QObject *parent)
    : QObject(parent)
    , m_rig(rig)
    , m_pollTimer(pollTimer)
    , m_reconnectTimer(reconnectTimer)
{
    m_pollTimer->setObjectName(QStringLiteral("radioPollTimer"));
    m_pollTimer->setInterval(k_pollMs);
    m_reconnectTimer->setObjectName(QStringLiteral("rigReconnectTimer"));
    m_reconnectTimer->setInterval(k_reconnectMs);
    connect(m_pollTimer, &QTimer::timeout, m_rig, &HamlibLink::requestPoll);
    connect(m_reconnectTimer, &QTimer::timeout, this, &RadioRouter::onReconnectTick);
    connect(m_rig, &HamlibLink::connectionChanged, this, &RadioRouter::onRadioConnectionChanged);
    connect(m_rig, &HamlibLink::pollResult, this, &RadioRouter::onRadioPollResult);
    connect(m_rig, &HamlibLink::capabilitiesChanged, this,
            [this](const RadioCaps &caps) { m_rigCanTune = caps.hasTune; });
}

RadioRouter::~RadioRouter() = default;

void RadioRouter::setBridge(LwClient *bridge)
{
    if (m_bridge)
        m_bridge->disconnect(this);
    m_bridge = bridge;
    m_bridgeLinked = bridge && bridge->isLinked();
    if (!bridge)
        return;
    connect(bridge, &LwClient::connectedToLw, this, &RadioRouter::onLwConnected);
    connect(bridge, &LwClient::disconnectedFromLw, this, &RadioRouter::onLwDisconnected);
    connect(bridge, &LwClient::radioFrequency, this, &RadioRouter::onLwRadioFrequency);
    connect(bridge, &LwClient::radioConnectedChanged, this, &RadioRouter::onLwRadioConnectedChanged);
}

void RadioRouter::setBridgeEnabled(bool enabled)
{
    if (enabled == m_bridgeEnabled)
        return;
    m_bridgeEnabled = enabled;
    emit bridgeEnabledChanged(enabled);
}

RadioControl &RadioRouter::target() const
{
    if (isBridgeActive())
        return *m_bridge;
    return *m_rig;
}

bool RadioRouter::tune(double kHz, const QString &mode, TuneOrigin origin, bool autoAtu)
{
    if (origin == TuneOrigin::Program || kHz <= 0 || !(isBridgeActive() || m_rigConnected))
        return false;
    const bool viaBridge = isBridgeActive();
    const QStringList rigModes = viaBridge ? QStringList() : rigModesFor(mode);
    if (rigModes.isEmpty())
        target().tune(kHz, mode);
    else
        m_rig->tuneWithModes(kHz, rigModes);
    emit tuned(kHz, viaBridge);
    if (autoAtu && origin == TuneOrigin::Operator && m_rigCanTune && atuCycleNeeded(kHz)) {
        target().startTune();
        m_lastCycleKhz = kHz;
        emit atuCycleStarted(kHz);
    }
    return true;
}

bool RadioRouter::atuCycleNeeded(double kHz) const
{
    if (m_lastCycleKhz <= 0)
        return true;
    return bandIndexForFrequency(kHz) != bandIndexForFrequency(m_lastCycleKhz) ||
           std::abs(kHz - m_lastCycleKhz) > 0.02 * m_lastCycleKhz;
}

QStringList RadioRouter::rigModesFor(const QString &spotMode)
{
    const QString mode = spotMode.trimmed().toUpper();
    static const QStringList digital{QStringLiteral("FT8"), QStringLiteral("FT4"), QStringLiteral("JS8"),
                                     QStringLiteral("DATA"), QStringLiteral("DIGI")};
    // A rig without a data mode still hears the signal on USB.
    if (digital.contains(mode) || mode.startsWith(QLatin1String("PSK")))
        return {QStringLiteral("PKTUSB"), QStringLiteral("USB")};
    if (mode == QLatin1String("RTTY"))
        return {QStringLiteral("RTTY")};
    return {};
}

void RadioRouter::connectRig()
{
    m_disconnectHeld = false;
    m_rig->connectRig(m_rigConfig);
}

void RadioRouter::disconnectRig()
{
    m_disconnectHeld = true;
    m_reconnectTimer->stop();
    m_rig->disconnectRig();
}

void RadioRouter::releaseDisconnectHold()
{
    m_disconnectHeld = false;
    if (!m_rigConnected && hasRigPort() && !isBridgeActive())
        m_reconnectTimer->start();
}

void RadioRouter::retuneMode(const QString &mode, TuneOrigin origin)
{
    if (origin != TuneOrigin::Program)
        m_rig->tune(m_lastFreqKhz, mode);
}

void RadioRouter::startTune()
{
    target().startTune();
    noteAtuCycle();
}

void RadioRouter::startRigTune()
{
    m_rig->startTune();
    noteAtuCycle();
}

void RadioRouter::noteAtuCycle()
{
    if (m_lastFreqKhz > 0)
        m_lastCycleKhz = m_lastFreqKhz;
}

void RadioRouter::onRadioConnectionChanged(bool connected)
{
    m_rigConnected = connected;
    if (connected) {
        m_pollTimer->start();
        m_reconnectTimer->stop();
        m_rig->requestPoll();
        emit rigConnected();
        return;
    }
    m_pollTimer->stop();
    if (hasRigPort() && !m_disconnectHeld)
        m_reconnectTimer->start();
    emit rigDisconnected();
}

void RadioRouter::onRadioPollResult(double kHz, const QString &mode)
{
    if (kHz > 0)
        m_lastFreqKhz = kHz;
    m_lastMode = mode;
    emit frequencyChanged(m_lastFreqKhz, m_lastMode, RadioPath::Rig);
}

void RadioRouter::onLwConnected()
{
    m_bridgeLinked = true;
    // The companion program reports the radio now.
    m_reconnectTimer->stop();
    m_pollTimer->stop();
    emit bridgeLinked(m_bridge->host(), m_bridge->port());
}

void RadioRouter::onLwDisconnected()
{
    m_bridgeLinked = false;
    if (m_rigConnected)
        m_pollTimer->start();
    else if (hasRigPort() && !m_disconnectHeld)
        m_reconnectTimer->start();
    emit bridgeUnlinked();
}

void RadioRouter::onLwRadioFrequency(double kHz, const QString &mode)
{
    m_lastFreqKhz = kHz;
    m_lastMode = mode;
    emit frequencyChanged(m_lastFreqKhz, m_lastMode, RadioPath::Bridge);
}

void RadioRouter::onLwRadioConnectedChanged(bool connected)
{
    // Otherwise the radio label is the rig's.
    if (isBridgeActive())
        emit bridgeRigConnectionChanged(connected);
}

void RadioRouter::onReconnectTick()
{
    // The worker's own flag: a connect it has just made may not have been reported yet.
    if (hasRigPort() && !m_disconnectHeld && !m_rig->isConnected())
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
