// The check of a map read from a file, made on the bytes as they came from the disk, before
// anything in them is swapped, cleared, sorted or trusted. Every later walk of the map relies
// on what it establishes: the type list and every reference list are aligned, lie inside the
// block clear of its 52-byte header, and overlap nothing else, so that each word is swapped
// once and no count changes after it was checked. Data offsets and sizes aren't looked at
// here: they are checked, against the data section and the file's real length, on each load.
#include <algorithm>

#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\validate.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

struct Span {
    int64_t start, end;
};

int32_t BigAt(const uint8_t* raw, int64_t at) {
    int32_t v;
    memcpy(&v, raw + at, 4);
    FlipBig32(&v);
    return v;
}

bool Aligned(int64_t offset) {
    return (offset & 3) == 0;
}

// The slow way for lists that don't stand in rising order: sort them all, with the type list,
// and look at neighbours.
MgStatus CheckDisjoint(const uint8_t* raw, int64_t typeList, int64_t types) {
    Ptr block = MemNewPtr(static_cast<int32_t>((types + 1) * int64_t{sizeof(Span)}));
    if (!block) return MgNoMemory;
    Span* spans = reinterpret_cast<Span*>(block);
    int64_t n = 0;
    spans[n++] = {typeList, typeList + 4 + types * kTypeEntrySize};
    for (int64_t i = 0; i < types; ++i) {
        const int64_t entry = typeList + 4 + i * kTypeEntrySize;
        const int64_t refs = int64_t{BigAt(raw, entry + 4)} + 1;
        const int64_t start = typeList + BigAt(raw, entry + 8);
        if (refs > 0) spans[n++] = {start, start + refs * kRefEntrySize};
    }
    std::sort(spans, spans + n, [](const Span& a, const Span& b) { return a.start < b.start; });
    MgStatus status = MgNoError;
    for (int64_t i = 1; i < n && !status; ++i)
        if (spans[i].start < spans[i - 1].end) status = MgIOError;
    MemDisposePtr(block);
    return status;
}

}  // namespace

namespace rsrc {

MgStatus ValidateFileMap(const uint8_t* raw, int32_t mapSize) {
    const int64_t size = mapSize;
    if (size < kMapHeaderSize + 4) return MgIOError;
    const int64_t typeList = BigAt(raw, kMapTypeListOffset);
    if (typeList < kMapHeaderSize || !Aligned(typeList) || typeList + 4 > size) return MgIOError;
    const int64_t types = int64_t{BigAt(raw, typeList)} + 1;
    const int64_t typesEnd = typeList + 4 + types * kTypeEntrySize;
    if (types < 0 || typesEnd > size) return MgIOError;
    bool rising = true;
    int64_t end = typesEnd;
    for (int64_t i = 0; i < types; ++i) {
        const int64_t entry = typeList + 4 + i * kTypeEntrySize;
        const int64_t refs = int64_t{BigAt(raw, entry + 4)} + 1;
        const int64_t start = typeList + BigAt(raw, entry + 8);
        if (refs < 0) return MgIOError;
        if (refs == 0) continue;
        const int64_t listEnd = start + refs * kRefEntrySize;
        if (!Aligned(start) || start < kMapHeaderSize || listEnd > size) return MgIOError;
        if (start < end) rising = false;
        end = std::max(end, listEnd);
    }
    return rising ? MgNoError : CheckDisjoint(raw, typeList, types);
}

}  // namespace rsrc
