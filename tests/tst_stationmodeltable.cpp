#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "support/modeltest.h"
#include "support/testmain.h"

#include <QAbstractItemModelTester>
#include <QColor>
#include <QTest>

#include <cmath>

class TestStationModelTable final : public ModelTest
{
    Q_OBJECT

private:
    QVariant cell(int row, int col, int role = Qt::DisplayRole) const
    {
        return m_model->data(m_model->index(row, col), role);
    }

private slots:
    void init() { setUpModel(); }

    void cleanup() { tearDownModel(); }

    void ageAndFrequencyTexts()
    {
        const QList<QPair<qint64, QString>> cases{{-120, "now"},      {0, "0s ago"},     {59, "59s ago"},
                                                  {60, "1m ago"},     {3599, "59m ago"}, {3600, "1h ago"},
                                                  {86399, "23h ago"}, {86400, "1d ago"}, {200000, "2d ago"}};
        for (const auto &[secs, text] : cases) {
            QCOMPARE(StationModel::formatAge(ago(secs), m_now), text);
            // Half a second more does not reach the next whole second.
            QCOMPARE(StationModel::formatAge(ago(secs), m_now + 500), text);
        }
        QCOMPARE(StationModel::formatAge(QDateTime()), QStringLiteral("?"));
        // The overload without a time reads the wall clock.
        QCOMPARE(StationModel::formatAge(QDateTime::currentDateTimeUtc().addSecs(-7230)),
                 QStringLiteral("2h ago"));
        QCOMPARE(StationModel::formatFrequency(0.0), QStringLiteral("?"));
        QCOMPARE(StationModel::formatFrequency(1296000.25), QStringLiteral("1296000.250"));
    }

    void cellsSortValuesAndHeader()
    {
        StationSpot pota = spot(StationSpot::POTA, "K1ABC", "US-1234", 14062.5, 90);
        pota.hasLocation = true;
        pota.lat = 41.5;
        pota.lon = -73.0;
        m_model->mergeSpots({pota});
        m_model->mergeSpots({spot(StationSpot::SOTA, "K1ABC", "W1/HA-001", 14063.0, 30)});
        m_model->mergeSpots({spot(StationSpot::DX, "G4Z", QString(), 7030, 10)});
        // Row 2 is the POTA spot, grouped with the SOTA spot of the same call: the "+" is display only.
        QCOMPARE(cell(2, 0).toString(), QStringLiteral("POTA+"));
        QCOMPARE(cell(2, 0, Qt::UserRole).toInt(), int(StationSpot::POTA));
        QCOMPARE(cell(2, 4).toString(), QStringLiteral("14062.500"));
        QCOMPARE(cell(2, 4, Qt::UserRole).toDouble(), 14062.5);
        QCOMPARE(cell(2, 6).toString(), QStringLiteral("1m ago"));
        QCOMPARE(cell(2, 6, Qt::UserRole).toLongLong(), ago(90).toSecsSinceEpoch());
        QCOMPARE(cell(2, 7).toString(), QString());

        // Without a user position distance and bearing are unknown, with sort values for the far ends.
        QCOMPARE(cell(2, 8).toString(), QStringLiteral("\u2014"));
        QCOMPARE(cell(2, 9).toString(), QStringLiteral("\u2014"));
        QCOMPARE(cell(2, 8, Qt::UserRole).toDouble(), 1e18);
        QCOMPARE(cell(2, 9, Qt::UserRole).toDouble(), -1.0);
        m_model->setUserLocation(41.5, -74.0);
        const double miles = StationModel::distanceMi(41.5, -74.0, 41.5, -73.0);
        QCOMPARE(cell(2, 8).toString(), QStringLiteral("%1 mi").arg(std::llround(miles)));
        QCOMPARE(cell(2, 8, Qt::UserRole).toDouble(), miles);
        QCOMPARE(cell(2, 9).toString(), QStringLiteral("90\u00b0"));
        QCOMPARE(cell(1, 8).toString(), QStringLiteral("\u2014")); // the SOTA spot has no position

        SpotFilterProxyModel proxy;
        proxy.setSourceModel(m_model);
        proxy.setSourceFilter(true, true, true, true, true, true, true);
        proxy.sort(StationModel::DistanceColumn, Qt::AscendingOrder);
        QCOMPARE(proxy.data(proxy.index(0, 2)).toString(), QStringLiteral("US-1234"));
        proxy.sort(StationModel::BearingColumn, Qt::AscendingOrder);
        QCOMPARE(proxy.data(proxy.index(2, 2)).toString(), QStringLiteral("US-1234"));

        QCOMPARE(cell(2, 0, Qt::TextAlignmentRole).toInt(), int(Qt::AlignHCenter | Qt::AlignVCenter));
        QCOMPARE(cell(2, 9, Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
        QVERIFY(!cell(2, 10).isValid() && !cell(2, 0, Qt::ToolTipRole).isValid());

        QCOMPARE(m_model->headerData(3, Qt::Horizontal).toString(), QStringLiteral("Summit / Park"));
        QCOMPARE(m_model->headerData(9, Qt::Horizontal, Qt::TextAlignmentRole).toInt(),
                 int(Qt::AlignLeft | Qt::AlignVCenter));
        QVERIFY(!m_model->headerData(0, Qt::Vertical).isValid());
        QVERIFY(!m_model->headerData(10, Qt::Horizontal).isValid());
    }

    void colourPrecedence()
    {
        m_model->mergeSpots({spot(StationSpot::POTA, "K1A", "US-1", 7030.0, 10),
                             spot(StationSpot::POTA, "K2B", "US-1", 7030.5, 20),
                             spot(StationSpot::POTA, "K3C", "US-3", 14030.0, 30),
                             spot(StationSpot::POTA, "K4D", "US-4", 21030.0, 40)});
        const auto bg = [&](int row) { return cell(row, 3, Qt::BackgroundRole); };
        const auto fg = [&](int row) { return cell(row, 5, Qt::ForegroundRole).value<QColor>(); };
        m_model->setHighlightGroup(1);
        m_model->markSpot(m_model->spotAt(0).key(), StationSpot::Heard);
        QCOMPARE(bg(0).value<QColor>(), QColor(40, 30, 8)); // heard outranks the highlight
        QCOMPARE(bg(1).value<QColor>(), QColor(10, 34, 56));
        QVERIFY(!bg(2).isValid());
        QCOMPARE(fg(0), QColor(201, 168, 76));

        m_model->setWatchCallsigns({"k2b", "K3C"});
        m_model->setWatchReferences({"us-1", " US-4 "});
        QCOMPARE(fg(1), QColor(64, 255, 128)); // call outranks reference
        QCOMPARE(fg(3), QColor(64, 176, 255));
        m_model->markSpot(m_model->spotAt(1).key(), StationSpot::Contacted); // status outranks the watch list
        QCOMPARE(fg(1), QColor(74, 139, 74));
        m_model->markSpot(m_model->spotAt(2).key(), StationSpot::NotHeard);
        QCOMPARE(fg(2), QColor(85, 85, 85));
        QCOMPARE(cell(2, 7).toString(), QStringLiteral("Not Heard"));
        m_model->setWatchReferences({});
        QCOMPARE(fg(3), QColor(232, 224, 208));
    }

    void geometry()
    {
        double lat = 99.0;
        double lon = 99.0;
        QVERIFY(StationModel::gridToLatLon("FN31", lat, lon));
        QCOMPARE(lat, 41.5);
        QCOMPARE(lon, -73.0);
        QVERIFY(StationModel::gridToLatLon("fn31PR", lat, lon));
        QVERIFY(std::fabs(lat - 41.7291666667) < 1e-9 && std::fabs(lon + 72.7083333333) < 1e-9);
        QVERIFY(StationModel::gridToLatLon("FN31zz", lat, lon)); // a bad subsquare is square precision
        QCOMPARE(lat, 41.5);
        // Any decimal digit the character tables know counts.
        QVERIFY(StationModel::gridToLatLon(QStringLiteral("FN\u0663\u0661"), lat, lon));
        QCOMPARE(lat, 41.5);
        lat = lon = 7.0;
        for (const char *bad : {"FN3", "FS31", "FN3A", "", " FN31", "F131"})
            QVERIFY2(!StationModel::gridToLatLon(QString::fromLatin1(bad), lat, lon), bad);
        QCOMPARE(lat, 7.0); // outputs untouched
        QCOMPARE(lon, 7.0);

        QCOMPARE(StationModel::distanceMi(10, 20, 10, 20), 0.0);
        QVERIFY(std::fabs(StationModel::distanceMi(0, 0, 0, 180) - 12436.94) < 0.01);
        QCOMPARE(StationModel::bearingDeg(0, 0, 10, 0), 0.0);
        QVERIFY(std::fabs(StationModel::bearingDeg(0, 0, 0, 10) - 90.0) < 1e-9);
        QVERIFY(std::fabs(StationModel::bearingDeg(0, 0, 0, -10) - 270.0) < 1e-9);
        for (double lon2 = -180; lon2 <= 180; lon2 += 7.5) {
            const double b = StationModel::bearingDeg(45, 0, -30, lon2);
            QVERIFY(b >= 0.0 && b < 360.0);
        }
    }
};

TALLIS_TEST_MAIN(TestStationModelTable)
#include "tst_stationmodeltable.moc"
