// Replacing an open file whole on Windows hosts. The new file is made beside the old one under
// a hidden name, `.<name>.XXXXXX.new`, and held open with no sharing while it is written, so
// that nobody can delete it meanwhile; a write-back of the same file later removes the hidden
// files it can delete, whose writers are gone. An open file can't be renamed over, so the
// commit closes both, renames the new file over the old name with MoveFileExA (ReplaceFileA
// where that is refused), and opens the name again with the old access and share mode. The
// reopened handle may have another value than the old one: the caller takes `*ref` as it comes
// back.
#include <string.h>
#include <windows.h>

#include <map>
#include <string>

#include "platform/faults_internal.h"
#include "platform/platform.h"
#include "platform/win32/files_internal.h"

namespace plat {
namespace {

struct OpenName {
    std::string path;
    int access = 0;
    int share = 0;
};
std::map<int32_t, OpenName> gOpen;
std::map<int32_t, std::string> gTempPath;

HANDLE H(int32_t ref) {
    return reinterpret_cast<HANDLE>(static_cast<intptr_t>(ref));
}

int32_t Ref(HANDLE h) {
    return static_cast<int32_t>(reinterpret_cast<intptr_t>(h));
}

constexpr char kSuffix[] = ".new";
constexpr size_t kRandomChars = 6;
constexpr int kNameTries = 16;

// Names compare without regard to case, as the file system does.
bool IsHiddenName(const char* entry, const std::string& leaf) {
    const size_t length = strlen(entry), suffix = sizeof kSuffix - 1;
    if (length != leaf.size() + 2 + kRandomChars + suffix || entry[0] != '.' ||
        _strnicmp(entry + 1, leaf.c_str(), leaf.size()) != 0 || entry[leaf.size() + 1] != '.')
        return false;
    return _stricmp(entry + length - suffix, kSuffix) == 0;
}

// Hidden files of earlier write-backs of `leaf`: a writer holds its file open with no sharing,
// so only those whose writers are gone can be deleted.
void RemoveLeftovers(const std::string& dir, const std::string& leaf) {
    WIN32_FIND_DATAA found;
    HANDLE find = FindFirstFileA((dir + "\\." + leaf + ".*" + kSuffix).c_str(), &found);
    if (find == INVALID_HANDLE_VALUE) return;
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) &&
            IsHiddenName(found.cFileName, leaf))
            DeleteFileA((dir + "\\" + found.cFileName).c_str());
    } while (FindNextFileA(find, &found));
    FindClose(find);
}

// A new file under a hidden name of random characters, open with no sharing.
HANDLE MakeHidden(const std::string& dir, const std::string& leaf, std::string* name) {
    static const char kChars[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    for (int tries = 0; tries < kNameTries; ++tries) {
        uint8_t random[16] = {};
        NewGuidBytes(random);
        *name = dir + "\\." + leaf + ".";
        for (size_t i = 0; i < kRandomChars; ++i) *name += kChars[random[i] % (sizeof kChars - 1)];
        *name += kSuffix;
        HANDLE h = CreateFileA(name->c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
        if (h != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS) return h;
    }
    return INVALID_HANDLE_VALUE;
}

HANDLE Reopen(const OpenName& n) {
    const DWORD access = ((n.access & kAccessRead) ? GENERIC_READ : 0) |
                         ((n.access & kAccessWrite) ? GENERIC_WRITE : 0);
    const DWORD share = n.share == kShareAll    ? FILE_SHARE_READ | FILE_SHARE_WRITE
                        : n.share == kShareRead ? FILE_SHARE_READ
                                                : 0;
    return CreateFileA(n.path.c_str(), access, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                       nullptr);
}

}  // namespace

void NoteOpenFile(int32_t ref, const char* name, int access, int share) {
    if (!(access & kAccessWrite)) return;
    char full[MAX_PATH];
    const DWORD n = GetFullPathNameA(name, MAX_PATH, full, nullptr);
    if (n == 0 || n >= MAX_PATH) return;
    gOpen[ref] = {full, access, share};
}

void ForgetOpenFile(int32_t ref) {
    gOpen.erase(ref);
}

bool ReplaceBegin(int32_t ref, int32_t sizeHint, int32_t* tempRef) {
    (void)sizeHint;
    *tempRef = 0;
    if (int32_t status = FileOpShouldFail(kFileReplace)) return RecordInjectedFailure(status);
    auto it = gOpen.find(ref);
    if (it == gOpen.end()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return RecordInjectedFailure(0);
    }
    const std::string& path = it->second.path;
    const size_t slash = path.find_last_of("\\/");
    const std::string dir = slash == std::string::npos ? "." : path.substr(0, slash);
    const std::string leaf = slash == std::string::npos ? path : path.substr(slash + 1);
    RemoveLeftovers(dir, leaf);
    std::string temp;
    HANDLE h = MakeHidden(dir, leaf, &temp);
    if (h == INVALID_HANDLE_VALUE) return RecordInjectedFailure(0);
    gTempPath[Ref(h)] = temp;
    *tempRef = Ref(h);
    return true;
}

bool ReplaceCommit(int32_t* ref, int32_t tempRef) {
    auto it = gOpen.find(*ref);
    auto temp = gTempPath.find(tempRef);
    if (it == gOpen.end() || temp == gTempPath.end()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return RecordInjectedFailure(0);
    }
    if (int32_t status = FileOpShouldFail(kFileReplace)) return RecordInjectedFailure(status);
    const OpenName old = it->second;
    const std::string tempPath = temp->second;
    CloseHandle(H(tempRef));
    gTempPath.erase(temp);
    CloseHandle(H(*ref));
    gOpen.erase(it);
    // A rename over the old name is one step of the file system, so a process killed around it
    // leaves the old file or the new one; ReplaceFileA takes several steps and is only the
    // fallback, for a target that the rename may not replace. The new file takes the old one's
    // attributes first.
    const DWORD attributes = GetFileAttributesA(old.path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES)
        SetFileAttributesA(tempPath.c_str(), attributes & ~FILE_ATTRIBUTE_READONLY);
    BOOL moved = MoveFileExA(tempPath.c_str(), old.path.c_str(),
                             MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    if (!moved)
        moved = ReplaceFileA(old.path.c_str(), tempPath.c_str(), nullptr,
                             REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr);
    const DWORD code = moved ? 0 : GetLastError();
    if (!moved) DeleteFileA(tempPath.c_str());
    // Old or new, the name is opened again; only a failure here leaves no file behind `ref`.
    HANDLE h = Reopen(old);
    if (h == INVALID_HANDLE_VALUE) return RecordInjectedFailure(0);
    *ref = Ref(h);
    gOpen[*ref] = old;
    if (!moved) {
        SetLastError(code);
        return RecordInjectedFailure(0);
    }
    return true;
}

void ReplaceAbandon(int32_t tempRef) {
    auto temp = gTempPath.find(tempRef);
    if (temp == gTempPath.end()) return;
    CloseHandle(H(tempRef));
    DeleteFileA(temp->second.c_str());
    gTempPath.erase(temp);
}

// The cache manager has no call to drop one file's pages; nothing to do.
void ReleaseCachedPages(int32_t) {}

}  // namespace plat
