// NewGUID: a fresh identifier from the platform, or 16 zero bytes when it has none to give.
#include "mg/textutil.h"
#include "platform/platform.h"

MgStatus NewGUID(uint8_t guid[16]) {
    if (guid == nullptr) return MgBadArgument;
    int32_t result = plat::NewGuidBytes(guid);
    if (result != 0) memset(guid, 0, 16);
    return result;
}
