// Range locks on Windows hosts: exclusive locks of the file calls, 32-bit offsets.
#include <windows.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {

bool LockRange(int32_t ref, uint32_t offset, uint32_t count, bool lock) {
    HANDLE h = reinterpret_cast<HANDLE>(static_cast<intptr_t>(ref));
    BOOL ok = lock ? LockFile(h, offset, 0, count, 0) : UnlockFile(h, offset, 0, count, 0);
    return ok || RecordInjectedFailure(0);
}

}  // namespace plat
