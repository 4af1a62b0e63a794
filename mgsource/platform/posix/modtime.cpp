// File modification times on POSIX hosts, from stat.
#include <errno.h>
#include <sys/stat.h>

#include "platform/platform.h"
#include "platform/posix/lasterror.h"

namespace plat {
namespace {

// Seconds from 1601-01-01 to 1970-01-01.
constexpr int64_t kUnixEpochIn1601 = 11644473600LL;

int32_t Fill(const struct stat& st, uint64_t* fileTime, bool* readOnly) {
    const int64_t seconds = int64_t{st.st_mtim.tv_sec} + kUnixEpochIn1601;
    *fileTime = seconds < 0 ? 0
                            : static_cast<uint64_t>(seconds) * 10000000u +
                                  static_cast<uint64_t>(st.st_mtim.tv_nsec / 100);
    *readOnly = (st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
    return 0;
}

}  // namespace

int32_t FileModTimeOfRef(int32_t ref, uint64_t* fileTime, bool* readOnly) {
    struct stat st;
    if (ref <= 0 || fstat(ref - 1, &st) != 0) return StatusOfErrno(ref <= 0 ? EINVAL : errno);
    return Fill(st, fileTime, readOnly);
}

int32_t FileModTimeOfName(const char* name, uint64_t* fileTime, bool* readOnly) {
    struct stat st;
    if (stat(name, &st) != 0) return StatusOfErrno(errno);
    return Fill(st, fileTime, readOnly);
}

}  // namespace plat
