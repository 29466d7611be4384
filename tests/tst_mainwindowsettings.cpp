#include "app/mainwindow.h"
#include "app/settingsfile.h"
#include "app/widgets/filterbar.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/spotfetcher.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QFile>
#include <QHeaderView>
#include <QJsonDocument>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTcpServer>
#include <QTest>
#include <QWebSocket>

#include <memory>

using namespace WindowFixture;

// The settings file as the window reads and writes it.
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

private slots:
    void firstStartWritesEveryKey()
    {
        MainWindow w(services());
        QCOMPARE(w.size(), QSize(1200, 680));
        const QJsonObject written = readSettings();
        QCOMPARE(keysOf(written), keysOf(SettingsFile::toJson(AppSettings())));
        QCOMPARE(written.value(QStringLiteral("sortColumn")).toInt(), 6);
        QCOMPARE(written.value(QStringLiteral("sortOrder")).toInt(), 1);
        QCOMPARE(written.value(QStringLiteral("dxClusters")).toArray().size(), 1);
        // Indented, as a person would want to read it.
        QFile file(settingsPath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().contains("\n    \""));
    }

    void storedChoicesAreRestored()
    {
        writeSettings(QJsonObject{
            {QStringLiteral("callsign"), QStringLiteral("W1AW")},
            {QStringLiteral("maxAgeMins"), 0},
            {QStringLiteral("sources"), QJsonObject{{QStringLiteral("pota"), false}}},
            {QStringLiteral("modes"), QJsonObject{{QStringLiteral("cw"), false}}},
            {QStringLiteral("statusFilter"), 2},
            {QStringLiteral("disabledBands"), QJsonArray{QStringLiteral("20m"), QStringLiteral("11m")}},
            {QStringLiteral("sortColumn"), 12},
            {QStringLiteral("sortOrder"), 0},
            {QStringLiteral("hasUserLocation"), false},
            {QStringLiteral("latitude"), 41.5},
            {QStringLiteral("longitude"), -73.0},
            {QStringLiteral("potaPrograms"), QJsonArray{QStringLiteral("US")}},
            {QStringLiteral("watchCallsigns"), QJsonArray{QStringLiteral("K1ABC")}},
        });
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

        // The start-up save wrote back what was loaded, clamped and complete.
        const QJsonObject written = readSettings();
        QCOMPARE(keysOf(written), keysOf(SettingsFile::toJson(AppSettings())));
        QCOMPARE(written.value(QStringLiteral("maxAgeMins")).toInt(), 1);
        QCOMPARE(written.value(QStringLiteral("statusFilter")).toInt(), 2);
        QCOMPARE(written.value(QStringLiteral("sortColumn")).toInt(), 9);
        QCOMPARE(written.value(QStringLiteral("sortOrder")).toInt(), 0);
        QCOMPARE(written.value(QStringLiteral("disabledBands")).toArray(), QJsonArray{QStringLiteral("20m")});
        QCOMPARE(written.value(QStringLiteral("sources")).toObject().value(QStringLiteral("dx")),
                 QJsonValue(false));
        QCOMPARE(written.value(QStringLiteral("watchCallsigns")).toArray(),
                 QJsonArray{QStringLiteral("K1ABC")});
        QCOMPARE(written.value(QStringLiteral("latitude")).toDouble(), 0.0); // not read without a location
    }

    void userLocationShowsDistanceAndBearing()
    {
        writeSettings(QJsonObject{{QStringLiteral("hasUserLocation"), true},
                                  {QStringLiteral("latitude"), 95},
                                  {QStringLiteral("longitude"), -73.0}});
        MainWindow w(services());
        QVERIFY(model(w)->hasUserLocation());
        QCOMPARE(model(w)->userLat(), 90.0);
        QCOMPARE(model(w)->userLon(), -73.0);
        QVERIFY(!table(w)->isColumnHidden(8));
        QVERIFY(!table(w)->isColumnHidden(9));
    }

    void corruptFileGivesDefaultsAndIsRewritten()
    {
        for (const QByteArray &garbage :
             {QByteArray("{\"callsign\": \"W1A"), QByteArray(), QByteArray("[1,2]")}) {
            writeRawSettings(garbage);
            MainWindow w(services());
            QCOMPARE(w.findChild<QLabel *>(QStringLiteral("callsignLabel"))->text(),
                     QStringLiteral("DE: [not set]"));
            const QJsonObject written = readSettings();
            QCOMPARE(keysOf(written), keysOf(SettingsFile::toJson(AppSettings())));
            QCOMPARE(written.value(QStringLiteral("callsign")).toString(), QString());
        }
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
        writeSettings(QJsonObject{{QStringLiteral("wsPort"), port}});
        m_server->setRoute(
            "/spot/", potaSpots({QStringLiteral("K1AAA US-1 14061"), QStringLiteral("K2BBB US-2 7150")}));
        const QString sotaTime = QDateTime::currentDateTimeUtc().addSecs(-90).toString(Qt::ISODate);
        m_server->setRoute("/api/spots/-72",
                           QStringLiteral(R"([{"activatorCallsign": "G4ABC/P", "frequency": 10.118,
            "mode": "CW", "summitCode": "G/LD-003", "summitName": "Helvellyn", "timeStamp": "%1"}])")
                               .arg(sotaTime)
                               .toUtf8());
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 3, 5000);

        QWebSocket client;
        QList<QJsonObject> received;
        connect(&client, &QWebSocket::textMessageReceived, &w, [&received](const QString &text) {
            received << QJsonDocument::fromJson(text.toUtf8()).object();
        });
        const auto find = [&received](const char *key, const char *value) {
            for (const QJsonObject &message : received) {
                if (message.value(QLatin1String(key)).toString() == QLatin1String(value))
                    return message;
            }
            return QJsonObject();
        };
        client.open(QUrl(QStringLiteral("ws://127.0.0.1:%1").arg(port)));
        QTRY_VERIFY_WITH_TIMEOUT(!received.isEmpty(), 5000);
        QCOMPARE(received.first().value(QStringLiteral("event")), QJsonValue(QStringLiteral("hello")));

        // The visible spots in the table's row order, which here is not the model's.
        table(w)->sortByColumn(1, Qt::AscendingOrder);
        QCOMPARE(table(w)->model()->index(0, 1).data().toString(), QStringLiteral("G4ABC/P"));
        client.sendTextMessage(QStringLiteral(R"({"type": "cmd", "cmd": "spots.get", "id": "a"})"));
        QTRY_VERIFY_WITH_TIMEOUT(!find("id", "a").isEmpty(), 5000);
        const QJsonArray spots =
            find("id", "a").value(QStringLiteral("data")).toObject().value(QStringLiteral("spots")).toArray();
        QCOMPARE(spots.size(), 3);
        for (int row = 0; row < 3; ++row)
            QCOMPARE(spots.at(row).toObject().value(QStringLiteral("callsign")).toString(),
                     table(w)->model()->index(row, 1).data().toString());

        client.sendTextMessage(
            QStringLiteral(R"({"type": "cmd", "cmd": "filter.set", "id": "b", "data": {"pota": false}})"));
        QTRY_VERIFY_WITH_TIMEOUT(!find("event", "filter.changed").isEmpty(), 5000);
        QVERIFY(find("id", "b").value(QStringLiteral("ok")).toBool());
        QVERIFY(!button(w, "sourceBtn", QStringLiteral("POTA"))->isChecked());
        QCOMPARE(table(w)->model()->rowCount(), 1);
        QCOMPARE(readSettings().value(QStringLiteral("sources")).toObject().value(QStringLiteral("pota")),
                 QJsonValue(false));
    }

private:
    static void writeRawSettings(const QByteArray &contents)
    {
        writeSettings({});
        QFile file(settingsPath());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(contents);
    }
};

TALLIS_TEST_MAIN(TestMainWindowSettings)
#include "tst_mainwindowsettings.moc"
