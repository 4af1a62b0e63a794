// Reading and writing the fields of a path block. Private to the path manager.
//
// Walks over `names` never leave the block: a component whose length byte runs past the end
// is read as the empty name and ends the walk. Paths made by this module are never cut that
// way; the bound only keeps a corrupt or untrusted block from being read out of bounds.
#pragma once

#include <string.h>

#include "mg/memory.h"
#include "mg/path.h"

namespace pathmgr {

constexpr int32_t kHeaderSize = 4;
constexpr int32_t kMaxNameLength = 255;
constexpr int32_t kMaxCount = 32767;

inline int32_t ReadKind(const uint8_t* block) {
    int16_t v;
    memcpy(&v, block, 2);
    return v;
}
inline int32_t ReadCount(const uint8_t* block) {
    int16_t v;
    memcpy(&v, block + 2, 2);
    return v;
}
inline void WriteKind(uint8_t* block, int32_t kind) {
    int16_t v = static_cast<int16_t>(kind);
    memcpy(block, &v, 2);
}
inline void WriteCount(uint8_t* block, int32_t count) {
    int16_t v = static_cast<int16_t>(count);
    memcpy(block + 2, &v, 2);
}

// A non-null handle with a block that holds at least the kind and count.
bool HasHeader(Path path);
inline int32_t KindOf(Path path) {
    return ReadKind(*path);
}
inline int32_t CountOf(Path path) {
    return ReadCount(*path);
}

inline bool IsRootedKind(int32_t kind) {
    return kind == PathKindAbsolute || kind == PathKindUNC;
}

// The component at `offset` of a block of `size` bytes, or the empty name when it does not
// lie wholly inside the block.
ConstPStr NameAtOffset(const uint8_t* block, int32_t size, int32_t offset);
// The offset just past the component at `offset`, at most `size`.
int32_t SkipName(const uint8_t* block, int32_t size, int32_t offset);
// The offset of component `index` (the end of the names when index == count).
int32_t NameOffset(const uint8_t* block, int32_t size, int32_t index);

// Case-blind equality of two components.
bool SameName(ConstPStr a, ConstPStr b);

}  // namespace pathmgr
