// Merging of batches. A busy DX cluster runs a whole merge per spot into
// thousands of rows, so everything here is about linear in the rows (n log n
// at worst), reads compact side arrays and carries the grouping of the rows
// that stay instead of computing it afresh.
#include "model/stationmodel.h"

#include "model/bands.h"

#include <QMultiHash>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr qint64 k_noTime = std::numeric_limits<qint64>::min();
constexpr quint64 k_fnvBasis = 1469598103934665603ULL;
constexpr quint64 k_fnvPrime = 1099511628211ULL;

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

// Skimmer rows are one per call sign, band and mode, and never stand in for
// another source's spot of the same station. Rows that would share a key are
// one as well: a station heard on both sides of a band edge (10150.0 and
// 10150.1 kHz) must not become two rows of one identity.
bool sameSkimmerRow(const StationSpot &a, const StationSpot &b)
{
    if (a.source != StationSpot::RBN && b.source != StationSpot::RBN)
        return true;
    return a.source == b.source && a.mode == b.mode &&
           (StationSpot::keyKhz(a.frequencyKhz) == StationSpot::keyKhz(b.frequencyKhz) ||
            bandForFrequency(a.frequencyKhz) == bandForFrequency(b.frequencyKhz));
}

// Whether call sign + "|" + reference is the same text for both spots.
bool sameCallRefText(const StationSpot &a, const StationSpot &b)
{
    if (a.callsign.size() == b.callsign.size())
        return a.callsign == b.callsign && a.reference == b.reference;
    if (a.callsign.size() + a.reference.size() != b.callsign.size() + b.reference.size())
        return false;
    // The same text split differently, e.g. "A|B" + "C" against "A" + "B|C".
    return a.callsign + QLatin1Char('|') + a.reference == b.callsign + QLatin1Char('|') + b.reference;
}

// Whether the two are rows of one station: the first of them is kept.
bool sameCallRef(const StationSpot &a, const StationSpot &b)
{
    return sameCallRefText(a, b) && sameSkimmerRow(a, b);
}

} // namespace

// One run of mergeSpots. Each phase is a member; what one phase hands to the
// next is kept here.
class StationModel::MergePass final
{
public:
    MergePass(StationModel &model, const QList<StationSpot> &batch, qint64 now, MergeKind kind)
        : m_model(model)
        , m_batch(batch)
        , m_cutoff(now - k_maxSpotAgeSecs * 1000)
        , m_ownCutoff(now - k_ownSpotHoldSecs * 1000)
        , m_addOnly(kind == MergeKind::AddOnly)
    {}

    void readBatch();
    void readCurrentRows();
    void orderByTime();
    void takeRows();
    void noteDroppedRows();
    void carryLinkCandidates();
    void carryLinkPairs();
    void addFreshLinkPairs();
    void commit();
    // Which keys came, went or were replaced; proportional to the rows that
    // left and arrived, never to the table.
    MergeChanges changes() const;

private:
    // A batch spot young enough to stay.
    struct Incoming
    {
        int batchIndex;
        RowInfo info;
        qint64 khz;
        StationSpot::Status status;
        bool hasStatus;
    };
    // A candidate row of the result. "Contested" entries share call and
    // reference with an incoming spot and go through de-duplication; all
    // other current rows are unique already.
    struct Entry
    {
        // For emplace_back: a braced temporary is assembled on the stack and
        // copied in, and that copy stalls on its partial stores.
        Entry(qint64 t, int i, bool batch, bool c)
            : time(t)
            , index(i)
            , fromBatch(batch)
            , contested(c)
        {}

        qint64 time;
        int index; // current row, or position in m_incoming
        bool fromBatch;
        bool contested;
    };

    bool isReplaced(int source) const;
    // An own row outlives the replacement of its source until the batch
    // brings the service's copy of it, or it is too old to wait for one.
    bool keepsOwnRow(int row) const;
    // Whether the hash may be an incoming spot's: most rows are not, and
    // this spares them the search.
    bool mayBeIncoming(quint64 hash) const
    {
        return !m_incomingByHash.empty() && hash >= m_incomingByHash.front().first &&
               hash <= m_incomingByHash.back().first;
    }
    bool carryStatus(int row);
    bool isKeptAlready(const QMultiHash<quint64, int> &contested, quint64 hash,
                       const StationSpot &spot) const;

    StationModel &m_model;
    const QList<StationSpot> &m_batch;
    const qint64 m_cutoff;
    const qint64 m_ownCutoff;
    const bool m_addOnly;
    std::vector<int> m_replacedSources;
    std::vector<Incoming> m_incoming;
    // (hash, position in m_incoming), sorted: every current row is looked up
    // here, and for the usual small batch a search beats a hash table.
    std::vector<std::pair<quint64, int>> m_incomingByHash;
    std::vector<Entry> m_kept;
    std::vector<Entry> m_ordered;
    QList<StationSpot> m_rows;
    std::vector<RowInfo> m_rowInfo;
    std::vector<int> m_oldToNew;
    std::vector<int> m_droppedRows; // current rows that do not stay
    QStringList m_droppedKeys;      // their keys
    QList<int> m_freshRows;         // rows of m_rows taken from the batch
    std::vector<LinkCandidate> m_freshCandidates;
};

void StationModel::mergeSpots(const QList<StationSpot> &batch)
{
    merge(batch, MergeKind::ReplaceSources);
}

void StationModel::addOwnSpots(const QList<StationSpot> &spots)
{
    merge(spots, MergeKind::AddOnly);
}

void StationModel::merge(const QList<StationSpot> &batch, MergeKind kind)
{
    Q_ASSERT(m_rowInfo.size() == size_t(m_spots.size()));
    MergePass pass(*this, batch, nowMSecs(), kind);
    pass.readBatch();
    pass.readCurrentRows();
    pass.orderByTime();
    beginResetModel();
    pass.takeRows(); // moves the surviving rows out of m_spots
    pass.noteDroppedRows();
    pass.carryLinkCandidates();
    pass.carryLinkPairs();
    pass.addFreshLinkPairs();
    pass.commit();
    endResetModel();
    m_lastChanges = pass.changes();
    emit spotsMerged(m_lastChanges);
}

void StationModel::MergePass::readBatch()
{
    // A stream's batch is a few of its lines, never the source's whole picture.
    for (const StationSpot &spot : m_batch) {
        if (!m_addOnly && !StationSpot::isStreamSource(spot.source) && !isReplaced(spot.source))
            m_replacedSources.push_back(spot.source);
    }
    m_incoming.reserve(size_t(m_batch.size()));
    for (int i = 0; i < m_batch.size(); ++i) {
        const StationSpot &spot = m_batch.at(i);
        const qint64 t = timeMs(spot);
        if (t >= m_cutoff)
            m_incoming.push_back({i,
                                  {t, callRefHash(spot), spot.source, m_addOnly},
                                  keyKhz(spot.frequencyKhz),
                                  StationSpot::Unknown,
                                  false});
    }
    m_incomingByHash.reserve(m_incoming.size());
    for (int k = 0; k < int(m_incoming.size()); ++k)
        m_incomingByHash.emplace_back(m_incoming[size_t(k)].info.callRefHash, k);
    std::sort(m_incomingByHash.begin(), m_incomingByHash.end());
}

bool StationModel::MergePass::isReplaced(int source) const
{
    return std::find(m_replacedSources.cbegin(), m_replacedSources.cend(), source) !=
           m_replacedSources.cend();
}

void StationModel::MergePass::readCurrentRows()
{
    const int count = int(m_model.m_spots.size());
    m_kept.reserve(size_t(count));
    for (int row = 0; row < count; ++row) {
        const RowInfo &info = m_model.m_rowInfo[size_t(row)];
        const bool contested = mayBeIncoming(info.callRefHash) && carryStatus(row);
        if (info.timeMs < m_cutoff ||
            (!m_replacedSources.empty() && isReplaced(info.source) && !keepsOwnRow(row))) {
            m_droppedRows.push_back(row);
            continue;
        }
        m_kept.emplace_back(info.timeMs, row, false, contested);
    }
}

bool StationModel::MergePass::keepsOwnRow(int row) const
{
    const RowInfo &info = m_model.m_rowInfo[size_t(row)];
    if (!info.own || info.timeMs < m_ownCutoff)
        return false;
    const StationSpot &spot = m_model.m_spots.at(row);
    auto it = std::lower_bound(m_incomingByHash.cbegin(), m_incomingByHash.cend(),
                               std::make_pair(info.callRefHash, 0));
    for (; it != m_incomingByHash.cend() && it->first == info.callRefHash; ++it) {
        const StationSpot &copy = m_batch.at(m_incoming[size_t(it->second)].batchIndex);
        if (sameCallRef(spot, copy) && std::abs(copy.frequencyKhz - spot.frequencyKhz) <= k_similarFreqKhz)
            return false;
    }
    return true;
}

// Gives the row's status to the incoming spots with its key (of two rows with
// one key the later wins); true when the row shares call and reference with one.
bool StationModel::MergePass::carryStatus(int row)
{
    const quint64 hash = m_model.m_rowInfo[size_t(row)].callRefHash;
    auto it = std::lower_bound(m_incomingByHash.cbegin(), m_incomingByHash.cend(), std::make_pair(hash, 0));
    bool contested = false;
    for (; it != m_incomingByHash.cend() && it->first == hash; ++it) {
        Incoming &in = m_incoming[size_t(it->second)];
        const StationSpot &spot = m_model.m_spots.at(row);
        // The status follows the key, whatever the source; which row stays is
        // settled when the rows are taken.
        if (!sameCallRefText(spot, m_batch.at(in.batchIndex)))
            continue;
        contested = true;
        if (keyKhz(spot.frequencyKhz) == in.khz) {
            in.status = spot.status;
            in.hasStatus = true;
        }
    }
    return contested;
}

void StationModel::MergePass::orderByTime()
{
    const auto newerFirst = [](const Entry &a, const Entry &b) { return a.time > b.time; };
    std::vector<Entry> fresh;
    fresh.reserve(m_incoming.size());
    for (int k = 0; k < int(m_incoming.size()); ++k)
        fresh.emplace_back(m_incoming[size_t(k)].info.timeMs, k, true, true);
    std::stable_sort(fresh.begin(), fresh.end(), newerFirst);
    // The current rows are in order already, so merging keeps this linear.
    if (!std::is_sorted(m_kept.cbegin(), m_kept.cend(), newerFirst))
        std::stable_sort(m_kept.begin(), m_kept.end(), newerFirst);
    m_ordered.reserve(m_kept.size() + fresh.size());
    std::merge(m_kept.cbegin(), m_kept.cend(), fresh.cbegin(), fresh.cend(), std::back_inserter(m_ordered),
               newerFirst);
}

// Newest first, so the first row of a call and reference is the one kept.
void StationModel::MergePass::takeRows()
{
    m_rows.reserve(qsizetype(m_ordered.size()));
    m_rowInfo.reserve(m_ordered.size());
    m_oldToNew.assign(m_model.m_rowInfo.size(), -1);
    StationSpot *const current = m_model.m_spots.data();
    QMultiHash<quint64, int> contested; // call/reference hash -> row of m_rows
    for (const Entry &e : m_ordered) {
        const Incoming *in = e.fromBatch ? &m_incoming[size_t(e.index)] : nullptr;
        const RowInfo &info = in ? in->info : m_model.m_rowInfo[size_t(e.index)];
        if (e.contested) {
            const StationSpot &spot = in ? m_batch.at(in->batchIndex) : current[e.index];
            if (isKeptAlready(contested, info.callRefHash, spot)) {
                if (!in)
                    m_droppedRows.push_back(e.index);
                continue;
            }
            contested.insert(info.callRefHash, int(m_rows.size()));
        }
        const int row = int(m_rows.size());
        m_rowInfo.push_back(info);
        if (in) {
            m_rows.append(m_batch.at(in->batchIndex));
            if (in->hasStatus)
                m_rows.last().status = in->status;
            appendLinkCandidates(m_freshCandidates, m_rows.last(), row);
            m_freshRows.append(row);
        } else {
            m_rows.append(std::move(current[e.index]));
            m_oldToNew[size_t(e.index)] = row;
        }
    }
}

void StationModel::MergePass::noteDroppedRows()
{
    // Moved-from rows have lost their texts; the rows that stay are moved,
    // so the dropped ones still hold theirs. Their keys go out in row order.
    std::sort(m_droppedRows.begin(), m_droppedRows.end());
    m_droppedKeys.reserve(qsizetype(m_droppedRows.size()));
    for (const int row : m_droppedRows)
        m_droppedKeys.append(m_model.m_spots.at(row).key());
}

bool StationModel::MergePass::isKeptAlready(const QMultiHash<quint64, int> &contested, quint64 hash,
                                            const StationSpot &spot) const
{
    for (auto it = contested.constFind(hash); it != contested.cend() && it.key() == hash; ++it) {
        if (sameCallRef(m_rows.at(it.value()), spot))
            return true;
    }
    return false;
}

StationModel::MergeChanges StationModel::MergePass::changes() const
{
    MergeChanges result;
    QSet<QString> dropped(m_droppedKeys.cbegin(), m_droppedKeys.cend());
    for (const int row : m_freshRows) {
        const bool replaced = !dropped.isEmpty() && dropped.remove(m_model.m_spots.at(row).key());
        (replaced ? result.updatedRows : result.addedRows).append(row);
    }
    for (const QString &key : m_droppedKeys) {
        if (dropped.contains(key))
            result.removedKeys.append(key);
    }
    return result;
}

// The kept candidates stay in order when renumbered (in place, sparing a
// copy of them all); the few new ones are sorted and merged in.
void StationModel::MergePass::carryLinkCandidates()
{
    std::vector<LinkCandidate> &candidates = m_model.m_linkCandidates;
    size_t kept = 0;
    for (const LinkCandidate &c : candidates) {
        const int row = m_oldToNew[size_t(c.row)];
        if (row < 0)
            continue;
        LinkCandidate &to = candidates[kept++];
        to = c;
        to.row = row;
    }
    candidates.resize(kept);
    sortLinkCandidates(m_freshCandidates);
    const auto middle =
        candidates.insert(candidates.end(), m_freshCandidates.cbegin(), m_freshCandidates.cend());
    std::inplace_merge(candidates.begin(), middle, candidates.end(), candidateBefore);
}

// Links between kept rows hold still (they depend on the two spots alone) and
// renumbering keeps their order.
void StationModel::MergePass::carryLinkPairs()
{
    LinkPairs &pairs = m_model.m_linkPairs;
    size_t kept = 0;
    for (const auto &[i, j] : pairs) {
        const int ni = m_oldToNew[size_t(i)];
        const int nj = m_oldToNew[size_t(j)];
        if (ni >= 0 && nj >= 0)
            pairs[kept++] = {ni, nj};
    }
    pairs.resize(kept);
}

// Only the new rows' links are sought, among their bucket neighbours.
void StationModel::MergePass::addFreshLinkPairs()
{
    // A little wider than the link window; areLinked has the last word.
    constexpr double margin = k_linkFreqKhz * 1.25;
    LinkPairs fresh;
    for (const LinkCandidate &fc : m_freshCandidates) {
        const LinkCandidate from{fc.bucket, fc.freqKhz - margin, fc.row};
        const std::vector<LinkCandidate> &candidates = m_model.m_linkCandidates;
        auto it = std::lower_bound(candidates.cbegin(), candidates.cend(), from, candidateBefore);
        for (; it != candidates.cend() && it->bucket == fc.bucket && it->freqKhz <= fc.freqKhz + margin;
             ++it) {
            if (it->row == fc.row)
                continue;
            const int i = std::min(it->row, fc.row);
            const int j = std::max(it->row, fc.row);
            if (areLinked(m_rows.at(i), m_rows.at(j)))
                fresh.emplace_back(i, j);
        }
    }
    if (fresh.empty())
        return;
    std::sort(fresh.begin(), fresh.end());
    LinkPairs &pairs = m_model.m_linkPairs;
    const auto middle = pairs.insert(pairs.end(), fresh.cbegin(), fresh.cend());
    std::inplace_merge(pairs.begin(), middle, pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
}

void StationModel::MergePass::commit()
{
    // The link candidates and pairs were renumbered in place.
    assignGroups(m_rows, m_model.m_linkPairs);
    m_model.m_spots = std::move(m_rows);
    m_model.m_rowInfo = std::move(m_rowInfo);
}
