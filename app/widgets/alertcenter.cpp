#include "app/widgets/alertcenter.h"

#include "app/alertpolicy.h"
#include "app/desktopnotifier.h"
#include "app/settingsfile.h"

#include <QDBusConnection>
#include <QIcon>
#include <QSystemTrayIcon>

AlertCenter::AlertCenter(const WorkedIndex *worked, QObject *parent)
    : QObject(parent)
    , m_policy(new AlertPolicy(worked, this))
    , m_notifier(new DesktopNotifier(QDBusConnection::sessionBus(), this))
{
    connect(m_policy, &AlertPolicy::alert, m_notifier, &DesktopNotifier::show);
    connect(m_notifier, &DesktopNotifier::spotActivated, this, &AlertCenter::spotRequested);
    connect(m_notifier, &DesktopNotifier::fallbackRequested, this, &AlertCenter::showInTray);
}

AlertCenter::~AlertCenter() = default;

void AlertCenter::applySettings(const AppSettings &settings)
{
    m_policy->setEnabled(settings.alertsEnabled);
    m_policy->setNeededOnly(settings.alertNeededOnly);
    m_policy->setWatchCallsigns(settings.watchCallsigns);
    m_policy->setWatchReferences(settings.watchReferences);
    m_notifier->setSoundEnabled(settings.alertSound);
}

void AlertCenter::seed(const QList<StationSpot> &spots)
{
    m_policy->seed(spots);
}

void AlertCenter::processBatch(const QList<StationSpot> &batch)
{
    m_policy->processBatch(batch);
}

void AlertCenter::showInTray(const QString &title, const QString &body, const QString &key)
{
    if (!QSystemTrayIcon::isSystemTrayAvailable())
        return;
    if (!m_tray) {
        m_tray = new QSystemTrayIcon(QIcon(QStringLiteral(":/logo.jpg")), this);
        connect(m_tray, &QSystemTrayIcon::messageClicked, this, [this] { emit spotRequested(m_trayKey); });
        m_tray->show();
    }
    m_trayKey = key;
    m_tray->showMessage(title, body);
}
