#include "bench/benchdata.h"

#include "model/bands.h"
#include "model/stationmodel.h"

#include <QRandomGenerator>

namespace {
// HF bands only, where nearly all portable activity is.
constexpr int k_hfBands = 10;

const char *const k_modes[] = {"CW", "SSB", "FT8", "USB", "FM", "CW", "FT4"};

} // namespace

// N spots the model would hold: all sources, spread over the HF bands and
// three hours, some activators in two programmes and some references with
// several operators.
QList<StationSpot> realisticSpots(int n, qint64 nowMs)
{
    QRandomGenerator rng(4242);
    QList<StationSpot> spots;
    spots.reserve(n);
    const int references = std::max(1, n / 3);
    for (int i = 0; i < n; ++i) {
        StationSpot s;
        const int pick = rng.bounded(100);
        s.source = pick < 35   ? StationSpot::DX
                   : pick < 65 ? StationSpot::POTA
                   : pick < 80 ? StationSpot::SOTA
                   : pick < 90 ? StationSpot::WWFF
                   : pick < 95 ? StationSpot::WWBOTA
                               : StationSpot::GMA;
        const Band &band = k_bands[size_t(rng.bounded(k_hfBands))];
        s.frequencyKhz = band.lowKhz + rng.bounded(int(band.highKhz - band.lowKhz) * 10) / 10.0;
        s.callsign = QStringLiteral("K%1ABC").arg(i);
        if (s.source != StationSpot::DX)
            s.reference = QStringLiteral("US-%1").arg(rng.bounded(references), 4, 10, QLatin1Char('0'));
        s.spotTime = QDateTime::fromMSecsSinceEpoch(nowMs - rng.bounded(3 * 3600) * 1000LL, Qt::UTC);
        s.mode = QString::fromLatin1(k_modes[rng.bounded(7)]);
        if (i > 0 && rng.bounded(10) == 0) {
            // The previous activator also reported in another programme.
            const StationSpot &prev = spots.last();
            s.callsign = prev.callsign;
            s.frequencyKhz = prev.frequencyKhz + 0.5;
            s.spotTime = prev.spotTime.addSecs(60);
            s.source = prev.source == StationSpot::SOTA ? StationSpot::POTA : StationSpot::SOTA;
        } else if (i > 0 && rng.bounded(10) == 0 && !spots.last().reference.isEmpty()) {
            // A second operator at the previous reference.
            const StationSpot &prev = spots.last();
            s.reference = prev.reference;
            s.source = prev.source;
            s.frequencyKhz = prev.frequencyKhz + 1.0;
            s.spotTime = prev.spotTime.addSecs(120);
        }
        spots.append(s);
    }
    return spots;
}

// A model holding about n rows, merged source by source as the program would.
void fillModel(StationModel &model, int n, qint64 nowMs)
{
    const QList<StationSpot> spots = realisticSpots(n, nowMs);
    QList<StationSpot> perSource[StationSpot::k_sourceCount];
    for (const StationSpot &s : spots)
        perSource[s.source].append(s);
    for (int source = 0; source < StationSpot::k_sourceCount; ++source) {
        // DX batches only add, so one batch gives the rows a line at a time would.
        model.mergeSpots(perSource[source]);
    }
}
