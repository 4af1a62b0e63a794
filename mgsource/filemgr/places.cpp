// Well-known directories and the file system's own form of a path: links followed, names
// spelled as the file system spells them.
#include "mg/ansi.h"
#include "mg/filemgr.h"
#include "mg/host.h"
#include "mg/path.h"
#include "mg/pstring.h"
#include "platform/platform.h"

namespace {

// Kind of HostConfigRead that names a directory.
constexpr int32_t kConfigDirectory = 5;
constexpr int32_t kConfigNoMemory = 22;

MgStatus TextToPath(const char* text, Path* path) {
    return FTextToPath(reinterpret_cast<const uint8_t*>(text), StrLen(text), path);
}

// The longest name the host reports for a directory, with its NUL, within our buffers.
int32_t HostNameSize() {
    int32_t size = plat::NativeNameMax() + 1;
    return size < FNativeNameBufferSize ? size : FNativeNameBufferSize;
}

}  // namespace

extern "C" {

Path FResolvedPath(Path out, Path path) {
    if (!FPathRooted(path)) return nullptr;
    if (FPathDepth(path) < plat::VolumeDepth()) return FEmptyPath(out);
    char name[FNativeNameBufferSize], followed[FNativeNameBufferSize];
    if (FPathToNativeName(path, name) != MgNoError) return nullptr;
    // Links the kernel follows by itself are followed here too; a name that isn't there has
    // none to follow.
    const char* text = plat::FollowLinks(name, followed, sizeof followed) ? followed : name;
    Path resolved = nullptr;
    if (TextToPath(text, &resolved) != MgNoError) {
        FPathRelease(resolved);
        return nullptr;
    }
    if (out == nullptr) return resolved;
    MgStatus status = FPathAssign(out, resolved);
    FPathRelease(resolved);
    return status == MgNoError ? out : nullptr;
}

MgStatus FExactCasePath(Path path) {
    if (!FPathRooted(path)) return MgBadArgument;
    Path clone = path;
    if (MgStatus status = FPathClone(&clone)) return status;
    MgStatus status = FRootOf(clone, clone);
    alignas(LStr) char text[FNativeNameBufferSize];
    int32_t length = 0;
    if (status == MgNoError) {
        LStr* measure = reinterpret_cast<LStr*>(text);
        measure->count = -1;
        status = FPathTextInto(clone, measure);
        if (status == MgNoError && measure->count + 4 >= FNativeNameBufferSize) status = 1;
        if (status == MgNoError) {
            measure->count = 0;
            FPathTextInto(clone, measure);
            length = measure->count;
            BlockMove(measure->text, text, length);
        }
    }
    const char separator = plat::DirectorySeparator();
    for (int32_t i = FPathDepth(clone); status == MgNoError && i < FPathDepth(path); ++i) {
        uint8_t name[256];
        FNameAt(path, i, name);
        if (length + 2 + name[0] >= FNativeNameBufferSize) {
            status = MgBadArgument;
            break;
        }
        if (length == 0 || text[length - 1] != separator) text[length++] = separator;
        BlockMove(name + 1, text + length, name[0]);
        length += name[0];
        text[length] = 0;
        char leaf[FNativeNameBufferSize];
        if (!plat::ExactLeafName(text, leaf, sizeof leaf)) {
            status = MgNotFound;
            break;
        }
        uint8_t spelled[256];
        TextToPString(leaf, spelled);
        status = FAppendName(clone, spelled);
    }
    if (status == MgNoError) status = FPathAssign(path, clone);
    FPathRelease(clone);
    return status;
}

MgStatus FCurrentDirectory(Path* path) {
    if (path == nullptr) return MgBadArgument;
    char text[FNativeNameBufferSize];
    if (plat::CurrentDirectory(text, HostNameSize()) == 0) return MgNotFound;
    return TextToPath(text, path);
}

// The running program's file name, from the host; empty when the host can't tell.
int32_t FApplicationName(char* buffer, int32_t size) {
    if (buffer == nullptr || size <= 0) return 0;
    int32_t length = plat::ModuleFileName(buffer, size);
    if (length == 0) buffer[0] = 0;
    return length;
}

MgStatus FApplicationPath(Path path) {
    if (path == nullptr) return MgBadArgument;
    char text[FNativeNameBufferSize];
    FApplicationName(text, HostNameSize());
    return TextToPath(text, &path);
}

MgStatus FApplicationDirectory(Path path) {
    if (MgStatus status = FApplicationPath(path)) return status;
    return FDirName(path, path);
}

MgStatus FPreferredDirectory(const char* selector, Path* path, Path fallback) {
    if (path == nullptr) return MgBadArgument;
    Path p = FEmptyPath(*path);
    *path = nullptr;
    if (p == nullptr) return MgNoMemory;
    int32_t answer = HostConfigRead(kConfigDirectory, selector, p);
    if (answer == kConfigNoMemory) {
        FPathRelease(p);
        return MgNoMemory;
    }
    if (answer == MgNoError) answer = FIsDirectory(p);
    if (answer != MgNoError && fallback != nullptr) {
        answer = FIsDirectory(fallback);
        if (answer == MgNoError) answer = FPathAssign(p, fallback);
    }
    if (answer == MgNoError) {
        *path = p;
        return MgNoError;
    }
    FPathRelease(p);
    return answer;
}

MgStatus FTempDirectory(Path path) {
    if (path == nullptr) return MgBadArgument;
    char text[FNativeNameBufferSize];
    if (plat::TempDirectory(text, HostNameSize()) == 0) return MgNotFound;
    if (MgStatus status = TextToPath(text, &path)) return status;
    FExactCasePath(path);
    if (FIsDirectory(path) == MgNoError) return MgNoError;
    return FApplicationDirectory(path);
}

}  // extern "C"
