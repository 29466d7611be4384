#include "api/apicommands.h"
#include "app/dialogs/spotdialog.h"
#include "app/mainwindow.h"
#include "app/spotting/spotposter.h"
#include "model/stationmodel.h"
#include "sources/dxclusterfetcher.h"
#include "sources/dxclusterpool.h"
#include "support/clustertestserver.h"
#include "support/fakeapibackend.h"
#include "support/testmain.h"
#include "support/windowfixture.h"

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>

using namespace WindowFixture;

namespace {

constexpr qint64 k_now = 1776700000000; // a fixed instant, ms

SpotRequest request(const QString &reference, StationSpot::Source target, const QString &comments = {})
{
    SpotRequest r;
    r.callsign = QStringLiteral("K1ABC");
    r.frequencyKhz = 14062.5;
    r.mode = QStringLiteral("CW");
    r.reference = reference;
    r.programme = SpotRequest::programmeOf(reference);
    r.target = target;
    r.comments = comments;
    return r;
}

StationSpot spot(const QString &call, const QString &reference, double kHz, qint64 atMs,
                 const QString &spotter = QStringLiteral("W1AW"))
{
    StationSpot s;
    s.source = StationSpot::POTA;
    s.callsign = call;
    s.reference = reference;
    s.frequencyKhz = kHz;
    s.spotTime = QDateTime::fromMSecsSinceEpoch(atMs, Qt::UTC);
    s.spotter = spotter;
    return s;
}

QString outcomeOf(SpotPoster &poster, const SpotRequest &r, bool force)
{
    QString text = QStringLiteral("<no answer>");
    poster.post(r, force,
                [&text, &r](const SpotPoster::Outcome &o) { text = SpotPoster::outcomeText(r.callsign, o); });
    return text;
}

} // namespace

// Spotting: the checks and the texts sent, POTA and WWBOTA stood in for by the local HTTP server, cluster
// nodes by local telnet nodes, the table's own spots, the API command, and one re-spot from the window.
class TestSpotting final : public WindowTest
{
    Q_OBJECT

    std::unique_ptr<SpotPoster> poster(const DxClusterPool &pool)
    {
        auto p = std::make_unique<SpotPoster>(services(), pool);
        p->setOwnCallsign(QStringLiteral("n0call"));
        return p;
    }

private slots:
    void checks_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<double>("kHz");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("reference");
        QTest::addColumn<int>("target");
        QTest::addColumn<QString>("problem");
        const auto row = [](const char *name, const char *call, double kHz, const char *mode, const char *ref,
                            StationSpot::Source target, const char *problem) {
            QTest::newRow(name) << QString::fromLatin1(call) << kHz << QString::fromLatin1(mode)
                                << QString::fromLatin1(ref) << int(target) << QString::fromLatin1(problem);
        };
        row("pota, lower case", "k1abc", 14062.5, "cw", "us-1234", StationSpot::POTA, "");
        row("portable parts", "EA8/DL1ABC/P", 7032.0, "CW", "B/EA-0001", StationSpot::WWBOTA, "");
        row("two bunkers", "G4ABC", 7032.0, "SSB", "B/G-0977, B/G-0978", StationSpot::WWBOTA, "");
        row("no digit", "KABC", 14062.5, "CW", "US-1234", StationSpot::POTA, "invalid callsign");
        row("too short", "K1", 14062.5, "CW", "US-1234", StationSpot::POTA, "invalid callsign");
        row("sixteen", "AB1CDEFGHIJKLMNO", 14062.5, "CW", "US-1234", StationSpot::POTA, "invalid callsign");
        row("suffix", "K1ABC-2", 14062.5, "CW", "US-1234", StationSpot::POTA, "invalid callsign");
        row("band edge", "K1ABC", 14350.0, "CW", "US-1234", StationSpot::POTA, "");
        row("past the edge", "K1ABC", 14350.1, "CW", "US-1234", StationSpot::POTA,
            "frequency not in an amateur band");
        row("no mode", "K1ABC", 14062.5, " ", "US-1234", StationSpot::POTA, "missing mode");
        row("short park", "K1ABC", 14062.5, "CW", "US-123", StationSpot::POTA, "invalid reference for POTA");
        row("two parks", "K1ABC", 14062.5, "CW", "US-1234 US-1235", StationSpot::POTA,
            "invalid reference for POTA");
        row("no park", "K1ABC", 14062.5, "CW", "", StationSpot::POTA, "invalid reference for POTA");
        row("bunker without B/", "G4ABC", 7032.0, "CW", "G-0977", StationSpot::WWBOTA,
            "invalid reference for WWBOTA");
        row("cluster, no node", "K1ABC", 14062.5, "CW", "", StationSpot::DX, "no cluster node logged in");
        row("unknown target", "K1ABC", 14062.5, "CW", "US-1234", StationSpot::SOTA, "unknown source");
    }

    void checks()
    {
        const DxClusterPool none(this);
        auto p = poster(none);
        SpotRequest r = request(fetched<QString>("reference"), StationSpot::Source(fetched<int>("target")));
        r.callsign = fetched<QString>("call");
        r.frequencyKhz = fetched<double>("kHz");
        r.mode = fetched<QString>("mode");
        QTEST(p->problem(r), "problem");
        p->setOwnCallsign(QString());
        QCOMPARE(p->problem(r), QStringLiteral("callsign not set"));
    }

    void clusterLine_data()
    {
        QTest::addColumn<QString>("comment");
        QTest::addColumn<int>("programme");
        QTest::addColumn<QString>("reference");
        QTest::addColumn<bool>("qrt");
        QTest::addColumn<QString>("line");
        QTest::newRow("reference first")
            << QStringLiteral("tnx QSO") << int(StationSpot::POTA) << QStringLiteral("US-1234") << false
            << QStringLiteral("DX 14062.5 K1ABC POTA US-1234 tnx QSO");
        QTest::newRow("named already")
            << QStringLiteral("at US-1234") << int(StationSpot::POTA) << QStringLiteral("US-1234") << false
            << QStringLiteral("DX 14062.5 K1ABC at US-1234");
        QTest::newRow("qrt, summit") << QStringLiteral("tnx") << int(StationSpot::SOTA)
                                     << QStringLiteral("W4C/CM-001") << true
                                     << QStringLiteral("DX 14062.5 K1ABC SOTA W4C/CM-001 QRT tnx");
        QTest::newRow("line ends, controls")
            << QStringLiteral("599\r\nDX 1.0 FAKE\x07\tbye") << int(StationSpot::DX) << QString() << false
            << QStringLiteral("DX 14062.5 K1ABC 599 DX 1.0 FAKE bye");
        QTest::newRow("accents, 60 chars")
            << (QStringLiteral("Z\u00fcrich \u6771 ") + QString(70, QLatin1Char('x'))) << int(StationSpot::DX)
            << QString() << false
            << (QStringLiteral("DX 14062.5 K1ABC Zurich ") + QString(53, QLatin1Char('x')));
    }

    void clusterLine()
    {
        SpotRequest r = request(fetched<QString>("reference"), StationSpot::DX, fetched<QString>("comment"));
        r.programme = StationSpot::Source(fetched<int>("programme"));
        r.qrt = fetched<bool>("qrt");
        QTEST(r.clusterLine(), "line");
    }

    // What the services receive, and what the operator is told.
    void webPosts_data()
    {
        QTest::addColumn<int>("target");
        QTest::addColumn<QString>("reference");
        QTest::addColumn<bool>("qrt");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("outcome");
        QTest::newRow("pota")
            << int(StationSpot::POTA) << QStringLiteral("US-1234") << false << 200 << QByteArray("{}")
            << QByteArray(R"({"activator":"K1ABC","spotter":"N0CALL","frequency":"14062.5",)"
                          R"("reference":"US-1234","mode":"CW","source":"Tallis","comments":"tnx B/G-0978"})")
            << QStringLiteral("Spotted K1ABC on POTA");
        QTest::newRow("pota refuses") << int(StationSpot::POTA) << QStringLiteral("US-1234") << false << 400
                                      << QByteArray(R"({"message":"Invalid  park"})") << QByteArray()
                                      << QStringLiteral("Spot not taken by POTA: Invalid park");
        QTest::newRow("wwbota") << int(StationSpot::WWBOTA) << QStringLiteral("B/G-0977 B/G-0978") << false
                                << 201 << QByteArray("{}")
                                << QByteArray(
                                       R"({"spotter":"N0CALL","call":"K1ABC","freq":14.0625,"mode":"CW",)"
                                       R"("comment":"B/G-0977 tnx B/G-0978","type":"Live"})")
                                << QStringLiteral("Spotted K1ABC on WWBOTA");
        QTest::newRow("wwbota qrt refuses")
            << int(StationSpot::WWBOTA) << QStringLiteral("B/G-0977") << true << 422
            << QByteArray(R"({"detail":[{"msg":"bad frequency"}]})")
            << QByteArray(R"({"spotter":"N0CALL","call":"K1ABC","freq":14.0625,"mode":"CW",)"
                          R"("comment":"B/G-0977 tnx B/G-0978","type":"QRT"})")
            << QStringLiteral("Spot not taken by WWBOTA: bad frequency");
        QTest::newRow("silent") << int(StationSpot::POTA) << QStringLiteral("US-1234") << false << 0
                                << QByteArray() << QByteArray()
                                << QStringLiteral("Spot not taken by POTA: no answer from POTA");
    }

    void webPosts()
    {
        QFETCH(int, target);
        QFETCH(QByteArray, body);
        const QByteArray path = target == StationSpot::POTA ? "/spot" : "/spots/";
        m_server->setRoute(path, fetched<QByteArray>("answer"), fetched<int>("status"));
        m_server->setHoldReplies(fetched<int>("status") == 0);
        const DxClusterPool none(this);
        auto p = poster(none);
        p->setAnswerTimeoutMs(300);
        QSignalSpy own(p.get(), &SpotPoster::ownSpotsPosted);
        SpotRequest r = request(fetched<QString>("reference"), StationSpot::Source(target),
                                QStringLiteral("tnx B/G-0978"));
        r.qrt = fetched<bool>("qrt");
        QString outcome;
        p->post(r, false, [&outcome](const SpotPoster::Outcome &o) {
            outcome = SpotPoster::outcomeText(QStringLiteral("K1ABC"), o);
        });
        QTRY_VERIFY(!outcome.isEmpty());
        QTEST(outcome, "outcome");
        QCOMPARE(m_server->requestCount(), 1);
        const HttpTestServer::Request sent = m_server->requests().first();
        QCOMPARE(sent.method + ' ' + sent.path, "POST " + path);
        QCOMPARE(sent.headers.value("user-agent"), QByteArray("Tallis/0.1 (Brightwater)"));
        QCOMPARE(sent.headers.value("content-type"), QByteArray("application/json"));
        if (!body.isEmpty())
            QCOMPARE(QJsonDocument::fromJson(sent.body).object(), QJsonDocument::fromJson(body).object());
        const bool taken = outcome.startsWith(QLatin1String("Spotted"));
        QCOMPARE(own.size(), taken ? 1 : 0);
        if (taken) // one table row per reference
            QCOMPARE(own.first().first().value<QList<StationSpot>>().size(), r.references().size());
    }

    // One "DX" line through one node: the first logged in, or the one chosen.
    void clusterPosts()
    {
        ClusterTestServer nodeA;
        ClusterTestServer nodeB;
        QVERIFY(nodeA.start() && nodeB.start());
        nodeA.setLoginReply("Hello N0CALL\r\n");
        nodeB.setLoginReply("Hello N0CALL\r\n");
        QObject owner; // the clients end with the test
        DxClusterPool pool(&owner);
        pool.rebuild(
            {{QStringLiteral("127.0.0.1"), nodeA.port()}, {QStringLiteral("127.0.0.1"), nodeB.port()}},
            QStringLiteral("N0CALL"), {});
        QVERIFY(!pool.clients().first()->sendLine(QStringLiteral("DX 14062.0 K1ABC"))); // not logged in
        pool.connectAll();
        QTRY_VERIFY(pool.clients().at(0)->isConnected() && pool.clients().at(1)->isConnected());
        auto p = poster(pool);
        QCOMPARE(p->loggedInNodes().size(), 2);

        SpotRequest r = request(QString(), StationSpot::DX, QStringLiteral("599\r\nDX 1.0 FAKE"));
        QCOMPARE(outcomeOf(*p, r, false), QStringLiteral("Spotted K1ABC on 127.0.0.1"));
        r.clusterNode = p->loggedInNodes().at(1);
        r.frequencyKhz = 7032.0;
        QCOMPARE(outcomeOf(*p, r, false), QStringLiteral("Spotted K1ABC on 127.0.0.1"));
        QTRY_COMPARE(nodeA.receivedCount("DX 14062.5 K1ABC 599 DX 1.0 FAKE"), 1);
        QTRY_COMPARE(nodeB.receivedCount("DX 7032.0 K1ABC 599 DX 1.0 FAKE"), 1);
        QCOMPARE(nodeB.receivedCount("DX 14062.5 K1ABC 599 DX 1.0 FAKE"), 0);
        QCOMPARE(nodeA.receivedCount("DX 1.0 FAKE"), 0);
    }

    // Asked again within five minutes and 1 kHz of a spot posted; not otherwise.
    void repeatAsksFirst_data()
    {
        QTest::addColumn<qint64>("laterMs");
        QTest::addColumn<double>("kHz");
        QTest::addColumn<QString>("reference");
        QTest::addColumn<bool>("repeat");
        QTest::newRow("same") << qint64(0) << 14062.5 << QStringLiteral("US-1234") << true;
        QTest::newRow("1 kHz, 4:59 later") << qint64(299000) << 14063.5 << QStringLiteral("us-1234") << true;
        QTest::newRow("5 min later") << qint64(300000) << 14062.5 << QStringLiteral("US-1234") << false;
        QTest::newRow("1.1 kHz away") << qint64(0) << 14063.6 << QStringLiteral("US-1234") << false;
        QTest::newRow("other park") << qint64(0) << 14062.5 << QStringLiteral("US-1235") << false;
    }

    void repeatAsksFirst()
    {
        m_server->setRoute("/spot", "{}");
        const DxClusterPool none(this);
        auto p = poster(none);
        qint64 now = k_now;
        p->setClock([&now] { return now; });
        const SpotRequest first = request(QStringLiteral("US-1234"), StationSpot::POTA);
        QVERIFY(!p->isRepeat(first));
        QSignalSpy own(p.get(), &SpotPoster::ownSpotsPosted);
        p->post(first, false, [](const SpotPoster::Outcome &) {});
        QVERIFY(own.wait());
        now += fetched<qint64>("laterMs");
        SpotRequest again = request(fetched<QString>("reference"), StationSpot::POTA);
        again.frequencyKhz = fetched<double>("kHz");
        QTEST(p->isRepeat(again), "repeat");
        if (p->isRepeat(again)) {
            QCOMPARE(outcomeOf(*p, again, false),
                     QStringLiteral("Spot not taken by POTA: already spotted in the last 5 minutes"));
            p->post(again, true, [](const SpotPoster::Outcome &) {});
            QTRY_COMPARE(m_server->requestCount("/spot"), 2);
        }
    }

    void prefill_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<double>("rigKhz");
        QTest::addColumn<double>("kHz");
        QTest::addColumn<int>("target");
        QTest::newRow("pota, no rig") << int(StationSpot::POTA) << 0.0 << 14061.0 << int(StationSpot::POTA);
        QTest::newRow("pota, rig") << int(StationSpot::POTA) << 14063.2 << 14063.2 << int(StationSpot::POTA);
        QTest::newRow("wwbota") << int(StationSpot::WWBOTA) << 0.0 << 14061.0 << int(StationSpot::WWBOTA);
        QTest::newRow("sota: the cluster")
            << int(StationSpot::SOTA) << 7032.0 << 7032.0 << int(StationSpot::DX);
        QTest::newRow("gma: the cluster") << int(StationSpot::GMA) << 0.0 << 14061.0 << int(StationSpot::DX);
    }

    void prefill()
    {
        StationSpot s = spot(QStringLiteral("K1AAA"), QStringLiteral("XX-0001"), 14061.0, k_now);
        s.source = StationSpot::Source(fetched<int>("source"));
        s.mode = QStringLiteral("SSB");
        const SpotRequest r = SpotRequest::fromSpot(s, fetched<double>("rigKhz"), QStringLiteral("tnx 73"));
        QTEST(r.frequencyKhz, "kHz");
        QTEST(int(r.target), "target");
        QCOMPARE(int(r.programme), int(s.source));
        QCOMPARE(r.callsign + r.reference + r.mode + r.comments, QStringLiteral("K1AAAXX-0001SSBtnx 73"));
    }

    // The command's own checks; the program's answer passes through as it comes.
    void apiCommand_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<bool>("local");
        QTest::addColumn<QString>("backendError");
        QTest::addColumn<QString>("outcome");
        const QByteArray ok = R"({"callsign":"K1ABC","freq_khz":14062.5,"mode":"CW","source":"POTA",)"
                              R"("reference":"US-1234","comments":"tnx"})";
        QTest::newRow("posted") << ok << true << QString() << QStringLiteral(R"({"posted_to":"POTA"})");
        QTest::newRow("remote peer") << ok << false << QString()
                                     << QStringLiteral("!spot.post is accepted from this computer only");
        QTest::newRow("refused") << ok << true << QStringLiteral("invalid callsign")
                                 << QStringLiteral("!invalid callsign");
        QTest::newRow("no call") << QByteArray(R"({"freq_khz":14062.5,"mode":"CW","source":"POTA"})") << true
                                 << QString() << QStringLiteral("!missing callsign");
        QTest::newRow("text kHz")
            << QByteArray(R"({"callsign":"K1ABC","freq_khz":"14062","mode":"CW","source":"DX"})") << true
            << QString() << QStringLiteral("!missing freq_khz");
        QTest::newRow("no mode") << QByteArray(R"({"callsign":"K1ABC","freq_khz":14062,"source":"DX"})")
                                 << true << QString() << QStringLiteral("!missing mode");
        QTest::newRow("sota") << QByteArray(
                                     R"({"callsign":"K1ABC","freq_khz":14062,"mode":"CW","source":"SOTA"})")
                              << true << QString() << QStringLiteral("!unknown source");
    }

    void apiCommand()
    {
        FakeApiBackend backend;
        backend.spotError = fetched<QString>("backendError");
        QString outcome;
        ApiContext context{backend,
                           2103,
                           1,
                           {},
                           fetched<bool>("local"),
                           [&outcome](const QString &error, const QByteArray &data) {
                               outcome = error.isEmpty() ? QString::fromUtf8(data) : QLatin1Char('!') + error;
                           }};
        try {
            QVERIFY(apiCommandTable()
                        .value(QStringLiteral("spot.post"))(
                            context, QJsonDocument::fromJson(fetched<QByteArray>("data")).object())
                        .isNull());
        } catch (const QString &error) {
            outcome = QLatin1Char('!') + error;
        }
        QTEST(outcome, "outcome");
        const bool reached = outcome.startsWith(QLatin1String("{")) || !backend.spotError.isEmpty();
        QCOMPARE(backend.calls,
                 reached ? QStringList{QStringLiteral("spot POTA K1ABC 14062.5 CW US-1234 tnx qrt=0 force=0")}
                         : QStringList());
    }

    // The operator's spot shows at once, beside its source's other rows, until the service's copy comes.
    void ownSpotUntilTheServiceCopy()
    {
        StationModel model;
        qint64 now = k_now;
        model.setClock([&now] { return now; });
        const StationSpot a = spot(QStringLiteral("K1AAA"), QStringLiteral("US-0001"), 14061.0, now - 60000);
        const StationSpot b = spot(QStringLiteral("K2BBB"), QStringLiteral("US-0002"), 14062.0, now - 60000);
        model.mergeSpots({a, b});
        const auto spotters = [&model] {
            QStringList list;
            for (const StationSpot &s : model.spots())
                list << s.callsign + QLatin1Char(':') + s.spotter;
            list.sort();
            return list.join(QLatin1Char(' '));
        };
        const auto own = [&now](const char *call, const char *ref, double kHz) {
            return spot(QLatin1String(call), QLatin1String(ref), kHz, now, QStringLiteral("N0CALL"));
        };
        model.addOwnSpots({own("K2BBB", "US-0002", 14062.4), own("K3CCC", "US-0003", 14063.0),
                           own("K4DDD", "US-0004", 14064.0)});
        QCOMPARE(spotters(), QStringLiteral("K1AAA:W1AW K2BBB:N0CALL K3CCC:N0CALL K4DDD:N0CALL"));
        now += 60000;
        // A fetch that brings a spot of the same key ends the own row; the others wait for theirs.
        model.mergeSpots({a, b});
        QCOMPARE(spotters(), QStringLiteral("K1AAA:W1AW K2BBB:W1AW K3CCC:N0CALL K4DDD:N0CALL"));
        const StationSpot copy = spot(QStringLiteral("K3CCC"), QStringLiteral("US-0003"), 14063.0,
                                      now - 120000, QStringLiteral("N0CALL-#"));
        model.mergeSpots({a, b, copy}); // the copy takes the own row's place, though its time is older
        QCOMPARE(spotters(), QStringLiteral("K1AAA:W1AW K2BBB:W1AW K3CCC:N0CALL-# K4DDD:N0CALL"));
        now += StationModel::k_ownSpotHoldSecs * 1000;
        model.mergeSpots({a, b, copy}); // never listed: the table says what the service says
        QCOMPARE(spotters(), QStringLiteral("K1AAA:W1AW K2BBB:W1AW K3CCC:N0CALL-#"));
    }

    // A test build posts nowhere but to the loopback stand-ins it was given.
    void postingAddressesAreInjected()
    {
        const QList<QUrl> urls = services().postingUrls();
        QCOMPARE(urls.size(), 2);
        for (const QUrl &url : urls)
            QCOMPARE(url.host(), QStringLiteral("127.0.0.1"));
        QCOMPARE(urls.at(0).path() + urls.at(1).path(), QStringLiteral("/spot/spots/"));
    }

    // S on a selected row, Enter in the dialog: the spot reaches the stand-in once, the status bar says so,
    // and the program's own request for the same spot is then a repeat.
    void respotFromTheWindow()
    {
        writeSettings(R"({"callsign":"N0CALL","spotComment":"tnx QSO"})");
        m_server->setRoute("/spot/", potaSpots(QStringLiteral("K1AAA US-1234 14061")));
        m_server->setRoute("/spot", "{}");
        MainWindow w(services());
        QTRY_COMPARE_WITH_TIMEOUT(table(w)->model()->rowCount(), 1, 5000);
        QTest::keyClick(&w, Qt::Key_J); // the operator selects the row
        QString shown;
        QTimer::singleShot(0, &w, [&shown] {
            auto *dialog = qobject_cast<SpotDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            shown = dialog->findChild<QLineEdit *>(QStringLiteral("spotCommentEdit"))->text();
            QTest::keyClick(dialog, Qt::Key_Return);
            if (dialog->isVisible())
                dialog->reject(); // refused: the test fails rather than waits
        });
        QTest::keyClick(&w, Qt::Key_S);
        QCOMPARE(shown, QStringLiteral("tnx QSO"));
        QTRY_COMPARE(w.statusBar()->currentMessage(), QStringLiteral("Spotted K1AAA on POTA"));
        QCOMPARE(m_server->requestCount("/spot"), 1);
        const StationSpot own =
            model(w)->spots().constFirst(); // in the place of the feed's row, keeping its locator
        QCOMPARE(own.spotter + QLatin1Char(' ') + own.grid, QStringLiteral("N0CALL FN31pr"));

        // Again from the table: the dialog asks first, and No posts nothing.
        QString question;
        QTimer::singleShot(0, &w, [&question] {
            auto *dialog = qobject_cast<SpotDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            QTimer::singleShot(0, dialog, [&question] {
                if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                    question = box->text();
                    box->button(QMessageBox::No)->click();
                }
            });
            QTest::keyClick(dialog, Qt::Key_Return); // returns once the question is answered
            dialog->reject();
        });
        QTest::keyClick(&w, Qt::Key_S);
        QCOMPARE(question, QStringLiteral("Spot K1AAA again?"));
        QCOMPARE(m_server->requestCount("/spot"), 1);

        ApiSpotPost post;
        post.spot = spot(QStringLiteral("K1AAA"), QStringLiteral("US-1234"), 14061.0, k_now);
        post.spot.mode = QStringLiteral("CW");
        QString answer;
        w.apiPostSpot(post, [&answer](const QString &to, const QString &error) { answer = to + error; });
        QCOMPARE(answer, QStringLiteral("already spotted in the last 5 minutes"));
    }
};

TALLIS_TEST_MAIN(TestSpotting)
#include "tst_spotting.moc"
