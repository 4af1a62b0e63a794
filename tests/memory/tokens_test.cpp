#include <cstddef>

#include "memory_env.h"

namespace {

using TokensTest = MemoryTest;

// Zero, slot 0, a slot past the block, a block out of range, one past the last and all ones
// name no handle; nor does a disposed handle's token, and it has none itself.
TEST_F(TokensTest, RejectsTokensOfNoLiveHandle) {
    Handle h = MemNewHandle(1);
    const uint32_t t = MemHandleToken(h), slots = (1u << 14) - 1;
    const uint32_t tokens[] = {0,
                               t & ~slots,
                               (t & ~slots) | 10001,
                               t | (0x1FFFFu << 14),
                               static_cast<uint32_t>(gMainZone->masterBlockCount) << 14 | 1,
                               0xFFFFFFFFu};
    for (uint32_t token : tokens) EXPECT_EQ(MemHandleFromToken(token), nullptr) << token;
    EXPECT_EQ(MemHandleToken(nullptr), 0u);
    EXPECT_EQ(MemHandleToken(reinterpret_cast<Handle>(gMainZone->masterBlocks)), 0u);
    MemDisposeHandle(h);
    EXPECT_EQ(MemHandleToken(h), 0u);
    EXPECT_EQ(MemHandleFromToken(t), nullptr);
}

// The first and last master pointer of each block of both zones; the top bit tells the zone.
// Real blocks are aligned, and the layer refuses an odd address as a block.
TEST_F(TokensTest, NamesHandlesInEveryBlock) {
    for (MemZone* zone : {gMainZone, gCompactZone}) {
        for (int32_t i = 0; i < zone->masterBlockCount; ++i) {
            for (int32_t slot : {0, mgmem::kMastersPerBlock - 1}) {
                Handle h = &zone->blockTable[i]->slots[slot];
                uint8_t* saved = *h;
                alignas(std::max_align_t) uint8_t fake[16];
                *h = fake;  // live for the test's purposes
                const uint32_t t = MemHandleToken(h);
                EXPECT_TRUE(t != 0 && t >> 31 == (zone == gCompactZone) &&
                            MemHandleFromToken(t) == h)
                    << t;
                *h = saved;
            }
        }
    }
}

}  // namespace
