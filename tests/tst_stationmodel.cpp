#include "support/modeltest.h"
#include "support/testmain.h"

#include <QHash>
#include <QRandomGenerator>
#include <QSet>
#include <QTest>

#include <algorithm>
#include <utility>

namespace {

using S = StationSpot;

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
    QHash<QString, S::Status> statuses;
    QSet<int> sources;
    for (const S &s : current)
        statuses.insert(s.key(), s.status);
    for (const S &s : batch)
        sources.insert(s.source);
    sources.remove(S::DX);
    QList<S> merged = current;
    merged.removeIf([&](const S &s) { return sources.contains(s.source); });
    for (S s : batch) {
        s.status = statuses.value(s.key(), s.status);
        merged.append(s);
    }
    const QDateTime cutoff = QDateTime::fromMSecsSinceEpoch(nowMs - 10800 * 1000, Qt::UTC);
    merged.removeIf([&](const S &s) { return !s.spotTime.isValid() || s.spotTime < cutoff; });
    std::stable_sort(merged.begin(), merged.end(),
                     [](const S &a, const S &b) { return a.spotTime > b.spotTime; });
    QSet<QString> seen; // call|reference kept so far
    merged.removeIf([&](const S &s) {
        const qsizetype before = seen.size();
        seen.insert(s.callsign + QLatin1Char('|') + s.reference);
        return seen.size() == before;
    });
    pairwiseGroups(merged);
    return merged;
}

// What the random merge compares of each row.
QString describe(const QList<S> &spots)
{
    QStringList rows;
    for (const S &s : spots)
        rows.append(
            QStringLiteral("%1 %2 %3 %4").arg(s.key(), s.sourceString()).arg(s.status).arg(s.groupId));
    return rows.join(QLatin1Char('\n'));
}

} // namespace

class TestStationModel final : public ModelTest
{
    Q_OBJECT

private slots:

    void mergeEdges()
    {
        // Three hours survive, a second more or no time does not; the newest comes first.
        mergeSteps("GMA K1A G-1 1 10800, GMA K2B G-2 2 10801, GMA K3C G-3 3 none, GMA K4D G-4 4 -120");
        QCOMPARE(keysOf(m_model->spots()), QLatin1String("K4D|G-4|4 K1A|G-1|1"));
        mergeSteps("GMA A|B C 1 50, GMA A B|C 2 40"); // call A|B at C is call A at B|C
        QCOMPARE(keysOf(m_model->spots()), QLatin1String("A|B|C|2"));
    }

    void linking_data()
    {
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<bool>("linked");
        const char *const sota = "SOTA K1A W1/A-1 14062 2000";
        QTest::newRow("two programmes, 1800 s") << sota << "POTA K1A US-1 14063.5 200" << true;
        QTest::newRow("2 kHz exactly, any case") << sota << "POTA k1a US-1 14064 2000" << true;
        QTest::newRow("2.5 kHz") << sota << "POTA K1A US-1 14064.5 2000" << false;
        QTest::newRow("1801 s") << sota << "POTA K1A US-1 14062 199" << false;
        QTest::newRow("same call and source") << sota << "SOTA K1A W1/A-2 14062 2000" << false;
        QTest::newRow("no time") << sota << "POTA K1A US-1 14062 none" << false;
        QTest::newRow("NaN") << sota << "POTA K1A US-1 nan 2000" << false;
        const char *const pota = "POTA K1A US-1 7030";
        const char *const dx = "DX K1A - 7030";
        QTest::newRow("operators") << pota << "POTA K2B us-1 7031.9 800" << true;
        QTest::newRow("other reference") << pota << "POTA K2B US-2 7030" << false;
        QTest::newRow("no references") << dx << "DX K2B - 7030" << false;
    }

    void linking()
    {
        QFETCH(QString, a);
        QFETCH(QString, b);
        QFETCH(bool, linked);
        QCOMPARE(StationModel::areLinked(spot(a), spot(b)), linked);
        QCOMPARE(StationModel::areLinked(spot(b), spot(a)), linked);
    }

    void queries()
    {
        QCOMPARE(m_model->spotAt(-1).sourceString(), QLatin1String("?"));
        mergeSteps("POTA K1A US-1 7030 1200, POTA K2B US-1 7031.9 0, POTA K3Q k-9 7031.9 9, POTA K4R "
                   "VE 7000; SOTA W1 W4C/CM-1 7030, SOTA W2 G/LD-1 7030, SOTA W3 /X 7030");
        QCOMPARE(m_model->keysInGroup(1).join(QLatin1Char(' ')),
                 QLatin1String("K2B|US-1|7031 K1A|US-1|7030"));
        QVERIFY(m_model->keysInGroup(0).isEmpty());
        QCOMPARE(m_model->potaPrograms().join(QLatin1Char(' ')), QLatin1String("k US VE"));
        QCOMPARE(m_model->sotaAssociations().join(QLatin1Char(' ')), QLatin1String("G W4C"));

        // Partners: other calls at exactly that reference, within 1 kHz and, when both have one, 300 s.
        m_model->clearSpots();
        mergeSteps("WWFF K1A US-1 7030 100, WWFF K2B US-1 7031 400, WWFF K3C US-1 7030.5 401, "
                   "WWFF K4D US-1 7031.1 100, WWFF K5E us-1 7030 100");
        const QString k1a = QStringLiteral("k1a");
        QCOMPARE(keysOf(m_model->findMultiOpPartners(QStringLiteral("US-1"), 7030, ago(100), k1a)),
                 QLatin1String("K2B|US-1|7031"));
        QCOMPARE(keysOf(m_model->findMultiOpPartners(QStringLiteral("US-1"), 7030, QDateTime(), k1a)),
                 QLatin1String("K2B|US-1|7031 K3C|US-1|7030"));
        QVERIFY(m_model->findMultiOpPartners(QString(), 7030, ago(100), k1a).isEmpty());
    }

    void changeNotifications()
    {
        QStringList changes; // "rows:columns", then ":bg"/":fg" when only that role changed
        connect(
            m_model, &QAbstractItemModel::dataChanged, this,
            [&](const QModelIndex &from, const QModelIndex &to, const QList<int> &roles) {
                const char *role = roles.isEmpty() ? "" : roles.first() == Qt::BackgroundRole ? ":bg" : ":fg";
                changes.append(QString::asprintf("%d-%d:%d-%d%s", from.row(), to.row(), from.column(),
                                                 to.column(), role));
            });
        const auto took = [&changes] { return std::exchange(changes, {}).join(QLatin1Char(' ')); };
        QCOMPARE(m_model->ageTickIntervalMs(), 1000);
        QVERIFY(m_model->isAgeTickActive());
        m_model->refreshAgeColumn(); // nothing to tick on an empty table
        mergeSteps("POTA K1A US-1 7030 10, SOTA K1A W1/A-1 7030.5 20, POTA K2B US-2 14062 30");
        QCOMPARE(took(), QString());

        m_model->refreshAgeColumn();
        m_model->markSpot(QStringLiteral("K2B|US-2|14062"), S::Heard);
        m_model->markSpot(QStringLiteral("K2B|US-2|14063"), S::Contacted);      // no such key
        m_model->markSimilarSpots(QStringLiteral("k1a"), 7031.2, S::Contacted); // 7030.5 is within 1 kHz
        m_model->markSimilarSpots(QStringLiteral("K1A"), 7031.0, S::Contacted); // exactly 1 kHz counts
        m_model->markGroupSpots(0, S::NotHeard);
        m_model->markGroupSpots(1, S::NotHeard);
        QCOMPARE(took(), QLatin1String("0-2:6-6 2-2:0-9 1-1:0-9 0-0:0-9 1-1:0-9 0-0:0-9 1-1:0-9"));
        QCOMPARE(m_model->spotAt(0).status, S::NotHeard);

        m_model->setHighlightGroup(1);
        m_model->setHighlightGroup(1);
        m_model->setHighlightGroup(5); // the old group's rows repaint
        m_model->setWatchCallsigns({QStringLiteral("K2B")});
        m_model->setWatchReferences({QStringLiteral("US-1")});
        QCOMPARE(took(), QLatin1String("0-0:0-9:bg 1-1:0-9:bg 0-0:0-9:bg 1-1:0-9:bg 0-2:0-9:fg 0-2:0-9:fg"));
        m_model->setUserLocation(41.0, -73.0);
        m_model->clearUserLocation();
        m_model->setReferenceLocation(QStringLiteral("US-2"), 40.0, -100.0);
        m_model->setReferenceLocation(QStringLiteral("US-2"), 1.0, 1.0); // a known position stays
        QCOMPARE(took(), QLatin1String("0-2:8-9 0-2:8-9 2-2:8-9"));
        QCOMPARE(m_model->spotAt(2).lat, 40.0);

        m_model->clearSpots();
        m_model->setWatchCallsigns({QStringLiteral("x")});
        m_model->setUserLocation(1, 1);
        QCOMPARE(took(), QString());
    }

    // The fast merge and grouping against the plain ones over random batches,
    // with marks between merges and the odd spot without a frequency.
    void mergeMatchesPlainReference()
    {
        QRandomGenerator rng(7);
        const QStringList calls =
            QStringLiteral("K1A k1a K2XYZ W7Q G4ABC DL1X F5K VE3Z").split(QLatin1Char(' '));
        const QStringList refs = QStringLiteral("US-1 us-1 US-2 W7/A-1 KFF-1 G/LD-1").split(QLatin1Char(' '));
        int serial = 0;
        for (int round = 0; round < 20; ++round) {
            m_model->clearSpots();
            QList<S> expected;
            for (int step = 0; step < 40; ++step) {
                m_now += rng.bounded(1, 600) * 1000;
                const QString source = StationSpot::sourceName(rng.bounded(S::k_sourceCount));
                QList<S> batch;
                for (int i = source == QLatin1String("DX") ? 1 : rng.bounded(0, 12); i > 0; --i) {
                    const QString ref = source == QLatin1String("DX") ? QStringLiteral("-")
                                                                      : refs.at(rng.bounded(refs.size()));
                    const double khz = rng.bounded(40) == 0 ? qQNaN() : 7000.0 + rng.bounded(40) * 0.5;
                    batch.append(spot(
                        source +
                        QStringLiteral(" %1 %2 %3").arg(calls.at(rng.bounded(calls.size())), ref).arg(khz)));
                    // Distinct times, whole seconds apart from every other step's: ties have no defined
                    // order.
                    const qint64 ms = m_now - rng.bounded(12000) * 1000 - ++serial % 1000;
                    batch.last().spotTime = QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
                }
                expected = plainMerge(expected, batch, m_now);
                m_model->mergeSpots(batch);
                QCOMPARE(describe(m_model->spots()), describe(expected));
                // The grouping from scratch must agree with the merge's carried one.
                QList<S> regrouped = m_model->spots();
                for (S &s : regrouped)
                    s.groupId = 77;
                StationModel::computeGroups(regrouped);
                QCOMPARE(describe(regrouped), describe(expected));
                if (!expected.isEmpty()) {
                    const int row = rng.bounded(int(expected.size()));
                    expected[row].status = S::Status(rng.bounded(4));
                    m_model->markSpot(expected[row].key(), expected[row].status);
                }
            }
        }
    }
};

TALLIS_TEST_MAIN(TestStationModel)
#include "tst_stationmodel.moc"
