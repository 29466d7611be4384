#include "sources/skimmerreport.h"

#include "sources/dxclusterfetcher.h"

#include <QList>

namespace {

// "dB" and, when present, the speed's unit sit at fixed places after the SNR.
constexpr qsizetype k_firstFields = 8; // DX de <skimmer>: <kHz> <call> <mode> <snr> dB

bool isUnit(QStringView word)
{
    return word.compare(u"WPM", Qt::CaseInsensitive) == 0 || word.compare(u"BPS", Qt::CaseInsensitive) == 0;
}

} // namespace

bool SkimmerReport::isSkimmerLine(QStringView line)
{
    line = line.trimmed();
    if (!line.startsWith(u"DX de ", Qt::CaseInsensitive))
        return false;
    const qsizetype colon = line.indexOf(u':');
    return colon > 2 && line.mid(6, colon - 6).trimmed().endsWith(u"-#");
}

SkimmerReport SkimmerReport::parse(QStringView line, const QDateTime &nowUtc)
{
    if (!isSkimmerLine(line))
        return {};
    const QList<QStringView> words = line.trimmed().split(u' ', Qt::SkipEmptyParts);
    if (words.size() < k_firstFields + 2 || words.at(7).compare(u"dB", Qt::CaseInsensitive) != 0)
        return {};
    qsizetype typeFirst = k_firstFields;
    int speed = 0;
    if (words.size() >= k_firstFields + 4 && isUnit(words.at(k_firstFields + 1))) {
        speed = words.at(k_firstFields).toInt();
        typeFirst += 2;
    }
    // What remains between the speed and the time is the type: CQ, DX, BEACON or "NCDXF B".
    const QStringView type = words.at(typeFirst);
    if (type.compare(u"BEACON", Qt::CaseInsensitive) == 0 || type.compare(u"NCDXF", Qt::CaseInsensitive) == 0)
        return {};
    QStringView stamp = words.constLast();
    if (stamp.endsWith(u'Z', Qt::CaseInsensitive))
        stamp.chop(1);
    bool frequencyOk = false;
    bool snrOk = false;
    bool stampOk = false;
    SkimmerReport report;
    report.frequencyKhz = words.at(3).toDouble(&frequencyOk);
    report.snrDb = words.at(6).toInt(&snrOk);
    const int hhmm = stamp.size() == 4 ? stamp.toInt(&stampOk) : -1;
    if (!frequencyOk || !snrOk || !stampOk || !(report.frequencyKhz > 0.0) ||
        report.frequencyKhz > k_maxFrequencyKhz)
        return {};
    report.time = DxClusterFetcher::spotTimeUtc(hhmm, nowUtc);
    if (!report.time.isValid())
        return {};
    QStringView skimmer = words.at(2);
    skimmer.chop(1); // the colon
    report.skimmer = skimmer.toString().toUpper();
    report.callsign = words.at(4).toString().toUpper();
    report.mode = words.at(5).toString().toUpper();
    report.speed = speed;
    return report;
}
