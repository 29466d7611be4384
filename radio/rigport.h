#pragma once

#include "radio/rigtypes.h"

#include <hamlib/rig.h>

// Writes the stored connection settings (port path, serial line, PTT) into a
// freshly initialised Hamlib rig, before it is opened.
void configureRigPorts(RIG *rig, const RigConfig &config);
