// One symbol library for the process. A change of mode frees the object and loads again; what
// the platform loaded stays loaded to the end of the process.
#include "stackwalk/symbolcache.h"

#include <stdlib.h>

namespace {

struct SymbolLibraryCache {
    int32_t mode;
    plat::SymbolLibrary* library;
};

SymbolLibraryCache gSymbolCache = {0, nullptr};
bool gExitHandlerSet = false;

void FreeCachedLibrary() {
    plat::FreeSymbolLibrary(gSymbolCache.library);
    gSymbolCache.library = nullptr;
}

}  // namespace

plat::SymbolLibrary* CachedSymbolLibrary(int32_t mode) {
    if (mode != gSymbolCache.mode || gSymbolCache.library == nullptr) {
        FreeCachedLibrary();
        gSymbolCache.library = plat::LoadSymbolLibrary(mode);
        gSymbolCache.mode = mode;
        if (!gExitHandlerSet) {
            gExitHandlerSet = true;
            atexit(FreeCachedLibrary);
        }
    }
    return gSymbolCache.library;
}
