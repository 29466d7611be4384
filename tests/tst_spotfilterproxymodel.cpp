#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "support/testmain.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace {

StationSpot makeSpot(StationSpot::Source source, const QString &call, const QString &ref, double khz,
                     const QString &mode, const QDateTime &time)
{
    StationSpot s;
    s.source = source;
    s.callsign = call;
    s.reference = ref;
    s.frequencyKhz = khz;
    s.mode = mode;
    s.spotTime = time;
    return s;
}

} // namespace

class TestSpotFilterProxyModel final : public QObject
{
    Q_OBJECT

private:
    qint64 m_now = 0;
    StationModel *m_model = nullptr;
    SpotFilterProxyModel *m_proxy = nullptr;
    QAbstractItemModelTester *m_tester = nullptr;

    QDateTime ago(qint64 secs) const { return QDateTime::fromMSecsSinceEpoch(m_now - secs * 1000, Qt::UTC); }

    QStringList shown() const
    {
        QStringList calls;
        for (int r = 0; r < m_proxy->rowCount(); ++r)
            calls.append(m_proxy->data(m_proxy->index(r, StationModel::CallsignColumn)).toString());
        calls.sort();
        return calls;
    }

    void load(const QList<StationSpot> &spots)
    {
        m_model->clearSpots();
        // One batch per source, as the sources deliver them.
        for (int source = 0; source < 7; ++source) {
            QList<StationSpot> batch;
            for (const StationSpot &s : spots) {
                if (s.source == source)
                    batch.append(s);
            }
            if (!batch.isEmpty())
                m_model->mergeSpots(batch);
        }
    }

private slots:
    void init()
    {
        m_now = QDateTime::currentMSecsSinceEpoch() / 1000 * 1000;
        m_model = new StationModel(this);
        m_model->setClock([this] { return m_now; });
        m_proxy = new SpotFilterProxyModel(this);
        m_proxy->setSourceModel(m_model);
        m_tester = new QAbstractItemModelTester(m_proxy, this);
    }

    void cleanup()
    {
        delete m_tester;
        delete m_proxy;
        delete m_model;
    }

    void defaults()
    {
        QCOMPARE(m_proxy->sortRole(), int(Qt::UserRole));
        QCOMPARE(m_proxy->filterCaseSensitivity(), Qt::CaseInsensitive);
        QCOMPARE(m_proxy->refilterIntervalMs(), 60000);
        QVERIFY(m_proxy->isRefilterActive());
        QCOMPARE(m_proxy->statusFilter(), -2);
        QCOMPARE(m_proxy->maxAgeMins(), 30);
        QVERIFY(!m_proxy->isSourceEnabled(StationSpot::DX));
        QVERIFY(m_proxy->isSourceEnabled(StationSpot::GMA));
        QVERIFY(m_proxy->isSourceEnabled(42));

        load({makeSpot(StationSpot::DX, "DL1X", "", 7025, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K1A", "US-1", 7030, "CW", ago(60))});
        QCOMPARE(shown(), QStringList({"K1A"}));
        m_proxy->setSourceFilter(true, false, true, true, true, true, true);
        QCOMPARE(shown(), QStringList({"DL1X"}));
    }

    void alwaysHidden()
    {
        StationSpot qrt = makeSpot(StationSpot::SOTA, "W1Q", "W1/AA-001", 7032, "CW", ago(60));
        qrt.comments = "going QrT now, 73";
        load({qrt, makeSpot(StationSpot::SOTA, "W2Z", "W1/AA-002", 0, "CW", ago(60)),
              makeSpot(StationSpot::SOTA, "W3N", "W1/AA-003", -5, "CW", ago(60)),
              makeSpot(StationSpot::SOTA, "W4K", "W1/AA-004", 7033, "CW", ago(60))});
        m_proxy->setStatusFilter(-1);
        m_proxy->setMaxAgeMins(0);
        m_proxy->setModeFilter(false, false, false, false, false);
        QCOMPARE(shown(), QStringList({"W4K"}));
    }

    void statusFilter()
    {
        load({makeSpot(StationSpot::POTA, "K0U", "US-0", 7030, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K1H", "US-1", 7031, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K2C", "US-2", 7032, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K3N", "US-3", 7033, "CW", ago(60))});
        m_model->markSpot("K1H|US-1|7031", StationSpot::Heard);
        m_model->markSpot("K2C|US-2|7032", StationSpot::Contacted);
        m_model->markSpot("K3N|US-3|7033", StationSpot::NotHeard);
        QCOMPARE(shown(), QStringList({"K0U", "K1H"}));
        m_proxy->setStatusFilter(-1);
        QCOMPARE(shown().size(), 4);
        m_proxy->setStatusFilter(2);
        QCOMPARE(shown(), QStringList({"K2C"}));
        m_proxy->setStatusFilter(0);
        QCOMPARE(shown(), QStringList({"K0U"}));
        m_proxy->setStatusFilter(-7);
        QCOMPARE(shown().size(), 4);
    }

    void modeClasses()
    {
        QCOMPARE(SpotFilterProxyModel::modeClass("usb"), SpotFilterProxyModel::SsbMode);
        QCOMPARE(SpotFilterProxyModel::modeClass("LSB"), SpotFilterProxyModel::SsbMode);
        QCOMPARE(SpotFilterProxyModel::modeClass("cw-r"), SpotFilterProxyModel::CwMode);
        QCOMPARE(SpotFilterProxyModel::modeClass("CWR"), SpotFilterProxyModel::CwMode);
        QCOMPARE(SpotFilterProxyModel::modeClass("am"), SpotFilterProxyModel::AmMode);
        QCOMPARE(SpotFilterProxyModel::modeClass("NFM"), SpotFilterProxyModel::FmMode);
        QCOMPARE(SpotFilterProxyModel::modeClass("WFM"), SpotFilterProxyModel::FmMode);
        QCOMPARE(SpotFilterProxyModel::modeClass("FT8"), SpotFilterProxyModel::OtherMode);
        QCOMPARE(SpotFilterProxyModel::modeClass(""), SpotFilterProxyModel::OtherMode);
        QCOMPARE(SpotFilterProxyModel::modeClass(" CW"), SpotFilterProxyModel::OtherMode);
        QCOMPARE(SpotFilterProxyModel::modeClass("SSB "), SpotFilterProxyModel::OtherMode);
        // Upper-casing, not case folding: the sharp s becomes "SS".
        QCOMPARE(SpotFilterProxyModel::modeClass(QStringLiteral("\u00dfb")), SpotFilterProxyModel::SsbMode);

        load({makeSpot(StationSpot::POTA, "K1S", "US-1", 14250, "usb", ago(60)),
              makeSpot(StationSpot::POTA, "K2C", "US-2", 14050, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K3D", "US-3", 14074, "FT8", ago(60)),
              makeSpot(StationSpot::POTA, "K4E", "US-4", 14074, "", ago(60)),
              makeSpot(StationSpot::POTA, "K5F", "US-5", 29600, "FM", ago(60))});
        m_proxy->setModeFilter(true, false, false, false, false);
        QCOMPARE(shown(), QStringList({"K1S"}));
        m_proxy->setModeFilter(false, true, false, true, true);
        QCOMPARE(shown(), QStringList({"K2C", "K3D", "K4E", "K5F"}));
        m_proxy->setModeFilter(false, false, false, false, false);
        QCOMPARE(shown().size(), 5);
    }

    void bandsAndAge()
    {
        load({makeSpot(StationSpot::POTA, "K1E", "US-1", 14350.0, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K2O", "US-2", 14350.1, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K3S", "US-3", 5357.0, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K4H", "US-4", 1000000.0, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K5L", "US-5", 14000.0, "CW", ago(60))});
        QCOMPARE(shown().size(), 5);
        m_proxy->setBandFilter({"20m"});
        QCOMPARE(shown(), QStringList({"K1E", "K5L"}));
        m_proxy->setBandFilter({"60m", "20m", "nonsense"});
        QCOMPARE(shown(), QStringList({"K1E", "K3S", "K5L"}));
        m_proxy->setBandFilter({"nonsense"});
        QCOMPARE(shown().size(), 0);
        m_proxy->setBandFilter({});
        QCOMPARE(shown().size(), 5);
        QCOMPARE(m_proxy->bandFilter(), QSet<QString>());

        // The age limit applies at the minute tick, with no new data.
        load({makeSpot(StationSpot::POTA, "K1A", "US-1", 7030, "CW", ago(29 * 60 + 30)),
              makeSpot(StationSpot::POTA, "K2B", "US-2", 7031, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K3T", "US-3", 7032, "CW", ago(-600))});
        QCOMPARE(shown(), QStringList({"K1A", "K2B", "K3T"}));
        m_now += 60 * 1000;
        auto *timer = m_proxy->findChild<QTimer *>();
        QVERIFY(timer);
        QCOMPARE(timer->interval(), 60000);
        QMetaObject::invokeMethod(timer, "timeout");
        QCOMPARE(shown(), QStringList({"K2B", "K3T"}));
        m_proxy->setMaxAgeMins(0);
        QCOMPARE(shown().size(), 3);
        m_proxy->setMaxAgeMins(-5);
        QCOMPARE(shown().size(), 3);
    }

    void programmesAndAssociations()
    {
        load({makeSpot(StationSpot::POTA, "K1U", "US-1234", 7030, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K2K", "K-0001", 7031, "CW", ago(60)),
              makeSpot(StationSpot::POTA, "K3N", "US", 7032, "CW", ago(60)),
              makeSpot(StationSpot::WWFF, "K4F", "KFF-0001", 7033, "CW", ago(60)),
              makeSpot(StationSpot::SOTA, "W5S", "W4C/CM-001", 7034, "CW", ago(60)),
              makeSpot(StationSpot::SOTA, "G6S", "G/LD-001", 7035, "CW", ago(60)),
              makeSpot(StationSpot::GMA, "D7G", "W4C/CM-001", 7036, "CW", ago(60))});
        m_proxy->setPotaPrograms({"US"});
        QCOMPARE(shown(), QStringList({"D7G", "G6S", "K1U", "K3N", "K4F", "W5S"}));
        m_proxy->setPotaPrograms({"us"}); // exact text
        QCOMPARE(shown(), QStringList({"D7G", "G6S", "K4F", "W5S"}));
        m_proxy->setPotaPrograms({});
        m_proxy->setSotaAssociations({"W4C"});
        QCOMPARE(shown(), QStringList({"D7G", "K1U", "K2K", "K3N", "K4F", "W5S"}));
        QCOMPARE(m_proxy->sotaAssociationFilter(), QSet<QString>({"W4C"}));
    }

    void textSearch()
    {
        StationSpot named = makeSpot(StationSpot::POTA, "K9Z", "US-9", 7030, "CW", ago(60));
        named.referenceName = "Ridge W4G Park";
        load({makeSpot(StationSpot::SOTA, "N1A", "W4G/NG-001", 7031, "CW", ago(60)),
              makeSpot(StationSpot::SOTA, "W4GXX", "W1/AA-001", 7032, "CW", ago(60)), named,
              makeSpot(StationSpot::SOTA, "K1Q", "W1/AA-002", 7033, "CW", ago(60))});
        m_proxy->setTextFilter("  w4g ");
        QCOMPARE(m_proxy->textFilter(), QStringLiteral("w4g"));
        QCOMPARE(shown(), QStringList({"K9Z", "N1A", "W4GXX"}));
        m_proxy->setTextFilter("");
        QCOMPARE(shown().size(), 4);
    }

    void followsMergesAndSorts()
    {
        m_proxy->setSourceFilter(true, true, true, true, true, true, true);
        m_proxy->sort(StationModel::AgeColumn, Qt::DescendingOrder);
        for (int i = 0; i < 30; ++i)
            m_model->mergeSpots({makeSpot(StationSpot::DX, QStringLiteral("DX%1").arg(i % 12), QString(),
                                          7000 + i, "CW", ago(600 - i * 10))});
        QCOMPARE(m_proxy->rowCount(), 12);
        qint64 previous = std::numeric_limits<qint64>::max();
        for (int r = 0; r < m_proxy->rowCount(); ++r) {
            const qint64 t =
                m_proxy->data(m_proxy->index(r, StationModel::AgeColumn), Qt::UserRole).toLongLong();
            QVERIFY(t <= previous);
            previous = t;
        }
    }
};

TALLIS_TEST_MAIN(TestSpotFilterProxyModel)
#include "tst_spotfilterproxymodel.moc"
