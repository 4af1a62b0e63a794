// Modification dates of resource files, by open file or by path: the platform's last-write
// time as seconds since 1904, exact halves to the even second. On POSIX, read-only means no
// write permission bit for anyone.
#include "mg/dbgtools.h"
#include "mg/path.h"
#include "platform/platform.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\moddate.cpp", "$Revision: 1 $");

namespace {

// 100-nanosecond units from 1601-01-01 to 1904-01-01 UTC.
constexpr uint64_t kFileTimeEpochOffset = 95616288000000000ULL;
constexpr uint64_t kTicksPerSecond = 10000000ULL;

// A file time as whole seconds since 1904, the exact halves going to the even neighbour;
// times before 1904 give 0 and those past the 32-bit range its largest value.
Timestamp TimestampOfFileTime(uint64_t fileTime) {
    if (fileTime < kFileTimeEpochOffset) return 0;
    const uint64_t ticks = fileTime - kFileTimeEpochOffset;
    uint64_t seconds = ticks / kTicksPerSecond;
    const uint64_t rest = ticks % kTicksPerSecond;
    if (rest > kTicksPerSecond / 2 || (rest == kTicksPerSecond / 2 && (seconds & 1))) ++seconds;
    return seconds > UINT32_MAX ? UINT32_MAX : static_cast<Timestamp>(seconds);
}

MgStatus Deliver(uint64_t fileTime, bool ro, uint32_t* date, int32_t* readOnly) {
    *date = TimestampOfFileTime(fileTime);
    if (readOnly) *readOnly = ro ? 1 : 0;
    return MgNoError;
}

// The open file first; when it can't tell, the file at `path`. The empty path and volume roots
// have no date: 0 for both.
MgStatus FileModDate(Path path, FileRef ref, uint32_t* date, int32_t* readOnly) {
    uint64_t fileTime = 0;
    bool ro = false;
    if (ref != 0 && plat::FileModTimeOfRef(ref, &fileTime, &ro) == 0)
        return Deliver(fileTime, ro, date, readOnly);
    if (!FPathRooted(path)) return MgBadArgument;
    if (FPathHasNoNames(path) || FPathDepth(path) == plat::VolumeDepth()) {
        *date = 0;
        if (readOnly) *readOnly = 0;
        return MgNoError;
    }
    char name[FNativeNameBufferSize];
    if (MgStatus status = FPathToNativeName(path, name)) return status;
    if (MgStatus status = plat::FileModTimeOfName(name, &fileTime, &ro)) return status;
    return Deliver(fileTime, ro, date, readOnly);
}

}  // namespace

extern "C" {

MgStatus RGetModDate(Path path, ResFile id, uint32_t* date, int32_t* readOnly) {
    MG_CHECK(date != nullptr);
    if (!date) return MgBadArgument;
    FileRef ref = 0;
    if (id != 0) {
        ResFileEntry* entry;
        if (MgStatus status = RLookupFile(id, &entry)) return status;
        ref = entry->fileRef;
    }
    return FileModDate(path, ref, date, readOnly);
}

}  // extern "C"
