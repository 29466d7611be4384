#include "radio/hamliblink.h"

#include "radio/hamlibcontroller.h"

#include <QThread>

HamlibLink::HamlibLink(HamlibController *rig, QObject *parent)
    : QObject(parent)
    , m_rig(rig)
{
    connect(rig, &HamlibController::connectionChanged, this, &HamlibLink::connectionChanged);
    connect(rig, &HamlibController::pollResult, this, &HamlibLink::pollResult);
    connect(rig, &HamlibController::capabilitiesChanged, this, &HamlibLink::capabilitiesChanged);
}

HamlibLink::~HamlibLink() = default;

QThread *HamlibLink::startWorkerThread(QObject *threadParent)
{
    m_thread = new QThread(threadParent);
    m_thread->setObjectName(QStringLiteral("rigThread"));
    m_rig->moveToThread(m_thread);
    m_thread->start(QThread::InheritPriority);
    return m_thread;
}

void HamlibLink::stopWorkerThread(int waitMs)
{
    if (!m_thread)
        return;
    m_thread->quit();
    m_thread->wait(waitMs);
}

template <typename Call>
void HamlibLink::post(Call call)
{
    HamlibController *rig = m_rig;
    QMetaObject::invokeMethod(
        rig, [rig, call] { call(*rig); }, Qt::QueuedConnection);
}

namespace {
// Blocking calls must not wait on their own thread: that would deadlock.
Qt::ConnectionType waitingConnection(const QObject *target)
{
    return target->thread() == QThread::currentThread() ? Qt::DirectConnection : Qt::BlockingQueuedConnection;
}
} // namespace

bool HamlibLink::isConnected() const
{
    return m_rig->isConnected();
}

void HamlibLink::connectRig(const RigConfig &config)
{
    post([config](HamlibController &rig) { rig.connectRig(config); });
}

void HamlibLink::disconnectRig()
{
    post([](HamlibController &rig) { rig.disconnectRig(); });
}

void HamlibLink::requestPoll()
{
    post([](HamlibController &rig) { rig.requestPoll(); });
}

void HamlibLink::setBreakIn(int breakIn)
{
    post([breakIn](HamlibController &rig) { rig.setBreakIn(breakIn); });
}

void HamlibLink::tune(double kHz, const QString &mode)
{
    post([kHz, mode](HamlibController &rig) { rig.tune(kHz, mode); });
}

void HamlibLink::tuneWithModes(double kHz, const QStringList &rigModes)
{
    post([kHz, rigModes](HamlibController &rig) { rig.tuneWithModes(kHz, rigModes); });
}

void HamlibLink::setFrequency(double kHz)
{
    post([kHz](HamlibController &rig) { rig.setFrequency(kHz); });
}

void HamlibLink::setVolume(int volume)
{
    post([volume](HamlibController &rig) { rig.setVolume(volume); });
}

void HamlibLink::setRfPower(int power)
{
    post([power](HamlibController &rig) { rig.setRfPower(power); });
}

void HamlibLink::setMute(bool muted)
{
    post([muted](HamlibController &rig) { rig.setMute(muted); });
}

void HamlibLink::setFilter(int filter)
{
    post([filter](HamlibController &rig) { rig.setFilter(filter); });
}

void HamlibLink::setKeySpeed(int wpm)
{
    post([wpm](HamlibController &rig) { rig.setKeySpeed(wpm); });
}

void HamlibLink::startTune()
{
    post([](HamlibController &rig) { rig.startTune(); });
}

bool HamlibLink::connectRigAndWait(const RigConfig &config)
{
    bool connected = false;
    HamlibController *rig = m_rig;
    QMetaObject::invokeMethod(
        rig, [rig, config] { return rig->connectRig(config); }, waitingConnection(rig), &connected);
    return connected;
}

void HamlibLink::disconnectRigAndWait()
{
    HamlibController *rig = m_rig;
    QMetaObject::invokeMethod(
        rig, [rig] { rig->disconnectRig(); }, waitingConnection(rig));
}

bool HamlibLink::readFrequencyAndWait(double &kHz, QString &mode)
{
    struct Reading
    {
        bool ok = false;
        double kHz = 0.0;
        QString mode;
    };
    Reading reading;
    HamlibController *rig = m_rig;
    QMetaObject::invokeMethod(
        rig,
        [rig] {
            Reading r;
            r.ok = rig->isConnected();
            if (r.ok) {
                r.kHz = rig->getFrequency();
                r.mode = rig->getMode();
            }
            return r;
        },
        waitingConnection(rig), &reading);
    kHz = reading.kHz;
    mode = reading.mode;
    return reading.ok;
}

QList<RigModelInfo> HamlibLink::rigModelsAndWait()
{
    QList<RigModelInfo> rigs;
    HamlibController *rig = m_rig;
    QMetaObject::invokeMethod(
        rig, [rig] { return rig->rigModels(); }, waitingConnection(rig), &rigs);
    return rigs;
}
