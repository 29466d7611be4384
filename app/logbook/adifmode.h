#pragma once

#include <QString>

// A spot's mode as ADIF enumerates it: MODE and, where ADIF files the mode
// under a family, SUBMODE (FT4 is MFSK/FT4, PSK31 is PSK/PSK31, SSB carries
// USB or LSB). A mode ADIF does not know, DATA, DIGI or an empty one has no
// MODE; the writer then keeps the spot's text in COMMENT.
struct AdifMode
{
    QString mode;
    QString submode;

    bool isKnown() const { return !mode.isEmpty(); }

    // frequencyKhz picks the sideband of a plain "SSB": lower below 10 MHz
    // except on 60 m, where upper sideband is the rule.
    static AdifMode forSpotMode(const QString &spotMode, double frequencyKhz);

    // The report given when the operator gives none: "599" for CW and RTTY,
    // "59" for phone (SSB, AM, FM), "-10" for digital modes; empty when the
    // mode is not known at all.
    static QString defaultReport(const QString &spotMode);
};
