#include "app/mainwindow.h"
#include "model/stationmodel.h"
#include "sources/dxclusterfetcher.h"
#include "support/clustertestserver.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QDateTime>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QTableView>
#include <QTest>

using namespace WindowFixture;

// Every configured DX cluster feeds the one table.
class TestMainWindowDx final : public WindowTest
{
    Q_OBJECT

private:
    static QByteArray spotLine(const char *spotter, double khz, const char *call, const char *comment)
    {
        const QByteArray hhmm = QDateTime::currentDateTimeUtc().toString(QStringLiteral("HHmm")).toLatin1();
        return "DX de " + QByteArray(spotter) + ":     " + QByteArray::number(khz, 'f', 1) + "  " + call +
               "       " + comment + "   " + hhmm + "Z";
    }
    static QJsonObject clusterEntry(const ClusterTestServer &node)
    {
        return QJsonObject{{QStringLiteral("host"), QStringLiteral("127.0.0.1")},
                           {QStringLiteral("port"), node.port()}};
    }

private slots:
    void twoClustersFeedOneTable()
    {
        ClusterTestServer nodeA;
        ClusterTestServer nodeB;
        QVERIFY(nodeA.start());
        QVERIFY(nodeB.start());
        nodeA.setLoginReply("Hello N0CALL, this is node A\r\n");
        nodeB.setLoginReply("Hello N0CALL, this is node B\r\n");
        writeSettings(QJsonObject{
            {QStringLiteral("callsign"), QStringLiteral("N0CALL")},
            {QStringLiteral("sources"), QJsonObject{{QStringLiteral("dx"), true}}},
            {QStringLiteral("dxClusters"), QJsonArray{clusterEntry(nodeA), clusterEntry(nodeB)}},
        });

        MainWindow w(services());
        QCOMPARE(w.findChildren<DxClusterFetcher *>().size(), 2);
        QTRY_VERIFY_WITH_TIMEOUT(w.anyDxConnected(), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(w.findChildren<DxClusterFetcher *>().at(0)->isConnected() &&
                                     w.findChildren<DxClusterFetcher *>().at(1)->isConnected(),
                                 5000);
        QCOMPARE(labelText(w, "toolbarDxStatus"), QStringLiteral("DX: Connected"));
        // Logged in with the operator's call on both nodes.
        QVERIFY(nodeA.receivedCount("N0CALL") >= 1);
        QVERIFY(nodeB.receivedCount("N0CALL") >= 1);
        QCOMPARE(nodeA.receivedCount("SET/DX"), 1);

        nodeA.sendLine(spotLine("W3LPL", 14025.0, "JA1XYZ", "CW 599"));
        nodeB.sendLine(spotLine("K1TTT", 7074.0, "VK9CA", "FT8"));
        QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 2, 5000);
        // The same station from both nodes is one row.
        nodeA.sendLine(spotLine("W3LPL", 21025.0, "EA8/DL1ABC", "CW"));
        nodeB.sendLine(spotLine("DL1XX", 21025.0, "EA8/DL1ABC", "CW"));
        QTRY_VERIFY_WITH_TIMEOUT(labelText(w, "statusSpots").contains(QStringLiteral("DX:3")), 5000);
        QCOMPARE(model(w)->rowCount(), 3);
        QCOMPARE(table(w)->model()->rowCount(), 3);
        QStringList names;
        for (int row = 0; row < 3; ++row)
            names.append(model(w)->spotAt(row).referenceName);
        QVERIFY(names.contains(QStringLiteral("Japan")));

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
        writeSettings(QJsonObject{{QStringLiteral("dxClusters"), QJsonArray{clusterEntry(node)}}});
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
        QCOMPARE(w.findChildren<DxClusterFetcher *>().first()->host(), QStringLiteral("127.0.0.1"));
    }
};

TALLIS_TEST_MAIN(TestMainWindowDx)
#include "tst_mainwindowdx.moc"
