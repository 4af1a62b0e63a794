// 32-bit tokens for live handles, for the 32-bit words of file formats that once held
// addresses.
//
// Token bits: 31 = zone (0 main, 1 compact), 30..14 = master block index in creation order,
// 13..0 = slot + 1. The low field is never 0, so no token of a handle is 0.
#include <initializer_list>

#include "memory/zone.h"
#include "mg/dbgtools.h"

MG_SOURCE_IDENTITY("mgsource\\memory\\tokens.cpp", "$Revision: 1 $");

using namespace mgmem;

namespace {

constexpr uint32_t kSlotBits = 14;
constexpr uint32_t kSlotMask = (1u << kSlotBits) - 1;
constexpr uint32_t kIndexMask = (1u << 17) - 1;
static_assert(kMastersPerBlock <= static_cast<int32_t>(kSlotMask));

// Index of `block` in the zone's creation-order table, or -1. The two blocks asked for last
// answer without a search; the table is searched newest first, the likeliest.
int32_t BlockIndex(MemZone* zone, MasterBlock* block) {
    for (int32_t i = 0; i < 2; ++i)
        if (zone->tokenBlock[i] == block) return zone->tokenIndex[i];
    for (int32_t i = zone->masterBlockCount - 1; i >= 0; --i) {
        if (zone->blockTable[i] != block) continue;
        zone->tokenBlock[1] = zone->tokenBlock[0];
        zone->tokenIndex[1] = zone->tokenIndex[0];
        zone->tokenBlock[0] = block;
        zone->tokenIndex[0] = i;
        return i;
    }
    return -1;
}

uint32_t TokenIn(MemZone* zone, MasterBlock* block, Handle h) {
    const uintptr_t m = reinterpret_cast<uintptr_t>(*h);
    if (m == 0 || (m & 1) != 0) return 0;
    const int32_t i = BlockIndex(zone, block);
    if (i < 0) return 0;
    const uint32_t slot = static_cast<uint32_t>(h - block->slots);
    return (static_cast<uint32_t>(zone->tokenZone) << 31) |
           (static_cast<uint32_t>(i) << kSlotBits) | (slot + 1);
}

// The remembered blocks of both zones first, then the chains, as the validity test looks.
MasterBlock* BlockOfEither(Handle h, MemZone** zone) {
    const uintptr_t a = reinterpret_cast<uintptr_t>(h);
    for (MemZone* z : {gMainZone, gCompactZone}) {
        for (MasterBlock* b : z->recentBlock) {
            const uintptr_t base = reinterpret_cast<uintptr_t>(b);
            if (b && a > base && a - base <= kMasterSpan) {
                *zone = z;
                return b;
            }
        }
    }
    for (MemZone* z : {gMainZone, gCompactZone}) {
        if (MasterBlock* b = WalkMasterBlocks(z, a)) {
            *zone = z;
            return b;
        }
    }
    return nullptr;
}

}  // namespace

extern "C" {

uint32_t MemHandleToken(Handle h) {
    if (!h || !gMainZone) return 0;
    const uintptr_t a = reinterpret_cast<uintptr_t>(h);
    if (a & (sizeof(void*) - 1)) return 0;
    // A handle of a run lies in the main-zone block whose index was asked for last.
    MasterBlock* last = gMainZone->tokenBlock[0];
    if (last && a - reinterpret_cast<uintptr_t>(last) - 1 < kMasterSpan) {
        const uintptr_t m = reinterpret_cast<uintptr_t>(*h);
        if (m == 0 || (m & 1) != 0) return 0;
        return (static_cast<uint32_t>(gMainZone->tokenIndex[0]) << kSlotBits) |
               (static_cast<uint32_t>(h - last->slots) + 1);
    }
    MemZone* zone;
    MasterBlock* block = BlockOfEither(h, &zone);
    return block ? TokenIn(zone, block, h) : 0;
}

Handle MemHandleFromToken(uint32_t token) {
    if (!gMainZone) return nullptr;
    MemZone* zone = (token >> 31) ? gCompactZone : gMainZone;
    const uint32_t index = (token >> kSlotBits) & kIndexMask;
    const uint32_t slot = token & kSlotMask;
    if (slot == 0 || slot > static_cast<uint32_t>(kMastersPerBlock)) return nullptr;
    if (index >= static_cast<uint32_t>(zone->masterBlockCount)) return nullptr;
    Handle h = &zone->blockTable[index]->slots[slot - 1];
    const uintptr_t m = reinterpret_cast<uintptr_t>(*h);
    return m != 0 && (m & 1) == 0 ? h : nullptr;
}

}  // extern "C"
