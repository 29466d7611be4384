#include "app/mainwindow.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "radio/hamlibcontroller.h"
#include "sources/potaspotfetcher.h"
#include "sources/sotaspotfetcher.h"
#include "sources/spotfetcher.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QComboBox>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <memory>

using namespace WindowFixture;

// The window with its sources pointed at a local server: spots flow in,
// counts and messages follow, filters and toggles act.
class TestMainWindow final : public WindowTest
{
    Q_OBJECT

private:
    static QString selectedCallsign(MainWindow &w)
    {
        const QModelIndexList rows = table(w)->selectionModel()->selectedRows(1);
        return rows.isEmpty() ? QString() : rows.first().data().toString();
    }

private slots:
    void frameAndStatusBar()
    {
        MainWindow w(services());
        QVERIFY(w.windowTitle().startsWith(QStringLiteral("Tallis — ")));
        QCOMPARE(w.minimumSize(), QSize(960, 600));
        QCOMPARE(labelText(w, "statusRadio"), QStringLiteral("Radio unconfigured — consult the settings"));
        QCOMPARE(labelText(w, "statusSpots"), QStringLiteral("No spots"));
        QCOMPARE(labelText(w, "statusRefresh"),
                 QStringLiteral("Last refresh: not yet (the scribes are en route…)"));
        QCOMPARE(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Not Connected"));
        QCOMPARE(labelText(w, "toolbarDxStatus"), QStringLiteral("DX: Disconnected"));
        QCOMPARE(labelText(w, "callsignLabel"), QStringLiteral("DE: [not set]"));
        QCOMPARE(w.findChildren<QPushButton *>(QStringLiteral("sourceBtn")).size(), 7);
        QCOMPARE(w.findChildren<QPushButton *>(QStringLiteral("modeBtn")).size(), 5);
        QCOMPARE(w.findChildren<QPushButton *>(QStringLiteral("bandBtn")).size(), 13);
        QVERIFY(!button(w, "sourceBtn", QStringLiteral("DX Cluster"))->isChecked());
        // Every web source but the inert BOTA slot asks at once; SOTA asks for its epoch first.
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount(), 6, 5000);
        QVERIFY(rig(w)->thread() != w.thread());
        QCOMPARE(timer(w, "radioPollTimer")->interval(), 500);
        QCOMPARE(timer(w, "rigReconnectTimer")->interval(), 15000);
        QVERIFY(!timer(w, "rigReconnectTimer")->isActive()); // no rig port configured
    }

    void batchesReachTheTableWithSourceCounts()
    {
        QJsonArray spots;
        for (int i = 0; i < 35; ++i)
            spots.append(potaSpot(QStringLiteral("K%1ABC").arg(i), QStringLiteral("US-%1").arg(1000 + i),
                                  14030.0 + i, 60 + i * 10));
        // Five older reports of stations already in the batch: merged away.
        for (int i = 0; i < 5; ++i)
            spots.append(potaSpot(QStringLiteral("K%1ABC").arg(i), QStringLiteral("US-%1").arg(1000 + i),
                                  7030.0, 1200));
        QCOMPARE(spots.size(), 40);
        m_server->setRoute("/spot/", toBody(spots));

        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "statusSpots"),
                                  QStringLiteral("Showing 35 of 35  S:0 P:40 W:0 WB:0 B:0 DX:0 G:0"), 5000);
        QCOMPARE(model(w)->rowCount(), 35);
        QCOMPARE(table(w)->model()->rowCount(), 35);

        // An empty batch later keeps the count of the last non-empty one.
        m_server->setRoute("/spot/", "[]");
        w.onRefreshAll();
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount("/spot/"), 2, 5000);
        QTest::qWait(50);
        QVERIFY(labelText(w, "statusSpots").contains(QStringLiteral("P:40")));

        // Hiding POTA hides its rows but keeps them in the model.
        button(w, "sourceBtn", QStringLiteral("POTA"))->click();
        QCOMPARE(labelText(w, "statusSpots"),
                 QStringLiteral("Showing 0 of 35  S:0 P:40 W:0 WB:0 B:0 DX:0 G:0"));
    }

    void refreshLabelWaitsForTheLastAnswer()
    {
        m_server->setRoute("/spot/",
                           toBody({potaSpot(QStringLiteral("K1ABC"), QStringLiteral("US-1"), 14062, 60)}));
        m_server->setRoute("/api/spots/gma/", "down for maintenance", 500, "text/plain");
        m_server->setHoldReplies(true);
        MainWindow w(services());
        const QString initial = labelText(w, "statusRefresh");
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount(), 5, 5000);

        m_server->releaseHeld("/api/spots/epoch"); // no epoch served: SOTA falls back to its list
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount("/api/spots/-72"), 1, 5000);
        m_server->releaseHeld("/spot/");
        QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 1, 5000);
        QCOMPARE(labelText(w, "statusRefresh"), initial);

        for (const QByteArray &path :
             {QByteArray("/api/spots/-72"), QByteArray("/static/spots.json"), QByteArray("/spots/")})
            m_server->releaseHeld(path);
        QTest::qWait(100);
        QCOMPARE(labelText(w, "statusRefresh"), initial);

        // The last answer is an error: it is reported but does not move the label.
        m_server->releaseHeld("/api/spots/gma/");
        QTRY_VERIFY_WITH_TIMEOUT(
            w.statusBar()->currentMessage().startsWith(QStringLiteral("The oracles have failed us: ")), 5000);
        QCOMPARE(labelText(w, "statusRefresh"), initial);

        // Once everything answers with spots, the label shows the time.
        m_server->setHoldReplies(false);
        serveEmptySources(*m_server);
        w.onRefreshAll();
        QTRY_VERIFY_WITH_TIMEOUT(labelText(w, "statusRefresh").startsWith(QStringLiteral("Last refresh: ")) &&
                                     labelText(w, "statusRefresh") != initial,
                                 5000);
        QVERIFY(QRegularExpression(QStringLiteral("^Last refresh: \\d\\d:\\d\\d:\\d\\d$"))
                    .match(labelText(w, "statusRefresh"))
                    .hasMatch());
    }

    void selectionSurvivesARefreshWithoutRetuning()
    {
        m_server->setRoute("/spot/",
                           toBody({potaSpot(QStringLiteral("K1AAA"), QStringLiteral("US-1"), 14061, 60),
                                   potaSpot(QStringLiteral("K2BBB"), QStringLiteral("US-2"), 14062, 120),
                                   potaSpot(QStringLiteral("K3CCC"), QStringLiteral("US-3"), 14063, 180)}));
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 3, 5000);

        // A connected dummy rig, so that a user's selection tunes.
        w.apiRadioConnect(); // the default rig is Hamlib's dummy
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Connected"),
                                  10000);

        QStringList tunes;
        connect(w.statusBar(), &QStatusBar::messageChanged, &w, [&tunes](const QString &m) {
            if (m.startsWith(QStringLiteral("Tuned to ")))
                tunes.append(m);
        });
        QTest::keyClick(&w, Qt::Key_J); // first row
        QTest::keyClick(&w, Qt::Key_J); // second row: K2BBB
        QCOMPARE(selectedCallsign(w), QStringLiteral("K2BBB"));
        QCOMPARE(tunes.size(), 2);
        QCOMPARE(tunes.last(), QStringLiteral("Tuned to 14062 kHz — may fortune favour the bold."));

        // Two newer stations push K2BBB down two rows; the selection follows it.
        m_server->setRoute("/spot/",
                           toBody({potaSpot(QStringLiteral("K4DDD"), QStringLiteral("US-4"), 7030, 10),
                                   potaSpot(QStringLiteral("K5EEE"), QStringLiteral("US-5"), 7031, 20),
                                   potaSpot(QStringLiteral("K1AAA"), QStringLiteral("US-1"), 14061, 60),
                                   potaSpot(QStringLiteral("K2BBB"), QStringLiteral("US-2"), 14062, 120),
                                   potaSpot(QStringLiteral("K3CCC"), QStringLiteral("US-3"), 14063, 180)}));
        w.onRefreshAll();
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 5, 5000);
        QCOMPARE(selectedCallsign(w), QStringLiteral("K2BBB"));
        QCOMPARE(table(w)->selectionModel()->selectedRows().first().row(), 3);

        // The station vanishes: the row at its old position is selected instead.
        m_server->setRoute("/spot/",
                           toBody({potaSpot(QStringLiteral("K4DDD"), QStringLiteral("US-4"), 7030, 10),
                                   potaSpot(QStringLiteral("K5EEE"), QStringLiteral("US-5"), 7031, 20)}));
        w.onRefreshAll();
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 2, 5000);
        QCOMPARE(selectedCallsign(w), QStringLiteral("K5EEE"));

        // Neither restore retuned the radio.
        QCOMPARE(tunes.size(), 2);
    }

    void keysMoveThroughTheView()
    {
        m_server->setRoute("/spot/",
                           toBody({potaSpot(QStringLiteral("K1AAA"), QStringLiteral("US-1"), 14061, 60),
                                   potaSpot(QStringLiteral("K2BBB"), QStringLiteral("US-2"), 14062, 120)}));
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 2, 5000);
        auto *heard = w.findChild<QPushButton *>(QStringLiteral("heardButton"));
        QVERIFY(heard && !heard->isEnabled()); // nothing selected yet
        QTest::keyClick(&w, Qt::Key_K);        // no selection: last row
        QCOMPARE(selectedCallsign(w), QStringLiteral("K2BBB"));
        QVERIFY(heard->isEnabled());
        QTest::keyClick(&w, Qt::Key_J); // already last: stays
        QCOMPARE(selectedCallsign(w), QStringLiteral("K2BBB"));
        QTest::keyClick(&w, Qt::Key_K);
        QTest::keyClick(&w, Qt::Key_K); // already first: stays
        QCOMPARE(selectedCallsign(w), QStringLiteral("K1AAA"));
        QCOMPARE(w.findChild<QLabel *>(QStringLiteral("detailReference"))->text(),
                 QStringLiteral("[POTA] US-1"));
        QCOMPARE(w.findChild<QLabel *>(QStringLiteral("detailFrequency"))->text(),
                 QStringLiteral("14061.0 kHz"));
    }

    void typingInSearchFiltersWithoutShortcuts()
    {
        m_server->setRoute("/spot/",
                           toBody({potaSpot(QStringLiteral("K1AAA"), QStringLiteral("US-1"), 14061, 60),
                                   potaSpot(QStringLiteral("W4HHH"), QStringLiteral("US-2"), 14062, 120)}));
        MainWindow w(services());
        w.show();
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 2, 5000);
        auto *search = w.findChild<QLineEdit *>();
        QVERIFY(search);
        search->setFocus();
        QTRY_VERIFY(search->hasFocus());
        QTest::keyClicks(search, QStringLiteral("hh"));
        QCOMPARE(search->text(), QStringLiteral("hh"));
        QCOMPARE(table(w)->model()->rowCount(), 1);
        QVERIFY(labelText(w, "statusSpots").startsWith(QStringLiteral("Showing 1 of 2")));
        QVERIFY(table(w)->selectionModel()->selectedRows().isEmpty());
    }

    void bandButtonsAndStatusChoice()
    {
        m_server->setRoute("/spot/",
                           toBody({potaSpot(QStringLiteral("K1AAA"), QStringLiteral("US-1"), 14061, 60),
                                   potaSpot(QStringLiteral("K2BBB"), QStringLiteral("US-2"), 5100, 120)}));
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(model(w)->rowCount(), 2, 5000);
        // Every band ticked: no band test, so the out-of-band 5100 kHz spot shows.
        QCOMPARE(table(w)->model()->rowCount(), 2);
        const QList<QPushButton *> bands = w.findChildren<QPushButton *>(QStringLiteral("bandBtn"));
        for (QPushButton *band : bands) {
            if (band->text() == QLatin1String("80m"))
                band->click();
        }
        QCOMPARE(table(w)->model()->rowCount(), 1);
        QCOMPARE(readSettings().value(QStringLiteral("disabledBands")).toArray(),
                 QJsonArray{QStringLiteral("80m")});
        for (QPushButton *band : bands) {
            if (band->isChecked())
                band->click();
        }
        QCOMPARE(table(w)->model()->rowCount(), 0); // every band off hides everything

        auto *status = w.findChild<QComboBox *>();
        QVERIFY(status);
        QCOMPARE(status->count(), 5);
        status->setCurrentIndex(3);
        QCOMPARE(proxy(w)->statusFilter(), 2);
        QCOMPARE(readSettings().value(QStringLiteral("statusFilter")).toInt(), 3);
    }

    void untickingASourceStopsItsRequests()
    {
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount(), 6, 5000);
        SpotFetcher *pota = w.findChild<PotaSpotFetcher *>();
        QVERIFY(pota->isAutoRefreshing());
        QCOMPARE(pota->refreshIntervalMs(), 60000);

        button(w, "sourceBtn", QStringLiteral("POTA"))->click();
        QVERIFY(!pota->isAutoRefreshing());
        QCOMPARE(readSettings().value(QStringLiteral("sources")).toObject().value(QStringLiteral("pota")),
                 QJsonValue(false));
        w.onRefreshAll(); // skips the unticked source
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount("/api/spots/gma/"), 2, 5000);
        QCOMPARE(m_server->requestCount("/spot/"), 1);

        // Ticking it again fetches at once.
        button(w, "sourceBtn", QStringLiteral("POTA"))->click();
        QVERIFY(pota->isAutoRefreshing());
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requestCount("/spot/"), 2, 5000);
    }
};

TALLIS_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
