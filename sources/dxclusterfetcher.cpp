#include "sources/dxclusterfetcher.h"

#include <QTcpSocket>
#include <QTimer>

#include <utility>

namespace {

bool isLoginRejection(const QString &line)
{
    // The last two as nodes refuse a call they do not know: "Sorry N0CALL is not a valid callsign".
    static const QLatin1String refusals[] = {
        QLatin1String("invalid call"),  QLatin1String("invalid callsign"),
        QLatin1String("access denied"), QLatin1String("not allowed"),
        QLatin1String("unauthorized"),  QLatin1String("refused"),
        QLatin1String("not a valid"),   QLatin1String("sorry"),
    };
    for (const QLatin1String &refusal : refusals) {
        if (line.contains(refusal, Qt::CaseInsensitive))
            return true;
    }
    // A short "73 bye" is a refusal; a long welcome that mentions "bye" is not.
    return line.size() < 20 && line.contains(QLatin1String("bye"), Qt::CaseInsensitive);
}

// "your call" ("Please enter your call: ") counts only before the login is
// accepted: once in, a spot comment may well say it. Nor is a refusal a
// prompt: "Sorry, your call is not registered" must not be answered.
bool isLoginPrompt(const QString &line, bool loggingIn)
{
    return line.contains(QLatin1String("login:"), Qt::CaseInsensitive) ||
           line.contains(QLatin1String("callsign:"), Qt::CaseInsensitive) ||
           (loggingIn && line.contains(QLatin1String("your call"), Qt::CaseInsensitive) &&
            !isLoginRejection(line));
}

} // namespace

DxClusterFetcher::DxClusterFetcher(QObject *parent)
    : DxClusterFetcher(QString::fromLatin1(k_defaultHost), k_defaultPort, QString(), parent)
{}

DxClusterFetcher::DxClusterFetcher(const QString &host, quint16 port, const QString &callsign,
                                   QObject *parent)
    : QObject(parent)
    , m_socket(new QTcpSocket(this))
    , m_reconnectTimer(new QTimer(this))
    , m_promptTimer(new QTimer(this))
    , m_clock([] { return QDateTime::currentMSecsSinceEpoch(); })
    , m_host(host)
    , m_port(port)
    , m_decoder(QStringDecoder::Utf8)
{
    registerStationSpotMetaTypes();
    setCallsign(callsign);
    m_reconnectTimer->setSingleShot(true);
    m_promptTimer->setSingleShot(true);
    m_promptTimer->setInterval(k_promptWindowMs);
    // A flooding node is held back by TCP rather than by our memory, and one
    // read never keeps the event loop busy for long.
    m_socket->setReadBufferSize(k_readChunkBytes);

    connect(m_socket, &QTcpSocket::connected, this, &DxClusterFetcher::onSocketConnected);
    connect(m_socket, &QTcpSocket::disconnected, this, &DxClusterFetcher::onSocketDisconnected);
    connect(m_socket, &QTcpSocket::readyRead, this, &DxClusterFetcher::onSocketReadyRead);
    connect(m_socket, &QTcpSocket::errorOccurred, this, &DxClusterFetcher::onSocketError);
    connect(m_reconnectTimer, &QTimer::timeout, this, &DxClusterFetcher::onReconnectTimer);
    connect(m_promptTimer, &QTimer::timeout, this, &DxClusterFetcher::onPromptWaitOver);
}

DxClusterFetcher::~DxClusterFetcher()
{
    // No slot of a half-destroyed object may run while the socket closes.
    m_socket->disconnect(this);
    m_socket->abort();
}

void DxClusterFetcher::setHost(const QString &host, quint16 port)
{
    if (host == m_host && port == m_port)
        return;
    m_host = host;
    m_port = port;
    if (m_state == LoggedIn)
        disconnectFromCluster();
}

void DxClusterFetcher::setCallsign(const QString &call)
{
    m_callsign = call.toUpper().trimmed();
}

bool DxClusterFetcher::sendLine(const QString &line)
{
    if (m_state != LoggedIn)
        return false;
    QString clean;
    clean.reserve(line.size());
    for (const QChar c : line) {
        if (c.category() != QChar::Other_Control)
            clean.append(c);
    }
    m_socket->write((clean + QLatin1String("\r\n")).toUtf8());
    return true;
}

void DxClusterFetcher::setClock(Clock clock)
{
    m_clock = std::move(clock);
}

bool DxClusterFetcher::isWaitingForPrompt() const
{
    return m_promptTimer->isActive() && m_clock() - m_connectedAtMs < k_promptWindowMs;
}

bool DxClusterFetcher::isReconnectPending() const
{
    return m_reconnectTimer->isActive();
}

int DxClusterFetcher::reconnectIntervalMs() const
{
    return m_reconnectTimer->interval();
}

void DxClusterFetcher::connectToCluster()
{
    if (!canStartConnection())
        return;
    m_stopped = false;
    // Asked again while backing off, the node is still as unreachable as it was.
    if (m_outcome != Outcome::Unreachable)
        setOutcome(Outcome::Connecting);
    startConnection();
}

void DxClusterFetcher::disconnectFromCluster()
{
    m_stopped = true;
    stopSession();
    setOutcome(Outcome::Off);
}

void DxClusterFetcher::reconnectNow()
{
    if (isRefused())
        connectToCluster();
}

void DxClusterFetcher::onReconnectTimer()
{
    // May also be invoked directly; a pending retry is then superseded.
    m_reconnectTimer->stop();
    if (m_stopped || !canStartConnection())
        return;
    startConnection();
}

bool DxClusterFetcher::canStartConnection()
{
    if (m_host.isEmpty()) {
        emit fetchError(QStringLiteral("DX cluster: no host configured"));
        return false;
    }
    return m_state == Disconnected;
}

void DxClusterFetcher::startConnection()
{
    m_reconnectTimer->stop();
    endSessionState();
    m_decoder.resetState();
    m_state = Connecting;
    emit fetchStarted();
    if (m_socket->state() != QAbstractSocket::UnconnectedState)
        m_socket->abort();
    m_socket->connectToHost(m_host, m_port, QIODevice::ReadWrite, QAbstractSocket::AnyIPProtocol);
}

void DxClusterFetcher::stopSession()
{
    m_reconnectTimer->stop();
    endSessionState();
    m_state = Disconnected;
    m_socket->disconnectFromHost();
    if (m_socket->state() != QAbstractSocket::UnconnectedState)
        m_socket->abort();
}

void DxClusterFetcher::endSessionState()
{
    ++m_session;
    m_buffer.clear();
    m_discardingLine = false;
    m_promptTimer->stop();
    m_promptSeen = false;
    m_heldLines.clear();
}

void DxClusterFetcher::scheduleReconnect()
{
    // An error and the disconnection that follows it are one failure, not two.
    if (m_reconnectTimer->isActive())
        return;
    m_reconnectTimer->start(m_reconnectDelayMs);
    m_reconnectDelayMs = qMin(m_reconnectDelayMs * 2, k_maxReconnectDelayMs);
}

QString DxClusterFetcher::addressText() const
{
    return QStringLiteral("%1:%2").arg(m_host).arg(m_port);
}

void DxClusterFetcher::setOutcome(Outcome outcome, const QString &text)
{
    if (outcome == m_outcome && text == m_outcomeText)
        return;
    // The time is when this kind of outcome began: a node failing with a new
    // error text has been unreachable since the first.
    if (outcome != m_outcome)
        m_outcomeAtMs = m_clock();
    m_outcome = outcome;
    m_outcomeText = text;
    emit outcomeChanged();
}

QString DxClusterFetcher::loginCall() const
{
    return m_callsign.isEmpty() ? QStringLiteral("GUEST") : m_callsign;
}

void DxClusterFetcher::sendLogin()
{
    // Nodes differ in their prompts, so the call goes out at once and again
    // at every prompt.
    m_socket->write((loginCall() + QLatin1String("\r\n")).toUtf8());
}

void DxClusterFetcher::onSocketConnected()
{
    // Lines to the node are few and short: each goes out at once, not held
    // back until the node acknowledges the one before.
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_state = LoggingIn;
    m_connectedAtMs = m_clock();
    m_promptTimer->start();
    sendLogin();
}

void DxClusterFetcher::onSocketDisconnected()
{
    if (refusedBeforeClosing())
        return;
    const State oldState = m_state;
    endSessionState();
    m_state = Disconnected;
    if (oldState == LoggedIn && m_clock() - m_loggedInAtMs >= k_steadySessionMs)
        m_reconnectDelayMs = k_initialReconnectDelayMs;
    if (oldState == LoggingIn || oldState == LoggedIn ||
        m_socket->error() == QAbstractSocket::RemoteHostClosedError)
        emit connectionChanged(false);
    if (m_stopped)
        return;
    scheduleReconnect();
    setOutcome(Outcome::Unreachable, m_socket->error() == QAbstractSocket::UnknownSocketError
                                         ? QStringLiteral("connection closed")
                                         : m_socket->errorString());
}

bool DxClusterFetcher::refusedBeforeClosing()
{
    // A node that refuses without prompting says so and closes at once,
    // while its lines still wait for the prompt window to close.
    if (m_state != LoggingIn || m_heldLines.isEmpty() || !isLoginRejection(m_heldLines.constFirst()))
        return false;
    rejectLogin(m_heldLines.constFirst());
    return true;
}

void DxClusterFetcher::onSocketError(QAbstractSocket::SocketError socketError)
{
    Q_UNUSED(socketError)
    if (refusedBeforeClosing())
        return;
    emit fetchError(QStringLiteral("%1 \u2014 %2").arg(addressText(), m_socket->errorString()));
    if (m_state != LoggedIn && !m_stopped) {
        m_state = Disconnected;
        scheduleReconnect();
        setOutcome(Outcome::Unreachable, m_socket->errorString());
    }
}

void DxClusterFetcher::onSocketReadyRead()
{
    const QByteArray data = m_socket->readAll();
    if (m_state == Disconnected)
        return; // the tail of a session already ended here

    m_buffer += m_decoder.decode(data);
    // Handling a line may end the session (a refusal, or a receiver that
    // disconnects); the rest of the buffer then belongs to nobody.
    const quint64 session = m_session;
    qsizetype start = 0;
    for (;;) {
        const qsizetype lineFeed = m_buffer.indexOf(QLatin1Char('\n'), start);
        if (lineFeed < 0)
            break;
        const qsizetype lineStart = start;
        start = lineFeed + 1;
        if (m_discardingLine) {
            m_discardingLine = false;
            continue;
        }
        if (lineFeed == lineStart)
            continue;
        processLine(m_buffer.mid(lineStart, lineFeed - lineStart));
        if (m_session != session)
            return;
    }
    m_buffer.remove(0, start);

    if (m_buffer.size() > k_maxLineChars) {
        m_buffer.clear();
        m_discardingLine = true;
    }
    answerPartialPrompt();
}

void DxClusterFetcher::answerPartialPrompt()
{
    // A prompt comes without a line feed and the node then waits for the call.
    if (m_state != LoggingIn || m_discardingLine || m_buffer.isEmpty())
        return;
    const QString text = stripAnsi(m_buffer).trimmed();
    if (!text.endsWith(QLatin1Char(':')) && !text.endsWith(QLatin1Char('>')))
        return;
    if (!isLoginPrompt(text, true))
        return;
    m_buffer.clear();
    answerPrompt();
}

void DxClusterFetcher::answerPrompt()
{
    if (m_state == LoggingIn && !m_promptSeen) {
        if (m_clock() - m_connectedAtMs <= k_promptWindowMs) {
            // What came before was a banner.
            m_promptSeen = true;
            m_heldLines.clear();
            m_promptTimer->stop();
        } else if (!m_heldLines.isEmpty()) {
            judgeHeldLines(); // too late to make a banner of them
            if (m_state != LoggedIn)
                return;
        }
    }
    sendLogin();
}

void DxClusterFetcher::onPromptWaitOver()
{
    // May also be invoked directly; the window is over either way.
    m_promptTimer->stop();
    if (m_state == LoggingIn && !m_heldLines.isEmpty())
        judgeHeldLines();
}

void DxClusterFetcher::judgeHeldLines()
{
    m_promptTimer->stop();
    const QStringList held = std::exchange(m_heldLines, QStringList());
    if (!acceptOrReject(held.first()))
        return;
    const quint64 session = m_session;
    for (const QString &line : held) {
        handleSpotLine(line);
        if (m_session != session || m_state != LoggedIn)
            return;
    }
}

bool DxClusterFetcher::passLoginPhase(const QString &line)
{
    // A node that echoes what it is sent repeats the call; that is no answer.
    if (line.compare(loginCall(), Qt::CaseInsensitive) == 0)
        return false;
    // A banner is a few dozen lines; a node that sends more is not waiting
    // to prompt, and its lines are not kept for ever.
    if (isWaitingForPrompt() && m_heldLines.size() < k_maxBannerLines) {
        m_heldLines.append(line);
        return false;
    }
    if (!m_heldLines.isEmpty()) {
        judgeHeldLines();
        return m_state == LoggedIn;
    }
    return acceptOrReject(line);
}

void DxClusterFetcher::rejectLogin(const QString &heldLine)
{
    // The line may be one of the held lines, which the session's end clears.
    const QString line = heldLine;
    emit fetchError(QStringLiteral("%1 \u2014 login rejected: %2").arg(addressText(), line));
    m_stopped = true;
    {
        // The session ends here; the closing socket has nothing more to report.
        const QSignalBlocker quiet(m_socket);
        stopSession();
    }
    setOutcome(Outcome::Refused, line);
}

bool DxClusterFetcher::acceptOrReject(const QString &line)
{
    if (isLoginRejection(line)) {
        rejectLogin(line);
        return false;
    }
    m_promptTimer->stop();
    m_state = LoggedIn;
    m_loggedInAtMs = m_clock();
    m_socket->write("SET/DX\r\n");
    emit connectionChanged(true);
    if (m_state != LoggedIn)
        return false; // a receiver ended the session
    setOutcome(Outcome::LoggedIn);
    return m_state == LoggedIn;
}

void DxClusterFetcher::processLine(const QString &rawLine)
{
    const QString line = stripAnsi(rawLine).trimmed();
    if (line.isEmpty())
        return;

    if (isLoginPrompt(line, m_state == LoggingIn)) {
        answerPrompt();
        return;
    }
    if (m_state == LoggingIn && !passLoginPhase(line))
        return;
    handleSpotLine(line);
}

void DxClusterFetcher::handleSpotLine(const QString &line)
{
    if (line.startsWith(QLatin1String("DX de "), Qt::CaseInsensitive)) {
        StationSpot spot = parseDxLine(line);
        if (spot.frequencyKhz > 0 && !spot.callsign.isEmpty())
            emit spotsReady(QList<StationSpot>{std::move(spot)});
    }
}
