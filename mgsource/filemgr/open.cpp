// Opening and creating byte files.
#include "mg/filemgr.h"
#include "mg/path.h"
#include "platform/platform.h"

namespace {

// Opens that meet another opener's share mode are tried this often, with a pause between.
constexpr int kOpenTries = 3;
constexpr int32_t kOpenRetryMs = 50;

int Access(int32_t mode) {
    switch (mode) {
        case FMModeReadWrite:
            return plat::kAccessRead | plat::kAccessWrite;
        case FMModeRead:
            return plat::kAccessRead;
        default:
            return plat::kAccessWrite;
    }
}

bool ArgumentsUsable(Path path, int32_t deny) {
    return FPathRooted(path) && deny >= FMShareNone && deny <= FMShareAll;
}

}  // namespace

extern "C" {

void FMInit(void) {}

MgStatus FMOpen(FileRef* ref, Path path, int32_t mode, int32_t deny) {
    *ref = 0;
    if (!ArgumentsUsable(path, deny) || mode < 0 || mode > FMModeTruncate) return MgBadArgument;
    char name[FNativeNameBufferSize];
    if (MgStatus status = FPathToNativeName(path, name)) return status;
    if (FPathDepth(path) == plat::VolumeDepth()) return MgBadArgument;  // a volume root
    int disposition = mode == FMModeTruncate ? plat::kTruncateExisting : plat::kOpenExisting;
    int32_t opened = 0;
    for (int tries = 1;; ++tries) {
        if (plat::OpenFile(name, Access(mode), deny, disposition, &opened)) break;
        if (tries == kOpenTries || !plat::LastErrorIsSharingConflict()) return FMapLastError();
        plat::SleepMilliseconds(kOpenRetryMs);
    }
    *ref = opened;
    return MgNoError;
}

// Permissions, group, creator and type are taken and ignored: a new file gets the host's
// default attributes.
MgStatus FMMakeFile(FileRef* ref, Path path, int32_t, int32_t mode, int32_t deny, int32_t,
                    int32_t overwrite, ResType, ResType) {
    *ref = 0;
    if (!ArgumentsUsable(path, deny)) return MgBadArgument;
    char name[FNativeNameBufferSize];
    if (MgStatus status = FPathToNativeName(path, name)) return status;
    if (mode < FMModeReadWrite || mode > FMModeWrite) return MgBadArgument;
    int32_t made = 0;
    if (!plat::OpenFile(name, Access(mode), deny,
                        overwrite ? plat::kCreateAlways : plat::kCreateNew, &made))
        return FMapLastError();
    *ref = made;
    return MgNoError;
}

MgStatus FMCreateNew(FileRef* ref, Path path, int32_t permissions, int32_t mode, int32_t deny,
                     int32_t group) {
    return FMMakeFile(ref, path, permissions, mode, deny, group, 0, MgResType("????"),
                      MgResType("????"));
}

MgStatus FMCreateOver(FileRef* ref, Path path, int32_t permissions, int32_t mode, int32_t deny,
                      int32_t group) {
    return FMMakeFile(ref, path, permissions, mode, deny, group, 1, MgResType("????"),
                      MgResType("????"));
}

}  // extern "C"
