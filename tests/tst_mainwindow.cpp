#include "app/mainwindow.h"
#include "app/tallisdir.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamlibcontroller.h"
#include "sources/dxclusterfetcher.h"
#include "sources/potaspotfetcher.h"
#include "support/clustertestserver.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QApplication>
#include <QDateTime>
#include <QDialog>
#include <QFile>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QTableView>
#include <QTest>
#include <QTimer>

using namespace WindowFixture;

// The window with its sources pointed at a local server: spots flow in,
// counts and messages follow, the operator's keys and marks act; DX cluster nodes feed the same table.
class TestMainWindow final : public WindowTest
{
    Q_OBJECT

    static QByteArray spotLine(const char *spotter, double khz, const char *call, const char *comment)
    {
        const QByteArray hhmm = QDateTime::currentDateTimeUtc().toString(QStringLiteral("HHmm")).toLatin1();
        return "DX de " + QByteArray(spotter) + ":     " + QByteArray::number(khz, 'f', 1) + "  " + call +
               "       " + comment + "   " + hhmm + "Z";
    }
    static QString clusterEntry(const ClusterTestServer &node)
    {
        return QStringLiteral(R"({"host": "127.0.0.1", "port": %1})").arg(node.port());
    }

private slots:
    void frameAndStatusBar()
    {
        m_server->setRoute("/api/spots/gma/", "down for maintenance", 500, "text/plain");
        MainWindow w(services());
        QStringList messages;
        connect(w.statusBar(), &QStatusBar::messageChanged, &w,
                [&messages](const QString &m) { messages << m; });
        QVERIFY(w.windowTitle().startsWith(QStringLiteral("Tallis — ")));
        QCOMPARE(labelText(w, "statusRadio"), QStringLiteral("Radio unconfigured — consult the settings"));
        QCOMPARE(labelText(w, "statusSpots"), QStringLiteral("No spots"));
        QCOMPARE(labelText(w, "statusRefresh"),
                 QStringLiteral("Last refresh: not yet (the scribes are en route…)"));
        QCOMPARE(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Not Connected"));
        QCOMPARE(labelText(w, "toolbarDxStatus"), QStringLiteral("DX: Disconnected"));
        QCOMPARE(labelText(w, "callsignLabel"), QStringLiteral("DE: [not set]"));
        QVERIFY(!button(w, "sourceBtn", QStringLiteral("DX Cluster"))->isChecked());
        // Every web source but the inert BOTA slot asks at once; SOTA asks for its epoch first.
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount(), 6, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(!messages.filter(QStringLiteral("The oracles have failed us: ")).isEmpty(),
                                 5000);
        QVERIFY(rig(w)->thread() != w.thread());
        QCOMPARE(timer(w, "radioPollTimer")->interval(), 500);
        QCOMPARE(timer(w, "rigReconnectTimer")->interval(), 15000);
        QVERIFY(!timer(w, "rigReconnectTimer")->isActive()); // no rig port configured
    }

    void batchesReachTheTableAndSourcesToggle()
    {
        QJsonArray spots;
        for (int i = 0; i < 35; ++i)
            spots.append(potaSpot(QStringLiteral("K%1ABC").arg(i), QStringLiteral("US-%1").arg(1000 + i),
                                  14030.0 + i, 60 + i * 10));
        // Five older reports of stations already in the batch: merged away.
        for (int i = 0; i < 5; ++i)
            spots.append(potaSpot(QStringLiteral("K%1ABC").arg(i), QStringLiteral("US-%1").arg(1000 + i),
                                  7030.0, 1200));
        m_server->setRoute("/spot/", toBody(spots));

        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "statusSpots"),
                                  QStringLiteral("Showing 35 of 35  S:0 P:40 W:0 WB:0 B:0 DX:0 G:0"), 5000);
        QCOMPARE(table(w)->model()->rowCount(), 35);
        QTRY_VERIFY_WITH_TIMEOUT(QRegularExpression(QStringLiteral("^Last refresh: \\d\\d:\\d\\d:\\d\\d$"))
                                     .match(labelText(w, "statusRefresh"))
                                     .hasMatch(),
                                 5000);

        // Unticking POTA hides its rows, stops its fetching and is saved.
        auto *pota = w.findChild<PotaSpotFetcher *>();
        QVERIFY(pota->isAutoRefreshing());
        button(w, "sourceBtn", QStringLiteral("POTA"))->click();
        QCOMPARE(labelText(w, "statusSpots"),
                 QStringLiteral("Showing 0 of 35  S:0 P:40 W:0 WB:0 B:0 DX:0 G:0"));
        QVERIFY(!pota->isAutoRefreshing());
        QCOMPARE(readSettings().value(QStringLiteral("sources")).toObject().value(QStringLiteral("pota")),
                 QJsonValue(false));
        w.onRefreshAll(); // skips the unticked source
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount("/api/spots/gma/"), 2, 5000);
        QCOMPARE(m_server->requestCount("/spot/"), 1);
        button(w, "sourceBtn", QStringLiteral("POTA"))->click(); // ticked again: fetches at once
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount("/spot/"), 2, 5000);
    }

    void operatorKeysAfterAClickButNotInTheSearch()
    {
        m_server->setRoute("/spot/",
                           potaSpots(QStringLiteral("K1AAA US-1 14061, W4HHH US-2 14062, K3CCC US-3 14063")));
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 3, 5000);
        QVERIFY(!w.findChild<QPushButton *>(QStringLiteral("heardButton"))->isEnabled());
        QTest::keyClick(&w, Qt::Key_K); // nothing selected: the last row
        QCOMPARE(selectedCallsign(w), QStringLiteral("K3CCC"));
        QTest::keyClick(&w, Qt::Key_J); // already last: stays
        QCOMPARE(selectedCallsign(w), QStringLiteral("K3CCC"));

        w.show();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        // After a click the table has the focus; its type-to-search must not eat the letters.
        clickRow(w, 0);
        QCOMPARE(QApplication::focusWidget(), table(w));
        QCOMPARE(selectedCallsign(w), QStringLiteral("K1AAA"));
        QTest::keyClick(table(w), Qt::Key_J);
        QCOMPARE(selectedCallsign(w), QStringLiteral("W4HHH"));
        QCOMPARE(labelText(w, "detailReference"), QStringLiteral("[POTA] US-2"));
        QCOMPARE(labelText(w, "detailFrequency"), QStringLiteral("14062.0 kHz"));
        QTest::keyClick(table(w), Qt::Key_H);
        QCOMPARE(statusOf(w, QStringLiteral("W4HHH")), StationSpot::Heard);
        QTest::keyClick(table(w), Qt::Key_K);
        QCOMPARE(selectedCallsign(w), QStringLiteral("K1AAA"));

        // In the search field an "h" is text: it filters and marks nothing.
        auto *search = w.findChild<QLineEdit *>();
        QTest::mouseClick(search, Qt::LeftButton);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("h"));
        QCOMPARE(search->text(), QStringLiteral("h"));
        QCOMPARE(table(w)->model()->rowCount(), 1);
        QCOMPARE(statusOf(w, QStringLiteral("K1AAA")), StationSpot::Unknown);
    }

    void tuneWithoutARigAsksAndTunesNothing()
    {
        m_server->setRoute("/spot/", potaSpots(QStringLiteral("K1AAA US-1 14061")));
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 1, 5000);
        QTest::keyClick(&w, Qt::Key_J);
        QStringList messages;
        connect(w.statusBar(), &QStatusBar::messageChanged, &w,
                [&messages](const QString &m) { messages << m; });
        // "Yes" opens the radio set-up, which is then cancelled; "No" only closes the question.
        for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
            QStringList modals;
            QTimer closer;
            connect(&closer, &QTimer::timeout, &w, [&modals, answer] {
                auto *modal = qobject_cast<QDialog *>(QApplication::activeModalWidget());
                if (!modal || !modal->isVisible())
                    return;
                modals << modal->windowTitle();
                if (auto *box = qobject_cast<QMessageBox *>(modal)) {
                    QVERIFY(box->text().startsWith(QStringLiteral("The radio has not yet been graced")));
                    box->button(answer)->click();
                } else {
                    modal->reject();
                }
            });
            closer.start(10);
            QTest::keyClick(&w, Qt::Key_T);
            QStringList expected{QStringLiteral("Radio Not Connected")};
            if (answer == QMessageBox::Yes)
                expected << QStringLiteral("Radio Setup — Tallis");
            QCOMPARE(modals, expected);
        }
        QVERIFY(messages.filter(QStringLiteral("Tuned to")).isEmpty());
        QVERIFY(!rig(w)->isConnected());
    }

    void marksOutliveARefreshAndARestart()
    {
        const QString stations = QStringLiteral("K1AAA US-1 14061, K2BBB US-2 14062");
        m_server->setRoute("/spot/", potaSpots(stations));
        const QString day = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd"));
        {
            MainWindow w(services());
            QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 2, 5000);
            QTest::keyClick(&w, Qt::Key_J);
            QTest::keyClick(&w, Qt::Key_H);
            QTest::keyClick(&w, Qt::Key_J);
            QTest::keyClick(&w, Qt::Key_L);
            QCOMPARE(
                w.statusBar()->currentMessage(),
                QStringLiteral("Contact with K2BBB recorded — logged to ~/.tallis/contacts-pota-%1.jsonl")
                    .arg(day));
            QFile log(tallisDirPath() + QStringLiteral("/contacts-pota-%1.jsonl").arg(day));
            QVERIFY(log.open(QIODevice::ReadOnly));
            const QList<QByteArray> lines = log.readAll().split('\n');
            QCOMPARE(lines.size(), 2); // one line and its end
            QCOMPARE(QJsonDocument::fromJson(lines.first()).object().value(QStringLiteral("callsign")),
                     QJsonValue(QStringLiteral("K2BBB")));

            // A refresh replaces every row: a newer station on top, both others re-spotted.
            m_server->setRoute("/spot/", potaSpots(QStringLiteral("K4DDD US-4 7030, ") + stations));
            w.onRefreshAll();
            QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 3, 5000);
            QCOMPARE(statusOf(w, QStringLiteral("K1AAA")), StationSpot::Heard);
            QCOMPARE(statusOf(w, QStringLiteral("K2BBB")), StationSpot::Contacted);
        }
        MainWindow again(services());
        QTRY_COMPARE_WITH_TIMEOUT(model(again)->rowCount(), 3, 5000);
        QCOMPARE(statusOf(again, QStringLiteral("K1AAA")), StationSpot::Heard);
        QCOMPARE(statusOf(again, QStringLiteral("K2BBB")), StationSpot::Contacted);
        QCOMPARE(statusOf(again, QStringLiteral("K4DDD")), StationSpot::Unknown);
    }

    // Every configured DX cluster feeds the one table.
    void twoClustersFeedOneTable()
    {
        ClusterTestServer nodeA;
        ClusterTestServer nodeB;
        QVERIFY(nodeA.start());
        QVERIFY(nodeB.start());
        nodeA.setLoginReply("Hello N0CALL, this is node A\r\n");
        nodeB.setLoginReply("Hello N0CALL, this is node B\r\n");
        writeSettings(
            QStringLiteral(R"({"callsign": "N0CALL", "sources": {"dx": true}, "dxClusters": [%1, %2]})")
                .arg(clusterEntry(nodeA), clusterEntry(nodeB))
                .toUtf8());

        MainWindow w(services());
        QCOMPARE(w.findChildren<DxClusterFetcher *>().size(), 2);
        QTRY_VERIFY_WITH_TIMEOUT(w.findChildren<DxClusterFetcher *>().at(0)->isConnected() &&
                                     w.findChildren<DxClusterFetcher *>().at(1)->isConnected(),
                                 5000);
        QCOMPARE(labelText(w, "toolbarDxStatus"), QStringLiteral("DX: Connected"));
        QVERIFY(nodeB.receivedCount("N0CALL") >= 1); // the operator's call, on every node

        nodeA.sendLine(spotLine("W3LPL", 14025.0, "JA1XYZ", "CW 599"));
        nodeB.sendLine(spotLine("K1TTT", 7074.0, "VK9CA", "FT8"));
        QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 2, 5000);
        // The same station from both nodes is one row.
        nodeA.sendLine(spotLine("W3LPL", 21025.0, "EA8/DL1ABC", "CW"));
        nodeB.sendLine(spotLine("DL1XX", 21025.0, "EA8/DL1ABC", "CW"));
        QTRY_VERIFY_WITH_TIMEOUT(labelText(w, "statusSpots").contains(QStringLiteral("DX:3")), 5000);
        QCOMPARE(table(w)->model()->rowCount(), 3);

        // Unticking DX ends both sessions and hides the rows.
        clickSource(w, QStringLiteral("DX Cluster"));
        QVERIFY(!w.anyDxConnected());
        QCOMPARE(labelText(w, "toolbarDxStatus"), QStringLiteral("DX: Disconnected"));
        QCOMPARE(table(w)->model()->rowCount(), 0);
    }

    void tickingDxWithoutCallsignReminds()
    {
        ClusterTestServer node;
        QVERIFY(node.start());
        node.setLoginReply("Hello GUEST\r\n");
        writeSettings(QStringLiteral(R"({"dxClusters": [%1]})").arg(clusterEntry(node)).toUtf8());
        MainWindow w(services());
        QCOMPARE(node.connectionCount(), 0); // DX is off by default
        QStringList messages;
        connect(w.statusBar(), &QStatusBar::messageChanged, &w,
                [&messages](const QString &m) { messages.append(m); });
        clickSource(w, QStringLiteral("DX Cluster"));
        QVERIFY(messages.contains(QStringLiteral("DX cluster: set your callsign in Preferences first")));
        // Still asked to connect.
        QTRY_COMPARE_WITH_TIMEOUT(node.connectionCount(), 1, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(messages.contains(QStringLiteral("DX cluster connected — 127.0.0.1")), 5000);
    }
};

TALLIS_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
