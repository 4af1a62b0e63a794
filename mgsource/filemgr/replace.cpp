// Replacing an open file whole, through the platform's rename-over.
#include "mg/filemgr.h"
#include "platform/platform.h"

extern "C" {

MgStatus FMReplaceBegin(FileRef ref, int32_t sizeHint, FileRef* temp) {
    *temp = 0;
    if (ref == 0) return MgBadArgument;
    int32_t t = 0;
    if (!plat::ReplaceBegin(ref, sizeHint, &t)) return FMapLastError();
    *temp = t;
    return MgNoError;
}

MgStatus FMReplaceCommit(FileRef* ref, FileRef temp) {
    if (*ref == 0 || temp == 0) return MgBadArgument;
    int32_t r = *ref;
    const bool ok = plat::ReplaceCommit(&r, temp);
    *ref = r;
    return ok ? MgNoError : FMapLastError();
}

void FMReplaceAbandon(FileRef temp) {
    if (temp) plat::ReplaceAbandon(temp);
}

void FMReplaceDoneReading(FileRef ref) {
    if (ref) plat::ReleaseCachedPages(ref);
}

}  // extern "C"
