#include "sources/skimmerfeed.h"

#include <QTimer>

SkimmerFeed::SkimmerFeed(SkimmerAggregator::Clock clock, QObject *parent)
    : QObject(parent)
    , m_aggregator(StationSpot::RBN, std::move(clock))
    , m_timer(new QTimer(this))
{
    m_timer->setSingleShot(true);
    m_timer->setInterval(k_mergeIntervalMs);
    connect(m_timer, &QTimer::timeout, this, &SkimmerFeed::flush);
}

SkimmerFeed::~SkimmerFeed() = default;

void SkimmerFeed::setEnabled(bool enabled)
{
    m_enabled = enabled;
    if (!enabled) {
        m_timer->stop();
        m_pending.clear();
    }
}

void SkimmerFeed::add(const SkimmerReport &report)
{
    if (!m_enabled || !m_filter.accepts(report))
        return;
    StationSpot spot = m_aggregator.add(report);
    if (spot.callsign.isEmpty())
        return;
    m_pending.insert(SkimmerAggregator::rowKey(spot.callsign, spot.frequencyKhz, spot.mode), std::move(spot));
    if (!m_timer->isActive())
        m_timer->start();
}

void SkimmerFeed::flush()
{
    m_timer->stop();
    m_aggregator.expire();
    if (m_pending.isEmpty())
        return;
    QList<StationSpot> batch;
    batch.reserve(m_pending.size());
    for (auto it = m_pending.cbegin(); it != m_pending.cend(); ++it)
        batch.append(it.value());
    m_pending.clear();
    emit spotsReady(batch);
}
