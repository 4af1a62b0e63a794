// Native names: the text handed to the host for a path, and the judgement of which names the
// host accepts. This is the only border where names are checked.
#include "mg/ansi.h"
#include "mg/pstring.h"
#include "mg/shortcut.h"
#include "pathmgr/pathblock.h"
#include "platform/platform.h"

using namespace pathmgr;

namespace {

constexpr const void* kScript = nullptr;
constexpr int32_t kWindowsNameMax = 260;

// Leading components that name the volume: a drive in the Windows syntax, none in POSIX's.
int32_t VolumeDepthOf(int32_t syntax) {
    return syntax == PathSyntaxPosix ? 0 : 1;
}

// Adds a refused character to the caller's NUL-terminated list, which holds 256 bytes.
void NoteCharacter(char* found, uint8_t c) {
    if (found == nullptr) return;
    int32_t n = StrLen(found);
    if (n >= 255) return;
    found[n] = static_cast<char>(c);
    found[n + 1] = 0;
}

bool IsForbiddenWindows(uint8_t c) {
    static const char kForbidden[] = ":\"<>|*?/\\";
    for (const char* p = kForbidden; *p != 0; ++p)
        if (static_cast<uint8_t>(*p) == c) return true;
    return false;
}

bool IsReservedDevice(ConstPStr name) {
    static const uint8_t* const kDevices[] = {
        reinterpret_cast<const uint8_t*>("\003AUX"), reinterpret_cast<const uint8_t*>("\006CLOCK$"),
        reinterpret_cast<const uint8_t*>("\003CON"), reinterpret_cast<const uint8_t*>("\003NUL"),
        reinterpret_cast<const uint8_t*>("\003PRN")};
    for (ConstPStr device : kDevices)
        if (PStringSameNoCase(name, device)) return true;
    // COM1..COM9 and LPT1..LPT9, and also COM0 and LPT0; longer numbers are ordinary names.
    static const char* const kNumbered[] = {"COM", "LPT"};
    for (const char* prefix : kNumbered) {
        if (name[0] == 4 && StrNCaseCmp(reinterpret_cast<const char*>(name + 1), prefix, 3) == 0 &&
            IsDigitChar(name[4]))
            return true;
    }
    return false;
}

int32_t CheckWindows(ConstPStr name, char* found) {
    int32_t flags = 0;
    int32_t length = name[0];
    const uint8_t* text = name + 1;
    if (length > kMaxNameLength) flags |= NameTooLong;
    // Backward, so that the refused characters are listed from the end of the name.
    for (int32_t offset = length; offset > 0;) {
        int32_t previous = FPrevCharOffset(text, offset, kScript);
        uint8_t c = text[previous];
        bool plain = offset - previous == 2 || IsAlphaChar(c) || IsDigitChar(c) || c >= 128;
        if (!plain && IsForbiddenWindows(c)) {
            flags |= NameBadCharacter;
            NoteCharacter(found, c);
        }
        offset = previous;
    }
    if (IsReservedDevice(name)) flags |= NameReservedDevice;
    if (!(flags & NameTooLong) && length > 0 && text[length - 1] == '.') flags |= NameTrailingDot;
    return flags;
}

// POSIX refuses only a '/' or NUL inside a name, and the names "." and "..".
int32_t CheckPosix(ConstPStr name, char* found) {
    int32_t flags = 0;
    int32_t length = name[0];
    const uint8_t* text = name + 1;
    for (int32_t offset = length; offset > 0;) {
        int32_t previous = FPrevCharOffset(text, offset, kScript);
        uint8_t c = text[previous];
        if (offset - previous == 1 && (c == '/' || c == 0)) {
            flags |= NameBadCharacter;
            // A NUL can't be shown in the NUL-terminated list; the flag alone reports it.
            if (c != 0) NoteCharacter(found, c);
        }
        offset = previous;
    }
    if ((length == 1 && text[0] == '.') || (length == 2 && text[0] == '.' && text[1] == '.'))
        flags |= NameReservedDevice;
    return flags;
}

bool IsDriveLetter(uint8_t c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// "C:\a\b" or "\\server\share\a". Lengths are read as signed bytes, so a name of 128 bytes or
// more copies nothing and the walk moves on by one byte; the output is bounded by the limit
// all the same, so such a name can only shorten the text or fail.
MgStatus WindowsName(Path path, char* name) {
    if (!FPathRooted(path) || CountOf(path) < VolumeDepthOf(PathSyntaxWindows))
        return MgBadArgument;
    const uint8_t* block = *path;
    int32_t size = MemHandleSize(path);
    int32_t count = CountOf(path);
    bool absolute = KindOf(path) == PathKindAbsolute;
    ConstPStr first = NameAtOffset(block, size, kHeaderSize);
    if (absolute && (first[0] != 1 || !IsDriveLetter(first[1]))) return MgBadArgument;

    int32_t firstLength = static_cast<int8_t>(first[0]);
    int32_t total = firstLength + 1;
    int32_t out = 0;
    if (firstLength > 0) {
        BlockMove(first + 1, name, firstLength);
        out = firstLength;
    }
    if (absolute) name[out++] = ':';
    if (count == 1) name[out++] = '\\';
    int32_t offset = kHeaderSize + (firstLength > 0 ? firstLength : 0) + 1;

    for (int32_t i = 1; i < count; ++i) {
        ConstPStr component = NameAtOffset(block, size, offset);
        char found[256] = {};
        if (FCheckNameSyntax(component, found, nullptr, PathSyntaxWindows) != 0)
            return MgBadArgument;
        int32_t length = static_cast<int8_t>(component[0]);
        int32_t copied = length > 0 ? length : 0;
        total += length + 1;
        if (total > kWindowsNameMax || out + 1 + copied > kWindowsNameMax) {
            name[out] = 0;
            // No call has failed: the status is whatever the host's last error says.
            return plat::LastErrorStatus();
        }
        name[out++] = '\\';
        BlockMove(component + 1, name + out, copied);
        out += copied;
        offset = offset + copied + 1;
    }
    name[out] = 0;
    FResolveShortcutPath(name);
    return MgNoError;
}

// "/a/b": no volume, so the absolute path with no names is the root.
MgStatus PosixName(Path path, char* name) {
    // Network shares have no POSIX name.
    if (!FPathIsKind(path, PathKindAbsolute) || CountOf(path) < VolumeDepthOf(PathSyntaxPosix))
        return MgBadArgument;
    const uint8_t* block = *path;
    int32_t size = MemHandleSize(path);
    int32_t count = CountOf(path);
    int32_t limit = plat::NativeNameMax();
    if (limit > FNativeNameBufferSize - 1) limit = FNativeNameBufferSize - 1;
    int32_t out = 0;
    int32_t offset = kHeaderSize;
    if (count == 0) name[out++] = '/';
    for (int32_t i = 0; i < count; ++i) {
        ConstPStr component = NameAtOffset(block, size, offset);
        char found[256] = {};
        if (FCheckNameSyntax(component, found, nullptr, PathSyntaxPosix) != 0) return MgBadArgument;
        int32_t length = component[0] == 0 ? 2 : component[0];
        if (out + 1 + length > limit) {
            name[out] = 0;
            return plat::LastErrorStatus();
        }
        name[out++] = '/';
        // An up-level component left in a path that was never normalised still means "..".
        BlockMove(component[0] == 0 ? reinterpret_cast<const uint8_t*>("..") : component + 1,
                  name + out, length);
        out += length;
        offset = SkipName(block, size, offset);
    }
    name[out] = 0;
    FResolveShortcutPath(name);
    return MgNoError;
}

}  // namespace

int32_t FCheckNameSyntax(ConstPStr name, char* found, char* /*extra*/, int32_t syntax) {
    static const uint8_t kNoName[1] = {0};
    if (name == nullptr) name = kNoName;
    return syntax == PathSyntaxPosix ? CheckPosix(name, found) : CheckWindows(name, found);
}

int32_t FCheckName(ConstPStr name, char* found, char* extra) {
    return FCheckNameSyntax(name, found, extra, FHostPathSyntax());
}

int32_t FCheckNewName(ConstPStr name, Path /*path*/, int32_t skip, char* found, char* extra) {
    if (found != nullptr) found[0] = 0;
    if (extra != nullptr) extra[0] = 0;
    // 2 stands apart from the flags: there is no name to judge.
    if (name == nullptr || name[0] == 0) return 2;
    if (skip != 0) return 0;
    return FCheckName(name, found, extra);
}

MgStatus FPathToNativeNameSyntax(Path path, char* name, int32_t syntax) {
    if (name == nullptr) return MgBadArgument;
    return syntax == PathSyntaxPosix ? PosixName(path, name) : WindowsName(path, name);
}

MgStatus FPathToNativeName(Path path, char* name) {
    return FPathToNativeNameSyntax(path, name, FHostPathSyntax());
}
