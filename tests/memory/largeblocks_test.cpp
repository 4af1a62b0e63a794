// Blocks of several MiB, which the allocator hands to the host with a large-page hint: their
// bytes must come out exactly as with any other block, new, cleared and grown with clearing.
#include <string.h>

#include <vector>

#include "memory_env.h"
#include "platform/platform.h"

namespace {

using LargeBlocksTest = MemoryTest;

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
    EXPECT_EQ(memcmp(*h, zeros.data(), 6 * kMiB + 1), 0);
    EXPECT_EQ(memcmp(p, zeros.data(), 5 * kMiB + 3), 0);
    memcpy(*h, pattern.data(), 6 * kMiB + 1);
    ASSERT_EQ(MemResizeHandleClear(h, 12 * kMiB), MgNoError);
    EXPECT_EQ(memcmp(*h, pattern.data(), 6 * kMiB + 1), 0);
    EXPECT_EQ(memcmp(*h + 6 * kMiB + 1, zeros.data(), 6 * kMiB - 1), 0);
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
