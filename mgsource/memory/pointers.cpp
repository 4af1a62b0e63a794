// Plain pointers: blocks straight from the allocator, with no header and no zone of their own.
// They are counted in the main zone and use its grow callback.
#include <string.h>

#include "memory/zone.h"
#include "mg/dbgtools.h"
#include "platform/platform.h"

MG_SOURCE_IDENTITY("mgsource\\memory\\pointers.cpp", "$Revision: 1 $");

using namespace mgmem;

namespace {

Ptr NewPtr(int32_t size, bool clear) {
    if (size < 1) size = 1;
    Ptr p;
    while (!(p = static_cast<Ptr>(plat::Malloc(static_cast<size_t>(size))))) {
        if (!OutOfMemoryRetry(gMainZone, size)) return nullptr;
    }
    if (clear) memset(p, 0, static_cast<size_t>(size));
    ++gMainZone->ptrAllocs;
    return p;
}

}  // namespace

extern "C" {

Ptr MemNewPtr(int32_t size) {
    Ptr p = NewPtr(size, false);
    CheckNewBlock(p, p);
    return p;
}
Ptr MemNewPtrClear(int32_t size) {
    Ptr p = NewPtr(size, true);
    CheckNewBlock(p, p);
    return p;
}

MgStatus MemDisposePtr(Ptr p) {
    if (!p) return MgBadArgument;
    plat::Free(p);
    return MgNoError;
}

MgStatus MemCheckPtr(Ptr p) {
    return p ? MgNoError : MgBadHandle;
}

}  // extern "C"
