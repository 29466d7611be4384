#include "sources/sourcehealth.h"

#include "sources/dxclusterfetcher.h"
#include "sources/spotfetcher.h"

#include <QDateTime>
#include <QStringList>

#include <algorithm>

namespace {

QString localTime(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms).toLocalTime().toString(QStringLiteral("HH:mm:ss"));
}

} // namespace

SourceHealth::SourceHealth(QObject *parent)
    : QObject(parent)
    , m_clock([] { return QDateTime::currentMSecsSinceEpoch(); })
{}

SourceHealth::~SourceHealth() = default;

void SourceHealth::setClock(Clock clock)
{
    m_clock = std::move(clock);
}

void SourceHealth::watch(SpotFetcher *fetcher, const QString &name)
{
    if (!fetcher || find(fetcher))
        return;
    Record fresh;
    fresh.fetcher = fetcher;
    fresh.name = name;
    m_records.append(fresh);
    connect(fetcher, &SpotFetcher::fetchStarted, this, [this, fetcher] {
        if (Record *record = find(fetcher))
            record->tickFailed = false;
    });
    connect(fetcher, &SpotFetcher::fetchError, this, [this, fetcher](const QString &error) {
        Record *record = find(fetcher);
        if (!record)
            return;
        record->tickFailed = true;
        record->failing = true;
        record->lastError = error;
        record->lastErrorMs = m_clock();
        emit changed();
    });
    connect(fetcher, &SpotFetcher::spotsReady, this, [this, fetcher](const QList<StationSpot> &spots) {
        Record *record = find(fetcher);
        // A reply the parser faulted still ends in an empty batch: no success.
        if (!record || record->tickFailed)
            return;
        record->failing = false;
        record->lastSuccessMs = m_clock();
        record->spotCount = spots.size();
        emit changed();
    });
    // Fetchers go when their owner does, and no signal may reach an owner that
    // is half destroyed: the record goes quietly.
    connect(fetcher, &QObject::destroyed, this, [this, fetcher] {
        m_records.removeIf([fetcher](const Record &record) { return record.fetcher == fetcher; });
    });
    emit changed();
}

void SourceHealth::watchClusters(const QList<DxClusterFetcher *> &clients)
{
    for (DxClusterFetcher *client : std::as_const(m_clusters))
        disconnect(client, nullptr, this, nullptr);
    m_clusters = clients;
    for (DxClusterFetcher *client : clients) {
        connect(client, &DxClusterFetcher::outcomeChanged, this, &SourceHealth::changed);
        // As with the web sources: a client that goes is forgotten quietly.
        connect(client, &QObject::destroyed, this, [this, client] { m_clusters.removeAll(client); });
    }
    emit changed();
}

void SourceHealth::watchFeedGroup(const QString &name, const QList<DxClusterFetcher *> &feeds)
{
    m_feedGroupName = name;
    m_feedGroup = feeds;
    for (DxClusterFetcher *feed : feeds) {
        connect(feed, &DxClusterFetcher::outcomeChanged, this, &SourceHealth::changed);
        connect(feed, &QObject::destroyed, this, [this, feed] { m_feedGroup.removeAll(feed); });
    }
    emit changed();
}

SourceHealth::Record *SourceHealth::find(const SpotFetcher *fetcher)
{
    const auto it = std::find_if(m_records.begin(), m_records.end(),
                                 [fetcher](const Record &record) { return record.fetcher == fetcher; });
    return it != m_records.end() ? &*it : nullptr;
}

int SourceHealth::failingCount() const
{
    const auto web = std::count_if(m_records.cbegin(), m_records.cend(), [](const Record &record) {
        return record.failing && record.fetcher->isAutoRefreshing();
    });
    const auto clusters = std::count_if(m_clusters.cbegin(), m_clusters.cend(),
                                        [](const DxClusterFetcher *client) { return isFailing(*client); });
    const bool groupFailing = std::any_of(m_feedGroup.cbegin(), m_feedGroup.cend(),
                                          [](const DxClusterFetcher *feed) { return isFailing(*feed); });
    return int(web + clusters) + (groupFailing ? 1 : 0);
}

QString SourceHealth::labelText() const
{
    const int failing = failingCount();
    return failing == 0 ? QStringLiteral("Sources: all answering")
                        : QStringLiteral("Sources: %1 failing").arg(failing);
}

QString SourceHealth::toolTip() const
{
    QStringList lines;
    for (const Record &record : m_records)
        lines << describe(record);
    for (const DxClusterFetcher *client : m_clusters)
        lines << describe(*client);
    if (!m_feedGroup.isEmpty())
        lines << describeFeedGroup();
    return lines.join(QLatin1Char('\n'));
}

QString SourceHealth::describe(const Record &record)
{
    QString line = record.name + QStringLiteral(": ");
    if (!record.fetcher->isAutoRefreshing())
        line += QStringLiteral("off; ");
    if (record.lastSuccessMs > 0)
        line += QStringLiteral("%1 %2 at %3")
                    .arg(QString::number(record.spotCount),
                         record.spotCount == 1 ? QStringLiteral("spot") : QStringLiteral("spots"),
                         localTime(record.lastSuccessMs));
    else
        line += QStringLiteral("no answer yet");
    if (record.lastErrorMs > 0)
        line += QStringLiteral("; %1 at %2: %3")
                    .arg(record.failing ? QStringLiteral("failing") : QStringLiteral("last error"),
                         localTime(record.lastErrorMs), record.lastError);
    return line;
}

bool SourceHealth::isFailing(const DxClusterFetcher &client)
{
    return client.outcome() == DxClusterFetcher::Outcome::Refused ||
           client.outcome() == DxClusterFetcher::Outcome::Unreachable;
}

QString SourceHealth::describe(const DxClusterFetcher &client)
{
    return QStringLiteral("DX %1:%2: ").arg(client.host()).arg(client.port()) + outcomeText(client);
}

QString SourceHealth::outcomeText(const DxClusterFetcher &client)
{
    const QString at = localTime(client.outcomeAtMs());
    switch (client.outcome()) {
    case DxClusterFetcher::Outcome::Off:
        return QStringLiteral("off");
    case DxClusterFetcher::Outcome::Connecting:
        return QStringLiteral("connecting");
    case DxClusterFetcher::Outcome::LoggedIn:
        return QStringLiteral("logged in since %1").arg(at);
    case DxClusterFetcher::Outcome::Refused:
        return QStringLiteral("refused at %1: %2").arg(at, client.outcomeText());
    case DxClusterFetcher::Outcome::Unreachable:
        return QStringLiteral("unreachable since %1: %2").arg(at, client.outcomeText());
    }
    return {};
}

// "RBN: logged in since 12:00:03" when the connections agree, else each with its port.
QString SourceHealth::describeFeedGroup() const
{
    QStringList states;
    for (const DxClusterFetcher *feed : m_feedGroup)
        states << outcomeText(*feed);
    states.removeDuplicates();
    if (states.size() > 1) {
        states.clear();
        for (const DxClusterFetcher *feed : m_feedGroup)
            states << QStringLiteral("port %1 %2").arg(feed->port()).arg(outcomeText(*feed));
    }
    return m_feedGroupName + QStringLiteral(": ") + states.join(QStringLiteral("; "));
}
