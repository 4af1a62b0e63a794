// Replacing an open file whole on POSIX hosts. The new file is made beside the old one under
// a hidden name (so rename stays within one file system), with the old file's owner and mode.
// The commit takes the opener's share markers on the new file, renames it over the old name,
// flushes the directory so that the rename is durable, and moves the open descriptor onto the
// new file with dup2, so that its number - a resource file's id - stays the same. Whoever had
// the old file open keeps reading the old bytes; a hard link to it keeps the old file too.
#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "platform/faults_internal.h"
#include "platform/platform.h"
#include "platform/posix/files_internal.h"
#include "platform/posix/lasterror.h"

namespace plat {
namespace {

struct OpenName {
    std::string path;  // resolved, so that a symbolic link is followed, not replaced
    int access = 0;
    int share = 0;
};
std::vector<OpenName> gOpen;         // by descriptor
std::vector<std::string> gTempPath;  // by descriptor of a new file

std::string DirectoryOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool Known(const std::vector<OpenName>& v, int fd) {
    return fd >= 0 && static_cast<size_t>(fd) < v.size() && !v[fd].path.empty();
}

// Blocks claimed in one piece before the writes come let them land in place of being
// reserved page by page. Beyond the length, so that an early end or a full disk changes
// nothing; truncating the file to its final length gives back what wasn't used.
void ClaimSpace(int fd, int32_t bytes) {
#if defined(__linux__)
    if (bytes > 0) (void)fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, bytes);
#else
    (void)fd;
    (void)bytes;
#endif
}

}  // namespace

void NoteOpenFile(int fd, const char* name, int access, int share) {
    if (!(access & kAccessWrite)) return;
    char* real = realpath(name, nullptr);
    if (!real) return;
    if (static_cast<size_t>(fd) >= gOpen.size()) gOpen.resize(fd + 1);
    gOpen[fd] = {real, access, share};
    free(real);
}

void ForgetOpenFile(int fd) {
    if (fd >= 0 && static_cast<size_t>(fd) < gOpen.size()) gOpen[fd] = OpenName{};
}

bool ReplaceBegin(int32_t ref, int32_t sizeHint, int32_t* tempRef) {
    *tempRef = 0;
    if (int32_t status = FileOpShouldFail(kFileReplace)) return RecordInjectedFailure(status);
    const int fd = ref - 1;
    if (!Known(gOpen, fd)) return RecordErrno(EINVAL);
    struct stat st;
    if (fstat(fd, &st) != 0) return RecordErrno(errno);
    const std::string& path = gOpen[fd].path;
    const size_t slash = path.rfind('/');
    std::string temp = path.substr(0, slash + 1) + "." + path.substr(slash + 1) + ".XXXXXX";
    const int t = mkostemp(temp.data(), O_CLOEXEC);
    if (t < 0) return RecordErrno(errno);
    // Owner first: changing it may clear the set-id bits that the mode then restores.
    (void)fchown(t, st.st_uid, st.st_gid);
    if (fchmod(t, st.st_mode & 07777) != 0) {
        const int code = errno;
        close(t);
        unlink(temp.c_str());
        return RecordErrno(code);
    }
    ClaimSpace(t, sizeHint);
    if (static_cast<size_t>(t) >= gTempPath.size()) gTempPath.resize(t + 1);
    gTempPath[t] = temp;
    *tempRef = t + 1;
    return true;
}

bool ReplaceCommit(int32_t* ref, int32_t tempRef) {
    const int fd = *ref - 1, t = tempRef - 1;
    if (!Known(gOpen, fd) || t < 0 || static_cast<size_t>(t) >= gTempPath.size() ||
        gTempPath[t].empty())
        return RecordErrno(EINVAL);
    if (int32_t status = FileOpShouldFail(kFileReplace)) return RecordInjectedFailure(status);
    const OpenName& old = gOpen[fd];
    const std::string& temp = gTempPath[t];
    // The markers go on before the name does, so no opener sees the new file unguarded.
    int markerFd = -1;
    if (old.access & kAccessRead) {
        HoldShareMarkers(t, old.access, old.share);
    } else {
        markerFd = open(temp.c_str(), O_RDONLY | O_CLOEXEC);
        if (markerFd >= 0) HoldShareMarkers(markerFd, old.access, old.share);
    }
    if (rename(temp.c_str(), old.path.c_str()) != 0) {
        const int code = errno;
        if (markerFd >= 0) close(markerFd);
        return RecordErrno(code);
    }
    gTempPath[t].clear();
    const int dir = open(DirectoryOf(old.path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        (void)fsync(dir);
        close(dir);
    }
    if (MoveDescriptor(fd, t, markerFd)) return true;
    close(t);
    return false;
}

void ReplaceAbandon(int32_t tempRef) {
    const int t = tempRef - 1;
    if (t < 0 || static_cast<size_t>(t) >= gTempPath.size() || gTempPath[t].empty()) return;
    close(t);
    unlink(gTempPath[t].c_str());
    gTempPath[t].clear();
}

void ReleaseCachedPages(int32_t ref) {
    (void)posix_fadvise(ref - 1, 0, 0, POSIX_FADV_DONTNEED);
}

}  // namespace plat
