// Presentation side of StationModel: cells, header, colours, text formats and
// the geometry behind the distance and bearing columns.
#include "model/stationmodel.h"

#include "model/spotcolours.h"

#include <QColor>

#include <algorithm>
#include <cmath>

namespace {

constexpr double k_degToRad = 0.017453292519943295;
constexpr double k_earthDiameterMi = 7917.6;

const char *const k_headers[StationModel::ColumnCount] = {
    "Source", "Callsign", "Reference", "Summit / Park", "Freq (kHz)",
    "Mode",   "Age",      "Status",    "Dist (mi)",     "Bearing"};

constexpr int k_left = Qt::AlignLeft | Qt::AlignVCenter;
constexpr int k_right = Qt::AlignRight | Qt::AlignVCenter;
constexpr int k_centre = Qt::AlignHCenter | Qt::AlignVCenter;

constexpr int k_alignments[StationModel::ColumnCount] = {k_centre, k_left,  k_left,   k_left,  k_right,
                                                         k_centre, k_right, k_centre, k_right, k_right};

// Digit value of a character the character tables call a decimal digit, or -1.
int digitValue(QChar c)
{
    return c.isDigit() ? c.digitValue() : -1;
}

qint64 roundHalfUp(double v)
{
    return static_cast<qint64>(std::floor(v + 0.5));
}

} // namespace

int StationModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_spots.size());
}

int StationModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant StationModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() < 0 || index.row() >= m_spots.size() || index.column() < 0 ||
        index.column() >= ColumnCount)
        return {};
    const StationSpot &spot = m_spots.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return displayData(spot, index.column());
    case Qt::UserRole:
        return sortData(spot, index.column());
    case Qt::TextAlignmentRole:
        return k_alignments[index.column()];
    case Qt::BackgroundRole:
        return backgroundData(spot);
    case Qt::ForegroundRole:
        return foregroundData(spot);
    default:
        return {};
    }
}

QVariant StationModel::displayData(const StationSpot &spot, int column) const
{
    switch (column) {
    case SourceColumn:
        return spot.groupId > 0 ? spot.sourceString() + QLatin1Char('+') : spot.sourceString();
    case CallsignColumn:
        return spot.callsign;
    case ReferenceColumn:
        return spot.reference;
    case NameColumn:
        return spot.referenceName;
    case FrequencyColumn:
        return formatFrequency(spot.frequencyKhz);
    case ModeColumn:
        return spot.mode;
    case AgeColumn:
        return formatAge(spot.spotTime, nowMSecs());
    case StatusColumn:
        return StationSpot::statusText(spot.status);
    case DistanceColumn:
    case BearingColumn: {
        double miles = 0.0;
        double degrees = 0.0;
        if (!spotDistance(spot, miles, degrees))
            return QString(QChar(0x2014));
        if (column == DistanceColumn)
            return QString(QString::number(roundHalfUp(miles)) + QLatin1String(" mi"));
        return QString(QString::number(roundHalfUp(degrees)) + QChar(0x00B0));
    }
    default:
        return {};
    }
}

QVariant StationModel::sortData(const StationSpot &spot, int column) const
{
    switch (column) {
    case SourceColumn:
        return int(spot.source);
    case CallsignColumn:
        return spot.callsign;
    case ReferenceColumn:
        return spot.reference;
    case NameColumn:
        return spot.referenceName;
    case FrequencyColumn:
        return spot.frequencyKhz;
    case ModeColumn:
        return spot.mode;
    case AgeColumn:
        return spot.spotTime.isValid() ? spot.spotTime.toSecsSinceEpoch() : qint64(0);
    case StatusColumn:
        return int(spot.status);
    case DistanceColumn:
    case BearingColumn: {
        double miles = 0.0;
        double degrees = 0.0;
        if (!spotDistance(spot, miles, degrees))
            return column == DistanceColumn ? k_unknownDistance : k_unknownBearing;
        return column == DistanceColumn ? miles : degrees;
    }
    default:
        return {};
    }
}

QVariant StationModel::backgroundData(const StationSpot &spot) const
{
    if (spot.status == StationSpot::Heard)
        return QColor(40, 30, 8);
    if (spot.groupId > 0 && spot.groupId == m_highlightGroup)
        return QColor(10, 34, 56);
    return {};
}

QVariant StationModel::foregroundData(const StationSpot &spot) const
{
    if (spot.status != StationSpot::Unknown)
        return SpotColours::status(spot.status);
    if (m_watchCallsigns.containsLowered(spot.callsign))
        return QColor(64, 255, 128);
    if (m_watchReferences.containsLowered(spot.reference))
        return QColor(64, 176, 255);
    return SpotColours::status(StationSpot::Unknown);
}

bool StationModel::spotDistance(const StationSpot &spot, double &miles, double &degrees) const
{
    if (!m_hasUserLocation || !spot.hasLocation)
        return false;
    miles = distanceMi(m_userLat, m_userLon, spot.lat, spot.lon);
    degrees = bearingDeg(m_userLat, m_userLon, spot.lat, spot.lon);
    return true;
}

QVariant StationModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    if (role == Qt::DisplayRole)
        return QString::fromLatin1(k_headers[section]);
    if (role == Qt::TextAlignmentRole)
        return k_left;
    return {};
}

void StationModel::refreshAgeColumn()
{
    emitAllRowsChanged(AgeColumn, AgeColumn);
}

QString StationModel::formatFrequency(double khz)
{
    if (!(khz > 0.0))
        return QStringLiteral("?");
    return QString::number(khz, 'f', 3);
}

QString StationModel::formatAge(const QDateTime &time)
{
    return formatAge(time, QDateTime::currentMSecsSinceEpoch());
}

QString StationModel::formatAge(const QDateTime &time, qint64 nowMSecs)
{
    if (!time.isValid())
        return QStringLiteral("?");
    // Whole seconds, truncated toward zero like QDateTime::secsTo.
    const qint64 s = (nowMSecs - time.toMSecsSinceEpoch()) / 1000;
    if (s < 0)
        return QStringLiteral("now");
    if (s < 60)
        return QString::number(s) + QLatin1String("s ago");
    if (s < 3600)
        return QString::number(s / 60) + QLatin1String("m ago");
    if (s > 86399)
        return QString::number(s / 86400) + QLatin1String("d ago");
    return QString::number(s / 3600) + QLatin1String("h ago");
}

bool StationModel::gridToLatLon(const QString &grid, double &lat, double &lon)
{
    if (grid.size() < 4)
        return false;
    const char16_t f1 = grid.at(0).toUpper().unicode();
    const char16_t f2 = grid.at(1).toUpper().unicode();
    if (f1 < u'A' || f1 > u'R' || f2 < u'A' || f2 > u'R')
        return false;
    const int d3 = digitValue(grid.at(2));
    const int d4 = digitValue(grid.at(3));
    if (d3 < 0 || d4 < 0)
        return false;
    double outLon = (f1 - u'A') * 20.0 - 180.0 + d3 * 2.0;
    double outLat = (f2 - u'A') * 10.0 - 90.0 + d4;
    if (grid.size() >= 6) {
        const char16_t s5 = grid.at(4).toLower().unicode();
        const char16_t s6 = grid.at(5).toLower().unicode();
        if (s5 >= u'a' && s5 <= u'x' && s6 >= u'a' && s6 <= u'x') {
            lon = outLon + (s5 - u'a') * (1.0 / 12.0) + 1.0 / 24.0;
            lat = outLat + (s6 - u'a') * (1.0 / 24.0) + 1.0 / 48.0;
            return true;
        }
    }
    // Four or five characters, or a subsquare that is not one: square centre.
    lon = outLon + 1.0;
    lat = outLat + 0.5;
    return true;
}

double StationModel::distanceMi(double lat1, double lon1, double lat2, double lon2)
{
    const double dLat = (lat2 - lat1) * k_degToRad;
    const double dLon = (lon2 - lon1) * k_degToRad;
    const double sLat = std::sin(dLat / 2.0);
    const double sLon = std::sin(dLon / 2.0);
    const double a = sLat * sLat + std::cos(lat1 * k_degToRad) * std::cos(lat2 * k_degToRad) * sLon * sLon;
    return k_earthDiameterMi * std::atan2(std::sqrt(a), std::sqrt(1.0 - a));
}

double StationModel::bearingDeg(double lat1, double lon1, double lat2, double lon2)
{
    const double phi1 = lat1 * k_degToRad;
    const double phi2 = lat2 * k_degToRad;
    const double dLambda = (lon2 - lon1) * k_degToRad;
    const double y = std::sin(dLambda) * std::cos(phi2);
    const double x = std::cos(phi1) * std::sin(phi2) - std::sin(phi1) * std::cos(phi2) * std::cos(dLambda);
    const double theta = std::atan2(y, x) / k_degToRad;
    return std::fmod(theta + 360.0, 360.0);
}
