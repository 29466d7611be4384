#include "model/spotcolours.h"

#include "model/bands.h"

namespace SpotColours {

namespace {

// Neighbouring bands far apart on the colour wheel.
constexpr QRgb k_bandColours[k_bands.size()] = {
    0xff8a5a44, 0xffd04848, 0xffc07030, 0xffe89a30, 0xffd8c840, 0xff60c850, 0xff40c8a0,
    0xff40a8e8, 0xff5070f0, 0xff9860e8, 0xffd058c8, 0xffe870a0, 0xffb0b0b0,
};

constexpr QRgb k_programmeColours[StationSpot::k_sourceCount] = {
    0xffe89a30, // SOTA
    0xff60c850, // POTA
    0xff40c8a0, // WWFF
    0xffd04848, // WWBOTA
    0xffd8c840, // BOTA
    0xff40a8e8, // DX
    0xff9860e8, // GMA
    0xff7890a8, // RBN
    0xff30b8c8, // ZLOTA
    0xffc89858, // SIOTA
};

} // namespace

QColor band(int bandIndex)
{
    if (bandIndex < 0 || bandIndex >= int(k_bands.size()))
        return QColor(128, 128, 128);
    return QColor::fromRgba(k_bandColours[bandIndex]);
}

QColor programme(int source)
{
    if (source < 0 || source >= StationSpot::k_sourceCount)
        return QColor(232, 224, 208);
    return QColor::fromRgba(k_programmeColours[source]);
}

Shade shade(StationSpot::Status status)
{
    switch (status) {
    case StationSpot::Heard:
        return Heard;
    case StationSpot::Contacted:
    case StationSpot::NotHeard:
        return Greyed;
    case StationSpot::Unknown:
        break;
    }
    return Active;
}

QColor status(StationSpot::Status status)
{
    // The table's foreground takes these too.
    switch (status) {
    case StationSpot::Contacted:
        return QColor(74, 139, 74);
    case StationSpot::NotHeard:
        return QColor(85, 85, 85);
    case StationSpot::Heard:
        return QColor(201, 168, 76);
    case StationSpot::Unknown:
        break;
    }
    return QColor(232, 224, 208);
}

QColor greyed(const QColor &colour)
{
    const QColor grey(85, 85, 85);
    return QColor((colour.red() + 3 * grey.red()) / 4, (colour.green() + 3 * grey.green()) / 4,
                  (colour.blue() + 3 * grey.blue()) / 4);
}

} // namespace SpotColours
