#pragma once

#include "model/stationspot.h"
#include "sources/skimmeraggregator.h"
#include "sources/skimmerfilter.h"
#include "sources/skimmerreport.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

class QTimer;

// Carries skimmer reports into the table: each report refreshes its row in
// the aggregator, and the rows changed since the last merge go out together
// at most once every k_mergeIntervalMs, so a busy band costs one merge a
// second rather than one per line. Reports are dropped while the skimmer
// source is off, and those the filter turns away.
class SkimmerFeed final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SkimmerFeed)

public:
    static constexpr int k_mergeIntervalMs = 1000;

    explicit SkimmerFeed(SkimmerAggregator::Clock clock = {}, QObject *parent = nullptr);
    ~SkimmerFeed() override;

    void setEnabled(bool enabled);
    bool isEnabled() const { return m_enabled; }
    int pendingRows() const { return int(m_pending.size()); }
    // Which skimmers and stations pass; reports that do not are dropped unseen.
    SkimmerFilter &filter() { return m_filter; }

    void add(const SkimmerReport &report);
    // Sends the pending rows now; nothing when there are none.
    void flush();

signals:
    void spotsReady(QList<StationSpot> spots);

private:
    SkimmerFilter m_filter;
    SkimmerAggregator m_aggregator;
    QTimer *m_timer;
    QHash<QString, StationSpot> m_pending; // by the aggregator's row key
    bool m_enabled = false;
};
