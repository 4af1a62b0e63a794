// Directories and entries by name on Windows hosts. Permissions derive from the read-only
// attribute alone: 0444 when it is set, else 0666, and 0111 more for a directory.
#include <errno.h>
#include <io.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {

struct DirListing {
    HANDLE find;
    bool first;  // `data` holds an entry not yet handed out
    WIN32_FIND_DATAA data;
};

namespace {

constexpr DWORD kFileNotFound = 2;
constexpr DWORD kNoMoreFiles = 18;
constexpr int32_t kNameMax = 260;

// A failure of the host's own, whose error GetLastError still holds.
bool Failed() {
    return RecordInjectedFailure(0);
}

uint64_t Time(const FILETIME& t) {
    return (static_cast<uint64_t>(t.dwHighDateTime) << 32) | t.dwLowDateTime;
}

FILETIME FileTime(uint64_t t) {
    FILETIME f;
    f.dwLowDateTime = static_cast<DWORD>(t);
    f.dwHighDateTime = static_cast<DWORD>(t >> 32);
    return f;
}

int32_t Permissions(DWORD attributes) {
    int32_t bits = (attributes & FILE_ATTRIBUTE_READONLY) ? 0444 : 0666;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) ? bits + 0111 : bits;
}

void FillAttributes(DWORD attributes, EntryAttributes* a) {
    a->known = true;
    a->isDirectory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    a->permissions = Permissions(attributes);
}

// `directory` (which ends in a separator unless empty) with the pattern of every entry.
bool PatternOf(const char* directory, char* pattern) {
    size_t n = strlen(directory);
    if (n + 4 > kNameMax) return false;
    memcpy(pattern, directory, n);
    memcpy(pattern + n, "*.*", 4);
    return true;
}

bool FindOne(const char* name, WIN32_FIND_DATAA* data) {
    HANDLE h = FindFirstFileA(name, data);
    if (h == INVALID_HANDLE_VALUE) return Failed();
    return FindClose(h) || Failed();
}

}  // namespace

DirListing* OpenListing(const char* directory) {
    char pattern[kNameMax + 4];
    if (!PatternOf(directory, pattern)) {
        SetLastError(ERROR_INVALID_NAME);
        Failed();
        return nullptr;
    }
    DirListing* listing = static_cast<DirListing*>(malloc(sizeof(DirListing)));
    if (listing == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        Failed();
        return nullptr;
    }
    listing->find = FindFirstFileA(pattern, &listing->data);
    listing->first = listing->find != INVALID_HANDLE_VALUE;
    // No entry at all is an empty listing; any other failure is no listing.
    if (!listing->first && GetLastError() != kFileNotFound) {
        Failed();
        free(listing);
        return nullptr;
    }
    return listing;
}

bool NextListingEntry(DirListing* listing, ListedEntry* entry, bool* failed) {
    *failed = false;
    if (listing->find == INVALID_HANDLE_VALUE) return false;
    if (int32_t status = FileOpShouldFail(kFileListNext)) {
        *failed = true;
        return RecordInjectedFailure(status);
    }
    if (!listing->first && !FindNextFileA(listing->find, &listing->data)) {
        *failed = GetLastError() != kNoMoreFiles;
        return Failed();
    }
    listing->first = false;
    entry->name = listing->data.cFileName;
    entry->shortName = listing->data.cAlternateFileName;
    entry->attributes = EntryAttributes{};
    FillAttributes(listing->data.dwFileAttributes, &entry->attributes);
    return true;
}

bool CloseListing(DirListing* listing) {
    if (listing == nullptr) return true;
    bool ok = listing->find == INVALID_HANDLE_VALUE || FindClose(listing->find);
    if (!ok) Failed();
    free(listing);
    return ok;
}

bool GetEntryAttributes(const char* name, EntryAttributes* attributes) {
    *attributes = EntryAttributes{};
    DWORD a = GetFileAttributesA(name);
    if (a == INVALID_FILE_ATTRIBUTES) return Failed();
    FillAttributes(a, attributes);
    return true;
}

bool GetFileFacts(const char* name, FileFacts* facts) {
    *facts = FileFacts{};
    WIN32_FIND_DATAA d;
    if (!FindOne(name, &d)) return false;
    facts->isDirectory = (d.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    facts->readOnly = (d.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    facts->size = (static_cast<uint64_t>(d.nFileSizeHigh) << 32) | d.nFileSizeLow;
    facts->created = Time(d.ftCreationTime);
    facts->modified = Time(d.ftLastWriteTime);
    return true;
}

// The listing's count, from 1 at the first entry. A root lists no "." and "..", every other
// directory does, and they are not counted.
int32_t DirectorySize(const char* directory, bool volumeRoot) {
    char prefix[kNameMax + 4], pattern[kNameMax + 4];
    size_t n = strlen(directory);
    if (n + 2 > kNameMax) return volumeRoot ? 0 : -2;
    memcpy(prefix, directory, n + 1);
    if (!volumeRoot) memcpy(prefix + n, "\\", 2);
    int32_t count = 0;
    if (PatternOf(prefix, pattern)) {
        WIN32_FIND_DATAA d;
        HANDLE h = FindFirstFileA(pattern, &d);
        if (h != INVALID_HANDLE_VALUE) {
            for (count = 1; FindNextFileA(h, &d);) ++count;
            FindClose(h);
        }
    }
    return volumeRoot ? count : count - 2;
}

bool SetFileDates(const char* name, uint64_t created, uint64_t modified) {
    HANDLE h =
        CreateFileA(name, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) return Failed();
    FILETIME c = FileTime(created), m = FileTime(modified);
    BOOL ok = SetFileTime(h, created ? &c : nullptr, nullptr, modified ? &m : nullptr);
    DWORD error = GetLastError();
    CloseHandle(h);
    if (ok) return true;
    SetLastError(error);
    return Failed();
}

bool ExactLeafName(const char* name, char* leaf, int32_t size) {
    WIN32_FIND_DATAA d;
    if (!FindOne(name, &d)) return false;
    size_t n = strlen(d.cFileName);
    if (n >= static_cast<size_t>(size)) return false;
    memcpy(leaf, d.cFileName, n + 1);
    return true;
}

// Shortcuts are followed as native names are made; the file system has nothing more.
bool FollowLinks(const char*, char*, int32_t) {
    return false;
}

bool MoveEntry(const char* from, const char* to) {
    return MoveFileA(from, to) || Failed();
}

bool RenameReplacing(const char* from, const char* to) {
    return MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING) || Failed();
}

bool CopyFileNew(const char* from, const char* to) {
    return CopyFileA(from, to, TRUE) || Failed();
}

bool DeleteFileEntry(const char* name) {
    return DeleteFileA(name) || Failed();
}

bool RemoveDirectoryEntry(const char* name) {
    return RemoveDirectoryA(name) || Failed();
}

bool MakeDirectory(const char* name) {
    return CreateDirectoryA(name, nullptr) || Failed();
}

bool ChangePermissions(const char* name, int32_t permissions) {
    errno = 0;
    return _chmod(name, permissions) == 0;
}

}  // namespace plat
