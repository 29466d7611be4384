#include "model/filterstate.h"

#include "model/spotfilterproxymodel.h"

#include <QSet>

#include <algorithm>

namespace {
// The API's names, in the order of StationSpot::Source and of the mode classes.
constexpr const char *k_sourceKeys[FilterState::k_sourceCount] = {"sota", "pota", "wwff", "wwbota", "bota",
                                                                  "dx",   "gma",  "rbn",  "zlota",  "siota"};
constexpr const char *k_modeKeys[FilterState::k_modeCount] = {"mode_ssb", "mode_cw", "mode_am", "mode_fm",
                                                              "mode_other"};

QSet<QString> toSet(const QStringList &list)
{
    return QSet<QString>(list.cbegin(), list.cend());
}
} // namespace

int FilterState::statusIndexForValue(int value)
{
    const auto *found = std::find(k_statusValues.cbegin(), k_statusValues.cend(), value);
    return found == k_statusValues.cend() ? -1 : int(found - k_statusValues.cbegin());
}

bool FilterState::isSourceEnabled(int source) const
{
    return source >= 0 && source < k_sourceCount && sources[size_t(source)];
}

QStringList FilterState::disabledBandNames() const
{
    QStringList names;
    for (size_t i = 0; i < k_bands.size(); ++i) {
        if (!bands[i])
            names.append(QLatin1String(k_bands[i].name));
    }
    return names;
}

void FilterState::setDisabledBandNames(const QStringList &names)
{
    bands = allBands();
    for (const QString &name : names) {
        if (const int index = bandIndex(name); index >= 0)
            bands[size_t(index)] = false;
    }
}

QSet<QString> FilterState::proxyBandSet() const
{
    QSet<QString> ticked;
    for (size_t i = 0; i < k_bands.size(); ++i) {
        if (bands[i])
            ticked.insert(QLatin1String(k_bands[i].name));
    }
    if (ticked.size() == int(k_bands.size()))
        return {};
    // An empty set means "no test" to the proxy: a name no band has does the hiding.
    if (ticked.isEmpty())
        ticked.insert(QString());
    return ticked;
}

void FilterState::applyTo(SpotFilterProxyModel &proxy) const
{
    // Only what differs: every setter re-runs the filter over the whole table.
    bool sameSources = true;
    for (int i = 0; i < k_sourceCount; ++i)
        sameSources = sameSources && proxy.isSourceEnabled(i) == sources[size_t(i)];
    if (!sameSources)
        proxy.setSourceFilter(sources);
    bool sameModes = true;
    for (int i = 0; i < k_modeCount; ++i)
        sameModes = sameModes && proxy.isModeClassEnabled(static_cast<SpotFilterProxyModel::ModeClass>(i)) ==
                                     modes[size_t(i)];
    if (!sameModes)
        proxy.setModeFilter(modes[0], modes[1], modes[2], modes[3], modes[4]);
    if (const QSet<QString> bandSet = proxyBandSet(); proxy.bandFilter() != bandSet)
        proxy.setBandFilter(bandSet);
    if (proxy.statusFilter() != statusValue())
        proxy.setStatusFilter(statusValue());
    if (proxy.maxAgeMins() != maxAgeMins)
        proxy.setMaxAgeMins(maxAgeMins);
    if (const QSet<QString> programs = toSet(potaPrograms); proxy.potaProgramFilter() != programs)
        proxy.setPotaPrograms(programs);
    if (const QSet<QString> associations = toSet(sotaAssociations);
        proxy.sotaAssociationFilter() != associations)
        proxy.setSotaAssociations(associations);
    if (proxy.textFilter() != searchText.trimmed())
        proxy.setTextFilter(searchText);
}

QJsonObject FilterState::toApiJson() const
{
    QJsonObject json;
    for (int i = 0; i < k_sourceCount; ++i)
        json.insert(QLatin1String(k_sourceKeys[i]), sources[size_t(i)]);
    for (int i = 0; i < k_modeCount; ++i)
        json.insert(QLatin1String(k_modeKeys[i]), modes[size_t(i)]);
    json.insert(QStringLiteral("status_mode"), statusValue());
    json.insert(QStringLiteral("max_age_mins"), maxAgeMins);
    json.insert(QStringLiteral("hide_worked"), hideWorked);
    return json;
}

void FilterState::mergeApiJson(const QJsonObject &json)
{
    for (int i = 0; i < k_sourceCount; ++i) {
        const QJsonValue value = json.value(QLatin1String(k_sourceKeys[i]));
        if (!value.isUndefined())
            sources[size_t(i)] = value.toBool();
    }
    for (int i = 0; i < k_modeCount; ++i) {
        const QJsonValue value = json.value(QLatin1String(k_modeKeys[i]));
        if (!value.isUndefined())
            modes[size_t(i)] = value.toBool();
    }
    if (json.contains(QStringLiteral("status_mode"))) {
        if (const int index = statusIndexForValue(json.value(QStringLiteral("status_mode")).toInt());
            index >= 0)
            statusIndex = index;
    }
    if (json.contains(QStringLiteral("max_age_mins")))
        maxAgeMins = qBound(1, json.value(QStringLiteral("max_age_mins")).toInt(), 720);
    if (json.contains(QStringLiteral("hide_worked")))
        hideWorked = json.value(QStringLiteral("hide_worked")).toBool();
    if (json.contains(QStringLiteral("search")))
        searchText = json.value(QStringLiteral("search")).toString();
}

bool operator==(const FilterState &a, const FilterState &b)
{
    return a.sources == b.sources && a.modes == b.modes && a.bands == b.bands &&
           a.statusIndex == b.statusIndex && a.maxAgeMins == b.maxAgeMins &&
           a.potaPrograms == b.potaPrograms && a.sotaAssociations == b.sotaAssociations &&
           a.searchText == b.searchText && a.hideWorked == b.hideWorked;
}
