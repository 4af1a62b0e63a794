// Sized blocks against a model: random makes, resizes and frees across every slab class and
// past the slabs' limit, first mostly making (slabs fill up) and then mostly freeing (slabs
// empty into the pool and serve other classes). Every live block keeps its bytes, a resize
// keeps those both sizes hold, and the live count follows.
#include "platform/smallblocks.h"

#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>
#include <random>
#include <vector>

#include "platform/faults.h"

namespace {

struct Block {
    uint8_t* bytes;
    size_t size;
    uint8_t fill;
};

bool Holds(const Block& b, size_t n) {
    return std::all_of(b.bytes, b.bytes + n, [&](uint8_t x) { return x == b.fill; });
}

TEST(SizedBlocks, KeepTheirBytesThroughMakesResizesAndFrees) {
    std::mt19937 random(2024);
    auto size = [&] { return random() % 8 ? 1 + random() % 1100 : 1 + random() % 5000; };
    std::vector<Block> live;
    const int64_t start = plat::LiveBlockCount();
    constexpr int kSteps = 40000;
    for (int step = 0; step < kSteps; ++step) {
        const uint32_t roll = random() % 6;
        const bool make = live.empty() || roll < (step < kSteps / 2 ? 3u : 1u);
        const uint8_t fill = static_cast<uint8_t>(step);
        // A new block starts empty and is then made like a resize.
        const size_t at = make ? live.size() : random() % live.size();
        if (make) live.push_back({nullptr, 0, 0});
        Block& b = live[at];
        ASSERT_TRUE(Holds(b, b.size)) << step;
        if (make || roll % 2) {
            const size_t n = size();
            auto* p = static_cast<uint8_t*>(make ? plat::MallocSized(n)
                                                 : plat::ReallocSized(b.bytes, b.size, n));
            ASSERT_NE(p, nullptr) << step;
            b.bytes = p;
            ASSERT_TRUE(Holds(b, n < b.size ? n : b.size)) << step;
            memset(p, fill, n);
            b = {p, n, fill};
        } else {
            plat::FreeSized(b.bytes, b.size);
            live[at] = live.back();
            live.pop_back();
        }
        ASSERT_EQ(plat::LiveBlockCount() - start, int64_t(live.size())) << step;
    }
    for (const Block& b : live) {
        ASSERT_TRUE(Holds(b, b.size));
        plat::FreeSized(b.bytes, b.size);
    }
    EXPECT_EQ(plat::LiveBlockCount(), start);
}

}  // namespace
