#include "app/mainwindow.h"
#include "radio/hamlibcontroller.h"
#include "support/rigctldprocess.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QLabel>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

#include <memory>

using namespace WindowFixture;

// The window's rig path against a real network rig daemon: the start-up
// connect, polling, loss after failed polls and the reconnect timer.
class TestMainWindowRadio final : public WindowTest
{
    Q_OBJECT

private:
    static QJsonObject hamlibSettings(const RigConfig &config)
    {
        return QJsonObject{{QStringLiteral("rigModel"), config.rigModel},
                           {QStringLiteral("port"), config.port}};
    }

private slots:
    void networkRigIsConnectedLostAndRegained()
    {
        RigctldProcess daemon;
        QVERIFY2(daemon.start(), qPrintable(daemon.errorString()));
        writeSettings(QJsonObject{{QStringLiteral("hamlib"), hamlibSettings(daemon.rigConfig())}});

        MainWindow w(services());
        // Not at once: the window shows first, the rig opens 1.5 s later.
        QCOMPARE(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Not Connected"));
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Connected"),
                                  10000);
        QVERIFY(timer(w, "radioPollTimer")->isActive());
        QVERIFY(!timer(w, "rigReconnectTimer")->isActive());
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "radioFreqLabel").endsWith(QStringLiteral(" MHz")), true,
                                  5000);

        // The daemon dies: after five failed polls the window shows the loss
        // and starts trying again every 15 s.
        daemon.stop();
        QTRY_COMPARE_WITH_TIMEOUT(labelText(w, "statusRadio"),
                                  QStringLiteral("Radio unconfigured — consult the settings"), 30000);
        QCOMPARE(labelText(w, "radioFreqLabel"), QStringLiteral("NOT CONNECTED"));
        QCOMPARE(labelText(w, "toolbarRadioStatus"), QStringLiteral("Radio: Not Connected"));
        QVERIFY(!timer(w, "radioPollTimer")->isActive());
        QVERIFY(timer(w, "rigReconnectTimer")->isActive());
        QCOMPARE(timer(w, "rigReconnectTimer")->interval(), 15000);

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
