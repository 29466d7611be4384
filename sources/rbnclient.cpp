#include "sources/rbnclient.h"

#include "sources/dxclusterfetcher.h"

RbnClient::RbnClient(QObject *parent)
    : QObject(parent)
{
    const QString host = QString::fromLatin1(k_defaultHost);
    m_feeds = {new DxClusterFetcher(host, k_cwPort, QString(), this),
               new DxClusterFetcher(host, k_digitalPort, QString(), this)};
    for (DxClusterFetcher *feed : m_feeds) {
        feed->setSkimmerFeed(true);
        connect(feed, &DxClusterFetcher::skimmerReportReady, this, &RbnClient::skimmerReportReady);
        connect(feed, &DxClusterFetcher::fetchError, this, &RbnClient::fetchError);
    }
}

RbnClient::~RbnClient() = default;

QString RbnClient::noCallsignText()
{
    return QStringLiteral("RBN: set your callsign in Preferences first");
}

void RbnClient::setHost(const QString &host, quint16 cwPort, quint16 digitalPort)
{
    const bool running = m_running;
    stop();
    m_feeds[0]->setHost(host, cwPort);
    m_feeds[1]->setHost(host, digitalPort);
    if (running)
        start();
}

void RbnClient::setCallsign(const QString &callsign)
{
    m_callsign = callsign.trimmed().toUpper();
    for (DxClusterFetcher *feed : m_feeds)
        feed->setCallsign(m_callsign);
    if (m_running && m_callsign.isEmpty()) {
        stop();
        emit statusMessage(noCallsignText());
    }
}

bool RbnClient::start()
{
    if (m_callsign.isEmpty()) {
        stop();
        emit statusMessage(noCallsignText());
        return false;
    }
    m_running = true;
    for (DxClusterFetcher *feed : m_feeds)
        feed->connectToCluster();
    return true;
}

void RbnClient::stop()
{
    m_running = false;
    for (DxClusterFetcher *feed : m_feeds)
        feed->disconnectFromCluster();
}

bool RbnClient::anyConnected() const
{
    return m_feeds[0]->isConnected() || m_feeds[1]->isConnected();
}
