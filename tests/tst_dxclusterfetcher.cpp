#include "sources/dxcc.h"
#include "sources/dxclusterfetcher.h"
#include "sources/sourcehealth.h"
#include "support/clustertestserver.h"
#include "support/testmain.h"

#include <QSignalSpy>
#include <QTcpSocket>

namespace {

const QString k_local = QStringLiteral("127.0.0.1");

QDateTime utc(int year, int month, int day, int hour, int minute)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute), Qt::UTC);
}

// The parsed fields on one line, so that a failure shows them all; "none" for no spot.
QString describe(const StationSpot &s)
{
    if (s.callsign.isEmpty() && s.frequencyKhz == 0)
        return QStringLiteral("none");
    return QStringLiteral("%1|%2|%3|%4|%5|%6|%7")
        .arg(s.callsign, QString::number(s.frequencyKhz), s.mode, s.comments, s.spotter, s.referenceName,
             s.spotTime.toString(QStringLiteral("hh:mm")));
}

// Every spot line is a signal of its own holding one spot.
StationSpot spotAt(const QSignalSpy &spy, int index)
{
    const auto spots = spy.at(index).at(0).value<QList<StationSpot>>();
    return spots.size() == 1 ? spots.first() : StationSpot();
}

} // namespace

class TestDxClusterFetcher : public QObject
{
    Q_OBJECT

private slots:
    void parseDxLine_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("fields");
        QTest::newRow("typical") << "DX de K1ABC:     14025.0  JA1XYZ       CW 599 up 2            1234Z"
                                 << "JA1XYZ|14025|CW|CW 599 up 2|K1ABC|Japan|12:34";
        QTest::newRow("lower case") << "dx de k1abc: 7074 ja1xyz ft8 -10 dB 0102"
                                    << "JA1XYZ|7074|FT8|ft8 -10 dB|K1ABC|Japan|01:02";
        QTest::newRow("no Z, no comment") << "DX de W1AW: 3573.5 EA8/DL1ABC 0000"
                                          << "EA8/DL1ABC|3573.5|||W1AW|Canary Islands|00:00";
        QTest::newRow("portable spotter, unknown entity") << "DX de DL/K1ABC:  50313.0  AA1ZZ  cq  2105Z   "
                                                          << "AA1ZZ|50313||cq|DL/K1ABC||21:05";
        QTest::newRow("bad clock") << "DX de K1ABC: 14025.0 JA1XYZ CW 2575Z"
                                   << "JA1XYZ|14025|CW|CW|K1ABC|Japan|";
        for (const char *line : {"DX de K1ABC: 14025.0 JA1XYZ CW 599", "DX de K1ABC: 0.0 JA1XYZ CW 1234Z",
                                 "DX de K1ABC-#: 14025.0 JA1XYZ CW 1234Z", "WWV de W0MU <18Z> : SFI=150"})
            QTest::newRow(line) << QString::fromLatin1(line) << QStringLiteral("none");
        QTest::newRow("undecodable calls")
            << QString::fromUtf8("DX de \x80\x81: 14025.0 \xfe\xff CW 1234Z") << "none";
    }

    void parseDxLine()
    {
        const QDateTime now = utc(2025, 3, 10, 23, 0);
        const StationSpot spot = DxClusterFetcher::parseDxLine(fetched<QString>("line"), now);
        QTEST(describe(spot), "fields");
        if (spot.spotTime.isValid())
            QCOMPARE(spot.spotTime, QDateTime(now.date(), spot.spotTime.time(), Qt::UTC));
    }

    void modeAndSpotTime()
    {
        // The first word of the fixed order wins, wherever it stands; whole words only.
        const char *const modes[][2] = {{"cw then ft8", "FT8"}, {"psk31 psk", "PSK31"}, {"PSK63", ""},
                                        {"SSB RTTY", "RTTY"},   {"ssb usb", "USB"},     {"fm am", "AM"},
                                        {"tnx QSO,cw!", "CW"},  {"CWOPS AMATEUR", ""},  {"599 up 2", ""}};
        for (const auto &row : modes)
            QVERIFY2(DxClusterFetcher::extractMode(QString::fromLatin1(row[0])) == QLatin1String(row[1]),
                     row[0]);

        // Stamped just before midnight, received just after: yesterday.
        QCOMPARE(DxClusterFetcher::spotTimeUtc(2359, utc(2025, 3, 1, 0, 1)), utc(2025, 2, 28, 23, 59));
        // Twelve hours ahead is still today; a minute more is yesterday.
        QCOMPARE(DxClusterFetcher::spotTimeUtc(2330, utc(2025, 3, 1, 11, 30)), utc(2025, 3, 1, 23, 30));
        QCOMPARE(DxClusterFetcher::spotTimeUtc(2331, utc(2025, 3, 1, 11, 30)), utc(2025, 2, 28, 23, 31));
        // Just after midnight, received just before: far in the past, so today.
        QCOMPARE(DxClusterFetcher::spotTimeUtc(1, utc(2025, 3, 1, 23, 59)), utc(2025, 3, 1, 0, 1));
        for (int bad : {2575, 2400, 60, -1})
            QVERIFY(!DxClusterFetcher::spotTimeUtc(bad, utc(2025, 3, 1, 12, 0)).isValid());
    }

    void sessionFromLoginToSpots()
    {
        DxClusterFetcher f(QString(), 23, QStringLiteral(" k1abc "));
        QSignalSpy started(&f, &DxClusterFetcher::fetchStarted);
        QSignalSpy connection(&f, &DxClusterFetcher::connectionChanged);
        QSignalSpy spots(&f, &DxClusterFetcher::spotsReady);
        QSignalSpy errors(&f, &DxClusterFetcher::fetchError);
        f.connectToCluster();
        QCOMPARE(errors.size(), 1);
        QCOMPARE(errors.takeFirst().at(0).toString(), QStringLiteral("DX cluster: no host configured"));
        QVERIFY(started.isEmpty());

        ClusterTestServer server;
        ClusterTestServer other;
        QVERIFY(server.start() && other.start());
        f.setHost(k_local, server.port());
        f.connectToCluster();
        QCOMPARE(f.state(), DxClusterFetcher::Connecting);
        f.connectToCluster(); // already under way: nothing more
        QCOMPARE(started.size(), 1);

        // The call goes out at once and again at the prompt, which has no line
        // feed; a prompt line is answered again and does not count as acceptance.
        QTRY_COMPARE(server.receivedCount("K1ABC"), 2);
        server.sendLine("Please enter your callsign: ");
        QTRY_COMPARE(server.receivedCount("K1ABC"), 3);
        QCOMPARE(f.state(), DxClusterFetcher::LoggingIn);
        server.sendLine("\x1b[1mHello K1ABC\x1b[0m, this is TEST-1 in Testville");
        QTRY_VERIFY(f.isConnected());
        QCOMPARE(connection.size(), 1);

        // Colour codes, a line split across reads, several lines in one read.
        server.sendLine("\x1b[1;32mDX de W1AW:     14062.5  KH7KA        cw    1234Z\x1b[0m\x1b[K");
        server.send("DX de DL1XYZ:     7025.0  EA8/DL1ABC   ");
        QTRY_COMPARE(f.bufferedChars(), qsizetype(39)); // the half line waits for its end
        QCOMPARE(spots.size(), 1);
        server.send("FT8 -12 dB  1235Z\r\nDX de G4ABC: 3573.0 VE3ABC  ssb 1236Z\r\n"
                    "DX de G4ABC: 0.0 VE3ABC  ssb 1236Z\r\nlogin: \r\n");
        QTRY_COMPARE(server.receivedCount("K1ABC"), 4); // a prompt is answered even when logged in
        QCOMPARE(server.receivedCount("SET/DX"), 1);
        QCOMPARE(spots.size(), 3);
        QCOMPARE(describe(spotAt(spots, 0)), QStringLiteral("KH7KA|14062.5|CW|cw|W1AW|Kure Atoll|12:34"));
        QCOMPARE(spotAt(spots, 1).comments, QStringLiteral("FT8 -12 dB")); // the two halves joined
        QVERIFY(errors.isEmpty());

        // A new address while logged in ends the session silently and for good;
        // the owner reconnects. The same address changes nothing.
        f.setHost(k_local, server.port());
        QVERIFY(f.isConnected());
        f.setHost(k_local, other.port());
        QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
        QTRY_COMPARE(server.clientCount(), 0);
        QVERIFY(!f.isReconnectPending());
        QVERIFY(QMetaObject::invokeMethod(&f, "onReconnectTimer"));
        QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
        QCOMPARE(connection.size(), 1);
        f.connectToCluster();
        QTRY_COMPARE(other.connectionCount(), 1);

        // While connecting, a new address waits for the next attempt.
        f.disconnectFromCluster();
        f.connectToCluster();
        f.setHost(k_local, server.port());
        QCOMPARE(f.state(), DxClusterFetcher::Connecting);
        QTRY_COMPARE(other.connectionCount(), 2);
        QCOMPARE(server.connectionCount(), 1);
    }

    void loginOutcomes_data()
    {
        QTest::addColumn<QByteArray>("greeting");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<bool>("refused"); // by the reply's last line
        const QByteArray banner = "Welcome to GB7XX in Testshire\r\nRunning DXSpider v1.57\r\n";
        const QByteArray login = "login: ";
        const auto row = [](const char *name, const QByteArray &greeting, const char *reply, bool closes,
                            bool refused) {
            QTest::newRow(name) << greeting << QByteArray(reply) << closes << refused;
        };
        row("banner, prompt, refusal", banner + login, "Sorry N0CALL is not a valid callsign", true, true);
        // No "not a valid", and "your call" as in a prompt: still a refusal, not a prompt to answer.
        row("sorry, your call",
            banner + "Please enter your call: ", "Sorry, your call is not registered here", true, true);
        row("banner, prompt, welcome", banner + login,
            "Hello N0CALL, this is GB7XX\r\nN0CALL de GB7XX 22-Nov-2026 1200Z dxspider >", false, false);
        row("welcome with refusal words", login,
            "Hello N0CALL, this is GB7XX\r\nSorry, spots of pirate stations are not allowed here", false,
            false);
        row("your call", banner + "Please enter your call: ", "Hello N0CALL", false, false);
        row("echo, then refusal", banner + login, "N0CALL\r\nAccess denied", false, true);
        row("no prompt, welcome", "", "Hello N0CALL", false, false);
        row("no prompt, refusal", "", "Not allowed", true, true);
        row("invalid call", login, "GUEST is an INVALID CALLSIGN, go away please", false, true);
        row("bye, 19 characters", login, "Good bye from TEST1", false, true);
        row("bye, 20 characters", login, "Good bye from TEST-1", false, false);
    }

    void loginOutcomes()
    {
        QFETCH(QByteArray, greeting);
        QFETCH(QByteArray, reply);
        ClusterTestServer server;
        QVERIFY(server.start());
        server.setGreeting(greeting);
        server.setLoginReply(reply + "\r\nDX de W1AW: 14025.0 JA1XYZ CW 1234Z\r\n", fetched<bool>("closes"));
        DxClusterFetcher f(k_local, server.port(), QStringLiteral("N0CALL"));
        QSignalSpy errors(&f, &DxClusterFetcher::fetchError);
        QSignalSpy connection(&f, &DxClusterFetcher::connectionChanged);
        QSignalSpy spots(&f, &DxClusterFetcher::spotsReady);
        f.connectToCluster();
        if (greeting.isEmpty()) {
            // Without a prompt the node's first line is judged once the wait for one is over.
            QSignalSpy read(f.findChild<QTcpSocket *>(), &QTcpSocket::readyRead);
            QVERIFY(read.wait());
            QVERIFY(!f.isConnected());
            QVERIFY(QMetaObject::invokeMethod(&f, "onPromptWaitOver"));
        }
        QTRY_COMPARE(errors.size() + connection.size(), 1);
        // After a refusal the spot that follows is not read, and nothing is sent.
        const bool accepted = !fetched<bool>("refused");
        QCOMPARE(f.isConnected(), accepted);
        QTRY_COMPARE(spots.size(), accepted ? 1 : 0);
        QCOMPARE(connection.size(), accepted ? 1 : 0);
        QTRY_COMPARE(server.receivedCount("SET/DX"), accepted ? 1 : 0);
        QCOMPARE(server.connectionCount(), 1);
        if (accepted)
            return;
        QCOMPARE(errors.at(0).at(0).toString(), QStringLiteral("127.0.0.1:%1 \u2014 login rejected: %2")
                                                    .arg(server.port())
                                                    .arg(QString::fromLatin1(reply.split('\n').constLast())));
        QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
        QTRY_COMPARE(server.clientCount(), 0);
        QVERIFY(!f.isReconnectPending());
        QVERIFY(QMetaObject::invokeMethod(&f, "onReconnectTimer")); // stopped for good
        QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
    }

    void reconnectBackoff()
    {
        // A port nobody listens on: every attempt is refused.
        ClusterTestServer server;
        QVERIFY(server.start());
        const quint16 port = server.port();
        server.stopListening();
        DxClusterFetcher f(k_local, port, QStringLiteral("K1ABC"));
        qint64 now = 0;
        f.setClock([&now] { return now; });
        QSignalSpy errors(&f, &DxClusterFetcher::fetchError);
        QSignalSpy connection(&f, &DxClusterFetcher::connectionChanged);
        f.connectToCluster();
        const QList<int> waits = {5000, 10000, 20000, 40000, 80000, 160000, 300000, 300000};
        for (int i = 0; i < waits.size(); ++i) {
            QTRY_COMPARE(errors.size(), i + 1);
            QVERIFY(
                errors.last().at(0).toString().startsWith(QStringLiteral("127.0.0.1:%1 \u2014 ").arg(port)));
            QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
            QVERIFY(f.isReconnectPending());
            QCOMPARE(f.reconnectIntervalMs(), waits.at(i));
            QVERIFY(QMetaObject::invokeMethod(&f, "onReconnectTimer")); // instead of waiting minutes
        }
        QVERIFY(connection.isEmpty());

        // The node comes back; only a session that lasts a minute was a success,
        // so the next wait is 5 s again, unless connected by hand first.
        QVERIFY(server.start(port));
        server.setLoginReply("Hello K1ABC\r\n");
        QTRY_VERIFY(f.isConnected());
        server.dropClients(); // a session that ends within the minute is one more failure
        QTRY_COMPARE(connection.size(), 2);
        QVERIFY(f.isReconnectPending());
        QCOMPARE(f.reconnectIntervalMs(), 300000);
        QVERIFY(QMetaObject::invokeMethod(&f, "onReconnectTimer"));
        QTRY_VERIFY(f.isConnected());
        now += DxClusterFetcher::k_steadySessionMs;
        server.dropClients();
        QTRY_COMPARE(connection.size(), 4);
        QCOMPARE(f.reconnectIntervalMs(), 5000);
        f.connectToCluster();
        QVERIFY(!f.isReconnectPending());
        QTRY_VERIFY(f.isConnected());
        QCOMPARE(server.connectionCount(), 3);
        server.dropClients(); // short again: the wait doubles from 5 s
        QTRY_COMPARE(connection.size(), 6);
        QCOMPARE(f.reconnectIntervalMs(), 10000);
    }

    // Each node is an entry of the sources' health: refused and unreachable fail,
    // a retry does not make a failing node look healthy, and only a refusal
    // waits for "Reconnect now".
    void clusterHealth_data()
    {
        QTest::addColumn<QByteArray>("reply"); // empty: nobody listens
        QTest::addColumn<QString>("outcome");
        QTest::addColumn<bool>("failing");
        QTest::newRow("refused") << QByteArray("Sorry, your call is not registered")
                                 << "refused at %1: Sorry, your call is not registered" << true;
        QTest::newRow("unreachable") << QByteArray() << "unreachable since %1: Connection refused" << true;
        QTest::newRow("logged in") << QByteArray("Hello N0CALL") << "logged in since %1" << false;
    }

    void clusterHealth()
    {
        QFETCH(QByteArray, reply);
        QFETCH(bool, failing);
        ClusterTestServer server;
        QVERIFY(server.start());
        reply.isEmpty() ? server.stopListening() : server.setLoginReply(reply + "\r\n", failing);
        if (failing)
            server.setGreeting({}); // refuses unprompted, closing at once: the line was still held
        const qint64 now = QDateTime(QDate(2026, 11, 21), QTime(17, 0), Qt::UTC).toMSecsSinceEpoch();
        DxClusterFetcher f(k_local, server.port(), QStringLiteral("N0CALL"));
        f.setClock([now] { return now; });
        SourceHealth health;
        health.watchClusters({&f});
        const QString node = QStringLiteral("DX 127.0.0.1:%1: ").arg(server.port());
        const QString answering = QStringLiteral("Sources: all answering");
        f.connectToCluster();
        QCOMPARE(health.toolTip(), node + QStringLiteral("connecting"));
        QCOMPARE(health.labelText(), answering);

        const QString at =
            QDateTime::fromMSecsSinceEpoch(now).toLocalTime().toString(QStringLiteral("HH:mm:ss"));
        const QString outcome = node + fetched<QString>("outcome").arg(at);
        QTRY_COMPARE(health.toolTip(), outcome);
        const QString label = failing ? QStringLiteral("Sources: 1 failing") : answering;
        QCOMPARE(health.labelText(), label);
        QVERIFY(QMetaObject::invokeMethod(&f, "onReconnectTimer")); // a retry, if one is due
        QCOMPARE(health.labelText(), label);
        f.disconnectFromCluster();
        QCOMPARE(health.toolTip(), node + QStringLiteral("off"));
        QCOMPARE(health.labelText(), answering);
        f.reconnectNow(); // switched off by the operator: stays off
        QCOMPARE(f.state(), DxClusterFetcher::Disconnected);
        if (reply.isEmpty())
            return;

        // Asked again, the node answers as before; a refusal is lifted only by asking.
        f.connectToCluster();
        QTRY_COMPARE(health.toolTip(), outcome);
        QCOMPARE(server.connectionCount(), 2);
        f.reconnectNow();
        QTRY_COMPARE(server.connectionCount(), failing ? 3 : 2);
        QTRY_COMPARE(health.toolTip(), outcome);
    }

    void hostileInput()
    {
        ClusterTestServer server;
        QVERIFY(server.start());
        server.setLoginReply("Hello, welcome to the test node\r\n");
        DxClusterFetcher f(k_local, server.port(), QString());
        f.connectToCluster();
        QTRY_VERIFY(f.isConnected());
        QVERIFY(server.receivedCount("GUEST") >= 1); // no call sign set
        QSignalSpy spots(&f, &DxClusterFetcher::spotsReady);

        // A node that never ends its line: memory stays bounded, and the overlong
        // line is dropped whole rather than read as a fragment.
        server.send(QByteArray(DxClusterFetcher::k_maxLineChars - 10, 'x'));
        QTRY_VERIFY(f.bufferedChars() > 0);
        server.send(QByteArray(20, 'x'));
        QTRY_COMPARE(f.bufferedChars(), qsizetype(0));
        server.send("DX de W1AW: 14025.0 JA1XYZ CW 1234Z\r\nDX de W1AW: 7030.0 OH0Z cw caf\xc3");
        QTRY_COMPARE(f.bufferedChars(), qsizetype(30)); // the long line ends unread; the next waits
        // A multi-byte character split between two reads survives.
        server.send("\xa9 1200Z\r\n");
        QTRY_COMPARE(spots.size(), 1);
        QCOMPARE(spotAt(spots, 0).comments, QStringLiteral("cw caf\u00e9"));

        // A receiver that disconnects in the middle of a read: the rest of
        // that read is dropped, nothing is reconnected.
        connect(&f, &DxClusterFetcher::spotsReady, &f, [&f, &spots] {
            if (spots.size() == 3) // the spy, connected first, has recorded it
                f.disconnectFromCluster();
        });
        server.send(QByteArray("DX de W1AW: 14025.0 JA1XYZ CW 1234Z\r\n").repeated(20));
        QTRY_COMPARE(f.state(), DxClusterFetcher::Disconnected);
        QCOMPARE(spots.size(), 3);
        QVERIFY(!f.isReconnectPending());
        QCOMPARE(f.bufferedChars(), qsizetype(0));
    }

    // Keys in upper case and at most four characters long: the lookup tries no more. Every
    // entity names a continent the RBN filter knows.
    void dxccTable()
    {
        const QHash<QString, const DxccEntity *> &table = dxccPrefixTable();
        for (auto it = table.constBegin(); it != table.constEnd(); ++it) {
            QVERIFY2(it.key() == it.key().toUpper() && !it.key().isEmpty() && it.key().size() <= 4,
                     qPrintable(it.key()));
            QVERIFY2(continentCodes().contains(QLatin1String(it.value()->continent)), it.value()->name);
        }
    }

    void continentLookup_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("continent");
        // Russia is split by call area; a designator abroad decides as it does for the entity.
        const QString rows =
            QStringLiteral("K1ABC=NA;DL1ABC=EU;UA1ABC=EU;UA2ABC=EU;UA9ABC=AS;RA0AA=AS;R8XX=AS;"
                           "UA3/UA9ABC=EU;JA1XYZ=AS;VK2ABC=OC;ZS6AB=AF;PY2AB=SA;VK0AB=AN;"
                           "EA8/DL1ABC=AF;KH6XYZ=OC;AA1AA=;=");
        for (const QString &row : rows.split(QLatin1Char(';'))) {
            const QStringList parts = row.split(QLatin1Char('='));
            QTest::newRow(qPrintable(row)) << parts.at(0) << parts.at(1);
        }
    }

    void continentLookup()
    {
        QCOMPARE(dxContinentForCallsign(fetched<QString>("call")), fetched<QString>("continent"));
    }

    void dxccLookup_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("entity");
        // Longest match of up to four characters; the table's irregular rows stand and missing
        // allocations give nothing. Of a designator and a call the shorter part counts, the first
        // when equal; modifiers, a third part and empty parts are passed over.
        const QString rows = QString::fromUtf8(
            "K1ABC=United States;KH6XYZ=Hawaii;KH7KA=Kure Atoll;KH7AB=Hawaii;KH5JA=Jarvis Island;"
            "KH5AB=Palmyra Atoll;CE0YAB=Easter Island;CE3ABC=Chile;UA2ABC=Kaliningrad;VP2EAB=Anguilla;VP2AB=;"
            "4U1UN=United Nations HQ;4U2ABC=;1A0KM=Sovereign Military Order of Malta;kh6xyz=Hawaii;"
            "AO8ABC=Spain;YU1ABC=Romania;ZK3A=Tokelau;AA1AA=;2E0ABC=;"
            "DL/K1ABC=Germany;W1AW/KH6=Hawaii;EA8/DL1ABC=Canary Islands;K1ABC/P=United States;"
            "EA8/DL1=Canary Islands;EA8/DL1ABC/9=Canary Islands;K1ABC/QRP/P=United States;K1ABC//X=;"
            "G4ABC/MM=England;K1ABC/7=;/P=;P/M=;=;\xc3\xa9\xe2\x80\x94//\x01=");
        for (const QString &row : rows.split(QLatin1Char(';'))) {
            const QStringList parts = row.split(QLatin1Char('='));
            QTest::newRow(qPrintable(row)) << parts.at(0) << parts.at(1);
        }
    }

    void dxccLookup() { QCOMPARE(dxEntityForCallsign(fetched<QString>("call")), fetched<QString>("entity")); }
};

TALLIS_TEST_MAIN(TestDxClusterFetcher)
#include "tst_dxclusterfetcher.moc"
