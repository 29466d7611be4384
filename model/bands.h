#pragma once

#include <QString>

#include <array>

// One amateur band; both edges are inclusive.
struct Band
{
    const char *name;
    double lowKhz;
    double highKhz;
};

// The bands the filter, the band buttons and the settings know, lowest first.
inline constexpr std::array<Band, 13> k_bands = {{
    {"160m", 1800.0, 2000.0},
    {"80m", 3500.0, 4000.0},
    {"60m", 5250.0, 5450.0},
    {"40m", 7000.0, 7300.0},
    {"30m", 10100.0, 10150.0},
    {"20m", 14000.0, 14350.0},
    {"17m", 18068.0, 18168.0},
    {"15m", 21000.0, 21450.0},
    {"12m", 24890.0, 24990.0},
    {"10m", 28000.0, 29700.0},
    {"6m", 50000.0, 54000.0},
    {"2m", 144000.0, 148000.0},
    {"70cm", 420000.0, 450000.0},
}};

// Index into k_bands of the band named name (exact text), or -1.
int bandIndex(QStringView name);

// Index of the first band holding the frequency, or -1 outside every band.
int bandIndexForFrequency(double khz);

// Name of the band holding the frequency, or an empty text.
QString bandForFrequency(double khz);
