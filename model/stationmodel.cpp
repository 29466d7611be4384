#include "model/stationmodel.h"

#include <QTimer>

#include <QMultiHash>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

StationModel::StationModel(QObject *parent)
    : QAbstractTableModel(parent)
    , m_ageTimer(new QTimer(this))
    , m_clock([] { return QDateTime::currentMSecsSinceEpoch(); })
{
    registerStationSpotMetaTypes();
    connect(m_ageTimer, &QTimer::timeout, this, &StationModel::refreshAgeColumn);
    m_ageTimer->start(k_ageTickMs);
}

StationModel::~StationModel() = default;

void StationModel::setClock(Clock clock)
{
    m_clock = clock ? std::move(clock) : Clock([] { return QDateTime::currentMSecsSinceEpoch(); });
}

qint64 StationModel::nowMSecs() const
{
    return m_clock();
}

int StationModel::ageTickIntervalMs() const
{
    return m_ageTimer->interval();
}

bool StationModel::isAgeTickActive() const
{
    return m_ageTimer->isActive();
}

void StationModel::clearSpots()
{
    beginResetModel();
    m_spots.clear();
    endResetModel();
}

StationSpot StationModel::spotAt(int row) const
{
    if (row < 0 || row >= m_spots.size()) {
        StationSpot none;
        none.source = static_cast<StationSpot::Source>(7);
        return none;
    }
    return m_spots.at(row);
}

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

namespace {

constexpr qint64 k_noTime = std::numeric_limits<qint64>::min();

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

constexpr quint64 k_fnvBasis = 1469598103934665603ULL;
constexpr quint64 k_fnvPrime = 1099511628211ULL;

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

// A hash that agrees with QString::compare(..., Qt::CaseInsensitive): equal
// texts ignoring case hash equally.
quint64 foldedHash(const QString &text, quint64 seed)
{
    quint64 h = seed;
    for (const QChar c : text) {
        char16_t u = c.unicode();
        if (u < 0x80) {
            if (u >= u'A' && u <= u'Z')
                u = char16_t(u + (u'a' - u'A'));
        } else if (c.isSurrogate()) {
            // Folded as whole code points by the comparison; one shared bucket.
            return seed ^ 0x5a5a5a5aULL;
        } else {
            u = c.toCaseFolded().unicode();
        }
        h = (h ^ u) * k_fnvPrime;
    }
    return h;
}

// Union-find over spot indices that carries each set's group number, so
// merging two groups costs nearly nothing instead of a pass over the list.
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

void StationModel::mergeSpots(const QList<StationSpot> &batch)
{
    const qint64 cutoff = nowMSecs() - k_maxSpotAgeSecs * 1000;

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
        qint64 time;
        quint64 hash;
        qint64 khz;
        StationSpot::Status status;
        bool hasStatus;
    };
    std::vector<Incoming> incoming;
    incoming.reserve(size_t(batch.size()));
    QMultiHash<quint64, int> incomingByHash;
    for (int i = 0; i < batch.size(); ++i) {
        const StationSpot &spot = batch.at(i);
        const qint64 t = timeMs(spot);
        if (t < cutoff)
            continue;
        incoming.push_back({i, t, callRefHash(spot), keyKhz(spot.frequencyKhz), StationSpot::Unknown, false});
        incomingByHash.insert(incoming.back().hash, int(incoming.size()) - 1);
    }

    // One entry per row of the result before de-duplication. A "contested"
    // entry shares call and reference with an incoming spot; all others are
    // unique already, as the current rows are.
    struct Entry
    {
        qint64 time;
        int index; // current row, or incoming position when fromBatch
        bool fromBatch;
        bool contested;
        quint64 hash;
    };
    std::vector<Entry> kept;
    kept.reserve(size_t(m_spots.size()));
    for (int row = 0; row < m_spots.size(); ++row) {
        const StationSpot &spot = m_spots.at(row);
        const qint64 t = timeMs(spot);
        const bool keep =
            t >= cutoff && std::find(replaced.cbegin(), replaced.cend(), spot.source) == replaced.cend();
        bool contested = false;
        quint64 hash = 0;
        if (!incoming.empty()) {
            hash = callRefHash(spot);
            for (auto it = incomingByHash.constFind(hash); it != incomingByHash.cend() && it.key() == hash;
                 ++it) {
                Incoming &in = incoming[size_t(it.value())];
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
        if (keep)
            kept.push_back({t, row, false, contested, hash});
    }

    const auto newerFirst = [](const Entry &a, const Entry &b) { return a.time > b.time; };
    std::vector<Entry> fresh;
    fresh.reserve(incoming.size());
    for (int k = 0; k < int(incoming.size()); ++k)
        fresh.push_back({incoming[size_t(k)].time, k, true, true, incoming[size_t(k)].hash});
    std::stable_sort(fresh.begin(), fresh.end(), newerFirst);
    // The current rows are sorted already; merging keeps the whole step linear.
    if (!std::is_sorted(kept.cbegin(), kept.cend(), newerFirst))
        std::stable_sort(kept.begin(), kept.end(), newerFirst);
    std::vector<Entry> merged(kept.size() + fresh.size());
    std::merge(kept.cbegin(), kept.cend(), fresh.cbegin(), fresh.cend(), merged.begin(), newerFirst);

    beginResetModel();
    const auto spotOf = [&](const Entry &e) -> const StationSpot & {
        return e.fromBatch ? batch.at(incoming[size_t(e.index)].batchIndex) : m_spots.at(e.index);
    };
    QList<StationSpot> result;
    result.reserve(qsizetype(merged.size()));
    QMultiHash<quint64, int> contestedKept; // hash -> position in result
    for (const Entry &e : merged) {
        if (e.contested) {
            bool duplicate = false;
            for (auto it = contestedKept.constFind(e.hash); it != contestedKept.cend() && it.key() == e.hash;
                 ++it) {
                if (sameCallRef(result.at(it.value()), spotOf(e))) {
                    duplicate = true;
                    break;
                }
            }
            if (duplicate)
                continue;
            contestedKept.insert(e.hash, int(result.size()));
        }
        if (e.fromBatch) {
            const Incoming &in = incoming[size_t(e.index)];
            result.append(batch.at(in.batchIndex));
            if (in.hasStatus)
                result.last().status = in.status;
        } else {
            result.append(std::move(m_spots[e.index]));
        }
    }
    computeGroups(result);
    m_spots = std::move(result);
    endResetModel();
}

void StationModel::computeGroups(QList<StationSpot> &spots)
{
    for (StationSpot &spot : spots)
        spot.groupId = 0;
    const int n = int(spots.size());
    if (n < 2)
        return;

    // Linked spots share a call sign or a non-empty reference (ignoring case)
    // and lie within 2 kHz: bucket by those texts, sort each bucket by
    // frequency and test only neighbours inside the window.
    struct Candidate
    {
        quint64 bucket;
        double freq;
        int index;
    };
    constexpr quint64 k_callSeed = k_fnvBasis;
    constexpr quint64 k_refSeed = k_fnvBasis ^ 0x9e3779b97f4a7c15ULL;
    std::vector<Candidate> candidates;
    candidates.reserve(size_t(n) * 2);
    for (int i = 0; i < n; ++i) {
        const StationSpot &spot = spots.at(i);
        // Such spots never link: skip them rather than break the ordering.
        if (!std::isfinite(spot.frequencyKhz) || !spot.spotTime.isValid())
            continue;
        candidates.push_back({foldedHash(spot.callsign, k_callSeed), spot.frequencyKhz, i});
        if (!spot.reference.isEmpty())
            candidates.push_back({foldedHash(spot.reference, k_refSeed), spot.frequencyKhz, i});
    }
    std::sort(candidates.begin(), candidates.end(), [](const Candidate &a, const Candidate &b) {
        if (a.bucket != b.bucket)
            return a.bucket < b.bucket;
        return a.freq < b.freq;
    });

    std::vector<std::pair<int, int>> pairs;
    for (size_t a = 0; a < candidates.size(); ++a) {
        const Candidate &ca = candidates[a];
        for (size_t b = a + 1; b < candidates.size(); ++b) {
            const Candidate &cb = candidates[b];
            if (cb.bucket != ca.bucket || !(cb.freq - ca.freq <= k_linkFreqKhz))
                break;
            if (cb.index == ca.index)
                continue;
            const int i = std::min(ca.index, cb.index);
            const int j = std::max(ca.index, cb.index);
            if (areLinked(spots.at(i), spots.at(j)))
                pairs.emplace_back(i, j);
        }
    }
    if (pairs.empty())
        return;
    // Replaying the links in (i, j) order gives the numbers a pass over every
    // pair would give.
    std::sort(pairs.begin(), pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    GroupSets groups(n);
    for (const auto &[i, j] : pairs)
        groups.link(i, j);
    for (int i = 0; i < n; ++i) {
        const int g = groups.group(i);
        if (g != 0)
            spots[i].groupId = g;
    }
}

QList<StationSpot> StationModel::findMultiOpPartners(const QString &reference, double freqKhz,
                                                     const QDateTime &time, const QString &callsign) const
{
    QList<StationSpot> partners;
    if (reference.isEmpty())
        return partners;
    for (const StationSpot &spot : m_spots) {
        if (spot.callsign.compare(callsign, Qt::CaseInsensitive) == 0 || spot.reference != reference)
            continue;
        if (!(std::fabs(spot.frequencyKhz - freqKhz) <= k_partnerFreqKhz))
            continue;
        if (time.isValid() && spot.spotTime.isValid() && std::abs(time.secsTo(spot.spotTime)) > k_partnerSecs)
            continue;
        partners.append(spot);
    }
    return partners;
}

QStringList StationModel::keysInGroup(int groupId) const
{
    QStringList keys;
    if (groupId == 0)
        return keys;
    for (const StationSpot &spot : m_spots) {
        if (spot.groupId == groupId)
            keys.append(spot.key());
    }
    return keys;
}

namespace {

QStringList referencePrefixes(const QList<StationSpot> &spots, StationSpot::Source source, QChar separator)
{
    QSet<QString> seen;
    QStringList prefixes;
    for (const StationSpot &spot : spots) {
        if (spot.source != source)
            continue;
        const qsizetype cut = spot.reference.indexOf(separator);
        const QString prefix = cut < 0 ? spot.reference : spot.reference.left(cut);
        if (prefix.isEmpty() || seen.contains(prefix))
            continue;
        seen.insert(prefix);
        prefixes.append(prefix);
    }
    std::sort(prefixes.begin(), prefixes.end(),
              [](const QString &a, const QString &b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
    return prefixes;
}

QSet<QString> watchSet(const QStringList &entries)
{
    QSet<QString> set;
    for (const QString &entry : entries) {
        const QString trimmed = entry.trimmed();
        if (!trimmed.isEmpty())
            set.insert(trimmed.toLower());
    }
    return set;
}

std::vector<QString> sortedList(const QSet<QString> &set)
{
    std::vector<QString> list(set.cbegin(), set.cend());
    std::sort(list.begin(), list.end());
    return list;
}

} // namespace

QStringList StationModel::potaPrograms() const
{
    return referencePrefixes(m_spots, StationSpot::POTA, QLatin1Char('-'));
}

QStringList StationModel::sotaAssociations() const
{
    return referencePrefixes(m_spots, StationSpot::SOTA, QLatin1Char('/'));
}

void StationModel::setWatchCallsigns(const QStringList &callsigns)
{
    m_watchCallsigns = watchSet(callsigns);
    m_watchCallsignList = sortedList(m_watchCallsigns);
    if (!m_spots.isEmpty())
        emit dataChanged(index(0, 0), index(int(m_spots.size()) - 1, ColumnCount - 1), {Qt::ForegroundRole});
}

void StationModel::setWatchReferences(const QStringList &references)
{
    m_watchReferences = watchSet(references);
    m_watchReferenceList = sortedList(m_watchReferences);
    if (!m_spots.isEmpty())
        emit dataChanged(index(0, 0), index(int(m_spots.size()) - 1, ColumnCount - 1), {Qt::ForegroundRole});
}

void StationModel::setUserLocation(double lat, double lon)
{
    m_userLat = lat;
    m_userLon = lon;
    m_hasUserLocation = true;
    if (!m_spots.isEmpty())
        emit dataChanged(index(0, DistanceColumn), index(int(m_spots.size()) - 1, BearingColumn));
}

void StationModel::clearUserLocation()
{
    m_hasUserLocation = false;
    if (!m_spots.isEmpty())
        emit dataChanged(index(0, DistanceColumn), index(int(m_spots.size()) - 1, BearingColumn));
}

void StationModel::setReferenceLocation(const QString &reference, double lat, double lon)
{
    for (int row = 0; row < m_spots.size(); ++row) {
        StationSpot &spot = m_spots[row];
        if (spot.hasLocation || spot.reference != reference)
            continue;
        spot.hasLocation = true;
        spot.lat = lat;
        spot.lon = lon;
        emitRowChanged(row, DistanceColumn, BearingColumn);
    }
}

void StationModel::setHighlightGroup(int groupId)
{
    if (groupId == m_highlightGroup)
        return;
    const int old = m_highlightGroup;
    m_highlightGroup = groupId;
    for (int row = 0; row < m_spots.size(); ++row) {
        const int g = m_spots.at(row).groupId;
        if (g > 0 && (g == old || g == groupId))
            emitRowChanged(row, 0, ColumnCount - 1, {Qt::BackgroundRole});
    }
}

void StationModel::markSpot(const QString &key, StationSpot::Status status)
{
    for (int row = 0; row < m_spots.size(); ++row) {
        if (m_spots.at(row).key() == key) {
            setRowStatus(row, status);
            return;
        }
    }
}

void StationModel::markGroupSpots(int groupId, StationSpot::Status status)
{
    if (groupId == 0)
        return;
    for (int row = 0; row < m_spots.size(); ++row) {
        if (m_spots.at(row).groupId == groupId)
            setRowStatus(row, status);
    }
}

void StationModel::markSimilarSpots(const QString &callsign, double freqKhz, StationSpot::Status status)
{
    for (int row = 0; row < m_spots.size(); ++row) {
        const StationSpot &spot = m_spots.at(row);
        if (spot.callsign.compare(callsign, Qt::CaseInsensitive) == 0 &&
            std::fabs(spot.frequencyKhz - freqKhz) <= k_similarFreqKhz)
            setRowStatus(row, status);
    }
}

void StationModel::setRowStatus(int row, StationSpot::Status status)
{
    m_spots[row].status = status;
    emitRowChanged(row, 0, ColumnCount - 1);
}

void StationModel::emitRowChanged(int row, int firstColumn, int lastColumn, const QList<int> &roles)
{
    emit dataChanged(index(row, firstColumn), index(row, lastColumn), roles);
}
