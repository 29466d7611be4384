#include "model/stationmodel.h"
#include "support/modeltest.h"
#include "support/testmain.h"

#include <QAbstractItemModelTester>
#include <QHash>
#include <QRandomGenerator>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <limits>

namespace {

using S = StationSpot;

S makeSpot(S::Source source, const QString &call, const QString &ref, double khz, const QDateTime &time)
{
    S s;
    s.source = source;
    s.callsign = call;
    s.reference = ref;
    s.frequencyKhz = khz;
    s.spotTime = time;
    return s;
}

// The grouping as a plain pass over every pair, the reference for the fast one.
void pairwiseGroups(QList<S> &spots)
{
    for (S &s : spots)
        s.groupId = 0;
    int next = 1;
    for (int i = 0; i < spots.size(); ++i) {
        for (int j = i + 1; j < spots.size(); ++j) {
            if (!StationModel::areLinked(spots[i], spots[j]))
                continue;
            const int gi = spots[i].groupId;
            const int gj = spots[j].groupId;
            if (gi == 0 && gj == 0)
                spots[i].groupId = spots[j].groupId = next++;
            else if (gi == 0)
                spots[i].groupId = gj;
            else if (gj == 0)
                spots[j].groupId = gi;
            else if (gi != gj)
                for (S &s : spots)
                    s.groupId = s.groupId == gj ? gi : s.groupId;
        }
    }
}

// The merge step by step with plain containers, the reference for the fast one.
QList<S> plainMerge(const QList<S> &current, const QList<S> &batch, qint64 nowMs)
{
    const QDateTime cutoff = QDateTime::fromMSecsSinceEpoch(nowMs - 10800 * 1000, Qt::UTC);
    QHash<QString, S::Status> statuses;
    QSet<int> sources;
    for (const S &s : current)
        statuses.insert(s.key(), s.status);
    for (const S &s : batch) {
        if (s.source != S::DX)
            sources.insert(s.source);
    }
    QList<S> merged;
    for (const S &s : current) {
        if (!sources.contains(s.source) && s.spotTime.isValid() && s.spotTime >= cutoff)
            merged.append(s);
    }
    for (S s : batch) {
        s.status = statuses.value(s.key(), s.status);
        if (s.spotTime.isValid() && s.spotTime >= cutoff)
            merged.append(s);
    }
    std::stable_sort(merged.begin(), merged.end(),
                     [](const S &a, const S &b) { return a.spotTime > b.spotTime; });
    QSet<QString> seen;
    QList<S> result;
    for (const S &s : merged) {
        const QString id = s.callsign + QLatin1Char('|') + s.reference;
        if (!seen.contains(id))
            result.append(s);
        seen.insert(id);
    }
    pairwiseGroups(result);
    return result;
}

QStringList callsOf(const QList<S> &spots)
{
    QStringList calls;
    for (const S &s : spots)
        calls.append(s.callsign + QLatin1Char('@') + s.reference);
    return calls;
}

} // namespace

class TestStationModel final : public ModelTest
{
    Q_OBJECT

private:
    QStringList rows() const { return callsOf(m_model->spots()); }
    void merge(const QList<S> &batch) { m_model->mergeSpots(batch); }

    // The dataChanged signals so far as "rows:columns" plus ":bg"/":fg" for the roles named.
    static QStringList took(QSignalSpy &spy)
    {
        QStringList out;
        for (const QList<QVariant> &args : std::as_const(spy)) {
            const auto from = args.at(0).value<QModelIndex>();
            const auto to = args.at(1).value<QModelIndex>();
            QString text = QString::asprintf("%d-%d:%d-%d", from.row(), to.row(), from.column(), to.column());
            for (const int role : args.at(2).value<QList<int>>())
                text += role == Qt::BackgroundRole ? ":bg" : role == Qt::ForegroundRole ? ":fg" : ":?";
            out.append(text);
        }
        spy.clear();
        return out;
    }

private slots:
    void init() { setUpModel(); }

    void cleanup() { tearDownModel(); }

    void replacementPerSourceAndExpiry()
    {
        merge({spot(S::POTA, "K1A", "US-0001", 14062, 60), spot(S::POTA, "K2B", "US-0002", 7030, 120)});
        merge({spot(S::SOTA, "W7C", "W7A/AA-001", 14285, 30)});
        merge({}); // carries no source, so replaces nothing
        QCOMPARE(m_model->rowCount(), 3);
        // A POTA batch is POTA's whole picture.
        merge({spot(S::POTA, "K3D", "US-0003", 21060, 10)});
        QCOMPARE(rows(), QStringList({"K3D@US-0003", "W7C@W7A/AA-001"}));

        // DX spots accumulate; a newer report of a call replaces its row on any band, an older one loses.
        merge({spot(S::DX, "DL1X", QString(), 7025, 300)});
        merge({spot(S::DX, "G4Y", QString(), 14025, 200)});
        merge({spot(S::DX, "DL1X", QString(), 28025, 5)});
        merge({spot(S::DX, "DL1X", QString(), 3525, 900)});
        QCOMPARE(rows(), QStringList({"DL1X@", "K3D@US-0003", "W7C@W7A/AA-001", "G4Y@"}));
        QCOMPARE(m_model->spotAt(0).frequencyKhz, 28025.0);

        // Exactly three hours survives, one second more does not; no time never does.
        merge({spot(S::GMA, "K1A", "G-1", 14062, 10800), spot(S::GMA, "K2B", "G-2", 14063, 10801),
               makeSpot(S::GMA, "K3C", "G-3", 14064, QDateTime()), spot(S::GMA, "K4D", "G-4", 14065, -120)});
        QCOMPARE(m_model->rowCount(), 6);
        QCOMPARE(m_model->spotAt(5).callsign, QStringLiteral("K1A"));
        m_now += 1000; // kept rows of other sources expire at the next merge
        merge({spot(S::SOTA, "W7C", "W7A/AA-001", 14285, 0)});
        QCOMPARE(rows(), QStringList({"K4D@G-4", "W7C@W7A/AA-001", "DL1X@", "K3D@US-0003", "G4Y@"}));
    }

    void deduplicationAndStatusesByKey()
    {
        // One call at one reference from two programmes: the newer row alone; other letter case, other
        // station.
        merge({spot(S::POTA, "K1ABC", "US-1234", 14062, 600)});
        merge({spot(S::WWFF, "K1ABC", "US-1234", 14244, 300), spot(S::WWFF, "k1abc", "US-1234", 14244, 200),
               spot(S::WWFF, "K1ABC", "US-1234", 7044, 100)});
        QCOMPARE(rows(), QStringList({"K1ABC@US-1234", "k1abc@US-1234"}));
        QCOMPARE(m_model->spotAt(0).source, S::WWFF);
        QCOMPARE(m_model->spotAt(0).frequencyKhz, 7044.0);
        // Call "A|B" at "C" and call "A" at "B|C" have one identity text.
        merge({spot(S::GMA, "A|B", "C", 7000, 50), spot(S::GMA, "A", "B|C", 7000, 40)});
        QCOMPARE(rows(), QStringList({"A@B|C", "K1ABC@US-1234", "k1abc@US-1234"}));

        m_model->clearSpots();
        merge({spot(S::POTA, "K1A", "US-1", 14062.7, 60), spot(S::POTA, "K2B", "US-2", 7030.0, 60)});
        m_model->markSpot("K1A|US-1|14062", S::Heard);
        m_model->markSpot("K2B|US-2|7030", S::Contacted);
        // Same whole kHz keeps the mark; a new frequency starts over.
        merge({spot(S::POTA, "K1A", "US-1", 14062.1, 10), spot(S::POTA, "K2B", "US-2", 7031.0, 10)});
        QCOMPARE(m_model->spotAt(0).status, S::Heard);
        QCOMPARE(m_model->spotAt(1).status, S::Unknown);
        // The mark also carries to another source's spot with the same key.
        merge({spot(S::WWFF, "K1A", "US-1", 14062.9, 5)});
        QCOMPARE(m_model->rowCount(), 2);
        QCOMPARE(m_model->spotAt(0).source, S::WWFF);
        QCOMPARE(m_model->spotAt(0).status, S::Heard);
    }

    void linkingRule()
    {
        const auto check = [](const S &a, const S &b, bool linked, const char *what) {
            QVERIFY2(StationModel::areLinked(a, b) == linked, what);
            QVERIFY2(StationModel::areLinked(b, a) == linked, what);
            QList<S> list{a, b};
            StationModel::computeGroups(list);
            QVERIFY2(list[0].groupId == (linked ? 1 : 0) && list[1].groupId == list[0].groupId, what);
        };
        const S sota = spot(S::SOTA, "K1ABC", "W1/AA-001", 14062.0, 2000);
        check(sota, spot(S::POTA, "K1ABC", "US-1", 14063.5, 200), true, "two programmes, 1800 s");
        check(sota, spot(S::POTA, "k1abc", "US-1", 14064.0, 2000), true, "2 kHz exactly");
        check(sota, spot(S::POTA, "K1ABC", "US-1", 14064.5, 2000), false, "2.5 kHz");
        check(sota, spot(S::POTA, "K1ABC", "US-1", 14062.0, 199), false, "1801 s");
        check(sota, spot(S::SOTA, "K1ABC", "W1/AA-001", 14062, 2000), false, "same call and source");
        check(sota, makeSpot(S::POTA, "K1ABC", "US-1", 14062.0, QDateTime()), false, "no time");
        check(sota, spot(S::POTA, "K1ABC", "US-1", std::numeric_limits<double>::quiet_NaN(), 2000), false,
              "NaN");
        const S pota = spot(S::POTA, "K1ABC", "US-1234", 7030.0, 2000);
        check(pota, spot(S::POTA, "K2XYZ", "us-1234", 7031.9, 800), true, "multi-op");
        check(pota, spot(S::POTA, "K2XYZ", "US-1235", 7030.0, 2000), false, "other reference");
        check(spot(S::DX, "K1ABC", "", 7030, 9), spot(S::DX, "K2XYZ", "", 7030, 9), false,
              "empty references");
    }

    void groupsPartnersAndQueries()
    {
        // Row order gives A-B group 1 and D-C group 2 before B-C joins them.
        QList<S> list{spot(S::POTA, "K1A", "US-1", 7000.0, 60), spot(S::SOTA, "K3D", "W1/AA-001", 7005.5, 60),
                      spot(S::SOTA, "K1A", "W1/AA-001", 7002.0, 60),
                      spot(S::SOTA, "K2C", "W1/AA-001", 7004.0, 60),
                      spot(S::DX, "G4Z", QString(), 7004.0, 60)};
        StationModel::computeGroups(list);
        QCOMPARE(
            QList<int>({list[0].groupId, list[1].groupId, list[2].groupId, list[3].groupId, list[4].groupId}),
            QList<int>({1, 1, 1, 1, 0}));

        QCOMPARE(m_model->spotAt(-1).sourceString(), QStringLiteral("?"));
        merge({spot(S::POTA, "K1ABC", "US-1234", 7030.0, 1200), spot(S::POTA, "K2XYZ", "US-1234", 7031.9, 0),
               spot(S::POTA, "K3Q", "k-9", 7031.9, 0), spot(S::POTA, "K4R", "VE", 7000, 5)});
        QCOMPARE(m_model->keysInGroup(1), QStringList({"K2XYZ|US-1234|7031", "K1ABC|US-1234|7030"}));
        QVERIFY(m_model->keysInGroup(0).isEmpty());
        QCOMPARE(m_model->potaPrograms(), QStringList({"k", "US", "VE"}));
        merge({spot(S::SOTA, "W1", "W4C/CM-001", 7030, 1), spot(S::SOTA, "W2", "G/LD-001", 7030, 2),
               spot(S::SOTA, "W3", "/X", 7030, 2)});
        QCOMPARE(m_model->sotaAssociations(), QStringList({"G", "W4C"}));

        // Partners: other calls, exact reference, within 1 kHz and 300 s (time only when given).
        m_model->clearSpots();
        merge({spot(S::WWFF, "K1ABC", "US-1234", 7030.0, 100), spot(S::WWFF, "K2XYZ", "US-1234", 7031.0, 400),
               spot(S::WWFF, "K3LATE", "US-1234", 7030.5, 401),
               spot(S::WWFF, "K4FAR", "US-1234", 7031.1, 100),
               spot(S::WWFF, "K5CASE", "us-1234", 7030.0, 100)});
        const auto partners = [&](const QDateTime &time, const QString &ref = "US-1234") {
            return callsOf(m_model->findMultiOpPartners(ref, 7030.0, time, "k1abc"));
        };
        QCOMPARE(partners(ago(100)), QStringList({"K2XYZ@US-1234"}));
        QCOMPARE(partners(QDateTime()), QStringList({"K2XYZ@US-1234", "K3LATE@US-1234"}));
        QVERIFY(partners(ago(100), QString()).isEmpty());
    }

    void changeNotifications()
    {
        QSignalSpy changed(m_model, &QAbstractItemModel::dataChanged);
        QCOMPARE(m_model->ageTickIntervalMs(), 1000);
        QVERIFY(m_model->isAgeTickActive());
        m_model->refreshAgeColumn(); // nothing to tick on an empty table
        merge({spot(S::POTA, "K1A", "US-1", 7030.0, 10), spot(S::SOTA, "K1A", "W1/AA-001", 7030.5, 20),
               spot(S::POTA, "K2B", "US-2", 14062.0, 30)});
        QCOMPARE(changed.count(), 0);

        m_model->refreshAgeColumn();
        m_model->markSpot("K2B|US-2|14062", S::Heard);
        m_model->markSpot("K2B|US-2|14063", S::Contacted);      // no such key
        m_model->markSimilarSpots("k1a", 7031.2, S::Contacted); // 7030.5 is within 1 kHz, 7030.0 is not
        QCOMPARE(took(changed), QStringList({"0-2:6-6", "2-2:0-9", "1-1:0-9"}));
        QCOMPARE(m_model->spotAt(2).status, S::Heard);
        m_model->markSimilarSpots("K1A", 7031.0, S::Contacted); // exactly 1 kHz counts
        m_model->markGroupSpots(0, S::NotHeard);
        m_model->markGroupSpots(1, S::NotHeard);
        QCOMPARE(took(changed), QStringList({"0-0:0-9", "1-1:0-9", "0-0:0-9", "1-1:0-9"}));
        QCOMPARE(m_model->spotAt(0).status, S::NotHeard);

        m_model->setHighlightGroup(1);
        m_model->setHighlightGroup(1);
        m_model->setHighlightGroup(5); // the old group's rows repaint
        QCOMPARE(took(changed), QStringList({"0-0:0-9:bg", "1-1:0-9:bg", "0-0:0-9:bg", "1-1:0-9:bg"}));

        m_model->setWatchCallsigns({" K2B ", "", "  "});
        m_model->setWatchReferences({"US-1"});
        m_model->setUserLocation(41.0, -73.0);
        m_model->clearUserLocation();
        m_model->setReferenceLocation("US-2", 40.0, -100.0);
        m_model->setReferenceLocation("US-2", 1.0, 1.0); // a known position stays
        QCOMPARE(took(changed), QStringList({"0-2:0-9:fg", "0-2:0-9:fg", "0-2:8-9", "0-2:8-9", "2-2:8-9"}));
        QCOMPARE(m_model->watchCallsigns(), QSet<QString>({"k2b"}));
        QCOMPARE(m_model->spotAt(2).lat, 40.0);

        m_model->clearSpots();
        m_model->setWatchCallsigns({"x"});
        m_model->setUserLocation(1, 1);
        QCOMPARE(changed.count(), 0);
    }

    void fastPathsMatchPlainVersions()
    {
        QRandomGenerator rng(7);
        const QStringList calls{"K1ABC", "k1abc", "K2XYZ", "W7Q", "G4ABC", "DL1X", "F5K", "VE3Z", "K1Ab C"};
        const QStringList refs{"US-1234", "us-1234", "US-0001", "W7A/AA-001", "KFF-0001", "G/LD-001"};
        QSet<qint64> usedTimes; // distinct times: ties have no defined order
        for (int round = 0; round < 20; ++round) {
            m_model->clearSpots();
            QList<S> expected;
            for (int step = 0; step < 40; ++step) {
                m_now += rng.bounded(1, 600) * 1000;
                const auto source = S::Source(rng.bounded(7));
                QList<S> batch;
                for (int i = source == S::DX ? 1 : rng.bounded(0, 12); i > 0; --i) {
                    qint64 ms = 0;
                    do {
                        ms = m_now - rng.bounded(12000) * 1000 - rng.bounded(1000);
                    } while (usedTimes.contains(ms));
                    usedTimes.insert(ms);
                    batch.append(makeSpot(source, calls.at(rng.bounded(calls.size())),
                                          source == S::DX ? QString() : refs.at(rng.bounded(refs.size())),
                                          7000.0 + rng.bounded(40) * 0.5,
                                          QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC)));
                }
                // Grouping alone, over rows and batch, with the odd spot lacking a time or a frequency.
                QList<S> loose = expected + batch;
                for (S &s : loose) {
                    s.groupId = 77;
                    if (rng.bounded(40) == 0)
                        s.spotTime = QDateTime();
                    else if (rng.bounded(40) == 0)
                        s.frequencyKhz = std::numeric_limits<double>::quiet_NaN();
                }
                QList<S> pairwise = loose;
                pairwiseGroups(pairwise);
                StationModel::computeGroups(loose);
                for (int i = 0; i < loose.size(); ++i)
                    QCOMPARE(loose[i].groupId, pairwise[i].groupId);

                expected = plainMerge(expected, batch, m_now);
                merge(batch);
                QCOMPARE(m_model->rowCount(), expected.size());
                for (int r = 0; r < expected.size(); ++r) {
                    const S &got = m_model->spots().at(r);
                    QCOMPARE(got.key(), expected[r].key());
                    QCOMPARE(got.source, expected[r].source);
                    QCOMPARE(got.status, expected[r].status);
                    QCOMPARE(got.groupId, expected[r].groupId);
                }
                // Marks made between merges must carry like the plain merge's.
                if (m_model->rowCount() > 0) {
                    const int row = rng.bounded(m_model->rowCount());
                    const auto status = S::Status(rng.bounded(4));
                    m_model->markSpot(m_model->spotAt(row).key(), status);
                    expected[row].status = status;
                }
            }
        }
    }
};

TALLIS_TEST_MAIN(TestStationModel)
#include "tst_stationmodel.moc"
