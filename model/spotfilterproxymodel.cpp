#include "model/spotfilterproxymodel.h"

#include "model/stationmodel.h"

#include <QTimer>

namespace {

std::vector<QString> toList(const QSet<QString> &set)
{
    return std::vector<QString>(set.cbegin(), set.cend());
}

bool listContains(const std::vector<QString> &list, QStringView text)
{
    for (const QString &entry : list) {
        if (text == entry)
            return true;
    }
    return false;
}

// The reference up to the first separator, or the whole reference.
QStringView referencePrefix(const QString &reference, QChar separator)
{
    const qsizetype cut = reference.indexOf(separator);
    return cut < 0 ? QStringView(reference) : QStringView(reference).left(cut);
}

bool isAscii(const QString &text)
{
    for (const QChar c : text) {
        if (c.unicode() >= 0x80)
            return false;
    }
    return true;
}

SpotFilterProxyModel::ModeClass classifyUpper(QStringView mode, Qt::CaseSensitivity cs)
{
    const auto is = [&](const char *literal) { return mode.compare(QLatin1String(literal), cs) == 0; };
    if (is("SSB") || is("USB") || is("LSB"))
        return SpotFilterProxyModel::SsbMode;
    if (is("CW") || is("CWR") || is("CW-R"))
        return SpotFilterProxyModel::CwMode;
    if (is("AM"))
        return SpotFilterProxyModel::AmMode;
    if (is("FM") || is("NFM") || is("WFM"))
        return SpotFilterProxyModel::FmMode;
    return SpotFilterProxyModel::OtherMode;
}

} // namespace

SpotFilterProxyModel::SpotFilterProxyModel(QObject *parent)
    : QSortFilterProxyModel(parent)
    , m_refilterTimer(new QTimer(this))
{
    setSortRole(Qt::UserRole);
    setFilterCaseSensitivity(Qt::CaseInsensitive);
    // Spots age out of the max-age window without any new data arriving.
    connect(m_refilterTimer, &QTimer::timeout, this, &SpotFilterProxyModel::invalidateFilter);
    m_refilterTimer->start(k_refilterMs);
}

SpotFilterProxyModel::~SpotFilterProxyModel() = default;

void SpotFilterProxyModel::setSourceFilter(bool sota, bool pota, bool wwff, bool wwbota, bool bota, bool dx,
                                           bool gma)
{
    m_sourceEnabled = {{sota, pota, wwff, wwbota, bota, dx, gma}};
    invalidateFilter();
}

void SpotFilterProxyModel::setStatusFilter(int status)
{
    m_statusFilter = status;
    invalidateFilter();
}

void SpotFilterProxyModel::setTextFilter(const QString &text)
{
    m_textFilter = text.trimmed();
    invalidateFilter();
}

void SpotFilterProxyModel::setModeFilter(bool ssb, bool cw, bool am, bool fm, bool other)
{
    m_modeEnabled = {{ssb, cw, am, fm, other}};
    invalidateFilter();
}

void SpotFilterProxyModel::setMaxAgeMins(int minutes)
{
    m_maxAgeMins = minutes;
    invalidateFilter();
}

void SpotFilterProxyModel::setBandFilter(const QSet<QString> &bands)
{
    m_bands = bands;
    for (size_t i = 0; i < k_bands.size(); ++i)
        m_bandEnabled[i] = bands.contains(QLatin1String(k_bands[i].name));
    invalidateFilter();
}

void SpotFilterProxyModel::setPotaPrograms(const QSet<QString> &programs)
{
    m_potaPrograms = programs;
    m_potaProgramList = toList(programs);
    invalidateFilter();
}

void SpotFilterProxyModel::setSotaAssociations(const QSet<QString> &associations)
{
    m_sotaAssociations = associations;
    m_sotaAssociationList = toList(associations);
    invalidateFilter();
}

bool SpotFilterProxyModel::isSourceEnabled(int source) const
{
    return source < 0 || source >= int(m_sourceEnabled.size()) || m_sourceEnabled[size_t(source)];
}

int SpotFilterProxyModel::refilterIntervalMs() const
{
    return m_refilterTimer->interval();
}

bool SpotFilterProxyModel::isRefilterActive() const
{
    return m_refilterTimer->isActive();
}

SpotFilterProxyModel::ModeClass SpotFilterProxyModel::modeClass(const QString &mode)
{
    // ASCII modes compare without building an upper-cased copy.
    if (isAscii(mode))
        return classifyUpper(mode, Qt::CaseInsensitive);
    const QString upper = mode.toUpper();
    return classifyUpper(upper, Qt::CaseSensitive);
}

void SpotFilterProxyModel::setSourceModel(QAbstractItemModel *model)
{
    m_stationModel = qobject_cast<const StationModel *>(model);
    QSortFilterProxyModel::setSourceModel(model);
}

bool SpotFilterProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    Q_UNUSED(sourceParent)
    const StationModel *model = m_stationModel.data();
    if (!model)
        return true;
    if (sourceRow < 0 || sourceRow >= model->spots().size())
        return false;
    const StationSpot &spot = model->spots().at(sourceRow);

    if (!(spot.frequencyKhz > 0.0))
        return false;
    if (spot.comments.contains(QLatin1String("qrt"), Qt::CaseInsensitive))
        return false;
    if (m_maxAgeMins > 0 && spot.spotTime.isValid()) {
        const qint64 ageSecs = (model->nowMSecs() - spot.spotTime.toMSecsSinceEpoch()) / 1000;
        if (ageSecs > qint64(m_maxAgeMins) * 60)
            return false;
    }
    if (!isSourceEnabled(spot.source))
        return false;

    if (m_statusFilter == k_statusActive) {
        if (spot.status == StationSpot::Contacted || spot.status == StationSpot::NotHeard)
            return false;
    } else if (m_statusFilter >= 0 && spot.status != m_statusFilter) {
        return false;
    }

    // Unticking every mode shows every mode rather than an empty table; with
    // every mode ticked there is nothing to classify.
    const auto ticked = std::count(m_modeEnabled.cbegin(), m_modeEnabled.cend(), true);
    if (ticked > 0 && ticked < qsizetype(m_modeEnabled.size()) && !m_modeEnabled[modeClass(spot.mode)])
        return false;

    if (!m_bands.isEmpty()) {
        bool inBand = false;
        for (size_t i = 0; i < k_bands.size() && !inBand; ++i)
            inBand = m_bandEnabled[i] && spot.frequencyKhz >= k_bands[i].lowKhz &&
                     spot.frequencyKhz <= k_bands[i].highKhz;
        if (!inBand)
            return false;
    }

    if (spot.source == StationSpot::POTA && !m_potaProgramList.empty() &&
        !listContains(m_potaProgramList, referencePrefix(spot.reference, QLatin1Char('-'))))
        return false;
    if (spot.source == StationSpot::SOTA && !m_sotaAssociationList.empty() &&
        !listContains(m_sotaAssociationList, referencePrefix(spot.reference, QLatin1Char('/'))))
        return false;

    if (m_textFilter.isEmpty())
        return true;
    return spot.callsign.contains(m_textFilter, Qt::CaseInsensitive) ||
           spot.reference.contains(m_textFilter, Qt::CaseInsensitive) ||
           spot.referenceName.contains(m_textFilter, Qt::CaseInsensitive);
}

bool SpotFilterProxyModel::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    // The age column's sort value is the spot time in whole seconds; compare
    // it straight from the model instead of through two QVariants.
    const StationModel *model = m_stationModel.data();
    if (model && sortRole() == Qt::UserRole && left.column() == StationModel::AgeColumn &&
        right.column() == StationModel::AgeColumn && left.isValid() && right.isValid()) {
        return model->spotTimeMSecsAt(left.row()) / 1000 < model->spotTimeMSecsAt(right.row()) / 1000;
    }
    return QSortFilterProxyModel::lessThan(left, right);
}
