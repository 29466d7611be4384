#include "radio/hamlibcontroller.h"
#include "support/rigctldprocess.h"
#include "support/testmain.h"

#include <QSignalSpy>

namespace {

RigConfig netConfig(quint16 port)
{
    RigConfig config;
    config.rigModel = RigctldProcess::k_netRigctlModel;
    config.port = QStringLiteral("127.0.0.1:%1").arg(port);
    return config;
}

} // namespace

class TestRigctld : public QObject
{
    Q_OBJECT

private slots:
    void tunesPollsAndNoticesLoss()
    {
        RigctldProcess daemon;
        QVERIFY2(daemon.start(), qPrintable(daemon.errorString()));
        HamlibController ctrl;
        QSignalSpy connection(&ctrl, &HamlibController::connectionChanged);
        QSignalSpy caps(&ctrl, &HamlibController::capabilitiesChanged);
        QSignalSpy errors(&ctrl, &HamlibController::error);
        QSignalSpy polls(&ctrl, &HamlibController::pollResult);

        QVERIFY(ctrl.connectRig(netConfig(daemon.port())));
        QCOMPARE(connection.count(), 1);
        const auto remote = caps.at(0).at(0).value<RadioCaps>();
        QVERIFY(remote.hasVolume && remote.hasMute && remote.hasBreakIn && remote.hasKeySpeed);
        QVERIFY(ctrl.tune(14074.0, QStringLiteral("SSB")));
        ctrl.requestPoll();
        QCOMPARE(polls.count(), 1);
        QCOMPARE(polls.at(0), (QVariantList{14074.0, QStringLiteral("USB")}));
        ctrl.setKeySpeed(99);
        ctrl.setVolume(30);
        const RadioState state = ctrl.queryState();
        QCOMPARE(state.keySpeed, 60);
        QCOMPARE(state.volume, 30);

        daemon.stop();
        QCOMPARE(ctrl.getFrequency(), 0.0); // no cached answer may pretend the rig is still there
        QCOMPARE(ctrl.getMode(), QString());
        for (int i = 0; i < 4; ++i)
            ctrl.requestPoll();
        QVERIFY(ctrl.isConnected());
        QCOMPARE(errors.count(), 0);
        ctrl.requestPoll();
        QVERIFY(!ctrl.isConnected());
        QCOMPARE(errors.count(), 1);
        QCOMPARE(errors.at(0).at(0).toString(),
                 QStringLiteral("Radio connection lost — auto-disconnecting after repeated errors"));
        QCOMPARE(connection.count(), 2);
        QCOMPARE(connection.at(1).at(0).toBool(), false);
        QVERIFY(!caps.at(1).at(0).value<RadioCaps>().hasVolume);

        // Later polls stay quiet, and a failed reconnect says so once.
        ctrl.requestPoll();
        QVERIFY(!ctrl.connectRig(netConfig(daemon.port())));
        QCOMPARE(errors.count(), 2);
        QVERIFY(errors.at(1).at(0).toString().startsWith(QStringLiteral("Failed to open rig: ")));
        QCOMPARE(connection.count(), 2);
    }

    void badPortOrModel()
    {
        HamlibController ctrl;
        QSignalSpy connection(&ctrl, &HamlibController::connectionChanged);
        QSignalSpy errors(&ctrl, &HamlibController::error);
        const quint16 closedPort = RigctldProcess::freeLoopbackPort();
        QVERIFY(closedPort != 0);
        QVERIFY(!ctrl.connectRig(netConfig(closedPort)));
        QCOMPARE(errors.count(), 1);
        const QString message = errors.at(0).at(0).toString();
        QVERIFY2(message.startsWith(QStringLiteral("Failed to open rig: ")), qPrintable(message));
        QVERIFY2(message.size() > 20 && !message.contains(QLatin1Char('\n')), qPrintable(message));

        // A model Hamlib has never heard of fails before any port is opened.
        RigConfig unknown = netConfig(closedPort);
        unknown.rigModel = 99999;
        QVERIFY(!ctrl.connectRig(unknown));
        QCOMPARE(errors.count(), 2);
        QCOMPARE(errors.at(1).at(0).toString(), QStringLiteral("Failed to initialise rig model 99999"));
        ctrl.requestPoll(); // the controller is left clean: polls and panel controls do nothing
        ctrl.setVolume(10);
        QCOMPARE(errors.count(), 2);
        QCOMPARE(connection.count(), 0);
        QVERIFY(!ctrl.isConnected());
    }
};

TALLIS_TEST_MAIN(TestRigctld)
#include "tst_rigctld.moc"
