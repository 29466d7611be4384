#include "api/wsserver.h"

// The delta clients of the spot table: "spots.subscribe", "spots.snapshot"
// and "spots.changed".

#include "api/apibackend.h"
#include "api/spotdeltatracker.h"

#include <QTimer>
#include <QWebSocket>

#include <algorithm>
#include <QWebSocket>

void WsServer::setSpotTracker(SpotDeltaTracker *tracker)
{
    if (m_tracker)
        m_tracker->disconnect(this);
    m_tracker = tracker;
    if (tracker)
        connect(tracker, &SpotDeltaTracker::changed, this, &WsServer::onSpotsChanged);
}

void WsServer::setBacklogProbe(BacklogProbe probe)
{
    m_backlogProbe = std::move(probe);
}

qint64 WsServer::subscribeSpots(QWebSocket *socket, bool delta)
{
    if (!m_tracker)
        throw QStringLiteral("spot deltas are not available");
    m_deltaClients.removeOne(socket);
    m_snapshotDue.removeOne(socket);
    if (delta) {
        // No table is owed any more; a fresh snapshot follows the reply.
        m_spotsDue.removeOne(socket);
        m_spotsSent.removeOne(socket);
        m_tracker->setActive(true);
        m_snapshotDue.append(socket);
    } else if (m_deltaClients.isEmpty() && m_snapshotDue.isEmpty()) {
        m_tracker->setActive(false);
    }
    return m_spotsVersion;
}

bool WsServer::isDeltaClient(QWebSocket *socket) const
{
    return m_deltaClients.contains(socket) || m_snapshotDue.contains(socket);
}

bool WsServer::isLagging(const QWebSocket *socket) const
{
    return m_backlogProbe(socket) > k_spotsBacklogBytes;
}

void WsServer::onSpotsChanged()
{
    m_deltaPending = true;
    if (!m_deltaTimer->isActive())
        m_deltaTimer->start(0); // out of the merge or mark that caused it
}

// Returns the size of the delta sent, which sets the next hold.
int WsServer::flushSpotDeltas()
{
    if (!m_tracker || !m_tracker->isActive())
        return 0;
    const SpotDelta delta = m_tracker->take();
    QString message;
    if (!delta.isEmpty())
        message = QString::fromUtf8(ApiJson::spotsChangedEvent(++m_spotsVersion, delta));
    const QList<QWebSocket *> clients = m_deltaClients; // send() may drop one
    for (QWebSocket *socket : clients) {
        // Further behind than a hold: a snapshot once it has caught up
        // costs less than every delta it has not read.
        if (isLagging(socket)) {
            m_deltaClients.removeOne(socket);
            m_snapshotDue.append(socket);
        } else if (!message.isEmpty()) {
            send(socket, message);
        }
    }
    serveSnapshots();
    return int(message.size());
}

void WsServer::serveSnapshots()
{
    // As with whole tables: a few copies on their way at a time, the others
    // as those drain (a bytesWritten brings this back), so eight clients
    // subscribing at once do not queue eight tables in memory together.
    const QList<QWebSocket *> due = m_snapshotDue;
    for (QWebSocket *socket : due) {
        if (m_ungreeted.contains(socket) || isLagging(socket) || !m_snapshotDue.contains(socket))
            continue;
        if (std::count_if(m_snapshotsSent.cbegin(), m_snapshotsSent.cend(), isBehind) >=
            k_spotsCopiesInFlight)
            return;
        if (m_snapshotMessage.isEmpty() || m_snapshotVersion != m_spotsVersion) {
            m_snapshotMessage =
                QString::fromUtf8(ApiJson::spotsSnapshotEvent(m_spotsVersion, m_backend->apiVisibleSpots()));
            m_snapshotVersion = m_spotsVersion;
            m_snapshotsSent.clear();
            // It may hold changes the next delta carries again: harmless
            // for keys it has, and keys gone meanwhile are reported removed.
            m_tracker->noteSnapshotSent();
        }
        m_snapshotDue.removeOne(socket);
        m_deltaClients.append(socket);
        m_snapshotsSent.append(socket);
        send(socket, m_snapshotMessage);
    }
    if (m_snapshotDue.isEmpty()) {
        m_snapshotMessage.clear(); // a large table is not held a moment longer than needed
        m_snapshotsSent.clear();
    }
}
