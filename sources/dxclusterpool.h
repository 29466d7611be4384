#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <utility>

class DxClusterFetcher;

// One telnet DX cluster the program logs into.
struct DxClusterEntry
{
    QString host;
    quint16 port = 23;

    friend bool operator==(const DxClusterEntry &a, const DxClusterEntry &b)
    {
        return a.port == b.port && a.host == b.host;
    }
    friend bool operator!=(const DxClusterEntry &a, const DxClusterEntry &b) { return !(a == b); }
};

// The DX cluster clients, one per configured node, in list order.
class DxClusterPool final
{
public:
    // Connects a new client's signals; called once for each client made.
    using Wiring = std::function<void(DxClusterFetcher *)>;

    explicit DxClusterPool(QObject *owner);
    ~DxClusterPool();
    DxClusterPool(const DxClusterPool &) = delete;
    DxClusterPool &operator=(const DxClusterPool &) = delete;

    // Drops every client (disconnected, unwired, deleted later) and makes one
    // per node with the owner as parent. The new clients are not connected.
    void rebuild(const QList<DxClusterEntry> &nodes, const QString &callsign, const Wiring &wire);
    void connectAll() const;
    void disconnectAll() const;
    // A new call sign goes to every client; it logs in with it next time.
    void setCallsign(const QString &callsign) const;
    bool anyConnected() const;
    const QList<DxClusterFetcher *> &clients() const { return m_clients; }
    // The client logging into that node, or none.
    DxClusterFetcher *client(const DxClusterEntry &node) const;

private:
    QObject *m_owner;
    QList<DxClusterFetcher *> m_clients;
};
