#pragma once

#include "sources/skimmerreport.h"

#include <QObject>
#include <QString>

#include <array>

class DxClusterFetcher;

// The Reverse Beacon Network's telnet feed: one connection for CW and RTTY,
// one for FT8 and FT4, both logged in with the operator's own call (the
// service takes no guests). Each is a cluster client marked as a skimmer
// feed, so refusal, back-off and reconnection are the cluster's.
class RbnClient final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RbnClient)

public:
    static constexpr const char *k_defaultHost = "telnet.reversebeacon.net";
    static constexpr quint16 k_cwPort = 7000;
    static constexpr quint16 k_digitalPort = 7001;

    explicit RbnClient(QObject *parent = nullptr);
    ~RbnClient() override;

    // The ports are the service's; tests hand in their own.
    void setHost(const QString &host, quint16 cwPort = k_cwPort, quint16 digitalPort = k_digitalPort);
    // An empty call while running ends both sessions, with the reason.
    void setCallsign(const QString &callsign);
    QString callsign() const { return m_callsign; }

    // Connects both feeds; without an own call nothing connects and
    // statusMessage says why.
    bool start();
    void stop();
    bool isRunning() const { return m_running; }
    bool anyConnected() const;
    const std::array<DxClusterFetcher *, 2> &feeds() const { return m_feeds; }

    static QString noCallsignText();

signals:
    void skimmerReportReady(const SkimmerReport &report);
    void fetchError(QString error);
    void statusMessage(QString text);

private:
    std::array<DxClusterFetcher *, 2> m_feeds{};
    QString m_callsign;
    bool m_running = false;
};
