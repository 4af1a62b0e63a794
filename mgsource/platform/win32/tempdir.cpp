// The temporary directory on Windows hosts, which GetTempPathA gives with its backslash.
#include <windows.h>

#include "platform/platform.h"

namespace plat {

int32_t TempDirectory(char* buffer, int32_t size) {
    if (size <= 0) return 0;
    DWORD n = GetTempPathA(static_cast<DWORD>(size), buffer);
    if (n == 0 || n >= static_cast<DWORD>(size)) {
        buffer[0] = 0;
        return 0;
    }
    return static_cast<int32_t>(n);
}

}  // namespace plat
