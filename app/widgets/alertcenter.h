#pragma once

#include "model/stationspot.h"

#include <QList>
#include <QObject>
#include <QString>

class AlertPolicy;
class DesktopNotifier;
class QSystemTrayIcon;
class WorkedIndex;
struct AppSettings;

// Watch-list alerts as the window uses them: the policy deciding which
// activations are news, the desktop notification service, and the tray
// icon's message where no such service answers. A click on either asks for
// the spot to be selected.
class AlertCenter final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AlertCenter)

public:
    AlertCenter(const WorkedIndex *worked, QObject *parent = nullptr);
    ~AlertCenter() override;

    AlertPolicy *policy() const { return m_policy; }
    void applySettings(const AppSettings &settings);
    // Spots shown before any source answered: what has been seen, not news.
    void seed(const QList<StationSpot> &spots);
    void processBatch(const QList<StationSpot> &batch);

signals:
    void spotRequested(const QString &key);

private:
    void showInTray(const QString &title, const QString &body, const QString &key);

    AlertPolicy *m_policy;
    DesktopNotifier *m_notifier;
    QSystemTrayIcon *m_tray = nullptr;
    QString m_trayKey;
};
