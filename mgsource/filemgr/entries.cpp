// Making, moving, copying and deleting entries by name. None of them ever replaces an
// existing entry.
#include "mg/filemgr.h"
#include "mg/path.h"
#include "platform/platform.h"

namespace {

// Both names, or the status of the first that can't be made.
MgStatus NativePair(Path from, Path to, char* fromName, char* toName) {
    if (MgStatus status = FPathToNativeName(from, fromName)) return status;
    return FPathToNativeName(to, toName);
}

}  // namespace

extern "C" {

MgStatus FRenameFile(Path from, Path to) {
    if (!FPathRooted(from) || !FPathRooted(to) || FPathDepth(from) < plat::VolumeDepth() + 1 ||
        FPathDepth(to) < 1)
        return MgBadArgument;
    char fromName[FNativeNameBufferSize], toName[FNativeNameBufferSize];
    if (MgStatus status = NativePair(from, to, fromName, toName)) return status;
    return plat::MoveEntry(fromName, toName) ? MgNoError : FMapLastError();
}

MgStatus FCopyFile(Path from, Path to) {
    if (!FPathRooted(from) || !FPathRooted(to) || FPathDepth(from) == plat::VolumeDepth())
        return MgBadArgument;
    char fromName[FNativeNameBufferSize], toName[FNativeNameBufferSize];
    if (MgStatus status = NativePair(from, to, fromName, toName)) return status;
    return plat::CopyFileNew(fromName, toName) ? MgNoError : FMapLastError();
}

// A directory must be empty to go.
MgStatus FDeleteEntry(Path path) {
    if (!FPathRooted(path)) return MgBadArgument;
    char name[FNativeNameBufferSize];
    if (MgStatus status = FPathToNativeName(path, name)) return status;
    plat::EntryAttributes a;
    // A link goes itself, as a shortcut file would, never its target, and also when the
    // target is gone.
    if (!plat::GetEntryAttributes(name, &a) && !a.isLink) return FMapLastError();
    bool ok =
        a.isDirectory && !a.isLink ? plat::RemoveDirectoryEntry(name) : plat::DeleteFileEntry(name);
    return ok ? MgNoError : FMapLastError();
}

// A name the host would take amiss, such as a trailing dot or a device name, is refused here
// before the host sees it. `permissions` is taken and ignored: the directory gets the host's
// default ones.
MgStatus FMakeDirectory(Path path, int32_t) {
    if (!FPathRooted(path)) return MgBadArgument;
    uint8_t last[256];
    if (MgStatus status = FLastName(path, last)) return status;
    char found[256] = {}, extra[256] = {};
    if (FCheckNewName(last, path, 0, found, extra) != 0) return MgBadArgument;
    char name[FNativeNameBufferSize];
    if (MgStatus status = FPathToNativeName(path, name)) return status;
    return plat::MakeDirectory(name) ? MgNoError : FMapLastError();
}

// Makes every missing directory of the chain, from the top down. The recursion ends at a
// directory that is there, at the latest at the empty path, which counts as one.
MgStatus FMakeDirectoryChain(Path path) {
    if (!FPathRooted(path)) return MgBadArgument;
    switch (FPathExistsAs(path)) {
        case 2:
            return MgNoError;
        case 1:
            return MgNotADirectory;
        default:
            break;
    }
    if (FPathDepth(path) == 0) return MgNotFound;  // a root that isn't there ends the climb
    Path parent = path;
    if (MgStatus status = FPathClone(&parent)) return status;
    MgStatus status = FDirName(parent, parent);
    if (status == MgNoError) status = FMakeDirectoryChain(parent);
    if (status == MgNoError) status = FMakeDirectory(path, FMPermissionMask(0777));
    FPathRelease(parent);
    return status;
}

}  // extern "C"
