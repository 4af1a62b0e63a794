#include <cstddef>
#include <vector>

#include "memory_env.h"

namespace {

using HandlesTest = MemoryTest;
using HandlesDeathTest = MemoryTest;

TEST_F(HandlesTest, StartsWithThreeMainBlocksAndOneCompact) {
    EXPECT_GE(gMainZone->masterBlockCount, 3);
    EXPECT_GE(gCompactZone->masterBlockCount, 1);
    EXPECT_EQ(gMainZone->headerSize, 16);
    EXPECT_EQ(gCompactZone->headerSize, 8);
}

// Main header: size, flags and the handle; compact header: size and flags only.
TEST_F(HandlesTest, HeaderLayoutAndAccounting) {
    for (const Zone& z : kZones) {
        SCOPED_TRACE(z.name);
        const int32_t before = gBytesAllocated;
        CounterDelta counters(z.compact);
        Handle h = z.newHandle(5);
        ASSERT_NE(h, nullptr);
        EXPECT_EQ(gBytesAllocated - before, 5 + z.header);
        EXPECT_EQ(counters.Now().handleAllocs, 1);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(*h) % 8, 0u);
        uint8_t* block = *h - z.header;
        EXPECT_EQ(*reinterpret_cast<int32_t*>(block), 5);
        EXPECT_EQ(*reinterpret_cast<int32_t*>(block + 4), 0);
        if (!z.compact) {
            EXPECT_EQ(*reinterpret_cast<Handle*>(block + 8), h);
            EXPECT_EQ(MemRecoverHandle(*h), h);
        }
        EXPECT_EQ(z.size(h), 5);
        EXPECT_EQ(z.dispose(h), MgNoError);
        EXPECT_EQ(gBytesAllocated, before);

        for (int32_t size : {0, 300}) {  // 0: the header alone
            h = z.newClear(size);
            ASSERT_NE(h, nullptr);
            EXPECT_EQ(z.size(h), size);
            EXPECT_EQ(z.check(h), MgNoError);
            for (int32_t i = 0; i < size; ++i) ASSERT_EQ((*h)[i], 0) << i;
            EXPECT_EQ(z.dispose(h), MgNoError);
        }
    }
}

TEST_F(HandlesTest, NullAndNegativeArguments) {
    // A negative size fails like an allocation, without asking the allocator.
    const int32_t bytes = gBytesAllocated;
    plat::FailAllocationAt(1);
    EXPECT_EQ(MemNewHandle(-1), nullptr);
    EXPECT_EQ(MemNewPtr(1), nullptr);  // the armed failure was still waiting
    gBytesAllocated = bytes;
    EXPECT_EQ(MemDisposeHandle(nullptr), MgNoError);
    EXPECT_EQ(CompactDisposeHandle(nullptr), MgNoError);
    EXPECT_EQ(MemDisposePtr(nullptr), MgBadArgument);
    EXPECT_EQ(MemCheckPtr(nullptr), MgBadHandle);
    EXPECT_EQ(MemCheckHandle(nullptr), MgBadHandle);
}

TEST_F(HandlesTest, DisposedHandleIsInvalidUntilItsMasterIsReused) {
    Handle h = MemNewHandle(8);
    ASSERT_EQ(MemDisposeHandle(h), MgNoError);
    EXPECT_EQ(MemCheckHandle(h), MgBadHandle);
    EXPECT_EQ(MemLockHandle(h), MgBadHandle);
    EXPECT_EQ(MemUnlockHandle(h), MgBadHandle);
    // The free list is last in, first out: the next handle takes the same master pointer.
    Handle again = MemNewHandle(3);
    EXPECT_EQ(again, h);
    EXPECT_EQ(MemCheckHandle(h), MgNoError);
    EXPECT_EQ(MemHandleSize(h), 3);
    MemDisposeHandle(again);
}

TEST_F(HandlesTest, AddressesInsideAMasterBlockThatAreNoMasterPointer) {
    auto* block = reinterpret_cast<uint8_t*>(gMainZone->masterBlocks);
    // The link word itself, and an address between two master pointers.
    EXPECT_EQ(MemCheckHandle(reinterpret_cast<Handle>(block)), MgBadHandle);
    Handle h = MemNewHandle(1);
    EXPECT_EQ(MemCheckHandle(reinterpret_cast<Handle>(reinterpret_cast<uint8_t*>(h) + 1)),
              MgBadHandle);
    // A main handle is not one of the compact zone, and the other way round.
    EXPECT_EQ(CompactCheckHandle(h), MgBadHandle);
    Handle c = CompactNewHandle(1);
    EXPECT_EQ(MemCheckHandle(c), MgBadHandle);
    MemDisposeHandle(h);
    CompactDisposeHandle(c);
}

TEST_F(HandlesTest, GrowsPastAFullFreeList) {
    const int32_t blocks = gMainZone->masterBlockCount;
    const int32_t freeBefore = gMainZone->freeMasterCount;
    const int32_t needed = freeBefore + 1;
    std::vector<Handle> handles;
    for (int32_t i = 0; i < needed; ++i) {
        handles.push_back(MemNewHandle(0));
        ASSERT_NE(handles.back(), nullptr);
    }
    EXPECT_EQ(gMainZone->masterBlockCount, blocks + 1);
    EXPECT_EQ(gMainZone->freeMasterCount, mgmem::kMastersPerBlock - 1);
    // Every handle, in the old blocks and the new, stays valid and distinct.
    for (Handle h : handles) ASSERT_EQ(MemCheckHandle(h), MgNoError);
    EXPECT_EQ(MemHandleSize(handles.back()), 0);
    for (Handle h : handles) ASSERT_EQ(MemDisposeHandle(h), MgNoError);
    EXPECT_EQ(gMainZone->freeMasterCount, freeBefore + mgmem::kMastersPerBlock);
    gMemChecking = 1;
    EXPECT_EQ(MemCheckFreeList(gMainZone), MgNoError);
    gMemChecking = 0;
}

TEST_F(HandlesTest, ResizeCountsAndMoves) {
    for (const Zone& z : kZones) {
        SCOPED_TRACE(z.name);
        Handle h = z.newHandle(4);
        CounterDelta counters(z.compact);
        EXPECT_EQ(z.resize(h, 4), MgNoError);
        EXPECT_EQ(counters.Now().resizes, 1);
        // Clearing to the same size is a counted resize in the compact zone only.
        EXPECT_EQ(z.resizeClear(h, 4), MgNoError);
        const int32_t resizes = z.compact ? 2 : 1;
        EXPECT_EQ(counters.Now().resizes, resizes);
        EXPECT_EQ(counters.Now().moves, 0);
        if (!z.compact) {
            EXPECT_EQ(MemResizeHandle(h, -1), MgBadArgument);
            EXPECT_EQ(counters.Now().resizes, resizes);
            EXPECT_EQ(MemHandleSize(h), 4);
        }

        memset(*h, 0xAB, 4);
        const uint8_t* before = *h;
        ASSERT_EQ(z.resizeClear(h, 100000), MgNoError);
        EXPECT_EQ(counters.Now().resizes, resizes + 1);
        EXPECT_EQ(counters.Now().moves, *h != before ? 1 : 0);
        EXPECT_EQ(z.size(h), 100000);
        // Only the added bytes are cleared.
        for (int i = 0; i < 4; ++i) EXPECT_EQ((*h)[i], 0xAB);
        for (int i = 4; i < 100000; ++i) ASSERT_EQ((*h)[i], 0) << i;
        EXPECT_EQ(z.resizing(), nullptr);
        // The counters can be set, as a caller restores them.
        const MemZoneCounterSet set{1, 2, 3, 4};
        MemZoneCounterSet back{};
        (z.compact ? CompactSetZoneCounters : MemSetZoneCounters)(&set);
        (z.compact ? CompactZoneCounters : MemZoneCounters)(&back);
        EXPECT_EQ(memcmp(&set, &back, sizeof set), 0);
        if (!z.compact) {
            EXPECT_EQ(MemRecoverHandle(*h), h);
        }
        z.dispose(h);
    }
}

TEST_F(HandlesTest, LockFlags) {
    Handle h = MemNewHandle(1);
    EXPECT_EQ(MemLockHandle(h), MgNoError);
    EXPECT_EQ(MemHandleFlags(h), 1);
    MemSetHandleFlags(h, 6);
    EXPECT_EQ(MemLockHandle(h), MgNoError);
    EXPECT_EQ(MemHandleFlags(h), 7);
    EXPECT_EQ(MemUnlockHandle(h), MgNoError);
    EXPECT_EQ(MemHandleFlags(h), 6);
    EXPECT_EQ(MemIsHandle(h), 1);
    MemDisposeHandle(h);
}

TEST_F(HandlesTest, PointersCountInTheMainZone) {
    CounterDelta counters(false);
    Ptr p = MemNewPtr(0);
    ASSERT_NE(p, nullptr);
    p[0] = 1;  // a zero-size pointer still has one byte
    EXPECT_EQ(counters.Now().ptrAllocs, 1);
    EXPECT_EQ(MemCheckPtr(p), MgNoError);
    EXPECT_EQ(MemDisposePtr(p), MgNoError);
    p = MemNewPtrClear(300);
    for (int i = 0; i < 300; ++i) ASSERT_EQ(p[i], 0) << i;
    MemDisposePtr(p);
}

TEST_F(HandlesTest, CopySetAppendAndDuplicate) {
    for (const Zone& z : kZones) {
        SCOPED_TRACE(z.name);
        Handle a = nullptr;
        ASSERT_EQ(z.fromBytes("abc", &a, 3), MgNoError);
        Handle b = nullptr;
        ASSERT_EQ(z.copy(&b, a), MgNoError);
        ASSERT_NE(b, a);
        EXPECT_EQ(memcmp(*b, "abc", 3), 0);
        ASSERT_EQ(z.appendBytes("de", b, 2), MgNoError);
        ASSERT_EQ(z.appendHandle(b, b), MgNoError);
        ASSERT_EQ(z.size(b), 10);
        EXPECT_EQ(memcmp(*b, "abcdeabcde", 10), 0);
        EXPECT_EQ(z.setBytes(&a, "xy", -1), MgBadArgument);
        EXPECT_EQ(z.appendBytes("xy", a, -1), MgBadArgument);
        ASSERT_EQ(z.setBytes(&a, "xy", 0), MgNoError);
        EXPECT_EQ(z.size(a), 0);
        ASSERT_EQ(z.setBytes(&a, "xy", 2), MgNoError);
        ASSERT_EQ(z.copy(&b, a), MgNoError);
        EXPECT_EQ(z.size(b), 2);

        Handle original = a;
        ASSERT_EQ(z.duplicate(&a), MgNoError);
        EXPECT_NE(a, original);
        EXPECT_EQ(z.check(original), MgNoError);
        EXPECT_EQ(memcmp(*a, "xy", 2), 0);
        Handle c = a;  // making one from bytes always makes a new one
        ASSERT_EQ(z.fromBytes("q", &c, 1), MgNoError);
        EXPECT_NE(c, a);

        ASSERT_EQ(z.copy(&b, nullptr), MgNoError);
        EXPECT_EQ(b, nullptr);
        for (Handle x : {a, original, c}) EXPECT_EQ(z.dispose(x), MgNoError);
    }
}

TEST_F(HandlesTest, MoveToCompact) {
    Handle h = nullptr;
    ASSERT_EQ(MemHandleFromBytes("move", &h, 4), MgNoError);
    Handle old = h;
    ASSERT_EQ(MemMoveToCompact(&h), MgNoError);
    EXPECT_EQ(MemCheckHandle(old), MgBadHandle);
    EXPECT_EQ(CompactCheckHandle(h), MgNoError);
    EXPECT_EQ(CompactHandleSize(h), 4);
    EXPECT_EQ(memcmp(*h, "move", 4), 0);
    CompactDisposeHandle(h);
}

TEST_F(HandlesDeathTest, InvalidHandlesAreReported) {
    Handle h = MemNewHandle(2);
    MemDisposeHandle(h);
    EXPECT_EXIT(MemDisposeHandle(h), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(MemHandleSize(h), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(MemResizeHandle(h, 3), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(MemResizeHandleClear(h, 3), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(MemHandleFlags(h), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(MemSetHandleFlags(h, 1), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(MemIsHandle(h), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(MemRecoverHandle(nullptr), ::testing::ExitedWithCode(1), "");
}

TEST_F(HandlesDeathTest, RecoverNeedsAHeaderThatLeadsBack) {
    Handle h = MemNewHandle(4);
    Handle other = MemNewHandle(4);
    *reinterpret_cast<Handle*>(*h - 8) = other;  // word 2 names a handle with other bytes
    EXPECT_EXIT(MemRecoverHandle(*h), ::testing::ExitedWithCode(1), "");
    *reinterpret_cast<Handle*>(*h - 8) = h;
    MemDisposeHandle(h);
    MemDisposeHandle(other);
}

TEST_F(HandlesTest, ValidityRemembersTheLastTwoBlocksFound) {
    MemZone* zone = gMainZone;
    ASSERT_GE(zone->masterBlockCount, 3);
    mgmem::MasterBlock* blocks[3] = {zone->blockTable[0], zone->blockTable[1], zone->blockTable[2]};
    zone->recentBlock[0] = zone->recentBlock[1] = nullptr;
    // Checking a free master pointer still finds (and remembers) its block; then fails.
    for (mgmem::MasterBlock* b : blocks) {
        Handle h = &b->slots[5];
        uint8_t* saved = *h;
        // Real blocks are aligned, and the layer refuses an odd address as a block.
        alignas(std::max_align_t) uint8_t fake[16];
        *h = fake;
        EXPECT_EQ(MemCheckHandle(h), MgNoError);
        *h = saved;
    }
    // Three walks over two places: the last two blocks found are the ones remembered.
    EXPECT_TRUE((zone->recentBlock[0] == blocks[1] && zone->recentBlock[1] == blocks[2]) ||
                (zone->recentBlock[0] == blocks[2] && zone->recentBlock[1] == blocks[1]));
    // The last address of a block is its final master pointer; the word after it is not.
    Handle last = &blocks[0]->slots[mgmem::kMastersPerBlock - 1];
    EXPECT_EQ(mgmem::FindMasterBlock(zone, last), blocks[0]);
    EXPECT_EQ(mgmem::FindMasterBlock(zone, last + 1) == blocks[0], false);
}

}  // namespace
