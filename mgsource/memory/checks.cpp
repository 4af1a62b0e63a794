// Self-checks of the zones, off unless switched on.
#include "memory/zone.h"
#include "mg/dbgtools.h"

MG_SOURCE_IDENTITY("mgsource\\memory\\checks.cpp", "$Revision: 1 $");

int32_t gMemChecking = 0;

// Walks as many links as the zone counts; a longer list is a fault. A shorter one stops at
// its end unnoticed.
extern "C" MgStatus MemCheckFreeList(MemZone* zone) {
    if (!gMemChecking) return MgNoError;
    if (zone->freeMasterCount < 0) MG_FAIL();
    uint8_t** link = zone->freeMasters;
    for (int32_t i = 0; i < zone->freeMasterCount && link; ++i) {
        link = reinterpret_cast<uint8_t**>(reinterpret_cast<uintptr_t>(*link) & ~uintptr_t{1});
    }
    if (link) MG_FAIL();
    return MgNoError;
}
