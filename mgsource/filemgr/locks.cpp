// Range locks on open files.
#include "mg/filemgr.h"
#include "platform/platform.h"

extern "C" {

MgStatus FMLockRange(FileRef ref, int32_t mode, int32_t offset, int32_t count, int32_t lock) {
    if (ref == 0) return MgBadArgument;
    uint32_t base = 0;
    switch (mode) {
        case FMSeekStart:
            break;
        case FMSeekEnd:
            if (!plat::GetFileSize(ref, &base)) return FMapLastError();
            break;
        case FMSeekCurrent:
            if (!plat::GetFilePosition(ref, &base)) return FMapLastError();
            break;
        default:
            return MgBadArgument;
    }
    uint32_t start = base + static_cast<uint32_t>(offset);
    return plat::LockRange(ref, start, static_cast<uint32_t>(count), lock != 0) ? MgNoError
                                                                                : FMapLastError();
}

}  // extern "C"
