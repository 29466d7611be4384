#pragma once

class QUrl;

// The program's half of the soak: the real window on local services, in a
// process of its own so that its memory is its own, measuring itself. It
// speaks with the driver in lines, on standard output:
//   "start <kB>"                 resident memory once the window is built
//   "loaded <kB> <rows>"         once the table holds the expected rows
//   "rss <s> <kB> <rows> <visible>"  every second; s counts from the flood, -1 before
//   "lag <p50> <p99> <max> <n>"  drift of a 50 ms timer during the flood, ms
//   "end <kB> <rows> <visible>"  before the window closes
// and on standard input: "flood" (the flood starts now), "quit".
// With docks, the map and the band map are shown beside the table.
int runWindowSide(const QUrl &services, int expectedRows, bool docks);
