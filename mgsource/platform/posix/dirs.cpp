// Directories and entries by name on POSIX hosts.
//
// Listings read the entry's kind from readdir where the file system reports it and ask fstatat
// only for links and unknown kinds. A symbolic link stands where the other host has shortcut
// files: its target's attributes are reported, marked as a link, and a dangling link has none.
// "." and ".." are never entries here, wherever readdir puts them.
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"
#include "platform/posix/lasterror.h"

namespace plat {

struct DirListing {
    DIR* dir;
};

namespace {

// 100-nanosecond units from 1601 to 1970.
constexpr uint64_t kUnixEpochFileTime = 116444736000000000ULL;

bool FailErrno() {
    return RecordErrno(errno);
}

uint64_t FileTime(const struct timespec& t) {
    if (t.tv_sec < 0) return 0;
    return static_cast<uint64_t>(t.tv_sec) * 10000000ULL + static_cast<uint64_t>(t.tv_nsec) / 100 +
           kUnixEpochFileTime;
}

struct timespec TimeSpec(uint64_t fileTime) {
    struct timespec t = {};
    if (fileTime > kUnixEpochFileTime) {
        uint64_t units = fileTime - kUnixEpochFileTime;
        t.tv_sec = static_cast<time_t>(units / 10000000ULL);
        t.tv_nsec = static_cast<long>(units % 10000000ULL) * 100;
    }
    return t;
}

bool IsDots(const char* name) {
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

void FillAttributes(const struct stat& st, EntryAttributes* a) {
    a->known = true;
    a->isDirectory = S_ISDIR(st.st_mode);
    a->permissions = static_cast<int32_t>(st.st_mode & 0777);
}

// Attributes of `name` in `dirFd`, following a link, which is marked as one; a dangling link
// is unreadable. errno tells a failure.
void StatAt(int dirFd, const char* name, EntryAttributes* a) {
    struct stat st;
    if (fstatat(dirFd, name, &st, AT_SYMLINK_NOFOLLOW) != 0) return;
    if (S_ISLNK(st.st_mode)) {
        a->isLink = true;
        if (fstatat(dirFd, name, &st, 0) != 0) return;
    }
    FillAttributes(st, a);
}

bool Copy(int in, int out) {
    char buffer[1 << 16];
    for (;;) {
        ssize_t n = read(in, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        if (n == 0) return true;
        for (ssize_t done = 0; done < n;) {
            ssize_t w = write(out, buffer + done, static_cast<size_t>(n - done));
            if (w < 0 && errno == EINTR) continue;
            if (w < 0) return false;
            done += w;
        }
    }
}

}  // namespace

DirListing* OpenListing(const char* directory) {
    DIR* dir = opendir(directory);
    if (dir == nullptr) {
        FailErrno();
        return nullptr;
    }
    DirListing* listing = static_cast<DirListing*>(malloc(sizeof(DirListing)));
    if (listing == nullptr) {
        closedir(dir);
        RecordErrno(ENOMEM);
        return nullptr;
    }
    listing->dir = dir;
    return listing;
}

bool NextListingEntry(DirListing* listing, ListedEntry* entry, bool* failed) {
    *failed = false;
    if (int32_t status = FileOpShouldFail(kFileListNext)) {
        *failed = true;
        return RecordInjectedFailure(status);
    }
    for (;;) {
        errno = 0;
        struct dirent* d = readdir(listing->dir);
        if (d == nullptr) {
            *failed = errno != 0;
            return *failed ? FailErrno() : false;
        }
        if (IsDots(d->d_name)) continue;
        entry->name = d->d_name;
        entry->shortName = "";
        entry->attributes = EntryAttributes{};
        switch (d->d_type) {
            case DT_REG:
                entry->attributes.known = true;
                break;
            case DT_DIR:
                entry->attributes.known = entry->attributes.isDirectory = true;
                break;
            default:
                StatAt(dirfd(listing->dir), d->d_name, &entry->attributes);
                break;
        }
        return true;
    }
}

bool CloseListing(DirListing* listing) {
    if (listing == nullptr) return true;
    int result = closedir(listing->dir);
    int code = errno;
    free(listing);
    return result == 0 || RecordErrno(code);
}

bool GetEntryAttributes(const char* name, EntryAttributes* attributes) {
    *attributes = EntryAttributes{};
    StatAt(AT_FDCWD, name, attributes);
    return attributes->known || FailErrno();
}

bool GetFileFacts(const char* name, FileFacts* facts) {
    *facts = FileFacts{};
    struct stat st;
    if (stat(name, &st) != 0) return FailErrno();
    facts->isDirectory = S_ISDIR(st.st_mode);
    facts->readOnly = (st.st_mode & 0222) == 0;
    facts->size = st.st_size > 0 ? static_cast<uint64_t>(st.st_size) : 0;
    facts->modified = FileTime(st.st_mtim);
#ifdef STATX_BTIME
    struct statx sx;
    if (statx(AT_FDCWD, name, 0, STATX_BTIME, &sx) == 0 && (sx.stx_mask & STATX_BTIME)) {
        struct timespec birth = {static_cast<time_t>(sx.stx_btime.tv_sec),
                                 static_cast<long>(sx.stx_btime.tv_nsec)};
        facts->created = FileTime(birth);
    }
#endif
    return true;
}

int32_t DirectorySize(const char* directory, bool) {
    DIR* dir = opendir(directory);
    if (dir == nullptr) return 0;
    int32_t count = 0;
    while (struct dirent* d = readdir(dir))
        if (!IsDots(d->d_name) && count < INT32_MAX) ++count;
    closedir(dir);
    return count;
}

// The creation date is the file system's to keep; only the modification date can be set.
bool SetFileDates(const char* name, uint64_t, uint64_t modified) {
    struct timespec times[2] = {{0, UTIME_OMIT}, {0, UTIME_OMIT}};
    if (modified != 0) times[1] = TimeSpec(modified);
    return utimensat(AT_FDCWD, name, times, 0) == 0 || FailErrno();
}

// Names are spelled as they were asked for on a case-sensitive file system, so the entry only
// has to be there.
bool ExactLeafName(const char* name, char* leaf, int32_t size) {
    struct stat st;
    if (lstat(name, &st) != 0) return FailErrno();
    const char* slash = strrchr(name, '/');
    const char* last = slash ? slash + 1 : name;
    int32_t n = static_cast<int32_t>(strlen(last));
    if (n >= size) return RecordErrno(ENAMETOOLONG);
    memcpy(leaf, last, static_cast<size_t>(n) + 1);
    return true;
}

// The links of the part of `name` that is there are followed; the missing rest is kept.
bool FollowLinks(const char* name, char* out, int32_t size) {
    char head[PATH_MAX], resolved[PATH_MAX];
    size_t n = strlen(name);
    if (n >= sizeof head) return RecordErrno(ENAMETOOLONG);
    memcpy(head, name, n + 1);
    size_t cut = n;
    while (realpath(head, resolved) == nullptr) {
        if (errno != ENOENT) return FailErrno();
        while (cut > 0 && head[cut - 1] != '/') --cut;
        if (cut <= 1) return RecordErrno(ENOENT);
        head[--cut] = 0;
    }
    size_t r = strlen(resolved);
    const char* tail = name + cut;  // empty, or the missing names from their separator on
    size_t t = strlen(tail);
    if (r == 1 && t > 0) r = 0;  // "/" followed by "/rest"
    if (r + t >= static_cast<size_t>(size)) return RecordErrno(ENAMETOOLONG);
    memcpy(out, resolved, r);
    memcpy(out + r, tail, t + 1);
    return true;
}

// An existing target is refused as the other host's move refuses it. A file that has to
// cross to another file system is copied and then removed.
bool MoveEntry(const char* from, const char* to) {
#ifdef RENAME_NOREPLACE
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS && errno != EXDEV) return FailErrno();
#endif
    struct stat st;
    if (lstat(to, &st) == 0) return RecordErrno(EEXIST);
    if (rename(from, to) == 0) return true;
    if (errno != EXDEV || stat(from, &st) != 0 || S_ISDIR(st.st_mode)) return FailErrno();
    if (!CopyFileNew(from, to)) return false;
    if (unlink(from) == 0) return true;
    int code = errno;
    unlink(to);
    return RecordErrno(code);
}

bool RenameReplacing(const char* from, const char* to) {
    return rename(from, to) == 0 || FailErrno();
}

bool CopyFileNew(const char* from, const char* to) {
    int in = open(from, O_RDONLY | O_CLOEXEC);
    if (in < 0) return FailErrno();
    struct stat st;
    bool statted = fstat(in, &st) == 0;
    if (!statted || S_ISDIR(st.st_mode)) {
        int code = statted ? EISDIR : errno;
        close(in);
        return RecordErrno(code);
    }
    int out = open(to, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, st.st_mode & 0777);
    if (out < 0) {
        int code = errno;
        close(in);
        return RecordErrno(code);
    }
    bool ok = Copy(in, out);
    int code = errno;
    if (ok) {
        struct timespec times[2] = {st.st_atim, st.st_mtim};
        futimens(out, times);
        fchmod(out, st.st_mode & 0777);
    }
    close(in);
    if (close(out) != 0 && ok) {
        ok = false;
        code = errno;
    }
    if (ok) return true;
    unlink(to);  // a part copy is no copy
    return RecordErrno(code);
}

bool DeleteFileEntry(const char* name) {
    return unlink(name) == 0 || FailErrno();
}

bool RemoveDirectoryEntry(const char* name) {
    return rmdir(name) == 0 || FailErrno();
}

bool MakeDirectory(const char* name) {
    return mkdir(name, 0777) == 0 || FailErrno();
}

bool ChangePermissions(const char* name, int32_t permissions) {
    errno = 0;
    return chmod(name, static_cast<mode_t>(permissions & 0777)) == 0;
}

}  // namespace plat
