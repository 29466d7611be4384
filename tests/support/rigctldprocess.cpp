#include "support/rigctldprocess.h"

#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#ifdef Q_OS_LINUX
#include <csignal>
#include <sys/prctl.h>
#endif

namespace {

quint16 freeLoopbackPort()
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost, 0) ? probe.serverPort() : 0;
}

bool acceptsConnections(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    return socket.waitForConnected(200);
}

} // namespace

RigctldProcess::~RigctldProcess()
{
    stop();
}

bool RigctldProcess::start(quint16 port)
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("rigctld"));
    if (program.isEmpty()) {
        // The project's setup installs it; a missing daemon is a failure, not a skip.
        m_error = QStringLiteral("rigctld is missing: install Hamlib's utilities (libhamlib-utils)");
        return false;
    }
    m_port = port != 0 ? port : freeLoopbackPort();
    if (m_port == 0) {
        m_error = QStringLiteral("no free loopback port");
        return false;
    }
    m_process.setProgram(program);
    m_process.setArguments({QStringLiteral("-m"), QStringLiteral("1"), QStringLiteral("-P"),
                            QStringLiteral("RIG"), QStringLiteral("-T"), QStringLiteral("127.0.0.1"),
                            QStringLiteral("-t"), QString::number(m_port)});
#ifdef Q_OS_LINUX
    // A test that aborts takes its daemon with it.
    m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
#endif
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.start();
    if (!m_process.waitForStarted(5000)) {
        m_error = m_process.errorString();
        return false;
    }
    const auto up = [this] { return m_process.state() != QProcess::Running || acceptsConnections(m_port); };
    if (QTest::qWaitFor(up, 10000) && m_process.state() == QProcess::Running)
        return true;
    m_error = m_process.state() == QProcess::Running ? QStringLiteral("rigctld did not accept connections")
                                                     : QStringLiteral("rigctld exited early");
    return false;
}

void RigctldProcess::stop()
{
    m_link.abort();
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(5000);
}

RigConfig RigctldProcess::rigConfig() const
{
    RigConfig config;
    config.rigModel = 2; // Hamlib's NET rigctl
    config.port = QStringLiteral("127.0.0.1:%1").arg(m_port);
    return config;
}

QStringList RigctldProcess::ask(const QByteArray &command, int replyLines)
{
    if (m_link.state() != QAbstractSocket::ConnectedState) {
        m_link.connectToHost(QHostAddress::LocalHost, m_port);
        if (!m_link.waitForConnected(5000))
            return {};
    }
    m_link.write(command + '\n');
    QStringList lines;
    while (lines.size() < replyLines && (m_link.canReadLine() || m_link.waitForReadyRead(5000))) {
        while (lines.size() < replyLines && m_link.canReadLine())
            lines << QString::fromLatin1(m_link.readLine()).trimmed();
    }
    return lines;
}
