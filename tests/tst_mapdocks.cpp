#include "app/mainwindow.h"
#include "app/widgets/bandmapcanvas.h"
#include "app/widgets/mapcanvas.h"
#include "app/widgets/mapdocks.h"
#include "model/bands.h"
#include "radio/hamliblink.h"
#include "support/rigctldprocess.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QAction>
#include <QDockWidget>
#include <QJsonDocument>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTableView>

using namespace WindowFixture;

// The map and the band map in the window: the View menu shows and hides their docks, which keep their
// place across a restart; a pick in either view is the operator's selection and tunes a real rig; the
// map draws what the table shows and looks up the positions it lacks.
class TestMapDocks final : public WindowTest
{
    Q_OBJECT

    static QDockWidget *dock(const MainWindow &w, const char *name)
    {
        return w.findChild<QDockWidget *>(QLatin1String(name));
    }
    static MapCanvas *map(const MainWindow &w) { return w.findChild<MapCanvas *>(); }
    static BandMapCanvas *bandMap(const MainWindow &w) { return w.findChild<BandMapCanvas *>(); }
    static QList<QAction *> viewEntries(const MainWindow &w)
    {
        for (QAction *menu : w.menuBar()->actions()) {
            if (menu->text() == QLatin1String("&View"))
                return menu->menu()->actions();
        }
        return {};
    }
    // potaSpots with a locator per station; "-" for none.
    static QByteArray spotsWithGrids(const QString &stations, const QStringList &grids)
    {
        QJsonArray spots = QJsonDocument::fromJson(potaSpots(stations)).array();
        for (int i = 0; i < spots.size(); ++i) {
            QJsonObject spot = spots.at(i).toObject();
            if (grids.at(i) == QLatin1String("-"))
                spot.remove(QStringLiteral("grid6"));
            else
                spot.insert(QStringLiteral("grid6"), grids.at(i));
            spots.replace(i, spot);
        }
        return QJsonDocument(spots).toJson(QJsonDocument::Compact);
    }

private slots:
    // A region chosen stands; otherwise the call's: by continent, with Asia's Region 1 countries apart.
    void bandPlanRegion_data()
    {
        QTest::addColumn<int>("setting");
        QTest::addColumn<QString>("call");
        QTest::addColumn<int>("region");
        const QStringList rows =
            QStringLiteral("0 G4ABC 1;0 ZS6AB 1;0 K1ABC 2;0 PY2AB 2;0 JA1XYZ 3;0 VK2ABC 3;"
                           "0 4X1AB 1;0 UA9XX 1;0 EP2AB 3;0 AA1AA 2;3 G4ABC 3;2 JA1XYZ 2")
                .split(QLatin1Char(';'));
        for (const QString &row : rows) {
            const QStringList f = row.split(QLatin1Char(' '));
            QTest::newRow(qPrintable(row)) << f.at(0).toInt() << f.at(1) << f.at(2).toInt();
        }
        QTest::newRow("no call") << 0 << QString() << 2;
    }

    void bandPlanRegion()
    {
        QCOMPARE(MapDocks::regionFor(fetched<int>("setting"), fetched<QString>("call")),
                 fetched<int>("region"));
    }

    void viewMenuDocksAndTheirPlaceAcrossARestart()
    {
        {
            MainWindow w(services());
            w.show();
            QVERIFY(QTest::qWaitForWindowExposed(&w));
            QStringList menus;
            for (const QAction *menu : w.menuBar()->actions())
                menus << menu->text();
            QCOMPARE(menus, QStringList({QStringLiteral("&File"), QStringLiteral("&Settings"),
                                         QStringLiteral("&Radio"), QStringLiteral("&View"),
                                         QStringLiteral("&Spot"), QStringLiteral("&Help")}));
            const QList<QAction *> entries = viewEntries(w);
            QCOMPARE(entries.size(), 2);
            QCOMPARE(entries.at(0)->text(), QStringLiteral("&Map"));
            QCOMPARE(entries.at(1)->text(), QStringLiteral("&Band Map"));
            // Hidden at first start.
            QVERIFY(!dock(w, "mapDock")->isVisible() && !dock(w, "bandMapDock")->isVisible());
            QVERIFY(!entries.at(0)->isChecked() && !entries.at(1)->isChecked());
            QCOMPARE(bandMap(w)->region(), 2); // no call sign, no continent

            entries.at(0)->trigger();
            QVERIFY(dock(w, "mapDock")->isVisible());
            entries.at(1)->trigger();
            entries.at(1)->trigger(); // and away again
            QVERIFY(!dock(w, "bandMapDock")->isVisible());
            w.close();
        }
        QJsonObject settings = readSettings();
        settings.insert(QStringLiteral("bandPlanRegion"), 1);
        writeSettings(QJsonDocument(settings).toJson());

        MainWindow w(services());
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QVERIFY(dock(w, "mapDock")->isVisible());
        QVERIFY(!dock(w, "bandMapDock")->isVisible());
        QVERIFY(viewEntries(w).at(0)->isChecked() && !viewEntries(w).at(1)->isChecked());
        QCOMPARE(bandMap(w)->region(), 1);
    }

    void picksInBothViewsSelectAndTuneTheRig()
    {
        RigctldProcess daemon;
        QVERIFY2(daemon.start(), qPrintable(daemon.errorString()));
        writeSettings(QStringLiteral(R"({"hamlib": {"rigModel": %1, "port": "%2"}})")
                          .arg(daemon.rigConfig().rigModel)
                          .arg(daemon.rigConfig().port)
                          .toUtf8());
        m_server->setRoute("/spot/", spotsWithGrids(QStringLiteral("K1AAA US-1 14061, K2BBB US-2 7150 SSB, "
                                                                   "K4DDD US-4 7030"),
                                                    {QStringLiteral("FN31pr"), QStringLiteral("JO01aa"),
                                                     QStringLiteral("PF95aa")}));
        MainWindow w(services());
        w.resize(1400, 900);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        for (QAction *entry : viewEntries(w))
            entry->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Connected"),
                                  10000);
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 3, 5000);

        // A marker on the map: the row is selected and the rig follows.
        map(w)->rebuildNow();
        QPointF at;
        QVERIFY(map(w)->markerScreenPos(QStringLiteral("K2BBB|US-2|7150"), at));
        QTest::mouseClick(map(w), Qt::LeftButton, {}, at.toPoint());
        QCOMPARE(selectedCallsign(w), QStringLiteral("K2BBB"));
        QCOMPARE(rigSetting(w), QStringLiteral("7150.0 LSB"));

        // The band map follows the rig's poll to 40 m and shows the selection's band mate.
        BandMapCanvas *bands = bandMap(w);
        QTRY_COMPARE_WITH_TIMEOUT(bands->rigFrequency(), 7150.0, 5000);
        QCOMPARE(bands->band(), bandIndexForFrequency(7150.0));
        bands->rebuildNow();
        const QRectF label = bands->labelRect(QStringLiteral("K4DDD|US-4|7030"));
        QVERIFY(!label.isNull());
        QTest::mouseClick(bands, Qt::LeftButton, {}, label.center().toPoint());
        QCOMPARE(selectedCallsign(w), QStringLiteral("K4DDD"));
        QCOMPARE(rigSetting(w), QStringLiteral("7030.0 CW"));

        // Empty scale: the rig goes there in the mode it has.
        QTest::mouseClick(bands, Qt::LeftButton, {}, QPoint(20, int(bands->yForKhz(7100.0))));
        const QStringList setting = rigSetting(w).split(QLatin1Char(' '));
        QVERIFY2(std::abs(setting.at(0).toDouble() - 7100.0) < 1.0,
                 qPrintable(setting.join(QLatin1Char(' '))));
        QCOMPARE(setting.at(1), QStringLiteral("CW"));
        QCOMPARE(selectedCallsign(w), QStringLiteral("K4DDD"));
    }

    void mapDrawsTheFilteredTableAndLooksUpPositions()
    {
        m_server->setRoute("/spot/", spotsWithGrids(QStringLiteral("K1AAA US-1 14061, K2BBB US-2 7150 SSB, "
                                                                   "K3CCC US-3 14250 SSB, K4DDD US-4 7030"),
                                                    {QStringLiteral("FN31pr"), QStringLiteral("JO01aa"),
                                                     QStringLiteral("-"), QStringLiteral("-")}));
        m_server->setRoute("/park/US-3", R"({"latitude": -33.9, "longitude": 151.2})");
        MainWindow w(services());
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 4, 5000);
        // No home and no map: nobody needs a position.
        QCOMPARE(m_server->requestCount("/park/US-3"), 0);

        viewEntries(w).at(0)->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount("/park/US-4"), 1, 5000);
        QTRY_COMPARE_WITH_TIMEOUT(int(map(w)->markers().markers().size()), 3, 5000);
        QCOMPARE(labelText(w, "mapUnplacedLabel"), QStringLiteral("1 without a position, not drawn"));

        // CW hidden in the table is hidden on the map.
        button(w, "modeBtn", QStringLiteral("CW"))->click();
        QCOMPARE(table(w)->model()->rowCount(), 2);
        QTRY_COMPARE_WITH_TIMEOUT(int(map(w)->markers().markers().size()), 2, 5000);
        QCOMPARE(labelText(w, "mapUnplacedLabel"), QString());
    }
};

TALLIS_TEST_MAIN(TestMapDocks)
#include "tst_mapdocks.moc"
