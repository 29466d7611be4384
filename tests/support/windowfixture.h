#pragma once

#include "app/serviceurls.h"
#include "model/stationspot.h"
#include "support/httptestserver.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QObject>

#include <memory>

class MainWindow;
class QPushButton;
class QTableView;
class QTimer;
class SpotFilterProxyModel;
class StationModel;

// Base of the tests that build a whole MainWindow: before each test a fresh ~/.tallis and a local server
// answering every spot service with an empty, well-formed reply.
class WindowTest : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<HttpTestServer> m_server;

    ServiceUrls services() const { return ServiceUrls::allAt(m_server->url()); }

    static QString labelText(const MainWindow &w, const char *objectName);
    // The first button with that object name and text.
    static QPushButton *button(const MainWindow &w, const char *objectName, const QString &text);
    static QTableView *table(const MainWindow &w);
    static StationModel *model(const MainWindow &w);
    static SpotFilterProxyModel *proxy(const MainWindow &w);
    static QTimer *timer(const MainWindow &w, const char *objectName);
    // A real click on a row of the table, as the operator's mouse makes it.
    static void clickRow(const MainWindow &w, int row);
    static QString selectedCallsign(const MainWindow &w);
    // The status of the first model row of that call sign.
    static StationSpot::Status statusOf(const MainWindow &w, const QString &callsign);
    // What the rig is set to ("14062.0 CW"), read through Hamlib on the window's own link; the read
    // queues behind any tune the window has sent before it.
    static QString rigSetting(const MainWindow &w);

private slots:
    void init();
};

namespace WindowFixture {

// Writes the settings file as given, in ~/.tallis made if need be.
void writeSettings(const QByteArray &contents);
QJsonObject readSettings();

// A POTA reply from "CALL REFERENCE KHZ [MODE]" separated by ", ", newest first, secsApart apart.
QByteArray potaSpots(const QString &stations, int secsApart = 60);

} // namespace WindowFixture
