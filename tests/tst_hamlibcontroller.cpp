#include "radio/hamlibcontroller.h"
#include "support/rigctldprocess.h"
#include "support/testmain.h"

#include <hamlib/rig.h>

#include <QTcpServer>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

QString describe(const RadioState &s)
{
    return QString::asprintf("state %d %d %d %d %d %d", s.volume, s.rfPower, s.filter, s.keySpeed, s.breakIn,
                             int(s.muted));
}

QString describe(const RadioCaps &c) // the nine flags as bits, in record order
{
    QString bits = QStringLiteral("caps ");
    for (bool b : {c.hasVolume, c.hasRfPower, c.hasMute, c.hasFilter, c.hasBreakInSemi, c.hasBreakInFull,
                   c.hasBreakIn, c.hasKeySpeed, c.hasTune})
        bits += QLatin1Char(b ? '1' : '0');
    return bits;
}

const QString k_allCaps = QStringLiteral("caps 111111111");
const QString k_noCaps = QStringLiteral("caps 000000000");
const QString k_freshDummy = QStringLiteral("state 0 0 1 5 0 0"); // AF and power 0, no keyer speed: 5
const QString k_notConnected = QStringLiteral("error: Radio not connected");
const QString k_lost =
    QStringLiteral("error: Radio connection lost — auto-disconnecting after repeated errors");

// Hamlib's trace of the dummy rig's function changes, in call order.
QStringList g_funcTrace;

int traceFuncCalls(enum rig_debug_level_e, rig_ptr_t, const char *format, va_list args)
{
    char line[512];
    std::vsnprintf(line, sizeof line, format, args);
    if (const char *call = std::strstr(line, "dummy_set_func called: "))
        g_funcTrace << QString::fromLatin1(call + std::strlen("dummy_set_func called: ")).trimmed();
    return 0;
}

} // namespace

class TestHamlibController : public QObject
{
    Q_OBJECT

    QStringList m_log;       // outlives every controller, which may still report from its destructor
    RigctldProcess m_daemon; // one for the whole run: each test sets what it reads

    // What the rig behind rigctld answers to one command, its lines joined by spaces.
    QString ask(const QString &command, int lines = 1)
    {
        return m_daemon.ask(command.toLatin1(), lines).join(QLatin1Char(' '));
    }

    // Every signal as one line, in arrival order.
    void record(HamlibController *ctrl)
    {
        connect(ctrl, &HamlibController::connectionChanged, this,
                [this](bool on) { m_log << QLatin1String(on ? "on" : "off"); });
        connect(ctrl, &HamlibController::capabilitiesChanged, this,
                [this](const RadioCaps &c) { m_log << describe(c); });
        connect(ctrl, &HamlibController::radioStateRead, this,
                [this](const RadioState &s) { m_log << describe(s); });
        connect(ctrl, &HamlibController::frequencyChanged, this,
                [this](double kHz) { m_log << QStringLiteral("freq %1").arg(kHz); });
        connect(ctrl, &HamlibController::pollResult, this, [this](double kHz, const QString &mode) {
            m_log << QStringLiteral("poll %1 %2").arg(kHz).arg(mode);
        });
        connect(ctrl, &HamlibController::error, this,
                [this](const QString &text) { m_log << QStringLiteral("error: ") + text; });
    }

    // A recorded controller on a freshly opened dummy rig (model 1, the default).
    std::unique_ptr<HamlibController> open()
    {
        auto ctrl = std::make_unique<HamlibController>();
        record(ctrl.get());
        if (!ctrl->connectRig(RigConfig()))
            qFatal("the dummy rig did not open");
        return ctrl;
    }

    // A recorded controller on the dummy rig behind rigctld, which the test reaches as well to put
    // the rig into states the controller never sets and to read back what it did.
    std::unique_ptr<HamlibController> openNet(int pttType = 0)
    {
        RigConfig config = m_daemon.rigConfig();
        config.pttType = pttType;
        auto ctrl = std::make_unique<HamlibController>();
        record(ctrl.get());
        if (!ctrl->connectRig(config))
            qFatal("the rig behind rigctld did not open: %s", qPrintable(m_log.join(QLatin1Char('|'))));
        return ctrl;
    }

private slots:
    void initTestCase() { QVERIFY2(m_daemon.start(), qPrintable(m_daemon.errorString())); }
    void init() { m_log.clear(); }

    void connectAndDisconnect()
    {
        auto ctrl = open();
        RigConfig catPtt;
        catPtt.pttType = 1;
        QVERIFY(ctrl->connectRig(catPtt)); // passes through disconnected first
        ctrl->disconnectRig();
        ctrl->disconnectRig();
        QVERIFY(!ctrl->isConnected());
        QCOMPARE(describe(ctrl->queryCaps()), k_noCaps);

        // Disconnected: tuning and keying fail, panel controls and polls stay silent, reads give defaults.
        QVERIFY(!ctrl->setFrequency(14074.0) && !ctrl->tune(7074.0, QStringLiteral("SSB")) &&
                !ctrl->setPtt(true));
        ctrl->requestPoll();
        ctrl->setMute(true);
        ctrl->setFilter(0);
        ctrl->setBreakIn(2);
        ctrl->startTune();
        QCOMPARE(ctrl->getFrequency(), 0.0);
        QCOMPARE(ctrl->getMode(), QString());
        QCOMPARE(describe(ctrl->queryState()), QStringLiteral("state 75 100 1 20 0 0"));
        RigConfig unknown;
        unknown.rigModel = 99999;
        QVERIFY(!ctrl->connectRig(unknown));

        QVERIFY(ctrl->connectRig(RigConfig()));
        ctrl.reset(); // destroying a connected controller says goodbye exactly once too
        const QStringList on{QStringLiteral("on"), k_allCaps, k_freshDummy};
        const QStringList off{QStringLiteral("off"), k_noCaps};
        const QStringList failures{k_notConnected, k_notConnected, k_notConnected,
                                   QStringLiteral("error: Failed to initialise rig model 99999")};
        QCOMPARE(m_log, on + off + on + off + failures + on + off);

        // Keying by CAT reaches the rig.
        auto keyed = openNet(1);
        for (const bool key : {true, false}) {
            QVERIFY(keyed->setPtt(key));
            QCOMPARE(ask(QStringLiteral("t")), QString::number(key));
        }

        // Nothing listens where the network rig should be: a failed open says so once, on one line. Loss of a
        // linked rigctld after failed polls is the window's radio test.
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        RigConfig netRig;
        netRig.rigModel = 2; // Hamlib's NET rigctl
        netRig.port = QStringLiteral("127.0.0.1:%1").arg(probe.serverPort());
        probe.close();
        m_log.clear();
        HamlibController net;
        record(&net);
        QVERIFY(!net.connectRig(netRig));
        QCOMPARE(m_log.size(), 1);
        QVERIFY2(m_log[0].startsWith(QStringLiteral("error: Failed to open rig: ")) && m_log[0].size() > 28 &&
                     !m_log[0].contains(QLatin1Char('\n')),
                 qPrintable(m_log[0]));

        // Sorted as text: model 1001 comes between 1 and 2.
        const QStringList rigs = net.availableRigs();
        QVERIFY(rigs.size() > 100 && std::is_sorted(rigs.cbegin(), rigs.cend()));
    }

    void tuneMapsModes()
    {
        auto ctrl = openNet();
        // Each row starts in AM, so "AM" means the mode was left alone.
        const std::tuple<double, const char *, const char *> rows[]{
            {9999.999, "ssb", "LSB"}, {10000.0, "SSB", "USB"}, {14200.0, "LSB", "LSB"},
            {7030.0, "cwr", "CW-R"},  {98000.0, "WFM", "FM"},  {14074.0, "FT8", "AM"},
            {14080.0, "USB-D", "AM"}};
        for (const auto &[kHz, mode, expected] : rows) {
            QCOMPARE(ask(QStringLiteral("M AM 0")), QStringLiteral("RPRT 0"));
            m_log.clear();
            QVERIFY(ctrl->tune(kHz, QLatin1String(mode)));
            QCOMPARE(m_log, QStringList{QStringLiteral("freq %1").arg(kHz)});
            QCOMPARE(ctrl->getFrequency(), kHz);
            QVERIFY2(ctrl->getMode() == QLatin1String(expected), mode);
        }
        // A rig in broadcast FM reads as WFM although tuning never asks for it; unknown modes read "?".
        for (const auto &[rigMode, name] : {std::pair("WFM", "WFM"), std::pair("DSB", "?")}) {
            QCOMPARE(ask(QStringLiteral("M %1 0").arg(QLatin1String(rigMode))), QStringLiteral("RPRT 0"));
            QCOMPARE(ctrl->getMode(), QLatin1String(name));
        }
    }

    void panelSettingsReachTheRig()
    {
        auto ctrl = openNet();
        const auto levels = [this]() -> QString {
            return ask(QStringLiteral("l AF")) + QLatin1Char(' ') + ask(QStringLiteral("l RFPOWER")) +
                   QLatin1Char(' ') + ask(QStringLiteral("l KEYSPD"));
        };
        ctrl->setVolume(-5);
        ctrl->setRfPower(101);
        ctrl->setKeySpeed(2);
        QCOMPARE(levels(), QStringLiteral("0.000000 1.000000 5"));
        ctrl->setVolume(150);
        ctrl->setRfPower(-1);
        ctrl->setKeySpeed(99);
        QCOMPARE(levels(), QStringLiteral("1.000000 0.000000 60"));
        // Readings out of range are clamped on the way in as well.
        QCOMPARE(ask(QStringLiteral("L KEYSPD 80")), QStringLiteral("RPRT 0"));
        QCOMPARE(ctrl->queryState().keySpeed, 60);

        // Break-in: the function switched on always goes first, so the rig never drops to no break-in.
        // Hamlib's trace shows the order on a rig in this process.
        auto local = open();
        g_funcTrace.clear();
        rig_set_debug_callback(traceFuncCalls, nullptr);
        rig_set_debug(RIG_DEBUG_VERBOSE);
        QList<int> read;
        for (int breakIn : {1, 2, 7}) {
            local->setBreakIn(breakIn);
            read << local->queryState().breakIn;
        }
        rig_set_debug(RIG_DEBUG_NONE);
        rig_set_debug_callback(nullptr, nullptr);
        QCOMPARE(g_funcTrace.join(QLatin1Char(',')),
                 QStringLiteral("SBKIN 1,FBKIN 0,FBKIN 1,SBKIN 0,SBKIN 0,FBKIN 0"));
        QCOMPARE(read, (QList<int>{1, 2, 0}));

        // Filters set the passband of the current mode, and the width read back names the filter again.
        ctrl->setVolume(42);
        ctrl->setRfPower(55);
        ctrl->setKeySpeed(28);
        QVERIFY(ctrl->tune(14074.0, QStringLiteral("USB")));
        // The dummy's filter table, from a handle of the test's own.
        const std::unique_ptr<RIG, int (*)(RIG *)> dummy(rig_init(RIG_MODEL_DUMMY), rig_cleanup);
        const pbwidth_t narrow = rig_passband_narrow(dummy.get(), RIG_MODE_USB);
        const pbwidth_t normal = rig_passband_normal(dummy.get(), RIG_MODE_USB);
        const pbwidth_t wide = rig_passband_wide(dummy.get(), RIG_MODE_USB);
        QVERIFY(narrow > 0 && narrow < normal && normal < wide);
        for (const auto &[filter, expected] :
             {std::pair(0, narrow), {2, wide}, {1, normal}, {0, narrow}, {9, normal}}) {
            ctrl->setFilter(filter);
            QCOMPARE(ask(QStringLiteral("m"), 2), QStringLiteral("USB %1").arg(expected));
            QCOMPARE(describe(ctrl->queryState()),
                     QStringLiteral("state 42 55 %1 28 0 0").arg(filter == 9 ? 1 : filter));
        }
        // FM has no wide filter on the dummy: asking for it leaves the narrow width alone.
        QVERIFY(ctrl->tune(145500.0, QStringLiteral("FM")));
        QCOMPARE(rig_passband_wide(dummy.get(), RIG_MODE_FM), pbwidth_t(0));
        ctrl->setFilter(0);
        ctrl->setFilter(2);
        QCOMPARE(ctrl->queryState().filter, 0);
    }

    void muteByFunctionOrAfLevel()
    {
        auto ctrl = openNet();
        const auto af = [this] { return ask(QStringLiteral("l AF")); };
        ctrl->setVolume(42);
        ctrl->setMute(true); // the rig has a mute function: the AF level stays
        QCOMPARE(af(), QStringLiteral("0.420000"));
        QVERIFY(ctrl->queryState().muted);
        ctrl->setMute(false);
        QVERIFY(!ctrl->queryState().muted);

        // Without the mute function, muting turns AF down and unmuting restores it.
        const quint64 all = ~quint64(0);
        ctrl->setCapabilityMask(all, all & ~RIG_FUNC_MUTE);
        QVERIFY(ctrl->queryCaps().hasMute);
        ctrl->setMute(true);
        QCOMPARE(af(), QStringLiteral("0.000000"));
        QVERIFY(!ctrl->queryState().muted);
        ctrl->setMute(false);
        QCOMPARE(af(), QStringLiteral("0.420000"));
        ctrl->setMute(true);
        ctrl->setMute(true); // a second mute remembers the silence
        ctrl->setMute(false);
        QCOMPARE(af(), QStringLiteral("0.000000"));

        // Neither mute nor AF: nothing is touched.
        ctrl->setVolume(80);
        ctrl->setCapabilityMask(all & ~RIG_LEVEL_AF, all & ~RIG_FUNC_MUTE);
        QVERIFY(!ctrl->queryCaps().hasMute);
        ctrl->setMute(true);
        QCOMPARE(af(), QStringLiteral("0.800000"));
    }

    // On a rig in this process: over rigctld, Hamlib answers a 0 Hz reading with the last frequency it read.
    void pollCountsFailures()
    {
        auto ctrl = open();
        QVERIFY(ctrl->tune(14062.0, QStringLiteral("CW")));
        m_log.clear();
        const auto pollAt = [&](double kHz, int times) {
            QVERIFY(ctrl->setFrequency(kHz));
            for (int i = 0; i < times; ++i)
                ctrl->requestPoll();
        };
        pollAt(14062, 1);
        pollAt(0, 4);    // a rig reporting 0 Hz counts as a failed poll
        pollAt(7030, 1); // a success restarts the count
        pollAt(0, 4);
        QVERIFY(ctrl->isConnected());
        ctrl->requestPoll();
        QVERIFY(!ctrl->isConnected());
        ctrl->requestPoll(); // once disconnected, nothing is emitted again
        ctrl->disconnectRig();
        QVERIFY(ctrl->setPtt(true)); // without PTT control, keying is a harmless no-op even now
        QCOMPARE(m_log.filter(QStringLiteral("freq ")).size(), 4);
        QCOMPARE(m_log.filter(QRegularExpression(QStringLiteral("^(?!freq )"))),
                 (QStringList{QStringLiteral("poll 14062 CW"), QStringLiteral("poll 7030 CW"), k_lost,
                              QStringLiteral("off"), k_noCaps}));
    }
};

TALLIS_TEST_MAIN(TestHamlibController)
#include "tst_hamlibcontroller.moc"
