#include "soakclients.h"

#include <QJsonDocument>
#include <QUrl>

ApiClient::ApiClient(int index, QObject *parent)
    : QObject(parent)
    , m_index(index)
{
    m_clock.start();
    // Room for the whole table in one event, as a page would allow.
    m_socket.setMaxAllowedIncomingMessageSize(256 * 1024 * 1024);
    connect(&m_socket, &QWebSocket::textMessageReceived, this, &ApiClient::onText);
    connect(&m_socket, &QWebSocket::disconnected, this, [this] {
        m_closedWhy = QStringLiteral("closed after %1 s, %2 pending: %3 %4")
                          .arg(double(m_clock.elapsed()) / 1000.0, 0, 'f', 1)
                          .arg(m_pending.size())
                          .arg(int(m_socket.closeCode()))
                          .arg(m_socket.closeReason());
    });
}

void ApiClient::open(quint16 port)
{
    m_socket.open(QUrl(QStringLiteral("ws://127.0.0.1:%1").arg(port)));
}

void ApiClient::send(const QString &cmd, const QJsonObject &data)
{
    const QString id = QStringLiteral("c%1-%2").arg(m_index).arg(++m_sequence);
    QJsonObject message{{QStringLiteral("type"), QStringLiteral("cmd")},
                        {QStringLiteral("id"), id},
                        {QStringLiteral("cmd"), cmd}};
    if (!data.isEmpty())
        message.insert(QStringLiteral("data"), data);
    m_pending.insert(id, {cmd, m_clock.nsecsElapsed()});
    ++m_sent;
    m_socket.sendTextMessage(QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact)));
}

void ApiClient::onText(const QString &text)
{
    // The server writes "type" first: events are told apart without parsing them.
    if (!text.startsWith(QLatin1String(R"({"type":"reply")"))) {
        ++m_events;
        m_eventBytes += text.size();
        if (!m_greeted && text.contains(QLatin1String(R"("event":"hello")")))
            m_greeted = true;
        return;
    }
    const QJsonObject reply = QJsonDocument::fromJson(text.toUtf8()).object();
    const auto it = m_pending.constFind(reply.value(QLatin1String("id")).toString());
    if (it == m_pending.cend()) {
        m_errors.append(QStringLiteral("reply to no command: ") + text.left(200));
        return;
    }
    ++m_replies;
    if (it->cmd == QLatin1String("status.get"))
        m_statusRoundTrips.append(double(m_clock.nsecsElapsed() - it->sentNs) / 1e6);
    if (!reply.value(QLatin1String("ok")).toBool())
        m_errors.append(it->cmd + QStringLiteral(": ") + reply.value(QLatin1String("error")).toString());
    m_pending.erase(it);
}
