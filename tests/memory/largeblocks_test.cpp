// Blocks of several MiB, which the allocator hands to the host with a large-page hint: their
// bytes must come out exactly as with any other block, new, cleared and grown with clearing.
#include <string.h>

#include "memory_env.h"
#include "platform/platform.h"

namespace {

using LargeBlocksTest = MemoryTest;

constexpr int32_t kMiB = 1 << 20;

uint8_t Pattern(int32_t i) {
    return static_cast<uint8_t>(i * 131 + (i >> 12));
}

void Fill(uint8_t* p, int32_t from, int32_t to) {
    for (int32_t i = from; i < to; ++i) p[i] = Pattern(i);
}

// The first offset in [from, to) that doesn't hold the pattern, or -1.
int32_t FirstMismatch(const uint8_t* p, int32_t from, int32_t to) {
    for (int32_t i = from; i < to; ++i)
        if (p[i] != Pattern(i)) return i;
    return -1;
}

TEST_F(LargeBlocksTest, ClearedLargeBlocksAreZeroThroughout) {
    Handle h = MemNewHandleClear(6 * kMiB + 1);
    Ptr p = MemNewPtrClear(5 * kMiB + 3);
    ASSERT_NE(h, nullptr);
    ASSERT_NE(p, nullptr);
    for (int32_t i = 0; i < 6 * kMiB + 1; ++i) ASSERT_EQ((*h)[i], 0) << i;
    for (int32_t i = 0; i < 5 * kMiB + 3; ++i) ASSERT_EQ(p[i], 0) << i;
    // Grown with clearing: the old bytes stay, the new ones are zero.
    Fill(*h, 0, 6 * kMiB + 1);
    ASSERT_EQ(MemResizeHandleClear(h, 12 * kMiB), MgNoError);
    EXPECT_EQ(FirstMismatch(*h, 0, 6 * kMiB + 1), -1);
    for (int32_t i = 6 * kMiB + 1; i < 12 * kMiB; ++i) ASSERT_EQ((*h)[i], 0) << i;
    MemDisposeHandle(h);
    MemDisposePtr(p);
}

// The hint takes whole pages inside the range only: the bytes on both sides of a range that
// starts and ends inside pages are untouched, and ranges with no whole page are no error.
TEST_F(LargeBlocksTest, HintLeavesPartialPagesAlone) {
    const int32_t size = 8 * kMiB;
    Ptr p = MemNewPtr(size);
    ASSERT_NE(p, nullptr);
    Fill(p, 0, size);
    const struct {
        int32_t offset, length;
    } ranges[] = {{1, size - 2}, {4095, 2}, {0, 0}, {17, 1}, {4096 * 3 + 1, 4 * kMiB}};
    for (const auto& r : ranges) plat::AdviseLargeBlock(p + r.offset, size_t(r.length));
    EXPECT_EQ(FirstMismatch(p, 0, size), -1);
    MemDisposePtr(p);
}

}  // namespace
