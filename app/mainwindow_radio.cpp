// The main window's side of the rig: the worker thread, the poll and
// reconnect timers, and the read-out of what the radio reports.
#include "app/detailpanel.h"
#include "app/mainwindow.h"
#include "radio/hamlibcontroller.h"

#include <QLabel>
#include <QStatusBar>
#include <QThread>
#include <QTimer>

void MainWindow::wireRig()
{
    connect(m_rig, &HamlibController::connectionChanged, this, &MainWindow::onRadioConnectionChanged);
    connect(m_rig, &HamlibController::capabilitiesChanged, this, &MainWindow::onCapabilitiesChanged);
    connect(m_rig, &HamlibController::radioStateRead, this, &MainWindow::onRadioStateRead);
    connect(m_rig, &HamlibController::error, this,
            [this](const QString &message) { statusBar()->showMessage(message, 5000); });

    m_rigThread = new QThread(this);
    m_rigThread->setObjectName(QStringLiteral("rigThread"));
    m_rig->moveToThread(m_rigThread);
    m_rigThread->start(QThread::InheritPriority);

    m_pollTimer->setInterval(500);
    connect(m_pollTimer, &QTimer::timeout, m_rig, &HamlibController::requestPoll);
    connect(m_rig, &HamlibController::pollResult, this, &MainWindow::onRadioPollResult);

    m_reconnectTimer->setInterval(15000);
    connect(m_reconnectTimer, &QTimer::timeout, this, &MainWindow::onRigReconnectTick);
}

void MainWindow::startupChecks()
{
    if (m_settings.rig.port.isEmpty())
        return;
    // Let the window appear before a slow serial rig is opened.
    const RigConfig config = m_settings.rig;
    QTimer::singleShot(1500, this, [this, config] {
        QMetaObject::invokeMethod(m_rig, "connectRig", Qt::QueuedConnection, Q_ARG(RigConfig, config));
    });
}

void MainWindow::onRigReconnectTick()
{
    if (m_settings.rig.port.isEmpty() || m_rig->isConnected())
        return;
    QMetaObject::invokeMethod(m_rig, "connectRig", Qt::QueuedConnection, Q_ARG(RigConfig, m_settings.rig));
}

void MainWindow::onRadioConnectionChanged(bool connected)
{
    if (connected) {
        m_toolbarRadioStatus->setText(QStringLiteral("Radio: Connected"));
        m_statusRadio->setText(QStringLiteral("Radio: Connected"));
        statusBar()->showMessage(QStringLiteral("Radio connection established — let the hunt commence."),
                                 4000);
        m_pollTimer->start();
        m_reconnectTimer->stop();
        QMetaObject::invokeMethod(m_rig, "requestPoll", Qt::QueuedConnection);
        return;
    }
    m_toolbarRadioStatus->setText(QStringLiteral("Radio: Not Connected"));
    m_statusRadio->setText(QStringLiteral("Radio unconfigured — consult the settings"));
    statusBar()->showMessage(QStringLiteral("Radio connection severed."), 4000);
    m_pollTimer->stop();
    m_detailPanel->radioFreqLabel()->setText(QStringLiteral("NOT CONNECTED"));
    m_detailPanel->radioModeLabel()->clear();
    if (!m_settings.rig.port.isEmpty())
        m_reconnectTimer->start();
}

void MainWindow::onCapabilitiesChanged(const RadioCaps &caps)
{
    Q_UNUSED(caps)
}

void MainWindow::onRadioStateRead(const RadioState &state)
{
    Q_UNUSED(state)
}

void MainWindow::onRadioPollResult(double kHz, const QString &mode)
{
    if (kHz > 0) {
        m_detailPanel->radioFreqLabel()->setText(QStringLiteral("%1 MHz").arg(kHz / 1000.0, 0, 'f', 3));
        m_lastFreqKhz = kHz;
    }
    m_detailPanel->radioModeLabel()->setText(mode);
    m_lastMode = mode;
}

void MainWindow::tuneStation(double kHz, const QString &mode)
{
    QMetaObject::invokeMethod(m_rig, "tune", Qt::QueuedConnection, Q_ARG(double, kHz), Q_ARG(QString, mode));
    statusBar()->showMessage(
        QStringLiteral("Tuned to %1 kHz — may fortune favour the bold.").arg(kHz, 0, 'f', 0), 4000);
}
