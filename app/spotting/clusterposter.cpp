#include "app/spotting/clusterposter.h"

#include "app/spotting/spotrequest.h"
#include "sources/dxclusterfetcher.h"
#include "sources/dxclusterpool.h"

ClusterPoster::ClusterPoster(const DxClusterPool &pool)
    : m_pool(pool)
{}

QStringList ClusterPoster::loggedInHosts() const
{
    QStringList hosts;
    for (const DxClusterFetcher *client : m_pool.clients()) {
        if (client->isConnected())
            hosts << client->host();
    }
    return hosts;
}

DxClusterFetcher *ClusterPoster::nodeFor(const QString &host) const
{
    for (DxClusterFetcher *client : m_pool.clients()) {
        if (client->isConnected() && (host.isEmpty() || client->host() == host))
            return client;
    }
    return nullptr;
}

QString ClusterPoster::post(const SpotRequest &request) const
{
    DxClusterFetcher *node = nodeFor(request.clusterHost);
    if (!node || !node->sendLine(request.clusterLine()))
        return QString();
    return node->host();
}
