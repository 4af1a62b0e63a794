// Master pointers: blocks of them, and their free list.
#include "memory/zone.h"
#include "mg/dbgtools.h"
#include "platform/platform.h"

MG_SOURCE_IDENTITY("mgsource\\memory\\masters.cpp", "$Revision: 1 $");

namespace mgmem {
namespace {

// Tokens give a block index 17 bits (see tokens.cpp); no zone gets more blocks than that.
constexpr int32_t kMaxMasterBlocks = 1 << 17;

// Makes room for one more block in the zone's creation-order table.
bool ReserveBlockSlot(MemZone* zone) {
    if (zone->masterBlockCount < zone->blockTableCapacity) return true;
    if (zone->masterBlockCount >= kMaxMasterBlocks) return false;
    int32_t capacity = zone->blockTableCapacity ? zone->blockTableCapacity * 2 : 16;
    void* table = plat::Realloc(zone->blockTable, sizeof(MasterBlock*) * capacity);
    if (!table) return false;
    zone->blockTable = static_cast<MasterBlock**>(table);
    zone->blockTableCapacity = capacity;
    return true;
}

inline uint8_t* FreeLink(uint8_t** next) {
    return reinterpret_cast<uint8_t*>(reinterpret_cast<uintptr_t>(next) | 1);
}

}  // namespace

// The free list checked before and after, as the checks ask; the inline form in zone.h comes
// here only with checking on or an empty list.
uint8_t** TakeMasterPointerChecked(MemZone* zone) {
    for (;;) {
        if (gMemChecking && MemCheckFreeList(zone) != MgNoError) return nullptr;
        if (zone->freeMasters) break;
        if (MemGrowMasterPointers(zone) != MgNoError) return nullptr;
    }
    uint8_t** master = zone->freeMasters;
    zone->freeMasters =
        reinterpret_cast<uint8_t**>(reinterpret_cast<uintptr_t>(*master) & ~uintptr_t{1});
    --zone->freeMasterCount;
    if (gMemChecking && MemCheckFreeList(zone) != MgNoError) return nullptr;
    *master = nullptr;
    return master;
}

}  // namespace mgmem

using namespace mgmem;

extern "C" MgStatus MemGrowMasterPointers(MemZone* zone) {
    MasterBlock* block;
    for (;;) {
        block = static_cast<MasterBlock*>(plat::Malloc(sizeof(MasterBlock)));
        if (block && !ReserveBlockSlot(zone)) {
            plat::Free(block);
            block = nullptr;
        }
        if (block) break;
        if (!OutOfMemoryRetry(zone, sizeof(MasterBlock))) return MgNoMemory;
    }
    ++zone->ptrAllocs;
    for (int32_t i = 0; i < kMastersPerBlock - 1; ++i)
        block->slots[i] = FreeLink(&block->slots[i + 1]);
    block->slots[kMastersPerBlock - 1] = FreeLink(zone->freeMasters);
    block->next = zone->masterBlocks;
    zone->masterBlocks = block;
    zone->freeMasters = &block->slots[0];
    zone->freeMasterCount += kMastersPerBlock;
    zone->blockTable[zone->masterBlockCount] = block;
    ++zone->masterBlockCount;
    return MgNoError;
}
