#include "sources/dxclusterfetcher.h"
