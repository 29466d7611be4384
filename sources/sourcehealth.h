#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class DxClusterFetcher;
class SpotFetcher;

// How the spot sources have been answering, summed up for a status-bar label.
// Per web source the last good answer (when, how many spots) and the last
// error (when, what); a web source counts as failing while its last tick ended
// in an error, one that is not polling (switched off) never does. Per DX
// cluster node its last outcome; a node counts as failing while it is refused
// or unreachable, not while it is connecting, logged in or switched off.
class SourceHealth final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SourceHealth)

public:
    // Milliseconds since the Unix epoch; tests hand in their own.
    using Clock = std::function<qint64()>;

    explicit SourceHealth(QObject *parent = nullptr);
    ~SourceHealth() override;

    void setClock(Clock clock);
    // Follows the fetcher's signals until it is destroyed; listed in watch order.
    void watch(SpotFetcher *fetcher, const QString &name);
    // Follows these cluster clients instead of any followed before, each node
    // an entry of its own ("DX host:port"), after the web sources.
    void watchClusters(const QList<DxClusterFetcher *> &clients);
    // One source fed by several connections (RBN's two ports): one entry,
    // failing while any of them is.
    void watchFeedGroup(const QString &name, const QList<DxClusterFetcher *> &feeds);

    int failingCount() const;
    // "Sources: all answering" or "Sources: N failing".
    QString labelText() const;
    // One line per source with its last answer and last error.
    QString toolTip() const;

signals:
    void changed();

private:
    struct Record
    {
        SpotFetcher *fetcher = nullptr;
        QString name;
        qint64 lastSuccessMs = 0; // 0: none yet
        qsizetype spotCount = 0;
        qint64 lastErrorMs = 0;
        QString lastError;
        bool failing = false;
        bool tickFailed = false; // the current tick has reported an error
    };

    Record *find(const SpotFetcher *fetcher);
    static QString describe(const Record &record);
    static bool isFailing(const DxClusterFetcher &client);
    static QString describe(const DxClusterFetcher &client);
    static QString outcomeText(const DxClusterFetcher &client);
    QString describeFeedGroup() const;

    Clock m_clock;
    QList<Record> m_records;
    QList<DxClusterFetcher *> m_clusters;
    QString m_feedGroupName;
    QList<DxClusterFetcher *> m_feedGroup;
};
