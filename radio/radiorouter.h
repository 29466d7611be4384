#pragma once

#include "radio/rigtypes.h"

#include <QObject>
#include <QString>

#include <functional>

class HamlibLink;
class QTimer;
class RadioControl;

// Decides where a radio request goes: to the companion program's bridge
// while it is enabled and linked, else to the rig. Keeps the last frequency
// and mode either path reported, and drives the window's poll and reconnect
// timers from the state of both paths.
class RadioRouter final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RadioRouter)

public:
    RadioRouter(HamlibLink *rig, QTimer *pollTimer, QTimer *reconnectTimer, QObject *parent = nullptr);
    ~RadioRouter() override;

    // The bridge and how to ask whether it is linked; null while there is none.
    void setBridge(RadioControl *bridge, std::function<bool()> isLinked);
    void setBridgeEnabled(bool enabled) { m_bridgeEnabled = enabled; }
    bool isBridgeActive() const;

    // The rig settings the reconnect timer and the start-up connect use.
    void setRigConfig(const RigConfig &config) { m_rigConfig = config; }
    const RigConfig &rigConfig() const { return m_rigConfig; }
    bool hasRigPort() const { return !m_rigConfig.port.isEmpty(); }
    bool isRigConnected() const;

    HamlibLink &rig() const { return *m_rig; }
    // The bridge while it is active, else the rig: where the API's radio requests go.
    RadioControl &target() const;

    // Tunes by the active path; true when that was the bridge.
    bool tune(double kHz, const QString &mode);
    // The antenna tuner's cycle by the active path.
    void startTune();

    double lastFreqKhz() const { return m_lastFreqKhz; }
    QString lastMode() const { return m_lastMode; }

    // What the rig's poll reported: a 0 kHz reading keeps the last frequency.
    void notePollResult(double kHz, const QString &mode);
    // What the bridge reported: both are taken as they come.
    void noteBridgeFrequency(double kHz, const QString &mode);

    void onRigConnectionChanged(bool connected);
    void onBridgeLinked();
    void onBridgeUnlinked();
    // The reconnect timer's tick: retries the rig when a port is set and it is not connected.
    void onReconnectTick();
    // Opens the rig after the window has appeared, when a port is set.
    void connectRigLater(int delayMs);

private:
    HamlibLink *m_rig;
    QTimer *m_pollTimer;
    QTimer *m_reconnectTimer;
    RadioControl *m_bridge = nullptr;
    std::function<bool()> m_bridgeLinked;
    bool m_bridgeEnabled = false;
    RigConfig m_rigConfig;
    double m_lastFreqKhz = 0.0;
    QString m_lastMode;
};
