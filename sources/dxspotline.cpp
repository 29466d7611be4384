// The socket-free half of DxClusterFetcher: the grammar of a "DX de" line,
// the mode named in its comment and the day its time stamp falls on.
#include "sources/dxclusterfetcher.h"

#include "sources/dxcc.h"

#include <QRegularExpression>

#include <array>

namespace {

const QChar k_escape(0x1b);

struct ModeCheck
{
    const char *word;
    const char *mode;
};

// Searched in this order, first hit wins: FT8 beats CW in "FT8 CW", PSK31 beats PSK.
constexpr ModeCheck k_modeChecks[] = {
    {"FT8", "FT8"},   {"FT4", "FT4"},   {"RTTY", "RTTY"}, {"PSK31", "PSK31"}, {"PSK", "PSK"},
    {"DIGI", "DIGI"}, {"DATA", "DATA"}, {"USB", "USB"},   {"LSB", "LSB"},     {"SSB", "SSB"},
    {"CW", "CW"},     {"AM", "AM"},     {"FM", "FM"},
};
constexpr std::size_t k_modeCount = sizeof(k_modeChecks) / sizeof(k_modeChecks[0]);

const std::array<QRegularExpression, k_modeCount> &modeExpressions()
{
    static const std::array<QRegularExpression, k_modeCount> expressions = [] {
        std::array<QRegularExpression, k_modeCount> built;
        for (std::size_t i = 0; i < k_modeCount; ++i) {
            built[i] =
                QRegularExpression(QStringLiteral("\\b(%1)\\b").arg(QLatin1String(k_modeChecks[i].word)),
                                   QRegularExpression::CaseInsensitiveOption);
            built[i].optimize();
        }
        return built;
    }();
    return expressions;
}

const QRegularExpression &spotLineExpression()
{
    static const QRegularExpression expression = [] {
        QRegularExpression re(
            QStringLiteral(
                "^DX de ([A-Z0-9/]+):\\s+(\\d+(?:\\.\\d+)?)\\s+([A-Z0-9/]+)\\s*(.*?)\\s+(\\d{4})Z?\\s*$"),
            QRegularExpression::CaseInsensitiveOption);
        re.optimize();
        return re;
    }();
    return expression;
}

} // namespace

QString DxClusterFetcher::stripAnsi(const QString &text)
{
    if (!text.contains(k_escape))
        return text;
    static const QRegularExpression ansi(QStringLiteral("\\x1b\\[[0-9;]*[mK]"));
    QString stripped = text;
    stripped.remove(ansi);
    return stripped;
}

QString DxClusterFetcher::extractMode(const QString &comment)
{
    const auto &expressions = modeExpressions();
    for (std::size_t i = 0; i < k_modeCount; ++i) {
        if (expressions[i].match(comment).hasMatch())
            return QString::fromLatin1(k_modeChecks[i].mode);
    }
    return {};
}

QDateTime DxClusterFetcher::spotTimeUtc(int hhmm, const QDateTime &nowUtc)
{
    if (hhmm < 0)
        return {};
    const QTime clock(hhmm / 100, hhmm % 100);
    if (!clock.isValid())
        return {};
    const QDateTime now = nowUtc.toUTC();
    QDateTime stamp(now.date(), clock, Qt::UTC);
    // A spot stamped 2359 and received at 0001 belongs to yesterday.
    if (now.secsTo(stamp) > 43200)
        stamp = stamp.addDays(-1);
    return stamp;
}

StationSpot DxClusterFetcher::parseDxLine(const QString &line)
{
    return parseDxLine(line, QDateTime::currentDateTimeUtc());
}

StationSpot DxClusterFetcher::parseDxLine(const QString &line, const QDateTime &nowUtc)
{
    const QRegularExpressionMatch match = spotLineExpression().match(line.trimmed());
    if (!match.hasMatch())
        return {};

    bool numberOk = false;
    const double frequencyKhz = match.capturedView(2).toDouble(&numberOk);
    const QString dxCall = match.captured(3).toUpper();
    if (!numberOk || !(frequencyKhz > 0) || dxCall.isEmpty())
        return {};

    StationSpot spot;
    spot.source = StationSpot::DX;
    spot.callsign = dxCall;
    spot.referenceName = dxEntityForCallsign(dxCall);
    spot.frequencyKhz = frequencyKhz;
    spot.spotter = match.captured(1).toUpper();
    spot.comments = match.captured(4).trimmed();
    spot.mode = extractMode(spot.comments);
    spot.spotTime = spotTimeUtc(match.capturedView(5).toInt(), nowUtc);
    return spot;
}
