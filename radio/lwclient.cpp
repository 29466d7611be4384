#include "radio/lwclient.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>
#include <QUrl>
#include <QWebSocket>

LwClient::LwClient(QObject *parent)
    : QObject(parent)
    , m_socket(new QWebSocket(QString(), QWebSocketProtocol::VersionLatest, this))
    , m_reconnectTimer(new QTimer(this))
{
    m_reconnectTimer->setObjectName(QStringLiteral("lwReconnectTimer"));
    m_reconnectTimer->setInterval(k_reconnectMs);
    connect(m_reconnectTimer, &QTimer::timeout, this, &LwClient::attemptConnect);
    connect(m_socket, &QWebSocket::connected, this, &LwClient::onConnected);
    connect(m_socket, &QWebSocket::disconnected, this, &LwClient::onDisconnected);
    connect(m_socket, &QWebSocket::textMessageReceived, this, &LwClient::onTextMessage);
    // Socket errors need no handling: the disconnect and the timer recover.
}

LwClient::~LwClient()
{
    m_socket->disconnect(this);
    m_socket->close(QWebSocketProtocol::CloseCodeNormal);
}

void LwClient::setTarget(const QString &host, quint16 port)
{
    m_host = host;
    m_port = port;
}

void LwClient::setEnabled(bool on)
{
    if (on == m_enabled)
        return;
    m_enabled = on;
    if (on) {
        attemptConnect();
        m_reconnectTimer->start();
        return;
    }
    m_reconnectTimer->stop();
    if (m_linked) {
        sendCmd(QStringLiteral("link.release"), {});
        m_socket->close(QWebSocketProtocol::CloseCodeNormal);
    } else {
        m_socket->abort(); // an attempt still under way
    }
}

void LwClient::retarget(const QString &host, quint16 port, bool enabled)
{
    const bool moved = host != m_host || port != m_port;
    setTarget(host, port);
    if (moved)
        setEnabled(false);
    setEnabled(enabled);
}

void LwClient::attemptConnect()
{
    if (m_linked)
        return;
    m_socket->open(QUrl(QStringLiteral("ws://%1:%2").arg(m_host).arg(m_port)));
}

void LwClient::onConnected()
{
    m_linked = true;
    sendCmd(QStringLiteral("link.announce"), {{QStringLiteral("controller"), QStringLiteral("Tallis")}});
    emit connectedToLw();
}

void LwClient::onDisconnected()
{
    // A failed attempt also ends here; only a lost link is news to the program.
    const bool wasLinked = std::exchange(m_linked, false);
    if (wasLinked)
        emit disconnectedFromLw();
    if (m_enabled && !m_reconnectTimer->isActive())
        m_reconnectTimer->start();
}

void LwClient::onTextMessage(const QString &message)
{
    const QJsonObject msg = QJsonDocument::fromJson(message.toUtf8()).object();
    if (msg.value(QLatin1String("type")).toString() != QLatin1String("event"))
        return;
    const QString event = msg.value(QLatin1String("event")).toString();
    const QJsonObject data = msg.value(QLatin1String("data")).toObject();
    if (event == QLatin1String("radio.frequency")) {
        m_lastMode = data.value(QLatin1String("mode")).toString();
        emit radioFrequency(data.value(QLatin1String("freq_khz")).toDouble(0.0), m_lastMode);
    } else if (event == QLatin1String("radio.connected")) {
        emit radioConnectedChanged(true);
    } else if (event == QLatin1String("radio.disconnected")) {
        emit radioConnectedChanged(false);
    } else if (event == QLatin1String("status")) {
        const QJsonValue kHz = data.value(QLatin1String("radio_freq_khz"));
        if (kHz.isUndefined())
            return;
        const QJsonValue mode = data.value(QLatin1String("radio_mode"));
        if (mode.isString())
            m_lastMode = mode.toString();
        emit radioFrequency(kHz.toDouble(0.0), m_lastMode);
    }
}

void LwClient::sendCmd(const QString &cmd, const QJsonObject &data)
{
    if (!m_linked && cmd != QLatin1String("link.release"))
        return;
    QJsonObject envelope{{QStringLiteral("type"), QStringLiteral("cmd")},
                         {QStringLiteral("id"), QString::number(++m_sequence)},
                         {QStringLiteral("cmd"), cmd}};
    if (!data.isEmpty())
        envelope.insert(QStringLiteral("data"), data);
    m_socket->sendTextMessage(QString::fromUtf8(QJsonDocument(envelope).toJson(QJsonDocument::Compact)));
}

void LwClient::tune(double kHz, const QString &mode)
{
    sendCmd(QStringLiteral("link.tune"), {{QStringLiteral("freq_khz"), kHz}, {QStringLiteral("mode"), mode}});
}

void LwClient::setFrequency(double kHz)
{
    sendCmd(QStringLiteral("radio.frequency.set"), {{QStringLiteral("freq_khz"), kHz}});
}

void LwClient::setMode(const QString &mode)
{
    sendCmd(QStringLiteral("radio.mode.set"), {{QStringLiteral("mode"), mode}});
}

void LwClient::setVolume(int volume)
{
    sendCmd(QStringLiteral("radio.volume.set"), {{QStringLiteral("volume"), volume}});
}

void LwClient::setRfPower(int power)
{
    sendCmd(QStringLiteral("radio.power.set"), {{QStringLiteral("power"), power}});
}

void LwClient::setMute(bool muted)
{
    sendCmd(QStringLiteral("radio.mute"), {{QStringLiteral("muted"), muted}});
}

void LwClient::setFilter(int filter)
{
    sendCmd(QStringLiteral("radio.filter.set"), {{QStringLiteral("filter"), filter}});
}

void LwClient::setKeySpeed(int wpm)
{
    sendCmd(QStringLiteral("radio.keyspeed.set"), {{QStringLiteral("wpm"), wpm}});
}

void LwClient::startTune()
{
    sendCmd(QStringLiteral("radio.tune"), {});
}
