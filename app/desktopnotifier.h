#pragma once

#include "app/alertpolicy.h"

#include <QDBusConnection>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

// Shows alerts through the desktop's notification service on D-Bus. A click
// on a notification asks for its spot; where no service answers, the alert is
// handed back for the window's tray icon to show.
class DesktopNotifier final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DesktopNotifier)

public:
    static constexpr int k_callTimeoutMs = 3000;
    // Notifications whose spot a click can still select; older ones are forgotten.
    static constexpr int k_maxRemembered = 64;

    // bus: the connection to use, the user's session bus in the program.
    explicit DesktopNotifier(const QDBusConnection &bus, QObject *parent = nullptr);
    ~DesktopNotifier() override;

    // The "message-new-instant" sound with each notification.
    void setSoundEnabled(bool enabled) { m_soundEnabled = enabled; }
    bool isSoundEnabled() const { return m_soundEnabled; }

public slots:
    void show(const SpotAlert &alert);

signals:
    // The operator clicked the notification of this spot.
    void spotActivated(const QString &spotKey);
    // No notification service took the alert: show it some other way.
    void fallbackRequested(const QString &title, const QString &body, const QString &spotKey);

private slots:
    // Called by D-Bus, so by name: the signals of the notification service.
    void onActionInvoked(uint id, const QString &actionKey);
    void onNotificationClosed(uint id, uint reason);

private:
    void remember(uint id, const QString &spotKey);

    QDBusConnection m_bus;
    bool m_soundEnabled = true;
    QHash<uint, QString> m_spotKeys; // notification id -> spot key
    QList<uint> m_ids;               // oldest first
};
