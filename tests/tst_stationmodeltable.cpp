#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "support/testmain.h"

#include <QAbstractItemModelTester>
#include <QColor>
#include <QTest>

#include <cmath>

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

QColor rgb(int r, int g, int b)
{
    return QColor(r, g, b);
}

} // namespace

class TestStationModelTable final : public QObject
{
    Q_OBJECT

private:
    qint64 m_now = 0;
    QDateTime ago(qint64 secs) const { return QDateTime::fromMSecsSinceEpoch(m_now - secs * 1000, Qt::UTC); }

private slots:
    void init() { m_now = QDateTime::currentMSecsSinceEpoch() / 1000 * 1000; }

    void ageTexts_data()
    {
        QTest::addColumn<qint64>("secs");
        QTest::addColumn<QString>("text");
        QTest::newRow("future") << qint64(-120) << "now";
        QTest::newRow("0") << qint64(0) << "0s ago";
        QTest::newRow("59") << qint64(59) << "59s ago";
        QTest::newRow("60") << qint64(60) << "1m ago";
        QTest::newRow("3599") << qint64(3599) << "59m ago";
        QTest::newRow("3600") << qint64(3600) << "1h ago";
        QTest::newRow("86399") << qint64(86399) << "23h ago";
        QTest::newRow("86400") << qint64(86400) << "1d ago";
        QTest::newRow("200000") << qint64(200000) << "2d ago";
    }

    void ageTexts()
    {
        QFETCH(qint64, secs);
        QFETCH(QString, text);
        QCOMPARE(StationModel::formatAge(ago(secs), m_now), text);
        // Half a second more does not reach the next whole second.
        QCOMPARE(StationModel::formatAge(ago(secs), m_now + 500), text);
    }

    void formats()
    {
        QCOMPARE(StationModel::formatAge(QDateTime()), QStringLiteral("?"));
        QCOMPARE(StationModel::formatAge(QDateTime::currentDateTimeUtc().addSecs(3600)),
                 QStringLiteral("now"));
        QCOMPARE(StationModel::formatAge(QDateTime::currentDateTimeUtc().addSecs(-7200 - 30)),
                 QStringLiteral("2h ago"));
        QCOMPARE(StationModel::formatFrequency(0.0), QStringLiteral("?"));
        QCOMPARE(StationModel::formatFrequency(-3.0), QStringLiteral("?"));
        QCOMPARE(StationModel::formatFrequency(7030.0), QStringLiteral("7030.000"));
        QCOMPARE(StationModel::formatFrequency(14062.5), QStringLiteral("14062.500"));
        QCOMPARE(StationModel::formatFrequency(1296000.25), QStringLiteral("1296000.250"));
    }

    void cellsAndSortValues()
    {
        StationModel model;
        QAbstractItemModelTester tester(&model);
        model.setClock([this] { return m_now; });
        StationSpot pota = makeSpot(StationSpot::POTA, "K1ABC", "US-1234", 14062.5, ago(90));
        pota.referenceName = "Brightwater Forest";
        pota.mode = "CW";
        pota.hasLocation = true;
        pota.lat = 41.5;
        pota.lon = -73.0;
        StationSpot sota = makeSpot(StationSpot::SOTA, "K1ABC", "W1/HA-001", 14063.0, ago(30));
        model.mergeSpots({pota});
        model.mergeSpots({sota});
        model.mergeSpots({makeSpot(StationSpot::DX, "G4Z", QString(), 7030, ago(10))});
        QCOMPARE(model.columnCount(), 10);
        QCOMPARE(model.rowCount(), 3);

        const auto cell = [&](int row, int col, int role = Qt::DisplayRole) {
            return model.data(model.index(row, col), role);
        };
        // Row 2 is the POTA spot, grouped with the SOTA spot of the same call.
        QCOMPARE(cell(2, 0).toString(), QStringLiteral("POTA+"));
        QCOMPARE(cell(2, 0, Qt::UserRole).toInt(), int(StationSpot::POTA));
        QCOMPARE(cell(0, 0).toString(), QStringLiteral("DX"));
        QCOMPARE(cell(2, 1).toString(), QStringLiteral("K1ABC"));
        QCOMPARE(cell(2, 2).toString(), QStringLiteral("US-1234"));
        QCOMPARE(cell(2, 3).toString(), QStringLiteral("Brightwater Forest"));
        QCOMPARE(cell(2, 4).toString(), QStringLiteral("14062.500"));
        QCOMPARE(cell(2, 4, Qt::UserRole).toDouble(), 14062.5);
        QCOMPARE(cell(2, 5).toString(), QStringLiteral("CW"));
        QCOMPARE(cell(2, 6).toString(), QStringLiteral("1m ago"));
        QCOMPARE(cell(2, 6, Qt::UserRole).toLongLong(), ago(90).toSecsSinceEpoch());
        QCOMPARE(cell(2, 7).toString(), QString());
        QCOMPARE(cell(2, 7, Qt::UserRole).toInt(), 0);

        // Without a user position, distance and bearing are unknown.
        QCOMPARE(cell(2, 8).toString(), QStringLiteral("\u2014"));
        QCOMPARE(cell(2, 9).toString(), QStringLiteral("\u2014"));
        QCOMPARE(cell(2, 8, Qt::UserRole).toDouble(), 1e18);
        QCOMPARE(cell(2, 9, Qt::UserRole).toDouble(), -1.0);

        model.setUserLocation(41.5, -74.0);
        const double miles = StationModel::distanceMi(41.5, -74.0, 41.5, -73.0);
        QCOMPARE(cell(2, 8).toString(), QStringLiteral("%1 mi").arg(std::llround(miles)));
        QCOMPARE(cell(2, 8, Qt::UserRole).toDouble(), miles);
        QCOMPARE(cell(2, 9).toString(), QStringLiteral("90\u00b0"));
        QCOMPARE(cell(1, 8).toString(), QStringLiteral("\u2014")); // the SOTA spot has no position

        QCOMPARE(cell(2, 0, Qt::TextAlignmentRole).toInt(), int(Qt::AlignHCenter | Qt::AlignVCenter));
        QCOMPARE(cell(2, 1, Qt::TextAlignmentRole).toInt(), int(Qt::AlignLeft | Qt::AlignVCenter));
        QCOMPARE(cell(2, 4, Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
        QCOMPARE(cell(2, 7, Qt::TextAlignmentRole).toInt(), int(Qt::AlignHCenter | Qt::AlignVCenter));
        QCOMPARE(cell(2, 9, Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));

        QVERIFY(!cell(2, 0, Qt::ToolTipRole).isValid());
        QVERIFY(!model.data(model.index(2, 10)).isValid());
        QVERIFY(!model.data(QModelIndex()).isValid());
    }

    void unknownPositionsSortToTheEnds()
    {
        StationModel model;
        QAbstractItemModelTester tester(&model);
        SpotFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        StationSpot near = makeSpot(StationSpot::POTA, "K1N", "US-1", 7030, QDateTime::currentDateTimeUtc());
        near.hasLocation = true;
        near.lat = 41.0;
        near.lon = -73.0;
        StationSpot nowhere = makeSpot(StationSpot::POTA, "K2X", "US-2", 7031, near.spotTime.addSecs(-5));
        model.mergeSpots({near, nowhere});
        model.setUserLocation(40.0, -75.0);
        proxy.sort(StationModel::DistanceColumn, Qt::AscendingOrder);
        QCOMPARE(proxy.data(proxy.index(1, 1)).toString(), QStringLiteral("K2X"));
        proxy.sort(StationModel::BearingColumn, Qt::AscendingOrder);
        QCOMPARE(proxy.data(proxy.index(0, 1)).toString(), QStringLiteral("K2X"));
        // A grouped row sorts by the plain source number.
        proxy.sort(StationModel::SourceColumn, Qt::AscendingOrder);
        QCOMPARE(proxy.rowCount(), 2);
    }

    void colourPrecedence()
    {
        StationModel model;
        QAbstractItemModelTester tester(&model);
        model.setClock([this] { return m_now; });
        model.mergeSpots({makeSpot(StationSpot::POTA, "K1A", "US-1", 7030.0, ago(10)),
                          makeSpot(StationSpot::POTA, "K2B", "US-1", 7030.5, ago(20)),
                          makeSpot(StationSpot::POTA, "K3C", "US-3", 14030.0, ago(30)),
                          makeSpot(StationSpot::POTA, "K4D", "US-4", 21030.0, ago(40))});
        const auto bg = [&](int row) { return model.data(model.index(row, 3), Qt::BackgroundRole); };
        const auto fg = [&](int row) {
            return model.data(model.index(row, 5), Qt::ForegroundRole).value<QColor>();
        };

        QCOMPARE(model.spotAt(0).groupId, 1);
        model.setHighlightGroup(1);
        model.markSpot(model.spotAt(0).key(), StationSpot::Heard);
        QCOMPARE(bg(0).value<QColor>(), rgb(40, 30, 8)); // heard outranks the highlight
        QCOMPARE(bg(1).value<QColor>(), rgb(10, 34, 56));
        QVERIFY(!bg(2).isValid());
        QCOMPARE(fg(0), rgb(201, 168, 76));

        model.setWatchCallsigns({"k2b", "K3C"});
        model.setWatchReferences({"us-1", " US-4 "});
        QCOMPARE(fg(1), rgb(64, 255, 128)); // call outranks reference
        QCOMPARE(fg(2), rgb(64, 255, 128));
        QCOMPARE(fg(3), rgb(64, 176, 255));
        model.markSpot(model.spotAt(1).key(), StationSpot::Contacted);
        QCOMPARE(fg(1), rgb(74, 139, 74));
        model.markSpot(model.spotAt(2).key(), StationSpot::NotHeard);
        QCOMPARE(fg(2), rgb(85, 85, 85));
        model.setWatchCallsigns({});
        model.setWatchReferences({});
        QCOMPARE(fg(3), rgb(232, 224, 208));
        model.setHighlightGroup(0);
        QVERIFY(!bg(1).isValid());
        QCOMPARE(model.data(model.index(2, 7)).toString(), QStringLiteral("Not Heard"));
        QCOMPARE(model.data(model.index(1, 7)).toString(), QStringLiteral("Contacted"));
        QCOMPARE(model.data(model.index(0, 7)).toString(), QStringLiteral("Heard"));
    }

    void header()
    {
        StationModel model;
        const QStringList expected{"Source", "Callsign", "Reference", "Summit / Park", "Freq (kHz)",
                                   "Mode",   "Age",      "Status",    "Dist (mi)",     "Bearing"};
        for (int i = 0; i < 10; ++i) {
            QCOMPARE(model.headerData(i, Qt::Horizontal).toString(), expected.at(i));
            QCOMPARE(model.headerData(i, Qt::Horizontal, Qt::TextAlignmentRole).toInt(),
                     int(Qt::AlignLeft | Qt::AlignVCenter));
            QVERIFY(!model.headerData(i, Qt::Horizontal, Qt::ToolTipRole).isValid());
        }
        QVERIFY(!model.headerData(0, Qt::Vertical).isValid());
        QVERIFY(!model.headerData(10, Qt::Horizontal).isValid());
        QVERIFY(!model.headerData(-1, Qt::Horizontal).isValid());
    }

    void gridLocators()
    {
        double lat = 99.0;
        double lon = 99.0;
        QVERIFY(StationModel::gridToLatLon("FN31", lat, lon));
        QCOMPARE(lat, 41.5);
        QCOMPARE(lon, -73.0);
        QVERIFY(StationModel::gridToLatLon("FN31pr", lat, lon));
        QVERIFY(std::fabs(lat - 41.7291666667) < 1e-9);
        QVERIFY(std::fabs(lon - -72.7083333333) < 1e-9);
        QVERIFY(StationModel::gridToLatLon("fn31PR", lat, lon));
        QVERIFY(std::fabs(lat - 41.7291666667) < 1e-9);
        QVERIFY(StationModel::gridToLatLon("FN31zz", lat, lon));
        QCOMPARE(lat, 41.5);
        QVERIFY(StationModel::gridToLatLon("FN31p", lat, lon));
        QCOMPARE(lon, -73.0);
        QVERIFY(StationModel::gridToLatLon("FN31pr99xx", lat, lon));
        QVERIFY(StationModel::gridToLatLon("AA00", lat, lon));
        QCOMPARE(lat, -89.5);
        QCOMPARE(lon, -179.0);
        QVERIFY(StationModel::gridToLatLon("RR99xx", lat, lon));
        QVERIFY(lat < 90.0 && lon < 180.0);
        // Any decimal digit the character tables know counts.
        QVERIFY(StationModel::gridToLatLon(QStringLiteral("FN\u0663\u0661"), lat, lon));
        QCOMPARE(lat, 41.5);

        lat = lon = 7.0;
        for (const char *bad : {"FN3", "FS31", "FN3A", "", "SN31", " FN31", "F131"})
            QVERIFY2(!StationModel::gridToLatLon(QString::fromLatin1(bad), lat, lon), bad);
        QCOMPARE(lat, 7.0);
        QCOMPARE(lon, 7.0);
    }

    void distanceAndBearing()
    {
        QCOMPARE(StationModel::distanceMi(10, 20, 10, 20), 0.0);
        QVERIFY(std::fabs(StationModel::distanceMi(0, 0, 0, 180) - 12436.94) < 0.01);
        QVERIFY(std::fabs(StationModel::distanceMi(0, 0, 0, 90) - 7917.6 * M_PI / 4) < 1e-6);
        QCOMPARE(StationModel::bearingDeg(0, 0, 10, 0), 0.0);
        QVERIFY(std::fabs(StationModel::bearingDeg(0, 0, 0, 10) - 90.0) < 1e-9);
        QVERIFY(std::fabs(StationModel::bearingDeg(0, 0, 0, -10) - 270.0) < 1e-9);
        QVERIFY(std::fabs(StationModel::bearingDeg(10, 0, 0, 0) - 180.0) < 1e-9);
        for (double lon = -180; lon <= 180; lon += 7.5) {
            const double b = StationModel::bearingDeg(45, 0, -30, lon);
            QVERIFY(b >= 0.0 && b < 360.0);
        }
    }
};

TALLIS_TEST_MAIN(TestStationModelTable)
#include "tst_stationmodeltable.moc"
