// Byte files on POSIX hosts. A reference is the descriptor plus one.
//
// Share modes are emulated with open-file-description locks on four marker bytes far beyond
// any 32-bit file size: an opener holds a shared lock on "open for read", "open for write",
// "denies read" and "denies write" as its access and share mode say, and first tests the
// markers that would conflict with it. Every opener that goes through this layer, in this
// process or another, sees the others. A shared lock needs a descriptor open for reading, so
// a write-only open holds its markers on a second, read-only descriptor.
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <vector>

#include "platform/faults_internal.h"
#include "platform/platform.h"
#include "platform/posix/files_internal.h"
#include "platform/posix/lasterror.h"

namespace plat {
namespace {

// The backend's own codes, for a share-mode conflict and for a name that reaches no regular
// file; no errno value is negative.
constexpr int kSharingConflict = -1;
constexpr int kNotRegular = -2;

struct LastError {
    int code = 0;
    int32_t injected = 0;  // a status chosen by a test's fault hook
} gLast;

bool Fail(int code) {
    gLast = {code, 0};
    return false;
}
bool FailErrno() {
    return Fail(errno);
}
bool FailInjected(int32_t status) {
    gLast = {0, status};
    return false;
}

}  // namespace

bool RecordInjectedFailure(int32_t status) {
    return FailInjected(status);
}

bool RecordErrno(int code) {
    return Fail(code);
}

namespace {

int Fd(int32_t ref) {
    return ref - 1;
}

// The fifth byte marks a file that is being written to take another's place (replace.cpp).
enum Marker { kOpenForRead, kOpenForWrite, kDeniesRead, kDeniesWrite, kBeingWritten };
constexpr off_t kMarkerBase = static_cast<off_t>(0x7FFFFFFFFFFFFF00LL);

// The read-only descriptor that holds the markers of a write-only open, by main descriptor.
std::vector<int> gMarkerFd;

bool MarkerHeldByOther(int fd, Marker m) {
    struct flock fl = {};
    fl.l_type = F_WRLCK;
    fl.l_whence = SEEK_SET;
    fl.l_start = kMarkerBase + m;
    fl.l_len = 1;
    if (fcntl(fd, F_OFD_GETLK, &fl) != 0) return false;
    return fl.l_type != F_UNLCK;
}

void HoldMarker(int fd, Marker m) {
    struct flock fl = {};
    fl.l_type = F_RDLCK;
    fl.l_whence = SEEK_SET;
    fl.l_start = kMarkerBase + m;
    fl.l_len = 1;
    (void)fcntl(fd, F_OFD_SETLK, &fl);
}

void CloseBoth(int fd, int markerFd) {
    if (markerFd != fd && markerFd >= 0) close(markerFd);
    close(fd);
}

// Why an open file isn't one whose bytes its size describes, or 0: anything but a regular
// file, and a file that reads past a size of 0, as generated files do.
int NotPlainFile(int fd, const struct stat& st, bool readable) {
    if (S_ISDIR(st.st_mode)) return EISDIR;
    if (!S_ISREG(st.st_mode)) return kNotRegular;
    char byte;
    return st.st_size == 0 && readable && pread(fd, &byte, 1, 0) > 0 ? kNotRegular : 0;
}

bool ReadFully(int fd, uint8_t* p, int32_t count, int32_t* done) {
    *done = 0;
    while (*done < count) {
        ssize_t n = read(fd, p + *done, static_cast<size_t>(count - *done));
        if (n < 0) {
            if (errno == EINTR) continue;
            return FailErrno();
        }
        if (n == 0) break;
        *done += static_cast<int32_t>(n);
    }
    return true;
}

}  // namespace

bool OpenFile(const char* name, int access, int share, int disposition, int32_t* ref) {
    *ref = 0;
    bool wantRead = access & kAccessRead, wantWrite = access & kAccessWrite;
    int flags = O_CLOEXEC | (wantRead && wantWrite ? O_RDWR : wantWrite ? O_WRONLY : O_RDONLY);
    if (disposition == kCreateNew) flags |= O_CREAT | O_EXCL;
    if (disposition == kCreateAlways) flags |= O_CREAT;
    // Only regular files: a directory is refused as on the layer's other platform, and a
    // pipe or device before it is opened, since opening a pipe waits for its other end and a
    // device may act on being opened. Opening doesn't wait either, and the open file is
    // checked again in case the name changed in between.
    struct stat st = {};
    if (stat(name, &st) == 0 && !S_ISREG(st.st_mode))
        return Fail(S_ISDIR(st.st_mode) ? EISDIR : kNotRegular);
    int fd = open(name, flags | O_NONBLOCK | O_NOCTTY, 0666);
    if (fd < 0) return FailErrno();
    const int notPlain = fstat(fd, &st) != 0 ? errno : NotPlainFile(fd, st, wantRead);
    if (notPlain != 0 || fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK) != 0) {
        const int code = notPlain ? notPlain : errno;
        close(fd);
        return Fail(code);
    }
    int markerFd = wantRead ? fd : open(name, O_RDONLY | O_CLOEXEC);

    bool deniesRead = share == kShareNone, deniesWrite = share != kShareAll;
    if ((wantRead && MarkerHeldByOther(fd, kDeniesRead)) ||
        (wantWrite && MarkerHeldByOther(fd, kDeniesWrite)) ||
        (deniesRead && MarkerHeldByOther(fd, kOpenForRead)) ||
        (deniesWrite && MarkerHeldByOther(fd, kOpenForWrite))) {
        CloseBoth(fd, markerFd);
        return Fail(kSharingConflict);
    }
    if (markerFd >= 0) HoldShareMarkers(markerFd, access, share);
    // Truncation waits until the share check has passed, so a refused open changes nothing.
    if ((disposition == kTruncateExisting || disposition == kCreateAlways) &&
        ftruncate(fd, 0) != 0) {
        int code = errno;
        CloseBoth(fd, markerFd);
        return Fail(code);
    }
    if (static_cast<size_t>(fd) >= gMarkerFd.size()) gMarkerFd.resize(fd + 1, -1);
    gMarkerFd[fd] = markerFd == fd ? -1 : markerFd;
    NoteOpenFile(fd, name, access, share);
    *ref = fd + 1;
    return true;
}

void HoldShareMarkers(int fd, int access, int share) {
    if (access & kAccessRead) HoldMarker(fd, kOpenForRead);
    if (access & kAccessWrite) HoldMarker(fd, kOpenForWrite);
    if (share == kShareNone) HoldMarker(fd, kDeniesRead);
    if (share != kShareAll) HoldMarker(fd, kDeniesWrite);
}

bool WriterMark(int fd, bool take, bool exclusive) {
    struct flock fl = {};
    fl.l_type = !take ? F_UNLCK : exclusive ? F_WRLCK : F_RDLCK;
    fl.l_whence = SEEK_SET;
    fl.l_start = kMarkerBase + kBeingWritten;
    fl.l_len = 1;
    return fcntl(fd, F_OFD_SETLK, &fl) == 0;
}

bool MoveDescriptor(int fd, int from, int markerFd) {
    if (dup2(from, fd) < 0) return FailErrno();
    close(from);
    if (static_cast<size_t>(fd) < gMarkerFd.size() && gMarkerFd[fd] >= 0) close(gMarkerFd[fd]);
    if (static_cast<size_t>(fd) >= gMarkerFd.size()) gMarkerFd.resize(fd + 1, -1);
    gMarkerFd[fd] = markerFd;
    return true;
}

bool CloseFile(int32_t ref) {
    int fd = Fd(ref);
    ForgetOpenFile(fd);
    if (fd >= 0 && static_cast<size_t>(fd) < gMarkerFd.size() && gMarkerFd[fd] >= 0) {
        close(gMarkerFd[fd]);
        gMarkerFd[fd] = -1;
    }
    return close(fd) == 0 || FailErrno();
}

bool ReadFile(int32_t ref, int32_t count, int32_t* actual, void* buffer) {
    *actual = 0;
    if (int32_t status = FileOpShouldFail(kFileRead)) return FailInjected(status);
    return ReadFully(Fd(ref), static_cast<uint8_t*>(buffer), count, actual);
}

bool WriteFile(int32_t ref, int32_t count, int32_t* actual, const void* buffer) {
    *actual = 0;
    if (int32_t status = FileOpShouldFail(kFileWrite)) return FailInjected(status);
    const uint8_t* p = static_cast<const uint8_t*>(buffer);
    while (*actual < count) {
        ssize_t n = write(Fd(ref), p + *actual, static_cast<size_t>(count - *actual));
        if (n < 0) {
            if (errno == EINTR) continue;
            return FailErrno();
        }
        *actual += static_cast<int32_t>(n);
    }
    return true;
}

bool SetFilePosition(int32_t ref, uint64_t offset) {
    if (int32_t status = FileOpShouldFail(kFileSeek)) return FailInjected(status);
    return lseek(Fd(ref), static_cast<off_t>(offset), SEEK_SET) >= 0 || FailErrno();
}

bool GetFilePosition(int32_t ref, uint64_t* position) {
    off_t at = lseek(Fd(ref), 0, SEEK_CUR);
    *position = static_cast<uint64_t>(at);
    return at >= 0 || FailErrno();
}

bool GetFileSize(int32_t ref, uint64_t* size) {
    struct stat st;
    const bool ok = fstat(Fd(ref), &st) == 0;
    *size = ok ? static_cast<uint64_t>(st.st_size) : ~uint64_t{0};
    return ok || FailErrno();
}

bool SetFileEndHere(int32_t ref) {
    if (int32_t status = FileOpShouldFail(kFileTruncate)) return FailInjected(status);
    off_t at = lseek(Fd(ref), 0, SEEK_CUR);
    if (at < 0) return FailErrno();
    return ftruncate(Fd(ref), at) == 0 || FailErrno();
}

bool FlushFile(int32_t ref) {
    if (int32_t status = FileOpShouldFail(kFileFlush)) return FailInjected(status);
    return fsync(Fd(ref)) == 0 || FailErrno();
}

uint32_t CreationMask() {
    mode_t mask = umask(0);
    umask(mask);
    return static_cast<uint32_t>(mask);
}

bool LastErrorIsSharingConflict() {
    return gLast.injected == 0 && gLast.code == kSharingConflict;
}

// The meanings of the status table: missing things 7, refusals 8, existing files 10, bad
// names 1, memory 2, anything else an I/O error.
int32_t StatusOfErrno(int code) {
    switch (code) {
        case kNotRegular:
        case EAGAIN:  // a range held by another lock
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR:
        case ETXTBSY:
            return 8;
        case ENOENT:
        case ENOTDIR:
            return 7;
        case ENOMEM:
            return 2;
        case EEXIST:
            return 10;
        case EINVAL:
        case ENAMETOOLONG:
        case ELOOP:
            return 1;
        default:
            return 6;
    }
}

int32_t LastErrorStatus() {
    if (gLast.injected) return gLast.injected;
    return gLast.code == kSharingConflict ? 8 : StatusOfErrno(gLast.code);
}

void SleepMilliseconds(int32_t ms) {
    struct timespec t = {ms / 1000, (ms % 1000) * 1000000L};
    while (nanosleep(&t, &t) != 0 && errno == EINTR) {
    }
}

}  // namespace plat
