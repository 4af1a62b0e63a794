// The flattened form of a path, stored in files and resources: "PTH0", the body size N and
// the path block, with the three multi-byte fields big-endian. The older form, which had no
// magic and no kind, is still read.
#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "pathmgr/pathblock.h"

using namespace pathmgr;

namespace {

const uint8_t kMagic[4] = {'P', 'T', 'H', '0'};
constexpr int32_t kMagicSize = 8;  // magic and body size
constexpr int32_t kNullFormSize = 12;

// With `swap` the value is stored big-endian, which on the little-endian hosts of the format
// is the byte swap the field names; without it the host's own order.
uint32_t Read32(const uint8_t* p, int32_t swap) {
    uint32_t v;
    if (swap) return (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | p[3];
    memcpy(&v, p, 4);
    return v;
}

void Write32(uint8_t* p, uint32_t v, int32_t swap) {
    if (!swap) {
        memcpy(p, &v, 4);
        return;
    }
    p[0] = uint8_t(v >> 24);
    p[1] = uint8_t(v >> 16);
    p[2] = uint8_t(v >> 8);
    p[3] = uint8_t(v);
}

// Re-encodes a 16-bit field in place between host order and the stored order.
void Convert16(uint8_t* p, int32_t swap, bool toStored) {
    if (!swap) return;
    if (toStored) {
        int16_t v;
        memcpy(&v, p, 2);
        p[0] = uint8_t(uint16_t(v) >> 8);
        p[1] = uint8_t(v);
    } else {
        int16_t v = int16_t((p[0] << 8) | p[1]);
        memcpy(p, &v, 2);
    }
}

int32_t Failure(int32_t available) {
    return int32_t(uint32_t(available) + 1);
}

// Gives *path a zero-filled handle of `size` bytes, reusing one that is there.
bool TakeHandle(Path* path, int32_t size) {
    if (*path == nullptr) {
        *path = MemNewHandleClear(size);
        return *path != nullptr;
    }
    return MemResizeHandleClear(*path, size) == MgNoError;
}

// The older form: a rest size L, a component count C, and components padded to even sizes.
// A leading empty component marks a relative path and is dropped.
int32_t UnflattenOld(const uint8_t* buffer, Path* path, int32_t available, int32_t swap) {
    DPrintf("unflattening oldstyle flattened path");
    if (available < 4) return Failure(available);
    uint32_t rest = Read32(buffer, swap);
    if (path == nullptr) return int32_t(rest + 4);
    int64_t limit = int64_t(rest) + 4;
    if (available < limit) limit = available;
    if (int32_t(rest) < 4) {
        if (*path != nullptr) return Failure(available);
        return 8;
    }
    if (!TakeHandle(path, int32_t(limit - 4))) return Failure(available);
    int64_t consumed = 8;
    if (limit < 8) return Failure(available);

    uint32_t count = Read32(buffer + 4, swap);
    // Byte 8 is the first component's length; with no bytes left there is no component to
    // read and the loop below fails on it.
    bool relativeMarker = count != 0 && limit > 8 && buffer[8] == 0;
    uint8_t* block = **path;
    int32_t blockSize = int32_t(limit - 4);
    WriteCount(block, int32_t(relativeMarker ? count - 1 : count));
    int32_t out = kHeaderSize;
    for (uint32_t i = 0; i < count; ++i) {
        if (consumed >= limit) return Failure(available);
        int32_t size = buffer[consumed] + 1;
        int32_t padded = (size + 1) & ~1;
        if (limit < consumed + padded) return Failure(available);
        BlockMove(buffer + consumed, block + out, size);
        out += size;
        consumed += padded;
    }
    if (count != 0 && block[kHeaderSize] == 0) {
        WriteKind(block, PathKindRelative);
        BlockMove(block + kHeaderSize + 1, block + kHeaderSize, blockSize - kHeaderSize - 1);
    } else {
        WriteKind(block, PathKindAbsolute);
    }
    return int32_t(consumed);
}

}  // namespace

int32_t FPathFlattenOrder(Path path, uint8_t* buffer, int32_t swap) {
    int32_t bodySize = path != nullptr ? MemHandleSize(path) : 0;
    if (bodySize < 0) bodySize = 0;
    int32_t total = path != nullptr ? bodySize + kMagicSize : kNullFormSize;
    if (buffer == nullptr) return total;
    BlockMove(kMagic, buffer, 4);
    Write32(buffer + 4, uint32_t(bodySize), swap);
    if (path == nullptr) {
        BlockClear(buffer + kMagicSize, 4);
        return total;
    }
    BlockMove(*path, buffer + kMagicSize, bodySize);
    if (bodySize >= kHeaderSize) {
        Convert16(buffer + kMagicSize, swap, true);
        Convert16(buffer + kMagicSize + 2, swap, true);
    }
    return total;
}

int32_t FPathFlatten(Path path, uint8_t* buffer) {
    return FPathFlattenOrder(path, buffer, 1);
}

int32_t FPathUnflattenOrder(const uint8_t* buffer, Path* path, int32_t available, int32_t swap) {
    if (available < 4 || buffer == nullptr) return Failure(available);
    if (memcmp(buffer, kMagic, 4) != 0) return UnflattenOld(buffer, path, available, swap);
    if (available < kMagicSize) return Failure(available);
    uint32_t bodySize = Read32(buffer + 4, swap);
    if (int64_t(available) < int64_t(bodySize) + kMagicSize) return Failure(available);
    // The size query answers 8 for the null form, which reading consumes as 12.
    if (path == nullptr) return int32_t(bodySize + kMagicSize);
    if (int32_t(bodySize) >= kHeaderSize) {
        if (!TakeHandle(path, int32_t(bodySize))) return Failure(available);
        BlockMove(buffer + kMagicSize, **path, int32_t(bodySize));
        Convert16(**path, swap, false);
        Convert16(**path + 2, swap, false);
    } else if (*path != nullptr) {
        // The buffer holds no path, and a path was expected to be replaced.
        return Failure(available);
    }
    return bodySize != 0 ? int32_t(bodySize + kMagicSize) : kNullFormSize;
}

int32_t FPathUnflatten(const uint8_t* buffer, Path* path) {
    return FPathUnflattenOrder(buffer, path, 0x7FFFFFFE, 1);
}
