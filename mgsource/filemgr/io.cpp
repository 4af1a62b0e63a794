// Reading, writing, positioning and sizing open byte files.
#include "mg/filemgr.h"
#include "platform/platform.h"

namespace {

// A size or position of 2 GB or more has no 32-bit value: it is refused as a failure of the
// file, never given cut short.
MgStatus Give32(bool ok, uint64_t value, int32_t* out) {
    const bool fits = ok && value <= INT32_MAX;
    *out = fits ? static_cast<int32_t>(value) : -1;
    return !ok ? FMapLastError() : fits ? MgNoError : MgIOError;
}

}  // namespace

extern "C" {

MgStatus FMClose(FileRef ref) {
    if (ref == 0) return MgBadArgument;
    return plat::CloseFile(ref) ? MgNoError : FMapLastError();
}

// A short read is end of file, though what there was is in the buffer and counted.
MgStatus FMRead(FileRef ref, int32_t count, int32_t* actual, void* buffer) {
    if (ref == 0 || count < 0) return MgBadArgument;
    int32_t got = 0;
    bool ok = count == 0 || plat::ReadFile(ref, count, &got, buffer);
    if (actual) *actual = got;
    if (!ok) return FMapLastError();
    return got < count ? MgEndOfFile : MgNoError;
}

// A short write is no error here; only `actual` tells.
MgStatus FMWriteBytes(FileRef ref, int32_t count, int32_t* actual, const void* buffer) {
    if (ref == 0 || count < 0) return MgBadArgument;
    int32_t put = 0;
    bool ok = count == 0 || plat::WriteFile(ref, count, &put, buffer);
    if (actual) *actual = put;
    return ok ? MgNoError : FMapLastError();
}

// Never moves beyond either end of the file: such a seek stops at the end it passed and
// gives 4, so a seek cannot lengthen a file.
MgStatus FMSeek(FileRef ref, int32_t offset, int32_t mode) {
    if (ref == 0) return MgBadArgument;
    if (offset == 0 && mode == FMSeekCurrent) return MgNoError;
    uint64_t position = 0, size = 0;
    if (mode == FMSeekCurrent && !plat::GetFilePosition(ref, &position)) return FMapLastError();
    if (!plat::GetFileSize(ref, &size)) return FMapLastError();
    int64_t target = offset;
    if (mode == FMSeekCurrent)
        target += static_cast<int64_t>(position);
    else if (mode != FMSeekStart)
        target += static_cast<int64_t>(size);
    if (target > static_cast<int64_t>(size)) {
        plat::SetFilePosition(ref, size);
        return MgEndOfFile;
    }
    if (target < 0) {
        plat::SetFilePosition(ref, 0);
        return MgEndOfFile;
    }
    return plat::SetFilePosition(ref, static_cast<uint64_t>(target)) ? MgNoError : FMapLastError();
}

MgStatus FMTell(FileRef ref, int32_t* position) {
    if (ref == 0) return MgBadArgument;
    uint64_t at = 0;
    const bool ok = plat::GetFilePosition(ref, &at);
    return Give32(ok, at, position);
}

MgStatus FGetEOF(FileRef ref, int32_t* size) {
    if (ref == 0) return MgBadArgument;
    uint64_t n = 0;
    const bool ok = plat::GetFileSize(ref, &n);
    return Give32(ok, n, size);
}

// Sets the length and keeps the position when it still lies inside the file; a position at
// or beyond the new end is left at the end.
MgStatus FSetFileEnd(FileRef ref, int32_t size) {
    if (ref == 0 || size < 0) return MgBadArgument;
    uint64_t remembered = 0;
    if (!plat::GetFilePosition(ref, &remembered) ||
        !plat::SetFilePosition(ref, static_cast<uint64_t>(size)) || !plat::SetFileEndHere(ref))
        return FMapLastError();
    if (remembered < static_cast<uint64_t>(size) && !plat::SetFilePosition(ref, remembered))
        return FMapLastError();
    return MgNoError;
}

MgStatus FMFlush(FileRef ref) {
    if (ref == 0) return MgBadArgument;
    return plat::FlushFile(ref) ? MgNoError : FMapLastError();
}

MgStatus FMFlushFile(FileRef ref) {
    return FMFlush(ref);
}

}  // extern "C"
