// Whole files mapped for reading on POSIX hosts. The pages are mapped in one go where the host
// can (MAP_POPULATE), so that walking the bytes costs no fault per page.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/platform.h"

namespace plat {

bool MapFileForReading(const char* name, const uint8_t** bytes, int64_t* length, void** token) {
    *bytes = nullptr;
    *length = 0;
    *token = nullptr;
    // Never waits on a pipe: what isn't a regular file is refused after the open.
    const int fd = open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return false;
    struct stat facts;
    void* view = MAP_FAILED;
    if (fstat(fd, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_size > 0 &&
        static_cast<uint64_t>(facts.st_size) <= SIZE_MAX) {
        int flags = MAP_PRIVATE;
#ifdef MAP_POPULATE
        flags |= MAP_POPULATE;
#endif
        view = mmap(nullptr, static_cast<size_t>(facts.st_size), PROT_READ, flags, fd, 0);
    }
    close(fd);
    if (view == MAP_FAILED) return false;
    *bytes = static_cast<const uint8_t*>(view);
    *length = facts.st_size;
    return true;
}

void UnmapFile(const uint8_t* bytes, int64_t length, void*) {
    if (bytes) munmap(const_cast<uint8_t*>(bytes), static_cast<size_t>(length));
}

}  // namespace plat
