#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

class QNetworkAccessManager;
class QNetworkReply;

// Asks the maker's service for the build time of the newest release and says
// so when it is later than this program's. Failures of any kind stay silent.
class UpdateChecker final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(UpdateChecker)

public:
    static constexpr const char *k_defaultUrl = "https://tallis.brightwater.example/tallis-build-time";

    // Without a network access manager the checker makes its own.
    explicit UpdateChecker(QNetworkAccessManager *network = nullptr, QObject *parent = nullptr);
    ~UpdateChecker() override;

    void setUrl(const QUrl &url) { m_url = url; }
    QUrl url() const { return m_url; }
    // Seconds since the Unix epoch; the build's own time unless a test says otherwise.
    void setOwnBuildTime(qint64 secs) { m_ownBuildTime = secs; }
    qint64 ownBuildTime() const { return m_ownBuildTime; }

public slots:
    // A check still under way is abandoned: only the newest answer counts.
    void checkForUpdates();

signals:
    void updateAvailable(const QString &buildTime);

private slots:
    void onUpdateCheckReply();

private:
    QNetworkAccessManager *m_network;
    QPointer<QNetworkReply> m_reply;
    QUrl m_url;
    qint64 m_ownBuildTime;
};
