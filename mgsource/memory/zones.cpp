// The two zones: their records, start-up, the chain walk of the validity test, counters.
#include <string.h>

#include "memory/zone.h"
#include "mg/dbgtools.h"
#include "mg/host.h"
#include "platform/platform.h"

MG_SOURCE_IDENTITY("mgsource\\memory\\zones.cpp", "$Revision: 1 $");

MemZone* gMainZone = nullptr;
MemZone* gCompactZone = nullptr;
int32_t gBytesAllocated = 0;

namespace mgmem {

uint32_t gRecentTurn = 0;
int32_t gMemStarted = 0;

MasterBlock* WalkMasterBlocks(MemZone* zone, uintptr_t address) {
    for (MasterBlock* b = zone->masterBlocks; b; b = b->next) {
        uintptr_t base = reinterpret_cast<uintptr_t>(b);
        if (address > base && address - base <= kMasterSpan) {
            zone->recentBlock[gRecentTurn & 1] = b;
            ++gRecentTurn;
            return b;
        }
    }
    return nullptr;
}

namespace {

void InitZone(MemZone* zone, int32_t headerSize, int32_t tokenZone) {
    memset(zone, 0, sizeof *zone);
    zone->headerSize = headerSize;
    zone->tokenZone = tokenZone;
}

void ReadCounters(const MemZone* zone, MemZoneCounterSet* out) {
    if (!out) return;
    out->handleAllocs = zone->handleAllocs;
    out->ptrAllocs = zone->ptrAllocs;
    out->resizes = zone->resizes;
    out->moves = zone->moves;
}

void WriteCounters(MemZone* zone, const MemZoneCounterSet* in) {
    if (!in) return;
    zone->handleAllocs = in->handleAllocs;
    zone->ptrAllocs = in->ptrAllocs;
    zone->resizes = in->resizes;
    zone->moves = in->moves;
}

}  // namespace
}  // namespace mgmem

using namespace mgmem;

extern "C" {

// A zone record that cannot be had ends the start with 2 rather than a crash, so that the
// caller can say "not enough memory"; nothing else in start-up is optional.
MgStatus InitMemoryManager(void) {
    gMainZone = static_cast<MemZone*>(plat::Malloc(sizeof(MemZone)));
    gCompactZone = static_cast<MemZone*>(plat::Malloc(sizeof(MemZone)));
    if (gMainZone == nullptr || gCompactZone == nullptr) return MgNoMemory;
    gMemChecking = 0;
    InitZone(gMainZone, kMainHeaderSize, 0);
    for (int i = 0; i < 3; ++i) MemGrowMasterPointers(gMainZone);
    InitZone(gCompactZone, kCompactHeaderSize, 1);
    MemGrowMasterPointers(gCompactZone);
    gMemStarted = 1;
    HostStartup();
    HostStartup2();
    return MgNoError;
}

void MemSetGrowCallback(MemGrowCallback f) {
    gMainZone->growCallback = f;
}

void MemZoneCounters(MemZoneCounterSet* out) {
    ReadCounters(gMainZone, out);
}
void MemSetZoneCounters(const MemZoneCounterSet* in) {
    WriteCounters(gMainZone, in);
}
void CompactZoneCounters(MemZoneCounterSet* out) {
    ReadCounters(gCompactZone, out);
}
void CompactSetZoneCounters(const MemZoneCounterSet* in) {
    WriteCounters(gCompactZone, in);
}

Handle MemResizingHandle(void) {
    return gMainZone->resizing;
}
Handle CompactResizingHandle(void) {
    return gCompactZone->resizing;
}

}  // extern "C"
