#include "support/modeltest.h"
#include "support/testmain.h"

#include <QTest>
#include <QTimer>

using S = StationSpot;
using P = SpotFilterProxyModel;

class TestSpotFilterProxyModel final : public ModelTest
{
    Q_OBJECT

private slots:
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
        mergeSteps("POTA K1A US-1 7030 1770, POTA K2B US-2 7031, POTA K3T US-3 7032 -600");
        QCOMPARE(shown(), QLatin1String("K1A K2B K3T"));
        m_now += 60 * 1000;
        auto *timer = m_proxy->findChild<QTimer *>();
        QVERIFY(timer && timer->isActive());
        QCOMPARE(timer->interval(), 60000);
        QMetaObject::invokeMethod(timer, "timeout"); // no new data
        QCOMPARE(shown(), QLatin1String("K2B K3T"));
        m_proxy->setMaxAgeMins(0);
        QCOMPARE(shown(), QLatin1String("K1A K2B K3T"));
        m_proxy->sort(StationModel::AgeColumn, Qt::DescendingOrder); // by time, not by the age text
        QCOMPARE(shown(), QLatin1String("K3T K2B K1A"));
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

TALLIS_TEST_MAIN(TestSpotFilterProxyModel)
#include "tst_spotfilterproxymodel.moc"
