// Process and text services on Windows hosts.
#include <locale.h>
#include <windows.h>
// windows.h makes these names macros for their A and W forms, which would rename the seam's own.
#undef CharLower
#undef CharUpper

#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {

// Large pages on Windows need a privilege the process doesn't hold; blocks stay as they are.
void AdviseLargeBlock(void* block, size_t size) {
    (void)block;
    (void)size;
}

// Fresh pages come aligned to the allocation granularity (64 KiB), which is all the slabs ask.
void* AlignedBlock(size_t size) {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    if (size > info.dwAllocationGranularity) return nullptr;
    return VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void FreeAlignedBlock(void* block) {
    VirtualFree(block, 0, MEM_RELEASE);
}

int32_t CurrentDirectory(char* buffer, int32_t size) {
    int32_t length = 0;
    if (CurrentDirectoryOverride(buffer, size, &length)) return length;
    if (size <= 0) return 0;
    DWORD n = GetCurrentDirectoryA(static_cast<DWORD>(size), buffer);
    return (n == 0 || n >= static_cast<DWORD>(size)) ? 0 : static_cast<int32_t>(n);
}

char DirectorySeparator() {
    return '\\';
}

int32_t VolumeDepth() {
    return 1;
}

int32_t NativeNameMax() {
    return 260;
}

// CharLowerA and CharUpperA take a character of up to 16 bits in place of a pointer when the
// high word is 0, and give the mapped character back in the low word.
uint32_t CharValueLower(uint16_t c) {
    return static_cast<uint32_t>(
        reinterpret_cast<uintptr_t>(CharLowerA(reinterpret_cast<LPSTR>(uintptr_t{c}))) & 0xFFFF);
}
uint32_t CharValueUpper(uint16_t c) {
    return static_cast<uint32_t>(
        reinterpret_cast<uintptr_t>(CharUpperA(reinterpret_cast<LPSTR>(uintptr_t{c}))) & 0xFFFF);
}
uint8_t CharLower(uint8_t c) {
    return static_cast<uint8_t>(CharValueLower(c));
}
uint8_t CharUpper(uint8_t c) {
    return static_cast<uint8_t>(CharValueUpper(c));
}

int32_t ModuleFileName(char* buffer, int32_t size) {
    if (size <= 0) return 0;
    DWORD n = GetModuleFileNameA(nullptr, buffer, static_cast<DWORD>(size));
    return n >= static_cast<DWORD>(size) ? 0 : static_cast<int32_t>(n);
}

int32_t ProcessId() {
    return static_cast<int32_t>(GetCurrentProcessId());
}

void UseUserLocaleForTimeAndNumbers() {
    setlocale(LC_NUMERIC, "");
    setlocale(LC_TIME, "");
}

char UserDecimalMark() {
    char mark[2] = {0, 0};
    GetProfileStringA("intl", "sDecimal", "", mark, sizeof mark);
    return mark[0];
}

}  // namespace plat
