#include "sources/dxclusterfetcher.h"

#include "sources/dxcc.h"

#include <QRegularExpression>
#include <QTcpSocket>
#include <QTimer>

#include <array>

namespace {

const QChar k_escape(0x1b);

struct ModeCheck
{
    const char *word;
    const char *mode;
};

// Searched in this order, first hit wins: FT8 beats CW in "FT8 CW", PSK31 beats PSK.
constexpr ModeCheck k_modeChecks[] = {
    {"FT8", "FT8"},   {"FT4", "FT4"},   {"RTTY", "RTTY"}, {"PSK31", "PSK31"}, {"PSK", "PSK"},
    {"DIGI", "DIGI"}, {"DATA", "DATA"}, {"USB", "USB"},   {"LSB", "LSB"},     {"SSB", "SSB"},
    {"CW", "CW"},     {"AM", "AM"},     {"FM", "FM"},
};
constexpr std::size_t k_modeCount = sizeof(k_modeChecks) / sizeof(k_modeChecks[0]);

const std::array<QRegularExpression, k_modeCount> &modeExpressions()
{
    static const std::array<QRegularExpression, k_modeCount> expressions = [] {
        std::array<QRegularExpression, k_modeCount> built;
        for (std::size_t i = 0; i < k_modeCount; ++i) {
            built[i] =
                QRegularExpression(QStringLiteral("\\b(%1)\\b").arg(QLatin1String(k_modeChecks[i].word)),
                                   QRegularExpression::CaseInsensitiveOption);
            built[i].optimize();
        }
        return built;
    }();
    return expressions;
}

const QRegularExpression &spotLineExpression()
{
    static const QRegularExpression expression = [] {
        QRegularExpression re(
            QStringLiteral(
                "^DX de ([A-Z0-9/]+):\\s+(\\d+(?:\\.\\d+)?)\\s+([A-Z0-9/]+)\\s*(.*?)\\s+(\\d{4})Z?\\s*$"),
            QRegularExpression::CaseInsensitiveOption);
        re.optimize();
        return re;
    }();
    return expression;
}

bool isLoginPrompt(const QString &line)
{
    return line.contains(QLatin1String("login:"), Qt::CaseInsensitive) ||
           line.contains(QLatin1String("callsign:"), Qt::CaseInsensitive);
}

bool isLoginRejection(const QString &line)
{
    static const QLatin1String refusals[] = {
        QLatin1String("invalid call"), QLatin1String("invalid callsign"), QLatin1String("access denied"),
        QLatin1String("not allowed"),  QLatin1String("unauthorized"),     QLatin1String("refused"),
    };
    for (const QLatin1String &refusal : refusals) {
        if (line.contains(refusal, Qt::CaseInsensitive))
            return true;
    }
    // A short "73 bye" is a refusal; a long welcome that mentions "bye" is not.
    return line.size() < 20 && line.contains(QLatin1String("bye"), Qt::CaseInsensitive);
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
    , m_host(host)
    , m_port(port)
    , m_decoder(QStringDecoder::Utf8)
{
    registerStationSpotMetaTypes();
    setCallsign(callsign);
    m_reconnectTimer->setSingleShot(true);
    // A flooding node is held back by TCP rather than by our memory, and one
    // read never keeps the event loop busy for long.
    m_socket->setReadBufferSize(k_readChunkBytes);

    connect(m_socket, &QTcpSocket::connected, this, &DxClusterFetcher::onSocketConnected);
    connect(m_socket, &QTcpSocket::disconnected, this, &DxClusterFetcher::onSocketDisconnected);
    connect(m_socket, &QTcpSocket::readyRead, this, &DxClusterFetcher::onSocketReadyRead);
    connect(m_socket, &QTcpSocket::errorOccurred, this, &DxClusterFetcher::onSocketError);
    connect(m_reconnectTimer, &QTimer::timeout, this, &DxClusterFetcher::onReconnectTimer);
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
    startConnection();
}

void DxClusterFetcher::disconnectFromCluster()
{
    m_stopped = true;
    stopSession();
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
    ++m_session;
    m_buffer.clear();
    m_discardingLine = false;
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
    ++m_session;
    m_state = Disconnected;
    m_buffer.clear();
    m_socket->disconnectFromHost();
    if (m_socket->state() != QAbstractSocket::UnconnectedState)
        m_socket->abort();
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

void DxClusterFetcher::sendLogin()
{
    // Nodes differ in their prompts, so the call goes out at once and again
    // at every prompt.
    const QString call = m_callsign.isEmpty() ? QStringLiteral("GUEST") : m_callsign;
    m_socket->write((call + QLatin1String("\r\n")).toUtf8());
}

void DxClusterFetcher::onSocketConnected()
{
    m_state = LoggingIn;
    sendLogin();
}

void DxClusterFetcher::onSocketDisconnected()
{
    const State oldState = m_state;
    ++m_session;
    m_state = Disconnected;
    m_buffer.clear();
    m_discardingLine = false;
    if (oldState == LoggingIn || oldState == LoggedIn ||
        m_socket->error() == QAbstractSocket::RemoteHostClosedError)
        emit connectionChanged(false);
    if (!m_stopped)
        scheduleReconnect();
}

void DxClusterFetcher::onSocketError(QAbstractSocket::SocketError socketError)
{
    Q_UNUSED(socketError)
    emit fetchError(QStringLiteral("%1 \u2014 %2").arg(addressText(), m_socket->errorString()));
    if (m_state != LoggedIn && !m_stopped) {
        m_state = Disconnected;
        scheduleReconnect();
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
}

void DxClusterFetcher::processLine(const QString &rawLine)
{
    const QString line = stripAnsi(rawLine).trimmed();
    if (line.isEmpty())
        return;

    if (isLoginPrompt(line)) {
        sendLogin();
        return;
    }

    if (m_state == LoggingIn) {
        if (isLoginRejection(line)) {
            emit fetchError(QStringLiteral("%1 \u2014 login rejected: %2").arg(addressText(), line));
            m_stopped = true;
            stopSession();
            return;
        }
        m_state = LoggedIn;
        m_reconnectDelayMs = k_initialReconnectDelayMs;
        m_socket->write("SET/DX\r\n");
        emit connectionChanged(true);
        if (m_state != LoggedIn)
            return; // a receiver ended the session
    }

    if (line.startsWith(QLatin1String("DX de "), Qt::CaseInsensitive)) {
        StationSpot spot = parseDxLine(line);
        if (spot.frequencyKhz > 0 && !spot.callsign.isEmpty())
            emit spotsReady(QList<StationSpot>{std::move(spot)});
    }
}

QString DxClusterFetcher::stripAnsi(const QString &text)
{
    if (!text.contains(k_escape))
        return text;
    static const QRegularExpression ansi(QStringLiteral("\\x1b\\[[0-9;]*[mK]"));
    QString stripped = text;
    stripped.remove(ansi);
    return stripped;
}

QString DxClusterFetcher::extractMode(const QString &comment)
{
    const auto &expressions = modeExpressions();
    for (std::size_t i = 0; i < k_modeCount; ++i) {
        if (expressions[i].match(comment).hasMatch())
            return QString::fromLatin1(k_modeChecks[i].mode);
    }
    return {};
}

QDateTime DxClusterFetcher::spotTimeUtc(int hhmm, const QDateTime &nowUtc)
{
    if (hhmm < 0)
        return {};
    const QTime clock(hhmm / 100, hhmm % 100);
    if (!clock.isValid())
        return {};
    const QDateTime now = nowUtc.toUTC();
    QDateTime stamp(now.date(), clock, Qt::UTC);
    // A spot stamped 2359 and received at 0001 belongs to yesterday.
    if (now.secsTo(stamp) > 43200)
        stamp = stamp.addDays(-1);
    return stamp;
}

StationSpot DxClusterFetcher::parseDxLine(const QString &line)
{
    return parseDxLine(line, QDateTime::currentDateTimeUtc());
}

StationSpot DxClusterFetcher::parseDxLine(const QString &line, const QDateTime &nowUtc)
{
    const QRegularExpressionMatch match = spotLineExpression().match(line.trimmed());
    if (!match.hasMatch())
        return {};

    bool numberOk = false;
    const double frequencyKhz = match.capturedView(2).toDouble(&numberOk);
    const QString dxCall = match.captured(3).toUpper();
    if (!numberOk || !(frequencyKhz > 0) || dxCall.isEmpty())
        return {};

    StationSpot spot;
    spot.source = StationSpot::DX;
    spot.callsign = dxCall;
    spot.referenceName = dxEntityForCallsign(dxCall);
    spot.frequencyKhz = frequencyKhz;
    spot.spotter = match.captured(1).toUpper();
    spot.comments = match.captured(4).trimmed();
    spot.mode = extractMode(spot.comments);
    spot.spotTime = spotTimeUtc(match.capturedView(5).toInt(), nowUtc);
    return spot;
}
