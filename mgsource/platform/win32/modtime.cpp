// File modification times on Windows hosts: by handle, or by name through a directory search.
#include <windows.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {
namespace {

uint64_t Ticks(const FILETIME& t) {
    return (static_cast<uint64_t>(t.dwHighDateTime) << 32) | t.dwLowDateTime;
}

// The system's status of a real failure, not one that a test's fault hook left behind.
int32_t SystemStatus() {
    RecordInjectedFailure(0);
    return LastErrorStatus();
}

}  // namespace

int32_t FileModTimeOfRef(int32_t ref, uint64_t* fileTime, bool* readOnly) {
    BY_HANDLE_FILE_INFORMATION info;
    HANDLE h = reinterpret_cast<HANDLE>(static_cast<intptr_t>(ref));
    if (!GetFileInformationByHandle(h, &info)) return SystemStatus();
    *fileTime = Ticks(info.ftLastWriteTime);
    *readOnly = (info.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    return 0;
}

int32_t FileModTimeOfName(const char* name, uint64_t* fileTime, bool* readOnly) {
    WIN32_FIND_DATAA data;
    HANDLE find = FindFirstFileA(name, &data);
    if (find == INVALID_HANDLE_VALUE || !FindClose(find)) return SystemStatus();
    *fileTime = Ticks(data.ftLastWriteTime);
    *readOnly = (data.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    return 0;
}

}  // namespace plat
