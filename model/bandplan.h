#pragma once

#include <QList>
#include <QStringView>

// The IARU band plans, simplified to where each band keeps its CW, its
// digital modes and its phone: enough to shade a band map, not a legal text.
class BandPlan final
{
public:
    enum Kind : int { Cw = 0, Digital = 1, Phone = 2 };

    struct Segment
    {
        double lowKhz;
        double highKhz;
        Kind kind;
    };

    static constexpr int k_defaultRegion = 2;

    // The segments of a band (index into k_bands) in a region (1, 2 or 3),
    // lowest first; empty for an unknown band or region.
    static QList<Segment> segments(int region, int bandIndex);
    // The kind of the segment holding the frequency; false outside every segment.
    static bool kindAt(int region, double khz, Kind &kind);
    // Region of a continent code (EU, AF, AS, NA, SA, OC, AN); region 2 for
    // anything else, the empty code included.
    static int regionForContinent(QStringView continent);
    // A region outside 1 to 3 becomes the default.
    static int validRegion(int region);
};
