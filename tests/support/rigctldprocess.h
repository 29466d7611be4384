#pragma once

#include "radio/rigtypes.h"

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTcpSocket>

// Hamlib's network rig daemon with its dummy rig (rigctld -m 1, keyed by CAT) on
// a loopback port, for tests of the network-rig path. It stops when destroyed.
class RigctldProcess final
{
public:
    RigctldProcess() = default;
    ~RigctldProcess();
    Q_DISABLE_COPY_MOVE(RigctldProcess)

    // Starts on the given port, or on a free one when port is 0, and waits
    // until it accepts connections. On failure, errorString() says why.
    bool start(quint16 port = 0);
    void stop();
    quint16 port() const { return m_port; }
    QString errorString() const { return m_error; }

    // The controller's settings for this daemon: Hamlib's NET rigctl model.
    RigConfig rigConfig() const;

    // One command in rigctld's plain protocol ("F 14074000", "t"), over a link of the test's own;
    // returns the reply's lines, "RPRT <code>" for a setting. Empty when no answer came.
    QStringList ask(const QByteArray &command, int replyLines = 1);

private:
    QProcess m_process;
    QTcpSocket m_link;
    quint16 m_port = 0;
    QString m_error;
};
