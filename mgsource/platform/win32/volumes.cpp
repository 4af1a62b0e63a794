// Volumes on Windows hosts: the drives and shares, their kinds and their space.
#include <string.h>
#include <windows.h>

#include "mg/dbgtools.h"
#include "platform/faults_internal.h"
#include "platform/platform.h"

MG_SOURCE_IDENTITY("mgsource\\platform\\win32\\volumes.cpp", "$Revision: 1 $");

namespace plat {
namespace {

bool Failed() {
    return RecordInjectedFailure(0);
}

int32_t KindOfDriveType(UINT type) {
    switch (type) {
        case DRIVE_REMOVABLE:
        case DRIVE_CDROM:
            return kVolumeRemovable;
        case DRIVE_FIXED:
        case DRIVE_RAMDISK:
            return kVolumeFixed;
        case DRIVE_REMOTE:
            return kVolumeRemote;
        default:
            return kVolumeUnknown;
    }
}

// "C:\" or "C:", or "\\server\share" with or without its last backslash.
bool IsRootName(const char* name) {
    size_t n = strlen(name);
    if (n >= 2 && name[1] == ':') return n == 2 || (n == 3 && name[2] == '\\');
    if (n < 2 || name[0] != '\\' || name[1] != '\\') return false;
    int separators = 0;
    for (size_t i = 2; i < n; ++i)
        if (name[i] == '\\' && i + 1 < n) ++separators;
    return separators == 1;
}

typedef BOOL(WINAPI* FreeSpaceEx)(LPCSTR, PULARGE_INTEGER, PULARGE_INTEGER, PULARGE_INTEGER);

double Bytes(const ULARGE_INTEGER& v) {
    return v.HighPart * 4294967296.0 + v.LowPart;
}

}  // namespace

bool ListVolumes(bool (*visit)(void* context, const char* name, int32_t kind), void* context) {
    DWORD drives = GetLogicalDrives();
    for (int letter = 0; letter < 26; ++letter) {
        if (!(drives & (1u << letter))) continue;
        char name[2] = {static_cast<char>('A' + letter), 0};
        char root[4] = {name[0], ':', '\\', 0};
        if (!visit(context, name, KindOfDriveType(GetDriveTypeA(root)))) break;
    }
    return true;
}

int32_t VolumeKindOfRoot(const char* name) {
    if (!IsRootName(name)) return -1;
    return KindOfDriveType(GetDriveTypeA(name));
}

bool VolumeRootOf(const char* name, char* root, int32_t size) {
    size_t n = 0;
    if (name[0] != 0 && name[1] == ':') {
        n = 2;
    } else if (name[0] == '\\' && name[1] == '\\') {
        const char* server = strchr(name + 2, '\\');
        const char* end = server ? strchr(server + 1, '\\') : nullptr;
        n = end ? static_cast<size_t>(end - name) : strlen(name);
    }
    if (n == 0 || n + 2 > static_cast<size_t>(size)) {
        SetLastError(ERROR_INVALID_NAME);
        return Failed();
    }
    memcpy(root, name, n);
    memcpy(root + n, "\\", 2);
    return true;
}

bool VolumeSpace(const char* root, uint64_t* total, uint64_t* free) {
    DWORD sectorsPerCluster = 0, bytesPerSector = 0, freeClusters = 0, clusters = 0;
    if (!GetDiskFreeSpaceA(root, &sectorsPerCluster, &bytesPerSector, &freeClusters, &clusters))
        return Failed();
    uint64_t cluster = static_cast<uint64_t>(sectorsPerCluster) * bytesPerSector;
    *total = clusters * cluster;
    *free = freeClusters * cluster;
    return true;
}

// The wide call may be missing on older systems; it is looked up by name each time.
bool VolumeBytes(const char* root, double* total, double* free) {
    HMODULE kernel = GetModuleHandleA("kernel32.dll");
    if (kernel == nullptr) MG_FAIL();
    auto wide = kernel ? reinterpret_cast<FreeSpaceEx>(
                             reinterpret_cast<void*>(GetProcAddress(kernel, "GetDiskFreeSpaceExA")))
                       : nullptr;
    if (wide != nullptr) {
        ULARGE_INTEGER available, all, allFree;
        if (!wide(root, &available, &all, &allFree)) {
            *total = *free = 0.0;
            return Failed();
        }
        *total = Bytes(all);
        *free = Bytes(allFree);
        return true;
    }
    DWORD sectorsPerCluster = 0, bytesPerSector = 0, freeClusters = 0, clusters = 0;
    if (!GetDiskFreeSpaceA(root, &sectorsPerCluster, &bytesPerSector, &freeClusters, &clusters))
        return Failed();
    double cluster = static_cast<double>(sectorsPerCluster) * bytesPerSector;
    *total = clusters * cluster;
    *free = freeClusters * cluster;
    return true;
}

}  // namespace plat
