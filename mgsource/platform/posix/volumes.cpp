// Volumes on POSIX hosts: the mounted file systems. A volume's root is its mount point, and
// its kind follows from the file-system type: network file systems are remote, optical ones
// and those on a device the kernel calls removable are removable, the rest fixed.
#include <errno.h>
#include <limits.h>
#include <mntent.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

#include <string>
#include <vector>

#include "platform/platform.h"
#include "platform/posix/lasterror.h"

namespace plat {
namespace {

constexpr const char* kMountTable = "/proc/self/mounts";

bool IsOneOf(const char* type, const char* const* list) {
    for (; *list != nullptr; ++list)
        if (strcmp(type, *list) == 0) return true;
    return false;
}

// The kernel's removable flag of the block device that holds `root`, or of its disk for a
// partition.
bool OnRemovableDevice(const char* root) {
    struct stat st;
    if (stat(root, &st) != 0 || major(st.st_dev) == 0) return false;
    static const char* const kForms[] = {"/sys/dev/block/%u:%u/removable",
                                         "/sys/dev/block/%u:%u/../removable"};
    for (const char* form : kForms) {
        char name[96];
        snprintf(name, sizeof name, form, major(st.st_dev), minor(st.st_dev));
        if (FILE* f = fopen(name, "r")) {
            int c = fgetc(f);
            fclose(f);
            return c == '1';
        }
    }
    return false;
}

int32_t KindOf(const char* root, const char* type) {
    static const char* const kRemote[] = {"nfs",        "nfs4",  "cifs",  "smb3",   "smbfs",
                                          "ncpfs",      "afs",   "9p",    "ceph",   "glusterfs",
                                          "fuse.sshfs", "sshfs", "davfs", "lustre", nullptr};
    static const char* const kOptical[] = {"iso9660", "udf", nullptr};
    if (IsOneOf(type, kRemote)) return kVolumeRemote;
    if (IsOneOf(type, kOptical) || OnRemovableDevice(root)) return kVolumeRemovable;
    return kVolumeFixed;
}

struct Mount {
    std::string dir, type;
};

// The mount table, each mount point once: a later mount on the same point hides the earlier,
// so the later one's type counts, at the place of the later one.
bool Mounts(std::vector<Mount>* mounts) {
    FILE* table = setmntent(kMountTable, "r");
    if (table == nullptr) return RecordErrno(errno);
    while (struct mntent* m = getmntent(table)) {
        for (size_t i = 0; i < mounts->size(); ++i)
            if ((*mounts)[i].dir == m->mnt_dir) mounts->erase(mounts->begin() + i--);
        mounts->push_back({m->mnt_dir, m->mnt_type});
    }
    endmntent(table);
    return true;
}

// The length of the parent of the absolute name `path` of `length` bytes: "/" for "/a".
size_t ParentLength(const char* path, size_t length) {
    while (length > 1 && path[length - 1] != '/') --length;
    return length > 1 ? length - 1 : 1;
}

}  // namespace

bool ListVolumes(bool (*visit)(void* context, const char* name, int32_t kind), void* context) {
    std::vector<Mount> mounts;
    if (!Mounts(&mounts)) return false;
    for (const Mount& m : mounts)
        if (!visit(context, m.dir.c_str(), KindOf(m.dir.c_str(), m.type.c_str()))) break;
    return true;
}

int32_t VolumeKindOfRoot(const char* name) {
    char real[PATH_MAX];
    std::vector<Mount> mounts;
    if (realpath(name, real) == nullptr || !Mounts(&mounts)) return -1;
    for (const Mount& m : mounts)
        if (m.dir == real) return KindOf(m.dir.c_str(), m.type.c_str());
    return -1;
}

// The highest directory above `name` on the same device is the mount point; a name that
// isn't there yet is measured by the nearest directory above it that is.
bool VolumeRootOf(const char* name, char* root, int32_t size) {
    char path[PATH_MAX];
    if (realpath(name, path) == nullptr) {
        size_t n = strlen(name);
        if (n >= sizeof path || name[0] != '/') return RecordErrno(ENOENT);
        memcpy(path, name, n + 1);
    }
    size_t length = strlen(path);
    struct stat here;
    while (stat(path, &here) != 0) {
        if (length <= 1) return RecordErrno(errno);
        length = ParentLength(path, length);
        path[length] = 0;
    }
    while (length > 1) {
        size_t parent = ParentLength(path, length);
        char cut = path[parent];
        path[parent] = 0;
        struct stat up;
        bool same = stat(path, &up) == 0 && up.st_dev == here.st_dev;
        path[parent] = cut;
        if (!same) break;
        length = parent;
    }
    path[length] = 0;
    if (length >= static_cast<size_t>(size)) return RecordErrno(ENAMETOOLONG);
    memcpy(root, path, length + 1);
    return true;
}

bool VolumeSpace(const char* root, uint64_t* total, uint64_t* free) {
    struct statvfs v;
    if (statvfs(root, &v) != 0) return RecordErrno(errno);
    *total = static_cast<uint64_t>(v.f_blocks) * v.f_frsize;
    *free = static_cast<uint64_t>(v.f_bfree) * v.f_frsize;
    return true;
}

// The whole free space of the volume, not what this user may fill.
bool VolumeBytes(const char* root, double* total, double* free) {
    uint64_t t = 0, f = 0;
    if (!VolumeSpace(root, &t, &f)) {
        *total = *free = 0.0;
        return false;
    }
    *total = static_cast<double>(t);
    *free = static_cast<double>(f);
    return true;
}

}  // namespace plat
