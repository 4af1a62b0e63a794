// Range locks on open files.
#include "mg/filemgr.h"
#include "platform/platform.h"

extern "C" {

MgStatus FMLockRange(FileRef ref, int32_t mode, int32_t offset, int32_t count, int32_t lock) {
    if (ref == 0) return MgBadArgument;
    uint64_t base = 0;
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
    // Ranges are counted in 32 bits: a file too long for them has no range to lock from its end.
    if (base > UINT32_MAX) return MgIOError;
    uint32_t start = static_cast<uint32_t>(base) + static_cast<uint32_t>(offset);
    return plat::LockRange(ref, start, static_cast<uint32_t>(count), lock != 0) ? MgNoError
                                                                                : FMapLastError();
}

}  // extern "C"
