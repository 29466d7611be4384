#include "model/spotfilterproxymodel.h"

#include "model/stationmodel.h"

#include <QTimer>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

// Whether a set restricting one source lets the spot's reference through:
// an empty set restricts nothing, else the text before the separator must be in it.
bool prefixAllowed(const QSet<QString> &prefixes, const QString &reference, QChar separator)
{
    // left() of a negative count, no separator, is the whole reference.
    return prefixes.isEmpty() || prefixes.contains(reference.left(reference.indexOf(separator)));
}

} // namespace

SpotFilterProxyModel::SpotFilterProxyModel(QObject *parent)
    : QSortFilterProxyModel(parent)
    , m_refilterTimer(new QTimer(this))
{
    setSortRole(Qt::UserRole);
    setFilterCaseSensitivity(Qt::CaseInsensitive);
    // Spots age out of the max-age window without any new data arriving.
    connect(m_refilterTimer, &QTimer::timeout, this, &SpotFilterProxyModel::refilter);
    m_refilterTimer->start(k_refilterMs);
}

SpotFilterProxyModel::~SpotFilterProxyModel() = default;

void SpotFilterProxyModel::setSourceFilter(const SourceFlags &enabled)
{
    m_sourceEnabled = enabled;
    refilter();
}

void SpotFilterProxyModel::setSourceFilter(bool sota, bool pota, bool wwff, bool wwbota, bool bota, bool dx,
                                           bool gma)
{
    SourceFlags enabled = m_sourceEnabled;
    const bool named[] = {sota, pota, wwff, wwbota, bota, dx, gma};
    std::copy(std::begin(named), std::end(named), enabled.begin());
    setSourceFilter(enabled);
}

void SpotFilterProxyModel::setStatusFilter(int status)
{
    m_statusFilter = status;
    refilter();
}

void SpotFilterProxyModel::setTextFilter(const QString &text)
{
    m_textFilter = text.trimmed();
    refilter();
}

void SpotFilterProxyModel::setModeFilter(bool ssb, bool cw, bool am, bool fm, bool other)
{
    m_modeEnabled = {{ssb, cw, am, fm, other}};
    refilter();
}

void SpotFilterProxyModel::setMaxAgeMins(int minutes)
{
    m_maxAgeMins = minutes;
    refilter();
}

void SpotFilterProxyModel::setBandFilter(const QSet<QString> &bands)
{
    m_bands = bands;
    for (size_t i = 0; i < k_bands.size(); ++i)
        m_bandEnabled[i] = bands.contains(QLatin1String(k_bands[i].name));
    refilter();
}

void SpotFilterProxyModel::setPotaPrograms(const QSet<QString> &programs)
{
    m_potaPrograms = programs;
    refilter();
}

void SpotFilterProxyModel::setSotaAssociations(const QSet<QString> &associations)
{
    m_sotaAssociations = associations;
    refilter();
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
    const QString upper = mode.toUpper();
    const auto is = [&upper](const char *name) { return upper == QLatin1String(name); };
    if (is("SSB") || is("USB") || is("LSB"))
        return SsbMode;
    if (is("CW") || is("CWR") || is("CW-R"))
        return CwMode;
    if (is("AM"))
        return AmMode;
    if (is("FM") || is("NFM") || is("WFM"))
        return FmMode;
    return OtherMode;
}

void SpotFilterProxyModel::setSourceModel(QAbstractItemModel *model)
{
    m_stationModel = qobject_cast<const StationModel *>(model);
    QSortFilterProxyModel::setSourceModel(model);
}

void SpotFilterProxyModel::setHiddenTest(HiddenTest test)
{
    m_hiddenTest = std::move(test);
    refilter();
}

bool SpotFilterProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    Q_UNUSED(sourceParent)
    const StationModel *model = m_stationModel.data();
    if (!model)
        return true;
    if (sourceRow < 0 || sourceRow >= model->spots().size())
        return false;
    return acceptsSpot(model->spots().at(sourceRow));
}

void SpotFilterProxyModel::refilter()
{
    invalidateFilter();
    emit visibilityRulesChanged();
}

bool SpotFilterProxyModel::acceptsSpot(const StationSpot &spot) const
{
    const StationModel *model = m_stationModel.data();
    if (!model)
        return true;
    if (!(spot.frequencyKhz > 0.0))
        return false;
    if (m_hiddenTest && m_hiddenTest(spot))
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

    if (spot.source == StationSpot::POTA && !prefixAllowed(m_potaPrograms, spot.reference, QLatin1Char('-')))
        return false;
    if (spot.source == StationSpot::SOTA &&
        !prefixAllowed(m_sotaAssociations, spot.reference, QLatin1Char('/')))
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
    // Cluster spotters type calls in any case; k1abc belongs beside K1ABC.
    if (left.column() == StationModel::CallsignColumn && right.column() == StationModel::CallsignColumn)
        return left.data(sortRole())
                   .toString()
                   .compare(right.data(sortRole()).toString(), Qt::CaseInsensitive) < 0;
    return QSortFilterProxyModel::lessThan(left, right);
}
