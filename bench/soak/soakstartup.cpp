#include "soakstartup.h"

#include "soakhome.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <QWebSocket>

#include <cstdio>

namespace {

constexpr int k_giveUpMs = 30000;
constexpr int k_retryMs = 2;

// Milliseconds from starting the program to its first "hello"; -1 if none came.
double timeToHello(const QString &tallisPath)
{
    QTemporaryDir home;
    const quint16 port = SoakHome::freePort();
    const QJsonObject settings{{QStringLiteral("callsign"), QStringLiteral("N0CALL")},
                               {QStringLiteral("wsEnabled"), true},
                               {QStringLiteral("wsPort"), port}};
    if (!SoakHome::writeSettings(home.path(), settings))
        return -1;

    QProcess program;
    program.setProcessEnvironment(SoakHome::environment(home.path()));
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.setStandardOutputFile(QProcess::nullDevice());

    QWebSocket client;
    double helloMs = -1;
    QElapsedTimer clock;
    const QUrl url(QStringLiteral("ws://127.0.0.1:%1").arg(port));
    QObject::connect(&client, &QWebSocket::textMessageReceived, &client, [&](const QString &text) {
        if (helloMs < 0 && text.contains(QLatin1String(R"("event":"hello")")))
            helloMs = double(clock.nsecsElapsed()) / 1e6;
    });
    // Refused until the program listens: try again at once, as a script would.
    QObject::connect(&client, &QWebSocket::disconnected, &client, [&] {
        if (helloMs < 0 && program.state() != QProcess::NotRunning)
            QTimer::singleShot(k_retryMs, &client, [&] { client.open(url); });
    });
    clock.start();
    program.start(tallisPath, {});
    client.open(url);
    const QDeadlineTimer deadline(k_giveUpMs);
    while (helloMs < 0 && !deadline.hasExpired() && program.state() != QProcess::NotRunning)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    client.abort();
    program.terminate();
    if (!program.waitForFinished(10000)) {
        program.kill();
        program.waitForFinished(5000);
    }
    return helloMs;
}

} // namespace

int runStartupTiming(const QString &tallisPath, int runs)
{
    QList<double> times;
    for (int i = 0; i < runs; ++i) {
        const double ms = timeToHello(tallisPath);
        if (ms < 0) {
            std::printf("error: %s never said hello\n", qPrintable(tallisPath));
            return 2;
        }
        std::printf("  run %d: %.0f ms to the first \"hello\"\n", i + 1, ms);
        times.append(ms);
    }
    std::sort(times.begin(), times.end());
    const double median = times.size() % 2
                              ? times.at(times.size() / 2)
                              : (times.at(times.size() / 2 - 1) + times.at(times.size() / 2)) / 2;
    std::printf("Start-up to first \"hello\": median %.0f ms of %d (min %.0f, max %.0f)\n", median, runs,
                times.constFirst(), times.constLast());
    std::fflush(stdout);
    return 0;
}
