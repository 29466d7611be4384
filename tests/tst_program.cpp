#include "support/testmain.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <csignal>

// Runs the real program binary as a user would, in a private network namespace: the program resolves the
// public services at start and takes no host setting, so nothing of a test run may reach the network.
class TestProgram final : public QObject
{
    Q_OBJECT

private:
    static void startIsolated(QProcess &process, const QString &home, const QStringList &args)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), home);
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        process.setProcessEnvironment(env);
        process.start(QStringLiteral("unshare"),
                      QStringList{QStringLiteral("-rn"), QStringLiteral(TALLIS_BINARY)} + args);
    }

    // Starts the program and waits until it has written its settings file,
    // which happens at the end of the window's construction.
    static void startAndAwaitWindow(QProcess &process, const QString &home, const QStringList &args)
    {
        startIsolated(process, home, args);
        QVERIFY(process.waitForStarted(10000));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(home + QStringLiteral("/.tallis/settings.json")), 20000);
        QCOMPARE(process.state(), QProcess::Running);
        process.kill();
        process.waitForFinished(10000);
    }

private slots:
    void init()
    {
        static const bool isolated = QProcess::execute(QStringLiteral("unshare"),
                                                       {QStringLiteral("-rn"), QStringLiteral("true")}) == 0;
        if (!isolated)
            QSKIP("unshare -rn is not permitted here; run unisolated the program would reach public hosts");
    }

    void textFlagPrintsNoticeAndExits()
    {
        QTemporaryDir home;
        const QStringList variants[] = {{QStringLiteral("--text")},
                                        {QStringLiteral("--foo"), QStringLiteral("--text")}};
        for (const QStringList &args : variants) {
            QProcess process;
            startIsolated(process, home.path(), args);
            QVERIFY(process.waitForFinished(10000));
            QCOMPARE(process.exitStatus(), QProcess::NormalExit);
            QCOMPARE(process.exitCode(), 1);
            QCOMPARE(
                process.readAllStandardError(),
                QByteArray("Tallis: this build was compiled without ncurses; --text mode is unavailable.\n"));
            QVERIFY(process.readAllStandardOutput().isEmpty());
            // It stops before anything is built, so nothing is written.
            QVERIFY(!QFileInfo::exists(home.path() + QStringLiteral("/.tallis")));
        }
    }

    // Arguments like the text flag start the window all the same, which makes its data directory even
    // where a plain file stands in the way.
    void similarArgumentsStartTheWindow()
    {
        for (const QString &arg : {QStringLiteral("--TEXT"), QStringLiteral("--text=1")}) {
            QTemporaryDir home;
            QVERIFY(writeFile(home.path() + QStringLiteral("/.tallis"), "not a directory"));
            QProcess process;
            startAndAwaitWindow(process, home.path(), {arg});
            QVERIFY(QFileInfo(home.path() + QStringLiteral("/.tallis")).isDir());
        }
    }

    // A logout, a service manager's stop and Ctrl+C end the program as Quit does: the table's snapshot and
    // the settings are written and the exit is a clean one.
    void stopSignalEndsAsQuitDoes_data()
    {
        QTest::addColumn<int>("signalNumber");
        QTest::newRow("SIGTERM") << int(SIGTERM);
        QTest::newRow("SIGINT") << int(SIGINT);
        QTest::newRow("SIGHUP") << int(SIGHUP);
    }

    void stopSignalEndsAsQuitDoes()
    {
        QFETCH(int, signalNumber);
        QTemporaryDir home;
        const QString settings = home.path() + QStringLiteral("/.tallis/settings.json");
        const QString snapshot = home.path() + QStringLiteral("/.tallis/spots-snapshot.json");
        QProcess process;
        startIsolated(process, home.path(), {});
        QVERIFY(process.waitForStarted(10000));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(settings), 20000);
        QVERIFY(QFile::remove(settings)); // written again only by the close
        QVERIFY(!QFileInfo::exists(snapshot));

        QCOMPARE(::kill(pid_t(process.processId()), signalNumber), 0);
        QVERIFY(process.waitForFinished(20000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QVERIFY(QFileInfo::exists(snapshot));
        QVERIFY(QFileInfo::exists(settings));
    }
};

TALLIS_TEST_MAIN(TestProgram)
#include "tst_program.moc"
