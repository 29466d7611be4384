#pragma once

#include <QList>
#include <QString>

// Figures the soak reports: percentiles of a sample and the resident memory
// of this process.
namespace SoakStats {

struct Summary
{
    qsizetype count = 0;
    double p50 = 0.0;
    double p99 = 0.0;
    double max = 0.0;
};

// Nearest-rank percentiles; all zero for an empty sample.
Summary summarize(QList<double> sample);
// "p50 1.2 ms, p99 8.0 ms, max 31.0 ms (n 1200)"
QString describe(const Summary &s, const char *unit);

// Resident set of this process in kB, from /proc/self/statm; 0 where there is none.
qint64 residentKb();

} // namespace SoakStats
