#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "support/modeltest.h"
#include "support/testmain.h"

#include <QAbstractItemModelTester>
#include <QTest>
#include <QTimer>

#include <limits>

namespace {
using S = StationSpot;
} // namespace

class TestSpotFilterProxyModel final : public ModelTest
{
    Q_OBJECT

private:
    SpotFilterProxyModel *m_proxy = nullptr;
    QAbstractItemModelTester *m_proxyTester = nullptr;

    QStringList shown() const
    {
        QStringList calls;
        for (int r = 0; r < m_proxy->rowCount(); ++r)
            calls.append(m_proxy->data(m_proxy->index(r, StationModel::CallsignColumn)).toString());
        calls.sort();
        return calls;
    }

    void load(const QList<S> &spots)
    {
        m_model->clearSpots();
        m_model->mergeSpots(spots);
    }

private slots:
    void init()
    {
        setUpModel();
        m_proxy = new SpotFilterProxyModel(this);
        m_proxy->setSourceModel(m_model);
        m_proxyTester = new QAbstractItemModelTester(m_proxy, this);
    }

    void cleanup()
    {
        delete m_proxyTester;
        delete m_proxy;
        tearDownModel();
    }

    void outlivesItsModel()
    {
        SpotFilterProxyModel proxy;
        auto *model = new StationModel;
        proxy.setSourceModel(model);
        proxy.sort(StationModel::AgeColumn);
        model->mergeSpots(
            {spot(S::POTA, "K1A", "US-0001", 14062), spot(S::POTA, "K2B", "US-0002", 7030, 120)});
        QCOMPARE(proxy.rowCount(), 2);
        delete model;
        proxy.setTextFilter(QStringLiteral("k")); // re-filters with no model left
        QCOMPARE(proxy.rowCount(), 0);
    }

    void defaultsAndSources()
    {
        QCOMPARE(m_proxy->sortRole(), int(Qt::UserRole));
        QCOMPARE(m_proxy->filterCaseSensitivity(), Qt::CaseInsensitive);
        QVERIFY(m_proxy->isSourceEnabled(42)); // an unknown source passes
        load({spot(S::DX, "DL1X", "", 7025), spot(S::POTA, "K1A", "US-1", 7030)});
        QCOMPARE(shown(), QStringList({"K1A"}));
        m_proxy->setSourceFilter(true, false, true, true, true, true, true);
        QCOMPARE(shown(), QStringList({"DL1X"}));
    }

    void alwaysHiddenAndStatus()
    {
        S qrt = spot(S::SOTA, "W1Q", "W1/AA-001", 7032);
        qrt.comments = "going QrT now, 73";
        load({qrt, spot(S::SOTA, "W2Z", "W1/AA-002", 0), spot(S::SOTA, "W3N", "W1/AA-003", -5),
              spot(S::SOTA, "W4K", "W1/AA-004", 7033)});
        m_proxy->setMaxAgeMins(0);
        m_proxy->setModeFilter(false, false, false, false, false);
        QCOMPARE(shown(), QStringList({"W4K"}));

        load({spot(S::POTA, "K0U", "US-0", 7030), spot(S::POTA, "K1H", "US-1", 7031),
              spot(S::POTA, "K2C", "US-2", 7032), spot(S::POTA, "K3N", "US-3", 7033)});
        m_model->markSpot("K1H|US-1|7031", S::Heard);
        m_model->markSpot("K2C|US-2|7032", S::Contacted);
        m_model->markSpot("K3N|US-3|7033", S::NotHeard);
        QCOMPARE(shown(), QStringList({"K0U", "K1H"})); // "Active"
        m_proxy->setStatusFilter(2);
        QCOMPARE(shown(), QStringList({"K2C"}));
        m_proxy->setStatusFilter(0);
        QCOMPARE(shown(), QStringList({"K0U"}));
        m_proxy->setStatusFilter(-7);
        QCOMPARE(shown().size(), 4);
    }

    void modeClasses()
    {
        using P = SpotFilterProxyModel;
        QCOMPARE(P::modeClass("cw-r"), P::CwMode);
        QCOMPARE(P::modeClass("NFM"), P::FmMode);
        QCOMPARE(P::modeClass(" CW"), P::OtherMode); // whole text, no trimming
        // Upper-casing, not case folding: the sharp s becomes "SS".
        QCOMPARE(P::modeClass(QStringLiteral("\u00dfb")), P::SsbMode);

        load({spot(S::POTA, "K1S", "US-1", 14250, 60, "usb"), spot(S::POTA, "K2C", "US-2", 14050),
              spot(S::POTA, "K3D", "US-3", 14074, 60, "FT8"), spot(S::POTA, "K4E", "US-4", 14074, 60, ""),
              spot(S::POTA, "K5F", "US-5", 29600, 60, "am")});
        m_proxy->setModeFilter(true, false, false, false, false);
        QCOMPARE(shown(), QStringList({"K1S"}));
        m_proxy->setModeFilter(false, true, false, true, true);
        QCOMPARE(shown(), QStringList({"K2C", "K3D", "K4E"}));
        m_proxy->setModeFilter(false, false, false, false, false); // nothing ticked shows everything
        QCOMPARE(shown().size(), 5);
    }

    void bandEdges()
    {
        load({spot(S::POTA, "K1E", "US-1", 14350.0), spot(S::POTA, "K2O", "US-2", 14350.1),
              spot(S::POTA, "K3S", "US-3", 5357.0), spot(S::POTA, "K4H", "US-4", 1000000.0),
              spot(S::POTA, "K5L", "US-5", 14000.0)});
        QCOMPARE(shown().size(), 5);
        m_proxy->setBandFilter({"20m"});
        QCOMPARE(shown(), QStringList({"K1E", "K5L"}));
        m_proxy->setBandFilter({"60m", "20m", "nonsense"});
        QCOMPARE(shown(), QStringList({"K1E", "K3S", "K5L"}));
        m_proxy->setBandFilter({"nonsense"});
        QCOMPARE(shown().size(), 0);
    }

    void ageLimitAtTheMinuteTick()
    {
        load({spot(S::POTA, "K1A", "US-1", 7030, 29 * 60 + 30), spot(S::POTA, "K2B", "US-2", 7031),
              spot(S::POTA, "K3T", "US-3", 7032, -600)});
        QCOMPARE(shown(), QStringList({"K1A", "K2B", "K3T"}));
        m_now += 60 * 1000;
        auto *timer = m_proxy->findChild<QTimer *>();
        QVERIFY(timer && timer->isActive());
        QCOMPARE(timer->interval(), 60000);
        QMetaObject::invokeMethod(timer, "timeout"); // no new data
        QCOMPARE(shown(), QStringList({"K2B", "K3T"}));
        m_proxy->setMaxAgeMins(0);
        QCOMPARE(shown().size(), 3);
    }

    void programmesAssociationsAndText()
    {
        S named = spot(S::POTA, "K9Z", "US-9", 7030);
        named.referenceName = "Ridge W4G Park";
        load({spot(S::POTA, "K1U", "US-1234", 7030), spot(S::POTA, "K2K", "K-0001", 7031),
              spot(S::POTA, "K3N", "US", 7032), spot(S::WWFF, "K4F", "KFF-0001", 7033),
              spot(S::SOTA, "W5S", "W4C/CM-001", 7034), spot(S::SOTA, "G6S", "G/LD-001", 7035),
              spot(S::GMA, "D7G", "W4C/CM-001", 7036), named, spot(S::SOTA, "N1A", "W4G/NG-001", 7031),
              spot(S::WWFF, "W4GXX", "KFF-2", 7032)});
        m_proxy->setPotaPrograms({"US"});
        QCOMPARE(shown(), QStringList({"D7G", "G6S", "K1U", "K3N", "K4F", "K9Z", "N1A", "W4GXX", "W5S"}));
        m_proxy->setPotaPrograms({"us"}); // exact text
        QCOMPARE(shown(), QStringList({"D7G", "G6S", "K4F", "N1A", "W4GXX", "W5S"}));
        m_proxy->setPotaPrograms({});
        m_proxy->setSotaAssociations({"W4C"});
        QCOMPARE(shown(), QStringList({"D7G", "K1U", "K2K", "K3N", "K4F", "K9Z", "W4GXX", "W5S"}));
        m_proxy->setSotaAssociations({});
        m_proxy->setTextFilter("  w4g ");
        QCOMPARE(shown(), QStringList({"K9Z", "N1A", "W4GXX"}));
    }

    void followsMergesAndSorts()
    {
        m_proxy->setSourceFilter(true, true, true, true, true, true, true);
        m_proxy->sort(StationModel::AgeColumn, Qt::DescendingOrder);
        for (int i = 0; i < 30; ++i)
            m_model->mergeSpots(
                {spot(S::DX, QStringLiteral("DX%1").arg(i % 12), QString(), 7000 + i, 600 - i * 10)});
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
