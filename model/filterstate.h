#pragma once

#include "model/bands.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationspot.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <array>

// Every choice of the filter bar as one value: the window keeps one, the
// filter bar shows it, the settings file and the API read and write it, and
// it applies itself to the proxy.
struct FilterState
{
    static constexpr int k_sourceCount = StationSpot::k_sourceCount;
    static constexpr int k_modeCount = SpotFilterProxyModel::k_modeClassCount;
    // The status choice has three forms: its index in the bar's list (what
    // the settings store), and the value the proxy and the API use.
    static constexpr std::array<int, 5> k_statusValues{{SpotFilterProxyModel::k_statusActive,
                                                        SpotFilterProxyModel::k_statusAll, StationSpot::Heard,
                                                        StationSpot::Contacted, StationSpot::NotHeard}};
    static constexpr std::array<bool, k_sourceCount> k_defaultSources =
        SpotFilterProxyModel::k_defaultSourceEnabled;

    std::array<bool, k_sourceCount> sources = k_defaultSources;
    std::array<bool, k_modeCount> modes{{true, true, true, true, true}};
    std::array<bool, k_bands.size()> bands = allBands(); // in k_bands order
    int statusIndex = 0;
    int maxAgeMins = SpotFilterProxyModel::k_defaultMaxAgeMins;
    QStringList potaPrograms;
    QStringList sotaAssociations;
    QString searchText; // never saved
    bool hideWorked = false;

    static constexpr std::array<bool, k_bands.size()> allBands()
    {
        std::array<bool, k_bands.size()> all{};
        for (bool &on : all)
            on = true;
        return all;
    }

    int statusValue() const { return k_statusValues[size_t(statusIndex)]; }
    // The index whose value is given, or -1 when no entry has it.
    static int statusIndexForValue(int value);

    bool isSourceEnabled(int source) const;
    bool hasProgramFilter() const { return !potaPrograms.isEmpty() || !sotaAssociations.isEmpty(); }

    // Band names are kept by name in the settings; unknown names match nothing.
    QStringList disabledBandNames() const;
    void setDisabledBandNames(const QStringList &names);

    // The proxy's form of the band choice: every band ticked means no band
    // test (so out-of-band spots still show), none ticked hides everything.
    QSet<QString> proxyBandSet() const;

    void applyTo(SpotFilterProxyModel &proxy) const;

    // The API's "filter.get" object and "filter.set" merge.
    QJsonObject toApiJson() const;
    void mergeApiJson(const QJsonObject &json);

    friend bool operator==(const FilterState &a, const FilterState &b);
    friend bool operator!=(const FilterState &a, const FilterState &b) { return !(a == b); }
};
