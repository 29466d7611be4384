#include "app/widgets/bandmapcanvas.h"
#include "app/widgets/mapcanvas.h"
#include "model/greatcircle.h"
#include "model/mappaths.h"
#include "model/mapprojection.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "model/sunposition.h"
#include "support/testmain.h"

#include <QSignalSpy>

#include <cmath>

namespace {

constexpr double k_pi = MapProjection::k_pi;
constexpr double k_earthRadiusMi = 7917.6 / 2.0;

QDateTime utc(const char *text)
{
    return QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate);
}

StationSpot spot(const char *call, double khz, StationSpot::Source source = StationSpot::POTA)
{
    StationSpot s;
    s.source = source;
    s.callsign = QString::fromLatin1(call);
    s.reference = QStringLiteral("US-0001");
    s.frequencyKhz = khz;
    s.mode = QStringLiteral("CW");
    s.spotTime = QDateTime::currentDateTimeUtc().addSecs(-60);
    return s;
}

StationSpot placed(const char *call, double khz, double lat, double lon)
{
    StationSpot s = spot(call, khz);
    s.hasLocation = true;
    s.lat = lat;
    s.lon = lon;
    return s;
}

} // namespace

class TestMapGeometry final : public QObject
{
    Q_OBJECT

private slots:
    void azimuthal_data()
    {
        QTest::addColumn<double>("lat0");
        QTest::addColumn<double>("lon0");
        QTest::addColumn<double>("lat");
        QTest::addColumn<double>("lon");
        QTest::addColumn<QPointF>("expected");
        QTest::newRow("centre") << 41.5 << -73.0 << 41.5 << -73.0 << QPointF(0, 0);
        QTest::newRow("east on the equator") << 0.0 << 0.0 << 0.0 << 90.0 << QPointF(k_pi / 2, 0);
        QTest::newRow("west on the equator") << 0.0 << 0.0 << 0.0 << -90.0 << QPointF(-k_pi / 2, 0);
        QTest::newRow("north") << 0.0 << 0.0 << 45.0 << 0.0 << QPointF(0, k_pi / 4);
        QTest::newRow("from the pole, south") << 90.0 << 0.0 << 0.0 << 0.0 << QPointF(0, -k_pi / 2);
        QTest::newRow("near the antipode") << 0.0 << 0.0 << 0.0 << 179.0 << QPointF(179.0 * k_pi / 180.0, 0);
        // Radius the great-circle distance, direction the bearing, as the table computes them.
        const double r = StationModel::distanceMi(51.5, 0.0, -33.9, 151.2) / k_earthRadiusMi;
        const double b = StationModel::bearingDeg(51.5, 0.0, -33.9, 151.2) * MapProjection::k_degToRad;
        QTest::newRow("London to Sydney")
            << 51.5 << 0.0 << -33.9 << 151.2 << QPointF(r * std::sin(b), r * std::cos(b));
    }
    void azimuthal()
    {
        QFETCH(double, lat0);
        QFETCH(double, lon0);
        QFETCH(double, lat);
        QFETCH(double, lon);
        QFETCH(QPointF, expected);
        const MapProjection projection = MapProjection::azimuthal(lat0, lon0);
        const QPointF p = projection.project(lat, lon);
        QVERIFY2(std::hypot(p.x() - expected.x(), p.y() - expected.y()) < 1e-6,
                 qPrintable(QStringLiteral("%1, %2").arg(p.x()).arg(p.y())));
        // A click there finds the same place again.
        double backLat = 0.0;
        double backLon = 0.0;
        QVERIFY(projection.unproject(p, backLat, backLon));
        QVERIFY(std::abs(backLat - lat) < 1e-6);
        QVERIFY(std::abs(normalisedLongitude(backLon - lon)) < 1e-6 || std::abs(lat) > 89.999);
        // Beyond the rim there is nothing to find.
        QVERIFY(!projection.unproject(QPointF(k_pi + 0.01, 0), backLat, backLon));
    }

    void subsolarPoint_data()
    {
        QTest::addColumn<QDateTime>("when");
        QTest::addColumn<double>("lat");
        QTest::addColumn<double>("lon");
        QTest::addColumn<double>("tolerance");
        // Equinoxes and solstices of 2024: the sun over the equator and the tropics.
        QTest::newRow("March equinox") << utc("2024-03-20T03:06:00Z") << 0.0 << qQNaN() << 0.02;
        QTest::newRow("June solstice") << utc("2024-06-20T20:51:00Z") << 23.436 << qQNaN() << 0.02;
        QTest::newRow("September equinox") << utc("2024-09-22T12:44:00Z") << 0.0 << qQNaN() << 0.02;
        QTest::newRow("December solstice") << utc("2024-12-21T09:21:00Z") << -23.436 << qQNaN() << 0.02;
        // At noon UTC the longitude is the equation of time: +16.4 min early in November,
        // -14.2 min late in February (published values).
        QTest::newRow("noon, 3 November") << utc("2024-11-03T12:00:00Z") << qQNaN() << -16.4 / 4.0 << 0.1;
        QTest::newRow("noon, 11 February") << utc("2024-02-11T12:00:00Z") << qQNaN() << 14.2 / 4.0 << 0.1;
        QTest::newRow("six hours on") << utc("2024-11-03T18:00:00Z") << qQNaN() << -90.0 - 16.4 / 4.0 << 0.1;
    }
    void subsolarPoint()
    {
        QFETCH(QDateTime, when);
        QFETCH(double, lat);
        QFETCH(double, lon);
        QFETCH(double, tolerance);
        const SunPosition sun = SunPosition::at(when);
        if (!qIsNaN(lat))
            QVERIFY2(std::abs(sun.subsolarLat() - lat) < tolerance,
                     qPrintable(QString::number(sun.subsolarLat())));
        if (!qIsNaN(lon))
            QVERIFY2(std::abs(sun.subsolarLon() - lon) < tolerance,
                     qPrintable(QString::number(sun.subsolarLon())));
    }

    void terminator_data()
    {
        QTest::addColumn<QDateTime>("when");
        QTest::addColumn<int>("kind");
        for (const char *when : {"2024-03-20T03:06:00Z", "2024-06-20T20:51:00Z", "2024-12-21T09:21:00Z"}) {
            QTest::addRow("%s flat", when) << utc(when) << int(MapProjection::Equirectangular);
            QTest::addRow("%s from home", when) << utc(when) << int(MapProjection::AzimuthalEquidistant);
        }
    }
    void terminator()
    {
        QFETCH(QDateTime, when);
        QFETCH(int, kind);
        const MapProjection projection = kind == MapProjection::Equirectangular
                                             ? MapProjection::equirectangular()
                                             : MapProjection::azimuthal(-35.0, 150.0);
        const SunPosition sun = SunPosition::at(when);
        const QPainterPath night =
            MapPaths::hemispherePath(sun.antisolarLat(), sun.antisolarLon(), projection);
        // Either side of the line, a degree of sun elevation apart, around the world.
        int checked = 0;
        for (int lat = -80; lat <= 80; lat += 10) {
            for (int lon = -175; lon <= 175; lon += 10) {
                const double elevation = sun.elevationDeg(lat, lon);
                if (std::abs(elevation) < 1.0 || projection.antipodeDistance(lat, lon) < 0.05)
                    continue;
                QCOMPARE(night.contains(projection.project(lat, lon)), elevation < 0.0);
                ++checked;
            }
        }
        QVERIFY(checked > 400);
        // Midnight sun on the polar circle at the June solstice: the sun on the horizon.
        if (when.date().month() == 6)
            QVERIFY(std::abs(sun.elevationDeg(90.0 - sun.subsolarLat(), sun.antisolarLon())) < 0.01);
    }

    void longPath_data()
    {
        QTest::addColumn<double>("lat2");
        QTest::addColumn<double>("lon2");
        QTest::addColumn<double>("longBearing");
        QTest::addColumn<double>("longMi");
        const double circumference = 7917.6 * k_pi;
        QTest::newRow("east") << 0.0 << 90.0 << 270.0 << circumference * 0.75;
        QTest::newRow("west") << 0.0 << -30.0 << 90.0 << circumference * (11.0 / 12.0);
        QTest::newRow("north") << 60.0 << 0.0 << 180.0 << circumference * (5.0 / 6.0);
    }
    void longPath()
    {
        QFETCH(double, lat2);
        QFETCH(double, lon2);
        QFETCH(double, longBearing);
        QFETCH(double, longMi);
        const GreatCircle gc = GreatCircle::between(0.0, 0.0, lat2, lon2);
        QVERIFY(std::abs(gc.longBearingDeg - longBearing) < 1e-9);
        QVERIFY(std::abs(gc.longMi - longMi) < 1e-6);
        QCOMPARE(GreatCircle::formatDistance(1000.0, DistanceUnit::Kilometres), QStringLiteral("1609 km"));
    }

    // The map shows what the table shows, and a click on a marker is that spot.
    void mapMarkersAndClicks()
    {
        StationModel model;
        StationSpot grid = spot("W1GRID", 7030.0);
        grid.grid = QStringLiteral("FN31pr");
        StationSpot dx = placed("DL1DX", 14030.0, 50.0, 8.0);
        dx.source = StationSpot::DX; // hidden by the default filter
        model.mergeSpots({placed("K1ABC", 14062.0, 40.0, -100.0), placed("G4XYZ", 7031.0, 52.0, 0.0), grid,
                          dx, spot("N0POS", 21030.0)});
        SpotFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        MapCanvas canvas(&proxy);
        canvas.resize(800, 400);
        canvas.show();
        QTRY_COMPARE(int(canvas.markers().markers().size()), 3);
        QCOMPARE(canvas.markers().unplacedCount(), 1);
        QStringList shown;
        for (const MapMarker &m : canvas.markers().markers())
            shown.append(m.callsign);
        shown.sort();
        QCOMPARE(shown,
                 QStringList({QStringLiteral("G4XYZ"), QStringLiteral("K1ABC"), QStringLiteral("W1GRID")}));

        QSignalSpy activated(&canvas, &MapCanvas::spotActivated);
        QPointF at;
        const QString key = QStringLiteral("G4XYZ|US-0001|7031");
        QVERIFY(canvas.markerScreenPos(key, at));
        QTest::mouseClick(&canvas, Qt::LeftButton, {}, (at + QPointF(2, -2)).toPoint());
        QCOMPARE(activated.count(), 1);
        QCOMPARE(activated.at(0).at(0).toString(), key);
        QCOMPARE(canvas.selectedKey(), key);
        // The South Atlantic holds nothing to pick.
        QTest::mouseClick(&canvas, Qt::LeftButton, {}, QPoint(380, 300));
        QCOMPARE(activated.count(), 1);

        // The same batch again changes nothing on the map, so nothing is repainted.
        QTRY_VERIFY(canvas.paintCount() > 0);
        QCoreApplication::processEvents();
        const int paints = canvas.paintCount();
        model.mergeSpots({placed("K1ABC", 14062.0, 40.0, -100.0), placed("G4XYZ", 7031.0, 52.0, 0.0), grid,
                          dx, spot("N0POS", 21030.0)});
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        QCOMPARE(canvas.paintCount(), paints);
    }

    void bandMapClicks()
    {
        StationModel model;
        model.mergeSpots({spot("K1ABC", 14062.0), spot("K2DEF", 14062.3), spot("K3GHI", 7030.0)});
        SpotFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        BandMapCanvas canvas(&proxy);
        canvas.resize(400, 700);
        canvas.show();
        canvas.setRigFrequency(14200.0); // the rig brings its band
        QCOMPARE(canvas.band(), 5);
        QTRY_COMPARE(canvas.spotCount(), 2);
        // Two spots 0.3 kHz apart: their labels do not overlap.
        const QRectF a = canvas.labelRect(QStringLiteral("K1ABC|US-0001|14062"));
        const QRectF b = canvas.labelRect(QStringLiteral("K2DEF|US-0001|14062"));
        QVERIFY(!a.isNull() && !b.isNull());
        QVERIFY(!a.intersects(b));

        QSignalSpy activated(&canvas, &BandMapCanvas::spotActivated);
        QSignalSpy tune(&canvas, &BandMapCanvas::tuneRequested);
        QTest::mouseClick(&canvas, Qt::LeftButton, {}, b.center().toPoint());
        QCOMPARE(activated.count(), 1);
        QCOMPARE(activated.at(0).at(0).toString(), QStringLiteral("K2DEF|US-0001|14062"));
        const int y = int(canvas.yForKhz(14250.0));
        QTest::mouseClick(&canvas, Qt::LeftButton, {}, QPoint(20, y));
        QCOMPARE(tune.count(), 1);
        QVERIFY(std::abs(tune.at(0).at(0).toDouble() - 14250.0) < 1.0);
        QCOMPARE(activated.count(), 1);
    }
};

TALLIS_TEST_MAIN(TestMapGeometry)
#include "tst_mapgeometry.moc"
