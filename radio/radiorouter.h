#pragma once

#include "radio/rigtypes.h"

#include <QObject>
#include <QString>
#include <QStringList>

class HamlibLink;
class LwClient;
class QTimer;
class RadioControl;

// Who asked for a tune. The operator's own choice, an API client's command,
// or the program moving a selection by itself (a restored row), which never
// reaches a radio.
enum class TuneOrigin { Operator, Api, Program };

// Which path a radio report came by.
enum class RadioPath { Rig, Bridge };

// The radio's one owner. Listens to the rig link and the companion program's
// bridge, keeps the last frequency, mode, connection and link state, and
// reports changes as its own signals. Every tune request passes here with its
// origin and goes to the bridge while it is enabled and linked, else to the
// rig. Drives the poll and reconnect timers from the state of both paths.
class RadioRouter final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RadioRouter)

public:
    static constexpr int k_pollMs = 500;
    static constexpr int k_reconnectMs = 15000;

    RadioRouter(HamlibLink *rig, QTimer *pollTimer, QTimer *reconnectTimer, QObject *parent = nullptr);
    ~RadioRouter() override;

    // Listens to the bridge from now on; null while there is none.
    void setBridge(LwClient *bridge);
    void setBridgeEnabled(bool enabled);
    bool isBridgeEnabled() const { return m_bridgeEnabled; }
    bool isBridgeActive() const { return m_bridgeEnabled && m_bridgeLinked; }

    // The rig settings the reconnect timer and the start-up connect use.
    void setRigConfig(const RigConfig &config) { m_rigConfig = config; }
    const RigConfig &rigConfig() const { return m_rigConfig; }
    bool hasRigPort() const { return !m_rigConfig.port.isEmpty(); }
    // As the rig last reported it.
    bool isRigConnected() const { return m_rigConnected; }

    // The bridge while it is active, else the rig: where the API's radio requests go.
    RadioControl &target() const;

    // Tunes by the active path when one is up and kHz is above 0. With autoAtu,
    // an operator's tune starts a tuner cycle (which transmits) only when the
    // rig has a tuner and the tune changed band or moved more than 2% from the
    // last cycle of this run. False when nothing was tuned; a Program request
    // never is.
    bool tune(double kHz, const QString &mode, TuneOrigin origin, bool autoAtu = false);
    // A new mode on the rig, always the rig, at the last known frequency.
    void retuneMode(const QString &mode, TuneOrigin origin);
    // The antenna tuner's cycle by the active path, on request.
    void startTune();
    // The radio panel's "Tune ATU": always the rig's own tuner.
    void startRigTune();
    // The Hamlib modes to try, in order, for a spot's mode the rig's own mode
    // table leaves alone (digital and RTTY spots); empty for the others.
    static QStringList rigModesFor(const QString &spotMode);

    // The operator's connect and disconnect. A disconnect holds: the rig is not
    // reconnected by the timer until the operator connects again (or releases
    // the hold by setting the rig up anew). A link that dropped by itself is retried.
    void connectRig();
    void disconnectRig();
    void releaseDisconnectHold();
    bool isDisconnectHeld() const { return m_disconnectHeld; }

    double lastFreqKhz() const { return m_lastFreqKhz; }
    QString lastMode() const { return m_lastMode; }

    // Opens the rig after the window has appeared, when a port is set.
    void connectRigLater(int delayMs);

signals:
    void rigConnected();
    void rigDisconnected();
    void bridgeLinked(const QString &host, quint16 port);
    void bridgeUnlinked();
    // The operator switched the bridge on or off.
    void bridgeEnabledChanged(bool enabled);
    // The companion program's rig came or went, while the bridge has the radio.
    void bridgeRigConnectionChanged(bool connected);
    // A report by either path, as kept: a poll's 0 kHz keeps the last frequency,
    // the bridge's values are taken as they come.
    void frequencyChanged(double kHz, const QString &mode, RadioPath path);
    void tuned(double kHz, bool viaBridge);
    void atuCycleStarted(double kHz);

private:
    void onRadioConnectionChanged(bool connected);
    void onRadioPollResult(double kHz, const QString &mode);
    void onLwConnected();
    void onLwDisconnected();
    void onLwRadioFrequency(double kHz, const QString &mode);
    void onLwRadioConnectedChanged(bool connected);
    // The reconnect timer's tick: retries the rig when a port is set and it is not connected.
    void onReconnectTick();
    bool atuCycleNeeded(double kHz) const;
    // Any cycle of this run counts as the last one.
    void noteAtuCycle();

    HamlibLink *m_rig;
    QTimer *m_pollTimer;
    QTimer *m_reconnectTimer;
    LwClient *m_bridge = nullptr;
    bool m_bridgeEnabled = false;
    bool m_bridgeLinked = false;
    bool m_rigConnected = false;
    bool m_rigCanTune = false;
    RigConfig m_rigConfig;
    double m_lastFreqKhz = 0.0;
    QString m_lastMode;
    double m_lastCycleKhz = 0.0; // none yet
    bool m_disconnectHeld = false;
};
