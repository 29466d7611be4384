#include "radio/hamlibcontroller.h"
#include "support/testmain.h"

#include <hamlib/rig.h>

#include <QSignalSpy>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <memory>

namespace {

RigConfig dummyConfig()
{
    RigConfig config;
    config.rigModel = 1;
    return config;
}

// The whole record in one line, so a mismatch shows every field.
QString describe(const RadioState &state)
{
    return QStringLiteral("volume %1 power %2 filter %3 speed %4 break-in %5 muted %6")
        .arg(state.volume)
        .arg(state.rfPower)
        .arg(state.filter)
        .arg(state.keySpeed)
        .arg(state.breakIn)
        .arg(state.muted);
}

bool allFalse(const RadioCaps &caps)
{
    return !caps.hasVolume && !caps.hasRfPower && !caps.hasMute && !caps.hasFilter && !caps.hasBreakInSemi &&
           !caps.hasBreakInFull && !caps.hasBreakIn && !caps.hasKeySpeed && !caps.hasTune;
}

// Collects Hamlib's trace of the dummy rig's function changes, in call order.
QStringList g_funcTrace;

int traceFuncCalls(enum rig_debug_level_e, rig_ptr_t, const char *format, va_list args)
{
    char line[512];
    std::vsnprintf(line, sizeof line, format, args);
    const QString text = QString::fromLatin1(line).trimmed();
    const QString marker = QStringLiteral("dummy_set_func called: ");
    if (text.startsWith(marker))
        g_funcTrace.append(text.mid(marker.size()));
    return 0;
}

} // namespace

class TestHamlibController : public QObject
{
    Q_OBJECT

private:
    static RIG *rigOf(HamlibController &ctrl) { return ctrl.m_rig; }

    static float level(HamlibController &ctrl, setting_t which)
    {
        value_t value;
        value.f = -1.0f;
        if (rig_get_level(rigOf(ctrl), RIG_VFO_CURR, which, &value) != RIG_OK)
            return -1.0f;
        return value.f;
    }

    static int intLevel(HamlibController &ctrl, setting_t which)
    {
        value_t value;
        value.i = -1;
        rig_get_level(rigOf(ctrl), RIG_VFO_CURR, which, &value);
        return value.i;
    }

    static bool funcOn(HamlibController &ctrl, setting_t func)
    {
        int status = -1;
        rig_get_func(rigOf(ctrl), RIG_VFO_CURR, func, &status);
        return status != 0;
    }

    static pbwidth_t width(HamlibController &ctrl)
    {
        rmode_t mode = RIG_MODE_NONE;
        pbwidth_t result = -1;
        rig_get_mode(rigOf(ctrl), RIG_VFO_CURR, &mode, &result);
        return result;
    }

    std::unique_ptr<HamlibController> m_tuner;

private slots:
    void cleanupTestCase() { m_tuner.reset(); }

    void connectEmitsInOrder()
    {
        QStringList order;
        RadioCaps caps;
        RadioState state;
        HamlibController ctrl; // after the records: its destructor still reports
        connect(&ctrl, &HamlibController::connectionChanged, this,
                [&](bool on) { order << QStringLiteral("connection:%1").arg(on); });
        connect(&ctrl, &HamlibController::capabilitiesChanged, this, [&](const RadioCaps &c) {
            order << QStringLiteral("caps");
            caps = c;
        });
        connect(&ctrl, &HamlibController::radioStateRead, this, [&](const RadioState &s) {
            order << QStringLiteral("state");
            state = s;
        });
        QSignalSpy errors(&ctrl, &HamlibController::error);

        QVERIFY(!ctrl.isConnected());
        QVERIFY(ctrl.connectRig(dummyConfig()));
        QVERIFY(ctrl.isConnected());
        QCOMPARE(order, (QStringList{"connection:1", "caps", "state"}));
        QCOMPARE(errors.count(), 0);

        QVERIFY(caps.hasVolume && caps.hasRfPower && caps.hasMute && caps.hasFilter && caps.hasBreakInSemi &&
                caps.hasBreakInFull && caps.hasBreakIn && caps.hasKeySpeed && caps.hasTune);
        // The fresh dummy reports AF and power at 0 and no keyer speed; FM at normal width.
        QCOMPARE(describe(state), QStringLiteral("volume 0 power 0 filter 1 speed 5 break-in 0 muted 0"));

        // Reconnecting passes through disconnected first.
        order.clear();
        QVERIFY(ctrl.connectRig(dummyConfig()));
        QCOMPARE(order, (QStringList{"connection:0", "caps", "connection:1", "caps", "state"}));
    }

    void disconnectSignalsOnce()
    {
        HamlibController ctrl;
        QVERIFY(ctrl.connectRig(dummyConfig()));
        QSignalSpy connection(&ctrl, &HamlibController::connectionChanged);
        QSignalSpy caps(&ctrl, &HamlibController::capabilitiesChanged);

        ctrl.disconnectRig();
        ctrl.disconnectRig();
        QCOMPARE(connection.count(), 1);
        QCOMPARE(connection.at(0).at(0).toBool(), false);
        QCOMPARE(caps.count(), 1);
        QVERIFY(allFalse(caps.at(0).at(0).value<RadioCaps>()));
        QVERIFY(!ctrl.isConnected());
        QVERIFY(allFalse(ctrl.queryCaps()));

        // Destroying a connected controller says goodbye exactly once too.
        auto *owned = new HamlibController;
        QVERIFY(owned->connectRig(dummyConfig()));
        QSignalSpy lastWord(owned, &HamlibController::connectionChanged);
        delete owned;
        QCOMPARE(lastWord.count(), 1);
        QCOMPARE(lastWord.at(0).at(0).toBool(), false);
    }

    void withoutRig()
    {
        HamlibController ctrl;
        QSignalSpy errors(&ctrl, &HamlibController::error);
        QSignalSpy connection(&ctrl, &HamlibController::connectionChanged);
        QSignalSpy freq(&ctrl, &HamlibController::frequencyChanged);
        QSignalSpy polls(&ctrl, &HamlibController::pollResult);

        QVERIFY(!ctrl.setFrequency(14074.0));
        QVERIFY(!ctrl.tune(7074.0, QStringLiteral("SSB")));
        QCOMPARE(errors.count(), 2);
        QCOMPARE(errors.at(0).at(0).toString(), QStringLiteral("Radio not connected"));
        QCOMPARE(errors.at(1).at(0).toString(), QStringLiteral("Radio not connected"));
        QCOMPARE(freq.count(), 0);

        // No PTT control configured: keying is a harmless no-op even without a rig.
        QVERIFY(ctrl.setPtt(true));
        QVERIFY(ctrl.setPtt(false));
        QCOMPARE(errors.count(), 2);

        ctrl.requestPoll();
        ctrl.setVolume(50);
        ctrl.setRfPower(50);
        ctrl.setMute(true);
        ctrl.setFilter(0);
        ctrl.setBreakIn(2);
        ctrl.setKeySpeed(25);
        ctrl.startTune();
        ctrl.disconnectRig();
        QCOMPARE(errors.count(), 2);
        QCOMPARE(polls.count(), 0);
        QCOMPARE(connection.count(), 0);

        QCOMPARE(ctrl.getFrequency(), 0.0);
        QCOMPARE(ctrl.getMode(), QString());
        QVERIFY(allFalse(ctrl.queryCaps()));
        QCOMPARE(describe(ctrl.queryState()),
                 QStringLiteral("volume 75 power 100 filter 1 speed 20 break-in 0 muted 0"));
    }

    void badModel()
    {
        HamlibController ctrl;
        QSignalSpy errors(&ctrl, &HamlibController::error);
        QSignalSpy connection(&ctrl, &HamlibController::connectionChanged);
        RigConfig config;
        config.rigModel = 99999;
        QVERIFY(!ctrl.connectRig(config));
        QCOMPARE(errors.count(), 1);
        QCOMPARE(errors.at(0).at(0).toString(), QStringLiteral("Failed to initialise rig model 99999"));
        QCOMPARE(connection.count(), 0);
        QVERIFY(!ctrl.isConnected());
    }

    void tuneMapsModes_data()
    {
        QTest::addColumn<double>("kHz");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("expected");

        // The rig starts each row in AM, so "AM" marks a mode left alone.
        QTest::newRow("ssb lower case, 40 m") << 7074.0 << "ssb"
                                              << "LSB";
        QTest::newRow("SSB, 20 m") << 14074.0 << "SSB"
                                   << "USB";
        QTest::newRow("SSB at exactly 10 MHz") << 10000.0 << "SSB"
                                               << "USB";
        QTest::newRow("SSB just below 10 MHz") << 9999.999 << "SSB"
                                               << "LSB";
        QTest::newRow("USB low") << 3700.0 << "usb"
                                 << "USB";
        QTest::newRow("LSB high") << 14200.0 << "LSB"
                                  << "LSB";
        QTest::newRow("CW") << 7030.0 << "CW"
                            << "CW";
        QTest::newRow("CW-R") << 7030.0 << "cw-r"
                              << "CW-R";
        QTest::newRow("CWR") << 7030.0 << "CWR"
                             << "CW-R";
        QTest::newRow("FM") << 145500.0 << "FM"
                            << "FM";
        QTest::newRow("NFM") << 145500.0 << "nfm"
                             << "FM";
        QTest::newRow("WFM tuned as FM") << 98000.0 << "WFM"
                                         << "FM";
        QTest::newRow("FT8 untouched") << 14074.0 << "FT8"
                                       << "AM";
        QTest::newRow("RTTY untouched") << 14080.0 << "RTTY"
                                        << "AM";
        QTest::newRow("DATA untouched") << 14080.0 << "DATA"
                                        << "AM";
        QTest::newRow("empty untouched") << 14080.0 << ""
                                         << "AM";
        QTest::newRow("partial match untouched") << 14080.0 << "USB-D"
                                                 << "AM";
        QTest::newRow("padded untouched") << 14080.0 << " CW"
                                          << "AM";
    }

    void tuneMapsModes()
    {
        QFETCH(double, kHz);
        QFETCH(QString, mode);
        QFETCH(QString, expected);

        // One rig for all rows: opening the dummy takes a tenth of a second.
        if (!m_tuner) {
            m_tuner = std::make_unique<HamlibController>();
            QVERIFY(m_tuner->connectRig(dummyConfig()));
        }
        HamlibController &ctrl = *m_tuner;
        QVERIFY(rig_set_mode(rigOf(ctrl), RIG_VFO_CURR, RIG_MODE_AM, RIG_PASSBAND_NOCHANGE) == RIG_OK);
        QSignalSpy freq(&ctrl, &HamlibController::frequencyChanged);
        QSignalSpy errors(&ctrl, &HamlibController::error);

        QVERIFY(ctrl.tune(kHz, mode));
        QCOMPARE(freq.count(), 1);
        QCOMPARE(freq.at(0).at(0).toDouble(), kHz);
        QCOMPARE(errors.count(), 0);
        QCOMPARE(ctrl.getFrequency(), kHz);
        QCOMPARE(ctrl.getMode(), expected);
    }

    void modeNames()
    {
        HamlibController ctrl;
        QVERIFY(ctrl.connectRig(dummyConfig()));
        const QList<QPair<rmode_t, QString>> names = {
            {RIG_MODE_AM, "AM"},        {RIG_MODE_CW, "CW"},        {RIG_MODE_USB, "USB"},
            {RIG_MODE_LSB, "LSB"},      {RIG_MODE_RTTY, "RTTY"},    {RIG_MODE_FM, "FM"},
            {RIG_MODE_WFM, "WFM"},      {RIG_MODE_CWR, "CW-R"},     {RIG_MODE_RTTYR, "RTTY-R"},
            {RIG_MODE_PKTLSB, "PKT-L"}, {RIG_MODE_PKTUSB, "PKT-U"}, {RIG_MODE_PKTFM, "PKT-F"},
            {RIG_MODE_DSB, "?"},
        };
        for (const auto &[rigMode, name] : names) {
            QVERIFY(rig_set_mode(rigOf(ctrl), RIG_VFO_CURR, rigMode, RIG_PASSBAND_NOCHANGE) == RIG_OK);
            QCOMPARE(ctrl.getMode(), name);
        }
    }

    void levelsAreClamped()
    {
        HamlibController ctrl;
        QVERIFY(ctrl.connectRig(dummyConfig()));

        ctrl.setVolume(-5);
        QCOMPARE(level(ctrl, RIG_LEVEL_AF), 0.0f);
        ctrl.setVolume(150);
        QCOMPARE(level(ctrl, RIG_LEVEL_AF), 1.0f);
        ctrl.setVolume(42);
        QCOMPARE(level(ctrl, RIG_LEVEL_AF), 0.42f);

        ctrl.setRfPower(-1);
        QCOMPARE(level(ctrl, RIG_LEVEL_RFPOWER), 0.0f);
        ctrl.setRfPower(101);
        QCOMPARE(level(ctrl, RIG_LEVEL_RFPOWER), 1.0f);
        ctrl.setRfPower(55);
        QCOMPARE(level(ctrl, RIG_LEVEL_RFPOWER), 0.55f);

        ctrl.setKeySpeed(2);
        QCOMPARE(intLevel(ctrl, RIG_LEVEL_KEYSPD), 5);
        ctrl.setKeySpeed(99);
        QCOMPARE(intLevel(ctrl, RIG_LEVEL_KEYSPD), 60);
        ctrl.setKeySpeed(28);
        QCOMPARE(intLevel(ctrl, RIG_LEVEL_KEYSPD), 28);

        const RadioState state = ctrl.queryState();
        QCOMPARE(state.volume, 42);
        QCOMPARE(state.rfPower, 55);
        QCOMPARE(state.keySpeed, 28);

        // Readings out of range are clamped on the way in as well.
        value_t speed;
        speed.i = 80;
        QVERIFY(rig_set_level(rigOf(ctrl), RIG_VFO_CURR, RIG_LEVEL_KEYSPD, speed) == RIG_OK);
        QCOMPARE(ctrl.queryState().keySpeed, 60);

        // The tuner cycle reaches the rig without complaint.
        QSignalSpy errors(&ctrl, &HamlibController::error);
        ctrl.startTune();
        QCOMPARE(errors.count(), 0);
    }

    void muteByFunction()
    {
        HamlibController ctrl;
        QVERIFY(ctrl.connectRig(dummyConfig()));
        ctrl.setVolume(42);

        ctrl.setMute(true);
        QVERIFY(funcOn(ctrl, RIG_FUNC_MUTE));
        QCOMPARE(level(ctrl, RIG_LEVEL_AF), 0.42f);
        QCOMPARE(ctrl.queryState().muted, true);

        ctrl.setMute(false);
        QVERIFY(!funcOn(ctrl, RIG_FUNC_MUTE));
        QCOMPARE(ctrl.queryState().muted, false);
    }

    void muteByAfLevel()
    {
        HamlibController ctrl;
        QVERIFY(ctrl.connectRig(dummyConfig()));
        // Make the dummy look like a rig without a mute function.
        rigOf(ctrl)->state.has_set_func &= ~RIG_FUNC_MUTE;
        QVERIFY(!rig_has_set_func(rigOf(ctrl), RIG_FUNC_MUTE));
        QVERIFY(ctrl.queryCaps().hasMute);

        ctrl.setVolume(42);
        ctrl.setMute(true);
        QCOMPARE(level(ctrl, RIG_LEVEL_AF), 0.0f);
        QVERIFY(!funcOn(ctrl, RIG_FUNC_MUTE));
        ctrl.setMute(false);
        QCOMPARE(level(ctrl, RIG_LEVEL_AF), 0.42f);

        // Muting twice remembers the silence, so unmuting stays quiet.
        ctrl.setMute(true);
        ctrl.setMute(true);
        ctrl.setMute(false);
        QCOMPARE(level(ctrl, RIG_LEVEL_AF), 0.0f);

        // Neither mute nor AF: nothing is touched.
        value_t loud;
        loud.f = 0.8f;
        QVERIFY(rig_set_level(rigOf(ctrl), RIG_VFO_CURR, RIG_LEVEL_AF, loud) == RIG_OK);
        rigOf(ctrl)->state.has_set_level &= ~RIG_LEVEL_AF;
        QVERIFY(!ctrl.queryCaps().hasMute);
        ctrl.setMute(true);
        QCOMPARE(level(ctrl, RIG_LEVEL_AF), 0.8f);
    }

    void breakInOrder()
    {
        HamlibController ctrl;
        QVERIFY(ctrl.connectRig(dummyConfig()));
        g_funcTrace.clear();
        rig_set_debug_callback(traceFuncCalls, nullptr);
        rig_set_debug(RIG_DEBUG_VERBOSE);
        ctrl.setBreakIn(1);
        const RadioState semi = ctrl.queryState();
        ctrl.setBreakIn(2);
        const RadioState full = ctrl.queryState();
        ctrl.setBreakIn(7);
        const RadioState off = ctrl.queryState();
        rig_set_debug(RIG_DEBUG_NONE);
        rig_set_debug_callback(nullptr, nullptr);

        // The function switched on always goes first, so the rig never drops to no break-in.
        QCOMPARE(g_funcTrace,
                 (QStringList{"SBKIN 1", "FBKIN 0", "FBKIN 1", "SBKIN 0", "SBKIN 0", "FBKIN 0"}));
        QCOMPARE(semi.breakIn, 1);
        QCOMPARE(full.breakIn, 2);
        QCOMPARE(off.breakIn, 0);
        QVERIFY(!funcOn(ctrl, RIG_FUNC_SBKIN));
        QVERIFY(!funcOn(ctrl, RIG_FUNC_FBKIN));
    }

    void filterWidths()
    {
        HamlibController ctrl;
        QVERIFY(ctrl.connectRig(dummyConfig()));
        QVERIFY(ctrl.tune(14074.0, QStringLiteral("USB")));
        RIG *rig = rigOf(ctrl);
        const pbwidth_t narrow = rig_passband_narrow(rig, RIG_MODE_USB);
        const pbwidth_t normal = rig_passband_normal(rig, RIG_MODE_USB);
        const pbwidth_t wide = rig_passband_wide(rig, RIG_MODE_USB);
        QVERIFY(narrow > 0 && narrow < normal && normal < wide);

        ctrl.setFilter(0);
        QCOMPARE(width(ctrl), narrow);
        QCOMPARE(ctrl.queryState().filter, 0);
        QCOMPARE(ctrl.getMode(), QStringLiteral("USB"));
        ctrl.setFilter(2);
        QCOMPARE(width(ctrl), wide);
        QCOMPARE(ctrl.queryState().filter, 2);
        ctrl.setFilter(1);
        QCOMPARE(width(ctrl), normal);
        QCOMPARE(ctrl.queryState().filter, 1);
        ctrl.setFilter(0);
        ctrl.setFilter(9); // anything else means normal
        QCOMPARE(width(ctrl), normal);

        // FM has no wide filter on the dummy: asking for it leaves the width alone.
        QVERIFY(ctrl.tune(145500.0, QStringLiteral("FM")));
        QCOMPARE(rig_passband_wide(rig, RIG_MODE_FM), pbwidth_t(0));
        ctrl.setFilter(0);
        const pbwidth_t fmNarrow = width(ctrl);
        QCOMPARE(fmNarrow, rig_passband_narrow(rig, RIG_MODE_FM));
        ctrl.setFilter(2);
        QCOMPARE(width(ctrl), fmNarrow);
        QCOMPARE(ctrl.queryState().filter, 0);
    }

    void queryStateReadsEverything()
    {
        HamlibController ctrl;
        QVERIFY(ctrl.connectRig(dummyConfig()));
        QVERIFY(ctrl.tune(7030.0, QStringLiteral("CW")));
        ctrl.setVolume(33);
        ctrl.setRfPower(10);
        ctrl.setKeySpeed(24);
        ctrl.setBreakIn(1);
        ctrl.setMute(true);
        ctrl.setFilter(0);

        QCOMPARE(describe(ctrl.queryState()),
                 QStringLiteral("volume 33 power 10 filter 0 speed 24 break-in 1 muted 1"));

        // A fresh connection reads the rig again and reports it.
        QSignalSpy read(&ctrl, &HamlibController::radioStateRead);
        QVERIFY(ctrl.connectRig(dummyConfig()));
        QCOMPARE(read.count(), 1);
        QCOMPARE(read.at(0).at(0).value<RadioState>().volume, 0);
    }

    void pttByRigCommand()
    {
        HamlibController ctrl;
        RigConfig config = dummyConfig();
        config.pttType = 1;
        QVERIFY(ctrl.connectRig(config));
        QSignalSpy errors(&ctrl, &HamlibController::error);
        QVERIFY(ctrl.setPtt(true));
        ptt_t ptt = RIG_PTT_OFF;
        QVERIFY(rig_get_ptt(rigOf(ctrl), RIG_VFO_CURR, &ptt) == RIG_OK);
        QCOMPARE(ptt, RIG_PTT_ON);
        QVERIFY(ctrl.setPtt(false));
        QVERIFY(rig_get_ptt(rigOf(ctrl), RIG_VFO_CURR, &ptt) == RIG_OK);
        QCOMPARE(ptt, RIG_PTT_OFF);
        QCOMPARE(errors.count(), 0);

        // With PTT configured, keying a disconnected rig is an error.
        ctrl.disconnectRig();
        QVERIFY(!ctrl.setPtt(true));
        QCOMPARE(errors.count(), 1);
        QCOMPARE(errors.at(0).at(0).toString(), QStringLiteral("Radio not connected"));
    }

    void pollCountsFailures()
    {
        HamlibController ctrl;
        QVERIFY(ctrl.connectRig(dummyConfig()));
        QVERIFY(ctrl.tune(14062.0, QStringLiteral("CW")));
        QSignalSpy polls(&ctrl, &HamlibController::pollResult);
        QSignalSpy errors(&ctrl, &HamlibController::error);
        QSignalSpy connection(&ctrl, &HamlibController::connectionChanged);
        QSignalSpy caps(&ctrl, &HamlibController::capabilitiesChanged);

        ctrl.requestPoll();
        QCOMPARE(polls.count(), 1);
        QCOMPARE(polls.at(0).at(0).toDouble(), 14062.0);
        QCOMPARE(polls.at(0).at(1).toString(), QStringLiteral("CW"));

        // A rig reporting 0 Hz counts as a failed poll.
        const auto setHz = [&](freq_t hz) { QVERIFY(rig_set_freq(rigOf(ctrl), RIG_VFO_CURR, hz) == RIG_OK); };
        setHz(0);
        for (int i = 0; i < 4; ++i)
            ctrl.requestPoll();
        QVERIFY(ctrl.isConnected());
        setHz(7030000);
        ctrl.requestPoll(); // a success restarts the count
        QCOMPARE(polls.count(), 2);
        setHz(0);
        for (int i = 0; i < 4; ++i)
            ctrl.requestPoll();
        QVERIFY(ctrl.isConnected());
        QCOMPARE(errors.count(), 0);
        QCOMPARE(connection.count(), 0);

        ctrl.requestPoll();
        QVERIFY(!ctrl.isConnected());
        QCOMPARE(errors.count(), 1);
        QCOMPARE(errors.at(0).at(0).toString(),
                 QStringLiteral("Radio connection lost — auto-disconnecting after repeated errors"));
        QCOMPARE(connection.count(), 1);
        QCOMPARE(connection.at(0).at(0).toBool(), false);
        QCOMPARE(caps.count(), 1);
        QVERIFY(allFalse(caps.at(0).at(0).value<RadioCaps>()));

        // Once disconnected, polls are silent and nothing is emitted again.
        ctrl.requestPoll();
        ctrl.disconnectRig();
        QCOMPARE(errors.count(), 1);
        QCOMPARE(connection.count(), 1);
        QCOMPARE(polls.count(), 2);
    }

    void availableRigsSortedAsText()
    {
        HamlibController ctrl;
        const QStringList rigs = ctrl.availableRigs();
        QVERIFY(rigs.size() > 100);
        QVERIFY(std::is_sorted(rigs.cbegin(), rigs.cend()));
        QVERIFY(rigs.contains(QStringLiteral("1 — Hamlib Dummy")));
        QVERIFY(rigs.contains(QStringLiteral("2 — Hamlib NET rigctl")));
        const auto indexOfModel = [&](int model) {
            const QString prefix = QStringLiteral("%1 — ").arg(model);
            const auto it = std::find_if(rigs.cbegin(), rigs.cend(),
                                         [&](const QString &entry) { return entry.startsWith(prefix); });
            return it == rigs.cend() ? -1 : static_cast<int>(it - rigs.cbegin());
        };
        const int one = indexOfModel(1);
        const int thousandOne = indexOfModel(1001);
        const int two = indexOfModel(2);
        QVERIFY(one >= 0 && thousandOne >= 0 && two >= 0);
        QVERIFY(one < thousandOne);
        QVERIFY(thousandOne < two);
    }

    void runsOnWorkerThread()
    {
        QThread thread;
        auto *ctrl = new HamlibController;
        QList<bool> connection;
        QList<QPair<double, QString>> polls;
        QList<double> tuned;
        QStringList errors;
        int capsCount = 0;
        int statesRead = 0;
        std::atomic<QThread *> emitter{nullptr};
        connect(ctrl, &HamlibController::connectionChanged, this, [&](bool on) { connection << on; });
        connect(ctrl, &HamlibController::capabilitiesChanged, this, [&](const RadioCaps &) { ++capsCount; });
        connect(ctrl, &HamlibController::radioStateRead, this, [&](const RadioState &) { ++statesRead; });
        connect(ctrl, &HamlibController::frequencyChanged, this, [&](double kHz) { tuned << kHz; });
        connect(ctrl, &HamlibController::error, this, [&](const QString &text) { errors << text; });
        connect(ctrl, &HamlibController::pollResult, this, [&](double kHz, const QString &mode) {
            polls.append({kHz, mode});
        });
        connect(
            ctrl, &HamlibController::pollResult, ctrl, [&] { emitter = QThread::currentThread(); },
            Qt::DirectConnection);
        ctrl->moveToThread(&thread);
        thread.start();

        QVERIFY(QMetaObject::invokeMethod(ctrl, "connectRig", Qt::QueuedConnection,
                                          Q_ARG(RigConfig, dummyConfig())));
        QTRY_COMPARE(connection, QList<bool>{true});
        QTRY_COMPARE(statesRead, 1);
        QCOMPARE(capsCount, 1);
        QVERIFY(ctrl->isConnected());

        QVERIFY(QMetaObject::invokeMethod(ctrl, "tune", Qt::QueuedConnection, Q_ARG(double, 7074.0),
                                          Q_ARG(QString, QStringLiteral("SSB"))));
        QVERIFY(QMetaObject::invokeMethod(ctrl, "setVolume", Qt::QueuedConnection, Q_ARG(int, 64)));
        QVERIFY(QMetaObject::invokeMethod(ctrl, "setMute", Qt::QueuedConnection, Q_ARG(bool, true)));
        QVERIFY(QMetaObject::invokeMethod(ctrl, "requestPoll", Qt::QueuedConnection));
        QTRY_COMPARE(polls.size(), 1);
        QCOMPARE(polls.at(0).first, 7074.0);
        QCOMPARE(polls.at(0).second, QStringLiteral("LSB"));
        QCOMPARE(tuned, QList<double>{7074.0});
        QCOMPARE(emitter.load(), &thread);

        RadioState state;
        double kHz = 0;
        QVERIFY(QMetaObject::invokeMethod(ctrl, "queryState", Qt::BlockingQueuedConnection,
                                          Q_RETURN_ARG(RadioState, state)));
        QVERIFY(QMetaObject::invokeMethod(ctrl, "getFrequency", Qt::BlockingQueuedConnection,
                                          Q_RETURN_ARG(double, kHz)));
        QCOMPARE(state.volume, 64);
        QCOMPARE(state.muted, true);
        QCOMPARE(kHz, 7074.0);

        QVERIFY(QMetaObject::invokeMethod(ctrl, "disconnectRig", Qt::QueuedConnection));
        QTRY_COMPARE(connection, (QList<bool>{true, false}));
        QTRY_COMPARE(capsCount, 2);
        QVERIFY(!ctrl->isConnected());
        QVERIFY(errors.isEmpty());

        thread.quit();
        QVERIFY(thread.wait(3000));
        delete ctrl;
    }
};

TALLIS_TEST_MAIN(TestHamlibController)
#include "tst_hamlibcontroller.moc"
