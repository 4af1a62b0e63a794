// Shortcuts and universal names. A shortcut is known by its name alone, so an ordinary name
// costs a test of its last four characters; only a candidate is handed to the host, which
// reads the shortcut file where it has such files.
#include "mg/shortcut.h"

#include "mg/ansi.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "platform/platform.h"

namespace {

// Names from this length on are never looked at, nor written back.
constexpr int32_t kShortcutNameMax = 260;
// Room for a whole native name and one replaced prefix in front of its tail.
constexpr int32_t kWorkSize = FNativeNameBufferSize + kShortcutNameMax + 4;

bool IsShortcutName(const char* name, int32_t length) {
    static const uint8_t kSuffix[] = ".LNK";
    if (length < 4) return false;
    for (int32_t i = 0; i < 4; ++i)
        if (CharToUpper(static_cast<uint8_t>(name[length - 4 + i])) != kSuffix[i]) return false;
    return true;
}

}  // namespace

extern "C" {

int32_t FResolveShortcut(char* name) {
    if (name == nullptr || !IsShortcutName(name, StrLen(name))) return 0;
    return plat::ResolveShortcutFile(name) ? 1 : 0;
}

// Walks the name from the left: each directory level that is a shortcut is replaced by its
// target, and the walk goes on in the tail, so shortcuts at several levels are all followed.
// A replaced prefix is not looked at again.
int32_t FResolveShortcutPath(char* name) {
    if (name == nullptr) return 0;
    const char separator = plat::DirectorySeparator();
    char work[kWorkSize];
    int32_t length = StrLen(name);
    if (length >= FNativeNameBufferSize) return 0;
    BlockMove(name, work, length + 1);
    bool changed = false;
    for (int32_t at = 0; at < length; ++at) {
        if (work[at] != separator) continue;
        if (at >= kShortcutNameMax) break;
        if (!IsShortcutName(work, at)) continue;  // spares the copy for an ordinary prefix
        char prefix[kShortcutNameMax + 4];
        BlockMove(work, prefix, at);
        prefix[at] = 0;
        if (!FResolveShortcut(prefix)) continue;
        changed = true;
        int32_t resolved = StrLen(prefix);
        if (resolved > 0 && prefix[resolved - 1] == separator) --resolved;
        BlockMove(work + at, work + resolved, length - at + 1);
        BlockMove(prefix, work, resolved);
        length += resolved - at;
        at = resolved;  // the separator that starts the tail
    }
    if (length < kShortcutNameMax && FResolveShortcut(work)) {
        changed = true;
        length = StrLen(work);
    }
    if (!changed || length >= kShortcutNameMax) return 0;
    BlockMove(work, name, length + 1);
    return 1;
}

MgStatus FPathToUniversal(Path path, Path* out) {
    if (out == nullptr) return MgBadArgument;
    char* text = nullptr;
    // An unwritten text has no universal form to ask for.
    bool written = FPathToCBuffer(path, &text) == MgNoError && text != nullptr;
    uint32_t size = written ? plat::UniversalNameSize(text) : 0;
    MgStatus status = MgNoError;
    if (size == 0) {
        if (*out == nullptr) *out = FEmptyPath(nullptr);
        status = *out == nullptr ? MgNoMemory : FPathAssign(*out, path);
    } else if (Ptr block = MemNewPtr(static_cast<int32_t>(size)); block == nullptr) {
        status = MgNoMemory;
    } else {
        const char* universal = nullptr;
        status =
            plat::UniversalName(text, block, size, &universal)
                ? FTextToPath(reinterpret_cast<const uint8_t*>(universal), StrLen(universal), out)
                : MgBadArgument;
        MemDisposePtr(block);
    }
    if (text != nullptr) MemDisposePtr(reinterpret_cast<Ptr>(text));
    return status;
}

}  // extern "C"
