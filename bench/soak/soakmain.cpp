// tallis_soak: the window under a DX flood, and the program's start-up time.
//   tallis_soak [--spots N] [--calls N] [--seconds N] [--rate N] [--clients N] [--docks]
//   tallis_soak --startup PATH_TO_TALLIS [--runs N]
// (tallis_soak --window URL ROWS [--docks] is the window's own process, started by the soak.)
// --docks shows the map and the band map in the window.
#include "soakdriver.h"
#include "soakstartup.h"
#include "soakwindow.h"

#include <QApplication>
#include <QCoreApplication>
#include <QStringList>
#include <QUrl>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

int intArgument(const QStringList &args, const char *name, int fallback)
{
    const qsizetype at = args.indexOf(QLatin1String(name));
    return at >= 0 && at + 1 < args.size() ? args.at(at + 1).toInt() : fallback;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc >= 4 && std::strcmp(argv[1], "--window") == 0) {
        QApplication app(argc, argv);
        QApplication::setApplicationName(QStringLiteral("Tallis"));
        const bool docks = argc >= 5 && std::strcmp(argv[4], "--docks") == 0;
        return runWindowSide(QUrl(QString::fromLocal8Bit(argv[2])), std::atoi(argv[3]), docks);
    }
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.value(1) == QLatin1String("--startup"))
        return runStartupTiming(args.value(2), intArgument(args, "--runs", 5));

    SoakOptions options;
    options.webSpots = intArgument(args, "--spots", options.webSpots);
    options.dxCalls = intArgument(args, "--calls", options.dxCalls);
    options.seconds = intArgument(args, "--seconds", options.seconds);
    options.linesPerSecond = intArgument(args, "--rate", options.linesPerSecond);
    options.apiClients = intArgument(args, "--clients", options.apiClients);
    options.docks = args.contains(QLatin1String("--docks"));
    if (options.webSpots < 1 || options.dxCalls < 1 || options.seconds < 1 || options.linesPerSecond < 20) {
        std::fputs("usage: tallis_soak [--spots N] [--calls N] [--seconds N] [--rate N>=20] [--clients N] "
                   "[--docks]\n",
                   stderr);
        return 2;
    }
    return runSoak(options, QCoreApplication::applicationFilePath());
}
