#pragma once

#include <QString>

// Times the real program from process start to the API's "hello", runs
// times, each with a fresh home holding only a settings file, and prints
// each time and the median. Returns 0, or 2 when a run never greeted.
int runStartupTiming(const QString &tallisPath, int runs);
