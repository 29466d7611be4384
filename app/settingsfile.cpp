#include "app/settingsfile.h"
