#include "soakwindow.h"

#include "soakstats.h"

#include "app/heaptrimmer.h"
#include "app/mainwindow.h"
#include "app/serviceurls.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"
#include "sources/rbnclient.h"

#include <QApplication>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTimer>
#include <QUrl>

#include <cstdio>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int k_tickMs = 50;
constexpr double k_stallMs = 40.0; // a late tick worth naming, with when it came

void say(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

// User and system time of every thread of this process, seconds.
double processCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto secs = [](const timeval &t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return secs(usage.ru_utime) + secs(usage.ru_stime);
}

// Watches the window from inside its event loop: a timer that should fire
// every 50 ms says how late the loop is, a second timer samples memory.
class WindowProbe final : public QObject
{
public:
    WindowProbe(MainWindow &window, int expectedRows)
        : m_window(window)
        , m_model(window.findChild<StationModel *>())
        , m_proxy(window.findChild<SpotFilterProxyModel *>())
        , m_expectedRows(expectedRows)
        , m_stdin(STDIN_FILENO, QSocketNotifier::Read)
    {
        m_tick.setSingleShot(true); // re-armed each time, so each firing is one measurement
        m_tick.setTimerType(Qt::PreciseTimer);
        m_tick.setInterval(k_tickMs);
        connect(&m_tick, &QTimer::timeout, this, &WindowProbe::onTick);
        m_sample.setInterval(1000);
        connect(&m_sample, &QTimer::timeout, this, &WindowProbe::onSample);
        connect(&m_stdin, &QSocketNotifier::activated, this, &WindowProbe::onInput);
        m_armed.start();
        m_tick.start();
        m_sample.start();
    }

private:
    int rows() const { return m_model->rowCount(); }
    int visible() const { return m_proxy->rowCount(); }

    void onTick()
    {
        if (m_flood.isValid()) {
            const double lag = double(m_armed.nsecsElapsed()) / 1e6 - k_tickMs;
            m_lag.append(lag);
            if (lag >= k_stallMs)
                say(QStringLiteral("stall %1 %2")
                        .arg(double(m_flood.elapsed()) / 1000.0, 0, 'f', 1)
                        .arg(lag, 0, 'f', 1));
        }
        if (!m_loaded && rows() >= m_expectedRows) {
            m_loaded = true;
            say(QStringLiteral("loaded %1 %2").arg(SoakStats::residentKb()).arg(rows()));
        }
        m_armed.start();
        m_tick.start();
    }

    void onSample()
    {
        const qint64 secs = m_flood.isValid() ? m_flood.elapsed() / 1000 : -1;
        say(QStringLiteral("rss %1 %2 %3 %4 %5")
                .arg(secs)
                .arg(SoakStats::residentKb())
                .arg(rows())
                .arg(visible())
                .arg(qint64(mallinfo2().uordblks / 1024)));
    }

    void onInput()
    {
        char buffer[256];
        const ssize_t n = ::read(STDIN_FILENO, buffer, sizeof(buffer));
        m_input += QByteArray(buffer, n > 0 ? int(n) : 0);
        if (n <= 0)
            m_input += "quit\n"; // the driver went away
        while (m_input.contains('\n')) {
            const qsizetype end = m_input.indexOf('\n');
            const QByteArray line = m_input.left(end).trimmed();
            m_input.remove(0, end + 1);
            if (line == "flood") {
                m_flood.start();
                m_cpuAtFlood = processCpuSeconds();
            } else if (line == "stop" && m_flood.isValid()) {
                m_floodCpu = processCpuSeconds() - m_cpuAtFlood;
                m_floodSecs = double(m_flood.elapsed()) / 1000.0;
            } else if (line == "quit") {
                finish();
                return;
            }
        }
    }

    void finish()
    {
        m_stdin.setEnabled(false);
        const SoakStats::Summary lag = SoakStats::summarize(m_lag);
        say(QStringLiteral("lag %1 %2 %3 %4").arg(lag.p50).arg(lag.p99).arg(lag.max).arg(lag.count));
        if (m_floodSecs > 0)
            say(QStringLiteral("cpu %1 %2").arg(m_floodCpu).arg(m_floodSecs));
        say(QStringLiteral("end %1 %2 %3").arg(SoakStats::residentKb()).arg(rows()).arg(visible()));
        m_window.close(); // saves the settings, as the user's close does
        QCoreApplication::quit();
    }

    MainWindow &m_window;
    StationModel *m_model;
    SpotFilterProxyModel *m_proxy;
    const int m_expectedRows;
    QSocketNotifier m_stdin;
    QTimer m_tick;
    QTimer m_sample;
    QElapsedTimer m_armed;
    QElapsedTimer m_flood; // valid once the flood has started
    double m_cpuAtFlood = 0.0;
    double m_floodCpu = 0.0; // from "flood" to "stop"
    double m_floodSecs = 0.0;
    QList<double> m_lag;
    QByteArray m_input;
    bool m_loaded = false;
};

} // namespace

int runWindowSide(const QUrl &services, int expectedRows, const WindowSideOptions &options)
{
    const HeapTrimmer heapTrimmer; // as the program's main has
    auto window = std::make_unique<MainWindow>(ServiceUrls::allAt(services));
    if (options.rbnPorts[0] != 0) // the settings name the host; the service's ports are fixed
        window->findChild<RbnClient *>()->setHost(QStringLiteral("127.0.0.1"), options.rbnPorts[0],
                                                  options.rbnPorts[1]);
    if (options.docks) {
        window->resize(1600, 1000);
        for (const char *name : {"mapDock", "bandMapDock"})
            window->findChild<QDockWidget *>(QLatin1String(name))->show();
    }
    window->show();
    say(QStringLiteral("start %1").arg(SoakStats::residentKb()));
    WindowProbe probe(*window, expectedRows);
    const int rc = QApplication::exec();
    window.reset();
    return rc;
}
