// Merging of batches and grouping of linked spots. A busy DX cluster runs a
// whole merge per spot into thousands of rows, so everything here is about
// linear in the rows (n log n at worst) and reads compact side arrays.
#include "model/stationmodel.h"

#include <QMultiHash>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr qint64 k_noTime = std::numeric_limits<qint64>::min();
constexpr quint64 k_fnvBasis = 1469598103934665603ULL;
constexpr quint64 k_fnvPrime = 1099511628211ULL;
constexpr quint64 k_callSeed = k_fnvBasis;
constexpr quint64 k_refSeed = k_fnvBasis ^ 0x9e3779b97f4a7c15ULL;

qint64 timeMs(const StationSpot &spot)
{
    return spot.spotTime.isValid() ? spot.spotTime.toMSecsSinceEpoch() : k_noTime;
}

// The whole-kHz part of key(), safe for values no integer holds.
qint64 keyKhz(double khz)
{
    if (!(khz > -9.2e18 && khz < 9.2e18))
        return std::numeric_limits<qint64>::min();
    return static_cast<qint64>(khz);
}

// Hash of the text call sign + "|" + reference, built without concatenating.
quint64 callRefHash(const StationSpot &spot)
{
    quint64 h = k_fnvBasis;
    for (const QChar c : spot.callsign)
        h = (h ^ c.unicode()) * k_fnvPrime;
    h = (h ^ u'|') * k_fnvPrime;
    for (const QChar c : spot.reference)
        h = (h ^ c.unicode()) * k_fnvPrime;
    return h;
}

// Whether call sign + "|" + reference is the same text for both spots.
bool sameCallRef(const StationSpot &a, const StationSpot &b)
{
    if (a.callsign.size() == b.callsign.size())
        return a.callsign == b.callsign && a.reference == b.reference;
    if (a.callsign.size() + a.reference.size() != b.callsign.size() + b.reference.size())
        return false;
    // The same text split differently, e.g. "A|B" + "C" against "A" + "B|C".
    return a.callsign + QLatin1Char('|') + a.reference == b.callsign + QLatin1Char('|') + b.reference;
}

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
    if (!std::isfinite(spot.frequencyKhz) || !spot.spotTime.isValid())
        return;
    candidates.push_back({foldedHash(spot.callsign, k_callSeed), spot.frequencyKhz, row});
    if (!spot.reference.isEmpty())
        candidates.push_back({foldedHash(spot.reference, k_refSeed), spot.frequencyKhz, row});
}

namespace {

bool candidateLess(quint64 bucketA, double freqA, quint64 bucketB, double freqB)
{
    return bucketA != bucketB ? bucketA < bucketB : freqA < freqB;
}

} // namespace

void StationModel::sortLinkCandidates(std::vector<LinkCandidate> &candidates)
{
    std::sort(candidates.begin(), candidates.end(), [](const LinkCandidate &a, const LinkCandidate &b) {
        return candidateLess(a.bucket, a.freqKhz, b.bucket, b.freqKhz);
    });
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
    for (StationSpot &spot : spots)
        spot.groupId = 0;
    if (sortedPairs.empty())
        return;
    // Replaying the links in (i, j) order gives the very numbers that a pass
    // over every pair gives.
    const int n = int(spots.size());
    GroupSets groups(n);
    for (const auto &[i, j] : sortedPairs)
        groups.link(i, j);
    for (int i = 0; i < n; ++i) {
        const int g = groups.group(i);
        if (g != 0)
            spots[i].groupId = g;
    }
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

void StationModel::mergeSpots(const QList<StationSpot> &batch)
{
    const qint64 cutoff = nowMSecs() - k_maxSpotAgeSecs * 1000;
    const int oldCount = int(m_spots.size());
    Q_ASSERT(m_rowInfo.size() == size_t(oldCount));

    // A DX batch is one line of a stream, never a source's whole picture.
    std::vector<int> replaced;
    for (const StationSpot &spot : batch) {
        if (spot.source != StationSpot::DX &&
            std::find(replaced.cbegin(), replaced.cend(), spot.source) == replaced.cend())
            replaced.push_back(spot.source);
    }

    struct Incoming
    {
        int batchIndex;
        RowInfo info;
        qint64 khz;
        StationSpot::Status status;
        bool hasStatus;
    };
    std::vector<Incoming> incoming;
    incoming.reserve(size_t(batch.size()));
    for (int i = 0; i < batch.size(); ++i) {
        const StationSpot &spot = batch.at(i);
        const qint64 t = timeMs(spot);
        if (t >= cutoff)
            incoming.push_back({i,
                                {t, callRefHash(spot), spot.source},
                                keyKhz(spot.frequencyKhz),
                                StationSpot::Unknown,
                                false});
    }
    // (hash, position in incoming), sorted: every current row is looked up
    // here, and for the usual small batch a search beats a hash table.
    std::vector<std::pair<quint64, int>> incomingByHash;
    incomingByHash.reserve(incoming.size());
    for (int k = 0; k < int(incoming.size()); ++k)
        incomingByHash.emplace_back(incoming[size_t(k)].info.callRefHash, k);
    std::sort(incomingByHash.begin(), incomingByHash.end());

    // One entry per candidate row of the result. "Contested" entries share
    // call and reference with an incoming spot and go through de-duplication;
    // all other current rows are unique already.
    struct Entry
    {
        qint64 time;
        int index; // current row, or position in incoming
        bool fromBatch;
        bool contested;
    };
    std::vector<Entry> kept;
    kept.reserve(size_t(oldCount));
    for (int row = 0; row < oldCount; ++row) {
        const RowInfo &info = m_rowInfo[size_t(row)];
        bool contested = false;
        auto it = std::lower_bound(incomingByHash.cbegin(), incomingByHash.cend(),
                                   std::make_pair(info.callRefHash, 0));
        if (it != incomingByHash.cend() && it->first == info.callRefHash) {
            for (; it != incomingByHash.cend() && it->first == info.callRefHash; ++it) {
                Incoming &in = incoming[size_t(it->second)];
                const StationSpot &spot = m_spots.at(row);
                if (!sameCallRef(spot, batch.at(in.batchIndex)))
                    continue;
                contested = true;
                // Statuses carry by key; of two rows with one key the later wins.
                if (keyKhz(spot.frequencyKhz) == in.khz) {
                    in.status = spot.status;
                    in.hasStatus = true;
                }
            }
        }
        if (info.timeMs < cutoff)
            continue;
        if (!replaced.empty() &&
            std::find(replaced.cbegin(), replaced.cend(), info.source) != replaced.cend())
            continue;
        kept.push_back({info.timeMs, row, false, contested});
    }

    const auto newerFirst = [](const Entry &a, const Entry &b) { return a.time > b.time; };
    std::vector<Entry> fresh;
    fresh.reserve(incoming.size());
    for (int k = 0; k < int(incoming.size()); ++k)
        fresh.push_back({incoming[size_t(k)].info.timeMs, k, true, true});
    std::stable_sort(fresh.begin(), fresh.end(), newerFirst);
    // The current rows are in order already, so merging keeps this linear.
    if (!std::is_sorted(kept.cbegin(), kept.cend(), newerFirst))
        std::stable_sort(kept.begin(), kept.end(), newerFirst);
    std::vector<Entry> merged(kept.size() + fresh.size());
    std::merge(kept.cbegin(), kept.cend(), fresh.cbegin(), fresh.cend(), merged.begin(), newerFirst);

    beginResetModel();
    QList<StationSpot> result;
    result.reserve(qsizetype(merged.size()));
    std::vector<RowInfo> resultInfo;
    resultInfo.reserve(merged.size());
    std::vector<int> oldToNew(size_t(oldCount), -1);
    std::vector<LinkCandidate> freshCandidates;
    QMultiHash<quint64, int> contestedKept; // call/reference hash -> result row
    for (const Entry &e : merged) {
        const Incoming *in = e.fromBatch ? &incoming[size_t(e.index)] : nullptr;
        const RowInfo &info = in ? in->info : m_rowInfo[size_t(e.index)];
        if (e.contested) {
            const StationSpot &spot = in ? batch.at(in->batchIndex) : m_spots.at(e.index);
            bool duplicate = false;
            for (auto it = contestedKept.constFind(info.callRefHash);
                 it != contestedKept.cend() && it.key() == info.callRefHash; ++it) {
                if (sameCallRef(result.at(it.value()), spot)) {
                    duplicate = true;
                    break;
                }
            }
            if (duplicate)
                continue;
            contestedKept.insert(info.callRefHash, int(result.size()));
        }
        const int row = int(result.size());
        resultInfo.push_back(info);
        if (in) {
            result.append(batch.at(in->batchIndex));
            if (in->hasStatus)
                result.last().status = in->status;
            appendLinkCandidates(freshCandidates, result.last(), row);
        } else {
            result.append(std::move(m_spots[e.index]));
            oldToNew[size_t(e.index)] = row;
        }
    }

    // The kept candidates stay in order when renumbered; the few new ones are
    // sorted and merged in.
    std::vector<LinkCandidate> candidates;
    candidates.reserve(m_linkCandidates.size() + freshCandidates.size());
    for (const LinkCandidate &c : m_linkCandidates) {
        const int row = oldToNew[size_t(c.row)];
        if (row >= 0)
            candidates.push_back({c.bucket, c.freqKhz, row});
    }
    sortLinkCandidates(freshCandidates);
    const auto middle = candidates.insert(candidates.end(), freshCandidates.cbegin(), freshCandidates.cend());
    std::inplace_merge(candidates.begin(), middle, candidates.end(),
                       [](const LinkCandidate &a, const LinkCandidate &b) {
                           return candidateLess(a.bucket, a.freqKhz, b.bucket, b.freqKhz);
                       });

    // Links between kept rows hold still (they depend on the two spots alone)
    // and renumbering keeps their order; only the new rows' links are sought.
    LinkPairs pairs;
    pairs.reserve(m_linkPairs.size());
    for (const auto &[i, j] : m_linkPairs) {
        const int ni = oldToNew[size_t(i)];
        const int nj = oldToNew[size_t(j)];
        if (ni >= 0 && nj >= 0)
            pairs.emplace_back(ni, nj);
    }
    LinkPairs freshPairs;
    for (const LinkCandidate &fc : freshCandidates) {
        // A little wider than the link window; areLinked has the last word.
        const double margin = k_linkFreqKhz * 1.25;
        auto it =
            std::lower_bound(candidates.cbegin(), candidates.cend(), fc,
                             [&](const LinkCandidate &c, const LinkCandidate &key) {
                                 return candidateLess(c.bucket, c.freqKhz, key.bucket, key.freqKhz - margin);
                             });
        for (; it != candidates.cend() && it->bucket == fc.bucket && it->freqKhz <= fc.freqKhz + margin;
             ++it) {
            if (it->row == fc.row)
                continue;
            const int i = std::min(it->row, fc.row);
            const int j = std::max(it->row, fc.row);
            if (areLinked(result.at(i), result.at(j)))
                freshPairs.emplace_back(i, j);
        }
    }
    if (!freshPairs.empty()) {
        std::sort(freshPairs.begin(), freshPairs.end());
        const auto mid = pairs.insert(pairs.end(), freshPairs.cbegin(), freshPairs.cend());
        std::inplace_merge(pairs.begin(), mid, pairs.end());
        pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    }
    assignGroups(result, pairs);

    m_spots = std::move(result);
    m_rowInfo = std::move(resultInfo);
    m_linkCandidates = std::move(candidates);
    m_linkPairs = std::move(pairs);
    endResetModel();
}
