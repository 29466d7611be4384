#include "app/mainwindow.h"
#include "radio/hamliblink.h"
#include "support/rigctldprocess.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QItemSelectionModel>
#include <QTableView>
#include <QTest>
#include <QTimer>

using namespace WindowFixture;

// The window's rig path against a real network rig daemon: the start-up
// connect, select-to-tune, polling, loss after failed polls and the reconnect timer.
class TestMainWindowRadio final : public WindowTest
{
    Q_OBJECT

private:
    // What the rig is set to, read through Hamlib on the window's own link; the
    // read queues behind any tune the window has sent before it.
    static QString rigSetting(const MainWindow &w)
    {
        double kHz = 0.0;
        QString mode;
        if (!w.findChild<HamlibLink *>()->readFrequencyAndWait(kHz, mode))
            return QStringLiteral("<not connected>");
        return QStringLiteral("%1 %2").arg(kHz, 0, 'f', 1).arg(mode);
    }

private slots:
    void networkRigFollowsTheSelectionIsLostAndRegained()
    {
        RigctldProcess daemon;
        QVERIFY2(daemon.start(), qPrintable(daemon.errorString()));
        writeSettings(QStringLiteral(R"({"hamlib": {"rigModel": %1, "port": "%2"}})")
                          .arg(daemon.rigConfig().rigModel)
                          .arg(daemon.rigConfig().port)
                          .toUtf8());
        const QString stations = QStringLiteral("K1AAA US-1 14061, K2BBB US-2 7150 SSB");
        m_server->setRoute("/spot/", potaSpots(stations));

        MainWindow w(services());
        w.show();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        // Not at once: the window shows first, the rig opens 1.5 s later.
        QCOMPARE(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Not Connected"));
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Connected"),
                                  10000);
        QVERIFY(timer(w, "radioPollTimer")->isActive());
        QVERIFY(!timer(w, "rigReconnectTimer")->isActive());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 2, 5000);

        // The operator's click tunes the rig: frequency, and SSB as the band's sideband.
        clickRow(w, 1);
        QCOMPARE(rigSetting(w), QStringLiteral("7150.0 LSB"));
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "radioFreqLabel"), QStringLiteral("7.150 MHz"), 5000);
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "radioModeLabel"), QStringLiteral("LSB"), 5000);

        // The dial moves; a refresh pushes the station down a row and the
        // restored selection leaves the rig alone.
        w.apiSetRadioFreqKhz(14200.0);
        QCOMPARE(rigSetting(w), QStringLiteral("14200.0 LSB"));
        m_server->setRoute("/spot/", potaSpots(QStringLiteral("K4DDD US-4 7030, ") + stations));
        w.onRefreshAll();
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 3, 5000);
        QCOMPARE(table(w)->selectionModel()->selectedRows().first().row(), 2);
        QCOMPARE(selectedCallsign(w), QStringLiteral("K2BBB"));
        QCOMPARE(rigSetting(w), QStringLiteral("14200.0 LSB"));

        // The daemon dies: after five failed polls the window shows the loss
        // and starts trying again every 15 s.
        daemon.stop();
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "statusRadio"),
                                  QStringLiteral("Radio unconfigured — consult the settings"), 30000);
        QCOMPARE(labelText(w, "radioFreqLabel"), QStringLiteral("NOT CONNECTED"));
        QCOMPARE(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Not Connected"));
        QVERIFY(!timer(w, "radioPollTimer")->isActive());
        QVERIFY(timer(w, "rigReconnectTimer")->isActive());

        // The daemon comes back on the same port; the reconnect timer finds it
        // (its interval shortened here so the test need not wait 15 s).
        QVERIFY2(daemon.start(daemon.port()), qPrintable(daemon.errorString()));
        timer(w, "rigReconnectTimer")->setInterval(100);
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Connected"),
                                  15000);
        QVERIFY(!timer(w, "rigReconnectTimer")->isActive());
        QVERIFY(timer(w, "radioPollTimer")->isActive());
    }
};

TALLIS_TEST_MAIN(TestMainWindowRadio)
#include "tst_mainwindowradio.moc"
