// Self-checks of the zones, off unless switched on.
#include "memory/zone.h"
#include "mg/dbgtools.h"

MG_SOURCE_IDENTITY("mgsource\\memory\\checks.cpp", "$Revision: 1 $");

// What a damaged chain of master blocks gives, when the failure report returns at all.
constexpr MgStatus kZoneDamaged = 74;

int32_t gMemChecking = 0;
int32_t gMemStatsBusy = 0;

namespace mgmem {

// A new block must be 4-aligned, and the zone must still be sound; a check that allocates
// does not start another.
void CheckNewBlockChecked(const void* handle, const void* block) {
    if (!gMemChecking || (!handle && !block)) return;
    if ((reinterpret_cast<uintptr_t>(handle) | reinterpret_cast<uintptr_t>(block)) & 3) MG_FAIL();
    if (gMemStatsBusy) return;
    gMemStatsBusy = 1;
    ZoneStatistics(gMainZone, 0, nullptr);
    gMemStatsBusy = 0;
}

}  // namespace mgmem

extern "C" {

// Walks as many links as the zone counts; a longer list is a fault. A shorter one stops at
// its end unnoticed.
MgStatus MemCheckFreeList(MemZone* zone) {
    if (!gMemChecking) return MgNoError;
    if (zone->freeMasterCount < 0) MG_FAIL();
    uint8_t** link = zone->freeMasters;
    for (int32_t i = 0; i < zone->freeMasterCount && link; ++i) {
        link = reinterpret_cast<uint8_t**>(reinterpret_cast<uintptr_t>(*link) & ~uintptr_t{1});
    }
    if (link) MG_FAIL();
    return MgNoError;
}

void MemToggleChecking(void) {
    DPrintf("turning memory checking %s", gMemChecking ? "off" : "on");
    gMemChecking = !gMemChecking;
}

// The blocks come from the runtime's allocator, so the zones know only the total in use.
MgStatus ZoneStatistics(MemZone* zone, int32_t print, MemStatsRecord* out) {
    MgStatus status = MemCheckFreeList(zone);
    if (status != MgNoError) return status;
    int32_t count = 0;
    for (const mgmem::MasterBlock* b = zone->masterBlocks; b; b = b->next) {
        if (++count > zone->masterBlockCount) {
            MG_FAIL();
            return kZoneDamaged;
        }
    }
    if (count < zone->masterBlockCount) {
        MG_FAIL();
        return kZoneDamaged;
    }
    if (!out) return MgNoError;
    *out = MemStatsRecord{};
    out->allocTotal = gBytesAllocated;
    if (print) {
        DPrintf("Free: totSize %ld, maxSize %ld, nBlocks %ld", out->freeTotal, out->freeMax,
                out->freeBlocks);
        DPrintf("Allocated: totSize %ld, maxSize %ld", out->allocTotal, out->allocMax);
        DPrintf("    nPointers %ld, nUnlockedHdls %ld, nLockedHdls %ld", out->pointers,
                out->unlockedHandles, out->lockedHandles);
    }
    return MgNoError;
}

// The compact zone's check ends with a small allocation, to give the runtime's allocator a
// chance to notice damage.
void MemCheckAll(void) {
    MemStatsRecord record;
    MemToggleChecking();
    ZoneStatistics(gMainZone, 1, &record);
    ZoneStatistics(gCompactZone, 1, &record);
    MemDisposePtr(MemNewPtr(2));
    MemToggleChecking();
}

}  // extern "C"
