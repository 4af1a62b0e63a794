// Handles: allocation, disposal and resize shared by both zones, and the main zone's handle
// operations.
#include <string.h>

#include "memory/zone.h"
#include "mg/dbgtools.h"
#include "platform/platform.h"
#include "platform/smallblocks.h"

MG_SOURCE_IDENTITY("mgsource\\memory\\handles.cpp", "$Revision: 1 $");

namespace mgmem {
namespace {

// A block total the allocator can be asked for: it must hold at least the size word and fit
// the 32-bit sizes. Anything else fails as an allocation would.
inline bool TotalIsAllocatable(int64_t total) {
    return total >= static_cast<int64_t>(sizeof(int32_t)) && total <= INT32_MAX;
}

}  // namespace

Handle ZoneNewHandle(MemZone* zone, int32_t size, bool clear) {
    const int64_t total = static_cast<int64_t>(size) + zone->headerSize;
    uint8_t** master;
    uint8_t* block;
    for (;;) {
        master = TakeMasterPointer(zone);
        block = nullptr;
        if (master) {
            // A negative size cannot hold the header; it fails like an allocation.
            if (size >= 0 && total <= INT32_MAX) {
                block = static_cast<uint8_t*>(plat::MallocSized(static_cast<size_t>(total)));
            }
            AddBytesAllocated(total);
        }
        if (master && block) break;
        // A master pointer taken in a failed round stays out of the free list.
        if (!OutOfMemoryRetry(zone, size)) return nullptr;
    }
    *SizeWord(block) = size;
    *FlagsWord(block) = 0;
    if (zone->headerSize == kMainHeaderSize) *HandleWord(block) = master;
    *master = block + zone->headerSize;
    if (clear) memset(*master, 0, static_cast<size_t>(size));
    ++zone->handleAllocs;
    return master;
}

void ZoneDisposeHandle(MemZone* zone, Handle h) {
    uint8_t* block = BlockOf(zone, h);
    const int64_t total = static_cast<int64_t>(*SizeWord(block)) + zone->headerSize;
    AddBytesAllocated(-total);
    plat::FreeSized(block, static_cast<size_t>(total));
    ReleaseMasterPointer(zone, h);
}

MgStatus ZoneResize(MemZone* zone, Handle h, int32_t size, bool clear) {
    const Handle saved = zone->resizing;
    zone->resizing = h;
    MgStatus status = MgNoError;
    for (;;) {
        uint8_t* block = BlockOf(zone, h);
        const int32_t oldSize = *SizeWord(block);
        if (oldSize == size) break;
        const int64_t oldTotal = static_cast<int64_t>(oldSize) + zone->headerSize;
        const int64_t newTotal = static_cast<int64_t>(size) + zone->headerSize;
        uint8_t* moved = nullptr;
        if (TotalIsAllocatable(newTotal)) {
            moved = static_cast<uint8_t*>(plat::ReallocSized(block, static_cast<size_t>(oldTotal),
                                                             static_cast<size_t>(newTotal)));
        }
        if (moved != block) ++zone->moves;
        // Counted on failure too: the figure drifts by the change and is never corrected.
        AddBytesAllocated(newTotal - oldTotal);
        if (!moved) {
            if (OutOfMemoryRetry(zone, newTotal)) continue;
            status = MgNoMemory;
            break;
        }
        if (clear && newTotal > oldTotal) {
            memset(moved + oldTotal, 0, static_cast<size_t>(newTotal - oldTotal));
        }
        *h = moved + zone->headerSize;
        *SizeWord(moved) = size;
        break;
    }
    zone->resizing = saved;
    ++zone->resizes;
    return status;
}

}  // namespace mgmem

using namespace mgmem;

extern "C" {

Handle MemNewHandle(int32_t size) {
    Handle h = ZoneNewHandle(gMainZone, size, false);
    if (h) CheckNewBlock(h, *h);
    return h;
}
Handle MemNewHandleClear(int32_t size) {
    Handle h = ZoneNewHandle(gMainZone, size, true);
    if (h) CheckNewBlock(h, *h);
    return h;
}

MgStatus MemDisposeHandle(Handle h) {
    if (!h) return MgNoError;
    if (!HandleIsValid(gMainZone, h)) {
        MG_ERROR(MgBadHandle);
        return MgBadHandle;
    }
    ZoneDisposeHandle(gMainZone, h);
    return MgNoError;
}

int32_t MemHandleSize(Handle h) {
    if (!HandleIsValid(gMainZone, h)) {
        MG_ERROR(MgBadHandle);
        return -1;
    }
    return HandleSizeOf(gMainZone, h);
}

MgStatus MemResizeHandle(Handle h, int32_t size) {
    if (size < 0) return MgBadArgument;
    if (!HandleIsValid(gMainZone, h)) {
        MG_ERROR(MgBadHandle);
        return MgBadHandle;
    }
    return ZoneResize(gMainZone, h, size, false);
}

// Resizes first and clears afterwards; an unchanged size is no resize at all.
MgStatus MemResizeHandleClear(Handle h, int32_t size) {
    if (!HandleIsValid(gMainZone, h)) {
        MG_ERROR(MgBadHandle);
        return MgBadHandle;
    }
    const int32_t oldSize = HandleSizeOf(gMainZone, h);
    if (oldSize == size) return MgNoError;
    MgStatus status = MemResizeHandle(h, size);
    if (status == MgNoError && size > oldSize) {
        memset(*h + oldSize, 0, static_cast<size_t>(size - oldSize));
    }
    return status;
}

Handle MemRecoverHandle(Ptr p) {
    if (!p) {
        MG_FAIL();
        return nullptr;
    }
    Handle h = *HandleWord(p - kMainHeaderSize);
    if (!HandleIsValid(gMainZone, h) || *h != p) {
        MG_FAIL();
        return nullptr;
    }
    return h;
}

MgStatus MemLockHandle(Handle h) {
    if (!HandleIsValid(gMainZone, h)) return MgBadHandle;
    *FlagsWord(BlockOf(gMainZone, h)) |= 1;
    return MgNoError;
}

MgStatus MemUnlockHandle(Handle h) {
    if (!HandleIsValid(gMainZone, h)) return MgBadHandle;
    *FlagsWord(BlockOf(gMainZone, h)) &= ~1;
    return MgNoError;
}

int32_t MemHandleFlags(Handle h) {
    if (!HandleIsValid(gMainZone, h)) {
        MG_ERROR(MgBadHandle);
        return 0;
    }
    return *FlagsWord(BlockOf(gMainZone, h));
}

void MemSetHandleFlags(Handle h, int32_t flags) {
    if (!HandleIsValid(gMainZone, h)) {
        MG_ERROR(MgBadHandle);
        return;
    }
    *FlagsWord(BlockOf(gMainZone, h)) = flags;
}

int32_t MemIsHandle(Handle h) {
    if (HandleIsValid(gMainZone, h)) return 1;
    MG_ERROR(MgBadHandle);
    return 0;
}

MgStatus MemCheckHandle(Handle h) {
    return HandleIsValid(gMainZone, h) ? MgNoError : MgBadHandle;
}

}  // extern "C"
