#include "memory_env.h"

namespace {

using CompactTest = MemoryTest;
using CompactDeathTest = MemoryTest;

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
    for (Handle x : {h, c}) EXPECT_EQ(CompactDisposeHandle(x), MgNoError);
    // A failed allocation leaves the handle null.
    h = nullptr;
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
