#include "support/modeltest.h"
#include "support/testmain.h"

#include <QColor>
#include <QTest>
#include <QTimer>

#include <cmath>

using S = StationSpot;
using M = StationModel;

// The model as the table shows it, and the filter in front of it.
class TestStationModelTable final : public ModelTest
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

    void formatsWithoutValue()
    {
        QCOMPARE(M::formatAge(QDateTime()), QLatin1String("?"));
        // The overload without a time reads the wall clock.
        QCOMPARE(M::formatAge(QDateTime::currentDateTimeUtc().addSecs(-7230)), QLatin1String("2h ago"));
        QCOMPARE(M::formatFrequency(0.0), QLatin1String("?"));
        QCOMPARE(M::formatFrequency(1296000.25), QLatin1String("1296000.250"));
    }

    void cells()
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
        QVERIFY(!cell(2, M::SourceColumn, Qt::ToolTipRole).isValid());
        QCOMPARE(cell(2, M::SourceColumn, Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));

        QCOMPARE(m_model->headerData(3, Qt::Horizontal).toString(), QLatin1String("Summit / Park"));
        QVERIFY(!m_model->headerData(0, Qt::Vertical).isValid());
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

    void gridToLatLon()
    {
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
    }

    void distanceAndBearing()
    {
        QVERIFY(std::fabs(M::distanceMi(0, 0, 0, 180) - 12436.94) < 0.01); // half the equator
        QVERIFY(std::fabs(M::bearingDeg(0, 0, 0, -10) - 270.0) < 1e-9);    // west, not -90
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

TALLIS_TEST_MAIN(TestStationModelTable)
#include "tst_stationmodeltable.moc"
