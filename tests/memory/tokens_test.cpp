#include <cstddef>
#include <vector>

#include "memory_env.h"

namespace {

using TokensTest = MemoryTest;

TEST_F(TokensTest, RejectsTokensOfNoLiveHandle) {
    Handle h = MemNewHandle(1);
    const uint32_t t = MemHandleToken(h);
    const uint32_t slotMask = (1u << 14) - 1;
    struct Case {
        const char* what;
        uint32_t token;
    } cases[] = {
        {"zero", 0},
        {"slot 0", t & ~slotMask},
        {"slot past the block", (t & ~slotMask) | 10001},
        {"block out of range", t | (0x1FFFFu << 14)},
        {"block one past the last", static_cast<uint32_t>(gMainZone->masterBlockCount) << 14 | 1},
        {"all ones", 0xFFFFFFFFu},
    };
    for (const Case& c : cases) EXPECT_EQ(MemHandleFromToken(c.token), nullptr) << c.what;
    EXPECT_EQ(MemHandleToken(nullptr), 0u);
    EXPECT_EQ(MemHandleToken(reinterpret_cast<Handle>(gMainZone->masterBlocks)), 0u);
    // A disposed handle has no token, and its token names nothing.
    MemDisposeHandle(h);
    EXPECT_EQ(MemHandleToken(h), 0u);
    EXPECT_EQ(MemHandleFromToken(t), nullptr);
}

TEST_F(TokensTest, NamesHandlesInEveryBlock) {
    // The first and last master pointer of each block of both zones; the top bit tells the zone.
    for (MemZone* zone : {gMainZone, gCompactZone}) {
        for (int32_t i = 0; i < zone->masterBlockCount; ++i) {
            mgmem::MasterBlock* block = zone->blockTable[i];
            for (int32_t slot : {0, mgmem::kMastersPerBlock - 1}) {
                Handle h = &block->slots[slot];
                uint8_t* saved = *h;
                // Real blocks are aligned, and the layer refuses an odd address as a block.
                alignas(std::max_align_t) uint8_t fake[16];
                *h = fake;  // live for the test's purposes
                uint32_t t = MemHandleToken(h);
                EXPECT_NE(t, 0u);
                EXPECT_EQ(t >> 31, zone == gCompactZone ? 1u : 0u);
                EXPECT_EQ(MemHandleFromToken(t), h);
                *h = saved;
            }
        }
    }
}

}  // namespace
