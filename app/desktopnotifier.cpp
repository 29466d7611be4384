#include "app/desktopnotifier.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

namespace {

const QString k_service = QStringLiteral("org.freedesktop.Notifications");
const QString k_path = QStringLiteral("/org/freedesktop/Notifications");
const QString k_interface = QStringLiteral("org.freedesktop.Notifications");

} // namespace

DesktopNotifier::DesktopNotifier(const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
{
    // Only the service's owner is listened to, and only for our own ids.
    m_bus.connect(k_service, k_path, k_interface, QStringLiteral("ActionInvoked"), this,
                  SLOT(onActionInvoked(uint, QString)));
    m_bus.connect(k_service, k_path, k_interface, QStringLiteral("NotificationClosed"), this,
                  SLOT(onNotificationClosed(uint, uint)));
}

DesktopNotifier::~DesktopNotifier()
{
    m_bus.disconnect(k_service, k_path, k_interface, QStringLiteral("ActionInvoked"), this,
                     SLOT(onActionInvoked(uint, QString)));
    m_bus.disconnect(k_service, k_path, k_interface, QStringLiteral("NotificationClosed"), this,
                     SLOT(onNotificationClosed(uint, uint)));
}

void DesktopNotifier::show(const SpotAlert &alert)
{
    if (!m_bus.isConnected()) {
        emit fallbackRequested(alert.title, alert.body, alert.spotKey);
        return;
    }
    QVariantMap hints;
    if (m_soundEnabled)
        hints.insert(QStringLiteral("sound-name"), QStringLiteral("message-new-instant"));
    // "default" is what a click on the notification itself invokes.
    const QStringList actions{QStringLiteral("default"), QStringLiteral("Show")};
    QDBusMessage call =
        QDBusMessage::createMethodCall(k_service, k_path, k_interface, QStringLiteral("Notify"));
    // Servers read the body as markup: a name with "&" or "<" must stay text.
    call << QStringLiteral("Tallis") << 0u << QString() << alert.title << alert.body.toHtmlEscaped()
         << actions << hints << -1;

    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, k_callTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, alert](QDBusPendingCallWatcher *finished) {
                const QDBusPendingReply<uint> reply = *finished;
                finished->deleteLater();
                if (reply.isError())
                    emit fallbackRequested(alert.title, alert.body, alert.spotKey);
                else
                    remember(reply.value(), alert.spotKey);
            });
}

void DesktopNotifier::remember(uint id, const QString &spotKey)
{
    if (!m_spotKeys.contains(id))
        m_ids.append(id);
    m_spotKeys.insert(id, spotKey);
    while (m_ids.size() > k_maxRemembered)
        m_spotKeys.remove(m_ids.takeFirst());
}

void DesktopNotifier::onActionInvoked(uint id, const QString &actionKey)
{
    Q_UNUSED(actionKey) // either action shows the spot
    const auto it = m_spotKeys.constFind(id);
    if (it != m_spotKeys.cend())
        emit spotActivated(it.value());
}

void DesktopNotifier::onNotificationClosed(uint id, uint reason)
{
    Q_UNUSED(reason)
    if (m_spotKeys.remove(id))
        m_ids.removeOne(id);
}
