// The checks of the zones, their printed texts, and the record of failed allocations.
#include <functional>
#include <string>

#include "memory_env.h"
#include "mg/dbgtools.h"
#include "support/rows.h"

namespace {

using namespace mgtest;
using ChecksTest = MemoryTest;
using OutOfMemoryTest = MemoryTest;

void Collect(const char* text, void* context) {
    *static_cast<std::string*>(context) += text;
}

// The texts of the checks and of the out-of-memory report, through the debug print.
TEST_F(ChecksTest, PrintedTexts) {
    std::string out;
    plat::CaptureDebuggerOutput(Collect, &out);
    gDebugging = 1;
    gDPrintfFileMode = 0;
    MemToggleChecking();
    MemToggleChecking();
    EXPECT_EQ(gMemChecking, 0);
    const std::string on = "turning memory checking on\n", off = "turning memory checking off\n",
                      all = "Free: totSize 0, maxSize 0, nBlocks 0\nAllocated: totSize " +
                            std::to_string(gBytesAllocated) +
                            ", maxSize 0\n    nPointers 0, nUnlockedHdls 0, nLockedHdls 0\n";
    MemCheckAll();
    MemSetOutOfMemory(64, 0);
    MemReportOutOfMemory(0, 4);  // the built-in text, read as a PStr: its '/' is the count 47
    EXPECT_EQ(
        out, on + off + on + all + all + off + "0105Not enough memory to complete this operatio\n");
    EXPECT_EQ(MemOutOfMemoryInfo(nullptr), 0);
    gDebugging = 0;
    gDPrintfFileMode = 1;
    plat::CaptureDebuggerOutput(nullptr, nullptr);
}

// Sound zones pass with only the allocated total in their record, and pass the checks that
// every new block runs while checking is on.
TEST_F(ChecksTest, SoundZonesPass) {
    MemStatsRecord want{}, r;
    want.allocTotal = gBytesAllocated;
    for (MemZone* zone : {gMainZone, gCompactZone}) {
        memset(&r, 0x55, sizeof r);
        EXPECT_TRUE(ZoneStatistics(zone, 0, &r) == MgNoError && memcmp(&r, &want, sizeof r) == 0);
    }
    gMemChecking = 1;
    Ptr p = MemNewPtrClear(3);
    Handle h = MemNewHandleClear(5);
    gMemChecking = 0;
    EXPECT_TRUE(p && h && MemDisposePtr(p) == MgNoError && MemDisposeHandle(h) == MgNoError);
}

// Each damage is found by a check and ends the process through a failure report.
TEST_F(ChecksTest, DamagedTablesAreFound) {
    // One master block too many or too few counted, a chain that loops, a negative free count,
    // and a free list cut short of its end, checked on a new handle and on a new pointer.
    const std::function<void()> damages[] = {
        [] { ++gMainZone->masterBlockCount, ZoneStatistics(gMainZone, 0, nullptr); },
        [] { --gCompactZone->masterBlockCount, ZoneStatistics(gCompactZone, 0, nullptr); },
        [] {
            gMainZone->masterBlocks->next = gMainZone->masterBlocks,
            ZoneStatistics(gMainZone, 0, nullptr);
        },
        [] { gMainZone->freeMasterCount = -1, MemCheckAll(); },
        [] { --gMainZone->freeMasterCount, gMemChecking = 1, MemNewHandle(8); },
        [] { --gMainZone->freeMasterCount, gMemChecking = 1, MemNewPtr(8); }};
    for (size_t i = 0; i < std::size(damages); ++i)
        EXPECT_EXIT(damages[i](), ::testing::ExitedWithCode(1), "^Failure : \"checks\\.cpp\" line")
            << i;
}

int32_t gCallbackCalls = 0;
int32_t gLastCallbackSize = 0;
// Asks for a retry, except for 9 bytes.
int32_t RetryUnlessNine(int32_t size, int32_t data) {
    EXPECT_EQ(data, 0);
    gLastCallbackSize = size;
    ++gCallbackCalls;
    return size != 9;
}

int32_t RecordedSize() {
    int32_t info[4] = {-1, -1, -1, -1};
    return MemOutOfMemoryInfo(info) ? info[1] : 0;
}

// The record keeps the first failure: its size and data; size 0 is no record. Without one the
// words beyond the first two are left alone.
TEST_F(OutOfMemoryTest, RecordKeepsTheFirstSize) {
    int32_t info[4] = {9, 9, 9, 9};
    ExpectRows({Row(MemOutOfMemoryInfo(info), 0), Row(info[0], 0), Row(info[1], 0), Row(info[2], 9),
                Row(MemSetOutOfMemory(0, 5), 0), Row(MemOutOfMemoryInfo(nullptr), 0),
                Row(MemSetOutOfMemory(40, 7), 0), Row(MemSetOutOfMemory(80, 8), 1),
                Row(MemOutOfMemoryInfo(info), 1), Row(info[0], 7), Row(info[1], 40),
                Row(info[2], 0), Row(info[3], 0),
                Row((MemClearOutOfMemory(), MemOutOfMemoryInfo(nullptr)), 0)});
}

// The bytes are counted although nothing was allocated, and the master pointer is lost.
TEST_F(OutOfMemoryTest, FailedNewHandleGivesNullAndKeepsTheMasterPointer) {
    const int32_t bytes = gBytesAllocated;
    const int32_t freeMasters = gMainZone->freeMasterCount;
    CounterDelta counters(false);
    ExpectRows({Row((plat::FailAllocationAt(1), MemNewHandle(24)) == nullptr, 1),
                Row(RecordedSize(), 24), Row(gBytesAllocated - bytes, 24 + 16),
                Row(gMainZone->freeMasterCount, freeMasters - 1),
                Row(counters.Now().handleAllocs, 0),
                Row((plat::FailAllocationAt(1), CompactNewHandle(5)) == nullptr, 1),
                Row(RecordedSize(), 24)});
    gBytesAllocated = bytes;
}

// A failed resize leaves the block, counts a resize and a move (null differs from the block)
// and drifts the byte count.
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
            ExpectRows({Row((clear ? z.resizeClear : z.resize)(h, 1000), MgNoMemory),
                        Row(*h == bytes, 1), Row(mgtest::Contents(h, !z.compact), "keep"),
                        Row(counters.Now().resizes, 1), Row(counters.Now().moves, 1),
                        Row(gBytesAllocated - allocated, 996), Row(RecordedSize(), 1000 + z.header),
                        Row((z.dispose(h), gBytesAllocated - allocated), 996 - (4 + z.header))});
            gBytesAllocated = allocated - (4 + z.header);
        }
    }
}

// A callback that asks for a retry gets it, for pointers, handles and resizes (counted once);
// one that gives up leads to the record.
TEST_F(OutOfMemoryTest, CallbackAsksForARetry) {
    MemSetGrowCallback(RetryUnlessNine);
    gCallbackCalls = 0;
    CounterDelta counters(false);
    Ptr p = nullptr;
    Handle h = nullptr;
    ExpectRows(
        {Row((plat::FailAllocationAt(1), p = MemNewPtr(33)) != nullptr, 1), Row(gCallbackCalls, 1),
         Row(gLastCallbackSize, 33), Row(MemOutOfMemoryInfo(nullptr), 0),
         Row((plat::FailAllocationAt(1), h = MemNewHandle(12)) != nullptr, 1),
         Row(gCallbackCalls, 2), Row(MemHandleSize(h), 12),
         Row((plat::FailAllocationAt(1), MemResizeHandle(h, 64)), MgNoError),
         Row(gLastCallbackSize, 64 + 16), Row(counters.Now().resizes, 1), Row(MemHandleSize(h), 64),
         Row((plat::FailAllocationAt(1), MemNewPtrClear(9)) == nullptr, 1),
         Row(RecordedSize(), 9)});
    MemDisposePtr(p);
    MemDisposeHandle(h);
}

// A new master block counts as a pointer of its zone; its free list passes the check.
TEST_F(OutOfMemoryTest, MasterBlockGrowthFails) {
    MemZone* zone = gCompactZone;
    const int32_t blocks = zone->masterBlockCount, ptrs = zone->ptrAllocs;
    ExpectRows({Row((plat::FailAllocationAt(1), MemGrowMasterPointers(zone)), MgNoMemory),
                Row(RecordedSize(), sizeof(mgmem::MasterBlock)),
                Row(zone->masterBlockCount, blocks), Row(MemGrowMasterPointers(zone), MgNoError),
                Row(zone->masterBlockCount, blocks + 1), Row(zone->ptrAllocs, ptrs + 1)});
    gMemChecking = 1;
    Handle h = CompactNewHandle(1);  // takes from the checked list
    EXPECT_EQ(MemCheckFreeList(zone), MgNoError);
    gMemChecking = 0;
    CompactDisposeHandle(h);
}

}  // namespace
