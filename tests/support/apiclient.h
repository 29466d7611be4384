#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QWebSocket>

// A program connected to the local API, keeping what it received: replies and events apart.
class ApiClient final
{
public:
    explicit ApiClient(const QString &origin = QString())
        : socket(origin)
    {
        QObject::connect(&socket, &QWebSocket::textMessageReceived, &socket, [this](const QString &text) {
            const QJsonObject msg = QJsonDocument::fromJson(text.toUtf8()).object();
            (msg.value(QLatin1String("type")) == QLatin1String("reply") ? replies : events) << msg;
        });
    }
    void open(quint16 port) { socket.open(QUrl(QStringLiteral("ws://127.0.0.1:%1").arg(port))); }
    bool connectTo(quint16 port)
    {
        QSignalSpy connected(&socket, &QWebSocket::connected);
        open(port);
        return connected.wait(5000);
    }
    void send(const QByteArray &json) { socket.sendTextMessage(QString::fromUtf8(json)); }
    // The data of every event of that name, oldest first.
    QList<QJsonObject> eventData(const QString &name) const
    {
        QList<QJsonObject> found;
        for (const QJsonObject &e : events) {
            if (e.value(QLatin1String("event")).toString() == name)
                found << e.value(QLatin1String("data")).toObject();
        }
        return found;
    }
    // The reply to the command with that id; empty until it came.
    QJsonObject reply(const QString &id) const
    {
        for (const QJsonObject &r : replies) {
            if (r.value(QLatin1String("id")).toString() == id)
                return r;
        }
        return {};
    }

    QWebSocket socket;
    QList<QJsonObject> replies;
    QList<QJsonObject> events;
};
