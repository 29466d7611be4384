#pragma once

#include <QString>

// One soak run: the window (a child process running runWindowSide) on local
// web services holding webSpots spots and a local cluster node sending
// linesPerSecond "DX de" lines that cycle through dxCalls call signs (and,
// when asked, two skimmer feeds), while
// apiClients API clients ask for the status, mark spots and log them.
struct SoakOptions
{
    int webSpots = 5000;
    int dxCalls = 500;
    int seconds = 60;
    int linesPerSecond = 200;
    int apiClients = 8;
    // The window shows the map and the band map beside the table.
    bool docks = false;
    // Skimmer lines a second from two local RBN stand-ins (CW and FT8 ports,
    // 70/30), cycling through rbnCalls stations each heard by up to 40
    // skimmers; 0: no RBN. The window shows every station ("all").
    int rbnLinesPerSecond = 0;
    int rbnCalls = 3000;
    // How many of the API clients take "spots.changed" deltas instead of
    // whole tables (the first ones).
    int deltaClients = 0;
};

// Prints the figures; 0 when every reply came and every mark and log line
// reached its file, 1 otherwise, 2 when the run could not be set up.
int runSoak(const SoakOptions &options, const QString &selfPath);
