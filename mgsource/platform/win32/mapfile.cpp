// Whole files mapped for reading on Windows hosts: a read-only view of a file mapping, which
// the token names.
#include <stdint.h>
#include <windows.h>

#include "platform/platform.h"

namespace plat {

bool MapFileForReading(const char* name, const uint8_t** bytes, int64_t* length, void** token) {
    *bytes = nullptr;
    *length = 0;
    *token = nullptr;
    HANDLE file = CreateFileA(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    LARGE_INTEGER size;
    HANDLE mapping = nullptr;
    if (GetFileType(file) == FILE_TYPE_DISK && GetFileSizeEx(file, &size) && size.QuadPart > 0 &&
        static_cast<uint64_t>(size.QuadPart) <= SIZE_MAX)
        mapping = CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
    CloseHandle(file);
    if (!mapping) return false;
    void* view = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
    if (!view) {
        CloseHandle(mapping);
        return false;
    }
    *bytes = static_cast<const uint8_t*>(view);
    *length = size.QuadPart;
    *token = mapping;
    return true;
}

void UnmapFile(const uint8_t* bytes, int64_t, void* token) {
    if (bytes) UnmapViewOfFile(bytes);
    if (token) CloseHandle(static_cast<HANDLE>(token));
}

}  // namespace plat
