// Edits of an open file's map in memory: add, remove, attributes, free ids. No edit touches
// the disk; each sets the dirty bit, and the write-back brings file and map together.
//
// The map stays one block in its file layout, so every edit opens or closes a gap with
// BlockMove and fixes the offsets the move invalidates; RAdd's gap waits (pending.cpp) until
// something observes the map, and is opened then together with the others. Edits check first and
// change after: a failed edit leaves the map as it was. A map whose lists don't stand in the order
// the edits rely on (possible only in files from other writers) is refused with 6.
#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "mg/sort.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\edit.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

constexpr int32_t kFirstCountedId = 128;
constexpr int32_t kLastCountedId = 0x7FFFFFF;

int32_t CompareIdKey(const void* key, const void* element) {
    int32_t a, b;
    memcpy(&a, key, 4);
    memcpy(&b, element, 4);
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

int32_t TotalRefs(Ptr typeList) {
    int32_t total = 0;
    for (int32_t i = 0; i < TypeCount(typeList); ++i) total += TypeAt(typeList, i)->count + 1;
    return total;
}

// Grows the map block; on success the entry's pointer and the size word are up to date.
MgStatus GrowMap(ResFileEntry* entry, int32_t newSize) {
    if (MgStatus status = MemResizeHandle(entry->mapHandle, newSize)) return status;
    entry->map = *entry->mapHandle;
    HeaderOf(entry->map)->mapSize = newSize;
    return MgNoError;
}

void WriteRef(ResRefEntry* ref, int32_t resId, int32_t nameOffset) {
    ref->id = resId;
    ref->nameOffset = nameOffset;
    ref->attrs = RAttrChanged;
    ref->dataOffset = 0;
    ref->handle = 0;
}

MgStatus AddToEmpty(ResFileEntry* entry, ResType type, int32_t resId, ConstPStr name,
                    int32_t nameBytes, int32_t* refPos) {
    // An empty map's content is its first 52 bytes, whatever the block kept after a failed
    // shrink.
    const int32_t newSize = kMapHeaderSize + 36 + nameBytes;
    if (MgStatus status = GrowMap(entry, newSize)) return status;
    Ptr map = entry->map;
    Word(map, kMapTypeListOffset) = kMapHeaderSize;
    Ptr typeList = map + kMapHeaderSize;
    *reinterpret_cast<int32_t*>(typeList) = 0;
    *TypeAt(typeList, 0) = ResTypeEntry{type, 0, 16};
    *refPos = kMapHeaderSize + 16;
    WriteRef(reinterpret_cast<ResRefEntry*>(map + *refPos), resId, nameBytes ? 0 : kNoName);
    if (nameBytes) {
        Word(map, kMapNameListOffset) = kMapHeaderSize + 36;
        BlockMove(name, map + kMapHeaderSize + 36, nameBytes);
    } else {
        Word(map, kMapNameListOffset) = 0;
    }
    return MgNoError;
}

MgStatus AddWithNewType(ResFileEntry* entry, ResType type, int32_t resId, ConstPStr name,
                        int32_t nameBytes, int32_t* refPos) {
    Ptr map = entry->map;
    const int32_t oldSize = HeaderOf(map)->mapSize;
    const int32_t types = TypeCount(map + kMapHeaderSize);
    const int32_t typeListSize = 4 + kTypeEntrySize * types;
    const int32_t refBytes = kRefEntrySize * TotalRefs(map + kMapHeaderSize);
    const int32_t nameListSize = oldSize - kMapHeaderSize - typeListSize - refBytes;
    const int32_t newSize = oldSize + 32 + nameBytes;
    if (MgStatus status = GrowMap(entry, newSize)) return status;
    map = entry->map;
    Ptr typeList = map + kMapHeaderSize;
    if (nameBytes) BlockMove(name, map + newSize - nameBytes, nameBytes);
    const int32_t refsStart = kMapHeaderSize + typeListSize;
    BlockMove(map + oldSize - nameListSize, map + oldSize - nameListSize + 32, nameListSize);
    int32_t& nameListOffset = Word(map, kMapNameListOffset);
    if (nameListOffset != 0)
        nameListOffset += 32;
    else if (nameBytes)
        nameListOffset = newSize - nameBytes;
    BlockMove(map + refsStart, map + refsStart + kTypeEntrySize, refBytes);
    *refPos = refsStart + kTypeEntrySize + refBytes;
    WriteRef(reinterpret_cast<ResRefEntry*>(map + *refPos), resId,
             nameBytes ? nameListSize : kNoName);
    for (int32_t i = 0; i < types; ++i) TypeAt(typeList, i)->listOffset += kTypeEntrySize;
    *reinterpret_cast<int32_t*>(typeList) += 1;
    *TypeAt(typeList, types) = ResTypeEntry{type, 0, typeListSize + kTypeEntrySize + refBytes};
    return MgNoError;
}

MgStatus AddToType(ResFileEntry* entry, int32_t typeIndex, int32_t resId, ConstPStr name,
                   int32_t nameBytes, int32_t* refPos) {
    Ptr map = entry->map;
    Ptr typeList = map + kMapHeaderSize;
    ResTypeEntry* t = TypeAt(typeList, typeIndex);
    const int32_t found =
        BinarySearch(RefsOf(typeList, t), t->count + 1, kRefEntrySize, &resId, CompareIdKey);
    if (found >= 0) return MgResourceDuplicate;
    const int32_t insert = -found - 1;
    const int32_t oldSize = HeaderOf(map)->mapSize;
    const int32_t types = TypeCount(typeList);
    const int32_t typeListSize = 4 + kTypeEntrySize * types;
    const int32_t refBytes = kRefEntrySize * TotalRefs(typeList);
    const int32_t nameListSize = oldSize - kMapHeaderSize - typeListSize - refBytes;
    const int32_t insertPos = kMapHeaderSize + t->listOffset + insert * kRefEntrySize;
    const int32_t newSize = oldSize + kRefEntrySize + nameBytes;
    if (MgStatus status = GrowMap(entry, newSize)) return status;
    map = entry->map;
    typeList = map + kMapHeaderSize;
    if (nameBytes) BlockMove(name, map + newSize - nameBytes, nameBytes);
    int32_t& nameListOffset = Word(map, kMapNameListOffset);
    if (nameListOffset != 0)
        nameListOffset += kRefEntrySize;
    else if (nameBytes)
        nameListOffset = newSize - nameBytes;
    // The references behind the insertion point and the name list move as one run.
    BlockMove(map + insertPos, map + insertPos + kRefEntrySize, oldSize - insertPos);
    for (int32_t i = typeIndex + 1; i < types; ++i)
        TypeAt(typeList, i)->listOffset += kRefEntrySize;
    *refPos = insertPos;
    WriteRef(reinterpret_cast<ResRefEntry*>(map + insertPos), resId,
             nameBytes ? nameListSize : kNoName);
    TypeAt(typeList, typeIndex)->count += 1;
    return MgNoError;
}

}  // namespace

extern "C" {

int32_t gNextResId = kFirstCountedId;

// The add waits to be merged into the map (pending.cpp) where it can; into an empty map, or
// the map of a file held in memory alone, it goes at once.
MgStatus RAdd(Handle h, ResFile id, ResType type, int32_t resId, ConstPStr name) {
    ResFileEntry* entry;
    if (MgStatus status = FindFile(id, &entry)) return status;
    if (!h) return MgResourceDuplicate;
    if (ReadOnly(entry->map)) return MgNoPermission;
    if (RIsResource(h)) return MgResourceDuplicate;
    // The map stores a token of the handle; something that is no live block has none.
    if (MemHandleToken(h) == 0) return MgBadHandle;
    const uint8_t empty = 0;
    if (!name) name = &empty;
    bool waits = false;
    if (!MapEmpty(entry->map) && entry->fileId != 0) {
        if (MgStatus status = PendingAdd(entry, h, type, resId, name, &waits)) return status;
    }
    if (!waits) {
        if (MgStatus status = RAddToMap(entry, h, type, resId, name)) return status;
    }
    RLastGot = RLastGotRecord{id, type, h, resId};
    return MgNoError;
}

MgStatus RAddToMap(ResFileEntry* entry, Handle h, ResType type, int32_t resId, ConstPStr name) {
    PendingMerge(entry);
    const int32_t nameBytes = name[0] ? name[0] + 1 : 0;
    Ptr map = entry->map;
    const bool empty = MapEmpty(map);
    if (!empty && !MapCanonical(map, HeaderOf(map)->mapSize)) return MgIOError;
    // Room in the handle index first, so nothing can fail once the map has changed.
    const uint32_t token = MemHandleToken(h);
    if (MgStatus status = IndexReserve(token)) return status;
    int32_t refPos = 0;
    MgStatus status;
    ResTypeEntry* t = empty ? nullptr : RFindType(map + kMapHeaderSize, type);
    if (empty)
        status = AddToEmpty(entry, type, resId, name, nameBytes, &refPos);
    else if (!t)
        status = AddWithNewType(entry, type, resId, name, nameBytes, &refPos);
    else
        status = AddToType(entry, static_cast<int32_t>(t - TypeAt(map + kMapHeaderSize, 0)), resId,
                           name, nameBytes, &refPos);
    if (status) return status;
    map = entry->map;
    AttachHandle(entry, type, reinterpret_cast<ResRefEntry*>(map + refPos), token);
    SetDirty(map);
    return MgNoError;
}

}  // extern "C"

namespace {

// Takes `ref` out of `entry`'s map; its handle, if any, goes back to whoever holds it.
MgStatus RemoveRef(ResFileEntry* entry, ResRefEntry* ref) {
    Ptr map = entry->map;
    if (ReadOnly(map)) return MgNoPermission;
    if (ref->attrs & RAttrProtected) return MgResourceNotFound;
    const int32_t size = HeaderOf(map)->mapSize;
    if (!MapCanonical(map, size)) return MgIOError;
    Ptr typeList = map + kMapHeaderSize;
    ResTypeEntry* t = TypeOfRef(map, ref);
    MG_CHECK(t != nullptr);
    const int32_t refPos = static_cast<int32_t>(reinterpret_cast<Ptr>(ref) - map);
    const int32_t refEnd = refPos + kRefEntrySize;
    const bool named = ref->nameOffset != kNoName;
    const int32_t removedNameOffset = ref->nameOffset;
    int64_t namePos = 0;
    int32_t nameSize = 0;
    if (named) {
        namePos = int64_t{Word(map, kMapNameListOffset)} + ref->nameOffset;
        // A name the arithmetic of earlier edits has put out of place, over the lists, can't
        // be cut out.
        const int64_t listsEnd = int64_t{kMapHeaderSize} + 4 +
                                 int64_t{TypeCount(typeList)} * kTypeEntrySize +
                                 int64_t{TotalRefs(typeList)} * kRefEntrySize;
        if (namePos < listsEnd || namePos >= size || namePos + 1 + map[namePos] > size)
            return MgIOError;
        nameSize = 1 + map[namePos];
    }

    DetachHandle(ref);
    const int32_t types = TypeCount(typeList);
    const int32_t noted = t->listOffset;
    const bool entryGoes = t->count == 0;
    if (entryGoes && types == 1) {
        MemResizeHandle(entry->mapHandle, kMapHeaderSize);
        map = entry->map = *entry->mapHandle;
        ResFileHeader* header = HeaderOf(map);
        header->mapOffset = kHeaderSize;
        header->mapSize = 0;
        header->dataOffset = kHeaderSize;
        header->dataSize = 0;
        Word(map, kMapNameListOffset) = 0;
        SetDirty(map);
        return MgNoError;
    }
    int32_t gap = kRefEntrySize;
    if (!entryGoes) {
        t->count -= 1;
    } else {
        const int32_t typeEnd = static_cast<int32_t>(reinterpret_cast<Ptr>(t + 1) - map);
        BlockMove(map + typeEnd, map + typeEnd - kTypeEntrySize, refPos - typeEnd);
        *reinterpret_cast<int32_t*>(typeList) -= 1;
        gap += kTypeEntrySize;
    }
    for (int32_t i = 0; i < TypeCount(typeList); ++i) {
        ResTypeEntry* other = TypeAt(typeList, i);
        if (other->listOffset > noted)
            other->listOffset -= gap;
        else if (entryGoes)
            other->listOffset -= kTypeEntrySize;
    }
    int32_t newSize;
    int32_t& nameListOffset = Word(map, kMapNameListOffset);
    if (named) {
        const int32_t at = static_cast<int32_t>(namePos);
        BlockMove(map + refEnd, map + refEnd - gap, at - refEnd);
        nameListOffset -= gap;
        BlockMove(map + at + nameSize, map + at - gap, size - at - nameSize);
        newSize = size - gap - nameSize;
        for (int32_t i = 0; i < TypeCount(typeList); ++i) {
            ResTypeEntry* other = TypeAt(typeList, i);
            ResRefEntry* refs = RefsOf(typeList, other);
            for (int32_t r = 0; r <= other->count; ++r)
                if (refs[r].nameOffset > removedNameOffset) refs[r].nameOffset -= nameSize;
        }
    } else {
        // A map with no names holds 0 here, which becomes negative and stays so until the
        // file is closed; the checks on opening let it pass.
        nameListOffset -= gap;
        BlockMove(map + refEnd, map + refEnd - gap, size - refEnd);
        newSize = size - gap;
    }
    HeaderOf(map)->mapSize = newSize;
    MemResizeHandle(entry->mapHandle, newSize);
    entry->map = *entry->mapHandle;
    SetDirty(entry->map);
    return MgNoError;
}

}  // namespace

extern "C" {

MgStatus RRemove(Handle h, ResFile id) {
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    if (!h) return MgResourceDuplicate;
    ResRefEntry* ref;
    // The resource goes from whichever open file holds it.
    if (MgStatus status = RFindHandle(h, &entry, &ref, nullptr)) return status;
    return RemoveRef(entry, ref);
}

// Its data isn't loaded, so that replacing a large resource costs no memory for it.
MgStatus RRemoveInd(ResFile id, ResType type, int32_t index) {
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    ResRefEntry* ref;
    if (MgStatus status = RGetByIndex(entry->map, type, index, &ref)) return status;
    return RemoveRef(entry, ref);
}

MgStatus RChanged(Handle h) {
    ResFileEntry* entry;
    ResRefEntry* ref;
    if (MgStatus status = FindResource(h, &entry, &ref, nullptr)) return status;
    if (ReadOnly(entry->map)) return MgNoPermission;
    ref->attrs |= RAttrChanged;
    SetDirty(entry->map);
    return MgNoError;
}

// Replaces the word whole: a caller who wants the changed bit calls RChanged after.
MgStatus RSetAttrs(Handle h, int32_t attrs) {
    ResFileEntry* entry;
    ResRefEntry* ref;
    if (MgStatus status = FindResource(h, &entry, &ref, nullptr)) return status;
    if (ReadOnly(entry->map)) return MgNoPermission;
    ref->attrs = attrs;
    SetDirty(entry->map);
    return MgNoError;
}

// Ids from the counter rise across files and types; the id isn't reserved.
// Ids waiting to be added count as taken, without a merge, so that a loop of RUniqueID and
// RAdd stays a run of adds.
int32_t RUniqueID(ResFile id, ResType type) {
    ResFileEntry* entry;
    if (FindFile(id, &entry)) return 0;
    if (MapEmpty(entry->map)) return kFirstCountedId;
    Ptr typeList = TypeListOf(entry->map);
    int32_t result = gNextResId;
    ResTypeEntry* t = RFindType(typeList, type);
    if (t || PendingHasType(entry, type)) {
        for (;; ++result) {
            if (result > kLastCountedId) return 0;
            if (!(t && RFindId(typeList, t, result)) && !PendingFind(entry, type, result)) break;
        }
    }
    gNextResId = gNextResId < kFirstCountedId ? kFirstCountedId : gNextResId + 1;
    return result;
}

}  // extern "C"
