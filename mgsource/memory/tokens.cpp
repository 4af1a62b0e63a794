// 32-bit tokens for live handles, for the 32-bit words of file formats that once held
// addresses.
//
// Token bits: 31 = zone (0 main, 1 compact), 30..14 = master block index in creation order,
// 13..0 = slot + 1. The low field is never 0, so no token of a handle is 0.
#include "memory/zone.h"
#include "mg/dbgtools.h"

MG_SOURCE_IDENTITY("mgsource\\memory\\tokens.cpp", "$Revision: 1 $");

using namespace mgmem;

namespace {

constexpr uint32_t kSlotBits = 14;
constexpr uint32_t kSlotMask = (1u << kSlotBits) - 1;
constexpr uint32_t kIndexMask = (1u << 17) - 1;
static_assert(kMastersPerBlock <= static_cast<int32_t>(kSlotMask));

uint32_t TokenIn(MemZone* zone, Handle h) {
    if (!HandleIsValid(zone, h)) return 0;
    MasterBlock* block = FindMasterBlock(zone, h);
    // Newest blocks are the likeliest; the table is short.
    for (int32_t i = zone->masterBlockCount - 1; i >= 0; --i) {
        if (zone->blockTable[i] != block) continue;
        uint32_t slot = static_cast<uint32_t>(h - block->slots);
        return (static_cast<uint32_t>(zone->tokenZone) << 31) |
               (static_cast<uint32_t>(i) << kSlotBits) | (slot + 1);
    }
    return 0;
}

}  // namespace

extern "C" {

uint32_t MemHandleToken(Handle h) {
    if (!h || !gMainZone) return 0;
    uint32_t token = TokenIn(gMainZone, h);
    return token ? token : TokenIn(gCompactZone, h);
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
