#include "app/logbook/adifmode.h"

#include "model/bands.h"

#include <array>

namespace {

struct ModeRow
{
    const char *spot; // upper-cased, as spots and rigs name it
    const char *mode;
    const char *submode;
};

// Modes the spot sources report, as ADIF 3.1.4 files them. SSB is handled
// apart: its submode depends on the frequency.
constexpr std::array<ModeRow, 48> k_modes = {{
    {"CW", "CW", ""},
    {"CWR", "CW", ""},
    {"CW-R", "CW", ""},
    {"AM", "AM", ""},
    {"FM", "FM", ""},
    {"NFM", "FM", ""},
    {"WFM", "FM", ""},
    {"RTTY", "RTTY", ""},
    {"RTTYR", "RTTY", ""},
    {"FT8", "FT8", ""},
    {"FT4", "MFSK", "FT4"},
    {"FST4", "MFSK", "FST4"},
    {"FST4W", "MFSK", "FST4W"},
    {"JS8", "MFSK", "JS8"},
    {"Q65", "MFSK", "Q65"},
    {"JT65", "JT65", ""},
    {"JT9", "JT9", ""},
    {"JT4", "JT4", ""},
    {"WSPR", "WSPR", ""},
    {"MSK144", "MSK144", ""},
    {"FSK441", "FSK441", ""},
    {"ISCAT", "ISCAT", ""},
    {"PSK", "PSK", ""},
    {"PSK31", "PSK", "PSK31"},
    {"BPSK31", "PSK", "PSK31"},
    {"PSK63", "PSK", "PSK63"},
    {"BPSK63", "PSK", "PSK63"},
    {"PSK125", "PSK", "PSK125"},
    {"QPSK31", "PSK", "QPSK31"},
    {"QPSK63", "PSK", "QPSK63"},
    {"OLIVIA", "OLIVIA", ""},
    {"CONTESTIA", "CONTESTI", ""},
    {"MT63", "MT63", ""},
    {"HELL", "HELL", ""},
    {"FELDHELL", "HELL", "FMHELL"},
    {"DOMINO", "DOMINO", ""},
    {"THOR", "THOR", ""},
    {"MFSK", "MFSK", ""},
    {"MFSK16", "MFSK", "MFSK16"},
    {"SSTV", "SSTV", ""},
    {"PACKET", "PKT", ""},
    {"PKT", "PKT", ""},
    {"ATV", "ATV", ""},
    {"DSTAR", "DSTAR", ""},
    {"C4FM", "DIGITALVOICE", "C4FM"},
    {"DMR", "DIGITALVOICE", "DMR"},
    {"FREEDV", "DIGITALVOICE", "FREEDV"},
    {"VARA", "DYNAMIC", "VARA HF"},
}};

const ModeRow *rowFor(const QString &upper)
{
    for (const ModeRow &row : k_modes) {
        if (upper == QLatin1String(row.spot))
            return &row;
    }
    return nullptr;
}

bool isPhone(const QString &upper)
{
    return upper == QLatin1String("SSB") || upper == QLatin1String("USB") || upper == QLatin1String("LSB");
}

} // namespace

AdifMode AdifMode::forSpotMode(const QString &spotMode, double frequencyKhz)
{
    const QString upper = spotMode.trimmed().toUpper();
    if (upper == QLatin1String("USB") || upper == QLatin1String("LSB"))
        return {QStringLiteral("SSB"), upper};
    if (upper == QLatin1String("SSB")) {
        const bool lower = frequencyKhz < 10000.0 && bandForFrequency(frequencyKhz) != QLatin1String("60m");
        return {QStringLiteral("SSB"), lower ? QStringLiteral("LSB") : QStringLiteral("USB")};
    }
    if (const ModeRow *row = rowFor(upper))
        return {QString::fromLatin1(row->mode), QString::fromLatin1(row->submode)};
    return {};
}

QString AdifMode::defaultReport(const QString &spotMode)
{
    const QString upper = spotMode.trimmed().toUpper();
    if (upper.isEmpty())
        return QString();
    const AdifMode adif = forSpotMode(upper, 0.0);
    if (adif.mode == QLatin1String("CW") || adif.mode == QLatin1String("RTTY"))
        return QStringLiteral("599");
    if (isPhone(upper) || adif.mode == QLatin1String("AM") || adif.mode == QLatin1String("FM"))
        return QStringLiteral("59");
    return QStringLiteral("-10");
}
