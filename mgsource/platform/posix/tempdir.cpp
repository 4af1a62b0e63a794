// The temporary directory on POSIX hosts: TMPDIR when it is set, else /tmp, as given; whether
// it exists is the caller's question.
#include <stdlib.h>
#include <string.h>

#include "platform/platform.h"

namespace plat {

int32_t TempDirectory(char* buffer, int32_t size) {
    const char* dir = getenv("TMPDIR");
    if (dir == nullptr || dir[0] == 0) dir = "/tmp";
    const size_t n = strlen(dir);
    const bool addSeparator = dir[n - 1] != '/';
    const size_t total = n + (addSeparator ? 1 : 0);
    if (size <= 0 || total >= static_cast<size_t>(size)) return 0;
    memcpy(buffer, dir, n);
    if (addSeparator) buffer[n] = '/';
    buffer[total] = 0;
    return static_cast<int32_t>(total);
}

}  // namespace plat
