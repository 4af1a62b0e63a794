#include <functional>
#include <string>

#include "memory_env.h"
#include "mg/dbgtools.h"

namespace {

using ChecksTest = MemoryTest;

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
    const std::string all =
        "Free: totSize 0, maxSize 0, nBlocks 0\n"
        "Allocated: totSize " +
        std::to_string(gBytesAllocated) + ", maxSize 0\n" +
        "    nPointers 0, nUnlockedHdls 0, nLockedHdls 0\n";
    EXPECT_EQ(out, "turning memory checking on\nturning memory checking off\n");
    out.clear();
    MemCheckAll();
    EXPECT_EQ(out, "turning memory checking on\n" + all + all + "turning memory checking off\n");
    out.clear();
    MemSetOutOfMemory(64, 0);
    MemReportOutOfMemory(0, 4);  // the built-in text, read as a PStr: its '/' is the count 47
    EXPECT_EQ(out, "0105Not enough memory to complete this operatio\n");
    EXPECT_EQ(MemOutOfMemoryInfo(nullptr), 0);
    gDebugging = 0;
    gDPrintfFileMode = 1;
    plat::CaptureDebuggerOutput(nullptr, nullptr);
}

// Sound zones pass with only the allocated total; with checking on, every new block runs the
// checks, and a sound zone passes them.
TEST_F(ChecksTest, SoundZonesPassWithOnlyTheAllocatedTotal) {
    Handle h = MemNewHandle(100), c = CompactNewHandle(10);
    for (MemZone* zone : {gMainZone, gCompactZone}) {
        MemStatsRecord r, want{};
        memset(&r, 0x55, sizeof r);
        ASSERT_EQ(ZoneStatistics(zone, 0, &r), MgNoError);
        want.allocTotal = gBytesAllocated;
        EXPECT_TRUE(r.allocTotal != 0 && memcmp(&r, &want, sizeof r) == 0);
    }
    EXPECT_EQ(ZoneStatistics(gMainZone, 1, nullptr), MgNoError);
    MemToggleChecking();
    EXPECT_EQ(gMemChecking, 1);
    Ptr p = MemNewPtrClear(3);
    Handle k = MemNewHandleClear(5);
    MemCheckAll();
    MemToggleChecking();
    EXPECT_EQ(gMemChecking, 0);
    for (Handle x : {k, h}) MemDisposeHandle(x);
    MemDisposePtr(p);
    CompactDisposeHandle(c);
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

}  // namespace
