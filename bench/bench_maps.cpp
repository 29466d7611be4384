// The map and the band map painted whole, as a repaint after a merge or a
// move of the view does: 20,000 placed spots on the map, 2,000 on one band.
#include "app/widgets/bandmapcanvas.h"
#include "app/widgets/mapcanvas.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"

#include <QImage>
#include <QRandomGenerator>

#include <benchmark/benchmark.h>

namespace {

// Spots where the activity is: most in North America and Europe, the rest anywhere.
QList<StationSpot> placedSpots(int n, qint64 nowMs, double lowKhz, double highKhz)
{
    QRandomGenerator rng(777);
    QList<StationSpot> spots;
    spots.reserve(n);
    for (int i = 0; i < n; ++i) {
        StationSpot s;
        s.source = StationSpot::Source(rng.bounded(StationSpot::k_sourceCount));
        s.callsign = QStringLiteral("K%1XYZ").arg(i);
        s.reference = QStringLiteral("US-%1").arg(i, 5, 10, QLatin1Char('0'));
        s.frequencyKhz = lowKhz + rng.bounded(int((highKhz - lowKhz) * 10)) / 10.0;
        s.mode = QStringLiteral("CW");
        s.spotTime = QDateTime::fromMSecsSinceEpoch(nowMs - rng.bounded(60 * 60) * 1000LL, Qt::UTC);
        const int where = rng.bounded(10);
        const double lat = where < 5   ? 30.0 + rng.bounded(20.0)
                           : where < 8 ? 40.0 + rng.bounded(20.0)
                                       : -60.0 + rng.bounded(130.0);
        const double lon = where < 5   ? -120.0 + rng.bounded(50.0)
                           : where < 8 ? -10.0 + rng.bounded(40.0)
                                       : -180.0 + rng.bounded(360.0);
        s.hasLocation = true;
        s.lat = lat;
        s.lon = lon;
        s.status = rng.bounded(10) == 0 ? StationSpot::Contacted : StationSpot::Unknown;
        spots.append(s);
    }
    return spots;
}

struct Table
{
    StationModel model;
    SpotFilterProxyModel proxy;
    Table(int n, double lowKhz, double highKhz)
    {
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        model.mergeSpots(placedSpots(n, now, lowKhz, highKhz));
        proxy.setSourceModel(&model);
        proxy.setMaxAgeMins(0);
        proxy.setSourceFilter(true, true, true, true, true, true, true);
        proxy.setStatusFilter(SpotFilterProxyModel::k_statusAll);
    }
};

void BM_MapPaint(benchmark::State &state)
{
    Table table(int(state.range(0)), 1800.0, 29700.0);
    MapCanvas canvas(&table.proxy);
    canvas.resize(1600, 900);
    canvas.setOwnPosition(41.5, -73.0);
    canvas.rebuildNow();
    canvas.setSelectedKey(canvas.markers().markers().front().key);
    QImage image(canvas.size(), QImage::Format_ARGB32_Premultiplied);
    canvas.render(&image); // the land pixmap and the clusters, once per viewport
    for (auto _ : state)
        canvas.render(&image);
    state.counters["markers"] = double(canvas.markers().markers().size());
    state.counters["clusters"] = double(canvas.markers().clusters().size());
}
BENCHMARK(BM_MapPaint)->Arg(20000)->Unit(benchmark::kMillisecond);

// A move of the view: the land pixmap and the clusters made again.
void BM_MapViewportChange(benchmark::State &state)
{
    Table table(int(state.range(0)), 1800.0, 29700.0);
    MapCanvas canvas(&table.proxy);
    canvas.resize(1600, 900);
    canvas.setOwnPosition(41.5, -73.0);
    canvas.setProjectionKind(MapProjection::AzimuthalEquidistant);
    canvas.rebuildNow();
    QImage image(canvas.size(), QImage::Format_ARGB32_Premultiplied);
    int i = 0;
    for (auto _ : state) {
        canvas.resize(1600 - (i++ % 2), 900);
        canvas.render(&image);
    }
}
BENCHMARK(BM_MapViewportChange)->Arg(20000)->Unit(benchmark::kMillisecond);

void BM_BandMapPaint(benchmark::State &state)
{
    Table table(int(state.range(0)), 14000.0, 14350.0);
    BandMapCanvas canvas(&table.proxy);
    canvas.resize(int(state.range(1)), 900);
    canvas.setBand(5);
    canvas.setRigFrequency(14060.0);
    canvas.rebuildNow();
    QImage image(canvas.size(), QImage::Format_ARGB32_Premultiplied);
    canvas.render(&image);
    for (auto _ : state)
        canvas.render(&image);
    state.counters["spots"] = canvas.spotCount();
}
BENCHMARK(BM_BandMapPaint)->Args({2000, 1600})->Args({2000, 400})->Unit(benchmark::kMillisecond);

} // namespace
