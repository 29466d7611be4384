#include "app/selectionkeeper.h"
#include "app/spotingestor.h"
#include "model/filterstate.h"
#include "model/spotfilterproxymodel.h"
#include "sources/dxclusterfetcher.h"
#include "sources/dxclusterpool.h"
#include "sources/potaspotfetcher.h"
#include "sources/wwffspotfetcher.h"
#include "support/clustertestserver.h"
#include "support/httptestserver.h"
#include "support/modeltest.h"
#include "support/testmain.h"

#include <QPointer>
#include <QSignalSpy>

// The spot ingestor, the selection keeper and the DX cluster pool, over a real model.
class TestSpotIngestor final : public ModelTest
{
    Q_OBJECT

    const QDateTime m_clockTime = QDateTime(QDate(2024, 5, 1), QTime(12, 34, 56));

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
        for (int source = 0; source < StationSpot::k_sourceCount; ++source) { // sizes 1 to 7
            QList<StationSpot> spots = batch(StationSpot::Source(source), source + 1);
            if (source == StationSpot::POTA)
                spots.last() = spots.first(); // two delivered, one row in the table
            ingestor.receive(spots);
        }
        QTRY_COMPARE(m_model->rowCount(), 27); // DX lines are merged once the event loop turns
        const QString counts = QStringLiteral("Showing 9 of 27  S:1 P:2 W:3 WB:4 B:5 DX:6 G:7");
        QCOMPARE(ingestor.countsText(9), counts);
        QCOMPARE(ingestor.lastRefresh(StationSpot::POTA), m_clockTime);
        QVERIFY(!ingestor.lastRefresh(StationSpot::BOTA).isValid());
        QVERIFY(!ingestor.lastRefresh(StationSpot::DX).isValid());
        QCOMPARE(ingestor.lastBatchSize(StationSpot::DX), 0);

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
        QFETCH(QString, events);
        SpotIngestor ingestor(m_model);
        ingestor.setClock([this] { return m_clockTime; });
        QSignalSpy allAnswered(&ingestor, &SpotIngestor::allAnswered);
        for (const QChar event : events) {
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

    void webSourcesFollowTheSourceChoice()
    {
        HttpTestServer server;
        QVERIFY(server.start());
        server.setRoute("/spot/", "[]");
        PotaSpotFetcher pota(nullptr, server.url());
        WwffSpotFetcher wwff(nullptr, server.url());
        SpotIngestor ingestor(m_model);
        ingestor.addWebSource(StationSpot::POTA, &pota);
        ingestor.addWebSource(StationSpot::WWFF, &wwff);
        QSignalSpy wwffStarted(&wwff, &SpotFetcher::fetchStarted);
        FilterState filter;
        filter.sources[StationSpot::WWFF] = false;

        ingestor.refreshAll(filter);
        QTRY_COMPARE(server.requestCount("/spot/"), 1);
        QCOMPARE(server.requestCount(), 1);
        QCOMPARE(wwffStarted.size(), 0);

        wwff.startAutoRefresh(60);
        ingestor.applySourceChoice(filter, 300);
        QVERIFY(pota.isAutoRefreshing());
        QCOMPARE(pota.refreshIntervalMs(), 300000);
        QVERIFY(!wwff.isAutoRefreshing());
    }

    void selectionRestore_data() // spots A, B and C, newest first; N is newer still
    {
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("after");
        QTest::addColumn<int>("row");
        QTest::newRow("moved down") << QStringLiteral("B") << QStringLiteral("NABC") << 2;
        QTest::newRow("vanished: old row") << QStringLiteral("B") << QStringLiteral("AC") << 1;
        QTest::newRow("vanished: clamped") << QStringLiteral("C") << QStringLiteral("A") << 0;
        QTest::newRow("empty table") << QStringLiteral("A") << QString() << -1;
        QTest::newRow("nothing selected") << QString() << QStringLiteral("ABC") << -1;
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
        QTEST(keeper.rowToRestore(proxy, *m_model), "row");
    }

    void restoringGuard()
    {
        SelectionKeeper keeper;
        {
            const SelectionKeeper::Restoring restoring(keeper);
            QVERIFY(keeper.isRestoring());
        }
        QVERIFY(!keeper.isRestoring());
    }

    void dxPool()
    {
        ClusterTestServer node;
        ClusterTestServer closed;
        QVERIFY(node.start() && closed.start());
        node.setLoginReply("Hello K1ABC\r\n");
        closed.stopListening();
        QObject owner;
        DxClusterPool pool(&owner);
        QList<DxClusterFetcher *> wired;
        const auto wire = [&wired](DxClusterFetcher *client) { wired << client; };
        const QString local = QStringLiteral("127.0.0.1");
        pool.rebuild({{local, closed.port()}, {local, node.port()}}, QStringLiteral("K1ABC"), wire);
        QCOMPARE(wired, pool.clients());
        QCOMPARE(pool.clients().size(), 2);
        QCOMPARE(pool.clients().at(1)->port(), node.port());
        QCOMPARE(pool.clients().at(1)->callsign(), QStringLiteral("K1ABC"));
        QCOMPARE(pool.clients().at(1)->parent(), &owner);
        QVERIFY(!pool.anyConnected());

        pool.connectAll();
        QTRY_VERIFY(pool.anyConnected()); // one of the two is enough
        pool.disconnectAll();
        QVERIFY(!pool.anyConnected());
        QTRY_COMPARE(node.clientCount(), 0);

        const QPointer<DxClusterFetcher> old = pool.clients().first();
        pool.rebuild({}, QStringLiteral("K1ABC"), wire);
        QVERIFY(pool.clients().isEmpty());
        QTRY_VERIFY(old.isNull());
    }
};

TALLIS_TEST_MAIN(TestSpotIngestor)
#include "tst_spotingestor.moc"
