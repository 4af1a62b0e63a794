// Handles and pointers of both zones (headers, accounting, validity, resizing, copies,
// tokens), the checks of the zones and their printed texts, and the record of failed
// allocations.
#include "mg/memory.h"

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "memory/zone.h"
#include "mg/dbgtools.h"
#include "platform/faults.h"
#include "platform/platform.h"
#include "support/handles.h"
#include "support/rows.h"

namespace {

using namespace mgtest;

MemZoneCounterSet Counters(bool compact) {
    MemZoneCounterSet c;
    compact ? CompactZoneCounters(&c) : MemZoneCounters(&c);
    return c;
}

// Counters of one zone across a test step: set to zero at its start.
struct CounterDelta {
    bool compact;
    explicit CounterDelta(bool zone) : compact(zone) {
        const MemZoneCounterSet zero{};
        compact ? CompactSetZoneCounters(&zero) : MemSetZoneCounters(&zero);
    }
    MemZoneCounterSet Now() const { return Counters(compact); }
};

// The operations both zones share, so that a test can run once per zone.
struct Zone {
    const char* name;
    bool compact;
    int32_t header;
    Handle (*newHandle)(int32_t), (*newClear)(int32_t), (*resizing)();
    int32_t (*size)(Handle);
    MgStatus (*dispose)(Handle), (*check)(Handle), (*duplicate)(Handle*),
        (*resize)(Handle, int32_t), (*resizeClear)(Handle, int32_t), (*copy)(Handle*, Handle),
        (*appendHandle)(Handle, Handle), (*setBytes)(Handle*, const void*, int32_t),
        (*appendBytes)(const void*, Handle, int32_t), (*fromBytes)(const void*, Handle*, int32_t);
};

const Zone kZones[] = {
    {"main", false, 16, MemNewHandle, MemNewHandleClear, MemResizingHandle, MemHandleSize,
     MemDisposeHandle, MemCheckHandle, MemDuplicateHandle, MemResizeHandle, MemResizeHandleClear,
     MemCopyHandle, MemAppendHandle, MemSetHandleBytes, MemAppendBytes, MemHandleFromBytes},
    {"compact", true, 8, CompactNewHandle, CompactNewHandleClear, CompactResizingHandle,
     CompactHandleSize, CompactDisposeHandle, CompactCheckHandle, CompactDuplicateHandle,
     CompactResizeHandle, CompactResizeHandleClear, CompactCopyHandle, CompactAppendHandle,
     CompactSetHandleBytes, CompactAppendBytes, CompactHandleFromBytes},
};

// Leaves no fault armed and no out-of-memory record behind.
class MemoryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        plat::ResetFaults();
        MemClearOutOfMemory();
        MemSetGrowCallback(nullptr);
    }
    void TearDown() override { SetUp(); }
};
using MemoryDeathTest = MemoryTest;

// Main header: size, flags and the handle; compact header: size and flags only. Every handle
// counts its bytes and its header, size 0 the header alone. Three main master blocks and one
// compact one to start with.
TEST_F(MemoryTest, HandlesOfBothZones) {
    EXPECT_TRUE(gMainZone->masterBlockCount >= 3 && gCompactZone->masterBlockCount >= 1);
    for (const Zone& z : kZones) {
        SCOPED_TRACE(z.name);
        const int32_t before = gBytesAllocated;
        CounterDelta counters{z.compact};
        Handle h = z.newHandle(5), empty = z.newClear(0), clear = z.newClear(300);
        ASSERT_TRUE(h && empty && clear);
        const int32_t* words = reinterpret_cast<int32_t*>(*h - z.header);
        ExpectRows({Row(gBytesAllocated - before, 305 + 3 * z.header),
                    Row(counters.Now().handleAllocs, 3),
                    Row(reinterpret_cast<uintptr_t>(*h) % 8, 0), Row(words[0], 5), Row(words[1], 0),
                    Row(z.compact || *reinterpret_cast<const Handle*>(words + 2) == h, 1),
                    Row(z.compact || MemRecoverHandle(*h) == h, 1), Row(z.size(h), 5),
                    Row(z.check(empty), MgNoError), Row(z.size(empty), 0),
                    Row(Contents(clear, !z.compact), std::string(300, '\0'))});
        for (Handle x : {h, empty, clear}) EXPECT_EQ(z.dispose(x), MgNoError);
        EXPECT_EQ(gBytesAllocated, before);
    }
    // A negative size fails like an allocation, without asking the allocator: the armed failure
    // is still waiting for the pointer. The link word of a master block, an address between two
    // master pointers, the word after a block's last master pointer, and a handle of the other
    // zone are no handles.
    const int32_t bytes = gBytesAllocated;
    EXPECT_TRUE((plat::FailAllocationAt(1), MemNewHandle(-1)) == nullptr && !MemNewPtr(1));
    gBytesAllocated = bytes;
    Handle h = MemNewHandle(8), c = CompactNewHandle(1);
    mgmem::MasterBlock* block = gMainZone->blockTable[0];
    Handle last = &block->slots[mgmem::kMastersPerBlock - 1];
    // The free list is last in, first out: the next handle takes the same master pointer.
    ExpectRows({Row(MemDisposeHandle(nullptr), MgNoError),
                Row(CompactDisposeHandle(nullptr), MgNoError),
                Row(MemDisposePtr(nullptr), MgBadArgument), Row(MemCheckPtr(nullptr), MgBadHandle),
                Row(MemCheckHandle(nullptr), MgBadHandle),
                Row(MemCheckHandle(reinterpret_cast<Handle>(gMainZone->masterBlocks)), MgBadHandle),
                Row(MemCheckHandle(reinterpret_cast<Handle>(reinterpret_cast<uint8_t*>(h) + 1)),
                    MgBadHandle),
                Row(mgmem::FindMasterBlock(gMainZone, last) == block, 1),
                Row(mgmem::FindMasterBlock(gMainZone, last + 1) != block, 1),
                Row(CompactCheckHandle(h), MgBadHandle), Row(MemCheckHandle(c), MgBadHandle),
                Row(MemDisposeHandle(h), MgNoError), Row(MemCheckHandle(h), MgBadHandle),
                Row(MemLockHandle(h), MgBadHandle), Row(MemUnlockHandle(h), MgBadHandle),
                Row(MemNewHandle(3) == h, 1), Row(MemCheckHandle(h), MgNoError),
                Row(MemHandleSize(h), 3)});
    // Locking sets flag bit 0 and keeps the others; a zero-size pointer still has one byte.
    CounterDelta counters{false};
    Ptr p = MemNewPtr(0);
    ASSERT_NE(p, nullptr);
    p[0] = 1;
    ExpectRows({Row(MemLockHandle(h), MgNoError), Row(MemHandleFlags(h), 1),
                Row((MemSetHandleFlags(h, 6), MemLockHandle(h)), MgNoError),
                Row(MemHandleFlags(h), 7), Row(MemUnlockHandle(h), MgNoError),
                Row(MemHandleFlags(h), 6), Row(MemIsHandle(h), 1), Row(counters.Now().ptrAllocs, 1),
                Row(MemCheckPtr(p), MgNoError), Row(MemDisposePtr(p), MgNoError)});
    MemDisposeHandle(h);
    CompactDisposeHandle(c);
}

// Clearing to the same size is a counted resize in the compact zone only; the main zone
// refuses a negative size, the compact one shrinks to its size word (no sign test) and fails
// a total too small for it as an allocation would. Only added bytes are cleared.
TEST_F(MemoryTest, ResizesOfBothZones) {
    for (const Zone& z : kZones) {
        SCOPED_TRACE(z.name);
        Handle h = z.newHandle(4);
        CounterDelta counters{z.compact};
        ExpectRows({Row(z.resize(h, 4), MgNoError), Row(counters.Now().resizes, 1),
                    Row(z.resizeClear(h, 4), MgNoError),
                    Row(counters.Now().resizes, z.compact ? 2 : 1), Row(counters.Now().moves, 0),
                    Row(z.resize(h, -1), z.compact ? MgNoError : MgBadArgument),
                    Row(z.size(h), z.compact ? -1 : 4), Row(z.resize(h, 4), MgNoError),
                    Row(z.compact ? CompactResizeHandle(h, -100) : MgNoMemory, MgNoMemory),
                    Row(z.size(h), 4), Row(counters.Now().resizes, z.compact ? 5 : 2)});
        memset(*h, 0xAB, 4);
        const uint8_t* before = *h;
        CounterDelta grown{z.compact};
        ASSERT_EQ(z.resizeClear(h, 100000), MgNoError);
        EXPECT_EQ(Contents(h, !z.compact), std::string(4, '\xAB') + std::string(99996, '\0'));
        ExpectRows({Row(grown.Now().resizes, 1), Row(grown.Now().moves, *h != before ? 1 : 0),
                    Row(z.resizing() == nullptr, 1),
                    Row(z.compact || MemRecoverHandle(*h) == h, 1)});
        z.dispose(h);
    }
}

// Making one from bytes always makes a new handle; a copy of null is null.
TEST_F(MemoryTest, BytesCopiesAndDuplicates) {
    for (const Zone& z : kZones) {
        SCOPED_TRACE(z.name);
        Handle a = nullptr, b = nullptr;
        ASSERT_TRUE(z.fromBytes("abc", &a, 3) == MgNoError && z.copy(&b, a) == MgNoError && b != a);
        ExpectRows({Row(z.appendBytes("de", b, 2), MgNoError), Row(z.appendHandle(b, b), MgNoError),
                    Row(Contents(b, !z.compact), "abcdeabcde"),
                    Row(z.setBytes(&a, "xy", -1), MgBadArgument),
                    Row(z.appendBytes("xy", a, -1), MgBadArgument),
                    Row(z.setBytes(&a, "xy", 0), MgNoError), Row(z.size(a), 0),
                    Row(z.setBytes(&a, "xy", 2), MgNoError), Row(z.copy(&b, a), MgNoError),
                    Row(Contents(b, !z.compact), "xy")});
        Handle original = a, fresh = a;
        ASSERT_TRUE(z.duplicate(&a) == MgNoError && z.fromBytes("q", &fresh, 1) == MgNoError);
        ExpectRows({Row(a != original, 1), Row(z.check(original), MgNoError),
                    Row(Contents(a, !z.compact), "xy"), Row(fresh != original, 1),
                    Row(z.copy(&b, nullptr), MgNoError), Row(b == nullptr, 1)});
        for (Handle x : {a, original, fresh}) EXPECT_EQ(z.dispose(x), MgNoError);
    }
}

// Ensuring allocates or resizes, and a failed allocation leaves the handle null; moving to
// the compact zone frees the main handle.
TEST_F(MemoryTest, EnsuringAndMovingToCompact) {
    Handle e = nullptr, ec = nullptr, none = nullptr, moved = NewHandleOf("move"), old = moved;
    ASSERT_EQ(CompactEnsureHandle(&e, 3), MgNoError);
    memcpy(*e, "abc", 3);
    ExpectRows({Row(CompactEnsureHandleClear(&e, 6), MgNoError),
                Row(Contents(e, false), std::string("abc\0\0\0", 6)),
                Row(CompactEnsureHandleClear(&ec, 5), MgNoError),
                Row(Contents(ec, false), std::string(5, '\0')),
                Row((plat::FailAllocationAt(1), CompactEnsureHandle(&none, 3)), MgNoMemory),
                Row(none == nullptr, 1), Row(MemMoveToCompact(&moved), MgNoError),
                Row(MemCheckHandle(old), MgBadHandle), Row(Contents(moved, false), "move")});
    for (Handle x : {e, ec, moved}) EXPECT_EQ(CompactDisposeHandle(x), MgNoError);
}

// A disposed handle given to any operation, and a recovery that can't lead back, end in a
// failure report. Compact recovery reports before looking at its argument, even a live block;
// a compact block has no handle word to lead back to.
TEST_F(MemoryDeathTest, InvalidHandlesAreReported) {
    Handle h = MemNewHandle(2), c = CompactNewHandle(1), live = CompactNewHandle(1);
    Handle other = MemNewHandle(4), mine = MemNewHandle(4);
    MemDisposeHandle(h);
    CompactDisposeHandle(c);
    const std::function<void()> calls[] = {
        [&] { MemDisposeHandle(h); }, [&] { MemHandleSize(h); }, [&] { MemResizeHandle(h, 3); },
        [&] { MemResizeHandleClear(h, 3); }, [&] { MemHandleFlags(h); },
        [&] { MemSetHandleFlags(h, 1); }, [&] { MemIsHandle(h); },
        [&] { MemRecoverHandle(nullptr); }, [&] { CompactHandleSize(c); },
        [&] { CompactResizeHandle(c, 1); }, [&] { CompactResizeHandleClear(c, 1); },
        [&] { CompactDisposeHandle(c); }, [&] { CompactRecoverHandle(*live); },
        [&] { CompactRecoverHandle(nullptr); }, [&] { MemRecoverHandle(*live); },
        // Word 2 names a handle with other bytes.
        [&] { *reinterpret_cast<Handle*>(*mine - 8) = other, MemRecoverHandle(*mine); }};
    for (size_t i = 0; i < std::size(calls); ++i)
        EXPECT_EXIT(calls[i](), ::testing::ExitedWithCode(1), "") << i;
    for (Handle x : {other, mine}) MemDisposeHandle(x);
    CompactDisposeHandle(live);
}

constexpr int32_t kMiB = 1 << 20;

// A token names a live handle in any block of either zone (the first and last master pointer
// of each block); its top bit tells the zone. Zero, slot 0, a slot past the block, a block out
// of range, one past the last and all ones name no handle; nor does a disposed handle's token,
// and it has none itself.
TEST_F(MemoryTest, TokensAndLargeBlocks) {
    // A free master pointer is made to look live, pointing at aligned bytes: real blocks are
    // aligned, and the layer refuses an odd address as a block.
    alignas(std::max_align_t) static uint8_t bytes[16];
    for (MemZone* zone : {gMainZone, gCompactZone}) {
        for (int32_t i = 0; i < zone->masterBlockCount; ++i) {
            for (int32_t slot : {0, mgmem::kMastersPerBlock - 1}) {
                Handle h = &zone->blockTable[i]->slots[slot];
                uint8_t* const saved = std::exchange(*h, bytes);
                const uint32_t t = MemHandleToken(h);
                EXPECT_TRUE(t != 0 && t >> 31 == (zone == gCompactZone) &&
                            MemHandleFromToken(t) == h)
                    << t;
                *h = saved;
            }
        }
    }
    Handle h = MemNewHandle(1);
    const uint32_t t = MemHandleToken(h), slots = (1u << 14) - 1,
                   blocks = static_cast<uint32_t>(gMainZone->masterBlockCount) << 14;
    for (uint32_t token :
         {0u, t & ~slots, (t & ~slots) | 10001, t | (0x1FFFFu << 14), blocks | 1, 0xFFFFFFFFu})
        EXPECT_EQ(MemHandleFromToken(token), nullptr) << token;
    ExpectRows({Row(MemHandleToken(nullptr), 0),
                Row(MemHandleToken(reinterpret_cast<Handle>(gMainZone->masterBlocks)), 0),
                Row((MemDisposeHandle(h), MemHandleToken(h)), 0),
                Row(MemHandleFromToken(t) == nullptr, 1)});
    // Blocks of several MiB, which the allocator hands to the host with a large-page hint: their
    // bytes must come out exactly as with any other block, new, cleared and grown with clearing.
    // Grown with clearing, the old bytes stay and the new ones are zero. The hint takes whole
    // pages inside the range only: the bytes on both sides of a range that starts and ends inside
    // pages are untouched, and ranges with no whole page are no error.
    const std::vector<uint8_t> zeros(12 * kMiB);
    std::vector<uint8_t> pattern(12 * kMiB);
    for (int32_t i = 0; i < 12 * kMiB; ++i) pattern[i] = static_cast<uint8_t>(i * 131 + (i >> 12));
    Handle big = MemNewHandleClear(6 * kMiB + 1);
    Ptr p = MemNewPtrClear(8 * kMiB + 3);
    ASSERT_TRUE(big && p);
    EXPECT_TRUE(!memcmp(*big, zeros.data(), 6 * kMiB + 1) &&
                !memcmp(p, zeros.data(), 8 * kMiB + 3));
    memcpy(*big, pattern.data(), 6 * kMiB + 1);
    memcpy(p, pattern.data(), 8 * kMiB);
    ASSERT_EQ(MemResizeHandleClear(big, 12 * kMiB), MgNoError);
    EXPECT_TRUE(!memcmp(*big, pattern.data(), 6 * kMiB + 1) &&
                !memcmp(*big + 6 * kMiB + 1, zeros.data(), 6 * kMiB - 1));
    const int32_t ranges[][2] = {
        {1, 8 * kMiB - 2}, {4095, 2}, {0, 0}, {17, 1}, {4096 * 3 + 1, 4 * kMiB}};
    for (const auto& r : ranges) plat::AdviseLargeBlock(p + r[0], size_t(r[1]));
    EXPECT_EQ(memcmp(p, pattern.data(), 8 * kMiB), 0);
    MemDisposeHandle(big);
    MemDisposePtr(p);
}

int32_t gCallbackCalls = 0, gLastCallbackSize = 0;
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

// The texts of the checks and of the out-of-memory report, through the debug print.
TEST_F(MemoryTest, ChecksTextsAndTheOutOfMemoryRecord) {
    std::string out;
    plat::CaptureDebuggerOutput([](const char* t, void* s) { *static_cast<std::string*>(s) += t; },
                                &out);
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
    // Sound zones pass with only the allocated total in their record, and pass the checks that
    // every new block runs while checking is on.
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
    // Each damage is found by a check and ends the process through a failure report.
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
    // The record keeps the first failure: its size and data; size 0 is no record. Without one the
    // words beyond the first two are left alone.
    int32_t info[4] = {9, 9, 9, 9};
    ExpectRows({Row(MemOutOfMemoryInfo(info), 0), Row(info[0], 0), Row(info[1], 0), Row(info[2], 9),
                Row(MemSetOutOfMemory(0, 5), 0), Row(MemOutOfMemoryInfo(nullptr), 0),
                Row(MemSetOutOfMemory(40, 7), 0), Row(MemSetOutOfMemory(80, 8), 1),
                Row(MemOutOfMemoryInfo(info), 1), Row(info[0], 7), Row(info[1], 40),
                Row(info[2], 0), Row(info[3], 0),
                Row((MemClearOutOfMemory(), MemOutOfMemoryInfo(nullptr)), 0)});
    // The bytes are counted although nothing was allocated, and the master pointer is lost.
    const int32_t bytes = gBytesAllocated, freeMasters = gMainZone->freeMasterCount;
    CounterDelta counters{false};
    ExpectRows({Row((plat::FailAllocationAt(1), MemNewHandle(24)) == nullptr, 1),
                Row(RecordedSize(), 24), Row(gBytesAllocated - bytes, 24 + 16),
                Row(gMainZone->freeMasterCount, freeMasters - 1),
                Row(counters.Now().handleAllocs, 0),
                Row((plat::FailAllocationAt(1), CompactNewHandle(5)) == nullptr, 1),
                Row(RecordedSize(), 24)});
    gBytesAllocated = bytes;
    // A failed resize leaves the block, counts a resize and a move (null differs from the block)
    // and drifts the byte count.
    for (const Zone& z : kZones) {
        for (bool clear : {false, true}) {
            SCOPED_TRACE(std::string(z.name) + (clear ? " clear" : ""));
            MemClearOutOfMemory();
            Handle h = z.newHandle(4);
            memcpy(*h, "keep", 4);
            const uint8_t* bytes = *h;
            const int32_t allocated = gBytesAllocated;
            CounterDelta counters{z.compact};
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
TEST_F(MemoryTest, CallbackAsksForARetry) {
    MemSetGrowCallback(RetryUnlessNine);
    gCallbackCalls = 0;
    CounterDelta counters{false};
    Ptr p = nullptr;
    Handle h = nullptr;
    ExpectRows(
        {Row((plat::FailAllocationAt(1), p = MemNewPtr(33)) != nullptr, 1), Row(gCallbackCalls, 1),
         Row(gLastCallbackSize, 33), Row(MemOutOfMemoryInfo(nullptr), 0),
         Row((plat::FailAllocationAt(1), h = MemNewHandle(12)) != nullptr, 1),
         Row(gCallbackCalls, 2), Row(MemHandleSize(h), 12),
         Row((plat::FailAllocationAt(1), MemResizeHandle(h, 64)), MgNoError),
         Row(gLastCallbackSize, 64 + 16), Row(counters.Now().resizes, 1), Row(MemHandleSize(h), 64),
         Row(!(plat::FailAllocationAt(1), MemNewPtrClear(9)), 1), Row(RecordedSize(), 9)});
    MemDisposePtr(p);
    MemDisposeHandle(h);
}

// Every handle, in the old blocks and the new, stays valid and distinct. A new master block
// counts as a pointer of its zone; its free list passes the check.
TEST_F(MemoryTest, MasterBlocksGrowAndShrinkBack) {
    const int32_t blocks = gMainZone->masterBlockCount, freeBefore = gMainZone->freeMasterCount;
    std::vector<Handle> handles;
    for (int32_t i = 0; i <= freeBefore; ++i) handles.push_back(MemNewHandle(0));
    ExpectRows({Row(gMainZone->masterBlockCount, blocks + 1),
                Row(gMainZone->freeMasterCount, mgmem::kMastersPerBlock - 1)});
    // A handle given twice would fail its check after the first dispose.
    for (Handle h : handles) ASSERT_TRUE(!MemCheckHandle(h) && !MemDisposeHandle(h));
    MemZone* zone = gCompactZone;
    const int32_t compactBlocks = zone->masterBlockCount, ptrs = zone->ptrAllocs;
    ExpectRows({Row((plat::FailAllocationAt(1), MemGrowMasterPointers(zone)), MgNoMemory),
                Row(RecordedSize(), sizeof(mgmem::MasterBlock)),
                Row(zone->masterBlockCount, compactBlocks),
                Row(MemGrowMasterPointers(zone), MgNoError),
                Row(zone->masterBlockCount, compactBlocks + 1), Row(zone->ptrAllocs, ptrs + 1)});
    gMemChecking = 1;
    Handle h = CompactNewHandle(1);  // takes from the checked list
    ExpectRows({Row(gMainZone->freeMasterCount, freeBefore + mgmem::kMastersPerBlock),
                Row(MemCheckFreeList(gMainZone), MgNoError),
                Row(MemCheckFreeList(zone), MgNoError)});
    gMemChecking = 0;
    CompactDisposeHandle(h);
}

}  // namespace
