#pragma once

#include <QDBusConnection>
#include <QList>
#include <QObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QVariantMap>

// A private D-Bus daemon for one test program: no service directories, so
// nothing is activated behind the test's back and the user's session is never reached.
class TestBus final
{
public:
    TestBus();
    ~TestBus();
    Q_DISABLE_COPY_MOVE(TestBus)

    QString address() const { return m_address; } // empty when the daemon did not start
    QDBusConnection connect(const QString &name);

private:
    QTemporaryDir m_dir;
    QProcess m_daemon;
    QString m_address;
    QStringList m_names;
};

// The desktop's notification service, as far as the notifier uses it: records
// each Notify call (ids 1, 2, 3…) and sends what a click would.
class NotificationStandIn final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
    Q_DISABLE_COPY_MOVE(NotificationStandIn)

public:
    struct Call
    {
        QString summary;
        QString body;
        QStringList actions;
        QVariantMap hints;
    };

    explicit NotificationStandIn(const QDBusConnection &bus);
    ~NotificationStandIn() override;

    bool isRegistered() const { return m_registered; }
    const QList<Call> &calls() const { return m_calls; }

    void invokeAction(uint id, const QString &actionKey);

public slots:
    uint Notify(const QString &appName, uint replacesId, const QString &appIcon, const QString &summary,
                const QString &body, const QStringList &actions, const QVariantMap &hints, int expireTimeout);

private:
    QDBusConnection m_bus;
    QList<Call> m_calls;
    bool m_registered = false;
};
