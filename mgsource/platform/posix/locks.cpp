// Range locks on POSIX hosts: open-file-description locks, which belong to the open file as
// the other host's do and are seen by every process. Such a lock is exclusive when the
// descriptor may write and shared on a read-only one, since POSIX ties a lock's kind to the
// descriptor's access. Unlocking a range that holds no lock succeeds.
#include <errno.h>
#include <fcntl.h>

#include "platform/platform.h"
#include "platform/posix/lasterror.h"

namespace plat {

bool LockRange(int32_t ref, uint32_t offset, uint32_t count, bool lock) {
    if (count == 0) return true;  // a zero length would mean "to the end of the file"
    int fd = ref - 1;
    int access = fcntl(fd, F_GETFL);
    if (access < 0) return RecordErrno(errno);
    struct flock fl = {};
    fl.l_type = !lock ? F_UNLCK : (access & O_ACCMODE) == O_RDONLY ? F_RDLCK : F_WRLCK;
    fl.l_whence = SEEK_SET;
    fl.l_start = static_cast<off_t>(offset);
    fl.l_len = static_cast<off_t>(count);
    return fcntl(fd, F_OFD_SETLK, &fl) == 0 || RecordErrno(errno);
}

}  // namespace plat
