#include "support/modeltest.h"
#include "support/testmain.h"

#include <QColor>
#include <QHash>
#include <QRandomGenerator>
#include <QSet>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

using S = StationSpot;
using M = StationModel;

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
    sources.remove(S::RBN);
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

// The model's merge, grouping and notifications; its table cells; the filter in front of it.
class TestStationModel final : public ModelTest
{
    Q_OBJECT

    QVariant cell(int row, int col, int role = Qt::DisplayRole) const
    {
        return m_model->data(m_model->index(row, col), role);
    }

    QString rowText(int row, int role = Qt::DisplayRole) const
    {
        QStringList cells;
        for (int c = 0; c < M::ColumnCount; ++c)
            cells.append(cell(row, c, role).toString());
        return cells.join(QLatin1Char('|'));
    }

private slots:

    void mergeEdgesAndKeys()
    {
        // Three hours survive, a second more or no time does not; the newest comes first.
        mergeSteps("GMA K1A G-1 1 10800, GMA K2B G-2 2 10801, GMA K3C G-3 3 none, GMA K4D G-4 4 -120");
        QCOMPARE(keysOf(m_model->spots()), QLatin1String("K4D|G-4|4 K1A|G-1|1"));
        mergeSteps("GMA A|B C 1 50, GMA A B|C 2 40"); // call A|B at C is call A at B|C
        QCOMPARE(keysOf(m_model->spots()), QLatin1String("A|B|C|2"));
        // The key truncates the frequency toward zero; what has no whole kHz gives 0.
        S s = spot("POTA K1ABC - 0");
        for (const auto &[khz, key] : {std::pair(14062.7, "14062"),
                                       {7032.999, "7032"},
                                       {7033.0, "7033"},
                                       {-0.9, "0"},
                                       {-1.5, "-1"},
                                       {std::nan(""), "0"},
                                       {1e300, "0"}}) {
            s.frequencyKhz = khz;
            QCOMPARE(s.key(), QStringLiteral("K1ABC||") + QLatin1String(key));
        }
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
        QTest::newRow("operators") << pota << "POTA K2B us-1 7031.9 800" << true;
        QTest::newRow("other reference") << pota << "POTA K2B US-2 7030" << false;
        QTest::newRow("no references") << "DX K1A - 7030"
                                       << "DX K2B - 7030" << false;
        // One activation at two references, as its service numbers it, hours apart in the table.
        const char *const zlota = "ZLOTA#48213 ZL2ABC ZLP/WK-0503 7095";
        QTest::newRow("one activation") << zlota << "ZLOTA#48213 ZL2ABC ZLH/WK-0112 7095 5000" << true;
        QTest::newRow("two activations") << zlota << "ZLOTA#48214 ZL2ABC ZLH/WK-0112 7095" << false;
        QTest::newRow("one number, two services") << zlota << "SIOTA#48213 VK3A VK-BRM3 7095" << false;
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
                    if (source == QLatin1String("ZLOTA"))
                        batch.last().activationId = QString::number(rng.bounded(3));
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

    void formatAge_data()
    {
        QTest::addColumn<qint64>("secs");
        QTest::addColumn<QString>("text");
        const QList<QPair<qint64, const char *>> cases{
            {-120, "now"},    {0, "0s ago"},      {59, "59s ago"},   {60, "1m ago"},    {3599, "59m ago"},
            {3600, "1h ago"}, {86399, "23h ago"}, {86400, "1d ago"}, {200000, "2d ago"}};
        for (const auto &[secs, text] : cases)
            QTest::addRow("%lld s", secs) << secs << text;
    }

    void formatAge()
    {
        QFETCH(qint64, secs);
        QFETCH(QString, text);
        QCOMPARE(M::formatAge(ago(secs), m_now), text);
        QCOMPARE(M::formatAge(ago(secs), m_now + 999), text); // whole seconds, truncated
    }

    void cellsAndGeometry()
    {
        // Row 2 is the POTA spot, grouped with the SOTA spot of the same call: the "+" is display only.
        S pota = spot("POTA K1ABC US-1234 14062.5 90");
        pota.hasLocation = true;
        pota.lat = 41.5;
        pota.lon = -73.0;
        m_model->mergeSpots({pota});
        mergeSteps("SOTA K1ABC W1/HA-001 14063 30; DX G4Z - 7030 10");
        const QString texts = QStringLiteral("POTA+|K1ABC|US-1234||14062.500|CW|1m ago||");
        const QString sorts = QLatin1String("1|K1ABC|US-1234||14062.5|CW|") +
                              QString::number(ago(90).toSecsSinceEpoch()) + QLatin1String("|0|");
        QCOMPARE(rowText(2), texts + QStringLiteral("\u2014|\u2014"));
        QCOMPARE(rowText(2, Qt::UserRole), sorts + QLatin1String("1e+18|-1")); // unknown: last, first
        m_model->setUserLocation(41.5, -74.0);
        QCOMPARE(rowText(2), texts + QStringLiteral("52 mi|90\u00b0"));
        const auto text = [](double v) { return QVariant(v).toString(); };
        QCOMPARE(rowText(2, Qt::UserRole), sorts + text(M::distanceMi(41.5, -74, 41.5, -73)) +
                                               QLatin1Char('|') + text(M::bearingDeg(41.5, -74, 41.5, -73)));
        QCOMPARE(cell(1, M::DistanceColumn).toString(), QStringLiteral("\u2014")); // no position of its own
        QCOMPARE(cell(0, M::SourceColumn).toString(), QLatin1String("DX"));        // not grouped: no "+"
        QCOMPARE(M::formatFrequency(0.0), QLatin1String("?"));

        // Grid squares; distance and bearing.
        double lat = 7.0;
        double lon = 7.0;
        for (const char *bad : {"FN3", "FS31", "FN3A", " FN31", "F131"})
            QVERIFY2(!M::gridToLatLon(QString::fromLatin1(bad), lat, lon), bad);
        QVERIFY(lat == 7.0 && lon == 7.0); // untouched
        // Square centres; a bad subsquare counts as none; any decimal digit the character tables know counts.
        for (const QString &grid :
             {QStringLiteral("FN31"), QStringLiteral("FN31zz"), QStringLiteral("FN\u0663\u0661")})
            QVERIFY(M::gridToLatLon(grid, lat, lon) && lat == 41.5 && lon == -73.0);
        QVERIFY(M::gridToLatLon(QStringLiteral("fn31PR"), lat, lon)); // subsquare centre, any case
        QVERIFY(std::fabs(lat - (41 + 17.5 / 24)) < 1e-9 && std::fabs(lon - (-74 + 15.5 / 12)) < 1e-9);
        QVERIFY(std::fabs(M::distanceMi(0, 0, 0, 180) - 12436.94) < 0.01); // half the equator
        QVERIFY(std::fabs(M::bearingDeg(0, 0, 0, -10) - 270.0) < 1e-9);    // west, not -90
    }

    void colourPrecedence()
    {
        mergeSteps("POTA K1A US-1 7030 10, POTA K2B US-1 7030.5 20, POTA K3C US-3 14030 30, "
                   "POTA K4D US-4 21030 40; DX K5E - 7000");
        const auto bg = [&](int row) { return cell(row, M::NameColumn, Qt::BackgroundRole); };
        const auto fg = [&](int row) { return cell(row, M::ModeColumn, Qt::ForegroundRole).value<QColor>(); };
        m_model->setHighlightGroup(1);
        m_model->markSpot(m_model->spotAt(0).key(), S::Heard);
        QCOMPARE(bg(0).value<QColor>(), QColor(40, 30, 8)); // heard outranks the highlight
        QCOMPARE(bg(1).value<QColor>(), QColor(10, 34, 56));
        QVERIFY(!bg(2).isValid());
        QCOMPARE(fg(0), QColor(201, 168, 76));

        m_model->setWatchCallsigns({QStringLiteral("k2b"), QStringLiteral("K3C")});
        m_model->setWatchReferences({QStringLiteral("us-1"), QStringLiteral(" US-4 "), QStringLiteral(" ")});
        QCOMPARE(fg(1), QColor(64, 255, 128)); // call outranks reference
        QCOMPARE(fg(3), QColor(64, 176, 255));
        QCOMPARE(fg(4), QColor(232, 224, 208)); // a blank entry is no entry, not the empty reference
        m_model->markSpot(m_model->spotAt(1).key(), S::Contacted); // status outranks the watch list
        QCOMPARE(fg(1), QColor(74, 139, 74));
        m_model->markSpot(m_model->spotAt(2).key(), S::NotHeard);
        QCOMPARE(fg(2), QColor(85, 85, 85));
        QCOMPARE(cell(2, M::StatusColumn).toString(), QLatin1String("Not Heard"));
    }

    // The filter in front of the table.
    void sourcesAndNeverShown()
    {
        mergeSteps("DX DL1X - 7025, POTA K1A US-1 7030, BOTA B1 B-1 7030, SOTA W2Z W1/A-2 0, "
                   "SOTA W3N W1/A-3 -5, SOTA W1Q W1/A-1 7032 60 CW going QrT now");
        QCOMPARE(shown(), QLatin1String("B1 K1A"));          // DX is off at first; no frequency or QRT: never
        QVERIFY(m_proxy->isSourceEnabled(S::k_sourceCount)); // a source it does not know passes
        m_proxy->setSourceFilter(true, false, true, true, false, true, true);
        QCOMPARE(shown(), QLatin1String("DL1X"));
        m_proxy->setHiddenTest([](const S &s) { return s.callsign == QLatin1String("DL1X"); });
        QCOMPARE(shown(), QString());
    }

    void modeClasses()
    {
        mergeSteps("POTA K1S US-1 14250 60 usb, POTA K2C US-2 14050, POTA K3D US-3 14074 60 FT8, "
                   "POTA K4E US-4 14074 60 -, POTA K5F US-5 29600 60 am, POTA K6G US-6 29600 60 nfm");
        m_proxy->setModeFilter(true, false, false, false, false);
        QCOMPARE(shown(), QLatin1String("K1S"));
        m_proxy->setModeFilter(false, true, false, true, true);
        QCOMPARE(shown(), QLatin1String("K2C K3D K4E K6G"));
        m_proxy->setModeFilter(false, false, false, false, false); // none ticked: all
        QCOMPARE(shown(), QLatin1String("K1S K2C K3D K4E K5F K6G"));
    }

    void bandEdges()
    {
        mergeSteps("POTA K1E US-1 14350, POTA K2O US-2 14350.1, POTA K3S US-3 5357, "
                   "POTA K4H US-4 1000000, POTA K5L US-5 14000");
        QCOMPARE(shown(), QLatin1String("K1E K2O K3S K4H K5L"));
        m_proxy->setBandFilter({QStringLiteral("20m")});
        QCOMPARE(shown(), QLatin1String("K1E K5L"));
        m_proxy->setBandFilter({QStringLiteral("60m"), QStringLiteral("20m"), QStringLiteral("x")});
        QCOMPARE(shown(), QLatin1String("K1E K3S K5L"));
        m_proxy->setBandFilter({QStringLiteral("x")});
        QCOMPARE(shown(), QString());
    }

    void programmesAssociationsAndText()
    {
        S named = spot("BOTA K9Z B-9 7030");
        named.referenceName = QStringLiteral("Ridge W4G Park");
        m_model->mergeSpots({named});
        mergeSteps("POTA K1U US-1234 7030, POTA K2K K-0001 7031, POTA K3N US 7032, WWFF W4GXX KFF-1 7033, "
                   "SOTA W5S W4C/CM-001 7034, SOTA N6S W4G/NG-001 7035, GMA D7G W4C/CM-001 7036");
        m_proxy->setPotaPrograms({QStringLiteral("US")});
        QCOMPARE(shown(), QLatin1String("D7G K1U K3N K9Z N6S W4GXX W5S"));
        m_proxy->setPotaPrograms({QStringLiteral("us")}); // exact text
        QCOMPARE(shown(), QLatin1String("D7G K9Z N6S W4GXX W5S"));
        m_proxy->setPotaPrograms({});
        m_proxy->setSotaAssociations({QStringLiteral("W4C")});
        QCOMPARE(shown(), QLatin1String("D7G K1U K2K K3N K9Z W4GXX W5S"));
        m_proxy->setSotaAssociations({});
        m_proxy->setTextFilter(QStringLiteral("  w4g ")); // in a call, reference or name
        QCOMPARE(shown(), QLatin1String("K9Z N6S W4GXX"));
    }

    void status()
    {
        mergeSteps("POTA K0U US-0 7030, POTA K1H US-1 7031, POTA K2C US-2 7032, POTA K3N US-3 7033");
        m_model->markSpot(QStringLiteral("K1H|US-1|7031"), S::Heard);
        m_model->markSpot(QStringLiteral("K2C|US-2|7032"), S::Contacted);
        m_model->markSpot(QStringLiteral("K3N|US-3|7033"), S::NotHeard);
        QCOMPARE(shown(), QLatin1String("K0U K1H")); // "Active"
        m_proxy->setStatusFilter(S::Contacted);
        QCOMPARE(shown(), QLatin1String("K2C"));
        m_proxy->setStatusFilter(S::Unknown);
        QCOMPARE(shown(), QLatin1String("K0U"));
        m_proxy->setStatusFilter(-7);
        QCOMPARE(shown(), QLatin1String("K0U K1H K2C K3N"));
    }

    void ageLimitAtTheMinuteTick()
    {
        // After the minute, K4E is exactly at the 30-minute limit (shown) and K5F a second past it.
        mergeSteps("POTA K1A US-1 7030 1770, POTA K2B US-2 7031, POTA K3T US-3 7032 -600,"
                   "POTA K4E US-4 7033 1740, POTA K5F US-5 7034 1741");
        QCOMPARE(shown(), QLatin1String("K1A K2B K3T K4E K5F"));
        m_now += 60 * 1000;
        auto *timer = m_proxy->findChild<QTimer *>();
        QVERIFY(timer && timer->isActive());
        QCOMPARE(timer->interval(), 60000);
        QVERIFY(QMetaObject::invokeMethod(timer, "timeout")); // no new data
        QCOMPARE(shown(), QLatin1String("K2B K3T K4E"));
        m_proxy->setMaxAgeMins(0);
        QCOMPARE(shown(), QLatin1String("K1A K2B K3T K4E K5F"));
        m_proxy->sort(StationModel::AgeColumn, Qt::DescendingOrder); // by time, not by the age text
        QCOMPARE(shown(), QLatin1String("K3T K2B K4E K5F K1A"));
    }

    void outlivesItsModel()
    {
        auto *model = new StationModel;
        model->setClock([this] { return m_now; });
        m_proxy->setSourceModel(model);
        m_proxy->sort(StationModel::AgeColumn);
        model->mergeSpots(spots("POTA K1A US-1 14062, POTA K2B US-2 7030 120"));
        QCOMPARE(m_proxy->rowCount(), 2);
        delete model;
        m_proxy->setTextFilter(QStringLiteral("k")); // re-filters with no model left
        QCOMPARE(m_proxy->rowCount(), 0);
    }
};

TALLIS_TEST_MAIN(TestStationModel)
#include "tst_stationmodel.moc"
