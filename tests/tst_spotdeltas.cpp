#include "api/spotdeltatracker.h"
#include "api/wsserver.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "support/apiclient.h"
#include "support/fakeapibackend.h"
#include "support/testmain.h"

#include <QJsonArray>
#include <QMap>

#include <memory>

namespace {

constexpr qint64 k_now = 1'790'000'000'000; // a fixed clock, milliseconds

StationSpot spot(StationSpot::Source source, const QString &call, const QString &ref, double khz, int ageMins)
{
    StationSpot s;
    s.source = source;
    s.callsign = call;
    s.reference = ref;
    s.frequencyKhz = khz;
    s.mode = QStringLiteral("CW");
    s.spotTime = QDateTime::fromMSecsSinceEpoch(k_now - ageMins * 60'000LL, Qt::UTC);
    return s;
}

StationSpot dx(const QString &call, double khz, int ageMins = 0)
{
    return spot(StationSpot::DX, call, QString(), khz, ageMins);
}

// A delta client's table: the snapshot, then every "spots.changed" applied in
// order; false once a version was skipped.
struct Replica
{
    QMap<QString, QJsonObject> spots;
    qint64 version = -1;
    bool consecutive = true;

    void apply(const QJsonObject &event)
    {
        const QString name = event.value(QLatin1String("event")).toString();
        const QJsonObject data = event.value(QLatin1String("data")).toObject();
        const qint64 v = data.value(QLatin1String("version")).toInteger();
        if (name == QLatin1String("spots.snapshot")) {
            spots.clear();
            for (const QJsonValue &s : data.value(QLatin1String("spots")).toArray())
                spots.insert(s[QLatin1String("key")].toString(), s.toObject());
        } else if (name == QLatin1String("spots.changed")) {
            consecutive = consecutive && v == version + 1;
            for (const char *list : {"added", "updated"}) {
                for (const QJsonValue &s : data.value(QLatin1String(list)).toArray())
                    spots.insert(s[QLatin1String("key")].toString(), s.toObject());
            }
            for (const QJsonValue &key : data.value(QLatin1String("removed")).toArray())
                spots.remove(key.toString());
        } else {
            return;
        }
        version = v;
    }
    static Replica of(const ApiClient &client)
    {
        Replica r;
        for (const QJsonObject &e : client.events)
            r.apply(e);
        return r;
    }
};

QMap<QString, QJsonObject> byKey(const QJsonObject &spotsGetReply)
{
    QMap<QString, QJsonObject> map;
    for (const QJsonValue &s : spotsGetReply[QLatin1String("data")][QLatin1String("spots")].toArray())
        map.insert(s[QLatin1String("key")].toString(), s.toObject());
    return map;
}

int eventCount(const ApiClient &client, const char *name)
{
    return int(client.eventData(QLatin1String(name)).size());
}

} // namespace

// The API's delta clients against a real model and filter: what they rebuild
// from a snapshot and the changes must be what "spots.get" answers.
class TestSpotDeltas final : public QObject
{
    Q_OBJECT

    std::unique_ptr<FakeApiBackend> m_backend;
    std::unique_ptr<StationModel> m_model;
    std::unique_ptr<SpotFilterProxyModel> m_proxy;
    std::unique_ptr<WsServer> m_server;
    qint64 m_now = k_now;
    int m_asked = 0;

    void showVisible()
    {
        m_backend->visible.clear();
        for (int row = 0; row < m_proxy->rowCount(); ++row)
            m_backend->visible << m_model->spotAt(m_proxy->mapToSource(m_proxy->index(row, 0)).row());
    }

    QJsonObject ask(ApiClient &client, const QByteArray &cmd, const QByteArray &data = "{}")
    {
        const QString id = QString::number(++m_asked);
        client.send(R"({"type":"cmd","id":")" + id.toUtf8() + R"(","cmd":")" + cmd + R"(","data":)" + data +
                    "}");
        [&] { QTRY_VERIFY(!client.reply(id).isEmpty()); }();
        return client.reply(id);
    }

    void connectClient(ApiClient &client, bool delta)
    {
        QVERIFY(client.connectTo(m_server->port()));
        QTRY_COMPARE(eventCount(client, "hello"), 1);
        if (delta)
            QVERIFY(
                ask(client, "spots.subscribe", R"({"mode":"delta"})").value(QLatin1String("ok")).toBool());
    }

    void merge(const QList<StationSpot> &batch) { m_model->mergeSpots(batch); }

private slots:
    void init()
    {
        m_now = k_now;
        m_backend = std::make_unique<FakeApiBackend>();
        m_model = std::make_unique<StationModel>();
        m_model->setClock([this] { return m_now; });
        m_proxy = std::make_unique<SpotFilterProxyModel>();
        m_proxy->setSourceModel(m_model.get());
        m_proxy->setSourceFilter(true, true, true, true, true, true, true);
        m_server = std::make_unique<WsServer>(m_backend.get());
        m_server->setSpotTracker(new SpotDeltaTracker(m_model.get(), m_proxy.get(), m_server.get()));
        // What the window does: the table the API reads, and a full table after a merge.
        connect(m_model.get(), &StationModel::spotsMerged, this, [this] { showVisible(); });
        connect(m_model.get(), &StationModel::dataChanged, this, [this] { showVisible(); });
        connect(m_proxy.get(), &SpotFilterProxyModel::visibilityRulesChanged, this,
                [this] { showVisible(); });
        connect(m_model.get(), &StationModel::spotsMerged, m_server.get(), &WsServer::pushSpotsUpdated);
        QVERIFY(m_server->listen(0, QStringLiteral("127.0.0.1")));
    }

    void cleanup()
    {
        m_server.reset();
        m_proxy.reset();
        m_model.reset();
        m_backend.reset();
    }

    void mergeChangeSet_data()
    {
        QTest::addColumn<QList<StationSpot>>("batch");
        QTest::addColumn<QString>("expected"); // added;updated;removed keys
        const auto row = [](const char *name, const StationSpot &s, const char *expected) {
            QTest::newRow(name) << QList<StationSpot>{s} << QString::fromLatin1(expected);
        };
        row("new call", dx(QStringLiteral("K9NEW"), 7030), "K9NEW||7030;;");
        row("same key again", dx(QStringLiteral("JA1XYZ"), 14025.4), ";JA1XYZ||14025;");
        row("moved into the next kHz", dx(QStringLiteral("JA1XYZ"), 14026.1), "JA1XYZ||14026;;JA1XYZ||14025");
        row("moved band", dx(QStringLiteral("JA1XYZ"), 7025), "JA1XYZ||7025;;JA1XYZ||14025");
        row("a source's new picture",
            spot(StationSpot::POTA, QStringLiteral("K2B"), QStringLiteral("US-2"), 7062, 1),
            "K2B|US-2|7062;;K1A|US-1|14062");
        row("too old to stay", dx(QStringLiteral("OLD"), 7001, 181), ";;");
    }

    void mergeChangeSet()
    {
        QFETCH(QList<StationSpot>, batch);
        merge({spot(StationSpot::POTA, QStringLiteral("K1A"), QStringLiteral("US-1"), 14062, 5),
               dx(QStringLiteral("JA1XYZ"), 14025.0, 2)});
        merge(batch);
        const StationModel::MergeChanges &c = m_model->lastMergeChanges();
        const auto keys = [this](const QList<int> &rows) {
            QStringList k;
            for (const int row : rows)
                k << m_model->spotAt(row).key();
            return k.join(QLatin1Char(','));
        };
        QCOMPARE(keys(c.addedRows) + QLatin1Char(';') + keys(c.updatedRows) + QLatin1Char(';') +
                     c.removedKeys.join(QLatin1Char(',')),
                 fetched<QString>("expected"));
    }

    void reconstruction_data()
    {
        QTest::addColumn<int>("scenario");
        QTest::newRow("flood") << 0;
        QTest::newRow("marks under the status filter") << 1;
        QTest::newRow("filter change") << 2;
        QTest::newRow("spots age out at a merge") << 3;
        QTest::newRow("cleared table") << 4;
    }

    void reconstruction()
    {
        QFETCH(int, scenario);
        for (int i = 0; i < 40; ++i)
            merge({dx(QStringLiteral("DL%1AA").arg(i), 14000 + i * 3, i % 25)});
        merge({spot(StationSpot::POTA, QStringLiteral("K1A"), QStringLiteral("US-1"), 14062, 5),
               spot(StationSpot::POTA, QStringLiteral("K2B"), QStringLiteral("US-2"), 7062, 6)});
        ApiClient delta;
        ApiClient full;
        connectClient(delta, true);
        connectClient(full, false);
        QTRY_COMPARE(eventCount(delta, "spots.snapshot"), 1);
        switch (scenario) {
        case 0: // calls move, repeat, come and go; a web source replaces its picture
            for (int i = 0; i < 300; ++i)
                merge({dx(QStringLiteral("DL%1AA").arg(i % 60), 14000 + (i * 7) % 90 + (i % 3) * 0.4)});
            merge({spot(StationSpot::POTA, QStringLiteral("K3C"), QStringLiteral("US-3"), 21062, 0)});
            break;
        case 1: // the default status filter hides contacted spots
            m_model->markSpot(QStringLiteral("K1A|US-1|14062"), StationSpot::Contacted);
            m_model->markSpot(QStringLiteral("K2B|US-2|7062"), StationSpot::Heard);
            m_model->markSimilarSpots(QStringLiteral("DL3AA"), 14009, StationSpot::NotHeard);
            break;
        case 2:
            m_proxy->setSourceFilter(true, true, true, true, true, false, true);
            merge({dx(QStringLiteral("G4XYZ"), 3550)});
            m_proxy->setTextFilter(QStringLiteral("K2"));
            break;
        case 3: // the proxy drops them at the reset without a row signal
            m_now += 10 * 60'000;
            merge({dx(QStringLiteral("G4XYZ"), 3550)});
            break;
        case 4:
            m_model->clearSpots();
            showVisible();
            merge({dx(QStringLiteral("G4XYZ"), 3550)});
            break;
        }
        const auto expected = [&] { return byKey(ask(full, "spots.get")); };
        QTRY_COMPARE(Replica::of(delta).spots, expected());
        QVERIFY(Replica::of(delta).consecutive);
        QCOMPARE(Replica::of(delta).version, m_server->spotsVersion());
        // Each kind of client gets its own events only.
        QCOMPARE(eventCount(full, "spots.changed") + eventCount(full, "spots.snapshot"), 0);
        QCOMPARE(eventCount(delta, "spots.updated"), 0);
    }

    void stalledClientGetsSnapshot()
    {
        merge({dx(QStringLiteral("K1ABC"), 14025)});
        ApiClient stalled;
        ApiClient live;
        connectClient(stalled, true);
        connectClient(live, true);
        bool stuck = true;
        const QWebSocket *stalledPeer = nullptr;
        m_server->setBacklogProbe([&](const QWebSocket *socket) -> qint64 {
            if (!stalledPeer && socket->peerPort() == stalled.socket.localPort())
                stalledPeer = socket;
            return socket == stalledPeer && stuck ? WsServer::k_spotsBacklogBytes + 1 : 0;
        });
        merge({dx(QStringLiteral("K2DEF"), 7030)});
        QTRY_COMPARE(eventCount(live, "spots.changed"), 1);
        merge({dx(QStringLiteral("K3GHI"), 3530)});
        QTRY_COMPARE(eventCount(live, "spots.changed"), 2);
        QCOMPARE(eventCount(stalled, "spots.changed"), 0);
        stuck = false;
        merge({dx(QStringLiteral("K4JKL"), 1830)});
        QTRY_COMPARE(eventCount(stalled, "spots.snapshot"), 2);
        QTRY_COMPARE(Replica::of(stalled).spots, Replica::of(live).spots);
        QCOMPARE(Replica::of(stalled).version, Replica::of(live).version);
    }

    void subscribeModes_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QString>("error");
        QTest::addColumn<bool>("tables"); // "spots.updated" after a merge
        QTest::newRow("delta") << QByteArray(R"({"mode":"delta"})") << QString() << false;
        QTest::newRow("back to full") << QByteArray(R"({"mode":"full"})") << QString() << true;
        QTest::newRow("unknown mode") << QByteArray(R"({"mode":"fast"})")
                                      << QStringLiteral("mode must be \"delta\" or \"full\"") << false;
    }

    void subscribeModes()
    {
        QFETCH(QByteArray, data);
        ApiClient client;
        connectClient(client, true);
        const QJsonObject reply = ask(client, "spots.subscribe", data);
        QCOMPARE(reply.value(QLatin1String("error")).toString(), fetched<QString>("error"));
        merge({dx(QStringLiteral("K1ABC"), 14025)});
        QTRY_COMPARE(eventCount(client, "spots.updated") + eventCount(client, "spots.changed"), 1);
        QCOMPARE(eventCount(client, "spots.updated"), fetched<bool>("tables") ? 1 : 0);
    }
};

TALLIS_TEST_MAIN(TestSpotDeltas)
#include "tst_spotdeltas.moc"
