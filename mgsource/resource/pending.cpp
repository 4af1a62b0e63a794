// Adds that wait: RAdd to a file that has resources doesn't open a gap in the map at once. The
// new reference goes to a pending set (of one file at a time), and the set is merged into the
// map in one pass when anything observes the map: RLookupFile (so every lookup, enumeration,
// edit other than an add, update and close), RFindHandle of a waiting handle, the write-back,
// an add to another file, RExit. A run of adds then costs O(log n) each, amortised, where each
// used to move every reference behind its insertion point and the whole name list; whoever
// reaches the map sees it as the adds one after the other would have left it.
//
// While adds wait:
// - the map's first `gBase` bytes (its size word) are the map as it was, canonical and
//   untouched; the block behind them is slack, grown ahead so that it always holds the merged
//   map, and the merge allocates nothing and can't fail;
// - the waiting names lie in the slack in the order of their adds, so that a waiting
//   reference's name offset is already the one it ends with;
// - a waiting reference is in the handle index like any other. An id within its type's span is
//   checked against the waiting ones through a hash of (type, id), made on first need, as the
//   binary search checks it against the map's; ids beyond the span need no search;
// - only adds wait. Every other edit observes the map first; the attributes of a waiting
//   reference change in its record.
// An add waits only where the merge gives what the add would have given at once: its type's
// list in the map rises, and the type's ids span less than 2^31, where comparing ids by
// wrapping subtraction (as the lists' search does) agrees with comparing them as numbers.
// Any other add merges what waits and goes into the map at once. The merge replays the
// name-list offset's arithmetic add by add, quirks included.
//
// The first add after the map was observed goes in at once too: a merge costs what the moves
// behind the first waiting reference cost, as an add made at once does, but finding out
// whether a type's list rises walks the list, which pays only for a run of adds. So adds and
// lookups taking turns cost what they always did.
#include <algorithm>

#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\pending.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

struct Waiting {
    ResRefEntry ref;  // as it will stand in the map: final name offset, data offset 0
    ResType type;
    int32_t typeIndex;  // in the merged type list
    int32_t newType;    // 1 for the first reference of a type the map doesn't have
};

// What is known of one type's ids: whether its list in the map rises, and the span of the
// ids in the map and waiting.
struct Span {
    int32_t checked, rises, low, high;
};

Handle gOwner = nullptr;  // map handle of the file whose adds wait; null when none do
ResFile gOwnerId = 0;
int32_t gBase = 0;          // the map's size word when the first add began to wait
int32_t gBaseNames = 0;     // bytes of its name list then
int32_t gMapTypes = 0;      // types in the map then
int32_t gMerged = 0;        // size of the map once merged
int32_t gNames = 0;         // name bytes waiting in the slack
Handle gRecords = nullptr;  // Waiting, in the order of the adds
int32_t gCount = 0;
Handle gHash = nullptr;      // record index + 1 per slot, 0 for an empty slot
int32_t gHashSlots = 0;      // a power of two, more than twice gCount; 0: no hash yet
Handle gNewTypes = nullptr;  // the types the map doesn't have, in the order of their first add
int32_t gNewTypeCount = 0;
Handle gSpans = nullptr;  // Span per type index of the merged type list
int32_t gSpanCount = 0;   // entries of gSpans that hold something
// The map handle of the file whose last step was an add made at once, nothing having observed
// its map since: the next add to it begins a run, and waits.
Handle gRunMap = nullptr;

Waiting* Records() {
    return reinterpret_cast<Waiting*>(*gRecords);
}
Span* Spans() {
    return reinterpret_cast<Span*>(*gSpans);
}

// The slot of (type, id), or the empty slot where it would go.
int32_t* Probe(ResType type, int32_t id) {
    int32_t* slots = reinterpret_cast<int32_t*>(*gHash);
    uint32_t i = (type * 0x9E3779B1u) ^ (static_cast<uint32_t>(id) * 0x85EBCA77u);
    for (i ^= i >> 15;; ++i) {
        int32_t* slot = &slots[i & uint32_t(gHashSlots - 1)];
        if (*slot == 0) return slot;
        const Waiting& w = Records()[*slot - 1];
        if (w.ref.id == id && w.type == type) return slot;
    }
}

// Makes `*h` hold at least `bytes`, at least doubling it when it grows; nothing changes on
// failure.
MgStatus Reserve(Handle* h, int64_t bytes) {
    if (*h && MemHandleSize(*h) >= bytes) return MgNoError;
    const int64_t size = std::max(bytes, *h ? 2 * int64_t{MemHandleSize(*h)} : 256);
    if (size > INT32_MAX) return MgNoMemory;
    if (!*h) return (*h = MemNewHandle(static_cast<int32_t>(size))) ? MgNoError : MgNoMemory;
    return MemResizeHandle(*h, static_cast<int32_t>(size));
}

// Makes the hash hold every record with room for one more. The hash is made only when a
// lookup needs it: a run of adds in rising order, each looked up right after it, never does.
// Where memory runs out there is no hash, and lookups walk the records.
void Rehash() {
    int32_t slots = 1024;
    while (slots <= 2 * (gCount + 1)) slots *= 2;
    if (slots == gHashSlots) return;
    gHashSlots = 0;
    if (Reserve(&gHash, int64_t{slots} * 4)) return;
    memset(*gHash, 0, size_t(slots) * 4);
    gHashSlots = slots;
    for (int32_t i = 0; i < gCount; ++i) *Probe(Records()[i].type, Records()[i].ref.id) = i + 1;
}

// The waiting record of (type, id), or null.
Waiting* Lookup(ResType type, int32_t id) {
    if (!gHashSlots) Rehash();
    if (gHashSlots) {
        const int32_t slot = *Probe(type, id);
        return slot ? &Records()[slot - 1] : nullptr;
    }
    for (int32_t i = 0; i < gCount; ++i)
        if (Records()[i].ref.id == id && Records()[i].type == type) return &Records()[i];
    return nullptr;
}

// Whether the map's list of `t` rises, and its span.
Span MapSpan(Ptr typeList, const ResTypeEntry* t) {
    const ResRefEntry* refs = RefsOf(typeList, t);
    Span s{1, 1, refs[0].id, refs[t->count].id};
    for (int32_t r = 1; r <= t->count && s.rises; ++r) s.rises = refs[r - 1].id <= refs[r].id;
    return s;
}

bool Narrow(int32_t low, int32_t high) {
    return int64_t{high} - low < (int64_t{1} << 31);
}

// Drops the pending set, merged or not.
void Forget() {
    MemDisposeHandle(gRecords);
    MemDisposeHandle(gHash);
    MemDisposeHandle(gNewTypes);
    MemDisposeHandle(gSpans);
    gRecords = gHash = gNewTypes = gSpans = nullptr;
    gOwner = nullptr;
    gOwnerId = 0;
    gCount = gHashSlots = gNewTypeCount = gNames = gSpanCount = 0;
}

// Whether the name-list offset is where the names start, or 0 with no names. Removals from a
// map without names take it below 0, and names read through such an offset come from wherever
// it points: adds to such a map go in at once, so that their names are read as they will be.
bool NameListSound(Ptr map, int32_t size) {
    Ptr typeList = map + kMapHeaderSize;
    int64_t start = kMapHeaderSize + 4 + int64_t{kTypeEntrySize} * TypeCount(typeList);
    for (int32_t i = 0; i < TypeCount(typeList); ++i)
        start += int64_t{kRefEntrySize} * (TypeAt(typeList, i)->count + 1);
    const int32_t offset = Word(map, kMapNameListOffset);
    return offset == start || (offset == 0 && start == size);
}

// The merge itself; `entry` owns what waits.
void Merge(ResFileEntry* entry) {
    Ptr map = entry->map;
    Waiting* w = Records();
    // The name-list offset and the size, add by add.
    int32_t nameList = Word(map, kMapNameListOffset);
    int32_t size = gBase;
    for (int32_t i = 0; i < gCount; ++i) {
        const int32_t nameOffset = w[i].ref.nameOffset;
        const int32_t nameBytes =
            nameOffset == kNoName ? 0 : 1 + map[gBase + nameOffset - gBaseNames];
        const int32_t delta = w[i].newType ? kTypeEntrySize + kRefEntrySize : kRefEntrySize;
        size += delta + nameBytes;
        if (nameList != 0)
            nameList += delta;
        else if (nameBytes)
            nameList = size - nameBytes;
    }
    MG_CHECK(size == gMerged);
    // Names to the end: the waiting ones, then the map's in front of them.
    BlockMove(map + gBase, map + gMerged - gNames, gNames);
    BlockMove(map + gBase - gBaseNames, map + gMerged - gNames - gBaseNames, gBaseNames);
    // Reference lists from the last type to the first, each merged by id from its end. What
    // is written lies at or behind what is still to be read, as every list only moves up.
    std::sort(w, w + gCount, [](const Waiting& a, const Waiting& b) {
        return a.typeIndex != b.typeIndex ? a.typeIndex < b.typeIndex : a.ref.id < b.ref.id;
    });
    // Without new types, what stands in front of the first waiting reference stays in place.
    Ptr typeList = map + kMapHeaderSize;
    const int32_t types = gMapTypes + gNewTypeCount;
    int32_t at = gMerged - gNames - gBaseNames;
    int32_t next = gCount - 1;
    for (int32_t k = types - 1; k >= 0 && (next >= 0 || gNewTypeCount); --k) {
        ResTypeEntry* t = k < gMapTypes ? TypeAt(typeList, k) : nullptr;
        int32_t left = t ? t->count + 1 : 0;
        const ResRefEntry* old = t ? RefsOf(typeList, t) : nullptr;
        int32_t added = 0;
        while ((left > 0 && (next >= 0 || gNewTypeCount)) ||
               (next >= 0 && w[next].typeIndex == k)) {
            at -= kRefEntrySize;
            if (next >= 0 && w[next].typeIndex == k &&
                (left == 0 || w[next].ref.id > old[left - 1].id)) {
                BlockMove(&w[next--].ref, map + at, kRefEntrySize);
                ++added;
            } else {
                BlockMove(&old[--left], map + at, kRefEntrySize);
            }
        }
        if (t) t->count += added;
    }
    MG_CHECK(next == -1 && (!gNewTypeCount || at == kMapHeaderSize + 4 + kTypeEntrySize * types));
    // The type list, forward: counts of the new types come from the sorted records.
    *reinterpret_cast<int32_t*>(typeList) = types - 1;
    int32_t listOffset = 4 + kTypeEntrySize * types;
    int32_t first = 0;
    while (first < gCount && w[first].typeIndex < gMapTypes) ++first;
    for (int32_t k = 0; k < types; ++k) {
        ResTypeEntry* t = TypeAt(typeList, k);
        if (k >= gMapTypes) {
            int32_t n = 0;
            while (first + n < gCount && w[first + n].typeIndex == k) ++n;
            *t = ResTypeEntry{reinterpret_cast<ResType*>(*gNewTypes)[k - gMapTypes], n - 1, 0};
            first += n;
        }
        t->listOffset = listOffset;
        listOffset += kRefEntrySize * (t->count + 1);
    }
    HeaderOf(map)->mapSize = gMerged;
    Word(map, kMapNameListOffset) = nameList;
    // A shrink that fails leaves the block longer than the size word, as a failed shrink of a
    // removal does; the rest is cleared so that what a write-back takes from it is the same
    // every time.
    const int32_t block = MemHandleSize(entry->mapHandle);
    if (MemResizeHandle(entry->mapHandle, gMerged) != MgNoError)
        memset(map + gMerged, 0, size_t(block - gMerged));
    entry->map = *entry->mapHandle;
    Forget();
}

}  // namespace

namespace rsrc {

MgStatus PendingAdd(ResFileEntry* entry, Handle h, ResType type, int32_t resId, ConstPStr name,
                    bool* waits) {
    *waits = false;
    if (gOwner && gOwner != entry->mapHandle) PendingMergeAll();
    if (!gOwner && gRunMap != entry->mapHandle) {
        gRunMap = entry->mapHandle;
        return MgNoError;
    }
    Ptr map = entry->map;
    const int32_t size = HeaderOf(map)->mapSize;
    if (!MapCanonical(map, size)) return MgIOError;
    Ptr typeList = map + kMapHeaderSize;
    if (!gOwner && !NameListSound(map, size)) return MgNoError;
    const uint32_t token = MemHandleToken(h);
    if (MgStatus status = IndexReserve(token)) return status;
    ResTypeEntry* t = RFindType(typeList, type);

    // The type's place in the merged list and what is known of its ids. Memory for that
    // failing, the add goes in at once, with the statuses of an add made at once.
    const int32_t mapTypes = gOwner ? gMapTypes : TypeCount(typeList);
    int32_t typeIndex = t ? static_cast<int32_t>(t - TypeAt(typeList, 0)) : -1;
    for (int32_t i = 0; i < gNewTypeCount && typeIndex < 0; ++i)
        if (reinterpret_cast<ResType*>(*gNewTypes)[i] == type) typeIndex = mapTypes + i;
    const bool newType = typeIndex < 0;
    if (newType) typeIndex = mapTypes + gNewTypeCount;
    // What is known of the types holds only while adds wait: the map changes otherwise.
    if (!gOwner) gSpanCount = 0;
    if (Reserve(&gSpans, int64_t{typeIndex + 1} * int64_t{sizeof(Span)})) return MgNoError;
    for (; gSpanCount <= typeIndex; ++gSpanCount) Spans()[gSpanCount] = Span{0, 0, 0, 0};
    Span span = newType ? Span{1, 1, resId, resId} : Spans()[typeIndex];
    if (!span.checked) span = MapSpan(typeList, t);
    Spans()[typeIndex] = span;

    // An id outside a rising type's span is taken neither in the map nor among the waiting
    // ones; the usual run of rising ids is checked without a search.
    if (!newType && (!span.rises || (resId >= span.low && resId <= span.high))) {
        if (t && RFindId(typeList, t, resId)) return MgResourceDuplicate;
        if (gOwner && Lookup(type, resId)) return MgResourceDuplicate;
    }
    span.low = std::min(span.low, resId);
    span.high = std::max(span.high, resId);
    if (!span.rises || !Narrow(span.low, span.high)) return MgNoError;

    // Memory first, so that nothing can fail once something has changed.
    const int32_t nameBytes = name[0] ? name[0] + 1 : 0;
    const int64_t merged = int64_t{gOwner ? gMerged : size} + kRefEntrySize + nameBytes +
                           (newType ? kTypeEntrySize : 0);
    if (merged > INT32_MAX) return MgNoError;
    MgStatus status = Reserve(&gRecords, int64_t{gCount + 1} * int64_t{sizeof(Waiting)});
    if (!status && newType) status = Reserve(&gNewTypes, int64_t{gNewTypeCount + 1} * 4);
    const int32_t block = MemHandleSize(entry->mapHandle);
    if (!status && block < merged) {
        // Room for as much again as waits, and at least an eighth of the block: few resizes
        // for a long run, and little slack for a short one.
        const int64_t grown =
            merged + std::max<int64_t>(merged - (gOwner ? gBase : size), block / 8);
        status = MemResizeHandle(entry->mapHandle,
                                 static_cast<int32_t>(std::min<int64_t>(grown, INT32_MAX)));
        if (status) status = MemResizeHandle(entry->mapHandle, static_cast<int32_t>(merged));
        entry->map = map = *entry->mapHandle;
        typeList = map + kMapHeaderSize;
    }
    if (status) return MgNoError;

    if (!gOwner) {
        gOwner = entry->mapHandle;
        gOwnerId = entry->fileId;
        gBase = gMerged = size;
        gMapTypes = mapTypes;
        int32_t refs = 0;
        for (int32_t i = 0; i < mapTypes; ++i) refs += TypeAt(typeList, i)->count + 1;
        gBaseNames = size - kMapHeaderSize - 4 - kTypeEntrySize * mapTypes - kRefEntrySize * refs;
    }
    if (newType) reinterpret_cast<ResType*>(*gNewTypes)[gNewTypeCount++] = type;
    Spans()[typeIndex] = span;
    int32_t nameOffset = kNoName;
    if (nameBytes) {
        nameOffset = gBaseNames + gNames;
        BlockMove(name, map + gBase + gNames, nameBytes);
        gNames += nameBytes;
    }
    Waiting& w = Records()[gCount++];
    w = Waiting{ResRefEntry{resId, nameOffset, RAttrChanged, 0, 0}, type, typeIndex, newType};
    if (gHashSlots && 2 * (gCount + 1) > gHashSlots) Rehash();
    if (gHashSlots) *Probe(type, resId) = gCount;
    gMerged = static_cast<int32_t>(merged);
    AttachHandle(entry, type, &w.ref, token);
    SetDirty(map);
    *waits = true;
    return MgNoError;
}

void PendingMerge(ResFileEntry* entry) {
    if (gOwner && entry->mapHandle == gOwner) Merge(entry);
}

void PendingObserve(ResFileEntry* entry) {
    if (entry->mapHandle == gRunMap) gRunMap = nullptr;
    PendingMerge(entry);
}

// The owner's slot can't be gone while adds wait (closing and RExit observe the map first);
// were it gone, what waits would go with it.
void PendingMergeAll() {
    ResFileEntry* entry;
    gRunMap = nullptr;
    if (!gOwner) return;
    if (FindFile(gOwnerId, &entry) == MgNoError && entry->mapHandle == gOwner)
        Merge(entry);
    else
        Forget();
}

// The last add is the one most often asked about, right after it was made.
ResRefEntry* PendingFind(const ResFileEntry* entry, ResType type, int32_t resId) {
    if (!gOwner || entry->mapHandle != gOwner) return nullptr;
    Waiting* last = &Records()[gCount - 1];
    if (last->ref.id == resId && last->type == type) return &last->ref;
    Waiting* w = Lookup(type, resId);
    return w ? &w->ref : nullptr;
}

bool PendingHasType(const ResFileEntry* entry, ResType type) {
    if (!gOwner || entry->mapHandle != gOwner) return false;
    for (int32_t i = 0; i < gNewTypeCount; ++i)
        if (reinterpret_cast<ResType*>(*gNewTypes)[i] == type) return true;
    return false;
}

bool PendingHolds(const ResRefEntry* ref) {
    const Waiting* w = gOwner ? Records() : nullptr;
    return w && ref >= &w[0].ref && ref <= &w[gCount - 1].ref;
}

ConstPStr PendingName(const ResRefEntry* ref) {
    if (ref->nameOffset == kNoName) return nullptr;
    return *gOwner + gBase + ref->nameOffset - gBaseNames;
}

}  // namespace rsrc
