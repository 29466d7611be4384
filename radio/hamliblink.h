#pragma once

#include "radio/radiocontrol.h"
#include "radio/rigtypes.h"

#include <QList>
#include <QObject>
#include <QString>

class HamlibController;
class QThread;

// The only way into the rig controller from another thread, and its reports
// back out on this object's thread. Every call is a typed functor queued to the
// controller's thread, so a misspelt operation is a compile error rather than a
// silent no-op; the *AndWait forms block until the worker has answered, for the
// set-up dialog's buttons.
class HamlibLink final : public QObject, public RadioControl
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HamlibLink)

public:
    explicit HamlibLink(HamlibController *rig, QObject *parent = nullptr);
    ~HamlibLink() override;

    HamlibController *controller() const { return m_rig; }
    // Moves the controller to a thread of its own, a child of threadParent,
    // and starts it; from then on only the calls below reach it.
    QThread *startWorkerThread(QObject *threadParent);
    // Asks the thread to finish and waits for it at most waitMs.
    void stopWorkerThread(int waitMs);
    // The controller's atomic flag: safe from any thread.
    bool isConnected() const;

    void connectRig(const RigConfig &config);
    void disconnectRig();
    void requestPoll();
    void setBreakIn(int breakIn);

    void tune(double kHz, const QString &mode) override;
    // Sets the frequency, then the first of the Hamlib mode names the rig takes; quiet when it takes none.
    void tuneWithModes(double kHz, const QStringList &rigModes);
    void setFrequency(double kHz) override;
    void setVolume(int volume) override;
    void setRfPower(int power) override;
    void setMute(bool muted) override;
    void setFilter(int filter) override;
    void setKeySpeed(int wpm) override;
    void startTune() override;

    bool connectRigAndWait(const RigConfig &config);
    void disconnectRigAndWait();
    // Reads frequency (kHz) and mode from the rig; false when not connected.
    bool readFrequencyAndWait(double &kHz, QString &mode);
    QList<RigModelInfo> rigModelsAndWait();

signals:
    void connectionChanged(bool connected);
    void pollResult(double kHz, const QString &mode);
    void capabilitiesChanged(const RadioCaps &caps);

private:
    template <typename Call>
    void post(Call call);

    HamlibController *m_rig;
    QThread *m_thread = nullptr;
};
