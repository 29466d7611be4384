#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QWebSocket>

// One client of the window's WebSocket API, as a script or page would be: it
// sends commands, matches each reply to its command by id and times it.
// Events are counted, not parsed: "spots.updated" carries the whole table.
class ApiClient final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ApiClient)

public:
    explicit ApiClient(int index, QObject *parent = nullptr);

    void open(quint16 port);
    bool isGreeted() const { return m_greeted; }

    // Sends {"type":"cmd","id":...,"cmd":cmd,"data":data}.
    void send(const QString &cmd, const QJsonObject &data = {});

    int sent() const { return m_sent; }
    int replies() const { return m_replies; }
    int pending() const { return int(m_pending.size()); }
    QStringList errors() const { return m_errors; }
    qint64 eventBytes() const { return m_eventBytes; }
    int events() const { return m_events; }
    // Empty while open; otherwise when and how the connection ended.
    QString closedWhy() const { return m_closedWhy; }
    // Milliseconds from send to reply of each "status.get".
    const QList<double> &statusRoundTrips() const { return m_statusRoundTrips; }

private:
    void onText(const QString &text);

    QWebSocket m_socket;
    const int m_index;
    bool m_greeted = false;
    int m_sequence = 0;
    int m_sent = 0;
    int m_replies = 0;
    int m_events = 0;
    qint64 m_eventBytes = 0;
    QElapsedTimer m_clock;
    struct Pending
    {
        QString cmd;
        qint64 sentNs = 0;
    };
    QHash<QString, Pending> m_pending; // by id
    QStringList m_errors;
    QString m_closedWhy;
    QList<double> m_statusRoundTrips;
};
