#pragma once

#include "radio/radiocontrol.h"

#include <QObject>
#include <QString>

class QJsonObject;
class QTimer;
class QWebSocket;

// The bridge to the companion CW program: while enabled it keeps a WebSocket
// link to it, announces this program as a controller, forwards radio requests
// as commands and turns the companion's radio events into signals.
class LwClient final : public QObject, public RadioControl
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LwClient)

public:
    static constexpr int k_reconnectMs = 15000;

    explicit LwClient(QObject *parent = nullptr);
    ~LwClient() override;

    // Used from the next connection attempt on.
    void setTarget(const QString &host, quint16 port);
    QString host() const { return m_host; }
    quint16 port() const { return m_port; }

    void setEnabled(bool on);
    // The bridge settings changed: a new target while linked takes effect at
    // once, not at the next drop.
    void retarget(const QString &host, quint16 port, bool enabled);
    bool isEnabled() const { return m_enabled; }
    bool isLinked() const { return m_linked; }
    const QTimer *reconnectTimer() const { return m_reconnectTimer; }

    // Commands are dropped silently while not linked; values go out unclamped.
    void tune(double kHz, const QString &mode) override;
    void setFrequency(double kHz) override;
    void setMode(const QString &mode);
    void setVolume(int volume) override;
    void setRfPower(int power) override;
    void setMute(bool muted) override;
    void setFilter(int filter) override;
    void setKeySpeed(int wpm) override;
    void startTune() override;

signals:
    void connectedToLw();
    void disconnectedFromLw();
    void radioFrequency(double kHz, const QString &mode);
    void radioConnectedChanged(bool connected);

private:
    void attemptConnect();
    void onConnected();
    void onDisconnected();
    void onTextMessage(const QString &message);
    void sendCmd(const QString &cmd, const QJsonObject &data);

    QWebSocket *m_socket;
    QTimer *m_reconnectTimer;
    QString m_host = QStringLiteral("127.0.0.1");
    quint16 m_port = 2104;
    bool m_enabled = false;
    bool m_linked = false;
    quint64 m_sequence = 0; // rises across reconnections
    QString m_lastMode;     // "status" events carry a frequency but may lack the mode
};
