// Volumes: the volume of a path and its space. Where names start with a drive the volume is
// the path's first name; where everything hangs off one root it is the mount point of the
// file system that holds the path.
#include "mg/ansi.h"
#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "platform/platform.h"

namespace {

constexpr int32_t kRootSize = FNativeNameBufferSize;

bool HasDrives() {
    return plat::VolumeDepth() > 0;
}

// The root text of the path's volume: "C:\" for a drive, "\\server\share\" for a share, or
// the mount point. Drive hosts refuse a path without a volume or with a volume that isn't one
// letter before any host call.
MgStatus VolumeRootText(Path path, char* root) {
    if (!FPathRooted(path) || FPathDepth(path) < plat::VolumeDepth()) return MgBadArgument;
    if (HasDrives()) {
        uint8_t first[256];
        if (MgStatus status = FNameAt(path, 0, first)) return status;
        int32_t n = 0;
        if (FPathIsKind(path, PathKindAbsolute)) {
            if (first[0] != 1) return MgBadArgument;
            root[n++] = static_cast<char>(CharToUpper(first[1]));
            root[n++] = ':';
        } else {
            BlockMove(first + 1, root, first[0]);
            n = first[0];
        }
        root[n++] = '\\';
        root[n] = 0;
        return MgNoError;
    }
    char name[FNativeNameBufferSize];
    if (MgStatus status = FPathToNativeName(path, name)) return status;
    return plat::VolumeRootOf(name, root, kRootSize) ? MgNoError : FMapLastError();
}

uint32_t Capped(uint64_t bytes) {
    return bytes > 0xFFFFFFFFULL ? 0xFFFFFFFFu : static_cast<uint32_t>(bytes);
}

}  // namespace

extern "C" {

MgStatus FVolumeOf(Path path, Path* volume) {
    if (volume == nullptr) return MgBadArgument;
    char root[kRootSize];
    if (MgStatus status = VolumeRootText(path, root)) return status;
    if (!HasDrives())
        return FTextToPath(reinterpret_cast<const uint8_t*>(root), StrLen(root), volume);
    uint8_t first[256];
    FNameAt(path, 0, first);
    int32_t kind = PathKindAbsolute;
    FPathKind(path, &kind);
    Path built = FBuildPath(*volume, kind, first, nullptr);
    if (built == nullptr) return MgNoMemory;
    *volume = built;
    return MgNoError;
}

// Cuts the caller's path to its volume, whatever the host says of the space.
MgStatus FVolumeSpace(Path path, uint32_t* figures) {
    if (figures == nullptr) return MgBadArgument;
    char root[kRootSize];
    if (MgStatus status = VolumeRootText(path, root)) return status;
    MgStatus cut = HasDrives()
                       ? FRootOf(path, path)
                       : FTextToPath(reinterpret_cast<const uint8_t*>(root), StrLen(root), &path);
    if (cut != MgNoError) return cut;
    uint64_t total = 0, free = 0;
    if (!plat::VolumeSpace(root, &total, &free)) return FMapLastError();
    figures[0] = Capped(total);
    figures[1] = Capped(total - free);
    figures[2] = Capped(free);
    return MgNoError;
}

MgStatus FVolumeBytes(Path path, double* freeBytes, double* totalBytes) {
    char root[kRootSize];
    if (MgStatus status = VolumeRootText(path, root)) return status;
    double total = totalBytes ? *totalBytes : 0.0, free = freeBytes ? *freeBytes : 0.0;
    bool ok = plat::VolumeBytes(root, &total, &free);
    if (totalBytes) *totalBytes = total;
    if (freeBytes) *freeBytes = free;
    return ok ? MgNoError : FMapLastError();
}

}  // extern "C"
