// Fields and components of a path: reading them, replacing one, adding and removing the last.
#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "pathmgr/pathblock.h"
#include "platform/platform.h"

MG_SOURCE_IDENTITY("mgsource\\pathmgr\\access.cpp", "$Revision: 1 $");

using namespace pathmgr;

MgStatus FPathKind(Path path, int32_t* kind) {
    if (kind == nullptr) return MgBadArgument;
    if (!FPathValid(path)) {
        *kind = PathKindNone;
        return MgBadArgument;
    }
    *kind = KindOf(path);
    return MgNoError;
}

MgStatus FPathSetKind(Path path, int32_t kind) {
    // A path can't be turned into a not-a-path here: that needs its names dropped too.
    if (!FPathUsable(path) ||
        (kind != PathKindAbsolute && kind != PathKindRelative && kind != PathKindUNC))
        return MgBadArgument;
    WriteKind(*path, kind);
    return MgNoError;
}

int32_t FPathDepth(Path path) {
    return FPathUsable(path) ? CountOf(path) : -1;
}

int32_t FPathByteSize(Path path) {
    MG_CHECK(FPathValid(path));
    if (!HasHeader(path)) return kHeaderSize;
    return NameOffset(*path, MemHandleSize(path), CountOf(path));
}

MgStatus FLastName(Path path, PStr name) {
    if (name == nullptr) return MgBadArgument;
    if (!FPathUsable(path) || CountOf(path) < 1) {
        name[0] = 0;
        return MgBadArgument;
    }
    return FNameAt(path, CountOf(path) - 1, name);
}

MgStatus FLastNameHandle(Path path, Handle name) {
    if (name == nullptr || !FPathUsable(path) || CountOf(path) < 1) return MgBadArgument;
    int32_t size = MemHandleSize(path);
    int32_t offset = NameOffset(*path, size, CountOf(path) - 1);
    int32_t length = NameAtOffset(*path, size, offset)[0];
    MgStatus status = MemResizeHandle(name, length + 1);
    if (status != MgNoError) return status;
    BlockMove(NameAtOffset(*path, MemHandleSize(path), offset), *name, length + 1);
    return MgNoError;
}

MgStatus FNameAt(Path path, int32_t index, PStr name) {
    if (name == nullptr || !FPathUsable(path) || CountOf(path) <= index) return MgBadArgument;
    // A negative index is not refused: it reads the first component.
    int32_t size = MemHandleSize(path);
    ConstPStr source = NameAtOffset(*path, size, NameOffset(*path, size, index < 0 ? 0 : index));
    BlockMove(source, name, source[0] + 1);
    return MgNoError;
}

MgStatus FReplaceNameAt(Path path, ConstPStr name, int32_t index) {
    if (path == nullptr || *path == nullptr || name == nullptr || MemHandleSize(path) < kHeaderSize)
        return MgBadArgument;
    if (index < 0 || index >= CountOf(path)) return MgBadArgument;

    int32_t size = MemHandleSize(path);
    int32_t offset = NameOffset(*path, size, index);
    int32_t tail = SkipName(*path, size, offset);
    int32_t newLength = name[0] + 1;
    int32_t grow = newLength - (tail - offset);
    // `name` may lie inside the block itself; keep a copy across the moves.
    uint8_t copy[256];
    BlockMove(name, copy, newLength);
    if (grow > 0) {
        MgStatus status = MemResizeHandle(path, size + grow);
        if (status != MgNoError) return status;
        BlockMove(*path + tail, *path + tail + grow, size - tail);
    } else if (grow < 0) {
        BlockMove(*path + tail, *path + tail + grow, size - tail);
        MgStatus status = MemResizeHandle(path, size + grow);
        BlockMove(copy, *path + offset, newLength);
        return status;
    }
    BlockMove(copy, *path + offset, newLength);
    return MgNoError;
}

MgStatus FAppendName(Path path, ConstPStr name) {
    if (!FPathUsable(path)) return MgBadArgument;
    // Only a relative path may gain an up-level component; a null name is refused everywhere.
    if (name == nullptr || (IsRootedKind(KindOf(path)) && name[0] == 0)) return MgBadArgument;
    int32_t count = CountOf(path);
    if (count >= kMaxCount) return MgBadArgument;
    int32_t size = MemHandleSize(path);
    uint8_t copy[256];
    BlockMove(name, copy, name[0] + 1);
    MgStatus status = MemResizeHandle(path, size + copy[0] + 1);
    if (status != MgNoError) return status;
    BlockMove(copy, *path + size, copy[0] + 1);
    WriteCount(*path, count + 1);
    return MgNoError;
}

MgStatus FDirName(Path path, Path out) {
    if (!FPathUsable(path) || CountOf(path) < 1) return MgBadArgument;
    // The share is part of the root of a network path and can't be stripped off.
    if (KindOf(path) == PathKindUNC && CountOf(path) < 2) return MgBadArgument;
    int32_t count = CountOf(path);
    int32_t kind = KindOf(path);
    int32_t kept = NameOffset(*path, MemHandleSize(path), count - 1);
    if (out == nullptr || MemResizeHandle(out, kept) != MgNoError) return MgNoMemory;
    if (out != path) {
        BlockMove(*path + kHeaderSize, *out + kHeaderSize, kept - kHeaderSize);
        WriteKind(*out, kind);
    }
    WriteCount(*out, count - 1);
    return MgNoError;
}

MgStatus FRootOf(Path path, Path out) {
    if (!FPathRooted(path) || out == nullptr) return MgBadArgument;
    int32_t kind = KindOf(path);
    int32_t keep = kind == PathKindUNC ? 1 : plat::VolumeDepth();
    if (CountOf(path) < keep) return MgBadArgument;
    int32_t end = NameOffset(*path, MemHandleSize(path), keep);
    if (out != path) {
        MgStatus status = MemResizeHandle(out, end);
        if (status != MgNoError) return status;
        BlockMove(*path + kHeaderSize, *out + kHeaderSize, end - kHeaderSize);
        WriteKind(*out, kind);
        WriteCount(*out, keep);
        return MgNoError;
    }
    WriteCount(*out, keep);
    return MemResizeHandle(out, end);
}
