#include "app/contactstatusstore.h"
#include "support/modeltest.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

using Spread = ContactStatusStore::Spread;

class TestContactStatusStore final : public ModelTest
{
    Q_OBJECT

private slots:
    void init() override;
    void retentionWindow_data();
    void retentionWindow();
    void markSurvivesRebuildAndRestart();
    void spreading_data();
    void spreading();
    void fileShape();
    void failedWriteKeepsOldFileAndMark();

private:
    ContactStatusStore makeStore() const
    {
        ContactStatusStore store([this] { return QDateTime::fromMSecsSinceEpoch(m_now, Qt::UTC); });
        store.load(m_dir->filePath(QStringLiteral("contact-status.json")));
        return store;
    }
    StationSpot k1abc() const { return spot(QStringLiteral("POTA K1ABC US-1234 14062.7")); }
    QStringList keysMarked(StationSpot::Status status) const
    {
        QStringList keys;
        for (const StationSpot &s : m_model->spots()) {
            if (s.status == status)
                keys.append(s.key());
        }
        keys.sort();
        return keys;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestContactStatusStore::init()
{
    ModelTest::init();
    m_dir = std::make_unique<QTemporaryDir>();
}

void TestContactStatusStore::retentionWindow_data()
{
    QTest::addColumn<qint64>("age");
    QTest::addColumn<bool>("live");
    QTest::newRow("2 h 59 min") << qint64(3 * 3600 - 60) << true;
    QTest::newRow("exactly 3 h") << qint64(3 * 3600) << true;
    QTest::newRow("3 h 1 min") << qint64(3 * 3600 + 60) << false;
}

void TestContactStatusStore::retentionWindow()
{
    QFETCH(qint64, age);
    QFETCH(bool, live);
    const QString key = k1abc().key();
    m_model->mergeSpots({k1abc()});
    // Held in memory: applied and written only when live.
    ContactStatusStore held = makeStore();
    held.record(key, StationSpot::Heard, ago(age));
    QCOMPARE(held.applyTo(*m_model), live ? 1 : 0);
    QCOMPARE(keysMarked(StationSpot::Heard).size(), live ? 1 : 0);
    QVERIFY(held.save());
    QCOMPARE(makeStore().marks().contains(key), live);

    // In a file written that long ago: loaded only when live.
    ContactStatusStore earlier([this, age] { return ago(age); });
    earlier.load(held.filePath());
    earlier.record(key, StationSpot::Heard);
    QVERIFY(earlier.save());
    QCOMPARE(makeStore().marks().contains(key), live);
}

void TestContactStatusStore::markSurvivesRebuildAndRestart()
{
    const QList<StationSpot> batch =
        spots(QStringLiteral("POTA K1ABC US-1234 14062.7, SOTA W7XYZ W7W/KG-001 7032"));
    m_model->mergeSpots(batch);
    ContactStatusStore store = makeStore();
    const QStringList key{batch.at(0).key()};
    QCOMPARE(store.markSelection(*m_model, key.at(0), StationSpot::NotHeard, Spread::SimilarOnly), key);

    // A refresh that rebuilds every row forgets the mark until it is applied.
    m_model->clearSpots();
    m_model->mergeSpots(batch);
    QVERIFY(keysMarked(StationSpot::NotHeard).isEmpty());
    QCOMPARE(store.applyTo(*m_model), 1);
    QCOMPARE(keysMarked(StationSpot::NotHeard), key);
    QCOMPARE(store.applyTo(*m_model), 0); // already shown: nothing repainted

    // A restart: a new model and a new store reading the file.
    ModelTest::cleanup();
    ModelTest::init();
    m_model->mergeSpots(batch);
    makeStore().applyTo(*m_model);
    QCOMPARE(keysMarked(StationSpot::NotHeard), key);
}

void TestContactStatusStore::spreading_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<Spread>("spread");
    QTest::addColumn<QStringList>("recorded"); // sorted
    QTest::addColumn<QStringList>("marked");   // sorted
    const QString selected = QStringLiteral("K1ABC|US-1234|14062");
    const QString nearCaseless = QStringLiteral("k1abc|US-5678|14063");
    const QString groupSameCall = QStringLiteral("K1ABC|W1/HA-001|14064");
    const QString groupOtherCall = QStringLiteral("N2DEF|US-1234|14062");
    QTest::newRow("heard spreads to the group")
        << int(StationSpot::Heard) << Spread::SimilarAndGroup
        << QStringList{selected, groupSameCall, nearCaseless}
        << QStringList{selected, groupSameCall, groupOtherCall, nearCaseless};
    QTest::newRow("contacted stays with similar")
        << int(StationSpot::Contacted) << Spread::SimilarOnly << QStringList{selected, nearCaseless}
        << QStringList{selected, nearCaseless};
}

void TestContactStatusStore::spreading()
{
    QFETCH(int, status);
    QFETCH(Spread, spread);
    QFETCH(QStringList, recorded);
    QFETCH(QStringList, marked);
    // The selected spot links with the same call on SOTA 1.8 kHz up and with
    // another call at the same park; the 7032 kHz row stands alone.
    mergeSteps(
        QStringLiteral("POTA K1ABC US-1234 14062.7, POTA k1abc US-5678 14063.5, POTA K1ABC US-9999 7032,"
                       "POTA N2DEF US-1234 14062; SOTA K1ABC W1/HA-001 14064.5"));
    ContactStatusStore store = makeStore();

    QStringList got = store.markSelection(*m_model, k1abc().key(), StationSpot::Status(status), spread);
    got.sort();
    QCOMPARE(got, recorded);
    QCOMPARE(keysMarked(StationSpot::Status(status)), marked);
    // One time for every entry, and the file has them all.
    for (const QString &key : std::as_const(recorded))
        QCOMPARE(store.markTime(key), ago(0));
    QCOMPARE(makeStore().marks().size(), recorded.size());

    // No selection, or one that names no row: nothing marked, nothing written.
    QVERIFY(QFile::remove(store.filePath()));
    QVERIFY(store.markSelection(*m_model, QString(), StationSpot::Heard, Spread::SimilarOnly).isEmpty());
    QVERIFY(store.markSelection(*m_model, QStringLiteral("X|Y|1"), StationSpot::Heard, Spread::SimilarOnly)
                .isEmpty());
    QVERIFY(!QFile::exists(store.filePath()));
}

void TestContactStatusStore::fileShape()
{
    ContactStatusStore store = makeStore();
    store.record(QStringLiteral("W7XYZ|W7W/KG-001|7032"), StationSpot::Contacted);
    // The API's mark of a key no row has is written all the same.
    store.markKey(*m_model, QStringLiteral("K1ABC|US-1234|14062"), StationSpot::Heard);
    const QString stamp = ago(0).toString(Qt::ISODate);
    QVERIFY(stamp.endsWith(QLatin1Char('Z')));
    const QString entry = QStringLiteral("    {\n        \"key\": \"%1\",\n        \"status\": %2,\n"
                                         "        \"timestamp\": \"%3\"\n    }");
    const QString expected = QStringLiteral("[\n%1,\n%2\n]\n")
                                 .arg(entry.arg(QStringLiteral("K1ABC|US-1234|14062")).arg(1).arg(stamp),
                                      entry.arg(QStringLiteral("W7XYZ|W7W/KG-001|7032")).arg(2).arg(stamp));
    QFile file(store.filePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(file.readAll()), expected);
}

void TestContactStatusStore::failedWriteKeepsOldFileAndMark()
{
    // The target is a directory holding a file: no write can replace it.
    ContactStatusStore store = makeStore();
    QVERIFY(QDir().mkpath(store.filePath()));
    QFile inside(store.filePath() + QStringLiteral("/old"));
    QVERIFY(inside.open(QIODevice::WriteOnly));
    inside.write("old");
    inside.close();

    m_model->mergeSpots({k1abc()});
    store.markKey(*m_model, k1abc().key(), StationSpot::Heard);
    QVERIFY(!store.save());
    QVERIFY(store.marks().contains(k1abc().key()));
    QCOMPARE(keysMarked(StationSpot::Heard).size(), 1);
    QVERIFY(inside.open(QIODevice::ReadOnly));
    QCOMPARE(inside.readAll(), QByteArray("old"));
    // No half-written copy is left beside it.
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), QStringList());
}

TALLIS_TEST_MAIN(TestContactStatusStore)
#include "tst_contactstatusstore.moc"
