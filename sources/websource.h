#pragma once

#include "model/stationspot.h"

#include <QList>
#include <QString>

// What a parser made of one reply body: the spots, or the fault shown to the
// user (then there are no spots).
struct SpotParse
{
    QList<StationSpot> spots;
    QString error;
};

// A web spot source as data: where it lives and how its reply reads. The
// polling itself is SpotFetcher's, the same for every source.
struct WebSource
{
    using Parser = SpotParse (*)(const QByteArray &body);

    StationSpot::Source source = StationSpot::BOTA;
    const char *defaultUrl = nullptr; // scheme and host
    const char *spotsPath = nullptr;  // may carry a query; none: a placeholder that never sends
    Parser parse = nullptr;
    // A short text that changes whenever the spot list does: when given, the
    // list is asked for only after it moved.
    const char *changePath = nullptr;
    int timeoutMs = 0; // 0: the request may take as long as it takes

    QString name() const { return StationSpot::sourceName(source); }

    // The description of source; an inert one for a source without a web service.
    static WebSource of(StationSpot::Source source);
};
