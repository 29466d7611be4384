#include "model/stationmodel.h"

#include <QTimer>

#include <algorithm>
#include <cmath>
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
    m_rowInfo.clear();
    m_linkCandidates.clear();
    m_linkPairs.clear();
    endResetModel();
}

StationSpot StationModel::spotAt(int row) const
{
    if (row < 0 || row >= m_spots.size()) {
        StationSpot none;
        none.source = static_cast<StationSpot::Source>(StationSpot::k_sourceCount);
        return none;
    }
    return m_spots.at(row);
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

QStringList StationModel::multiOpPartnerCalls(const StationSpot &spot) const
{
    QStringList calls;
    for (const StationSpot &other :
         findMultiOpPartners(spot.reference, spot.frequencyKhz, spot.spotTime, spot.callsign))
        calls.append(other.callsign);
    return calls;
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
    m_watchCallsigns.assign(callsigns);
    emitAllRowsChanged(SourceColumn, ColumnCount - 1, {Qt::ForegroundRole});
}

void StationModel::setWatchReferences(const QStringList &references)
{
    m_watchReferences.assign(references);
    emitAllRowsChanged(SourceColumn, ColumnCount - 1, {Qt::ForegroundRole});
}

void StationModel::setUserLocation(double lat, double lon)
{
    m_userLat = lat;
    m_userLon = lon;
    m_hasUserLocation = true;
    emitAllRowsChanged(DistanceColumn, BearingColumn);
}

void StationModel::clearUserLocation()
{
    m_hasUserLocation = false;
    emitAllRowsChanged(DistanceColumn, BearingColumn);
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
            emitRowChanged(row, SourceColumn, ColumnCount - 1, {Qt::BackgroundRole});
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

QList<int> StationModel::markSimilarSpots(const QString &callsign, double freqKhz, StationSpot::Status status)
{
    QList<int> marked;
    for (int row = 0; row < m_spots.size(); ++row) {
        const StationSpot &spot = m_spots.at(row);
        if (spot.callsign.compare(callsign, Qt::CaseInsensitive) == 0 &&
            std::fabs(spot.frequencyKhz - freqKhz) <= k_similarFreqKhz) {
            setRowStatus(row, status);
            marked.append(row);
        }
    }
    return marked;
}

void StationModel::setRowStatus(int row, StationSpot::Status status)
{
    m_spots[row].status = status;
    emitRowChanged(row, SourceColumn, ColumnCount - 1);
}

void StationModel::emitRowChanged(int row, int firstColumn, int lastColumn, const QList<int> &roles)
{
    emit dataChanged(index(row, firstColumn), index(row, lastColumn), roles);
}

void StationModel::emitAllRowsChanged(int firstColumn, int lastColumn, const QList<int> &roles)
{
    if (!m_spots.isEmpty())
        emit dataChanged(index(0, firstColumn), index(int(m_spots.size()) - 1, lastColumn), roles);
}
