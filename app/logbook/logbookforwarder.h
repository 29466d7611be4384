#pragma once

#include "app/logbook/adifwriter.h"
#include "app/logbook/logbookoutbox.h"
#include "app/logbook/logdelivery.h"
#include "app/logbook/logtarget.h"

#include <QDateTime>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QUrl>

#include <functional>

class QNetworkAccessManager;
class QNetworkReply;
class QTimer;
class QUdpSocket;

// Hands every logged record to the operator's logbooks as it is logged. UDP
// listeners get it at once (a closed one cannot be noticed; only a failed
// send is). Online logbooks get it through the outbox: written first, posted
// one at a time per logbook, settled when the service answers, retried with
// growing waits while it does not, also after a restart. Nothing here blocks:
// sends, look-ups and posts all finish on the event loop.
class LogbookForwarder final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LogbookForwarder)

public:
    using Clock = std::function<QDateTime()>;

    // Loads and compacts the outbox at outboxPath; nothing is sent before configure().
    explicit LogbookForwarder(QString outboxPath, QObject *parent = nullptr);
    ~LogbookForwarder() override;

    void setClock(Clock clock);
    void setQrzUrl(const QUrl &url) { m_qrzUrl = url; }
    void setHttpTimeoutMs(int ms) { m_httpTimeoutMs = ms; }

    // The targets of the settings and the operator's station; waiting records go out.
    void configure(const QList<LogTarget> &targets, const AdifStation &station);
    // Sends records to every enabled target.
    void forward(const QList<ContactRecord> &records);

    // Wait before the next attempt after this many failures in a row: 30 s doubling to 30 min.
    static int retryDelaySecs(int failures);

    int waitingCount() const { return m_outbox.pendingCount(); }
    // "Logbook: 3 waiting", empty when nothing waits.
    QString statusText() const;
    // One line per target with how its last send went; never a key.
    QString statusToolTip() const;

public slots:
    // Posts whatever is due now; the retry timer calls it.
    void deliverDue();

signals:
    void statusChanged(const QString &text, const QString &toolTip);
    // A refusal or a failed send, for the status bar.
    void notice(const QString &message);

private:
    struct TargetState
    {
        QString lastOutcome;
        int failures = 0;
        QDateTime nextAttempt;
    };

    void sendUdp(int index, const ContactRecord &record);
    void writeDatagrams(int index, const QHostAddress &address, const QList<QByteArray> &datagrams);
    void queue(int index, const ContactRecord &record);
    void post(int index, const OutboxEntry &entry);
    void onReply(int index, const OutboxEntry &entry, QNetworkReply *reply);
    void settle(int index, const OutboxEntry &entry, const DeliveryOutcome &outcome);
    bool targetFits(const OutboxEntry &entry) const;
    void scheduleRetry();
    void setOutcome(int index, const QString &outcome);
    void publish();
    QDateTime now() const { return m_clock(); }

    LogbookOutbox m_outbox;
    QList<LogTarget> m_targets;
    QList<TargetState> m_states; // one per target
    AdifStation m_station;
    bool m_configured = false;
    QSet<int> m_busy; // targets with a post in flight
    QUdpSocket *m_udp;
    QNetworkAccessManager *m_network;
    QTimer *m_retryTimer;
    Clock m_clock;
    QUrl m_qrzUrl;
    int m_httpTimeoutMs = 15000;
    QString m_shownText;
    QString m_shownToolTip;
};
