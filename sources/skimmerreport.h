#pragma once

#include <QDateTime>
#include <QString>

// One skimmer's hearing of a station, as the Reverse Beacon Network prints it
// and cluster nodes relay it:
//   DX de KM3T-2-#:  14100.0  CS3B   CW   24 dB  22 WPM  CQ   2259Z
// Columns are not fixed, so the line is split on blanks and read from both
// ends. Beacons (BEACON, "NCDXF B") are not stations to hunt and give nothing.
struct SkimmerReport
{
    // Skimmers listen from 160 m up; anything past 10 GHz is a garbled line.
    static constexpr double k_maxFrequencyKhz = 1.0e7;

    QString skimmer; // "KM3T-2-#"
    QString callsign;
    double frequencyKhz = 0.0;
    QString mode; // CW, RTTY, FT8, FT4 ...
    int snrDb = 0;
    int speed = 0; // WPM or BPS; 0 when the line has none (FT8, FT4)
    QDateTime time;

    bool isValid() const { return !callsign.isEmpty(); }

    // Whether the line is a skimmer's (its spotter ends in "-#"); cheap, so a
    // cluster can ask of every "DX de" line.
    static bool isSkimmerLine(QStringView line);
    // An invalid report for anything else, and for beacons.
    static SkimmerReport parse(QStringView line, const QDateTime &nowUtc);
};
