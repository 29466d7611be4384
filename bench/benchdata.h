#pragma once

#include "model/stationspot.h"

#include <QList>

class StationModel;

// N spots the model would hold: all sources, spread over the HF bands and
// three hours, some activators in two programmes and some references with
// several operators. Deterministic for a given n.
QList<StationSpot> realisticSpots(int n, qint64 nowMs);

// A model holding about n rows, merged source by source as the program would.
void fillModel(StationModel &model, int n, qint64 nowMs);
