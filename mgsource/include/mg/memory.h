// The memory manager: relocatable handles in two zones and plain pointers.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

typedef struct MemZone MemZone;
// Called when an allocation fails: nonzero asks the manager to try again.
typedef int32_t (*MemGrowCallback)(int32_t size, int32_t data);

// The four counters of a zone, in their order.
typedef struct MemZoneCounterSet {
    int32_t handleAllocs;
    int32_t ptrAllocs;
    int32_t resizes;
    int32_t moves;
} MemZoneCounterSet;

extern MemZone* gMainZone;
extern MemZone* gCompactZone;
// Sizes and headers of the blocks of all handles.
extern int32_t gBytesAllocated;
extern int32_t gMemChecking;

MgStatus InitMemoryManager(void);

// Main zone.
Handle MemNewHandle(int32_t size);
Handle MemNewHandleClear(int32_t size);
MgStatus MemDisposeHandle(Handle h);
int32_t MemHandleSize(Handle h);
MgStatus MemResizeHandle(Handle h, int32_t size);
MgStatus MemResizeHandleClear(Handle h, int32_t size);
Ptr MemNewPtr(int32_t size);
Ptr MemNewPtrClear(int32_t size);
MgStatus MemDisposePtr(Ptr p);
Handle MemRecoverHandle(Ptr p);
MgStatus MemLockHandle(Handle h);
MgStatus MemUnlockHandle(Handle h);
int32_t MemHandleFlags(Handle h);
void MemSetHandleFlags(Handle h, int32_t flags);
int32_t MemIsHandle(Handle h);
MgStatus MemCheckHandle(Handle h);
MgStatus MemCheckPtr(Ptr p);
MgStatus MemCopyHandle(Handle* dst, Handle src);
MgStatus MemSetHandleBytes(Handle* dst, const void* bytes, int32_t n);
MgStatus MemAppendHandle(Handle src, Handle dst);
MgStatus MemAppendBytes(const void* bytes, Handle dst, int32_t n);
MgStatus MemDuplicateHandle(Handle* h);
MgStatus MemHandleFromBytes(const void* bytes, Handle* h, int32_t n);
MgStatus MemMoveToCompact(Handle* h);
void MemSetGrowCallback(MemGrowCallback f);
void MemZoneCounters(MemZoneCounterSet* out);
void MemSetZoneCounters(const MemZoneCounterSet* in);
Handle MemResizingHandle(void);
MgStatus MemGrowMasterPointers(MemZone* zone);

// Compact (application) zone: same meanings, with the differences the zone requires.
Handle CompactNewHandle(int32_t size);
Handle CompactNewHandleClear(int32_t size);
MgStatus CompactDisposeHandle(Handle h);
int32_t CompactHandleSize(Handle h);
MgStatus CompactResizeHandle(Handle h, int32_t size);
MgStatus CompactResizeHandleClear(Handle h, int32_t size);
MgStatus CompactCopyHandle(Handle* dst, Handle src);
MgStatus CompactSetHandleBytes(Handle* dst, const void* bytes, int32_t n);
MgStatus CompactAppendHandle(Handle src, Handle dst);
MgStatus CompactAppendBytes(const void* bytes, Handle dst, int32_t n);
MgStatus CompactDuplicateHandle(Handle* h);
MgStatus CompactHandleFromBytes(const void* bytes, Handle* h, int32_t n);
MgStatus CompactCheckHandle(Handle h);
MgStatus CompactEnsureHandle(Handle* h, int32_t size);
MgStatus CompactEnsureHandleClear(Handle* h, int32_t size);
Handle CompactRecoverHandle(Ptr p);
void CompactZoneCounters(MemZoneCounterSet* out);
void CompactSetZoneCounters(const MemZoneCounterSet* in);
Handle CompactResizingHandle(void);

// The record of the first failed allocation.
int32_t MemSetOutOfMemory(int32_t size, int32_t data);
int32_t MemOutOfMemoryInfo(int32_t* out);
void MemClearOutOfMemory(void);
// Installs the packed PStr list of out-of-memory messages; returns it.
Handle MemSetMessageTable(Handle table);
// Passes message `index` (of the table, or the built-in text) to the debug print when bit 2
// of `flags` is set, and empties the record; does nothing without a record.
void MemReportOutOfMemory(int32_t index, int32_t flags);

// Checks the zone's free list of master pointers against its count; 0 while checking is off.
MgStatus MemCheckFreeList(MemZone* zone);

// Zone statistics, eight words in this order. The blocks come from the runtime's allocator,
// so only allocTotal (gBytesAllocated, the same for both zones) is ever nonzero.
typedef struct MemStatsRecord {
    int32_t freeTotal, freeMax, freeBlocks;
    int32_t allocTotal, allocMax;
    int32_t pointers, unlockedHandles, lockedHandles;
} MemStatsRecord;

// Re-entry guard of the checks that run on each new block while checking is on.
extern int32_t gMemStatsBusy;
// Says "turning memory checking on" or "off" through the debug print, then flips the switch.
void MemToggleChecking(void);
// Checks the free list and the chain of master blocks; fills `out` when given and, with
// `print`, prints it. A damaged zone is a failure report (result 74 if it returns).
MgStatus ZoneStatistics(MemZone* zone, int32_t print, MemStatsRecord* out);
// Toggles checking, checks and prints both zones, and toggles back.
void MemCheckAll(void);

// 32-bit tokens for live handles, for the 32-bit words of file formats: nonzero for a live
// handle of either zone; MemHandleFromToken gives null for a token of no live handle.
uint32_t MemHandleToken(Handle h);
Handle MemHandleFromToken(uint32_t token);

MG_EXTERN_C_END
