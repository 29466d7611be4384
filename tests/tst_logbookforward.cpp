#include "app/logbook/logbookforwarder.h"
#include "app/logbook/logbookoutbox.h"
#include "app/logbook/wsjtxsender.h"
#include "app/stationdesk.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "support/httptestserver.h"
#include "support/testmain.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QtEndian>
#include <QUdpSocket>
#include <QXmlStreamReader>

#include <memory>

namespace {

const QDateTime k_at(QDate(2026, 11, 14), QTime(17, 52, 23), Qt::UTC);
const AdifStation k_station{QStringLiteral("G4ABC"), true, 54.4542, -3.2116}; // IO84jk

ContactRecord contact(const QString &mode = QStringLiteral("CW"),
                      const QString &comments = QStringLiteral("Forêt"))
{
    StationSpot s;
    s.source = StationSpot::POTA;
    s.callsign = QStringLiteral("K1ABC");
    s.reference = QStringLiteral("US-1234");
    s.frequencyKhz = 14062.7;
    s.mode = mode;
    s.grid = mode == QLatin1String("CW") ? QStringLiteral("FN31pr") : QString();
    s.comments = comments;
    return ContactRecord::fromSpot(s, QStringLiteral("G4ABC"), k_at);
}

// Reads WSJT-X datagrams as the protocol describes them: big-endian, texts as
// a byte count (0xffffffff: null) and UTF-8 bytes, times as Julian day,
// milliseconds of the day and a time spec.
class WsjtxReader
{
public:
    explicit WsjtxReader(QByteArray data)
        : m_data(std::move(data))
    {}
    quint32 u32() { return quint32(take(4)); }
    quint64 u64() { return take(8); }
    QString text()
    {
        const quint32 length = u32();
        if (length == 0xffffffffu)
            return QStringLiteral("<null>");
        const QByteArray bytes = m_data.mid(m_at, length);
        m_at += length;
        m_ok = m_ok && bytes.size() == qsizetype(length);
        return QString::fromUtf8(bytes);
    }
    QString time()
    {
        const qint64 day = qint64(take(8));
        const quint32 ms = u32();
        const int spec = int(take(1));
        return QDate::fromJulianDay(day).toString(Qt::ISODate) + QLatin1Char(' ') +
               QTime::fromMSecsSinceStartOfDay(int(ms)).toString(QStringLiteral("HH:mm:ss.zzz")) +
               QStringLiteral(" spec %1").arg(spec);
    }
    bool atEndIntact() const { return m_ok && m_at == m_data.size(); }

private:
    quint64 take(int bytes)
    {
        quint64 value = 0;
        for (int i = 0; i < bytes; ++i)
            value = (value << 8) | quint8((m_at + i < m_data.size() ? m_data.at(m_at + i) : '\0'));
        m_ok = m_ok && m_at + bytes <= m_data.size();
        m_at += bytes;
        return value;
    }

    QByteArray m_data;
    qsizetype m_at = 0;
    bool m_ok = true;
};

QStringList header(WsjtxReader &reader)
{
    const quint32 magic = reader.u32();
    const quint32 schema = reader.u32();
    const quint32 type = reader.u32();
    return {QString::number(magic, 16), QString::number(schema), QString::number(type), reader.text()};
}

// A listener on a free local port.
struct UdpListener
{
    QUdpSocket socket;
    UdpListener() { socket.bind(QHostAddress::LocalHost, 0); }
    QList<QByteArray> received;
    void drain()
    {
        while (socket.hasPendingDatagrams()) {
            QByteArray data(qsizetype(socket.pendingDatagramSize()), '\0');
            socket.readDatagram(data.data(), data.size());
            received.append(data);
        }
    }
};

LogTarget target(LogTarget::Type type, quint16 port = 0)
{
    LogTarget t = LogTarget::withDefaults(type);
    t.port = port ? port : t.port;
    t.key = QStringLiteral("s3cr3t-k3y");
    t.stationId = QStringLiteral("7");
    return t;
}

using Answer = QPair<int, QByteArray>;

QStringList list(std::initializer_list<const char *> items)
{
    QStringList texts;
    for (const char *item : items)
        texts.append(QString::fromUtf8(item));
    return texts;
}

} // namespace

class TestLogbookForward : public QObject
{
    Q_OBJECT

private slots:
    void wsjtxLayout_data()
    {
        QTest::addColumn<ContactRecord>("record");
        QTest::addColumn<QStringList>("fields");
        const char *const time = "2026-11-14 17:52:23.000 spec 1";
        QTest::newRow("CW, grids, a non-ASCII comment")
            << contact()
            << list({time, "K1ABC", "FN31pr", "14062700", "CW", "599", "599", "<null>", "POTA US-1234 Forêt",
                     "<null>", time, "G4ABC", "G4ABC", "IO84jk", "<null>", "<null>", "<null>"});
        QTest::newRow("FT4 by its own name, empty texts null")
            << contact(QStringLiteral("ft4"), QString())
            << list({time, "K1ABC", "<null>", "14062700", "FT4", "-10", "-10", "<null>", "POTA US-1234",
                     "<null>", time, "G4ABC", "G4ABC", "IO84jk", "<null>", "<null>", "<null>"});
    }

    void wsjtxLayout()
    {
        QFETCH(ContactRecord, record);
        QFETCH(QStringList, fields);
        WsjtxReader qso(WsjtxSender::qsoLogged(record, k_station));
        QCOMPARE(header(qso), (list({"adbccbda", "2", "5", "Tallis"})));
        QStringList read{qso.time(), qso.text(), qso.text(), QString::number(qso.u64())};
        for (int i = 0; i < 5; ++i)
            read << qso.text();
        read << qso.text() << qso.time(); // name, time on
        for (int i = 0; i < 6; ++i)
            read << qso.text();
        QCOMPARE(read, fields);
        QVERIFY(qso.atEndIntact());

        const QString document = AdifWriter::document({record}, k_station, k_at, QStringLiteral("1.0"));
        WsjtxReader adif(WsjtxSender::loggedAdif(document));
        QCOMPARE(header(adif), (list({"adbccbda", "2", "12", "Tallis"})));
        const QString text = adif.text();
        QVERIFY(adif.atEndIntact());
        QCOMPARE(text, document);
        QVERIFY(text.contains(QLatin1String("<EOH>")) && text.count(QLatin1String("<EOR>")) == 1);
    }

    // Each UDP kind, through a real socket to a local listener.
    void udpTargets_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QStringList>("expected"); // per datagram: WSJT-X type, or the start of the text
        const auto row = [](const char *name, LogTarget::Type type, const char *message,
                            std::initializer_list<const char *> expected) {
            QTest::newRow(name) << int(type) << QString::fromLatin1(message) << list(expected);
        };
        row("wsjtx both", LogTarget::Type::Wsjtx, "both", {"5", "12"});
        row("wsjtx adif only", LogTarget::Type::Wsjtx, "adif", {"12"});
        row("wsjtx qso only", LogTarget::Type::Wsjtx, "qso", {"5"});
        row("n1mm", LogTarget::Type::N1mm, "", {"<?xml"});
        row("plain adif", LogTarget::Type::Adif, "", {"<CALL:5>K1ABC "});
    }

    void udpTargets()
    {
        QFETCH(int, type);
        QFETCH(QString, message);
        QFETCH(QStringList, expected);
        UdpListener listener;
        LogTarget t = target(LogTarget::Type(type), listener.socket.localPort());
        t.message = message.isEmpty() ? t.message : message;
        LogbookForwarder forwarder(QDir::home().filePath(QStringLiteral("outbox-udp.jsonl")));
        forwarder.setClock([] { return k_at; });
        forwarder.configure({t}, k_station);
        forwarder.forward({contact()});
        QTRY_COMPARE((listener.drain(), listener.received.size()), expected.size());
        QVERIFY(forwarder.statusText().isEmpty()); // nothing waits for a UDP listener
        QVERIFY(forwarder.statusToolTip().contains(QLatin1String("sent at")));
        for (int i = 0; i < expected.size(); ++i) {
            const QByteArray datagram = listener.received[i];
            if (t.type == LogTarget::Type::Wsjtx) {
                WsjtxReader reader(datagram);
                QCOMPARE(header(reader).value(2), expected[i]);
            } else {
                QVERIFY2(datagram.startsWith(expected[i].toUtf8()), datagram.constData());
            }
        }
        if (t.type == LogTarget::Type::Adif)
            QVERIFY(listener.received[0].endsWith("<EOR>\n\n") && !listener.received[0].contains("<EOH>"));
        if (t.type != LogTarget::Type::N1mm)
            return;
        QHash<QString, QString> xml;
        QXmlStreamReader reader(listener.received[0]);
        QVERIFY(reader.readNextStartElement() && reader.name() == QLatin1String("contactinfo"));
        while (reader.readNextStartElement())
            xml.insert(reader.name().toString(), reader.readElementText());
        QVERIFY(!reader.hasError());
        const QStringList want =
            list({"app=Tallis", "timestamp=2026-11-14 17:52:23", "mycall=G4ABC", "operator=G4ABC",
                  "call=K1ABC", "band=14", "rxfreq=1406270", "txfreq=1406270", "mode=CW", "snt=599",
                  "rcv=599", "gridsquare=FN31pr", "comment=POTA US-1234 Forêt"});
        for (const QString &pair : want)
            QCOMPARE(xml.value(pair.section(QLatin1Char('='), 0, 0)), pair.section(QLatin1Char('='), 1));
        QVERIFY(QRegularExpression(QStringLiteral("^[0-9a-f]{32}$"))
                    .match(xml.value(QStringLiteral("ID")))
                    .hasMatch());
    }

    // An online logbook answers in turn; a restart may fall between the first two answers.
    void httpDelivery_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QList<Answer>>("answers");
        QTest::addColumn<bool>("restart");
        QTest::addColumn<QString>("settled"); // "delivered", or the refusal's words
        const auto wavelog = int(LogTarget::Type::Wavelog);
        const auto qrz = int(LogTarget::Type::Qrz);
        const Answer serverError{500, "oops"};
        QTest::newRow("wavelog: down, restart, up")
            << wavelog << QList<Answer>{serverError, {201, R"({"status":"created"})"}} << true << "delivered";
        QTest::newRow("wavelog: down twice, up")
            << wavelog << QList<Answer>{serverError, {502, ""}, {201, "{}"}} << false << "delivered";
        QTest::newRow("wavelog: duplicate")
            << wavelog << QList<Answer>{{400, R"({"messages":["Duplicate QSO"]})"}} << false << "delivered";
        QTest::newRow("wavelog: bad key")
            << wavelog << QList<Answer>{{401, R"({"reason":"missing or invalid api key"})"}} << false
            << "missing or invalid api key";
        QTest::newRow("wavelog: other 4xx")
            << wavelog << QList<Answer>{{422, R"({"messages":["wrong station_profile_id s3cr3t-k3y"]})"}}
            << false << "wrong station_profile_id …";
        QTest::newRow("qrz: down, restart, up")
            << qrz << QList<Answer>{serverError, {200, "RESULT=OK&LOGID=1&COUNT=1"}} << true << "delivered";
        QTest::newRow("qrz: a page that is not the API, then up")
            << qrz << QList<Answer>{{200, "<html>maintenance</html>"}, {200, "RESULT=OK"}} << false
            << "delivered";
        QTest::newRow("qrz: duplicate")
            << qrz << QList<Answer>{{200, "RESULT=FAIL&REASON=Unable+to+add+QSO:+duplicate"}} << false
            << "delivered";
        QTest::newRow("qrz: auth") << qrz << QList<Answer>{{200, "RESULT=AUTH&REASON=invalid+api+key"}}
                                   << false << "invalid api key";
    }

    void httpDelivery()
    {
        QFETCH(int, type);
        QFETCH(QList<Answer>, answers);
        QFETCH(bool, restart);
        QFETCH(QString, settled);
        HttpTestServer server;
        QVERIFY(server.start());
        LogTarget t = target(LogTarget::Type(type));
        t.url = server.url().toString() + QStringLiteral("/index.php/");
        const QByteArray path = type == int(LogTarget::Type::Qrz) ? "/api" : "/index.php/api/qso";
        const QString outbox = QDir::home().filePath(
            QStringLiteral("outbox-%1.jsonl").arg(QString::fromUtf8(QTest::currentDataTag())));
        QDateTime now = k_at;
        const auto start = [&] {
            auto forwarder = std::make_unique<LogbookForwarder>(outbox);
            forwarder->setClock([&now] { return now; });
            forwarder->setQrzUrl(QUrl(server.url().toString() + QStringLiteral("/api")));
            return forwarder;
        };
        std::unique_ptr<LogbookForwarder> forwarder = start();
        auto notices = std::make_unique<QSignalSpy>(forwarder.get(), &LogbookForwarder::notice);
        forwarder->configure({t}, k_station);

        for (int i = 0; i < answers.size(); ++i) {
            server.setRoute(path, answers[i].second, answers[i].first, "text/plain");
            if (i == 0) {
                forwarder->forward({contact()});
                QCOMPARE(forwarder->statusText(),
                         QStringLiteral("Logbook: 1 waiting")); // queued before any answer
            } else if (restart && i == 1) {
                forwarder = start(); // what waits goes out at start
                notices = std::make_unique<QSignalSpy>(forwarder.get(), &LogbookForwarder::notice);
                forwarder->configure({t}, k_station);
            } else {
                now = now.addSecs(LogbookForwarder::retryDelaySecs(i));
                forwarder->deliverDue();
            }
            QTRY_COMPARE(server.requestCount(path), i + 1);
            if (i + 1 < answers.size())
                QTRY_VERIFY(forwarder->statusToolTip().contains(QLatin1String("trying again")));
        }
        QTRY_COMPARE(forwarder->waitingCount(), 0);
        QVERIFY(forwarder->statusText().isEmpty());

        // Settled is settled: later retries and the next start send nothing more.
        now = now.addSecs(7200);
        forwarder->deliverDue();
        forwarder = start();
        forwarder->configure({t}, k_station);
        QCOMPARE(forwarder->waitingCount(), 0);
        QCOMPARE(server.requestCount(path), answers.size());

        const HttpTestServer::Request request = server.requests().constLast();
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.headers.value("user-agent"), QByteArray("Tallis/0.1 (Brightwater)"));
        QVERIFY(request.body.contains("s3cr3t-k3y") && request.body.contains("K1ABC"));
        if (type == int(LogTarget::Type::Wavelog)) {
            QCOMPARE(request.headers.value("accept"), QByteArray("application/json"));
            const QJsonObject json = QJsonDocument::fromJson(request.body).object();
            QCOMPARE(json.value(QLatin1String("station_profile_id")).toString(), QStringLiteral("7"));
            QCOMPARE(json.value(QLatin1String("type")).toString(), QStringLiteral("adif"));
        } else {
            QVERIFY(request.body.startsWith("KEY=s3cr3t-k3y&ACTION=INSERT&ADIF=%3CCALL%3A5%3EK1ABC"));
        }
        if (settled == QLatin1String("delivered")) {
            QCOMPARE(notices->size(), 0);
        } else {
            QCOMPARE(notices->size(), 1);
            QVERIFY2(notices->constFirst().constFirst().toString().endsWith(settled),
                     qPrintable(notices->constFirst().constFirst().toString()));
        }
        // The key stays in the settings: not in the outbox, the notices or the tool tip.
        QVERIFY(!readFile(outbox).contains("s3cr3t") &&
                !forwarder->statusToolTip().contains(QLatin1String("s3cr3t")));
        QCOMPARE(QFileInfo(outbox).permissions() & 0x0777, QFile::ReadUser | QFile::WriteUser);
    }

    void retryDelays_data()
    {
        QTest::addColumn<int>("failures");
        QTest::addColumn<int>("secs");
        for (const auto &[failures, secs] :
             {std::pair{1, 30}, {2, 60}, {3, 120}, {6, 960}, {7, 1800}, {60, 1800}})
            QTest::addRow("%d", failures) << failures << secs;
    }

    void retryDelays()
    {
        QCOMPARE(LogbookForwarder::retryDelaySecs(fetched<int>("failures")), fetched<int>("secs"));
    }

    void outboxCompaction()
    {
        const QString path = QDir::home().filePath(QStringLiteral("outbox-compact.jsonl"));
        const QByteArray entry =
            R"({"created":"2026-11-14T17:52:23.000Z","id":"%1","record":"<CALL:3>K1A <EOR>",)"
            R"("target":{"index":%2,"type":"wavelog"}})";
        const auto line = [&entry](const char *id, int index) {
            QByteArray text = QByteArray(entry).replace("%1", id).replace("%2", QByteArray::number(index));
            return text.append('\n');
        };
        writeFile(path, line("a", 0) + line("b", 1) +
                            R"({"id":"a","delivered":true})"
                            "\n" +
                            "garbage\n" + line("c", 0) +
                            R"({"id":"c","refused":"no"})"
                            "\n" +
                            line("b", 5) + line("d", -1) +
                            R"({"id":"e","record":"x","target":{"index":0,"type":"fax"}})"
                            "\n" +
                            line("f", 2).left(40));
        LogbookOutbox outbox(path);
        QVERIFY(outbox.load());
        QCOMPARE(outbox.pendingCount(), 1);
        QCOMPARE(outbox.pending().constFirst().targetIndex, 1);
        QCOMPARE(readFile(path), line("b", 1));
        QCOMPARE(QFileInfo(path).permissions() & 0x0777, QFile::ReadUser | QFile::WriteUser);
    }

    // JSON with single quotes, for legibility.
    void targetsFromJson_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, const char *json, const char *expected) {
            QTest::newRow(name) << QByteArray(json).replace('\'', '"')
                                << QByteArray(expected).replace('\'', '"');
        };
        row("defaults", "[{'type':'wsjtx'},{'type':'n1mm'},{'type':'adif'},{'type':'qrz'}]",
            "[{'enabled':true,'host':'127.0.0.1','message':'both','port':2237,'type':'wsjtx'},"
            "{'enabled':true,'host':'127.0.0.1','port':12060,'type':'n1mm'},"
            "{'enabled':true,'host':'127.0.0.1','port':2333,'type':'adif'},{'enabled':true,'key':'','type':'"
            "qrz'}]");
        row("clamped, trimmed, foreign keys dropped",
            "[{'type':'wsjtx','port':99999,'host':'  ','message':'all','key':'k','enabled':false},"
            "{'type':'wavelog','stationId':3,'url':' https://x/ ','host':'h','port':5}]",
            "[{'enabled':false,'host':'127.0.0.1','message':'both','port':65535,'type':'wsjtx'},"
            "{'enabled':true,'key':'','stationId':'3','type':'wavelog','url':'https://x/'}]");
        row("unknown and malformed dropped", "[{'type':'fax'},'wsjtx',7,{'type':'QRZ'}]", "[]");
        row("not an array", "{'type':'wsjtx'}", "[]");
    }

    void targetsFromJson()
    {
        QFETCH(QByteArray, json);
        const QJsonValue value =
            QJsonDocument::fromJson(R"({"v":)" + json + "}").object().value(QLatin1String("v"));
        const QJsonArray written = LogTarget::listToJson(LogTarget::listFromJson(value));
        QCOMPARE(QJsonDocument(written).toJson(QJsonDocument::Compact), fetched<QByteArray>("expected"));
    }

    // The table's log and the API's both hand their records on.
    void everyLogIsHandedOn()
    {
        StationModel model;
        SpotFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        StationSpot spot = contact().spot;
        spot.spotTime = QDateTime::currentDateTimeUtc();
        model.mergeSpots({spot});
        StationDesk desk(model, proxy);
        QList<ContactRecord> handed;
        desk.setLoggedHandler([&handed](const QList<ContactRecord> &records) { handed += records; });
        const QString key = spot.key();
        QVERIFY(!desk.logSelection(key, QStringLiteral("G4ABC")).isEmpty());
        QVERIFY(desk.logKey(key, QStringLiteral("G4ABC")));
        QCOMPARE(handed.size(), 2);
        QCOMPARE(handed.constLast().spot.callsign, QStringLiteral("K1ABC"));
    }
};

TALLIS_TEST_MAIN(TestLogbookForward)
#include "tst_logbookforward.moc"
