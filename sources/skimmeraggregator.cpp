#include "sources/skimmeraggregator.h"

#include "model/bands.h"
#include "model/stationmodel.h"
#include "sources/dxcc.h"

#include <QDateTime>

#include <algorithm>

SkimmerAggregator::SkimmerAggregator(StationSpot::Source source, Clock clock)
    : m_source(source)
    , m_clock(clock ? std::move(clock) : Clock([] { return QDateTime::currentMSecsSinceEpoch(); }))
{}

QString SkimmerAggregator::rowKey(const QString &callsign, double frequencyKhz, const QString &mode)
{
    QString band = bandForFrequency(frequencyKhz);
    if (band.isEmpty()) // outside the band plan: each whole MHz on its own
        band = QString::number(StationSpot::keyKhz(frequencyKhz) / 1000);
    return callsign + QLatin1Char('|') + band + QLatin1Char('|') + mode;
}

StationSpot SkimmerAggregator::add(const SkimmerReport &report)
{
    if (!report.isValid())
        return {};
    const qint64 now = m_clock();
    Station &station = m_stations[rowKey(report.callsign, report.frequencyKhz, report.mode)];
    QList<Hearing> &hearings = station.hearings;
    hearings.removeIf([now](const Hearing &h) { return now - h.atMs > k_windowMs; });
    const auto same = std::find_if(hearings.begin(), hearings.end(),
                                   [&report](const Hearing &h) { return h.skimmer == report.skimmer; });
    if (same != hearings.end())
        *same = {same->skimmer, report.snrDb, now};
    else
        hearings.append({sharedName(report.skimmer), report.snrDb, now});
    const Hearing &best =
        *std::max_element(hearings.cbegin(), hearings.cend(),
                          [](const Hearing &a, const Hearing &b) { return a.snrDb < b.snrDb; });

    StationSpot &spot = station.spot;
    if (spot.callsign.isEmpty()) {
        spot.source = m_source;
        spot.callsign = report.callsign;
        spot.referenceName = dxEntityForCallsign(report.callsign);
        spot.mode = report.mode;
    }
    spot.frequencyKhz = report.frequencyKhz;
    // Lines carry the minute only; the row's time is when it was last heard,
    // so a refreshed row is newer than the one it replaces in the table.
    spot.spotTime = QDateTime::fromMSecsSinceEpoch(std::max(now, report.time.toMSecsSinceEpoch()), Qt::UTC);
    spot.spotter = best.skimmer;
    spot.comments = QStringLiteral("%1 dB · %2 skimmers").arg(best.snrDb).arg(hearings.size());
    return spot;
}

QString SkimmerAggregator::sharedName(const QString &skimmer)
{
    const auto known = m_skimmerNames.constFind(skimmer);
    if (known != m_skimmerNames.cend())
        return *known;
    if (m_skimmerNames.size() >= k_maxSharedNames)
        m_skimmerNames.clear();
    m_skimmerNames.insert(skimmer);
    return skimmer;
}

void SkimmerAggregator::expire()
{
    const qint64 cutoff = m_clock() - StationModel::k_maxSpotAgeSecs * 1000;
    m_stations.removeIf([cutoff](const QHash<QString, Station>::iterator it) {
        const QList<Hearing> &h = it->hearings;
        return std::all_of(h.cbegin(), h.cend(), [cutoff](const Hearing &x) { return x.atMs < cutoff; });
    });
}
