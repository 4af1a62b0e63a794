// The compact (application) zone: 8-byte headers, no flags, no way back from bytes to handle.
#include "memory/zone.h"
#include "mg/dbgtools.h"

MG_SOURCE_IDENTITY("mgsource\\memory\\compact.cpp", "$Revision: 1 $");

using namespace mgmem;

extern "C" {

Handle CompactNewHandle(int32_t size) {
    return ZoneNewHandle(gCompactZone, size, false);
}
Handle CompactNewHandleClear(int32_t size) {
    return ZoneNewHandle(gCompactZone, size, true);
}

MgStatus CompactDisposeHandle(Handle h) {
    if (!h) return MgNoError;
    if (!HandleIsValid(gCompactZone, h)) {
        MG_ERROR(MgBadHandle);
        return MgBadHandle;
    }
    ZoneDisposeHandle(gCompactZone, h);
    return MgNoError;
}

// Unlike the main zone, an invalid handle answers 3 here.
int32_t CompactHandleSize(Handle h) {
    if (!HandleIsValid(gCompactZone, h)) {
        MG_ERROR(MgBadHandle);
        return MgBadHandle;
    }
    return HandleSizeOf(gCompactZone, h);
}

// No test of the size's sign: the shared resize takes whatever it is given.
MgStatus CompactResizeHandle(Handle h, int32_t size) {
    if (!HandleIsValid(gCompactZone, h)) {
        MG_ERROR(MgBadHandle);
        return MgBadHandle;
    }
    return ZoneResize(gCompactZone, h, size, false);
}

// Clears inside the shared resize, so an unchanged size still counts as a resize.
MgStatus CompactResizeHandleClear(Handle h, int32_t size) {
    if (!HandleIsValid(gCompactZone, h)) {
        MG_ERROR(MgBadHandle);
        return MgBadHandle;
    }
    return ZoneResize(gCompactZone, h, size, true);
}

MgStatus CompactCheckHandle(Handle h) {
    return HandleIsValid(gCompactZone, h) ? MgNoError : MgBadHandle;
}

// The compact header has no handle word, so there is nothing to recover from.
Handle CompactRecoverHandle(Ptr) {
    MG_FAIL();
    return nullptr;
}

MgStatus CompactEnsureHandle(Handle* h, int32_t size) {
    if (!*h) {
        *h = CompactNewHandle(size);
        return *h ? MgNoError : MgNoMemory;
    }
    return CompactResizeHandle(*h, size);
}

MgStatus CompactEnsureHandleClear(Handle* h, int32_t size) {
    if (!*h) {
        *h = CompactNewHandleClear(size);
        return *h ? MgNoError : MgNoMemory;
    }
    return CompactResizeHandleClear(*h, size);
}

}  // extern "C"
