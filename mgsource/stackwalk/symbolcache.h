// The process-wide symbol library, loaded for the last mode asked for.
#pragma once

#include <stdint.h>

#include "platform/platform.h"

// Loads anew when `mode` differs from the cached one; null when nothing could be loaded.
plat::SymbolLibrary* CachedSymbolLibrary(int32_t mode);
