#include "app/dialogs/dxclustersdialog.h"
#include "app/dialogs/lwbridgedialog.h"
#include "app/dialogs/preferencesdialog.h"
#include "app/dialogs/radiosetupdialog.h"
#include "app/mainwindow.h"
#include "app/settingsfile.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "support/apiclient.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDoubleSpinBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QTableView>
#include <QTcpServer>
#include <QTimer>

#include <functional>

using namespace WindowFixture;

// The settings file as the window reads and writes it, and its dialogs that change them.
class TestMainWindowSettings final : public WindowTest
{
    Q_OBJECT

private:
    static QStringList keysOf(const QJsonObject &o)
    {
        QStringList keys = o.keys();
        keys.sort();
        return keys;
    }
    // Opens the dialog behind the menu entry, lets fill() set its fields, accepts it.
    template <typename Dialog>
    static bool runDialog(MainWindow &w, const QString &entry, const std::function<void(Dialog &)> &fill)
    {
        bool seen = false;
        QTimer::singleShot(0, &w, [&] {
            auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            seen = true;
            fill(*dialog);
            dialog->accept();
        });
        for (QAction *action : w.menuBar()->findChildren<QAction *>()) {
            if (action->text() == entry)
                action->trigger();
        }
        return seen;
    }

    template <typename Widget>
    static Widget *field(QWidget &dialog, const char *objectName)
    {
        return dialog.findChild<Widget *>(QLatin1String(objectName));
    }

private slots:
    void storedChoicesAreRestored()
    {
        writeSettings(
            R"({"callsign": "W1AW", "maxAgeMins": 0, "sources": {"pota": false}, "modes": {"cw": false},
            "statusFilter": 2, "disabledBands": ["20m", "11m"], "sortColumn": 12, "sortOrder": 0,
            "hasUserLocation": false, "latitude": 41.5, "longitude": -73.0, "potaPrograms": ["US"],
            "watchCallsigns": ["K1ABC"]})");
        MainWindow w(services());

        QCOMPARE(w.findChild<QLabel *>(QStringLiteral("callsignLabel"))->text(), QStringLiteral("DE: W1AW"));
        QCOMPARE(proxy(w)->maxAgeMins(), 1);
        QVERIFY(!button(w, "sourceBtn", QStringLiteral("POTA"))->isChecked());
        QVERIFY(!button(w, "sourceBtn", QStringLiteral("DX Cluster"))->isChecked());
        QVERIFY(button(w, "sourceBtn", QStringLiteral("GMA"))->isChecked());
        QVERIFY(!proxy(w)->isSourceEnabled(StationSpot::POTA));
        QVERIFY(!w.findChild<PotaSpotFetcher *>()->isAutoRefreshing()); // POTA stays quiet
        QVERIFY(w.findChild<SotaSpotFetcher *>()->isAutoRefreshing());
        QVERIFY(!button(w, "modeBtn", QStringLiteral("CW"))->isChecked());
        QVERIFY(!proxy(w)->isModeClassEnabled(SpotFilterProxyModel::CwMode));
        QCOMPARE(w.findChild<QComboBox *>()->currentText(), QStringLiteral("Heard"));
        QCOMPARE(proxy(w)->statusFilter(), 1);
        QVERIFY(!button(w, "bandBtn", QStringLiteral("20m"))->isChecked());
        QVERIFY(button(w, "bandBtn", QStringLiteral("40m"))->isChecked());
        QCOMPARE(table(w)->horizontalHeader()->sortIndicatorSection(), 9);
        QCOMPARE(table(w)->horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
        QVERIFY(!model(w)->hasUserLocation());
        QVERIFY(table(w)->isColumnHidden(8));
        QVERIFY(table(w)->isColumnHidden(9));
        QCOMPARE(w.findChild<QPushButton *>(QStringLiteral("programsBtn"))->text(),
                 QStringLiteral("Programs… ●"));

        // The start-up save wrote back what was loaded, less the band no button has.
        const QJsonObject written = readSettings();
        QCOMPARE(written.value(QStringLiteral("statusFilter")).toInt(), 2);
        QCOMPARE(written.value(QStringLiteral("sortColumn")).toInt(), 9);
        QCOMPARE(written.value(QStringLiteral("disabledBands")).toArray(), QJsonArray{QStringLiteral("20m")});
        QCOMPARE(written.value(QStringLiteral("sources")).toObject().value(QStringLiteral("dx")),
                 QJsonValue(false));
        QCOMPARE(written.value(QStringLiteral("watchCallsigns")).toArray(),
                 QJsonArray{QStringLiteral("K1ABC")});
        QCOMPARE(written.value(QStringLiteral("latitude")).toDouble(), 0.0); // not read without a location
    }

    // A corrupt file gives a first start's defaults, every key written back (the kinds of unusable file
    // are the settings file's own test; the program test sees the first start's file appear).
    void preferencesRestartTickedSourcesAndTheApi()
    {
        QTcpServer busy;
        QVERIFY(busy.listen(QHostAddress::LocalHost, 0));
        writeSettings(R"({"sources": {"pota": false}})");
        MainWindow w(services());
        QVERIFY(runDialog<PreferencesDialog>(w, QStringLiteral("&Preferences..."), [&busy](QWidget &d) {
            field<QSpinBox>(d, "refreshIntervalSpin")->setValue(300);
            field<QSpinBox>(d, "wsPortSpin")->setValue(busy.serverPort());
        }));
        QCOMPARE(w.findChild<SotaSpotFetcher *>()->refreshIntervalMs(), 300000);
        QVERIFY(!w.findChild<PotaSpotFetcher *>()->isAutoRefreshing());
        QCOMPARE(w.statusBar()->currentMessage(),
                 QStringLiteral("WebSocket API: failed to listen on port %1").arg(busy.serverPort()));
        QCOMPARE(readSettings().value(QStringLiteral("wsPort")).toInt(), busy.serverPort());
    }

    void lastSessionsSpotsShowAtOnce()
    {
        m_server->setRoute("/spot/", potaSpots(QStringLiteral("K1AAA US-1 14061, K2BBB US-2 7030")));
        {
            MainWindow w(services());
            QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 2, 5000);
            w.close(); // writes the snapshot
        }
        // No source answers this time: the rows come from the snapshot alone.
        m_server->setHoldReplies(true);
        MainWindow again(services());
        QCOMPARE(model(again)->rowCount(), 2);
        QVERIFY(labelText(again, "statusSpots").startsWith(QStringLiteral("Showing 2 of 2")));
    }

    void corruptFileGivesDefaultsAndIsRewritten()
    {
        writeSettings("{\"callsign\": \"W1A");
        MainWindow w(services());
        QCOMPARE(w.size(), QSize(1200, 680));
        QCOMPARE(labelText(w, "callsignLabel"), QStringLiteral("DE: [not set]"));
        const QJsonObject written = readSettings();
        QCOMPARE(keysOf(written), keysOf(SettingsFile::toJson(AppSettings())));
        QCOMPARE(written.value(QStringLiteral("sortColumn")).toInt(), 6);
        QCOMPARE(written.value(QStringLiteral("sortOrder")).toInt(), 1);
        QCOMPARE(written.value(QStringLiteral("dxClusters")).toArray().size(), 1);
    }

    void changesAreSavedAtOnce()
    {
        MainWindow w(services());
        table(w)->sortByColumn(1, Qt::AscendingOrder);
        QCOMPARE(readSettings().value(QStringLiteral("sortColumn")).toInt(), 1);
        QCOMPARE(readSettings().value(QStringLiteral("sortOrder")).toInt(), 0);

        button(w, "modeBtn", QStringLiteral("FM"))->click();
        QCOMPARE(readSettings().value(QStringLiteral("modes")).toObject().value(QStringLiteral("fm")),
                 QJsonValue(false));

        w.findChild<QCheckBox *>(QStringLiteral("autoAtuCheck"))->setChecked(true);
        QCOMPARE(readSettings().value(QStringLiteral("autoAtu")), QJsonValue(true));
        button(w, "bandBtn", QStringLiteral("80m"))->click();
        QCOMPARE(proxy(w)->bandFilter().size(), 12);
        QCOMPARE(readSettings().value(QStringLiteral("disabledBands")).toArray(),
                 QJsonArray{QStringLiteral("80m")});
        w.findChild<QComboBox *>()->setCurrentIndex(3); // "Contacted"
        QCOMPARE(proxy(w)->statusFilter(), 2);
        QCOMPARE(readSettings().value(QStringLiteral("statusFilter")).toInt(), 3);

        // Closing stores the layout.
        w.resize(1000, 640);
        w.close();
        const QByteArray geometry = QByteArray::fromBase64(
            readSettings().value(QStringLiteral("windowGeometry")).toString().toLatin1());
        QVERIFY(!geometry.isEmpty());
        MainWindow again(services());
        QCOMPARE(again.size(), QSize(1000, 640));
        QCOMPARE(table(again)->horizontalHeader()->sortIndicatorSection(), 1);
    }

    void apiListensWhereTheSettingsSay()
    {
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost, 0));
        const quint16 port = probe.serverPort();
        probe.close();
        writeSettings(QStringLiteral(R"({"wsPort": %1})").arg(port).toUtf8());
        m_server->setRoute("/spot/", potaSpots(QStringLiteral("K1AAA US-1 14061, K2BBB US-2 7150")));
        const QString sotaTime = QDateTime::currentDateTimeUtc().addSecs(-90).toString(Qt::ISODate);
        m_server->setRoute("/api/spots/-72",
                           QStringLiteral(R"([{"activatorCallsign": "G4ABC/P", "frequency": 10.118,
            "mode": "CW", "summitCode": "G/LD-003", "summitName": "Helvellyn", "timeStamp": "%1"}])")
                               .arg(sotaTime)
                               .toUtf8());
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 3, 5000);

        ApiClient client;
        QVERIFY(client.connectTo(port));
        QTRY_COMPARE_WITH_TIMEOUT(client.eventData(QStringLiteral("hello")).size(), 1, 5000);

        // The visible spots in the table's row order, which here is not the model's.
        table(w)->sortByColumn(1, Qt::AscendingOrder);
        QCOMPARE(table(w)->model()->index(0, 1).data().toString(), QStringLiteral("G4ABC/P"));
        client.send(R"({"type": "cmd", "cmd": "spots.get", "id": "a"})");
        QTRY_VERIFY_WITH_TIMEOUT(!client.reply(QStringLiteral("a")).isEmpty(), 5000);
        const QJsonArray spots =
            client.reply(QStringLiteral("a"))[QStringLiteral("data")][QStringLiteral("spots")].toArray();
        QCOMPARE(spots.size(), 3);
        for (int row = 0; row < 3; ++row)
            QCOMPARE(spots.at(row).toObject().value(QStringLiteral("callsign")).toString(),
                     table(w)->model()->index(row, 1).data().toString());

        client.send(R"({"type": "cmd", "cmd": "filter.set", "id": "b", "data": {"pota": false}})");
        QTRY_VERIFY_WITH_TIMEOUT(!client.eventData(QStringLiteral("filter.changed")).isEmpty(), 5000);
        QVERIFY(client.reply(QStringLiteral("b")).value(QStringLiteral("ok")).toBool());
        QVERIFY(!button(w, "sourceBtn", QStringLiteral("POTA"))->isChecked());
        QCOMPARE(table(w)->model()->rowCount(), 1);
        QCOMPARE(readSettings().value(QStringLiteral("sources")).toObject().value(QStringLiteral("pota")),
                 QJsonValue(false));
    }

    // A new user sets everything through the window's own dialogs, and it all comes back after a restart.
    void everyValueSurvivesARestart()
    {
        {
            MainWindow w(services());
            QVERIFY(runDialog<PreferencesDialog>(w, QStringLiteral("&Preferences..."), [](QWidget &d) {
                field<QLineEdit>(d, "callsignEdit")->setText(QStringLiteral("w4abc"));
                field<QCheckBox>(d, "locationCheck")->setChecked(true);
                field<QDoubleSpinBox>(d, "latitudeSpin")->setValue(35.5);
                field<QDoubleSpinBox>(d, "longitudeSpin")->setValue(-82.25);
            }));
            QCOMPARE(labelText(w, "callsignLabel"), QStringLiteral("DE: W4ABC"));
            QVERIFY(!table(w)->isColumnHidden(StationModel::DistanceColumn));

            QVERIFY(runDialog<RadioSetupDialog>(w, QStringLiteral("Radio &Setup..."), [](QWidget &d) {
                auto *model = field<QComboBox>(d, "rigModelCombo");
                model->setCurrentIndex(model->findData(2));
                field<QComboBox>(d, "rigPortCombo")->setEditText(QStringLiteral("127.0.0.1:4599"));
            }));
            QVERIFY(runDialog<DxClustersDialog>(w, QStringLiteral("DX &Cluster Setup..."), [](QWidget &d) {
                field<QLineEdit>(d, "dxClusterHostEdit")->setText(QStringLiteral("dx.example.org"));
                field<QSpinBox>(d, "dxClusterPortSpin")->setValue(7300);
                for (QPushButton *button : d.findChildren<QPushButton *>()) {
                    if (button->text() == QLatin1String("Add"))
                        button->click();
                }
            }));
            QVERIFY(runDialog<LwBridgeDialog>(w, QStringLiteral("Lampwick &Bridge..."), [](QWidget &d) {
                field<QCheckBox>(d, "lwEnabledCheck")->setChecked(true);
                field<QSpinBox>(d, "lwPortSpin")->setValue(2110);
            }));
        }

        MainWindow again(services());
        QCOMPARE(labelText(again, "callsignLabel"), QStringLiteral("DE: W4ABC"));
        QVERIFY(!table(again)->isColumnHidden(StationModel::DistanceColumn));
        QVERIFY(!table(again)->isColumnHidden(StationModel::BearingColumn));
        const QJsonObject s = readSettings();
        QCOMPARE(s.value(QStringLiteral("latitude")).toDouble(), 35.5);
        QCOMPARE(s.value(QStringLiteral("longitude")).toDouble(), -82.25);
        const QJsonObject rig = s.value(QStringLiteral("hamlib")).toObject();
        QCOMPARE(rig.value(QStringLiteral("rigModel")).toInt(), 2);
        QCOMPARE(rig.value(QStringLiteral("port")).toString(), QStringLiteral("127.0.0.1:4599"));
        const QJsonArray clusters = s.value(QStringLiteral("dxClusters")).toArray();
        QCOMPARE(clusters.last().toObject().value(QStringLiteral("host")).toString(),
                 QStringLiteral("dx.example.org"));
        QCOMPARE(clusters.last().toObject().value(QStringLiteral("port")).toInt(), 7300);
        QCOMPARE(s.value(QStringLiteral("lwEnabled")).toBool(), true);
        QCOMPARE(s.value(QStringLiteral("lwPort")).toInt(), 2110);
    }
};

TALLIS_TEST_MAIN(TestMainWindowSettings)
#include "tst_mainwindowsettings.moc"
