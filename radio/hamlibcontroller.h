#pragma once

#include "radio/rigtypes.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>

struct s_rig;

// The one place that talks to the transceiver: wraps a Hamlib rig handle.
// It lives on a worker thread of its own and is reached only through
// HamlibLink's typed calls; only isConnected() may be called from another thread.
class HamlibController final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HamlibController)

public:
    explicit HamlibController(QObject *parent = nullptr);
    ~HamlibController() override;

    bool isConnected() const;
    double getFrequency() const;
    QString getMode() const;
    RadioState queryState() const;
    RadioCaps queryCaps() const;
    // Every model Hamlib knows, as "%1 — %2 %3" entries in ordinal text order.
    QStringList availableRigs() const;
    // The same models with their parts, in Hamlib's own order.
    QList<RigModelInfo> rigModels() const;

    // Hamlib level and function bits the controller may use (all by default); those left out count
    // as missing, as on a rig without them.
    void setCapabilityMask(quint64 levels, quint64 funcs);

public slots:
    bool connectRig(const RigConfig &config);
    void disconnectRig();
    bool setFrequency(double kHz);
    bool tune(double kHz, const QString &mode);
    // The frequency, then the first of the Hamlib mode names ("PKTUSB", "USB") the rig
    // accepts; a rig that takes none keeps its mode and no error is reported.
    bool tuneWithModes(double kHz, const QStringList &rigModes);
    bool setPtt(bool on);
    void requestPoll();

    // Panel controls: silently ignored without a connected rig, Hamlib errors dropped.
    void setVolume(int volume);
    void setRfPower(int power);
    void setMute(bool mute);
    void setFilter(int filter);
    void setBreakIn(int breakIn);
    void setKeySpeed(int wpm);
    void startTune();

signals:
    void connectionChanged(bool connected);
    void frequencyChanged(double kHz);
    void error(const QString &message);
    void pollResult(double kHz, const QString &mode);
    void capabilitiesChanged(const RadioCaps &caps);
    void radioStateRead(const RadioState &state);

private:
    bool isReady() const;
    bool canSetLevel(quint64 level) const;
    bool canGetLevel(quint64 level) const;
    bool canSetFunc(quint64 func) const;
    bool canGetFunc(quint64 func) const;
    void closeRig();
    void leaveConnected();

    s_rig *m_rig = nullptr;
    std::atomic_bool m_connected{false};
    int m_pttType = 0;
    int m_pollErrorCount = 0;
    int m_savedVolume = 75;
    quint64 m_levelMask = ~quint64(0);
    quint64 m_funcMask = ~quint64(0);
};
