// Byte files on Windows hosts: the file calls themselves, whose share modes are native.
#include <io.h>
#include <windows.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"
#include "platform/win32/files_internal.h"

namespace plat {
namespace {

int32_t gInjected = 0;  // a status chosen by a test's fault hook, until the next failure

HANDLE H(int32_t ref) {
    return reinterpret_cast<HANDLE>(static_cast<intptr_t>(ref));
}

bool Fail() {
    gInjected = 0;
    return false;
}
bool FailInjected(int32_t status) {
    gInjected = status;
    return false;
}

}  // namespace

bool RecordInjectedFailure(int32_t status) {
    return FailInjected(status);
}

bool OpenFile(const char* name, int access, int share, int disposition, int32_t* ref) {
    *ref = 0;
    DWORD acc =
        ((access & kAccessRead) ? GENERIC_READ : 0) | ((access & kAccessWrite) ? GENERIC_WRITE : 0);
    DWORD shr = share == kShareAll    ? FILE_SHARE_READ | FILE_SHARE_WRITE
                : share == kShareRead ? FILE_SHARE_READ
                                      : 0;
    DWORD disp = disposition == kTruncateExisting ? TRUNCATE_EXISTING
                 : disposition == kCreateNew      ? CREATE_NEW
                 : disposition == kCreateAlways   ? CREATE_ALWAYS
                                                  : OPEN_EXISTING;
    HANDLE h = CreateFileA(name, acc, shr, nullptr, disp, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) return Fail();
    // Device names (CON, NUL, COM1, ...) and pipes open too; only files on a disk are taken.
    if (GetFileType(h) != FILE_TYPE_DISK) {
        CloseHandle(h);
        SetLastError(ERROR_ACCESS_DENIED);
        return Fail();
    }
    *ref = static_cast<int32_t>(reinterpret_cast<intptr_t>(h));
    NoteOpenFile(*ref, name, access, share);
    return true;
}

bool CloseFile(int32_t ref) {
    ForgetOpenFile(ref);
    return CloseHandle(H(ref)) || Fail();
}

bool ReadFile(int32_t ref, int32_t count, int32_t* actual, void* buffer) {
    *actual = 0;
    if (int32_t status = FileOpShouldFail(kFileRead)) return FailInjected(status);
    DWORD got = 0;
    BOOL ok = ::ReadFile(H(ref), buffer, static_cast<DWORD>(count), &got, nullptr);
    *actual = static_cast<int32_t>(got);
    return ok || Fail();
}

bool WriteFile(int32_t ref, int32_t count, int32_t* actual, const void* buffer) {
    *actual = 0;
    if (int32_t status = FileOpShouldFail(kFileWrite)) return FailInjected(status);
    DWORD put = 0;
    BOOL ok = ::WriteFile(H(ref), buffer, static_cast<DWORD>(count), &put, nullptr);
    *actual = static_cast<int32_t>(put);
    return ok || Fail();
}

bool SetFilePosition(int32_t ref, uint64_t offset) {
    if (int32_t status = FileOpShouldFail(kFileSeek)) return FailInjected(status);
    LARGE_INTEGER to = {};
    to.QuadPart = static_cast<LONGLONG>(offset);
    return SetFilePointerEx(H(ref), to, nullptr, FILE_BEGIN) || Fail();
}

bool GetFilePosition(int32_t ref, uint64_t* position) {
    LARGE_INTEGER zero = {}, at = {};
    const BOOL ok = SetFilePointerEx(H(ref), zero, &at, FILE_CURRENT);
    *position = ok ? static_cast<uint64_t>(at.QuadPart) : ~uint64_t{0};
    return ok || Fail();
}

bool GetFileSize(int32_t ref, uint64_t* size) {
    LARGE_INTEGER n = {};
    const BOOL ok = GetFileSizeEx(H(ref), &n);
    *size = ok ? static_cast<uint64_t>(n.QuadPart) : ~uint64_t{0};
    return ok || Fail();
}

bool SetFileEndHere(int32_t ref) {
    if (int32_t status = FileOpShouldFail(kFileTruncate)) return FailInjected(status);
    return SetEndOfFile(H(ref)) || Fail();
}

bool FlushFile(int32_t ref) {
    if (int32_t status = FileOpShouldFail(kFileFlush)) return FailInjected(status);
    return FlushFileBuffers(H(ref)) || Fail();
}

uint32_t CreationMask() {
    int mask = _umask(0);
    _umask(mask);
    return static_cast<uint32_t>(mask);
}

bool LastErrorIsSharingConflict() {
    return gInjected == 0 && GetLastError() == 32;
}

int32_t LastErrorStatus() {
    if (gInjected) return gInjected;
    switch (GetLastError()) {
        case 2:    // ERROR_FILE_NOT_FOUND
        case 3:    // ERROR_PATH_NOT_FOUND
        case 267:  // ERROR_DIRECTORY
            return 7;
        case 5:   // ERROR_ACCESS_DENIED
        case 32:  // ERROR_SHARING_VIOLATION
        case 33:  // ERROR_LOCK_VIOLATION
            return 8;
        case 8:  // ERROR_NOT_ENOUGH_MEMORY
            return 2;
        case 80:   // ERROR_FILE_EXISTS
        case 183:  // ERROR_ALREADY_EXISTS
            return 10;
        case 87:   // ERROR_INVALID_PARAMETER
        case 123:  // ERROR_INVALID_NAME
        case 158:  // ERROR_NOT_LOCKED
            return 1;
        default:
            return 6;
    }
}

void SleepMilliseconds(int32_t ms) {
    Sleep(static_cast<DWORD>(ms));
}

}  // namespace plat
