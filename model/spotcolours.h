#pragma once

#include "model/stationspot.h"

#include <QColor>

// Colours the map and the band map give spots: one per band, one per
// programme, and the table's status colours for the shading of marked spots.
namespace SpotColours {

// Index into k_bands; outside the table a neutral grey.
QColor band(int bandIndex);
// By StationSpot::Source; outside 0..6 the table's text colour.
QColor programme(int source);

// How a marked spot is shown: as found, marked heard, or greyed (contacted or not heard).
enum Shade : int { Active = 0, Heard = 1, Greyed = 2 };
Shade shade(StationSpot::Status status);
// The table's text colour of a status: amber heard, green contacted, grey not heard.
QColor status(StationSpot::Status status);
// A colour as a greyed spot shows it.
QColor greyed(const QColor &colour);

} // namespace SpotColours
