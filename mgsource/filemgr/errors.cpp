// Status mapping and the creation mask.
#include <errno.h>

#include "mg/filemgr.h"
#include "platform/platform.h"

extern "C" {

int32_t FMPermissionMask(int32_t permissions) {
    return permissions & ~static_cast<int32_t>(plat::CreationMask());
}

MgStatus FMapLastError(void) {
    return plat::LastErrorStatus();
}

// The C runtime's last error, as the permission change of the directory layer leaves it.
MgStatus FMapErrno(int32_t notFoundIsArgument) {
    switch (errno) {
        case 0:
            return MgNoError;
        case ENOENT:
            return notFoundIsArgument ? MgBadArgument : MgNotFound;
        case EBADF:
        case EINVAL:
            return MgBadArgument;
        case ENOMEM:
            return MgNoMemory;
        case EACCES:
            return MgNoPermission;
        case EEXIST:
            return MgDuplicate;
        case ENFILE:
        case EMFILE:
            return MgTooManyOpen;
        case ENOSPC:
            return MgDiskFull;
        case ESPIPE:
            return MgEndOfFile;
        default:
            return MgIOError;
    }
}

}  // extern "C"
