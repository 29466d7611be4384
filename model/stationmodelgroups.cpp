// Grouping of linked spots: the linking rule, and a grouping that compares
// only spots that share a case-folded call sign or reference and lie close in
// frequency, instead of every pair.
#include "model/stationmodel.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr quint64 k_fnvPrime = 1099511628211ULL;
constexpr quint64 k_fnvBasis = 1469598103934665603ULL;
constexpr quint64 k_callSeed = k_fnvBasis;
constexpr quint64 k_refSeed = k_fnvBasis ^ 0x9e3779b97f4a7c15ULL;
constexpr quint64 k_activationSeed = k_fnvBasis ^ 0xc2b2ae3d27d4eb4fULL;

// A hash that agrees with QString::compare(..., Qt::CaseInsensitive): texts
// equal ignoring case hash equally.
quint64 foldedHash(const QString &text, quint64 seed)
{
    quint64 h = seed;
    for (const QChar c : text) {
        char16_t u = c.unicode();
        if (u < 0x80) {
            if (u >= u'A' && u <= u'Z')
                u = char16_t(u + (u'a' - u'A'));
        } else if (c.isSurrogate()) {
            // The comparison folds whole code points; give them one bucket.
            return seed ^ 0x5a5a5a5aULL;
        } else {
            u = c.toCaseFolded().unicode();
        }
        h = (h ^ u) * k_fnvPrime;
    }
    return h;
}

// Union-find over spot indices carrying each set's group number, so that
// merging two groups costs next to nothing instead of a pass over the list.
class GroupSets
{
public:
    explicit GroupSets(int n)
        : m_parent(size_t(n), -1)
        , m_size(size_t(n), 0)
        , m_label(size_t(n), 0)
    {}

    int group(int i) { return m_parent[size_t(i)] < 0 ? 0 : m_label[size_t(find(i))]; }

    void link(int i, int j)
    {
        const int gi = group(i);
        const int gj = group(j);
        if (gi == 0 && gj == 0) {
            m_parent[size_t(i)] = i;
            m_parent[size_t(j)] = i;
            m_size[size_t(i)] = 2;
            m_label[size_t(i)] = m_next++;
        } else if (gi == 0) {
            attach(i, find(j));
        } else if (gj == 0) {
            attach(j, find(i));
        } else if (gi != gj) {
            int ri = find(i);
            int rj = find(j);
            if (m_size[size_t(ri)] < m_size[size_t(rj)])
                std::swap(ri, rj);
            m_parent[size_t(rj)] = ri;
            m_size[size_t(ri)] += m_size[size_t(rj)];
            // j's group takes i's number, whichever root survives.
            m_label[size_t(ri)] = gi;
        }
    }

private:
    int find(int i)
    {
        int root = i;
        while (m_parent[size_t(root)] != root)
            root = m_parent[size_t(root)];
        while (m_parent[size_t(i)] != root) {
            const int next = m_parent[size_t(i)];
            m_parent[size_t(i)] = root;
            i = next;
        }
        return root;
    }

    void attach(int i, int root)
    {
        m_parent[size_t(i)] = root;
        ++m_size[size_t(root)];
    }

    std::vector<int> m_parent;
    std::vector<int> m_size;
    std::vector<int> m_label;
    int m_next = 1;
};

} // namespace

bool StationModel::areLinked(const StationSpot &a, const StationSpot &b)
{
    // Written as "not within" so that a NaN frequency never links.
    if (!(std::fabs(a.frequencyKhz - b.frequencyKhz) <= k_linkFreqKhz))
        return false;
    // One activation at several references, as its service says: together,
    // whatever the calls, references and times.
    if (!a.activationId.isEmpty() && a.source == b.source && a.activationId == b.activationId)
        return true;
    if (!a.spotTime.isValid() || !b.spotTime.isValid())
        return false;
    if (std::abs(a.spotTime.secsTo(b.spotTime)) > k_linkSecs)
        return false;
    const bool sameCall = a.callsign.compare(b.callsign, Qt::CaseInsensitive) == 0;
    if (sameCall && a.source != b.source)
        return true;
    if (a.reference.isEmpty())
        return false;
    if (a.reference.compare(b.reference, Qt::CaseInsensitive) != 0)
        return false;
    return !sameCall;
}

void StationModel::appendLinkCandidates(std::vector<LinkCandidate> &candidates, const StationSpot &spot,
                                        int row)
{
    // Such spots never link; leaving them out also keeps the ordering sound.
    if (!std::isfinite(spot.frequencyKhz))
        return;
    if (!spot.activationId.isEmpty())
        candidates.push_back(
            {foldedHash(spot.activationId, k_activationSeed ^ quint64(spot.source)), spot.frequencyKhz, row});
    if (!spot.spotTime.isValid())
        return;
    candidates.push_back({foldedHash(spot.callsign, k_callSeed), spot.frequencyKhz, row});
    if (!spot.reference.isEmpty())
        candidates.push_back({foldedHash(spot.reference, k_refSeed), spot.frequencyKhz, row});
}

bool StationModel::candidateBefore(const LinkCandidate &a, const LinkCandidate &b)
{
    return a.bucket != b.bucket ? a.bucket < b.bucket : a.freqKhz < b.freqKhz;
}

void StationModel::sortLinkCandidates(std::vector<LinkCandidate> &candidates)
{
    std::sort(candidates.begin(), candidates.end(), candidateBefore);
}

StationModel::LinkPairs StationModel::findLinkPairs(const QList<StationSpot> &spots,
                                                    const std::vector<LinkCandidate> &sortedCandidates)
{
    // Only neighbours in a bucket within the frequency window can link.
    LinkPairs pairs;
    const size_t count = sortedCandidates.size();
    for (size_t a = 0; a < count; ++a) {
        const LinkCandidate &ca = sortedCandidates[a];
        for (size_t b = a + 1; b < count; ++b) {
            const LinkCandidate &cb = sortedCandidates[b];
            if (cb.bucket != ca.bucket || !(cb.freqKhz - ca.freqKhz <= k_linkFreqKhz))
                break;
            if (cb.row == ca.row)
                continue;
            const int i = std::min(ca.row, cb.row);
            const int j = std::max(ca.row, cb.row);
            if (areLinked(spots.at(i), spots.at(j)))
                pairs.emplace_back(i, j);
        }
    }
    std::sort(pairs.begin(), pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    return pairs;
}

void StationModel::assignGroups(QList<StationSpot> &spots, const LinkPairs &sortedPairs)
{
    if (sortedPairs.empty()) {
        for (StationSpot &spot : spots)
            spot.groupId = 0;
        return;
    }
    // Replaying the links in (i, j) order gives the very numbers that a pass
    // over every pair gives.
    GroupSets groups(int(spots.size()));
    for (const auto &[i, j] : sortedPairs)
        groups.link(i, j);
    int i = 0;
    for (StationSpot &spot : spots)
        spot.groupId = groups.group(i++);
}

void StationModel::computeGroups(QList<StationSpot> &spots)
{
    std::vector<LinkCandidate> candidates;
    candidates.reserve(size_t(spots.size()) * 2);
    for (int i = 0; i < spots.size(); ++i)
        appendLinkCandidates(candidates, spots.at(i), i);
    sortLinkCandidates(candidates);
    assignGroups(spots, findLinkPairs(spots, candidates));
}
