#include "soakstats.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <unistd.h>

namespace SoakStats {

Summary summarize(QList<double> sample)
{
    Summary s;
    s.count = sample.size();
    if (sample.isEmpty())
        return s;
    std::sort(sample.begin(), sample.end());
    const auto rank = [&sample](double p) {
        const auto index = qsizetype(std::ceil(p * double(sample.size()))) - 1;
        return sample.at(std::clamp<qsizetype>(index, 0, sample.size() - 1));
    };
    s.p50 = rank(0.50);
    s.p99 = rank(0.99);
    s.max = sample.constLast();
    return s;
}

QString describe(const Summary &s, const char *unit)
{
    const QString u = QString::fromLatin1(unit);
    return QStringLiteral("p50 %1 %4, p99 %2 %4, max %3 %4 (n %5)")
        .arg(s.p50, 0, 'f', 1)
        .arg(s.p99, 0, 'f', 1)
        .arg(s.max, 0, 'f', 1)
        .arg(u)
        .arg(s.count);
}

qint64 residentKb()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    if (fields.size() < 2)
        return 0;
    return fields.at(1).toLongLong() * (sysconf(_SC_PAGESIZE) / 1024);
}

} // namespace SoakStats
