#include "support/windowfixture.h"

#include "app/mainwindow.h"
#include "app/tallisdir.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamliblink.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QItemSelectionModel>
#include <QJsonDocument>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>

void WindowTest::init()
{
    QDir(tallisDirPath()).removeRecursively();
    m_server = std::make_unique<HttpTestServer>();
    QVERIFY(m_server->start());
    WindowFixture::serveEmptySources(*m_server);
}

void WindowTest::cleanup()
{
    m_server.reset();
}

QString WindowTest::labelText(const MainWindow &w, const char *objectName)
{
    const auto *label = w.findChild<QLabel *>(QLatin1String(objectName));
    return label ? label->text() : QStringLiteral("<no label %1>").arg(QLatin1String(objectName));
}

QPushButton *WindowTest::button(const MainWindow &w, const char *objectName, const QString &text)
{
    for (QPushButton *b : w.findChildren<QPushButton *>(QLatin1String(objectName))) {
        if (b->text() == text)
            return b;
    }
    return nullptr;
}

void WindowTest::clickSource(const MainWindow &w, const QString &text)
{
    if (QPushButton *b = button(w, "sourceBtn", text))
        b->click();
}

QTableView *WindowTest::table(const MainWindow &w)
{
    return w.findChild<QTableView *>(QStringLiteral("spotTable"));
}

StationModel *WindowTest::model(const MainWindow &w)
{
    return w.findChild<StationModel *>();
}

SpotFilterProxyModel *WindowTest::proxy(const MainWindow &w)
{
    return w.findChild<SpotFilterProxyModel *>();
}

HamlibController *WindowTest::rig(const MainWindow &w)
{
    return w.findChild<HamlibLink *>()->controller();
}

QTimer *WindowTest::timer(const MainWindow &w, const char *objectName)
{
    return w.findChild<QTimer *>(QLatin1String(objectName));
}

void WindowTest::clickRow(const MainWindow &w, int row)
{
    QTableView *view = table(w);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier,
                      view->visualRect(view->model()->index(row, 1)).center());
}

QString WindowTest::selectedCallsign(const MainWindow &w)
{
    const QModelIndexList rows = table(w)->selectionModel()->selectedRows(1);
    return rows.isEmpty() ? QString() : rows.first().data().toString();
}

StationSpot::Status WindowTest::statusOf(const MainWindow &w, const QString &callsign)
{
    for (const StationSpot &spot : model(w)->spots()) {
        if (spot.callsign == callsign)
            return spot.status;
    }
    return StationSpot::Unknown;
}

namespace WindowFixture {

void serveEmptySources(HttpTestServer &server)
{
    server.setRoute("/spot/", "[]");
    server.setRoute("/api/spots/-72", "[]");
    server.setRoute("/static/spots.json", "[]");
    server.setRoute("/spots/", "[]");
    server.setRoute("/api/spots/gma/", "{\"RCD\":[]}");
}

QString settingsPath()
{
    return tallisDirPath() + QStringLiteral("/settings.json");
}

void writeSettings(const QByteArray &contents)
{
    ensureTallisDir();
    QFile file(settingsPath());
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(contents);
}

QJsonObject readSettings()
{
    QFile file(settingsPath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

QJsonObject potaSpot(const QString &call, const QString &reference, double khz, int secsAgo,
                     const QString &mode)
{
    const QDateTime when = QDateTime::currentDateTimeUtc().addSecs(-secsAgo);
    return QJsonObject{
        {QStringLiteral("activator"), call},
        {QStringLiteral("reference"), reference},
        {QStringLiteral("name"), QStringLiteral("Park of %1").arg(reference)},
        {QStringLiteral("frequency"), QString::number(khz, 'f', 1)},
        {QStringLiteral("mode"), mode},
        {QStringLiteral("spotter"), QStringLiteral("N0CALL")},
        {QStringLiteral("grid6"), QStringLiteral("FN31pr")},
        {QStringLiteral("spotTime"), when.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"))},
    };
}

QByteArray toBody(const QJsonArray &spots)
{
    return QJsonDocument(spots).toJson(QJsonDocument::Compact);
}

QByteArray potaSpots(const QString &stations)
{
    QJsonArray spots;
    for (const QString &line : stations.split(QStringLiteral(", "))) {
        const QStringList f = line.split(QLatin1Char(' '));
        spots.append(potaSpot(f.at(0), f.at(1), f.at(2).toDouble(), 60 * int(spots.size() + 1),
                              f.value(3, QStringLiteral("CW"))));
    }
    return toBody(spots);
}

} // namespace WindowFixture
