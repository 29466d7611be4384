#pragma once

#include "app/serviceurls.h"
#include "model/stationspot.h"
#include "support/httptestserver.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QObject>

#include <memory>

class HamlibController;
class MainWindow;
class QPushButton;
class QTableView;
class QTimer;
class SpotFilterProxyModel;
class StationModel;

// Base of the tests that build a whole MainWindow: before each test a fresh
// ~/.tallis and a local server answering every spot service with an empty,
// well-formed reply.
class WindowTest : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<HttpTestServer> m_server;

    ServiceUrls services() const { return ServiceUrls::allAt(m_server->url()); }

    static QString labelText(const MainWindow &w, const char *objectName);
    // The first button with that object name and text.
    static QPushButton *button(const MainWindow &w, const char *objectName, const QString &text);
    static void clickSource(const MainWindow &w, const QString &text);
    static QTableView *table(const MainWindow &w);
    static StationModel *model(const MainWindow &w);
    static SpotFilterProxyModel *proxy(const MainWindow &w);
    static HamlibController *rig(const MainWindow &w);
    static QTimer *timer(const MainWindow &w, const char *objectName);
    // A real click on a row of the table, as the operator's mouse makes it.
    static void clickRow(const MainWindow &w, int row);
    static QString selectedCallsign(const MainWindow &w);
    // The status of the first model row of that call sign.
    static StationSpot::Status statusOf(const MainWindow &w, const QString &callsign);

private slots:
    void init();
    void cleanup();
};

namespace WindowFixture {

void serveEmptySources(HttpTestServer &server);
QString settingsPath();
// Writes the settings file as given, in ~/.tallis made if need be.
void writeSettings(const QByteArray &contents);
QJsonObject readSettings();

// A POTA spot object as the service sends it, spotted secsAgo seconds ago.
QJsonObject potaSpot(const QString &call, const QString &reference, double khz, int secsAgo,
                     const QString &mode = QStringLiteral("CW"));
QByteArray toBody(const QJsonArray &spots);
// A POTA reply from "CALL REFERENCE KHZ [MODE]" separated by ", ", newest first, a minute apart.
QByteArray potaSpots(const QString &stations);

} // namespace WindowFixture
