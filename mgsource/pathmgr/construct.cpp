// Making, copying and releasing path values.
#include <stdarg.h>

#include "mg/ansi.h"
#include "pathmgr/pathblock.h"

using namespace pathmgr;

namespace {

// Gives `path` (or a new handle when it is null) a 4-byte block with no names. A failed
// resize of an existing handle is ignored, as long as the header still fits.
Path ResetPath(Path path, int32_t kind) {
    if (path == nullptr) {
        path = MemNewHandle(kHeaderSize);
        if (path == nullptr) return nullptr;
    } else {
        MemResizeHandle(path, kHeaderSize);
        if (!HasHeader(path)) return path;
    }
    WriteKind(*path, kind);
    WriteCount(*path, 0);
    return path;
}

}  // namespace

Path FPathAlloc(int32_t size) {
    return MemNewHandleClear(size);
}

Path FEmptyPath(Path path) {
    return ResetPath(path, PathKindAbsolute);
}

Path FMakeNoPath(Path path) {
    return ResetPath(path, PathKindNone);
}

MgStatus FPathRelease(Path path) {
    if (path == nullptr) return MgNoError;
    return MemDisposeHandle(path);
}

MgStatus FPathClone(Path* var) {
    if (var == nullptr || !FPathValid(*var)) return MgBadArgument;
    Path old = *var;
    *var = nullptr;
    int32_t size = MemHandleSize(old);
    Path copy = MemNewHandle(size);
    if (copy == nullptr) return MgNoMemory;
    BlockMove(*old, *copy, size);
    *var = copy;
    return MgNoError;
}

MgStatus FPathAssign(Path dst, Path src) {
    if (dst == nullptr || !FPathValid(src)) return MgBadArgument;
    if (dst == src) return MgNoError;
    int32_t size = MemHandleSize(src);
    MgStatus status = MemResizeHandle(dst, size);
    if (status != MgNoError) return status;
    BlockMove(*src, *dst, size);
    return MgNoError;
}

Path FBuildPath(Path path, int32_t kind, ...) {
    if (path != nullptr && !FPathValid(path)) return nullptr;
    if (kind < PathKindAbsolute || kind > PathKindUNC) return nullptr;

    va_list args;
    va_start(args, kind);
    int32_t count = 0;
    int32_t size = kHeaderSize;
    bool emptyFirst = false;
    for (ConstPStr name = va_arg(args, ConstPStr); name != nullptr;
         name = va_arg(args, ConstPStr)) {
        if (count == 0) emptyFirst = name[0] == 0;
        ++count;
        size += name[0] + 1;
    }
    va_end(args);

    // An absolute path can't start one level up: there is no volume to climb out of.
    if (kind == PathKindAbsolute && count > 0 && emptyFirst) {
        FPathRelease(path);
        return nullptr;
    }
    if (count > kMaxCount) return nullptr;

    if (path == nullptr) {
        path = MemNewHandle(size);
        if (path == nullptr) return nullptr;
    } else if (MemResizeHandle(path, size) != MgNoError) {
        return nullptr;
    }

    uint8_t* block = *path;
    WriteKind(block, kind);
    WriteCount(block, count);
    int32_t offset = kHeaderSize;
    va_start(args, kind);
    for (ConstPStr name = va_arg(args, ConstPStr); name != nullptr;
         name = va_arg(args, ConstPStr)) {
        BlockMove(name, block + offset, name[0] + 1);
        offset += name[0] + 1;
    }
    va_end(args);
    return path;
}
