#pragma once

#include "radio/rigtypes.h"

#include <QObject>
#include <QString>

class LwClient;
class QStatusBar;
class RadioPanel;
class RadioRouter;
class WindowLabels;
class WsServer;

// What the window shows and tells API clients when either radio path
// reports: connection labels, the read-out, the status-bar notices, the
// pushes. The router keeps the timers and the last frequency and mode.
class RadioView final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RadioView)

public:
    RadioView(RadioRouter *router, RadioPanel *panel, WindowLabels &labels, QStatusBar *statusBar,
              QObject *parent = nullptr);
    ~RadioView() override;

    // Set once they exist, after the view is made.
    void setApiServer(WsServer *server) { m_api = server; }
    void setBridge(LwClient *bridge) { m_bridge = bridge; }

    void rigConnectionChanged(bool connected);
    void rigPolled(double kHz, const QString &mode);
    void bridgeLinked();
    void bridgeUnlinked();
    void bridgeFrequency(double kHz, const QString &mode);
    void bridgeRigChanged(bool connected, bool bridgeEnabled);
    // Shows the tune notice; the tune itself is the router's.
    void tuned(double kHz, bool viaBridge);
    // Tunes when a radio path is up and the frequency is known, with a tuner
    // cycle after it when autoAtu is asked and the rig can. False when not tuned.
    bool tuneTo(double kHz, const QString &mode, bool autoAtu);

private:
    RadioRouter *m_router;
    RadioPanel *m_panel;
    WindowLabels &m_labels;
    QStatusBar *m_statusBar;
    WsServer *m_api = nullptr;
    LwClient *m_bridge = nullptr;
};
