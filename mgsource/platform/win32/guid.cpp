// New identifiers on Windows hosts, from the system's GUID generator.
#include <objbase.h>
#include <string.h>
#include <windows.h>

#include "platform/platform.h"

namespace plat {

int32_t NewGuidBytes(uint8_t guid[16]) {
    GUID g;
    HRESULT result = CoCreateGuid(&g);
    if (result != S_OK) return static_cast<int32_t>(result);
    static_assert(sizeof g == 16, "a GUID is 16 bytes");
    memcpy(guid, &g, 16);
    return 0;
}

}  // namespace plat
