// Normalisation, joining and relative paths. Volumes are ordinary names to all of these: a
// path can climb out of its volume, and the kind follows from what is left at the front.
#include "mg/ansi.h"
#include "pathmgr/pathblock.h"

using namespace pathmgr;

namespace {

// Collapses every name that is followed by an up-level component, in one pass over the block,
// and returns the bytes kept; *count is set to the components kept. With `dropAtRoot`, an
// up-level component that finds no name to collapse is dropped: the root is its own parent.
//
// The kept components form a stack at the front of the block: up-level components first, then
// names. While the pass runs, a kept name is held with its length byte behind its characters,
// so that an up-level component can take the last name off in constant time; the names are
// turned back into PStrs at the end. Collapsing pairs in any order gives the same result as
// collapsing the first pair again and again, since a name and its up-level component only
// meet once everything between them has collapsed; and up-level components left at the front
// never meet a name, so dropping them as they come is dropping them afterwards.
//
// A component that does not lie wholly inside the block reads as an up-level component (see
// pathblock.h) but has no bytes to keep; those left over stay counted, with the bytes from
// the first of them kept behind the stack, as they were.
int32_t Collapse(uint8_t* block, int32_t size, int32_t* count, bool dropAtRoot) {
    int32_t read = kHeaderSize, write = kHeaderSize, ups = 0, names = 0, i = 0;
    for (; i < *count; ++i) {
        if (read >= size || read + 1 + block[read] > size) break;
        int32_t length = block[read];
        if (length == 0 && names == 0) {
            if (!dropAtRoot) {
                block[write++] = 0;
                ++ups;
            }
            ++read;
        } else if (length == 0) {
            write -= block[write - 1] + 1;
            --names;
            ++read;
        } else {
            BlockMove(block + read + 1, block + write, length);
            block[write + length] = static_cast<uint8_t>(length);
            write += length + 1;
            read += length + 1;
            ++names;
        }
    }
    int32_t missing = *count - i;
    for (; missing > 0 && names > 0; --missing, --names) write -= block[write - 1] + 1;
    if (dropAtRoot) missing = 0;
    // Back to PStrs, from the last name down.
    for (int32_t end = write, n = names; n > 0; --n) {
        int32_t length = block[end - 1];
        int32_t start = end - 1 - length;
        BlockMove(block + start, block + start + 1, length);
        block[start] = static_cast<uint8_t>(length);
        end = start;
    }
    *count = ups + names + missing;
    if (missing > 0) {
        int32_t partial = read < size ? size - read : 0;
        BlockMove(block + read, block + write, partial);
        write += partial;
    }
    return write;
}

}  // namespace

MgStatus FPathNormalize(Path path) {
    return FPathNormalizeSyntax(path, FHostPathSyntax());
}

MgStatus FPathNormalizeSyntax(Path path, int32_t syntax) {
    if (!FPathValid(path)) return MgBadArgument;
    int32_t kind = KindOf(path);
    // A not-a-path's names are never walked; its count may be anything.
    if (kind == PathKindNone) return MemResizeHandle(path, FPathByteSize(path));
    int32_t count = CountOf(path);
    // Under POSIX rules the root is its own parent: a rooted path never climbs above it.
    bool dropAtRoot = syntax == PathSyntaxPosix && IsRootedKind(kind);
    int32_t size = Collapse(*path, MemHandleSize(path), &count, dropAtRoot);
    WriteCount(*path, count);
    if (IsRootedKind(kind) && count >= 1) {
        ConstPStr first = NameAtOffset(*path, size, kHeaderSize);
        if (first[0] == 0)
            kind = PathKindRelative;
        else
            kind = first[1] == '\\' ? PathKindUNC : PathKindAbsolute;
        WriteKind(*path, kind);
    }
    return MemResizeHandle(path, size);
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
