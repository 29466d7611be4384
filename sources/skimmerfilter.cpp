#include "sources/skimmerfilter.h"

#include "sources/dxcc.h"

void SkimmerFilter::setContinents(const QStringList &continents)
{
    m_continents = continents;
    m_skimmerPasses.clear();
}

bool SkimmerFilter::accepts(const SkimmerReport &report)
{
    if (!m_continents.isEmpty() && !skimmerOnContinent(report.skimmer))
        return false;
    return !m_huntedOnly || !m_hunted || m_hunted(report.callsign);
}

bool SkimmerFilter::skimmerOnContinent(const QString &skimmer)
{
    const auto known = m_skimmerPasses.constFind(skimmer);
    if (known != m_skimmerPasses.constEnd())
        return known.value();
    // "KM3T-2-#": the station's call is what precedes the first dash.
    const QString call = skimmer.section(QLatin1Char('-'), 0, 0);
    const bool passes = m_continents.contains(dxContinentForCallsign(call));
    if (m_skimmerPasses.size() >= k_maxRememberedSkimmers) // a stream of made-up names stays bounded
        m_skimmerPasses.clear();
    m_skimmerPasses.insert(skimmer, passes);
    return passes;
}
