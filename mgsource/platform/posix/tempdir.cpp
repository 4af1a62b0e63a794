// The temporary directory on POSIX hosts: TMPDIR when it names one, else /tmp.
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include "platform/platform.h"

namespace plat {

int32_t TemporaryDirectory(char* buffer, int32_t size) {
    if (size <= 0) return 0;
    buffer[0] = 0;
    const char* dir = getenv("TMPDIR");
    struct stat st;
    if (dir == nullptr || dir[0] != '/' || stat(dir, &st) != 0 || !S_ISDIR(st.st_mode))
        dir = "/tmp";
    size_t n = strlen(dir);
    const bool slash = dir[n - 1] == '/';
    if (n + (slash ? 0 : 1) >= static_cast<size_t>(size)) return 0;
    memcpy(buffer, dir, n);
    if (!slash) buffer[n++] = '/';
    buffer[n] = 0;
    return static_cast<int32_t>(n);
}

}  // namespace plat
