// tallis_soak: the window under a DX flood, and the program's start-up time.
//   tallis_soak [--spots N] [--calls N] [--seconds N] [--rate N] [--clients N] [--docks]
//               [--rbn LINES_PER_S] [--rbn-calls N] [--delta N]
//   tallis_soak --startup PATH_TO_TALLIS [--runs N]
// (tallis_soak --window URL ROWS [--docks] [--rbn CW_PORT DIGITAL_PORT] is the window's own
// process, started by the soak.)
// --docks shows the map and the band map in the window; --rbn adds skimmer
// feeds; --delta N puts the first N API clients on "spots.changed" deltas.
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
        const QStringList args = QCoreApplication::arguments();
        const qsizetype rbn = args.indexOf(QLatin1String("--rbn"));
        WindowSideOptions side;
        side.docks = args.contains(QLatin1String("--docks"));
        if (rbn > 0 && rbn + 2 < args.size())
            side.rbnPorts = {quint16(args.at(rbn + 1).toUInt()), quint16(args.at(rbn + 2).toUInt())};
        return runWindowSide(QUrl(args.at(2)), args.at(3).toInt(), side);
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
    options.rbnLinesPerSecond = intArgument(args, "--rbn", 0);
    options.rbnCalls = intArgument(args, "--rbn-calls", options.rbnCalls);
    options.deltaClients = intArgument(args, "--delta", 0);
    const bool rateOk =
        options.linesPerSecond >= 20 || (options.linesPerSecond == 0 && options.rbnLinesPerSecond > 0);
    if (options.webSpots < 1 || options.dxCalls < 1 || options.seconds < 1 || !rateOk ||
        (options.rbnLinesPerSecond != 0 && options.rbnLinesPerSecond < 20) || options.rbnCalls < 1) {
        std::fputs("usage: tallis_soak [--spots N] [--calls N] [--seconds N] [--rate N>=20, or 0 with --rbn] "
                   "[--clients N] [--docks] [--rbn N>=20] [--rbn-calls N] [--delta N]\n",
                   stderr);
        return 2;
    }
    return runSoak(options, QCoreApplication::applicationFilePath());
}
