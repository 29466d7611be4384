#include "app/selectionkeeper.h"
#include "app/spotingestor.h"
#include "model/filterstate.h"
#include "model/spotfilterproxymodel.h"
#include "sources/dxclusterfetcher.h"
#include "sources/dxclusterpool.h"
#include "support/clustertestserver.h"
#include "support/modeltest.h"
#include "support/testmain.h"

#include <QJsonDocument>
#include <QPointer>
#include <QSignalSpy>

// The spot ingestor, the selection keeper, the DX cluster pool and the filter state, over a real model.
class TestSpotIngestor final : public ModelTest
{
    Q_OBJECT

    const QDateTime m_clockTime = QDateTime(QDate(2024, 5, 1), QTime(12, 34, 56));

    static QJsonObject parse(const QByteArray &json) { return QJsonDocument::fromJson(json).object(); }
    // The API's view plus the search text, which the API only ever sets.
    static QJsonObject apiView(const FilterState &state)
    {
        QJsonObject json = state.toApiJson();
        json.insert(QStringLiteral("search"), state.searchText);
        return json;
    }

    // count spots of one source, each a station of its own
    QList<StationSpot> batch(StationSpot::Source source, int count) const
    {
        QList<StationSpot> list;
        const QString name = StationSpot::sourceName(source);
        for (int i = 0; i < count; ++i)
            list << spot(QStringLiteral("%1 %1%2 %1-%2 %3").arg(name).arg(i).arg(7000 + i));
        return list;
    }

private slots:
    void countsPerSource()
    {
        SpotIngestor ingestor(m_model);
        ingestor.setClock([this] { return m_clockTime; });
        for (int source = 0; source < StationSpot::k_sourceCount; ++source) { // sizes 1 to 10
            QList<StationSpot> spots = batch(StationSpot::Source(source), source + 1);
            if (source == StationSpot::POTA)
                spots.last() = spots.first(); // two delivered, one row in the table
            ingestor.receive(spots);
        }
        QTRY_COMPARE(m_model->rowCount(), 54); // DX lines are merged once the event loop turns
        const QString counts = QStringLiteral("Showing 9 of 54  S:1 P:2 W:3 WB:4 B:5 DX:6 G:7 R:8 Z:9 SI:10");
        QCOMPARE(ingestor.countsText(9), counts);
        QCOMPARE(ingestor.lastRefresh(StationSpot::POTA), m_clockTime);
        QVERIFY(!ingestor.lastRefresh(StationSpot::BOTA).isValid());
        QVERIFY(!ingestor.lastRefresh(StationSpot::DX).isValid());
        QCOMPARE(ingestor.lastBatchSize(StationSpot::DX), 0);
        QCOMPARE(ingestor.lastBatchSize(StationSpot::RBN), 0);

        ingestor.setClock([] { return QDateTime(QDate(2030, 1, 1), QTime(0, 0)); });
        ingestor.receive({});
        QCOMPARE(ingestor.lastRefresh(StationSpot::POTA), m_clockTime);
        QCOMPARE(ingestor.countsText(9), counts);
    }

    void pendingFetches_data() // '+' a fetch started, 'b' a batch came, 'e' a fetch failed
    {
        QTest::addColumn<QString>("events");
        QTest::addColumn<int>("pending");
        QTest::addColumn<int>("answered");
        QTest::newRow("one of two answered") << QStringLiteral("++b") << 1 << 0;
        QTest::newRow("both answered") << QStringLiteral("++bb") << 0 << 1;
        QTest::newRow("last one failed") << QStringLiteral("++be") << 0 << 0;
        QTest::newRow("errors stop at 0") << QStringLiteral("+ee") << 0 << 0;
        QTest::newRow("unannounced batch") << QStringLiteral("b") << 0 << 1;
        QTest::newRow("after a failure") << QStringLiteral("+e+b") << 0 << 1;
    }

    void pendingFetches()
    {
        SpotIngestor ingestor(m_model);
        ingestor.setClock([this] { return m_clockTime; });
        QSignalSpy allAnswered(&ingestor, &SpotIngestor::allAnswered);
        for (const QChar event : fetched<QString>("events")) {
            if (event == QLatin1Char('+'))
                ingestor.noteFetchStarted();
            else if (event == QLatin1Char('e'))
                ingestor.noteFetchError();
            else
                ingestor.receive(batch(StationSpot::POTA, 1));
        }
        QTEST(ingestor.pendingFetches(), "pending");
        QTEST(int(allAnswered.size()), "answered");
        if (!allAnswered.isEmpty())
            QCOMPARE(allAnswered.first().first().toDateTime(), m_clockTime);
    }

    void dxLinesOfOneReadMergeOnce()
    {
        SpotIngestor ingestor(m_model);
        QList<int> rowsBeforeMerge;
        connect(&ingestor, &SpotIngestor::aboutToMerge, this,
                [&] { rowsBeforeMerge << m_model->rowCount(); });
        QSignalSpy merged(&ingestor, &SpotIngestor::merged);
        QSignalSpy allAnswered(&ingestor, &SpotIngestor::allAnswered);
        for (int i = 0; i < 3001; ++i)
            ingestor.noteFetchStarted();
        for (const StationSpot &dx : batch(StationSpot::DX, 3000))
            ingestor.receive({dx});
        QCOMPARE(merged.size(), 0);
        QTRY_COMPARE(merged.size(), 1);
        QCOMPARE(rowsBeforeMerge, QList<int>{0});
        QCOMPARE(merged.first().first().value<QList<StationSpot>>().size(), 3000);
        QCOMPARE(m_model->rowCount(), 3000);
        QCOMPARE(ingestor.pendingFetches(), 1); // every line was an answer
        QCOMPARE(allAnswered.size(), 0);
    }

    void selectionRestore_data() // spots A, B and C, newest first; N is newer still
    {
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("after");
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("next");     // J's row once a vanished spot's selection is lost
        QTest::addColumn<int>("previous"); // K's
        QTest::newRow("moved down") << QStringLiteral("B") << QStringLiteral("NABC") << 2 << 3 << 1;
        QTest::newRow("vanished") << QStringLiteral("B") << QStringLiteral("AC") << -1 << 1 << 0;
        QTest::newRow("vanished: clamped") << QStringLiteral("C") << QStringLiteral("A") << -1 << 0 << 0;
        QTest::newRow("empty table") << QStringLiteral("A") << QString() << -1 << -1 << -1;
        QTest::newRow("nothing selected") << QString() << QStringLiteral("ABC") << -1 << 0 << 2;
    }

    void selectionRestore()
    {
        QFETCH(QString, selected);
        QFETCH(QString, after);
        const auto batchOf = [this](const QString &calls) {
            QList<StationSpot> list;
            for (const QChar call : calls) {
                const int age = call == QLatin1Char('N') ? 30 : 60 + 30 * (call.unicode() - 'A');
                list << spot(
                    QStringLiteral("POTA %1 US-%1 %2 %3").arg(call).arg(14000 + call.unicode()).arg(age));
            }
            return list;
        };
        m_model->mergeSpots(batchOf(QStringLiteral("ABC")));
        SpotFilterProxyModel proxy;
        proxy.setSourceModel(m_model);
        SelectionKeeper keeper;
        if (!selected.isEmpty()) {
            const QString key = batchOf(selected).first().key();
            keeper.setSelectedKey(key);
            keeper.rememberRow(SelectionKeeper::proxyRowForKey(proxy, *m_model, key));
            QCOMPARE(SelectionKeeper::modelRowForKey(*m_model, key), selected.front().unicode() - 'A');
        }
        if (after.isEmpty())
            m_model->clearSpots();
        else
            m_model->mergeSpots(batchOf(after));
        const int row = keeper.rowToRestore(proxy, *m_model);
        QTEST(row, "row");
        if (row < 0)
            keeper.lose();
        QTEST(keeper.stepTarget(1, proxy.rowCount(), row), "next");
        QTEST(keeper.stepTarget(-1, proxy.rowCount(), row), "previous");
    }

    // Wiring, both connected and disconnecting all are the window's two-cluster test.
    void dxPool()
    {
        ClusterTestServer node;
        ClusterTestServer closed;
        QVERIFY(node.start() && closed.start());
        node.setLoginReply("Hello K1ABC\r\n");
        closed.stopListening();
        DxClusterPool pool(this);
        const QString local = QStringLiteral("127.0.0.1");
        pool.rebuild({{local, closed.port()}, {local, node.port()}}, QStringLiteral("K1ABC"), [](auto *) {});
        pool.connectAll();
        QTRY_VERIFY(pool.anyConnected()); // one of the two is enough
        const QPointer<DxClusterFetcher> old = pool.clients().first();
        pool.rebuild({}, QStringLiteral("K1ABC"), [](auto *) {});
        QVERIFY(pool.clients().isEmpty());
        QTRY_VERIFY(old.isNull());
    }

    void bandChoice_data()
    {
        QTest::addColumn<QStringList>("unticked");
        QTest::addColumn<QString>("shown");
        QStringList every;
        for (const Band &band : k_bands)
            every << QString::fromLatin1(band.name);
        QTest::newRow("all ticked: no band test")
            << QStringList() << QStringLiteral("K1FORTY K1OUT K1TWENTY");
        QTest::newRow("40m off") << QStringList{QStringLiteral("40m")} << QStringLiteral("K1TWENTY");
        QTest::newRow("none ticked") << every << QString();
    }

    void bandChoice()
    {
        mergeSteps("POTA K1OUT US-1 5000, POTA K1TWENTY US-2 14062, POTA K1FORTY US-3 7030");
        FilterState state;
        state.setDisabledBandNames(fetched<QStringList>("unticked"));
        state.applyTo(*m_proxy);
        QTEST(shown(), "shown");
    }

    // The API's view of the state, key by key.
    void apiJson()
    {
        FilterState state;
        state.sources = {{false, true, false, false, true, true, false, true, false, true}};
        state.modes = {{false, true, true, false, false}};
        state.statusIndex = 3;
        state.maxAgeMins = 45;
        QCOMPARE(state.toApiJson(), parse(R"({"sota": false, "pota": true, "wwff": false, "wwbota": false,
            "bota": true, "dx": true, "gma": false, "rbn": true, "zlota": false, "siota": true, "mode_ssb": false, "mode_cw": true, "mode_am": true,
            "mode_fm": false, "mode_other": false, "status_mode": 2, "max_age_mins": 45, "hide_worked": false})"));
    }

    void apiMergeTakesPresentKeys_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("changed"); // in the state's API view afterwards
        const char *rows[][3] = {
            {"nothing", "{}", "{}"},
            {"a source", R"({"wwff": false})", nullptr}, // null: changed as asked
            {"a mode", R"({"mode_fm": false})", nullptr},
            {"status", R"({"status_mode": 3})", nullptr},
            {"status no entry has", R"({"status_mode": 0})", "{}"},
            {"age", R"({"max_age_mins": 90})", nullptr},
            {"age below 1", R"({"max_age_mins": 0})", R"({"max_age_mins": 1})"},
            {"age above 720", R"({"max_age_mins": 5000})", R"({"max_age_mins": 720})"},
            {"search", R"({"search": "K1ABC"})", nullptr},
        };
        for (const auto &row : rows)
            QTest::newRow(row[0]) << QByteArray(row[1]) << QByteArray(row[2] ? row[2] : row[1]);
    }

    void apiMergeTakesPresentKeys()
    {
        FilterState state;
        state.statusIndex = 2;
        QJsonObject expected = apiView(state);
        const QJsonObject changes = parse(fetched<QByteArray>("changed"));
        for (auto it = changes.begin(); it != changes.end(); ++it)
            expected.insert(it.key(), it.value());
        state.mergeApiJson(parse(fetched<QByteArray>("request")));
        QCOMPARE(apiView(state), expected);
    }

    // Every setter re-runs the filter, which drops a spot that has aged out since the last run.
    void applyToSetsOnlyWhatDiffers()
    {
        m_model->mergeSpots(spots(QStringLiteral("POTA K1ABC US-0001 14062 600")));
        FilterState state;
        state.searchText = QStringLiteral("  k1  ");
        state.applyTo(*m_proxy);
        QCOMPARE(m_proxy->rowCount(), 1);
        m_now += 25 * 60 * 1000; // 35 minutes old now
        state.applyTo(*m_proxy);
        QCOMPARE(m_proxy->rowCount(), 1);

        state.potaPrograms = QStringList{QStringLiteral("US"), QStringLiteral("VE")};
        state.sotaAssociations = QStringList{QStringLiteral("W7A")};
        state.applyTo(*m_proxy); // sources, modes, bands, status and age are the window's stored choices
        QCOMPARE(m_proxy->potaProgramFilter(), (QSet<QString>{QStringLiteral("US"), QStringLiteral("VE")}));
        QCOMPARE(m_proxy->sotaAssociationFilter(), QSet<QString>{QStringLiteral("W7A")});
        QCOMPARE(m_proxy->textFilter(), QStringLiteral("k1"));
    }
};

TALLIS_TEST_MAIN(TestSpotIngestor)
#include "tst_spotingestor.moc"
