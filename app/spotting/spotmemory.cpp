#include "app/spotting/spotmemory.h"

#include <algorithm>

void SpotMemory::remember(const SpotRequest &request, qint64 nowMs)
{
    // Only the window's worth is kept: a long session holds a handful.
    m_posted.removeIf([nowMs](const auto &entry) { return nowMs - entry.first >= k_repeatWindowMs; });
    m_posted.append({nowMs, request});
}

bool SpotMemory::isRepeat(const SpotRequest &request, qint64 nowMs) const
{
    return std::any_of(m_posted.cbegin(), m_posted.cend(), [&](const auto &entry) {
        return nowMs - entry.first < k_repeatWindowMs && entry.second.sameSpotAs(request);
    });
}
