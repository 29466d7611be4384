#include "app/updatechecker.h"

#include "buildinfo.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

UpdateChecker::UpdateChecker(QNetworkAccessManager *network, QObject *parent)
    : QObject(parent)
    , m_network(network != nullptr ? network : new QNetworkAccessManager(this))
    , m_url(QString::fromLatin1(k_defaultUrl))
    , m_ownBuildTime(BuildInfo::k_buildTime)
{}

UpdateChecker::~UpdateChecker() = default;

void UpdateChecker::checkForUpdates()
{
    if (m_reply) {
        // Disconnected first: an aborted reply finishes at once, and its partial body must not count.
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
        m_reply = nullptr;
    }
    m_reply = m_network->get(QNetworkRequest(m_url));
    connect(m_reply, &QNetworkReply::finished, this, &UpdateChecker::onUpdateCheckReply);
}

void UpdateChecker::onUpdateCheckReply()
{
    if (!m_reply)
        return;
    // Only a good answer counts: an error page may well hold a number.
    const bool answered = m_reply->error() == QNetworkReply::NoError;
    const QByteArray body = m_reply->readAll().trimmed();
    m_reply->deleteLater();
    m_reply = nullptr;
    if (!answered || body.isEmpty())
        return;
    bool ok = false;
    const qint64 remote = body.toLongLong(&ok, 10);
    if (ok && remote >= 1 && remote > m_ownBuildTime)
        emit updateAvailable(QString::number(remote));
}
