#pragma once

#include <QDateTime>
#include <QString>

class QLabel;
class QStatusBar;
class QToolBar;

// The window's standing read-outs: the tool bar's short radio, DX and call
// sign labels, and the status bar's radio, spot-count, refresh, bridge and
// source-health labels, with the texts they show.
class WindowLabels final
{
public:
    WindowLabels() = default;
    WindowLabels(const WindowLabels &) = delete;
    WindowLabels &operator=(const WindowLabels &) = delete;

    void addToToolBar(QToolBar *bar);
    void addToStatusBar(QStatusBar *bar);

    void showCallsign(const QString &callsign);
    void showDxConnected(bool connected);
    void showSpotCounts(const QString &text);
    void showRefreshed(const QDateTime &at);
    void showSources(const QString &text, const QString &toolTip);
    // "Logbook: 2 waiting" with each logbook's last outcome as tool tip; hidden when text is empty.
    void showLogbook(const QString &text, const QString &toolTip);

    // The rig controller's own state, by the Hamlib path.
    void showRigConnected(bool connected);
    // The companion program has the radio, or gave it back.
    void showBridgeLinked();
    // bridgeEnabled: the bridge keeps retrying, and the label says so.
    void showBridgeUnlinked(bool rigConnected, bool bridgeEnabled);
    // The bridge was switched on or off while it has no link.
    void showBridgeRetrying(bool retrying);
    // What the companion program says of its own rig.
    void showBridgeRig(bool connected);

private:
    // The tool bar's short radio state, and the status bar's longer one.
    QLabel *m_toolbarRadioStatus = nullptr;
    QLabel *m_toolbarDxStatus = nullptr;
    QLabel *m_callsignLabel = nullptr;
    QLabel *m_statusBarRadio = nullptr;
    QLabel *m_statusSpots = nullptr;
    QLabel *m_statusRefresh = nullptr;
    QLabel *m_statusBridge = nullptr;
    QLabel *m_statusSources = nullptr;
    QLabel *m_statusLogbook = nullptr;
};
