#include "support/windowfixture.h"

#include "app/mainwindow.h"
#include "app/serviceurls.h"
#include "app/settingsfile.h"
#include "app/tallisdir.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamliblink.h"
#include "support/testmain.h"

#include <QDateTime>
#include <QDir>
#include <QItemSelectionModel>
#include <QJsonDocument>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTimer>

void WindowTest::init()
{
    QDir(tallisDirPath()).removeRecursively();
    m_server = std::make_unique<HttpTestServer>();
    QVERIFY(m_server->start());
    for (const char *path : {"/spot/", "/api/spots/-72", "/static/spots.json", "/spots/",
                             "/api/spots.js?zlota_only=true", "/api/ALL"})
        m_server->setRoute(path, "[]");
    m_server->setRoute("/api/spots/gma/", "{\"RCD\":[]}");
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

QString WindowTest::rigSetting(const MainWindow &w)
{
    double kHz = 0.0;
    QString mode;
    if (!w.findChild<HamlibLink *>()->readFrequencyAndWait(kHz, mode))
        return QStringLiteral("<not connected>");
    return QStringLiteral("%1 %2").arg(kHz, 0, 'f', 1).arg(mode);
}

namespace WindowFixture {

void writeSettings(const QByteArray &contents)
{
    ensureTallisDir();
    writeFile(settingsFilePath(), contents);
}

QJsonObject readSettings()
{
    return QJsonDocument::fromJson(readFile(settingsFilePath())).object();
}

QByteArray potaSpots(const QString &stations, int secsApart)
{
    QJsonArray spots;
    for (const QString &line : stations.split(QStringLiteral(", "))) {
        const QStringList f = line.split(QLatin1Char(' '));
        const QDateTime when = QDateTime::currentDateTimeUtc().addSecs(-secsApart * (spots.size() + 1));
        spots.append(
            QJsonObject{{QStringLiteral("activator"), f.at(0)},
                        {QStringLiteral("reference"), f.at(1)},
                        {QStringLiteral("frequency"), f.at(2)},
                        {QStringLiteral("mode"), f.value(3, QStringLiteral("CW"))},
                        {QStringLiteral("grid6"), QStringLiteral("FN31pr")},
                        {QStringLiteral("spotTime"), when.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"))}});
    }
    return QJsonDocument(spots).toJson(QJsonDocument::Compact);
}

} // namespace WindowFixture
