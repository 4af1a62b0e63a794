// Normalisation, joining and relative paths. Volumes are ordinary names to all of these: a
// path can climb out of its volume, and the kind follows from what is left at the front.
#include "mg/ansi.h"
#include "pathmgr/pathblock.h"

using namespace pathmgr;

namespace {

// Index of the first up-level component that follows a name, or -1.
int32_t FindCollapsible(const uint8_t* block, int32_t size, int32_t count) {
    int32_t offset = kHeaderSize;
    int32_t i = 0;
    while (i < count && NameAtOffset(block, size, offset)[0] == 0) {
        offset = SkipName(block, size, offset);
        ++i;
    }
    for (; i < count; ++i) {
        if (NameAtOffset(block, size, offset)[0] == 0) return i;
        offset = SkipName(block, size, offset);
    }
    return -1;
}

}  // namespace

MgStatus FPathNormalize(Path path) {
    return FPathNormalizeSyntax(path, FHostPathSyntax());
}

MgStatus FPathNormalizeSyntax(Path path, int32_t syntax) {
    if (!FPathValid(path)) return MgBadArgument;
    int32_t kind = KindOf(path);
    // A not-a-path's names are never walked; its count may be anything.
    if (kind != PathKindNone) {
        int32_t size = MemHandleSize(path);
        int32_t count = CountOf(path);
        for (int32_t up = FindCollapsible(*path, size, count); up > 0;
             up = FindCollapsible(*path, size, count)) {
            int32_t nameOffset = NameOffset(*path, size, up - 1);
            int32_t after = SkipName(*path, size, SkipName(*path, size, nameOffset));
            int32_t end = NameOffset(*path, size, count);
            BlockMove(*path + after, *path + nameOffset, end - after);
            count -= 2;
            WriteCount(*path, count);
        }
        // Under POSIX rules the root is its own parent: a rooted path never climbs above it.
        if (syntax == PathSyntaxPosix && IsRootedKind(kind)) {
            int32_t ups = 0;
            while (ups < count && NameAtOffset(*path, size, NameOffset(*path, size, ups))[0] == 0)
                ++ups;
            if (ups > 0) {
                int32_t end = NameOffset(*path, size, count);
                BlockMove(*path + kHeaderSize + ups, *path + kHeaderSize, end - kHeaderSize - ups);
                count -= ups;
                WriteCount(*path, count);
            }
        }
        if (IsRootedKind(kind) && count >= 1) {
            ConstPStr first = NameAtOffset(*path, size, kHeaderSize);
            if (first[0] == 0)
                kind = PathKindRelative;
            else
                kind = first[1] == '\\' ? PathKindUNC : PathKindAbsolute;
            WriteKind(*path, kind);
        }
    }
    return MemResizeHandle(path, FPathByteSize(path));
}

MgStatus FPathJoin(Path base, Path rel, Path out) {
    bool accepted = FPathUsable(base) && FPathIsKind(rel, PathKindRelative);
    // Anything rooted may be joined onto the empty path, the level above the volumes.
    if (!accepted) accepted = FPathRooted(base) && CountOf(base) == 0 && FPathRooted(rel);
    if (!accepted || out == nullptr) return MgBadArgument;

    int32_t baseBytes = MemHandleSize(base) - kHeaderSize;
    int32_t relBytes = MemHandleSize(rel) - kHeaderSize;
    int32_t baseCount = CountOf(base);
    int32_t count = baseCount + CountOf(rel);
    int32_t kind = KindOf(base);
    if (count > kMaxCount) return MgBadArgument;

    // Any of the three may be the same handle: move rel's names out of base's way first.
    MgStatus status = MemResizeHandle(out, kHeaderSize + baseBytes + relBytes);
    if (status != MgNoError) return status;
    BlockMove(*rel + kHeaderSize, *out + kHeaderSize + baseBytes, relBytes);
    if (out != base) {
        BlockMove(*base + kHeaderSize, *out + kHeaderSize, baseBytes);
        WriteKind(*out, kind);
    }
    WriteCount(*out, count);
    return FPathNormalize(out);
}

MgStatus FPathRelativeFrom(Path base, Path target, Path out) {
    if (!FPathRooted(base) || !FPathRooted(target) || out == nullptr) return MgBadArgument;
    int32_t baseCount = CountOf(base);
    int32_t targetCount = CountOf(target);
    int32_t baseSize = MemHandleSize(base);
    int32_t targetSize = MemHandleSize(target);

    // The walk stops at the end of either list, so a target that is a prefix of the base
    // never has bytes beyond its block compared.
    int32_t matched = 0;
    int32_t baseOffset = kHeaderSize;
    int32_t targetOffset = kHeaderSize;
    while (matched < baseCount && matched < targetCount &&
           SameName(NameAtOffset(*base, baseSize, baseOffset),
                    NameAtOffset(*target, targetSize, targetOffset))) {
        baseOffset = SkipName(*base, baseSize, baseOffset);
        targetOffset = SkipName(*target, targetSize, targetOffset);
        ++matched;
    }
    int32_t up = baseCount - matched;
    int32_t down = targetCount - matched;
    int32_t tailBytes = NameOffset(*target, targetSize, targetCount) - targetOffset;
    int32_t newSize = kHeaderSize + up + tailBytes;
    if (up + down > kMaxCount) return MgBadArgument;

    // `out` may be `target`: shrink after the move, grow before it.
    MgStatus status = MgNoError;
    if (newSize <= MemHandleSize(out)) {
        BlockMove(*target + targetOffset, *out + kHeaderSize + up, tailBytes);
        status = MemResizeHandle(out, newSize);
        if (status != MgNoError) return status;
    } else {
        status = MemResizeHandle(out, newSize);
        if (status != MgNoError) return status;
        BlockMove(*target + targetOffset, *out + kHeaderSize + up, tailBytes);
    }
    WriteKind(*out, PathKindRelative);
    WriteCount(*out, up + down);
    BlockClear(*out + kHeaderSize, up);
    return MgNoError;
}

MgStatus FPathTrimToCommon(Path a, Path b) {
    if (!HasHeader(a) || !HasHeader(b)) return MgBadArgument;
    if (KindOf(a) != KindOf(b)) return FEmptyPath(a) != nullptr ? MgNoError : MgBadArgument;
    int32_t aCount = CountOf(a);
    int32_t limit = aCount < CountOf(b) ? aCount : CountOf(b);
    int32_t aSize = MemHandleSize(a);
    int32_t bSize = MemHandleSize(b);
    int32_t matched = 0;
    int32_t aOffset = kHeaderSize;
    int32_t bOffset = kHeaderSize;
    while (matched < limit &&
           SameName(NameAtOffset(*a, aSize, aOffset), NameAtOffset(*b, bSize, bOffset))) {
        aOffset = SkipName(*a, aSize, aOffset);
        bOffset = SkipName(*b, bSize, bOffset);
        ++matched;
    }
    if (matched == aCount) return MgNoError;
    WriteCount(*a, matched);
    return MemResizeHandle(a, aOffset);
}
