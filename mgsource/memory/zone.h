// Internal view of the memory manager: zone records, master-pointer blocks and block headers.
//
// Layout decisions (they hold on 32-bit and 64-bit hosts alike):
// - A master-pointer block is one link word, then kMastersPerBlock master pointers, all of the
//   host's pointer width: 4 + 40000 bytes on a 32-bit host, 8 + 80000 on a 64-bit one.
// - Main-zone header, 16 bytes: size (int32 at 0), flags (int32 at 4), the Handle at 8. On a
//   32-bit host bytes 12..15 are reserved and hold nothing; on a 64-bit host the Handle fills
//   bytes 8..15. Compact-zone header, 8 bytes: size and flags only. Both sizes are multiples
//   of 8, so the bytes after a header keep the allocator's 8-byte alignment.
#pragma once

#include <stdint.h>

#include "mg/memory.h"

namespace mgmem {

constexpr int32_t kMastersPerBlock = 10000;
constexpr int32_t kMainHeaderSize = 16;
constexpr int32_t kCompactHeaderSize = 8;
// Highest offset of a master pointer from its block's address.
constexpr uintptr_t kMasterSpan = kMastersPerBlock * sizeof(void*);

struct MasterBlock {
    MasterBlock* next;
    uint8_t* slots[kMastersPerBlock];
};
static_assert(sizeof(MasterBlock) == (kMastersPerBlock + 1) * sizeof(void*));
static_assert(8 + sizeof(Handle) <= kMainHeaderSize);

}  // namespace mgmem

struct MemZone {
    mgmem::MasterBlock* masterBlocks;
    mgmem::MasterBlock* recentBlock[2];
    uint8_t** freeMasters;
    MemGrowCallback growCallback;
    Handle resizing;
    int32_t masterBlockCount;
    int32_t freeMasterCount;
    int32_t headerSize;
    int32_t handleAllocs;
    int32_t ptrAllocs;
    int32_t resizes;
    int32_t moves;
    // Beyond the record proper: the zone's number in handle tokens, and its master blocks in
    // creation order so that a token finds its block in constant time; the two blocks whose
    // index a token asked for last, with their indices, so that making a token of a handle
    // from a run costs no search of the table.
    int32_t tokenZone;
    int32_t blockTableCapacity;
    mgmem::MasterBlock** blockTable;
    mgmem::MasterBlock* tokenBlock[2];
    int32_t tokenIndex[2];
};

namespace mgmem {

// Index of recentBlock written next; one counter for both zones.
extern uint32_t gRecentTurn;
// Set once InitMemoryManager has set up both zones.
extern int32_t gMemStarted;

// The block of `zone` that holds the master pointer `h`, or null. Remembers a block found by
// walking the chain.
MasterBlock* WalkMasterBlocks(MemZone* zone, uintptr_t address);

inline MasterBlock* FindMasterBlock(MemZone* zone, Handle h) {
    uintptr_t a = reinterpret_cast<uintptr_t>(h);
    for (MasterBlock* b : zone->recentBlock) {
        uintptr_t base = reinterpret_cast<uintptr_t>(b);
        if (b && a > base && a - base <= kMasterSpan) return b;
    }
    return WalkMasterBlocks(zone, a);
}

// A handle is valid when it is a master pointer of the zone in use: nonzero, bit 0 clear. An
// address between two master pointers is refused before anything is read through it.
inline bool HandleIsValid(MemZone* zone, Handle h) {
    if (reinterpret_cast<uintptr_t>(h) & (sizeof(void*) - 1)) return false;
    if (!FindMasterBlock(zone, h)) return false;
    uintptr_t m = reinterpret_cast<uintptr_t>(*h);
    return m != 0 && (m & 1) == 0;
}

inline uint8_t* BlockOf(const MemZone* zone, Handle h) {
    return *h - zone->headerSize;
}
inline int32_t* SizeWord(uint8_t* block) {
    return reinterpret_cast<int32_t*>(block);
}
inline int32_t* FlagsWord(uint8_t* block) {
    return reinterpret_cast<int32_t*>(block + 4);
}
inline Handle* HandleWord(uint8_t* block) {
    return reinterpret_cast<Handle*>(block + 8);
}
inline int32_t HandleSizeOf(const MemZone* zone, Handle h) {
    return *SizeWord(BlockOf(zone, h));
}

// Adds to gBytesAllocated with the wrap-around of a 32-bit counter.
inline void AddBytesAllocated(int64_t delta) {
    gBytesAllocated =
        static_cast<int32_t>(static_cast<uint32_t>(gBytesAllocated) + static_cast<uint32_t>(delta));
}

// Runs the grow callback for a failed allocation of `size`; true asks the caller to retry.
// Giving up records the size as the failed allocation.
bool OutOfMemoryRetry(MemZone* zone, int64_t size);

// With checking on: a new block must be 4-aligned, and the main zone is checked.
void CheckNewBlockChecked(const void* handle, const void* block);
inline void CheckNewBlock(const void* handle, const void* block) {
    if (gMemChecking) CheckNewBlockChecked(handle, block);
}

// Takes a master pointer off the zone's free list, adding a block when it is empty.
uint8_t** TakeMasterPointerChecked(MemZone* zone);
inline uint8_t** TakeMasterPointer(MemZone* zone) {
    uint8_t** master = zone->freeMasters;
    if (gMemChecking || !master) return TakeMasterPointerChecked(zone);
    zone->freeMasters =
        reinterpret_cast<uint8_t**>(reinterpret_cast<uintptr_t>(*master) & ~uintptr_t{1});
    --zone->freeMasterCount;
    *master = nullptr;
    return master;
}
inline void ReleaseMasterPointer(MemZone* zone, uint8_t** master) {
    *master = reinterpret_cast<uint8_t*>(reinterpret_cast<uintptr_t>(zone->freeMasters) | 1);
    zone->freeMasters = master;
    ++zone->freeMasterCount;
}

Handle ZoneNewHandle(MemZone* zone, int32_t size, bool clear);
// Both take a handle already found valid.
void ZoneDisposeHandle(MemZone* zone, Handle h);
MgStatus ZoneResize(MemZone* zone, Handle h, int32_t size, bool clear);

// The zone operations the handle utilities are built on.
struct ZoneOps {
    Handle (*newHandle)(int32_t size);
    MgStatus (*dispose)(Handle h);
    int32_t (*size)(Handle h);
    MgStatus (*resize)(Handle h, int32_t size);
};
extern const ZoneOps kMainOps;
extern const ZoneOps kCompactOps;

MgStatus CopyHandle(const ZoneOps& ops, Handle* dst, Handle src);
MgStatus SetHandleBytes(const ZoneOps& ops, Handle* dst, const void* bytes, int32_t n);
MgStatus AppendBytes(const ZoneOps& ops, const void* bytes, Handle dst, int32_t n);
MgStatus AppendHandle(const ZoneOps& ops, Handle src, Handle dst);
MgStatus DuplicateHandle(const ZoneOps& ops, Handle* h);

}  // namespace mgmem
