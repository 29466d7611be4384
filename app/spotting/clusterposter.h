#pragma once

#include <QString>
#include <QStringList>

class DxClusterFetcher;
class DxClusterPool;
struct SpotRequest;

// Spots through the DX clusters the program is logged into. A spot goes out
// through one node only: the node spreads it over the whole network, and a
// second node would post it twice. Only cluster clients are asked; a
// skimmer feed is no place for a "DX" line.
class ClusterPoster final
{
public:
    explicit ClusterPoster(const DxClusterPool &pool);

    // The nodes logged in, in list order, each as "host:port".
    QStringList loggedInNodes() const;
    // The chosen node ("host:port") when it is logged in; without a choice
    // the first logged in; null when none qualifies.
    DxClusterFetcher *nodeFor(const QString &node) const;
    // Writes the request's "DX" line through that node; its host, or empty
    // when no node took the line.
    QString post(const SpotRequest &request) const;

private:
    const DxClusterPool &m_pool;
};
