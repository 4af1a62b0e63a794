// Handles and pointers of both zones: headers, accounting, validity, resizing, copies, tokens.
#include <cstddef>
#include <functional>
#include <vector>

#include "memory_env.h"
#include "platform/platform.h"
#include "support/rows.h"

namespace {

using namespace mgtest;
using HandlesTest = MemoryTest;
using HandlesDeathTest = MemoryTest;
using TokensTest = MemoryTest;
using LargeBlocksTest = MemoryTest;

// Makes a free master pointer look live (pointing at aligned bytes) for the scope: real blocks
// are aligned, and the layer refuses an odd address as a block.
struct FakeLive {
    Handle h;
    uint8_t* saved;
    alignas(std::max_align_t) uint8_t bytes[16];
    explicit FakeLive(Handle handle) : h(handle), saved(*handle) { *h = bytes; }
    ~FakeLive() { *h = saved; }
};

// Main header: size, flags and the handle; compact header: size and flags only. Every handle
// counts its bytes and its header, size 0 the header alone. Three main master blocks and one
// compact one to start with.
TEST_F(HandlesTest, HeaderLayoutAndAccounting) {
    EXPECT_TRUE(gMainZone->masterBlockCount >= 3 && gCompactZone->masterBlockCount >= 1);
    for (const Zone& z : kZones) {
        SCOPED_TRACE(z.name);
        const int32_t before = gBytesAllocated;
        CounterDelta counters(z.compact);
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
}

// A negative size fails like an allocation, without asking the allocator: the armed failure
// is still waiting for the pointer. The link word of a master block, an address between two
// master pointers, the word after a block's last master pointer, and a handle of the other
// zone are no handles.
TEST_F(HandlesTest, NullNegativeDisposedAndForeignHandles) {
    const int32_t bytes = gBytesAllocated;
    EXPECT_TRUE((plat::FailAllocationAt(1), MemNewHandle(-1)) == nullptr &&
                MemNewPtr(1) == nullptr);
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
    MemDisposeHandle(h);
    CompactDisposeHandle(c);
}

// Every handle, in the old blocks and the new, stays valid and distinct.
TEST_F(HandlesTest, GrowsPastAFullFreeList) {
    const int32_t blocks = gMainZone->masterBlockCount, freeBefore = gMainZone->freeMasterCount;
    std::vector<Handle> handles;
    for (int32_t i = 0; i <= freeBefore; ++i) handles.push_back(MemNewHandle(0));
    ExpectRows({Row(gMainZone->masterBlockCount, blocks + 1),
                Row(gMainZone->freeMasterCount, mgmem::kMastersPerBlock - 1)});
    // A handle given twice would fail its check after the first dispose.
    for (Handle h : handles) ASSERT_TRUE(!MemCheckHandle(h) && !MemDisposeHandle(h));
    gMemChecking = 1;
    ExpectRows({Row(gMainZone->freeMasterCount, freeBefore + mgmem::kMastersPerBlock),
                Row(MemCheckFreeList(gMainZone), MgNoError)});
    gMemChecking = 0;
}

// Clearing to the same size is a counted resize in the compact zone only; the main zone
// refuses a negative size, the compact one shrinks to its size word (no sign test) and fails
// a total too small for it as an allocation would. Only added bytes are cleared.
TEST_F(HandlesTest, ResizeCountsAndMoves) {
    for (const Zone& z : kZones) {
        SCOPED_TRACE(z.name);
        Handle h = z.newHandle(4);
        CounterDelta counters(z.compact);
        ExpectRows({Row(z.resize(h, 4), MgNoError), Row(counters.Now().resizes, 1),
                    Row(z.resizeClear(h, 4), MgNoError),
                    Row(counters.Now().resizes, z.compact ? 2 : 1), Row(counters.Now().moves, 0),
                    Row(z.resize(h, -1), z.compact ? MgNoError : MgBadArgument),
                    Row(z.size(h), z.compact ? -1 : 4), Row(z.resize(h, 4), MgNoError),
                    Row(z.compact ? CompactResizeHandle(h, -100) : MgNoMemory, MgNoMemory),
                    Row(z.size(h), 4), Row(counters.Now().resizes, z.compact ? 5 : 2)});
        memset(*h, 0xAB, 4);
        const uint8_t* before = *h;
        CounterDelta grown(z.compact);
        ASSERT_EQ(z.resizeClear(h, 100000), MgNoError);
        EXPECT_EQ(Contents(h, !z.compact), std::string(4, '\xAB') + std::string(99996, '\0'));
        ExpectRows({Row(grown.Now().resizes, 1), Row(grown.Now().moves, *h != before ? 1 : 0),
                    Row(z.resizing() == nullptr, 1),
                    Row(z.compact || MemRecoverHandle(*h) == h, 1)});
        z.dispose(h);
    }
}

// Locking sets flag bit 0 and keeps the others; a zero-size pointer still has one byte.
TEST_F(HandlesTest, LockFlagsAndPointers) {
    Handle h = MemNewHandle(1);
    CounterDelta counters(false);
    Ptr p = MemNewPtr(0);
    ASSERT_NE(p, nullptr);
    p[0] = 1;
    ExpectRows({Row(MemLockHandle(h), MgNoError), Row(MemHandleFlags(h), 1),
                Row((MemSetHandleFlags(h, 6), MemLockHandle(h)), MgNoError),
                Row(MemHandleFlags(h), 7), Row(MemUnlockHandle(h), MgNoError),
                Row(MemHandleFlags(h), 6), Row(MemIsHandle(h), 1), Row(counters.Now().ptrAllocs, 1),
                Row(MemCheckPtr(p), MgNoError), Row(MemDisposePtr(p), MgNoError)});
    MemDisposeHandle(h);
}

// Making one from bytes always makes a new handle; a copy of null is null.
TEST_F(HandlesTest, CopySetAppendDuplicateAndEnsure) {
    for (const Zone& z : kZones) {
        SCOPED_TRACE(z.name);
        Handle a = nullptr, b = nullptr;
        ASSERT_EQ(z.fromBytes("abc", &a, 3), MgNoError);
        ASSERT_EQ(z.copy(&b, a), MgNoError);
        ASSERT_NE(b, a);
        ExpectRows({Row(z.appendBytes("de", b, 2), MgNoError), Row(z.appendHandle(b, b), MgNoError),
                    Row(Contents(b, !z.compact), "abcdeabcde"),
                    Row(z.setBytes(&a, "xy", -1), MgBadArgument),
                    Row(z.appendBytes("xy", a, -1), MgBadArgument),
                    Row(z.setBytes(&a, "xy", 0), MgNoError), Row(z.size(a), 0),
                    Row(z.setBytes(&a, "xy", 2), MgNoError), Row(z.copy(&b, a), MgNoError),
                    Row(Contents(b, !z.compact), "xy")});
        Handle original = a, fresh = a;
        ASSERT_EQ(z.duplicate(&a), MgNoError);
        ASSERT_EQ(z.fromBytes("q", &fresh, 1), MgNoError);
        ExpectRows({Row(a != original, 1), Row(z.check(original), MgNoError),
                    Row(Contents(a, !z.compact), "xy"), Row(fresh != original, 1),
                    Row(z.copy(&b, nullptr), MgNoError), Row(b == nullptr, 1)});
        for (Handle x : {a, original, fresh}) EXPECT_EQ(z.dispose(x), MgNoError);
    }
    // Ensuring allocates or resizes, and a failed allocation leaves the handle null; moving to
    // the compact zone frees the main handle.
    Handle h = nullptr, c = nullptr, none = nullptr, moved = NewHandleOf("move"), old = moved;
    ASSERT_EQ(CompactEnsureHandle(&h, 3), MgNoError);
    memcpy(*h, "abc", 3);
    ExpectRows({Row(CompactEnsureHandleClear(&h, 6), MgNoError),
                Row(Contents(h, false), std::string("abc\0\0\0", 6)),
                Row(CompactEnsureHandleClear(&c, 5), MgNoError),
                Row(Contents(c, false), std::string(5, '\0')),
                Row((plat::FailAllocationAt(1), CompactEnsureHandle(&none, 3)), MgNoMemory),
                Row(none == nullptr, 1), Row(MemMoveToCompact(&moved), MgNoError),
                Row(MemCheckHandle(old), MgBadHandle), Row(Contents(moved, false), "move")});
    for (Handle x : {h, c, moved}) EXPECT_EQ(CompactDisposeHandle(x), MgNoError);
}

// A disposed handle given to any operation, and a recovery that can't lead back, end in a
// failure report. Compact recovery reports before looking at its argument, even a live block;
// a compact block has no handle word to lead back to.
TEST_F(HandlesDeathTest, InvalidHandlesAreReported) {
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
        [&] {
            *reinterpret_cast<Handle*>(*mine - 8) = other;
            MemRecoverHandle(*mine);
        }};
    for (size_t i = 0; i < std::size(calls); ++i)
        EXPECT_EXIT(calls[i](), ::testing::ExitedWithCode(1), "") << i;
    for (Handle x : {other, mine}) MemDisposeHandle(x);
    CompactDisposeHandle(live);
}

// A token names a live handle in any block of either zone (the first and last master pointer
// of each block); its top bit tells the zone. Zero, slot 0, a slot past the block, a block out
// of range, one past the last and all ones name no handle; nor does a disposed handle's token,
// and it has none itself.
TEST_F(TokensTest, NameLiveHandlesOnly) {
    for (MemZone* zone : {gMainZone, gCompactZone}) {
        for (int32_t i = 0; i < zone->masterBlockCount; ++i) {
            for (int32_t slot : {0, mgmem::kMastersPerBlock - 1}) {
                FakeLive live(&zone->blockTable[i]->slots[slot]);
                const uint32_t t = MemHandleToken(live.h);
                EXPECT_TRUE(t != 0 && t >> 31 == (zone == gCompactZone) &&
                            MemHandleFromToken(t) == live.h)
                    << t;
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
}

// Blocks of several MiB, which the allocator hands to the host with a large-page hint: their
// bytes must come out exactly as with any other block, new, cleared and grown with clearing.
constexpr int32_t kMiB = 1 << 20;

// Grown with clearing, the old bytes stay and the new ones are zero. The hint takes whole
// pages inside the range only: the bytes on both sides of a range that starts and ends inside
// pages are untouched, and ranges with no whole page are no error.
TEST_F(LargeBlocksTest, BytesComeOutAsWithAnyBlock) {
    const std::vector<uint8_t> zeros(12 * kMiB);
    std::vector<uint8_t> pattern(12 * kMiB);
    for (int32_t i = 0; i < 12 * kMiB; ++i) pattern[i] = static_cast<uint8_t>(i * 131 + (i >> 12));
    Handle h = MemNewHandleClear(6 * kMiB + 1);
    Ptr p = MemNewPtrClear(5 * kMiB + 3);
    ASSERT_TRUE(h && p);
    EXPECT_TRUE(!memcmp(*h, zeros.data(), 6 * kMiB + 1) && !memcmp(p, zeros.data(), 5 * kMiB + 3));
    memcpy(*h, pattern.data(), 6 * kMiB + 1);
    ASSERT_EQ(MemResizeHandleClear(h, 12 * kMiB), MgNoError);
    EXPECT_TRUE(!memcmp(*h, pattern.data(), 6 * kMiB + 1) &&
                !memcmp(*h + 6 * kMiB + 1, zeros.data(), 6 * kMiB - 1));
    MemDisposeHandle(h);
    MemDisposePtr(p);
    Ptr q = MemNewPtr(8 * kMiB);
    ASSERT_NE(q, nullptr);
    memcpy(q, pattern.data(), 8 * kMiB);
    const int32_t ranges[][2] = {
        {1, 8 * kMiB - 2}, {4095, 2}, {0, 0}, {17, 1}, {4096 * 3 + 1, 4 * kMiB}};
    for (const auto& r : ranges) plat::AdviseLargeBlock(q + r[0], size_t(r[1]));
    EXPECT_EQ(memcmp(q, pattern.data(), 8 * kMiB), 0);
    MemDisposePtr(q);
}

}  // namespace
