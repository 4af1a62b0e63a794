// The two forms of header and map: big-endian on disk, host order in memory.
#include <bit>

#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/memory.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\format.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

const uint8_t kSignature[4] = {'R', 'S', 'R', 'C'};
const uint8_t kLineEnd[2] = {0x0D, 0x0A};

void FlipWord(Ptr map, int32_t offset) {
    FlipBig32(map + offset);
}

bool Fits(int64_t start, int64_t length, int64_t size) {
    return start >= 0 && length >= 0 && start + length <= size;
}

}  // namespace

namespace rsrc {

bool HeaderPasses(const ResFileHeader* h) {
    if (memcmp(h->signature, kSignature, 4) != 0) return false;
    if (h->version == 2) return true;
    return h->version >= 3 && memcmp(h->lineEnd, kLineEnd, 2) == 0;
}

ConstPStr NameOf(Ptr map, int32_t mapBytes, const ResRefEntry* ref) {
    if (ref->nameOffset == kNoName) return nullptr;
    const int64_t at = int64_t{Word(map, kMapNameListOffset)} + ref->nameOffset;
    if (!Fits(at, 1, mapBytes) || !Fits(at, 1 + int64_t{map[at]}, mapBytes)) return nullptr;
    return map + at;
}

bool MapCanonical(Ptr map, int32_t mapBytes) {
    if (mapBytes < kMapHeaderSize + 4 || Word(map, kMapTypeListOffset) != kMapHeaderSize)
        return false;
    Ptr typeList = map + kMapHeaderSize;
    const int64_t types = TypeCount(typeList);
    if (types < 0 || !Fits(kMapHeaderSize + 4, types * kTypeEntrySize, mapBytes)) return false;
    int64_t expected = 4 + types * kTypeEntrySize;
    for (int32_t i = 0; i < types; ++i) {
        const ResTypeEntry* t = TypeAt(typeList, i);
        if (t->listOffset != expected || t->count < -1) return false;
        expected += (int64_t{t->count} + 1) * kRefEntrySize;
        if (kMapHeaderSize + expected > mapBytes) return false;
    }
    return true;
}

}  // namespace rsrc

extern "C" {

void RSwapHeader(ResFileHeader* header) {
    FlipBig16(&header->version);
    FlipBig32(&header->mapOffset);
    FlipBig32(&header->mapSize);
    FlipBig32(&header->dataOffset);
    FlipBig32(&header->dataSize);
}

MgStatus RCompareHeaders(const ResFileHeader* a, const ResFileHeader* b) {
    const bool same = memcmp(a->signature, b->signature, 4) == 0 && a->version == b->version &&
                      a->creator == b->creator && memcmp(a->lineEnd, b->lineEnd, 2) == 0 &&
                      a->fileType == b->fileType;
    return same ? MgNoError : MgIOError;
}

void RInitHeader(ResFileHeader* header, ResType creator, ResType type) {
    memcpy(header->signature, kSignature, 4);
    memcpy(header->lineEnd, kLineEnd, 2);
    header->version = 3;
    header->fileType = type;
    header->creator = creator;
    header->mapOffset = kHeaderSize;
    header->mapSize = 0;
    header->dataOffset = kHeaderSize;
    header->dataSize = 0;
}

// With an expected header (reading a map from a file), every list the walk touches is also
// checked to lie inside the block, so that a damaged map is refused rather than overrun.
MgStatus RSwapMap(Ptr map, int32_t direction, const ResFileHeader* expected) {
    const bool toHost = direction == 1;
    const bool check = toHost && expected;
    const int64_t size = check ? expected->mapSize : 0;
    if (check && size < kMapHeaderSize) return MgIOError;
    RSwapHeader(HeaderOf(map));
    if (check) {
        if (MgStatus status = RCompareHeaders(HeaderOf(map), expected)) return status;
    }
    const int32_t hostTypeListOffset = Word(map, kMapTypeListOffset);
    FlipWord(map, kMapFileId);
    FlipWord(map, kMapFileAttrs);
    FlipWord(map, kMapTypeListOffset);
    FlipWord(map, kMapNameListOffset);
    const int32_t typeListOffset = toHost ? Word(map, kMapTypeListOffset) : hostTypeListOffset;
    if (check) {
        if (typeListOffset > size || Word(map, kMapNameListOffset) > size) return MgIOError;
        if (!Fits(typeListOffset, 4, size)) return MgIOError;
    }
    Ptr typeList = map + typeListOffset;
    if (toHost) FlipBig32(typeList);
    const int32_t types = TypeCount(typeList);
    if (!toHost) FlipBig32(typeList);
    if (check && (types < 0 || !Fits(typeListOffset + 4, int64_t{types} * kTypeEntrySize, size)))
        return MgIOError;
    for (int32_t i = 0; i < types; ++i) {
        ResTypeEntry* t = TypeAt(typeList, i);
        if (toHost) {
            FlipBig32(&t->count);
            FlipBig32(&t->listOffset);
        }
        const int32_t refs = t->count + 1;
        ResRefEntry* list = RefsOf(typeList, t);
        if (check && (refs < 0 || !Fits(int64_t{typeListOffset} + t->listOffset,
                                        int64_t{refs} * kRefEntrySize, size)))
            return MgIOError;
        if (!toHost) {
            FlipBig32(&t->count);
            FlipBig32(&t->listOffset);
        }
        for (int32_t r = 0; r < refs; ++r) {
            FlipBig32(&list[r].id);
            FlipBig32(&list[r].nameOffset);
            FlipBig32(&list[r].attrs);
            FlipBig32(&list[r].dataOffset);
        }
    }
    return MgNoError;
}

}  // extern "C"
