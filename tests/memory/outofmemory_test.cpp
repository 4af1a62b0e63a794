#include <string>

#include "memory_env.h"

namespace {

using OutOfMemoryTest = MemoryTest;

int32_t gCallbackCalls = 0;
int32_t gLastCallbackSize = 0;
int32_t RetryOnce(int32_t size, int32_t data) {
    EXPECT_EQ(data, 0);
    gLastCallbackSize = size;
    return gCallbackCalls++ == 0;
}

int32_t RecordedSize() {
    int32_t info[4] = {-1, -1, -1, -1};
    return MemOutOfMemoryInfo(info) ? info[1] : 0;
}

TEST_F(OutOfMemoryTest, RecordKeepsTheFirstSize) {
    int32_t info[4] = {9, 9, 9, 9};
    EXPECT_EQ(MemOutOfMemoryInfo(info), 0);
    EXPECT_EQ(info[0], 0);
    EXPECT_EQ(info[1], 0);
    EXPECT_EQ(info[2], 9);                  // untouched without a record
    EXPECT_EQ(MemSetOutOfMemory(0, 5), 0);  // size 0 is no record
    EXPECT_EQ(MemOutOfMemoryInfo(nullptr), 0);
    EXPECT_EQ(MemSetOutOfMemory(40, 7), 0);
    EXPECT_EQ(MemSetOutOfMemory(80, 8), 1);
    EXPECT_EQ(MemOutOfMemoryInfo(info), 1);
    EXPECT_EQ(info[0], 7);
    EXPECT_EQ(info[1], 40);
    EXPECT_EQ(info[2], 0);
    EXPECT_EQ(info[3], 0);
    MemClearOutOfMemory();
    EXPECT_EQ(MemOutOfMemoryInfo(nullptr), 0);
}

TEST_F(OutOfMemoryTest, FailedNewHandleGivesNullAndKeepsTheMasterPointer) {
    const int32_t bytes = gBytesAllocated;
    const int32_t freeMasters = gMainZone->freeMasterCount;
    CounterDelta counters(false);
    plat::FailAllocationAt(1);
    EXPECT_EQ(MemNewHandle(24), nullptr);
    EXPECT_EQ(RecordedSize(), 24);
    // The bytes are counted although nothing was allocated, and the master pointer is lost.
    EXPECT_EQ(gBytesAllocated - bytes, 24 + 16);
    EXPECT_EQ(gMainZone->freeMasterCount, freeMasters - 1);
    EXPECT_EQ(counters.Now().handleAllocs, 0);

    plat::FailAllocationAt(1);
    EXPECT_EQ(CompactNewHandle(5), nullptr);
    EXPECT_EQ(RecordedSize(), 24);  // the first failure stays
    gBytesAllocated = bytes;
}

TEST_F(OutOfMemoryTest, FailedResizeLeavesTheBlockAndDrifts) {
    for (const Zone& z : kZones) {
        for (bool clear : {false, true}) {
            SCOPED_TRACE(std::string(z.name) + (clear ? " clear" : ""));
            MemClearOutOfMemory();
            Handle h = z.newHandle(4);
            memcpy(*h, "keep", 4);
            const uint8_t* bytes = *h;
            const int32_t allocated = gBytesAllocated;
            CounterDelta counters(z.compact);
            plat::FailAllocationAt(1);
            EXPECT_EQ((clear ? z.resizeClear : z.resize)(h, 1000), MgNoMemory);
            EXPECT_EQ(*h, bytes);
            EXPECT_EQ(memcmp(*h, "keep", 4), 0);
            EXPECT_EQ(z.size(h), 4);
            EXPECT_EQ(counters.Now().resizes, 1);
            EXPECT_EQ(counters.Now().moves, 1);  // null differs from the block
            EXPECT_EQ(gBytesAllocated - allocated, 996);
            EXPECT_EQ(RecordedSize(), 1000 + z.header);
            z.dispose(h);
            EXPECT_EQ(gBytesAllocated - allocated, 996 - (4 + z.header));
            gBytesAllocated = allocated - (4 + z.header);
        }
    }
}

TEST_F(OutOfMemoryTest, CallbackAsksForARetry) {
    gCallbackCalls = 0;
    MemSetGrowCallback(RetryOnce);
    plat::FailAllocationAt(1);
    Ptr p = MemNewPtr(33);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(gCallbackCalls, 1);
    EXPECT_EQ(gLastCallbackSize, 33);
    EXPECT_EQ(MemOutOfMemoryInfo(nullptr), 0);
    MemDisposePtr(p);

    gCallbackCalls = 0;
    plat::FailAllocationAt(1);
    Handle h = MemNewHandle(12);
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(gCallbackCalls, 1);
    EXPECT_EQ(MemHandleSize(h), 12);

    gCallbackCalls = 0;
    CounterDelta counters(false);
    plat::FailAllocationAt(1);
    EXPECT_EQ(MemResizeHandle(h, 64), MgNoError);
    EXPECT_EQ(gLastCallbackSize, 64 + 16);
    EXPECT_EQ(counters.Now().resizes, 1);
    EXPECT_EQ(MemHandleSize(h), 64);

    // A callback that gives up leads to the record.
    gCallbackCalls = 1;
    plat::FailAllocationAt(1);
    EXPECT_EQ(MemNewPtrClear(9), nullptr);
    EXPECT_EQ(RecordedSize(), 9);
    MemDisposeHandle(h);
}

TEST_F(OutOfMemoryTest, MasterBlockGrowthFails) {
    MemZone* zone = gCompactZone;
    const int32_t blocks = zone->masterBlockCount;
    const int32_t ptrs = zone->ptrAllocs;
    plat::FailAllocationAt(1);
    EXPECT_EQ(MemGrowMasterPointers(zone), MgNoMemory);
    EXPECT_EQ(RecordedSize(), static_cast<int32_t>(sizeof(mgmem::MasterBlock)));
    EXPECT_EQ(zone->masterBlockCount, blocks);
    EXPECT_EQ(MemGrowMasterPointers(zone), MgNoError);
    EXPECT_EQ(zone->masterBlockCount, blocks + 1);
    EXPECT_EQ(zone->ptrAllocs, ptrs + 1);
    gMemChecking = 1;
    Handle h = CompactNewHandle(1);  // takes from the checked list
    EXPECT_EQ(MemCheckFreeList(zone), MgNoError);
    gMemChecking = 0;
    CompactDisposeHandle(h);
}

}  // namespace
