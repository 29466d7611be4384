#include "model/bandplan.h"

#include "model/bands.h"

namespace {

struct Row
{
    int region; // 0: every region
    int band;   // index into k_bands
    double lowKhz;
    double highKhz;
    BandPlan::Kind kind;
};

constexpr BandPlan::Kind C = BandPlan::Cw;
constexpr BandPlan::Kind D = BandPlan::Digital;
constexpr BandPlan::Kind P = BandPlan::Phone;

// Band indices: 0 160m, 1 80m, 2 60m, 3 40m, 4 30m, 5 20m, 6 17m, 7 15m,
// 8 12m, 9 10m, 10 6m, 11 2m, 12 70cm.
constexpr Row k_rows[] = {
    {1, 0, 1810, 1838, C},      {1, 0, 1838, 1843, D},      {1, 0, 1843, 2000, P},
    {2, 0, 1800, 1840, C},      {2, 0, 1840, 1850, D},      {2, 0, 1850, 2000, P},
    {3, 0, 1800, 1830, C},      {3, 0, 1830, 1834, D},      {3, 0, 1834, 2000, P},
    {1, 1, 3500, 3570, C},      {1, 1, 3570, 3600, D},      {1, 1, 3600, 3800, P},
    {2, 1, 3500, 3570, C},      {2, 1, 3570, 3600, D},      {2, 1, 3600, 4000, P},
    {3, 1, 3500, 3535, C},      {3, 1, 3570, 3600, D},      {3, 1, 3600, 3900, P},
    {0, 2, 5351.5, 5354, C},    {0, 2, 5354, 5366, P},      {0, 2, 5366, 5366.5, D},
    {1, 3, 7000, 7040, C},      {1, 3, 7040, 7060, D},      {1, 3, 7060, 7200, P},
    {2, 3, 7000, 7040, C},      {2, 3, 7040, 7053, D},      {2, 3, 7053, 7300, P},
    {3, 3, 7000, 7040, C},      {3, 3, 7040, 7060, D},      {3, 3, 7060, 7300, P},
    {0, 4, 10100, 10130, C},    {0, 4, 10130, 10150, D},    {0, 5, 14000, 14070, C},
    {0, 5, 14070, 14112, D},    {0, 5, 14112, 14350, P},    {1, 6, 18068, 18095, C},
    {1, 6, 18095, 18120, D},    {1, 6, 18120, 18168, P},    {2, 6, 18068, 18095, C},
    {2, 6, 18095, 18110, D},    {2, 6, 18110, 18168, P},    {3, 6, 18068, 18095, C},
    {3, 6, 18095, 18110, D},    {3, 6, 18110, 18168, P},    {0, 7, 21000, 21070, C},
    {0, 7, 21070, 21150, D},    {0, 7, 21150, 21450, P},    {0, 8, 24890, 24915, C},
    {0, 8, 24915, 24940, D},    {0, 8, 24940, 24990, P},    {0, 9, 28000, 28070, C},
    {0, 9, 28070, 28300, D},    {0, 9, 28300, 29700, P},    {0, 10, 50000, 50100, C},
    {0, 10, 50100, 50300, P},   {0, 10, 50300, 50400, D},   {0, 10, 50400, 54000, P},
    {0, 11, 144000, 144150, C}, {0, 11, 144150, 144400, P}, {0, 12, 432000, 432100, C},
    {0, 12, 432100, 432400, P},
};

} // namespace

int BandPlan::validRegion(int region)
{
    return region >= 1 && region <= 3 ? region : k_defaultRegion;
}

QList<BandPlan::Segment> BandPlan::segments(int region, int bandIndex)
{
    QList<Segment> out;
    if (region < 1 || region > 3)
        return out;
    for (const Row &row : k_rows) {
        if (row.band == bandIndex && (row.region == 0 || row.region == region))
            out.append(Segment{row.lowKhz, row.highKhz, row.kind});
    }
    return out;
}

bool BandPlan::kindAt(int region, double khz, Kind &kind)
{
    for (const Segment &s : segments(region, bandIndexForFrequency(khz))) {
        if (khz >= s.lowKhz && khz < s.highKhz) {
            kind = s.kind;
            return true;
        }
    }
    return false;
}

int BandPlan::regionForContinent(QStringView continent)
{
    const QString code = continent.trimmed().toString().toUpper();
    if (code == QLatin1String("EU") || code == QLatin1String("AF"))
        return 1;
    if (code == QLatin1String("AS") || code == QLatin1String("OC"))
        return 3;
    return k_defaultRegion;
}
