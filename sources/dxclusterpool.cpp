#include "sources/dxclusterpool.h"

#include "sources/dxclusterfetcher.h"

#include <algorithm>

DxClusterPool::DxClusterPool(QObject *owner)
    : m_owner(owner)
{}

DxClusterPool::~DxClusterPool() = default;

void DxClusterPool::rebuild(const QList<DxClusterEntry> &nodes, const QString &callsign, const Wiring &wire)
{
    for (DxClusterFetcher *client : std::as_const(m_clients)) {
        client->disconnectFromCluster();
        client->disconnect(m_owner);
        client->deleteLater();
    }
    m_clients.clear();
    for (const DxClusterEntry &node : nodes) {
        auto *client = new DxClusterFetcher(m_owner);
        client->setHost(node.host, node.port);
        client->setCallsign(callsign);
        if (wire)
            wire(client);
        m_clients.append(client);
    }
}

void DxClusterPool::setCallsign(const QString &callsign) const
{
    for (DxClusterFetcher *client : m_clients)
        client->setCallsign(callsign);
}

void DxClusterPool::connectAll() const
{
    for (DxClusterFetcher *client : m_clients)
        client->connectToCluster();
}

void DxClusterPool::disconnectAll() const
{
    for (DxClusterFetcher *client : m_clients)
        client->disconnectFromCluster();
}

bool DxClusterPool::anyConnected() const
{
    return std::any_of(m_clients.cbegin(), m_clients.cend(),
                       [](const DxClusterFetcher *client) { return client->isConnected(); });
}

DxClusterFetcher *DxClusterPool::client(const DxClusterEntry &node) const
{
    const auto it = std::find_if(m_clients.cbegin(), m_clients.cend(), [&node](const DxClusterFetcher *c) {
        return c->port() == node.port && c->host() == node.host;
    });
    return it != m_clients.cend() ? *it : nullptr;
}
