#include "support/notificationstandin.h"

#include <QDBusMessage>
#include <QFile>

namespace {

const QString k_service = QStringLiteral("org.freedesktop.Notifications");
const QString k_path = QStringLiteral("/org/freedesktop/Notifications");

const char k_busConfig[] = "<busconfig><type>session</type><listen>unix:dir=%1</listen><auth>EXTERNAL</auth>"
                           "<policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
                           "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>";

} // namespace

TestBus::TestBus()
{
    QFile config(m_dir.filePath(QStringLiteral("bus.conf")));
    if (!config.open(QIODevice::WriteOnly))
        return;
    config.write(QString::fromLatin1(k_busConfig).arg(m_dir.path()).toUtf8());
    config.close();
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--config-file=") + config.fileName(), QStringLiteral("--print-address"),
                    QStringLiteral("--nofork")});
    while (!m_daemon.canReadLine() && m_daemon.waitForReadyRead(5000)) {
    }
    m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
}

TestBus::~TestBus()
{
    for (const QString &name : std::as_const(m_names))
        QDBusConnection::disconnectFromBus(name);
    m_daemon.terminate();
    if (!m_daemon.waitForFinished(3000))
        m_daemon.kill();
}

QDBusConnection TestBus::connect(const QString &name)
{
    m_names.append(name);
    return QDBusConnection::connectToBus(m_address, name);
}

NotificationStandIn::NotificationStandIn(const QDBusConnection &bus)
    : m_bus(bus)
{
    m_registered = m_bus.registerObject(k_path, this, QDBusConnection::ExportAllSlots) &&
                   m_bus.registerService(k_service);
}

NotificationStandIn::~NotificationStandIn()
{
    m_bus.unregisterService(k_service);
    m_bus.unregisterObject(k_path);
}

void NotificationStandIn::invokeAction(uint id, const QString &actionKey)
{
    QDBusMessage signal = QDBusMessage::createSignal(k_path, k_service, QStringLiteral("ActionInvoked"));
    m_bus.send(signal << id << actionKey);
}

uint NotificationStandIn::Notify(const QString &, uint, const QString &, const QString &summary,
                                 const QString &body, const QStringList &actions, const QVariantMap &hints,
                                 int)
{
    m_calls.append(Call{summary, body, actions, hints});
    return uint(m_calls.size());
}
