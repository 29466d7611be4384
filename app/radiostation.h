#pragma once

#include "radio/rigtypes.h"

#include <QObject>
#include <QString>

class HamlibController;
class HamlibLink;
class LwClient;
class QTimer;
class RadioRouter;

// Owns the radio's objects and their lifetime: the rig controller on its
// worker thread, the link into it, the poll and reconnect timers, the bridge
// to the companion program, and the router, which keeps the radio's state.
// The controller's reports come out as this object's signals, on its thread.
class RadioStation final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RadioStation)

public:
    explicit RadioStation(QObject *parent = nullptr);
    ~RadioStation() override;

    HamlibLink *link() const { return m_link; }
    RadioRouter *router() const { return m_router; }

    // Moves the rig controller to a thread of its own and starts it.
    void startWorker();
    // The bridge is made once, aimed at the companion program, and handed to the router.
    void startBridge(const QString &host, quint16 port, bool enabled);
    void retargetBridge(const QString &host, quint16 port, bool enabled);
    // Timers stopped, the worker thread ended, the controller gone. Once; the
    // destructor calls it when nobody did.
    void shutdown();

signals:
    void capabilitiesChanged(const RadioCaps &caps);
    void radioStateRead(const RadioState &state);
    void rigError(const QString &message);

private:
    HamlibController *m_rig; // parentless: it lives on its own thread
    QTimer *m_pollTimer;
    QTimer *m_reconnectTimer;
    HamlibLink *m_link;
    RadioRouter *m_router;
    LwClient *m_bridge = nullptr;
};
