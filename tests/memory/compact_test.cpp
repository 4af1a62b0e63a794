#include "memory_env.h"

namespace {

using CompactTest = MemoryTest;
using CompactDeathTest = MemoryTest;

TEST_F(CompactTest, HeaderIsSizeAndFlagsOnly) {
    const int32_t before = gBytesAllocated;
    CounterDelta counters(true);
    Handle h = CompactNewHandle(7);
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(counters.Now().handleAllocs, 1);
    EXPECT_EQ(gBytesAllocated - before, 7 + 8);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(*h) % 8, 0u);
    EXPECT_EQ(*reinterpret_cast<int32_t*>(*h - 8), 7);
    EXPECT_EQ(*reinterpret_cast<int32_t*>(*h - 4), 0);
    EXPECT_EQ(CompactHandleSize(h), 7);
    EXPECT_EQ(CompactDisposeHandle(h), MgNoError);
    EXPECT_EQ(gBytesAllocated, before);
}

TEST_F(CompactTest, ResizeClearOfAnUnchangedSizeStillCountsAResize) {
    Handle h = CompactNewHandle(4);
    CounterDelta counters(true);
    EXPECT_EQ(CompactResizeHandleClear(h, 4), MgNoError);
    EXPECT_EQ(counters.Now().resizes, 1);
    EXPECT_EQ(counters.Now().moves, 0);
    CompactDisposeHandle(h);
}

TEST_F(CompactTest, ResizeTakesANegativeSize) {
    Handle h = CompactNewHandle(4);
    CounterDelta counters(true);
    // No sign test: the block shrinks to its size word, as the shared resize does it.
    EXPECT_EQ(CompactResizeHandle(h, -1), MgNoError);
    EXPECT_EQ(CompactHandleSize(h), -1);
    EXPECT_EQ(counters.Now().resizes, 1);
    EXPECT_EQ(CompactResizeHandle(h, 2), MgNoError);
    EXPECT_EQ(CompactHandleSize(h), 2);
    // A total too small for the size word fails as an allocation would.
    EXPECT_EQ(CompactResizeHandle(h, -100), MgNoMemory);
    EXPECT_EQ(CompactHandleSize(h), 2);
    CompactDisposeHandle(h);
}

TEST_F(CompactTest, EnsureAllocatesOrResizes) {
    Handle h = nullptr;
    ASSERT_EQ(CompactEnsureHandle(&h, 3), MgNoError);
    ASSERT_NE(h, nullptr);
    memcpy(*h, "abc", 3);
    ASSERT_EQ(CompactEnsureHandleClear(&h, 6), MgNoError);
    EXPECT_EQ(memcmp(*h, "abc\0\0\0", 6), 0);
    Handle c = nullptr;
    ASSERT_EQ(CompactEnsureHandleClear(&c, 5), MgNoError);
    EXPECT_EQ(memcmp(*c, "\0\0\0\0\0", 5), 0);
    ASSERT_EQ(CompactAppendHandle(h, c), MgNoError);
    ASSERT_EQ(CompactAppendBytes("!", c, 1), MgNoError);
    EXPECT_EQ(CompactHandleSize(c), 12);
    EXPECT_EQ(memcmp(*c + 5, "abc\0\0\0!", 7), 0);
    Handle d = c;
    ASSERT_EQ(CompactDuplicateHandle(&d), MgNoError);
    EXPECT_NE(d, c);
    ASSERT_EQ(CompactCopyHandle(&h, d), MgNoError);
    EXPECT_EQ(CompactHandleSize(h), 12);
    ASSERT_EQ(CompactSetHandleBytes(&h, "z", 1), MgNoError);
    Handle e = h;
    ASSERT_EQ(CompactHandleFromBytes("q", &e, 1), MgNoError);
    EXPECT_NE(e, h);
    for (Handle x : {h, c, d, e}) EXPECT_EQ(CompactDisposeHandle(x), MgNoError);
}

TEST_F(CompactTest, EnsureReportsAFailedAllocation) {
    Handle h = nullptr;
    plat::FailAllocationAt(1);
    EXPECT_EQ(CompactEnsureHandle(&h, 3), MgNoMemory);
    EXPECT_EQ(h, nullptr);
}

TEST_F(CompactDeathTest, Reports) {
    Handle h = CompactNewHandle(1);
    CompactDisposeHandle(h);
    EXPECT_EXIT(CompactHandleSize(h), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(CompactResizeHandle(h, 1), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(CompactResizeHandleClear(h, 1), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(CompactDisposeHandle(h), ::testing::ExitedWithCode(1), "");
    Handle live = CompactNewHandle(1);
    // Reports before looking at its argument, even a live block.
    EXPECT_EXIT(CompactRecoverHandle(*live), ::testing::ExitedWithCode(1), "");
    EXPECT_EXIT(CompactRecoverHandle(nullptr), ::testing::ExitedWithCode(1), "");
    // A compact block has no handle word to lead back.
    EXPECT_EXIT(MemRecoverHandle(*live), ::testing::ExitedWithCode(1), "");
    CompactDisposeHandle(live);
}

}  // namespace
