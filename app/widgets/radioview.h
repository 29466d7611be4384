#pragma once

#include "radio/radiorouter.h"

#include <QObject>
#include <QString>

class QStatusBar;
class RadioPanel;
class RadioStation;
class WindowLabels;

// What the window shows when the radio's owner reports: connection labels,
// the read-out, the panel's controls as the rig can use them, and the
// status-bar notices. It decides nothing about the radio.
class RadioView final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RadioView)

public:
    RadioView(const RadioStation &station, RadioPanel *panel, WindowLabels &labels, QStatusBar *statusBar,
              QObject *parent = nullptr);
    ~RadioView() override;

private:
    void rigConnected();
    void rigDisconnected();
    void bridgeLinked();
    void bridgeUnlinked();
    void frequencyChanged(double kHz, const QString &mode, RadioPath path);
    void tuned(double kHz, bool viaBridge);
    void atuCycleStarted(double kHz);

    const RadioRouter *m_router;
    RadioPanel *m_panel;
    WindowLabels &m_labels;
    QStatusBar *m_statusBar;
};
