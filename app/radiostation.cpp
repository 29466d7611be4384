#include "app/radiostation.h"

#include "radio/hamlibcontroller.h"
#include "radio/hamliblink.h"
#include "radio/lwclient.h"
#include "radio/radiorouter.h"

#include <QTimer>

namespace {

constexpr int k_workerStopMs = 3000;

} // namespace

RadioStation::RadioStation(QObject *parent)
    : QObject(parent)
    , m_rig(new HamlibController) // parentless: it moves to its own thread
    , m_pollTimer(new QTimer(this))
    , m_reconnectTimer(new QTimer(this))
    , m_link(new HamlibLink(m_rig, this))
    , m_router(new RadioRouter(m_link, m_pollTimer, m_reconnectTimer, this))
{
    connect(m_rig, &HamlibController::capabilitiesChanged, this, &RadioStation::capabilitiesChanged);
    connect(m_rig, &HamlibController::radioStateRead, this, &RadioStation::radioStateRead);
    connect(m_rig, &HamlibController::error, this, &RadioStation::rigError);
}

RadioStation::~RadioStation()
{
    shutdown();
}

void RadioStation::startWorker()
{
    m_link->startWorkerThread(this);
}

void RadioStation::startBridge(const QString &host, quint16 port, bool enabled)
{
    m_bridge = new LwClient(this);
    m_bridge->setTarget(host, port);
    m_router->setBridge(m_bridge);
    m_router->setBridgeEnabled(enabled);
    if (enabled)
        m_bridge->setEnabled(true);
}

void RadioStation::retargetBridge(const QString &host, quint16 port, bool enabled)
{
    m_router->setBridgeEnabled(enabled);
    m_bridge->retarget(host, port, enabled);
}

void RadioStation::shutdown()
{
    if (!m_rig)
        return;
    m_pollTimer->stop();
    m_reconnectTimer->stop();
    m_link->stopWorkerThread(k_workerStopMs);
    // Its shutdown reports a disconnection that nobody is left to show.
    m_rig->disconnect();
    delete m_rig;
    m_rig = nullptr;
}
