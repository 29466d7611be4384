#include "model/stationmodel.h"
#include "support/testmain.h"

#include <QAbstractItemModelTester>
#include <QHash>
#include <QRandomGenerator>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

StationSpot makeSpot(StationSpot::Source source, const QString &call, const QString &ref, double khz,
                     const QDateTime &time)
{
    StationSpot s;
    s.source = source;
    s.callsign = call;
    s.reference = ref;
    s.frequencyKhz = khz;
    s.spotTime = time;
    return s;
}

// The grouping as a plain pass over every pair, the reference for the fast one.
void pairwiseGroups(QList<StationSpot> &spots)
{
    for (StationSpot &s : spots)
        s.groupId = 0;
    int next = 1;
    for (int i = 0; i < spots.size(); ++i) {
        for (int j = i + 1; j < spots.size(); ++j) {
            if (!StationModel::areLinked(spots[i], spots[j]))
                continue;
            const int gi = spots[i].groupId;
            const int gj = spots[j].groupId;
            if (gi == 0 && gj == 0) {
                spots[i].groupId = spots[j].groupId = next++;
            } else if (gi == 0) {
                spots[i].groupId = gj;
            } else if (gj == 0) {
                spots[j].groupId = gi;
            } else if (gi != gj) {
                for (StationSpot &s : spots) {
                    if (s.groupId == gj)
                        s.groupId = gi;
                }
            }
        }
    }
}

// The merge step by step with plain containers, the reference for the fast one.
QList<StationSpot> plainMerge(const QList<StationSpot> &current, const QList<StationSpot> &batch,
                              qint64 nowMs)
{
    const QDateTime cutoff = QDateTime::fromMSecsSinceEpoch(nowMs - 10800 * 1000, Qt::UTC);
    QHash<QString, StationSpot::Status> statuses;
    for (const StationSpot &s : current)
        statuses.insert(s.key(), s.status);
    QSet<int> sources;
    for (const StationSpot &s : batch) {
        if (s.source != StationSpot::DX)
            sources.insert(s.source);
    }
    QList<StationSpot> merged;
    for (const StationSpot &s : current) {
        if (!sources.contains(s.source) && s.spotTime.isValid() && s.spotTime >= cutoff)
            merged.append(s);
    }
    for (StationSpot s : batch) {
        if (!s.spotTime.isValid() || s.spotTime < cutoff)
            continue;
        if (statuses.contains(s.key()))
            s.status = statuses.value(s.key());
        merged.append(s);
    }
    std::stable_sort(merged.begin(), merged.end(),
                     [](const StationSpot &a, const StationSpot &b) { return a.spotTime > b.spotTime; });
    QSet<QString> seen;
    QList<StationSpot> result;
    for (const StationSpot &s : merged) {
        const QString id = s.callsign + QLatin1Char('|') + s.reference;
        if (seen.contains(id))
            continue;
        seen.insert(id);
        result.append(s);
    }
    pairwiseGroups(result);
    return result;
}

QStringList callsOf(const StationModel &model)
{
    QStringList calls;
    for (const StationSpot &s : model.spots())
        calls.append(s.callsign + QLatin1Char('@') + s.reference);
    return calls;
}

} // namespace

class TestStationModel final : public QObject
{
    Q_OBJECT

private:
    qint64 m_now = 0;
    QDateTime ago(qint64 secs) const { return QDateTime::fromMSecsSinceEpoch(m_now - secs * 1000, Qt::UTC); }
    void fixClock(StationModel &model)
    {
        model.setClock([this] { return m_now; });
    }

private slots:
    void init()
    {
        // Whole seconds keep the boundary tests exact.
        m_now = QDateTime::currentMSecsSinceEpoch() / 1000 * 1000;
    }

    void replacementRulesPerSource()
    {
        StationModel model;
        QAbstractItemModelTester tester(&model);
        fixClock(model);
        model.mergeSpots({makeSpot(StationSpot::POTA, "K1A", "US-0001", 14062, ago(60)),
                          makeSpot(StationSpot::POTA, "K2B", "US-0002", 7030, ago(120))});
        model.mergeSpots({makeSpot(StationSpot::SOTA, "W7C", "W7A/AA-001", 14285, ago(30))});
        QCOMPARE(model.rowCount(), 3);

        // An empty batch carries no source, so it replaces nothing.
        model.mergeSpots({});
        QCOMPARE(model.rowCount(), 3);

        // A POTA batch is POTA's whole picture: the other POTA row goes.
        model.mergeSpots({makeSpot(StationSpot::POTA, "K3D", "US-0003", 21060, ago(10))});
        QCOMPARE(callsOf(model), QStringList({"K3D@US-0003", "W7C@W7A/AA-001"}));

        // DX spots accumulate; a newer spot of a call replaces its older row on any band.
        model.mergeSpots({makeSpot(StationSpot::DX, "DL1X", QString(), 7025, ago(300))});
        model.mergeSpots({makeSpot(StationSpot::DX, "G4Y", QString(), 14025, ago(200))});
        QCOMPARE(model.rowCount(), 4);
        model.mergeSpots({makeSpot(StationSpot::DX, "DL1X", QString(), 28025, ago(5))});
        QCOMPARE(callsOf(model), QStringList({"DL1X@", "K3D@US-0003", "W7C@W7A/AA-001", "G4Y@"}));
        QCOMPARE(model.spotAt(0).frequencyKhz, 28025.0);

        // An older DX report of a call loses to the row already held.
        model.mergeSpots({makeSpot(StationSpot::DX, "DL1X", QString(), 3525, ago(900))});
        QCOMPARE(model.spotAt(0).frequencyKhz, 28025.0);
        QCOMPARE(model.rowCount(), 4);

        model.clearSpots();
        QCOMPARE(model.rowCount(), 0);
    }

    void expiryAtThreeHours()
    {
        StationModel model;
        QAbstractItemModelTester tester(&model);
        fixClock(model);
        model.mergeSpots({makeSpot(StationSpot::POTA, "K1A", "US-1", 14062, ago(10800)),
                          makeSpot(StationSpot::POTA, "K2B", "US-2", 14063, ago(10801)),
                          makeSpot(StationSpot::POTA, "K3C", "US-3", 14064, QDateTime()),
                          makeSpot(StationSpot::POTA, "K4D", "US-4", 14065, ago(-120))});
        QCOMPARE(callsOf(model), QStringList({"K4D@US-4", "K1A@US-1"}));

        // Rows of other sources expire at the next merge, one second past the limit.
        model.mergeSpots({makeSpot(StationSpot::SOTA, "W1S", "W1/AA-001", 7032, ago(0))});
        QCOMPARE(model.rowCount(), 3);
        m_now += 1000;
        model.mergeSpots({makeSpot(StationSpot::SOTA, "W1S", "W1/AA-001", 7032, ago(0))});
        QCOMPARE(callsOf(model), QStringList({"K4D@US-4", "W1S@W1/AA-001"}));
    }

    void deduplicationAndOrder()
    {
        StationModel model;
        QAbstractItemModelTester tester(&model);
        fixClock(model);
        model.mergeSpots({makeSpot(StationSpot::POTA, "K1ABC", "US-1234", 14062, ago(600))});
        model.mergeSpots({makeSpot(StationSpot::WWFF, "K1ABC", "US-1234", 14244, ago(300))});
        QCOMPARE(model.rowCount(), 1);
        QCOMPARE(model.spotAt(0).source, StationSpot::WWFF);

        // The identity is exact text: another case is another station.
        model.mergeSpots({makeSpot(StationSpot::WWFF, "K1ABC", "US-1234", 14244, ago(300)),
                          makeSpot(StationSpot::WWFF, "k1abc", "US-1234", 14244, ago(200)),
                          makeSpot(StationSpot::WWFF, "K1ABC", "US-1234", 7044, ago(100)),
                          makeSpot(StationSpot::WWFF, "K9Z", "KFF-1", 7044, ago(400))});
        QCOMPARE(callsOf(model), QStringList({"K1ABC@US-1234", "k1abc@US-1234", "K9Z@KFF-1"}));
        QCOMPARE(model.spotAt(0).frequencyKhz, 7044.0);

        // Call "A|B" at "C" and call "A" at "B|C" have one identity text.
        model.mergeSpots({makeSpot(StationSpot::GMA, "A|B", "C", 7000, ago(50)),
                          makeSpot(StationSpot::GMA, "A", "B|C", 7000, ago(40))});
        QCOMPARE(callsOf(model).first(), QStringLiteral("A@B|C"));
        QCOMPARE(model.rowCount(), 4);
    }

    void statusesCarriedByKey()
    {
        StationModel model;
        QAbstractItemModelTester tester(&model);
        fixClock(model);
        model.mergeSpots({makeSpot(StationSpot::POTA, "K1A", "US-1", 14062.7, ago(60)),
                          makeSpot(StationSpot::POTA, "K2B", "US-2", 7030.0, ago(60))});
        model.markSpot("K1A|US-1|14062", StationSpot::Heard);
        model.markSpot("K2B|US-2|7030", StationSpot::Contacted);

        // Same whole kHz keeps the mark; a new frequency starts over.
        model.mergeSpots({makeSpot(StationSpot::POTA, "K1A", "US-1", 14062.1, ago(10)),
                          makeSpot(StationSpot::POTA, "K2B", "US-2", 7031.0, ago(10))});
        QCOMPARE(model.spotAt(0).status, StationSpot::Heard);
        QCOMPARE(model.spotAt(1).status, StationSpot::Unknown);

        // A mark also carries to a spot of another source with the same key.
        model.mergeSpots({makeSpot(StationSpot::WWFF, "K1A", "US-1", 14062.9, ago(5))});
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(model.spotAt(0).source, StationSpot::WWFF);
        QCOMPARE(model.spotAt(0).status, StationSpot::Heard);
    }

    void linkingRule_data()
    {
        QTest::addColumn<int>("sourceA");
        QTest::addColumn<QString>("callA");
        QTest::addColumn<QString>("refA");
        QTest::addColumn<double>("khzA");
        QTest::addColumn<int>("sourceB");
        QTest::addColumn<QString>("callB");
        QTest::addColumn<QString>("refB");
        QTest::addColumn<double>("khzB");
        QTest::addColumn<int>("secsApart");
        QTest::addColumn<bool>("linked");
        const int S = StationSpot::SOTA, P = StationSpot::POTA, W = StationSpot::WWFF, D = StationSpot::DX;
        QTest::newRow("one call, two programmes") << S << "K1ABC"
                                                  << "W1/AA-001" << 14062.0 << P << "K1ABC"
                                                  << "US-1" << 14063.5 << 1800 << true;
        QTest::newRow("2 kHz exactly") << S << "K1ABC"
                                       << "W1/AA-001" << 14062.0 << P << "k1abc"
                                       << "US-1" << 14064.0 << 0 << true;
        QTest::newRow("2.5 kHz apart") << S << "K1ABC"
                                       << "W1/AA-001" << 14062.0 << P << "K1ABC"
                                       << "US-1" << 14064.5 << 0 << false;
        QTest::newRow("1801 s apart") << S << "K1ABC"
                                      << "W1/AA-001" << 14062.0 << P << "K1ABC"
                                      << "US-1" << 14062.0 << 1801 << false;
        QTest::newRow("same call same source") << D << "K1ABC"
                                               << "" << 14062.0 << D << "K1ABC"
                                               << "" << 14062.0 << 0 << false;
        QTest::newRow("multi-op") << P << "K1ABC"
                                  << "US-1234" << 7030.0 << P << "K2XYZ"
                                  << "us-1234" << 7031.9 << 1200 << true;
        QTest::newRow("multi-op other refs") << P << "K1ABC"
                                             << "US-1234" << 7030.0 << P << "K2XYZ"
                                             << "US-1235" << 7030.0 << 0 << false;
        QTest::newRow("empty refs") << D << "K1ABC"
                                    << "" << 7030.0 << D << "K2XYZ"
                                    << "" << 7030.0 << 0 << false;
        QTest::newRow("same call same ref same source") << W << "K1ABC"
                                                        << "KFF-1" << 7030.0 << W << "K1ABC"
                                                        << "KFF-1" << 7030.0 << 0 << false;
    }

    void linkingRule()
    {
        QFETCH(int, sourceA);
        QFETCH(QString, callA);
        QFETCH(QString, refA);
        QFETCH(double, khzA);
        QFETCH(int, sourceB);
        QFETCH(QString, callB);
        QFETCH(QString, refB);
        QFETCH(double, khzB);
        QFETCH(int, secsApart);
        QFETCH(bool, linked);
        const StationSpot a = makeSpot(StationSpot::Source(sourceA), callA, refA, khzA, ago(2000));
        const StationSpot b =
            makeSpot(StationSpot::Source(sourceB), callB, refB, khzB, ago(2000 - secsApart));
        QCOMPARE(StationModel::areLinked(a, b), linked);
        QCOMPARE(StationModel::areLinked(b, a), linked);
        QList<StationSpot> list{a, b};
        StationModel::computeGroups(list);
        QCOMPARE(list[0].groupId, linked ? 1 : 0);
        QCOMPARE(list[1].groupId, linked ? 1 : 0);

        StationSpot noTime = b;
        noTime.spotTime = QDateTime();
        QVERIFY(!StationModel::areLinked(a, noTime));
        StationSpot noFreq = b;
        noFreq.frequencyKhz = std::numeric_limits<double>::quiet_NaN();
        QVERIFY(!StationModel::areLinked(a, noFreq));
    }

    void groupsMerge()
    {
        // Row order gives A-B group 1 and D-C group 2 before B-C joins them.
        QList<StationSpot> list{makeSpot(StationSpot::POTA, "K1A", "US-1", 7000.0, ago(60)),
                                makeSpot(StationSpot::SOTA, "K3D", "W1/AA-001", 7005.5, ago(60)),
                                makeSpot(StationSpot::SOTA, "K1A", "W1/AA-001", 7002.0, ago(60)),
                                makeSpot(StationSpot::SOTA, "K2C", "W1/AA-001", 7004.0, ago(60)),
                                makeSpot(StationSpot::DX, "G4Z", QString(), 7004.0, ago(60))};
        StationModel::computeGroups(list);
        for (int i = 0; i < 4; ++i)
            QCOMPARE(list[i].groupId, 1);
        QCOMPARE(list[4].groupId, 0);

        QList<StationSpot> one{list[0]};
        StationModel::computeGroups(one);
        QCOMPARE(one[0].groupId, 0);

        StationModel model;
        QAbstractItemModelTester tester(&model);
        fixClock(model);
        model.mergeSpots({makeSpot(StationSpot::POTA, "K1ABC", "US-1234", 7030.0, ago(1200)),
                          makeSpot(StationSpot::POTA, "K2XYZ", "US-1234", 7031.9, ago(0)),
                          makeSpot(StationSpot::POTA, "K3Q", "US-9", 7031.9, ago(0))});
        QCOMPARE(model.keysInGroup(1), QStringList({"K2XYZ|US-1234|7031", "K1ABC|US-1234|7030"}));
        QVERIFY(model.keysInGroup(0).isEmpty());
        QCOMPARE(model.spotAt(1).groupId, 0);
    }

    void multiOpPartners()
    {
        StationModel model;
        QAbstractItemModelTester tester(&model);
        fixClock(model);
        model.mergeSpots({makeSpot(StationSpot::POTA, "K1ABC", "US-1234", 7030.0, ago(100)),
                          makeSpot(StationSpot::POTA, "K2XYZ", "US-1234", 7031.0, ago(400)),
                          makeSpot(StationSpot::POTA, "K3LATE", "US-1234", 7030.5, ago(401)),
                          makeSpot(StationSpot::POTA, "K4FAR", "US-1234", 7031.1, ago(100)),
                          makeSpot(StationSpot::POTA, "K5CASE", "us-1234", 7030.0, ago(100))});
        const auto calls = [](const QList<StationSpot> &spots) {
            QStringList out;
            for (const StationSpot &s : spots)
                out.append(s.callsign);
            return out;
        };
        QCOMPARE(calls(model.findMultiOpPartners("US-1234", 7030.0, ago(100), "k1abc")),
                 QStringList({"K2XYZ"}));
        // Without a time the time window does not apply.
        QCOMPARE(calls(model.findMultiOpPartners("US-1234", 7030.0, QDateTime(), "K1ABC")),
                 QStringList({"K2XYZ", "K3LATE"}));
        QVERIFY(model.findMultiOpPartners(QString(), 7030.0, ago(100), "K9").isEmpty());
    }

    void queriesAndOutOfRange()
    {
        StationModel model;
        QAbstractItemModelTester tester(&model);
        fixClock(model);
        QCOMPARE(model.spotAt(-1).sourceString(), QStringLiteral("?"));
        QCOMPARE(model.spotAt(0).sourceString(), QStringLiteral("?"));
        model.mergeSpots({makeSpot(StationSpot::POTA, "K1", "US-1", 7030, ago(1)),
                          makeSpot(StationSpot::POTA, "K2", "k-2", 7030, ago(2)),
                          makeSpot(StationSpot::POTA, "K3", "US-3", 7030, ago(3)),
                          makeSpot(StationSpot::POTA, "K4", "VE", 7030, ago(3))});
        model.mergeSpots({makeSpot(StationSpot::SOTA, "W1", "W4C/CM-001", 7030, ago(1)),
                          makeSpot(StationSpot::SOTA, "W2", "G/LD-001", 7030, ago(2)),
                          makeSpot(StationSpot::SOTA, "W3", "/X", 7030, ago(2))});
        QCOMPARE(model.potaPrograms(), QStringList({"k", "US", "VE"}));
        QCOMPARE(model.sotaAssociations(), QStringList({"G", "W4C"}));
        QCOMPARE(model.spotAt(99).sourceString(), QStringLiteral("?"));
    }

    void changeNotifications()
    {
        StationModel model;
        QAbstractItemModelTester tester(&model);
        fixClock(model);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);

        QCOMPARE(model.ageTickIntervalMs(), 1000);
        QVERIFY(model.isAgeTickActive());
        model.refreshAgeColumn();
        QCOMPARE(changed.count(), 0); // nothing to tick on an empty table

        model.mergeSpots({makeSpot(StationSpot::POTA, "K1A", "US-1", 7030.0, ago(10)),
                          makeSpot(StationSpot::SOTA, "K1A", "W1/AA-001", 7030.5, ago(20)),
                          makeSpot(StationSpot::POTA, "K2B", "US-2", 14062.0, ago(30))});
        QCOMPARE(reset.count(), 1);
        QCOMPARE(changed.count(), 0);

        const auto check = [&](int row, int firstCol, int lastCol, const QList<int> &roles) {
            QVERIFY(!changed.isEmpty());
            const QList<QVariant> args = changed.takeFirst();
            const auto from = args.at(0).value<QModelIndex>();
            const auto to = args.at(1).value<QModelIndex>();
            QCOMPARE(from.row(), row < 0 ? 0 : row);
            QCOMPARE(to.row(), row < 0 ? model.rowCount() - 1 : row);
            QCOMPARE(from.column(), firstCol);
            QCOMPARE(to.column(), lastCol);
            QCOMPARE(args.at(2).value<QList<int>>(), roles);
        };

        model.refreshAgeColumn();
        check(-1, 6, 6, {});

        model.markSpot("K2B|US-2|14062", StationSpot::Heard);
        check(2, 0, 9, {});
        QCOMPARE(model.spotAt(2).status, StationSpot::Heard);
        model.markSpot("K2B|US-2|14063", StationSpot::Contacted);
        QCOMPARE(changed.count(), 0);

        model.markSimilarSpots("k1a", 7031.2, StationSpot::Contacted);
        QCOMPARE(changed.count(), 1); // 7030.5 is within 1 kHz, 7030.0 is not
        check(1, 0, 9, {});
        model.markSimilarSpots("K1A", 7031.0, StationSpot::Contacted);
        QCOMPARE(changed.count(), 2); // exactly 1 kHz counts
        changed.clear();

        QCOMPARE(model.spotAt(0).groupId, 1);
        model.markGroupSpots(0, StationSpot::NotHeard);
        QCOMPARE(changed.count(), 0);
        model.markGroupSpots(1, StationSpot::NotHeard);
        check(0, 0, 9, {});
        check(1, 0, 9, {});

        model.setHighlightGroup(1);
        check(0, 0, 9, {Qt::BackgroundRole});
        check(1, 0, 9, {Qt::BackgroundRole});
        model.setHighlightGroup(1);
        QCOMPARE(changed.count(), 0);
        model.setHighlightGroup(5);
        QCOMPARE(changed.count(), 2);
        changed.clear();

        model.setWatchCallsigns({" K2B ", "", "  "});
        check(-1, 0, 9, {Qt::ForegroundRole});
        QCOMPARE(model.watchCallsigns(), QSet<QString>({"k2b"}));
        model.setWatchReferences({"US-1"});
        check(-1, 0, 9, {Qt::ForegroundRole});

        model.setUserLocation(41.0, -73.0);
        check(-1, 8, 9, {});
        model.clearUserLocation();
        check(-1, 8, 9, {});
        QCOMPARE(model.userLat(), 41.0);

        model.setReferenceLocation("US-2", 40.0, -100.0);
        check(2, 8, 9, {});
        model.setReferenceLocation("US-2", 1.0, 1.0); // a known position stays
        QCOMPARE(changed.count(), 0);
        QCOMPARE(model.spotAt(2).lat, 40.0);

        model.clearSpots();
        QCOMPARE(reset.count(), 2);
        model.setWatchCallsigns({"x"});
        model.setUserLocation(1, 1);
        QCOMPARE(changed.count(), 0);
    }

    void fastGroupingMatchesPairwise()
    {
        QRandomGenerator rng(20240501);
        const QStringList calls{"K1ABC", "k1abc", "K2XYZ", "W7Q", "G4ABC", "DL1X", "F5K", "K1Ab C"};
        const QStringList refs{"", "US-1234", "us-1234", "US-0001", "W7A/AA-001", "KFF-0001", "G/LD-001"};
        for (int round = 0; round < 300; ++round) {
            const int n = rng.bounded(1, 60);
            QList<StationSpot> spots;
            for (int i = 0; i < n; ++i) {
                StationSpot s =
                    makeSpot(StationSpot::Source(rng.bounded(7)), calls.at(rng.bounded(calls.size())),
                             refs.at(rng.bounded(refs.size())), 7000.0 + rng.bounded(80) * 0.25,
                             ago(rng.bounded(4000)));
                if (rng.bounded(40) == 0)
                    s.spotTime = QDateTime();
                if (rng.bounded(60) == 0)
                    s.frequencyKhz = std::numeric_limits<double>::quiet_NaN();
                s.groupId = 77;
                spots.append(s);
            }
            QList<StationSpot> expected = spots;
            pairwiseGroups(expected);
            StationModel::computeGroups(spots);
            for (int i = 0; i < n; ++i)
                QCOMPARE(spots[i].groupId, expected[i].groupId);
        }
    }

    void fastMergeMatchesPlainMerge()
    {
        QRandomGenerator rng(7);
        const QStringList calls{"K1ABC", "k1abc", "K2XYZ", "W7Q", "G4ABC", "DL1X", "F5K", "N0P", "VE3Z"};
        const QStringList refs{"US-1234", "us-1234", "US-0001", "W7A/AA-001", "KFF-0001", "G/LD-001"};
        QSet<qint64> usedTimes; // distinct times: ties have no defined order
        for (int round = 0; round < 20; ++round) {
            StationModel model;
            QAbstractItemModelTester tester(&model);
            fixClock(model);
            QList<StationSpot> expected;
            for (int step = 0; step < 40; ++step) {
                m_now += rng.bounded(1, 600) * 1000;
                const auto source = StationSpot::Source(rng.bounded(7));
                const int size = source == StationSpot::DX ? 1 : rng.bounded(0, 12);
                QList<StationSpot> batch;
                for (int i = 0; i < size; ++i) {
                    qint64 ms = 0;
                    do {
                        ms = m_now - rng.bounded(12000) * 1000 - rng.bounded(1000);
                    } while (usedTimes.contains(ms));
                    usedTimes.insert(ms);
                    batch.append(makeSpot(
                        source, calls.at(rng.bounded(calls.size())),
                        source == StationSpot::DX ? QString() : refs.at(rng.bounded(refs.size())),
                        7000.0 + rng.bounded(40) * 0.5, QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC)));
                }
                expected = plainMerge(expected, batch, m_now);
                model.mergeSpots(batch);
                QCOMPARE(model.rowCount(), expected.size());
                for (int r = 0; r < expected.size(); ++r) {
                    const StationSpot &got = model.spots().at(r);
                    QCOMPARE(got.key(), expected[r].key());
                    QCOMPARE(got.source, expected[r].source);
                    QCOMPARE(got.status, expected[r].status);
                    QCOMPARE(got.groupId, expected[r].groupId);
                }
                // Marks made between merges must carry like the plain merge's.
                if (model.rowCount() > 0) {
                    const int row = rng.bounded(model.rowCount());
                    const auto status = StationSpot::Status(rng.bounded(4));
                    model.markSpot(model.spotAt(row).key(), status);
                    expected[row].status = status;
                }
            }
        }
    }
};

TALLIS_TEST_MAIN(TestStationModel)
#include "tst_stationmodel.moc"
