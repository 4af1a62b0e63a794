#include <cstddef>
#include <vector>

#include "memory_env.h"

namespace {

using TokensTest = MemoryTest;

TEST_F(TokensTest, RoundTripInBothZones) {
    std::vector<Handle> handles;
    for (int i = 0; i < 50; ++i) handles.push_back(kZones[i % 2].newHandle(i));
    std::vector<uint32_t> tokens;
    for (Handle h : handles) {
        uint32_t t = MemHandleToken(h);
        ASSERT_NE(t, 0u);
        EXPECT_EQ(MemHandleFromToken(t), h);
        for (uint32_t other : tokens) ASSERT_NE(other, t);
        tokens.push_back(t);
    }
    for (size_t i = 0; i < handles.size(); ++i) {
        kZones[i % 2].dispose(handles[i]);
        EXPECT_EQ(MemHandleFromToken(tokens[i]), nullptr);
        EXPECT_EQ(MemHandleToken(handles[i]), 0u);
    }
}

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
        {"all ones", 0xFFFFFFFFu},
    };
    for (const Case& c : cases) EXPECT_EQ(MemHandleFromToken(c.token), nullptr) << c.what;
    EXPECT_EQ(MemHandleToken(nullptr), 0u);
    EXPECT_EQ(MemHandleToken(reinterpret_cast<Handle>(gMainZone->masterBlocks)), 0u);
    MemDisposeHandle(h);
}

TEST_F(TokensTest, NamesHandlesInEveryBlock) {
    // The first master pointer of each block, including the links' last ones.
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
                EXPECT_EQ(MemHandleFromToken(t), h);
                *h = saved;
            }
        }
    }
}

}  // namespace
