#pragma once

#include "model/stationspot.h"
#include "sources/skimmerreport.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

#include <functional>

// Folds skimmer reports into one row per call sign, band and mode: a station
// calling CQ is heard by dozens of skimmers within seconds, and the operator
// wants it once, with the latest frequency and time, the best signal of the
// last ten minutes and the skimmer that heard it best as spotter.
class SkimmerAggregator final
{
public:
    // Milliseconds since the Unix epoch, UTC.
    using Clock = std::function<qint64()>;
    static constexpr qint64 k_windowMs = 10 * 60 * 1000;

    explicit SkimmerAggregator(StationSpot::Source source, Clock clock = {});

    // The row the report makes or refreshes; a default spot for an invalid report.
    StationSpot add(const SkimmerReport &report);
    // Forgets stations no skimmer has heard for longer than a spot may live.
    void expire();
    int stationCount() const { return int(m_stations.size()); }

    // call|band|mode: rows of one station on one band in one mode are one.
    static QString rowKey(const QString &callsign, double frequencyKhz, const QString &mode);

private:
    struct Hearing
    {
        QString skimmer;
        int snrDb;
        qint64 atMs;
    };
    struct Station
    {
        StationSpot spot;
        QList<Hearing> hearings; // one per skimmer, within the window
    };

    // One copy of each skimmer's name, shared by all its hearings: a few
    // hundred skimmers hear thousands of stations. Bounded against a stream
    // of made-up names.
    QString sharedName(const QString &skimmer);
    static constexpr qsizetype k_maxSharedNames = 4096;

    StationSpot::Source m_source;
    Clock m_clock;
    QHash<QString, Station> m_stations;
    QSet<QString> m_skimmerNames;
};
