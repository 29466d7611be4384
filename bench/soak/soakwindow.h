#pragma once

#include <QtGlobal>

#include <array>

class QUrl;

struct WindowSideOptions
{
    // The map and the band map shown beside the table.
    bool docks = false;
    // The RBN stand-ins' CW and digital ports on 127.0.0.1; zeros: none.
    std::array<quint16, 2> rbnPorts{};
};

// The program's half of the soak: the real window on local services, in a
// process of its own so that its memory is its own, measuring itself. It
// speaks with the driver in lines, on standard output:
//   "start <kB>"                 resident memory once the window is built
//   "loaded <kB> <rows>"         once the table holds the expected rows
//   "rss <s> <kB> <rows> <visible>"  every second; s counts from the flood, -1 before
//   "lag <p50> <p99> <max> <n>"  drift of a 50 ms timer during the flood, ms
//   "cpu <seconds> <wall seconds>"  processor time (all threads) from flood to stop
//   "end <kB> <rows> <visible>"  before the window closes
// and on standard input: "flood" (the flood starts now), "stop" (it ended), "quit".
int runWindowSide(const QUrl &services, int expectedRows, const WindowSideOptions &options);
