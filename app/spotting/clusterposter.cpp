#include "app/spotting/clusterposter.h"

#include "app/spotting/spotrequest.h"
#include "sources/dxclusterfetcher.h"
#include "sources/dxclusterpool.h"

ClusterPoster::ClusterPoster(const DxClusterPool &pool)
    : m_pool(pool)
{}

namespace {

QString nodeName(const DxClusterFetcher *client)
{
    return QStringLiteral("%1:%2").arg(client->host()).arg(client->port());
}

} // namespace

QStringList ClusterPoster::loggedInNodes() const
{
    QStringList nodes;
    for (const DxClusterFetcher *client : m_pool.clients()) {
        if (client->isConnected())
            nodes << nodeName(client);
    }
    return nodes;
}

DxClusterFetcher *ClusterPoster::nodeFor(const QString &node) const
{
    for (DxClusterFetcher *client : m_pool.clients()) {
        if (client->isConnected() && (node.isEmpty() || nodeName(client) == node))
            return client;
    }
    return nullptr;
}

QString ClusterPoster::post(const SpotRequest &request) const
{
    DxClusterFetcher *node = nodeFor(request.clusterNode);
    if (!node || !node->sendLine(request.clusterLine()))
        return QString();
    return node->host();
}
