// Validity tests of path values and the bounded component walk they share.
#include "mg/pstring.h"
#include "pathmgr/pathblock.h"

namespace pathmgr {

namespace {
const uint8_t kEmptyName[1] = {0};
}

bool HasHeader(Path path) {
    return path != nullptr && *path != nullptr && MemHandleSize(path) >= kHeaderSize;
}

ConstPStr NameAtOffset(const uint8_t* block, int32_t size, int32_t offset) {
    if (offset < 0 || offset >= size || offset + 1 + block[offset] > size) return kEmptyName;
    return block + offset;
}

int32_t SkipName(const uint8_t* block, int32_t size, int32_t offset) {
    if (offset >= size) return size;
    int32_t end = offset + 1 + block[offset];
    return end < size ? end : size;
}

int32_t NameOffset(const uint8_t* block, int32_t size, int32_t index) {
    int32_t offset = kHeaderSize;
    for (int32_t i = 0; i < index && offset < size; ++i) offset = SkipName(block, size, offset);
    return offset < size ? offset : size;
}

bool SameName(ConstPStr a, ConstPStr b) {
    return PStringSameNoCase(a, b) != 0;
}

}  // namespace pathmgr

using namespace pathmgr;

int32_t FPathValid(Path path) {
    if (!HasHeader(path)) return 0;
    int32_t kind = KindOf(path);
    if (kind == PathKindNone) return 1;
    return CountOf(path) >= 0 && kind >= PathKindAbsolute && kind <= PathKindUNC;
}

int32_t FPathUsable(Path path) {
    if (!HasHeader(path) || CountOf(path) < 0) return 0;
    int32_t kind = KindOf(path);
    return kind == PathKindAbsolute || kind == PathKindRelative || kind == PathKindUNC;
}

int32_t FPathRooted(Path path) {
    return FPathUsable(path) && IsRootedKind(KindOf(path));
}

int32_t FPathIsKind(Path path, int32_t kind) {
    return FPathUsable(path) && KindOf(path) == kind;
}

int32_t FPathHasNoNames(Path path) {
    return FPathUsable(path) && CountOf(path) == 0;
}
