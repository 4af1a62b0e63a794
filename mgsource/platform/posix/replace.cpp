// Replacing an open file whole on POSIX hosts. The new file is made in the old one's directory
// (so that the rename stays within one file system), with the old file's owner and mode, and
// without a name where the host can (Linux: O_TMPFILE): it gets its hidden name,
// `.<name>.XXXXXX.new`, only just before the rename puts it in the old one's place, so a
// process killed while writing leaves nothing (killed between the two, it leaves the hidden
// file). Elsewhere, and where the file system refuses unnamed files, it is made under its
// hidden name at once. Either way the writer holds a lock on it (the "being written" marker)
// while it lives, and a write-back of the same file later removes the hidden files whose lock
// it can take: their writers are gone.
//
// The commit takes the opener's share markers on the new file, renames it over the old name,
// flushes the directory so that the rename is durable, and moves the open descriptor onto the
// new file with dup2, so that its number - a resource file's id - stays the same. Whoever had
// the old file open keeps reading the old bytes; a hard link to it keeps the old file too.
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
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
struct NewFile {
    std::string directory, leaf;  // the directory with no separator at its end, but "/"
    std::string hidden;           // its name while it has one before the rename
    bool named = false;
};
std::vector<OpenName> gOpen;    // by descriptor
std::vector<NewFile> gNewFile;  // by descriptor of a new file

constexpr char kSuffix[] = ".new";
constexpr size_t kRandomChars = 6;
constexpr int kNameTries = 16;

bool Known(const std::vector<OpenName>& v, int fd) {
    return fd >= 0 && static_cast<size_t>(fd) < v.size() && !v[fd].path.empty();
}

NewFile* NewFileOf(int t) {
    if (t < 0 || static_cast<size_t>(t) >= gNewFile.size()) return nullptr;
    NewFile* n = &gNewFile[t];
    return n->leaf.empty() ? nullptr : n;
}

std::string HiddenPrefix(const NewFile& n) {
    return n.directory + (n.directory == "/" ? "." : "/.") + n.leaf + ".";
}

// A new file's hidden name, with random characters where its pattern has X.
std::string HiddenName(const NewFile& n) {
    static const char kChars[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    uint8_t random[16] = {};
    (void)NewGuidBytes(random);
    std::string name = HiddenPrefix(n);
    for (size_t i = 0; i < kRandomChars; ++i) name += kChars[random[i] % (sizeof kChars - 1)];
    return name + kSuffix;
}

bool IsHiddenName(const char* entry, const std::string& leaf) {
    const size_t length = strlen(entry), suffix = sizeof kSuffix - 1;
    if (length != leaf.size() + 2 + kRandomChars + suffix || entry[0] != '.' ||
        leaf.compare(0, leaf.size(), entry + 1, leaf.size()) != 0 || entry[leaf.size() + 1] != '.')
        return false;
    return strcmp(entry + length - suffix, kSuffix) == 0;
}

// Hidden files of earlier write-backs of `leaf` whose writers are gone: the lock a writer holds
// can be taken. The name must still be the file looked at when it goes.
void RemoveLeftovers(const std::string& directory, const std::string& leaf) {
    DIR* d = opendir(directory.c_str());
    if (!d) return;
    const int dfd = dirfd(d);
    while (const dirent* e = readdir(d)) {
        if (!IsHiddenName(e->d_name, leaf)) continue;
        const int fd = openat(dfd, e->d_name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0) continue;
        struct stat byFd, byName;
        if (fstat(fd, &byFd) == 0 && S_ISREG(byFd.st_mode) && WriterMark(fd, true, false) &&
            fstatat(dfd, e->d_name, &byName, AT_SYMLINK_NOFOLLOW) == 0 &&
            byName.st_ino == byFd.st_ino && byName.st_dev == byFd.st_dev)
            (void)unlinkat(dfd, e->d_name, 0);
        close(fd);
    }
    closedir(d);
}

// Whether the open file `t` is still the one that `name` reaches.
bool StillNamed(int t, const std::string& name) {
    struct stat byFd, byName;
    return fstat(t, &byFd) == 0 && stat(name.c_str(), &byName) == 0 &&
           byFd.st_ino == byName.st_ino && byFd.st_dev == byName.st_dev;
}

// A new file under its hidden name, with the writer's lock on it; -1, with errno, on failure.
// A remover of leftovers that opened the name before the lock went on takes it away: the
// name is then given up and another made.
int MakeNamed(NewFile* n) {
    for (int tries = 0; tries < kNameTries; ++tries) {
        std::string name = HiddenPrefix(*n) + std::string(kRandomChars, 'X') + kSuffix;
        const int t = mkostemps(name.data(), sizeof kSuffix - 1, O_CLOEXEC);
        if (t < 0) return -1;
        if (WriterMark(t, true, true) && StillNamed(t, name)) {
            n->hidden = name;
            n->named = true;
            return t;
        }
        close(t);
    }
    errno = EEXIST;
    return -1;
}

// A new file with no name at all, where the host and the file system have them and the
// descriptor's /proc entry is there to give it one; -1 otherwise.
int MakeUnnamed(const NewFile& n) {
#if defined(O_TMPFILE)
    const int t = open(n.directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (t < 0) return -1;
    const std::string self = "/proc/self/fd/" + std::to_string(t);
    if (access(self.c_str(), F_OK) == 0 && WriterMark(t, true, true)) return t;
    close(t);
#else
    (void)n;
#endif
    return -1;
}

// Gives an unnamed new file its hidden name; a link can't take a name that exists.
bool GiveName(int t, NewFile* n) {
    const std::string self = "/proc/self/fd/" + std::to_string(t);
    for (int tries = 0; tries < kNameTries; ++tries) {
        std::string name = HiddenName(*n);
        if (linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            n->hidden = name;
            n->named = true;
            return true;
        }
        if (errno != EEXIST) return false;
    }
    return false;
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

void Forget(int t) {
    close(t);
    gNewFile[t] = NewFile{};
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
    NewFile n;
    n.directory = slash == 0 ? std::string("/") : path.substr(0, slash);
    n.leaf = path.substr(slash + 1);
    // A hidden name that the file system can't hold would fail only at the rename.
    if (n.leaf.size() + 2 + kRandomChars + sizeof kSuffix - 1 > NAME_MAX)
        return RecordErrno(ENAMETOOLONG);
    RemoveLeftovers(n.directory, n.leaf);
    int t = MakeUnnamed(n);
    if (t < 0 && (t = MakeNamed(&n)) < 0) return RecordErrno(errno);
    // Owner first: changing it may clear the set-id bits that the mode then restores.
    (void)fchown(t, st.st_uid, st.st_gid);
    if (fchmod(t, st.st_mode & 07777) != 0) {
        const int code = errno;
        close(t);
        if (n.named) unlink(n.hidden.c_str());
        return RecordErrno(code);
    }
    ClaimSpace(t, sizeHint);
    if (static_cast<size_t>(t) >= gNewFile.size()) gNewFile.resize(t + 1);
    gNewFile[t] = n;
    *tempRef = t + 1;
    return true;
}

bool ReplaceCommit(int32_t* ref, int32_t tempRef) {
    const int fd = *ref - 1, t = tempRef - 1;
    NewFile* n = NewFileOf(t);
    if (!Known(gOpen, fd) || !n) return RecordErrno(EINVAL);
    if (int32_t status = FileOpShouldFail(kFileReplace)) return RecordInjectedFailure(status);
    if (!n->named && !GiveName(t, n)) return RecordErrno(errno);
    const OpenName& old = gOpen[fd];
    // The markers go on before the name does, so no opener sees the new file unguarded.
    int markerFd = -1;
    if (old.access & kAccessRead) {
        HoldShareMarkers(t, old.access, old.share);
    } else {
        markerFd = open(n->hidden.c_str(), O_RDONLY | O_CLOEXEC);
        if (markerFd >= 0) HoldShareMarkers(markerFd, old.access, old.share);
    }
    if (rename(n->hidden.c_str(), old.path.c_str()) != 0) {
        const int code = errno;
        if (markerFd >= 0) close(markerFd);
        return RecordErrno(code);
    }
    const int dir = open(n->directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        (void)fsync(dir);
        close(dir);
    }
    gNewFile[t] = NewFile{};
    WriterMark(t, false, true);
    if (MoveDescriptor(fd, t, markerFd)) return true;
    close(t);
    return false;
}

void ReplaceAbandon(int32_t tempRef) {
    const int t = tempRef - 1;
    NewFile* n = NewFileOf(t);
    if (!n) return;
    if (n->named) unlink(n->hidden.c_str());
    Forget(t);
}

void ReleaseCachedPages(int32_t ref) {
    (void)posix_fadvise(ref - 1, 0, 0, POSIX_FADV_DONTNEED);
}

}  // namespace plat
