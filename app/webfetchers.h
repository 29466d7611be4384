#pragma once

#include "model/stationspot.h"

#include <QList>

#include <utility>

class QObject;
class SpotFetcher;
struct ServiceUrls;

// The web services polled for spots, one fetcher each, made in a fixed order
// as children of the one parent given.
class WebFetchers final
{
public:
    using Entry = std::pair<StationSpot::Source, SpotFetcher *>;

    WebFetchers(const ServiceUrls &services, QObject *parent);

    // In the order they are made and shown.
    const QList<Entry> &all() const { return m_all; }
    // The order of a refresh: SOTA first.
    QList<Entry> refreshOrder() const;

private:
    QList<Entry> m_all;
};
