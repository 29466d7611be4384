#include "app/widgets/windowlabels.h"

#include <QLabel>
#include <QStatusBar>
#include <QToolBar>

namespace {
QLabel *makeLabel(const QString &text, const char *objectName, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(QLatin1String(objectName));
    return label;
}

QString unconfigured()
{
    // The same text stands for every disconnection, configured or not.
    return QStringLiteral("Radio unconfigured — consult the settings");
}
} // namespace

void WindowLabels::addToToolBar(QToolBar *bar)
{
    m_toolbarRadioStatus = makeLabel(QStringLiteral("Radio: Not Connected"), "toolbarRadioStatus", bar);
    m_toolbarDxStatus = makeLabel(QStringLiteral("DX: Disconnected"), "toolbarDxStatus", bar);
    m_callsignLabel = makeLabel(QStringLiteral("DE: [not set]"), "callsignLabel", bar);
    for (QLabel *label : {m_toolbarRadioStatus, m_toolbarDxStatus, m_callsignLabel}) {
        bar->addSeparator();
        bar->addWidget(label);
    }
}

void WindowLabels::addToStatusBar(QStatusBar *bar)
{
    m_statusBarRadio = makeLabel(unconfigured(), "statusRadio", bar);
    bar->addWidget(m_statusBarRadio, 0);
    m_statusSpots = makeLabel(QStringLiteral("No spots"), "statusSpots", bar);
    m_statusSpots->setAlignment(Qt::AlignCenter);
    // Permanent, so that a passing message never hides the counts.
    bar->addPermanentWidget(m_statusSpots, 1);
    m_statusRefresh =
        makeLabel(QStringLiteral("Last refresh: not yet (the scribes are en route…)"), "statusRefresh", bar);
    m_statusRefresh->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    bar->addPermanentWidget(m_statusRefresh);
    m_statusBridge = makeLabel(QStringLiteral("LW: linked"), "statusBridge", bar);
    bar->addPermanentWidget(m_statusBridge);
    m_statusBridge->hide();
    m_statusSources = makeLabel(QString(), "statusSources", bar);
    bar->addPermanentWidget(m_statusSources);
    m_statusLogbook = makeLabel(QString(), "statusLogbook", bar);
    bar->addPermanentWidget(m_statusLogbook);
    m_statusLogbook->hide();
}

void WindowLabels::showCallsign(const QString &callsign)
{
    m_callsignLabel->setText(callsign.isEmpty() ? QStringLiteral("DE: [not set]")
                                                : QStringLiteral("DE: %1").arg(callsign));
}

void WindowLabels::showDxConnected(bool connected)
{
    m_toolbarDxStatus->setText(connected ? QStringLiteral("DX: Connected")
                                         : QStringLiteral("DX: Disconnected"));
}

void WindowLabels::showSpotCounts(const QString &text)
{
    m_statusSpots->setText(text);
}

void WindowLabels::showRefreshed(const QDateTime &at)
{
    m_statusRefresh->setText(QStringLiteral("Last refresh: %1").arg(at.toString(QStringLiteral("HH:mm:ss"))));
}

void WindowLabels::showSources(const QString &text, const QString &toolTip)
{
    m_statusSources->setText(text);
    m_statusSources->setToolTip(toolTip);
}

void WindowLabels::showLogbook(const QString &text, const QString &toolTip)
{
    m_statusLogbook->setText(text);
    m_statusLogbook->setToolTip(toolTip);
    m_statusLogbook->setVisible(!text.isEmpty());
}

void WindowLabels::showRigConnected(bool connected)
{
    m_toolbarRadioStatus->setText(connected ? QStringLiteral("Radio: Connected")
                                            : QStringLiteral("Radio: Not Connected"));
    m_statusBarRadio->setText(connected ? QStringLiteral("Radio: Connected") : unconfigured());
}

void WindowLabels::showBridgeLinked()
{
    m_statusBarRadio->setText(QStringLiteral("Radio: Connected (via Lampwick)"));
    m_statusBridge->setText(QStringLiteral("LW: linked"));
    m_statusBridge->setStyleSheet(QStringLiteral("color: #7fbf7f; font-weight: bold; padding: 0 8px;"));
    m_statusBridge->show();
}

void WindowLabels::showBridgeUnlinked(bool rigConnected, bool bridgeEnabled)
{
    showBridgeRetrying(bridgeEnabled);
    m_statusBarRadio->setText(rigConnected ? QStringLiteral("Radio: Connected") : unconfigured());
}

void WindowLabels::showBridgeRetrying(bool retrying)
{
    m_statusBridge->setText(QStringLiteral("LW: not linked — retrying"));
    m_statusBridge->setStyleSheet(QStringLiteral("color: #c9a84c; padding: 0 8px;"));
    m_statusBridge->setVisible(retrying);
}

void WindowLabels::showBridgeRig(bool connected)
{
    m_statusBarRadio->setText(connected ? QStringLiteral("Radio: Connected (via Lampwick)")
                                        : QStringLiteral("Radio: Lampwick rig not connected"));
}
