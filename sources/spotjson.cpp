#include "sources/spotjson.h"
