// What the file system knows of one entry by name: existence and kind, permissions, dates
// and the FileInfo record.
#include "filemgr/dirnames.h"
#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/filetypes.h"
#include "mg/memory.h"
#include "mg/pstring.h"
#include "platform/platform.h"

MG_SOURCE_IDENTITY("mgsource\\filemgr\\fileinfo.cpp", "$Revision: 1 $");

namespace {

// From the host's epoch (1601) to the layer's (1904), in 100-nanosecond units.
constexpr uint64_t kEpochDistance = 95616288000000000ULL;
constexpr uint64_t kUnitsPerSecond = 10000000ULL;

// A size that needs more than 32 bits reads as the largest positive size; one that needs all
// 32 keeps its bits and reads negative, as the record's signed field holds it.
int32_t ClampedSize(uint64_t size) {
    return size > 0xFFFFFFFFULL ? 0x7FFFFFFF : static_cast<int32_t>(static_cast<uint32_t>(size));
}

void ClearNames(FileInfo* info) {
    info->owner[0] = 0;
    info->group[0] = 0;
}

}  // namespace

extern "C" {

// Whole seconds, exact halves to the even second; dates before 1904 read as 0, dates past
// the 32-bit range as its end.
Timestamp FFileTimeToSeconds(uint64_t fileTime) {
    if (fileTime < kEpochDistance) return 0;
    uint64_t units = fileTime - kEpochDistance;
    uint64_t seconds = units / kUnitsPerSecond, rest = units % kUnitsPerSecond;
    if (rest > kUnitsPerSecond / 2 || (rest == kUnitsPerSecond / 2 && (seconds & 1))) ++seconds;
    return seconds > 0xFFFFFFFFULL ? 0xFFFFFFFFu : static_cast<Timestamp>(seconds);
}

uint64_t FSecondsToFileTime(Timestamp seconds) {
    return static_cast<uint64_t>(seconds) * kUnitsPerSecond + kEpochDistance;
}

int32_t FPathExistsAs(Path path) {
    if (!FPathRooted(path)) return 0;
    if (FPathDepth(path) < plat::VolumeDepth()) return 2;  // the level above the drives
    char name[FNativeNameBufferSize];
    if (FPathToNativeName(path, name) != MgNoError) return 0;
    plat::EntryAttributes a;
    if (!plat::GetEntryAttributes(name, &a)) return 0;
    return a.isDirectory ? 2 : 1;
}

MgStatus FIsDirectory(Path path) {
    switch (FPathExistsAs(path)) {
        case 2:
            return MgNoError;
        case 1:
            return MgBadArgument;
        case 0:
            return MgNotFound;
        default:
            MG_FAIL();
            return MgBadArgument;
    }
}

MgStatus FPermissionsOf(Path path, PStr owner, PStr group, int32_t* permissions) {
    if (!FPathRooted(path) || owner == nullptr || group == nullptr || permissions == nullptr)
        return MgBadArgument;
    owner[0] = 0;
    group[0] = 0;
    *permissions = 0;
    if (FPathDepth(path) < plat::VolumeDepth()) return MgNoError;
    char name[FNativeNameBufferSize];
    if (MgStatus status = FPathToNativeName(path, name)) return status;
    plat::EntryAttributes a;
    if (!plat::GetEntryAttributes(name, &a)) return FMapLastError();
    *permissions = a.permissions;
    return MgNoError;
}

// Owner and group are taken and ignored.
MgStatus FApplyPermissions(Path path, ConstPStr owner, ConstPStr group,
                           const int32_t* permissions) {
    if (!FPathRooted(path)) return MgBadArgument;
    if (owner == nullptr && group == nullptr && permissions == nullptr) return MgNoError;
    char name[FNativeNameBufferSize];
    if (MgStatus status = FPathToNativeName(path, name)) return status;
    if (permissions != nullptr && !plat::ChangePermissions(name, *permissions & 0777))
        return FMapErrno(0);
    return MgNoError;
}

MgStatus FMFileModDate(Path path, FileRef ref, uint32_t* date, int32_t* readOnly) {
    if (date == nullptr) return MgBadArgument;  // nowhere to put the answer
    uint64_t modified = 0;
    bool locked = false;
    if (ref == 0 || plat::FileModTimeOfRef(ref, &modified, &locked) != 0) {
        if (!FPathRooted(path)) return MgBadArgument;
        if (IsVolumeLevel(path)) {
            *date = 0;
            if (readOnly) *readOnly = 0;
            return MgNoError;
        }
        char name[FNativeNameBufferSize];
        if (MgStatus status = FPathToNativeName(path, name)) return status;
        if (MgStatus status = plat::FileModTimeOfName(name, &modified, &locked)) return status;
    }
    *date = FFileTimeToSeconds(modified);
    if (readOnly) *readOnly = locked ? 1 : 0;
    return MgNoError;
}

MgStatus FFileInfoOf(Path path, FileInfo* info) {
    if (!FPathRooted(path) || info == nullptr) return MgBadArgument;
    if (FPathDepth(path) == 0) {  // the only entry whose hidden flag and spare words are set
        info->hiddenFlag = 0;
        info->spareWord1 = info->spareWord2 = 0;
    }
    if (FPathDepth(path) < plat::VolumeDepth()) {
        // The level above the drives: a directory whose entries are the drives.
        Handle drives = MemNewHandle(4);
        if (drives == nullptr) return MgNoMemory;
        MgStatus status = FDriveEntries(drives, nullptr);
        int32_t count = 0;
        if (status == MgNoError) BlockMove(*drives, &count, 4);
        MemDisposeHandle(drives);
        info->type = info->creator = MgResType("????");
        info->size = count;
        info->isDirectory = 1;
        info->permissions = 0;
        ClearNames(info);
        return status;
    }
    char name[FNativeNameBufferSize];
    if (MgStatus status = FPathToNativeName(path, name)) return status;
    bool volumeRoot = IsVolumeLevel(path);
    plat::FileFacts facts;
    if (volumeRoot)
        facts.isDirectory = true;  // with all dates zero
    else if (!plat::GetFileFacts(name, &facts))
        return FMapLastError();
    info->type = info->creator = MgResType("????");
    if (!facts.isDirectory) {
        // The type is the target's: the path that the native name reaches, shortcuts followed.
        Path target = nullptr;
        MgStatus status =
            FTextToPath(reinterpret_cast<const uint8_t*>(name), StrLen(name), &target);
        ResType type = status == MgNoError ? FTypeOfPath(target) : 0;
        FPathRelease(target);
        if (status != MgNoError) return status;
        if (type != 0) {
            info->type = type;
            info->creator = MgResType("MXDX");
        }
        info->size = ClampedSize(facts.size);
        info->isDirectory = 0;
    } else {
        info->size = plat::DirectorySize(name, volumeRoot);
        info->isDirectory = 1;
    }
    if (MgStatus status = FPermissionsOf(path, info->owner, info->group, &info->permissions))
        return status;
    info->created = FFileTimeToSeconds(facts.created != 0 ? facts.created : facts.modified);
    info->modified = FFileTimeToSeconds(facts.modified);
    return MgNoError;
}

MgStatus FApplyFileInfo(Path path, const FileInfo* info) {
    if (!FPathRooted(path) || info == nullptr) return MgBadArgument;
    char name[FNativeNameBufferSize];
    if (MgStatus status = FPathToNativeName(path, name)) return status;
    if (info->isDirectory) return MgNoError;
    if (MgStatus status = FApplyPermissions(path, nullptr, nullptr, &info->permissions))
        return status;
    if (!plat::SetFileDates(name, FSecondsToFileTime(info->created),
                            FSecondsToFileTime(info->modified)))
        return FMapLastError();
    return MgNoError;
}

}  // extern "C"
