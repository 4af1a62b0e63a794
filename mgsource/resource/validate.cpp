// The check of a map read from a file, made on the bytes as they came from the disk, before
// anything in them is swapped, cleared, sorted or trusted. Every later walk of the map relies
// on what it establishes: the type list and every reference list are aligned, lie inside the
// block clear of its 52-byte header, and overlap nothing else, so that each word is swapped
// once and no count changes after it was checked; and no name lies over those lists. Data offsets
// and sizes aren't looked at here: they are checked, against the data section and the file's real
// length, on each load.
//
// The same walk serves opening (stop at the first fault) and RCheckBytes (every fault, with
// where it lies), so that there is one set of rules.
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
    int64_t entry;  // the map offset of the word that places the span
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

// Passes a fault on; true when the walk is to stop.
struct Faults {
    MapFaultProc proc;
    void* context;
    bool any = false;
    bool Report(int64_t at, const char* what) {
        any = true;
        return !proc(context, at, what);
    }
};

// Why a reference list of `refs` entries at map offset `start` can't stand, or null.
const char* ListFault(int64_t refs, int64_t start, int64_t size) {
    if (refs < 0) return "reference count below -1";
    if (!Aligned(start)) return "reference list not on a 4-byte boundary";
    if (start < kMapHeaderSize) return "reference list inside the map header";
    if (start + refs * kRefEntrySize > size) return "reference list runs past the end of the map";
    return nullptr;
}

// The slow way for lists that don't stand in rising order: sort them all, with the type list,
// and look at neighbours. Lists already found faulty are left out.
MgStatus CheckDisjoint(const uint8_t* raw, int64_t size, int64_t typeList, int64_t types,
                       Faults& faults) {
    Ptr block = MemNewPtr(static_cast<int32_t>((types + 1) * int64_t{sizeof(Span)}));
    if (!block) return MgNoMemory;
    Span* spans = reinterpret_cast<Span*>(block);
    int64_t n = 0;
    spans[n++] = {typeList, typeList + 4 + types * kTypeEntrySize, kMapTypeListOffset};
    for (int64_t i = 0; i < types; ++i) {
        const int64_t entry = typeList + 4 + i * kTypeEntrySize;
        const int64_t refs = int64_t{BigAt(raw, entry + 4)} + 1;
        const int64_t start = typeList + BigAt(raw, entry + 8);
        if (refs > 0 && !ListFault(refs, start, size))
            spans[n++] = {start, start + refs * kRefEntrySize, entry + 8};
    }
    std::stable_sort(spans, spans + n,
                     [](const Span& a, const Span& b) { return a.start < b.start; });
    int64_t end = spans[0].end;
    for (int64_t i = 1; i < n; ++i) {
        if (spans[i].start < end) {
            const Span& later = spans[i].entry > spans[i - 1].entry ? spans[i] : spans[i - 1];
            if (faults.Report(later.entry, "reference list overlaps another list of the map"))
                break;
        }
        end = std::max(end, spans[i].end);
    }
    MemDisposePtr(block);
    return MgNoError;
}

// An edit cuts a name out of the map where its offsets put it: a name over the type list or
// the reference lists would have it cut into them. Names before the lists, where the kept
// arithmetic of removals from a map without names sends later ones, read as what is there and
// are never cut out; a map without names may hold anything in its name-list offset.
void CheckNames(const uint8_t* raw, int64_t typeList, int64_t types, int64_t listsEnd,
                Faults& faults) {
    const int64_t nameList = BigAt(raw, kMapNameListOffset);
    for (int64_t i = 0; i < types; ++i) {
        const int64_t entry = typeList + 4 + i * kTypeEntrySize;
        const int64_t refs = int64_t{BigAt(raw, entry + 4)} + 1;
        const int64_t start = typeList + BigAt(raw, entry + 8);
        for (int64_t r = 0; r < refs; ++r) {
            const int64_t at = start + r * kRefEntrySize + 4;
            const int32_t nameOffset = BigAt(raw, at);
            const int64_t name = nameList + nameOffset;
            if (nameOffset == kNoName || name < typeList || name >= listsEnd) continue;
            const bool listAt = nameList >= typeList && nameList < listsEnd;
            faults.Report(listAt ? kMapNameListOffset : at,
                          listAt ? "name list over the map's lists" : "name over the map's lists");
            return;
        }
    }
}

bool StopAtFirst(void*, int64_t, const char*) {
    return false;
}

}  // namespace

namespace rsrc {

MgStatus CheckMapLists(const uint8_t* raw, int32_t mapSize, MapFaultProc proc, void* context) {
    Faults faults{proc, context};
    const int64_t size = mapSize;
    if (size < kMapHeaderSize + 4) {
        faults.Report(0, "map shorter than its header and type count");
        return MgIOError;
    }
    const int64_t typeList = BigAt(raw, kMapTypeListOffset);
    const char* where = typeList < kMapHeaderSize ? "type list inside the map header"
                        : !Aligned(typeList)      ? "type list not on a 4-byte boundary"
                        : typeList + 4 > size     ? "type list beyond the end of the map"
                                                  : nullptr;
    if (where) {
        faults.Report(kMapTypeListOffset, where);
        return MgIOError;
    }
    const int64_t types = int64_t{BigAt(raw, typeList)} + 1;
    const int64_t typesEnd = typeList + 4 + types * kTypeEntrySize;
    if (types < 0 || typesEnd > size) {
        faults.Report(typeList,
                      types < 0 ? "type count below -1" : "type list runs past the end of the map");
        return MgIOError;
    }
    bool rising = true;
    int64_t end = typesEnd;
    for (int64_t i = 0; i < types; ++i) {
        const int64_t entry = typeList + 4 + i * kTypeEntrySize;
        const int64_t refs = int64_t{BigAt(raw, entry + 4)} + 1;
        const int64_t start = typeList + BigAt(raw, entry + 8);
        if (refs == 0) continue;
        const int64_t listEnd = start + refs * kRefEntrySize;
        if (const char* fault = ListFault(refs, start, size)) {
            if (faults.Report(refs < 0 ? entry + 4 : entry + 8, fault)) break;
            continue;
        }
        if (start < end) rising = false;
        end = std::max(end, listEnd);
    }
    if (!rising && !(faults.any && proc == StopAtFirst)) {
        if (MgStatus status = CheckDisjoint(raw, size, typeList, types, faults)) return status;
    }
    if (!faults.any) CheckNames(raw, typeList, types, end, faults);
    return faults.any ? MgIOError : MgNoError;
}

MgStatus ValidateFileMap(const uint8_t* raw, int32_t mapSize) {
    return CheckMapLists(raw, mapSize, StopAtFirst, nullptr);
}

}  // namespace rsrc
