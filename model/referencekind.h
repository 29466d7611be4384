#pragma once

#include "model/stationspot.h"

#include <QString>

// What kind of place a reference names, where the programme's references say
// so themselves.
namespace ReferenceKind {

// A ZLOTA reference's third character: "ZLP/WK-0503" is a park. Empty for an
// unknown letter and for every other source.
QString of(const StationSpot &spot);

} // namespace ReferenceKind
