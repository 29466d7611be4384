#pragma once

#include "model/stationspot.h"

#include <QAbstractSocket>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringDecoder>
#include <QStringList>

#include <functional>

class QTcpSocket;
class QTimer;

// Client of one telnet DX cluster node: logs in with the user's call sign,
// asks for DX spots and turns every "DX de" line into a one-spot batch. It
// offers the signals of the web fetchers so the window can wire it alike, and
// reconnects by itself with a growing delay until it is told to stop.
//
// Real nodes greet with banner lines and then prompt for the call without a
// line feed. A prompt seen within k_promptWindowMs of connecting makes the
// lines before it a banner: the login is judged on the first line after the
// call went out in answer. A node that prompts nothing is judged on its first
// line, once that window has passed.
class DxClusterFetcher final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DxClusterFetcher)

public:
    enum State : int { Disconnected = 0, Connecting = 1, LoggingIn = 2, LoggedIn = 3 };
    Q_ENUM(State)

    static constexpr const char *k_defaultHost = "dxc.ve7cc.net";
    static constexpr quint16 k_defaultPort = 23;
    static constexpr int k_initialReconnectDelayMs = 5000;
    static constexpr int k_maxReconnectDelayMs = 300000;
    // Cluster lines are a few dozen characters; anything this long without a
    // line feed is not a line and is dropped rather than buffered for ever.
    static constexpr qsizetype k_maxLineChars = 16384;
    static constexpr qint64 k_readChunkBytes = 64 * 1024;
    static constexpr int k_promptWindowMs = 2000;
    static constexpr qsizetype k_maxBannerLines = 200;
    // A session shorter than this was no success: the back-off goes on
    // growing, so a node that accepts and drops at once is not hammered.
    static constexpr qint64 k_steadySessionMs = 60000;

    // Milliseconds since the Unix epoch; tests hand in their own.
    using Clock = std::function<qint64()>;

    explicit DxClusterFetcher(QObject *parent = nullptr);
    DxClusterFetcher(const QString &host, quint16 port, const QString &callsign, QObject *parent = nullptr);
    ~DxClusterFetcher() override;

    // A new address while logged in ends the session without reconnecting;
    // the owner connects again. In other states it is used at the next attempt.
    void setHost(const QString &host, quint16 port);
    QString host() const { return m_host; }
    quint16 port() const { return m_port; }

    void setCallsign(const QString &call);
    QString callsign() const { return m_callsign; }

    bool isConnected() const { return m_state == LoggedIn; }
    // Writes one line to a logged-in node, its control characters (line
    // ends among them) removed, so the text can never become two commands.
    // False, and nothing written, in any other state.
    bool sendLine(const QString &line);
    State state() const { return m_state; }
    void setClock(Clock clock);

    // Whether lines of a fresh connection wait for a prompt to show whether
    // they are a banner (at most k_promptWindowMs).
    bool isWaitingForPrompt() const;

    // Reconnection back-off: whether a retry is pending, the wait it was
    // scheduled with, and the wait the next scheduled retry will use.
    bool isReconnectPending() const;
    int reconnectIntervalMs() const;
    int nextReconnectDelayMs() const { return m_reconnectDelayMs; }

    // How the node last answered. Connecting stands from the operator's
    // request until the first answer; an automatic retry keeps the failure it
    // retries, so a node backing off stays unreachable until it lets us in.
    enum class Outcome : int { Off, Connecting, LoggedIn, Refused, Unreachable };
    Outcome outcome() const { return m_outcome; }
    // The node's refusal line or the socket's error text; empty otherwise.
    QString outcomeText() const { return m_outcomeText; }
    qint64 outcomeAtMs() const { return m_outcomeAtMs; }
    // Stopped by the node's refusal: nothing retries until the operator asks.
    bool isRefused() const { return m_outcome == Outcome::Refused; }

    // Text received after the last line feed, waiting for the rest of its line.
    qsizetype bufferedChars() const { return m_buffer.size(); }

    // Pure parsing, free of networking. A line that is not a valid spot gives
    // a default record (empty call sign, frequency 0).
    static StationSpot parseDxLine(const QString &line);
    static StationSpot parseDxLine(const QString &line, const QDateTime &nowUtc);
    static QString extractMode(const QString &comment);
    static QString stripAnsi(const QString &text);
    // The spot's "HHMM" stamp on the day of nowUtc, or the day before when it
    // would otherwise lie more than twelve hours ahead; invalid for a bad time.
    static QDateTime spotTimeUtc(int hhmm, const QDateTime &nowUtc);

public slots:
    void connectToCluster();
    void disconnectFromCluster();
    // Lifts a refusal's stop and connects at once; does nothing otherwise, so
    // a node the operator switched off stays off.
    void reconnectNow();

signals:
    void spotsReady(QList<StationSpot> spots);
    void fetchError(QString error);
    void fetchStarted();
    void connectionChanged(bool connected);
    // outcome() changed, once the client has settled into its new state.
    void outcomeChanged();

private slots:
    void onSocketConnected();
    void onSocketDisconnected();
    void onSocketReadyRead();
    void onSocketError(QAbstractSocket::SocketError socketError);
    void onReconnectTimer();
    void onPromptWaitOver();

private:
    bool canStartConnection(); // reports a missing host
    void startConnection();
    void processLine(const QString &line);
    void answerPrompt();
    void answerPartialPrompt();
    // The login phase's part of a line: false when the line ends there.
    bool passLoginPhase(const QString &line);
    bool acceptOrReject(const QString &line);
    void rejectLogin(const QString &heldLine);
    bool refusedBeforeClosing();
    void judgeHeldLines();
    void handleSpotLine(const QString &line);
    QString loginCall() const;
    void sendLogin();
    void stopSession();
    // Forgets everything of the session that ends or begins.
    void endSessionState();
    void scheduleReconnect();
    QString addressText() const;
    void setOutcome(Outcome outcome, const QString &text = QString());

    QTcpSocket *m_socket;
    QTimer *m_reconnectTimer;
    QTimer *m_promptTimer; // runs while lines may still turn out to be a banner
    Clock m_clock;
    QString m_host;
    quint16 m_port = k_defaultPort;
    QString m_callsign;
    QString m_buffer;
    QStringDecoder m_decoder;
    bool m_discardingLine = false;
    quint64 m_session = 0; // changes whenever a connection starts or ends
    int m_reconnectDelayMs = k_initialReconnectDelayMs;
    bool m_stopped = false;
    bool m_promptSeen = false; // within the window, this connection
    QStringList m_heldLines;   // waiting for the window to close
    qint64 m_connectedAtMs = 0;
    qint64 m_loggedInAtMs = 0;
    State m_state = Disconnected;
    Outcome m_outcome = Outcome::Off;
    QString m_outcomeText;
    qint64 m_outcomeAtMs = 0;
};
