#include "sources/dxcc.h"
