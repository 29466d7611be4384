#include "sources/dxclusterfetcher.h"
#include "support/clustertestserver.h"
#include "support/testmain.h"

#include <QSignalSpy>
#include <QTest>

namespace {

const QString k_dash = QStringLiteral(" \u2014 ");

QDateTime utc(int year, int month, int day, int hour, int minute)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute), Qt::UTC);
}

StationSpot firstSpot(const QSignalSpy &spy, int index)
{
    const auto spots = spy.at(index).at(0).value<QList<StationSpot>>();
    return spots.isEmpty() ? StationSpot() : spots.first();
}

} // namespace

class TestDxClusterFetcher : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void parseDxLine_data();
    void parseDxLine();
    void extractMode_data();
    void extractMode();
    void spotTimeAroundMidnight();
    void sessionFromLoginToSpots();
    void guestLoginWithoutCallsign();
    void loginRejections_data();
    void loginRejections();
    void reconnectBackoff();
    void dropWhileLoggingInSchedulesOnce();
    void stopAndAddressChanges();
    void hostileInput();
    void floodOfSpots();

private:
    // Connects f to server and waits until the node has accepted the login.
    void logIn(DxClusterFetcher &f, ClusterTestServer &server);
};

void TestDxClusterFetcher::initTestCase()
{
    registerStationSpotMetaTypes();
}

void TestDxClusterFetcher::logIn(DxClusterFetcher &f, ClusterTestServer &server)
{
    QSignalSpy up(&f, &DxClusterFetcher::connectionChanged);
    server.setLoginReply("Hello, welcome to the test node\r\n");
    f.setHost(QStringLiteral("127.0.0.1"), server.port());
    f.connectToCluster();
    QTRY_VERIFY(f.isConnected());
    QCOMPARE(up.size(), 1);
    QCOMPARE(up.at(0).at(0).toBool(), true);
}

void TestDxClusterFetcher::parseDxLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("call");
    QTest::addColumn<double>("frequency");
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("spotter");
    QTest::addColumn<QString>("comment");
    QTest::addColumn<QString>("entity");
    QTest::addColumn<QTime>("time");

    QTest::newRow("typical") << "DX de K1ABC:     14025.0  JA1XYZ       CW 599 up 2            1234Z"
                             << "JA1XYZ" << 14025.0 << "CW"
                             << "K1ABC"
                             << "CW 599 up 2"
                             << "Japan" << QTime(12, 34);
    QTest::newRow("lower case") << "dx de k1abc: 7074 ja1xyz ft8 -10 dB 0102"
                                << "JA1XYZ" << 7074.0 << "FT8"
                                << "K1ABC"
                                << "ft8 -10 dB"
                                << "Japan" << QTime(1, 2);
    QTest::newRow("no Z, no comment") << "DX de W1AW: 3573.5 EA8/DL1ABC 0000"
                                      << "EA8/DL1ABC" << 3573.5 << ""
                                      << "W1AW"
                                      << ""
                                      << "Canary Islands" << QTime(0, 0);
    QTest::newRow("unknown entity") << "DX de W1AW: 50313.0 AA1ZZ FT8 2105Z   "
                                    << "AA1ZZ" << 50313.0 << "FT8"
                                    << "W1AW"
                                    << "FT8"
                                    << "" << QTime(21, 5);
    QTest::newRow("portable spotter") << "DX de DL/K1ABC:  10118.0  VK9CA  cq  1200Z"
                                      << "VK9CA" << 10118.0 << ""
                                      << "DL/K1ABC"
                                      << "cq"
                                      << "Cocos (Keeling) Islands" << QTime(12, 0);
    QTest::newRow("bad clock") << "DX de K1ABC: 14025.0 JA1XYZ CW 2575Z"
                               << "JA1XYZ" << 14025.0 << "CW"
                               << "K1ABC"
                               << "CW"
                               << "Japan" << QTime();

    // None of these is a spot: the result is a default record.
    QTest::newRow("no time") << "DX de K1ABC: 14025.0 JA1XYZ CW 599"
                             << "" << 0.0 << ""
                             << ""
                             << ""
                             << "" << QTime();
    QTest::newRow("zero frequency") << "DX de K1ABC: 0.0 JA1XYZ CW 1234Z"
                                    << "" << 0.0 << ""
                                    << ""
                                    << ""
                                    << "" << QTime();
    QTest::newRow("skimmer spotter") << "DX de K1ABC-#: 14025.0 JA1XYZ CW 1234Z"
                                     << "" << 0.0 << ""
                                     << ""
                                     << ""
                                     << "" << QTime();
    QTest::newRow("not a spot") << "WWV de W0MU <18Z> : SFI=150, A=5, K=1"
                                << "" << 0.0 << ""
                                << ""
                                << ""
                                << "" << QTime();
    QTest::newRow("empty") << ""
                           << "" << 0.0 << ""
                           << ""
                           << ""
                           << "" << QTime();
}

void TestDxClusterFetcher::parseDxLine()
{
    QFETCH(QString, line);
    QFETCH(QString, call);
    QFETCH(double, frequency);
    QFETCH(QString, mode);
    QFETCH(QString, spotter);
    QFETCH(QString, comment);
    QFETCH(QString, entity);
    QFETCH(QTime, time);

    const QDateTime now = utc(2025, 3, 10, 23, 0);
    const StationSpot spot = DxClusterFetcher::parseDxLine(line, now);
    QCOMPARE(spot.callsign, call);
    QCOMPARE(spot.frequencyKhz, frequency);
    QCOMPARE(spot.mode, mode);
    QCOMPARE(spot.spotter, spotter);
    QCOMPARE(spot.comments, comment);
    QCOMPARE(spot.referenceName, entity);
    QVERIFY(spot.reference.isEmpty());
    QVERIFY(!spot.hasLocation);
    if (call.isEmpty())
        return;
    QCOMPARE(spot.source, StationSpot::DX);
    QCOMPARE(spot.spotTime.isValid(), time.isValid());
    if (time.isValid()) {
        QCOMPARE(spot.spotTime.timeSpec(), Qt::UTC);
        QCOMPARE(spot.spotTime, QDateTime(now.date(), time, Qt::UTC));
    }
}

void TestDxClusterFetcher::extractMode_data()
{
    QTest::addColumn<QString>("comment");
    QTest::addColumn<QString>("mode");

    QTest::newRow("FT8 before CW") << "FT8 CW"
                                   << "FT8";
    QTest::newRow("CW after FT8 regardless of position") << "cw then ft8"
                                                         << "FT8";
    QTest::newRow("PSK31 before PSK") << "psk31 psk"
                                      << "PSK31";
    QTest::newRow("PSK alone") << "PSK63"
                               << "";
    QTest::newRow("RTTY before SSB") << "SSB RTTY contest"
                                     << "RTTY";
    QTest::newRow("USB before SSB") << "ssb usb"
                                    << "USB";
    QTest::newRow("data") << "DATA mode"
                          << "DATA";
    QTest::newRow("AM before FM") << "fm am"
                                  << "AM";
    QTest::newRow("whole words only") << "CWOPS AMATEUR FMX"
                                      << "";
    QTest::newRow("punctuation bounds a word") << "tnx QSO,cw!"
                                               << "CW";
    QTest::newRow("nothing") << "599 up 2"
                             << "";
    QTest::newRow("empty") << ""
                           << "";
}

void TestDxClusterFetcher::extractMode()
{
    QFETCH(QString, comment);
    QFETCH(QString, mode);
    QCOMPARE(DxClusterFetcher::extractMode(comment), mode);
}

void TestDxClusterFetcher::spotTimeAroundMidnight()
{
    // Stamped just before midnight, received just after: yesterday.
    QCOMPARE(DxClusterFetcher::spotTimeUtc(2359, utc(2025, 3, 1, 0, 1)), utc(2025, 2, 28, 23, 59));
    // Stamped a minute ahead of our clock: a slow clock here, still today.
    QCOMPARE(DxClusterFetcher::spotTimeUtc(1235, utc(2025, 3, 1, 12, 34)), utc(2025, 3, 1, 12, 35));
    // Twelve hours ahead is still today; a minute more is yesterday.
    QCOMPARE(DxClusterFetcher::spotTimeUtc(2330, utc(2025, 3, 1, 11, 30)), utc(2025, 3, 1, 23, 30));
    QCOMPARE(DxClusterFetcher::spotTimeUtc(2331, utc(2025, 3, 1, 11, 30)), utc(2025, 2, 28, 23, 31));
    // Just after midnight, received just before: far in the past, so today.
    QCOMPARE(DxClusterFetcher::spotTimeUtc(1, utc(2025, 3, 1, 23, 59)), utc(2025, 3, 1, 0, 1));
    // A receive time given in another zone is taken as the instant it is.
    const QDateTime tokyoMorning(QDate(2025, 3, 2), QTime(9, 1), Qt::OffsetFromUTC, 9 * 3600);
    QCOMPARE(DxClusterFetcher::spotTimeUtc(2359, tokyoMorning), utc(2025, 3, 1, 23, 59));

    for (int bad : {2575, 2400, 60, 1299, -1, 99999})
        QVERIFY2(!DxClusterFetcher::spotTimeUtc(bad, utc(2025, 3, 1, 12, 0)).isValid(),
                 QByteArray::number(bad));
}

void TestDxClusterFetcher::sessionFromLoginToSpots()
{
    ClusterTestServer server;
    QVERIFY(server.start());
    DxClusterFetcher f(QStringLiteral("127.0.0.1"), server.port(), QStringLiteral(" k1abc "));
    QCOMPARE(f.callsign(), QStringLiteral("K1ABC"));
    QSignalSpy started(&f, &DxClusterFetcher::fetchStarted);
    QSignalSpy connection(&f, &DxClusterFetcher::connectionChanged);
    QSignalSpy spots(&f, &DxClusterFetcher::spotsReady);
    QSignalSpy errors(&f, &DxClusterFetcher::fetchError);

    f.connectToCluster();
    QCOMPARE(f.state(), DxClusterFetcher::Connecting);
    QCOMPARE(started.size(), 1);
    f.connectToCluster(); // already under way: nothing more
    QCOMPARE(started.size(), 1);

    // The call goes out without waiting for the prompt, which has no line feed.
    QTRY_COMPARE(server.receivedLines(), QList<QByteArray>{"K1ABC"});
    QCOMPARE(f.state(), DxClusterFetcher::LoggingIn);
    QVERIFY(!f.isConnected());

    // A prompt line is answered again and does not count as acceptance.
    server.sendLine("Please enter your callsign: ");
    QTRY_COMPARE(server.receivedLines().size(), 2);
    QCOMPARE(server.receivedLines().at(1), QByteArray("K1ABC"));
    QCOMPARE(f.state(), DxClusterFetcher::LoggingIn);

    server.sendLine("\x1b[1mHello K1ABC\x1b[0m, this is TEST-1 in Testville");
    QTRY_VERIFY(f.isConnected());
    QTRY_COMPARE(server.receivedCount("SET/DX"), 1);
    QCOMPARE(connection.size(), 1);
    QCOMPARE(connection.at(0).at(0).toBool(), true);

    // Colour codes, a line split across reads, two spots in one read.
    server.sendLine("\x1b[1;32mDX de W1AW:     14062.5  KH7KA        cw    1234Z\x1b[0m\x1b[K");
    server.send("DX de DL1XYZ:     7025.0  EA8/DL1ABC   ");
    QTRY_COMPARE(f.bufferedChars(), qsizetype(39)); // the half line waits for its end
    QCOMPARE(spots.size(), 1);
    server.send("FT8 -12 dB  1235Z\r\nDX de G4ABC: 3573.0 VE3ABC  ssb 1236Z\r\n"
                "DX de G4ABC: 0.0 VE3ABC  ssb 1236Z\r\nlogin: \r\n");
    QTRY_COMPARE(spots.size(), 3);
    QTRY_COMPARE(server.receivedCount("K1ABC"), 3); // a prompt is answered even when logged in
    QCOMPARE(server.receivedCount("SET/DX"), 1);

    StationSpot s = firstSpot(spots, 0);
    QCOMPARE(spots.at(0).at(0).value<QList<StationSpot>>().size(), 1);
    QCOMPARE(s.callsign, QStringLiteral("KH7KA"));
    QCOMPARE(s.referenceName, QStringLiteral("Kure Atoll"));
    QCOMPARE(s.frequencyKhz, 14062.5);
    QCOMPARE(s.mode, QStringLiteral("CW"));
    QCOMPARE(s.spotter, QStringLiteral("W1AW"));
    QCOMPARE(s.spotTime.time(), QTime(12, 34));
    s = firstSpot(spots, 1);
    QCOMPARE(s.callsign, QStringLiteral("EA8/DL1ABC"));
    QCOMPARE(s.referenceName, QStringLiteral("Canary Islands"));
    QCOMPARE(s.mode, QStringLiteral("FT8"));
    QCOMPARE(s.comments, QStringLiteral("FT8 -12 dB"));
    s = firstSpot(spots, 2);
    QCOMPARE(s.callsign, QStringLiteral("VE3ABC"));
    QCOMPARE(s.referenceName, QStringLiteral("Canada"));
    QCOMPARE(s.mode, QStringLiteral("SSB"));
    QVERIFY(errors.isEmpty());

    // A deliberate disconnection is silent and final.
    f.disconnectFromCluster();
    QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
    QVERIFY(!f.isReconnectPending());
    QTRY_COMPARE(server.clientCount(), 0);
    QCOMPARE(connection.size(), 1);
}

void TestDxClusterFetcher::guestLoginWithoutCallsign()
{
    ClusterTestServer server;
    QVERIFY(server.start());
    DxClusterFetcher f;
    QCOMPARE(f.host(), QString::fromLatin1(DxClusterFetcher::k_defaultHost));
    QCOMPARE(f.port(), quint16(23));
    f.setHost(QStringLiteral("127.0.0.1"), server.port());
    f.connectToCluster();
    QTRY_COMPARE(server.receivedLines(), QList<QByteArray>{"GUEST"});
}

void TestDxClusterFetcher::loginRejections_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<bool>("rejected");

    QTest::newRow("access denied") << QByteArray("Sorry, access denied") << true;
    QTest::newRow("invalid call") << QByteArray("K1ABC is an INVALID CALLSIGN, go away please now") << true;
    QTest::newRow("short bye") << QByteArray("73 bye") << true;
    QTest::newRow("long greeting with bye")
        << QByteArray("Welcome to the node; type BYE to leave, and have a good day.") << false;
    QTest::newRow("plain greeting") << QByteArray("Hello K1ABC") << false;
}

void TestDxClusterFetcher::loginRejections()
{
    QFETCH(QByteArray, reply);
    QFETCH(bool, rejected);

    ClusterTestServer server;
    QVERIFY(server.start());
    server.setLoginReply(reply + "\r\nDX de W1AW: 14025.0 JA1XYZ CW 1234Z\r\n");
    DxClusterFetcher f(QStringLiteral("127.0.0.1"), server.port(), QStringLiteral("K1ABC"));
    QSignalSpy errors(&f, &DxClusterFetcher::fetchError);
    QSignalSpy connection(&f, &DxClusterFetcher::connectionChanged);
    QSignalSpy spots(&f, &DxClusterFetcher::spotsReady);
    f.connectToCluster();

    if (!rejected) {
        QTRY_COMPARE(spots.size(), 1);
        QVERIFY(f.isConnected());
        QVERIFY(errors.isEmpty());
        return;
    }
    QTRY_COMPARE(errors.size(), 1);
    QCOMPARE(errors.at(0).at(0).toString(), QStringLiteral("127.0.0.1:%1").arg(server.port()) + k_dash +
                                                QStringLiteral("login rejected: ") +
                                                QString::fromLatin1(reply));
    QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
    QVERIFY(!f.isReconnectPending());
    QTRY_COMPARE(server.clientCount(), 0);
    QTest::qWait(50);
    QVERIFY(spots.isEmpty()); // the spot after the refusal is not read
    QVERIFY(connection.isEmpty());
    QVERIFY(!server.receivedLines().contains("SET/DX"));
    QMetaObject::invokeMethod(&f, "onReconnectTimer");
    QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
    QCOMPARE(server.connectionCount(), 1);
}

void TestDxClusterFetcher::reconnectBackoff()
{
    // A port nobody listens on: every attempt is refused.
    ClusterTestServer server;
    QVERIFY(server.start());
    const quint16 port = server.port();
    server.stopListening();

    DxClusterFetcher f(QStringLiteral("127.0.0.1"), port, QStringLiteral("K1ABC"));
    QSignalSpy errors(&f, &DxClusterFetcher::fetchError);
    QSignalSpy connection(&f, &DxClusterFetcher::connectionChanged);
    QCOMPARE(f.nextReconnectDelayMs(), 5000);
    f.connectToCluster();

    const QList<int> waits = {5000, 10000, 20000, 40000, 80000, 160000, 300000, 300000};
    for (int i = 0; i < waits.size(); ++i) {
        QTRY_COMPARE(errors.size(), i + 1);
        QVERIFY(errors.last().at(0).toString().startsWith(QStringLiteral("127.0.0.1:%1").arg(port) + k_dash));
        QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
        QVERIFY(f.isReconnectPending());
        QCOMPARE(f.reconnectIntervalMs(), waits.at(i));
        QMetaObject::invokeMethod(&f, "onReconnectTimer"); // instead of waiting minutes
    }
    QVERIFY(connection.isEmpty());

    // The node comes back: the login resets the back-off.
    QVERIFY(server.start(port));
    server.setLoginReply("Hello K1ABC\r\n");
    QTRY_VERIFY(f.isConnected());
    QCOMPARE(f.nextReconnectDelayMs(), 5000);
    QVERIFY(!f.isReconnectPending());

    // Dropped by the node after login: reported, and retried after 5 s.
    server.dropClients();
    QTRY_COMPARE(connection.size(), 2);
    QCOMPARE(connection.at(1).at(0).toBool(), false);
    QVERIFY(f.isReconnectPending());
    QCOMPARE(f.reconnectIntervalMs(), 5000);
    QCOMPARE(f.nextReconnectDelayMs(), 10000);

    QMetaObject::invokeMethod(&f, "onReconnectTimer");
    QTRY_VERIFY(f.isConnected());
    QCOMPARE(server.connectionCount(), 2);
    QCOMPARE(f.nextReconnectDelayMs(), 5000);

    // A manual connection supersedes a pending retry.
    server.dropClients();
    QTRY_VERIFY(f.isReconnectPending());
    f.connectToCluster();
    QVERIFY(!f.isReconnectPending());
    QTRY_VERIFY(f.isConnected());
}

void TestDxClusterFetcher::dropWhileLoggingInSchedulesOnce()
{
    // The node hangs up as soon as it has the call: an error and a
    // disconnection arrive for the one failure.
    ClusterTestServer server;
    QVERIFY(server.start());
    connect(&server, &ClusterTestServer::lineReceived, &server, [&server] { server.dropClients(); });
    DxClusterFetcher f(QStringLiteral("127.0.0.1"), server.port(), QStringLiteral("K1ABC"));
    QSignalSpy connection(&f, &DxClusterFetcher::connectionChanged);
    f.connectToCluster();
    QTRY_VERIFY(f.isReconnectPending());
    QTRY_COMPARE(connection.size(), 1);
    QCOMPARE(connection.at(0).at(0).toBool(), false);
    QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
    QCOMPARE(f.reconnectIntervalMs(), 5000);
    QCOMPARE(f.nextReconnectDelayMs(), 10000);
}

void TestDxClusterFetcher::stopAndAddressChanges()
{
    {
        DxClusterFetcher f(QString(), 23, QString());
        QSignalSpy errors(&f, &DxClusterFetcher::fetchError);
        QSignalSpy started(&f, &DxClusterFetcher::fetchStarted);
        f.connectToCluster();
        QCOMPARE(errors.size(), 1);
        QCOMPARE(errors.at(0).at(0).toString(), QStringLiteral("DX cluster: no host configured"));
        QVERIFY(started.isEmpty());
        QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
    }

    ClusterTestServer server;
    QVERIFY(server.start());
    ClusterTestServer other;
    QVERIFY(other.start());

    DxClusterFetcher f(QStringLiteral("127.0.0.1"), server.port(), QStringLiteral("K1ABC"));
    logIn(f, server);
    QSignalSpy connection(&f, &DxClusterFetcher::connectionChanged);

    f.setHost(QStringLiteral("127.0.0.1"), server.port()); // same address: nothing happens
    QVERIFY(f.isConnected());

    // A new address while logged in ends the session for good; the owner reconnects.
    f.setHost(QStringLiteral("127.0.0.1"), other.port());
    QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
    QVERIFY(!f.isReconnectPending());
    QTRY_COMPARE(server.clientCount(), 0);
    QMetaObject::invokeMethod(&f, "onReconnectTimer");
    QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
    f.connectToCluster();
    QTRY_COMPARE(other.connectionCount(), 1);

    // While connecting, a new address waits for the next attempt.
    f.disconnectFromCluster();
    f.connectToCluster();
    QCOMPARE(f.state(), DxClusterFetcher::Connecting);
    f.setHost(QStringLiteral("127.0.0.1"), server.port());
    QCOMPARE(f.state(), DxClusterFetcher::Connecting);
    QTRY_COMPARE(other.connectionCount(), 2);

    // Disconnecting mid-connection leaves nothing pending.
    f.disconnectFromCluster();
    QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
    QVERIFY(!f.isReconnectPending());
    QTest::qWait(20);
    QVERIFY(!f.isReconnectPending());
    QCOMPARE(server.connectionCount(), 1);
}

void TestDxClusterFetcher::hostileInput()
{
    ClusterTestServer server;
    QVERIFY(server.start());
    DxClusterFetcher f(QStringLiteral("127.0.0.1"), server.port(), QStringLiteral("K1ABC"));
    logIn(f, server);
    QSignalSpy spots(&f, &DxClusterFetcher::spotsReady);

    // Binary noise, NULs, telnet negotiation, broken UTF-8, lone carriage returns.
    QByteArray noise;
    for (int i = 0; i < 64 * 1024; ++i)
        noise.append(char((i * 7919 + 13) % 256));
    server.send(noise);
    server.send(QByteArrayLiteral("\xff\xfb\x01\xff\xfd\x03\xc3\x28\xe2\x82\r\r\r\n\0\0\0\n"));
    server.send("DX de \x80\x81: 14025.0 \xfe\xff CW 1234Z\r\n");
    QVERIFY(f.isConnected());

    // A node that never ends its line: memory stays bounded, and the
    // overlong line is dropped whole rather than read as a fragment.
    const QByteArray chunk(32 * 1024, 'x');
    for (int i = 0; i < 64; ++i) {
        server.send(chunk);
        QTest::qWait(1);
        QVERIFY2(f.bufferedChars() <= DxClusterFetcher::k_maxLineChars,
                 QByteArray::number(f.bufferedChars()));
    }
    server.send("DX de W1AW: 14025.0 JA1XYZ CW 1234Z\r\n");
    QTest::qWait(50);
    QVERIFY(spots.isEmpty());

    // Back in step after the next line feed.
    server.send("DX de W1AW: 14025.0 JA1XYZ CW 1234Z\r\n");
    QTRY_COMPARE(spots.size(), 1);
    QCOMPARE(firstSpot(spots, 0).callsign, QStringLiteral("JA1XYZ"));
    QVERIFY(f.isConnected());
    QVERIFY(f.bufferedChars() == 0);

    // A multi-byte character split between two reads survives.
    server.send("DX de W1AW: 7030.0 OH0Z cw caf\xc3");
    QTest::qWait(20);
    server.send("\xa9 1200Z\r\n");
    QTRY_COMPARE(spots.size(), 2);
    QCOMPARE(firstSpot(spots, 1).comments, QStringLiteral("cw caf\u00e9"));
    QCOMPARE(firstSpot(spots, 1).referenceName, QStringLiteral("Aland Islands"));
}

void TestDxClusterFetcher::floodOfSpots()
{
    ClusterTestServer server;
    QVERIFY(server.start());
    DxClusterFetcher f(QStringLiteral("127.0.0.1"), server.port(), QStringLiteral("K1ABC"));
    logIn(f, server);
    QSignalSpy spots(&f, &DxClusterFetcher::spotsReady);

    const int count = 5000;
    QByteArray burst;
    for (int i = 0; i < count; ++i)
        burst += "DX de W1AW:  " + QByteArray::number(14000 + i % 350) + ".0  JA" + QByteArray::number(i) +
                 "XYZ   FT8 -5 dB   1234Z\r\n";
    server.send(burst);
    QTRY_COMPARE(spots.size(), count);
    QCOMPARE(firstSpot(spots, count - 1).callsign, QStringLiteral("JA%1XYZ").arg(count - 1));
    QCOMPARE(f.bufferedChars(), qsizetype(0));
    QVERIFY(f.isConnected());

    // A receiver that disconnects in the middle of a read: the rest of that
    // read is dropped, nothing is reconnected.
    spots.clear();
    connect(&f, &DxClusterFetcher::spotsReady, &f, [&f, &spots] {
        if (spots.size() == 3) // the spy, connected first, has recorded it
            f.disconnectFromCluster();
    });
    server.send(burst.left(burst.indexOf("DX de", 400)));
    QTRY_COMPARE(f.state(), DxClusterFetcher::Disconnected);
    QCOMPARE(spots.size(), 3);
    QVERIFY(!f.isReconnectPending());
    QCOMPARE(f.bufferedChars(), qsizetype(0));
}

TALLIS_TEST_MAIN(TestDxClusterFetcher)
#include "tst_dxclusterfetcher.moc"
