// Finding resources by index, id, name and handle, and loading their data on first use.
#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/pstring.h"
#include "mg/sort.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\lookup.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

// Key and element both start with an id. Subtraction as 32-bit numbers, wrapping, as the
// lists' search has always compared.
int32_t CompareIdKey(const void* key, const void* element) {
    int32_t a, b;
    memcpy(&a, key, 4);
    memcpy(&b, element, 4);
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

// The reference of a type's list that holds `token` and has id `resId`. Lists from other
// writers may repeat an id, or stand unsorted (newer versions aren't sorted on opening), so
// the search's neighbours and then the whole list are looked at before giving up.
ResRefEntry* FindTokenById(Ptr typeList, ResTypeEntry* t, int32_t resId, uint32_t token) {
    ResRefEntry* refs = RefsOf(typeList, t);
    const int32_t n = t->count + 1;
    if (ResRefEntry* hit = RFindId(typeList, t, resId)) {
        for (int32_t i = static_cast<int32_t>(hit - refs); i >= 0 && refs[i].id == resId; --i)
            if (refs[i].handle == token) return &refs[i];
        for (int32_t i = static_cast<int32_t>(hit - refs) + 1; i < n && refs[i].id == resId; ++i)
            if (refs[i].handle == token) return &refs[i];
    }
    for (int32_t i = 0; i < n; ++i)
        if (refs[i].handle == token) return &refs[i];
    return nullptr;
}

MgStatus Found(ResFileEntry* e, ResRefEntry* r, ResType t, ResFileEntry** entry, ResRefEntry** ref,
               ResType* type) {
    if (entry) *entry = e;
    if (ref) *ref = r;
    if (type) *type = t;
    return MgNoError;
}

void Remember(ResFile id, ResType type, Handle h, int32_t resId) {
    RLastGot = RLastGotRecord{id, type, h, resId};
}

// Size word and data come through the file's read window; data too large for it is read
// from the file straight into the new handle. `type` is the type whose list holds `ref`.
MgStatus LoadData(ResFileEntry* entry, ResType type, ResRefEntry* ref, Handle* loaded) {
    MG_CHECK(ref->handle == 0);
    const int32_t dataSize = HeaderOf(entry->map)->dataSize;
    if (int64_t{ref->dataOffset} + 4 > dataSize) return MgEndOfFile;
    const int64_t at = int64_t{HeaderOf(entry->map)->dataOffset} + ref->dataOffset;
    int32_t size;
    if (MgStatus status = DataRead(entry, at, 4, &size)) return status;
    FlipBig32(&size);
    if (size < 0 || int64_t{ref->dataOffset} + size + 4 > dataSize) return MgEndOfFile;
    if (MgStatus status = CheckDataInFile(entry, at, size)) return status;
    Handle h = MemNewHandle(size);
    if (!h) return MgNoMemory;
    MgStatus status = DataRead(entry, at + 4, size, *h);
    if (!status) status = AttachNewHandle(entry, type, ref, MemHandleToken(h));
    if (status) {
        MemDisposeHandle(h);
        return status;
    }
    *loaded = h;
    return MgNoError;
}

// Loads `ref` when needed and gives its handle.
MgStatus Deliver(ResFileEntry* entry, ResType type, ResRefEntry* ref, Handle* h) {
    if (!ref->handle) {
        if (MgStatus status = LoadData(entry, type, ref, h)) return status;
    } else {
        *h = DataHandle(ref);
    }
    Remember(entry->fileId, type, *h, ref->id);
    return MgNoError;
}

}  // namespace

namespace rsrc {

MgStatus RReadDataSize(const ResFileEntry* entry, int32_t dataOffset, int32_t* size) {
    // Both offsets may come from a file; a sum no file position can have lies past its end.
    const int64_t at = int64_t{HeaderOf(entry->map)->dataOffset} + dataOffset;
    if (at != static_cast<int32_t>(at)) return MgEndOfFile;
    if (MgStatus status = FMSeek(entry->fileRef, static_cast<int32_t>(at), FMSeekStart))
        return status;
    if (MgStatus status = FMRead(entry->fileRef, 4, nullptr, size)) return status;
    FlipBig32(size);
    return MgNoError;
}

// The data section's size is the file's word; the file may be shorter. Data larger than a
// read window is held against the real length before memory is taken for it, so that no file
// makes the manager allocate beyond its own size; shorter data fails its read the same way.
MgStatus CheckDataInFile(const ResFileEntry* entry, int64_t at, int32_t size) {
    if (size <= kDataWindowSize) return MgNoError;
    int32_t length = 0;
    if (MgStatus status = FGetEOF(entry->fileRef, &length)) return status;
    return at + 4 + size > length ? MgEndOfFile : MgNoError;
}

Handle DataHandle(const ResRefEntry* ref) {
    return ref->handle ? MemHandleFromToken(ref->handle) : nullptr;
}

int32_t DataSize(Handle h) {
    return MemCheckHandle(h) == MgNoError ? MemHandleSize(h) : CompactHandleSize(h);
}

void DisposeData(Handle h) {
    if (MemCheckHandle(h) == MgNoError)
        MemDisposeHandle(h);
    else
        CompactDisposeHandle(h);
}

ResTypeEntry* TypeOfRef(Ptr map, const ResRefEntry* ref) {
    Ptr typeList = TypeListOf(map);
    const int32_t types = TypeCount(typeList);
    for (int32_t i = 0; i < types; ++i) {
        ResTypeEntry* t = TypeAt(typeList, i);
        const ResRefEntry* first = RefsOf(typeList, t);
        if (ref >= first && ref < first + t->count + 1) return t;
    }
    return nullptr;
}

}  // namespace rsrc

extern "C" {

RLastGotRecord RLastGot = {0, 0, nullptr, 0};

ResTypeEntry* RFindType(Ptr typeList, ResType type) {
    const int32_t types = TypeCount(typeList);
    for (int32_t i = 0; i < types; ++i) {
        ResTypeEntry* t = TypeAt(typeList, i);
        if (t->type == type) return t;
    }
    return nullptr;
}

ResRefEntry* RFindId(Ptr typeList, ResTypeEntry* typeEntry, int32_t resId) {
    ResRefEntry* refs = RefsOf(typeList, typeEntry);
    const int32_t at =
        BinarySearch(refs, typeEntry->count + 1, kRefEntrySize, &resId, CompareIdKey);
    return at >= 0 ? &refs[at] : nullptr;
}

MgStatus RGetByIndex(Ptr map, ResType type, int32_t index, ResRefEntry** ref) {
    *ref = nullptr;
    if (MapEmpty(map)) return MgResourceNotFound;
    Ptr typeList = TypeListOf(map);
    ResTypeEntry* t = RFindType(typeList, type);
    if (!t || index < 1 || index > t->count + 1) return MgResourceNotFound;
    *ref = &RefsOf(typeList, t)[index - 1];
    return MgNoError;
}

MgStatus RFindHandle(Handle h, ResFileEntry** entry, ResRefEntry** ref, ResType* type) {
    if (!h) return MgResourceNotFound;
    const uint32_t token = MemHandleToken(h);
    ResFileEntry* e;
    // A file with id 0 lives in memory only, in a slot that looks free: it is never searched.
    if (h == RLastGot.handle && RLastGot.fileId != 0 &&
        RLookupFile(RLastGot.fileId, &e) == MgNoError && !MapEmpty(e->map)) {
        Ptr typeList = TypeListOf(e->map);
        if (ResTypeEntry* t = RFindType(typeList, RLastGot.type)) {
            ResRefEntry* r = RFindId(typeList, t, RLastGot.resId);
            if (r && token != 0 && r->handle == token)
                return Found(e, r, t->type, entry, ref, type);
        }
    }
    if (!RFileTable) return MgBadResourceFile;
    if (token == 0) return MgResourceNotFound;
    // The index stands in for a walk of every reference of every open file: it names the
    // one reference that can hold the handle, which is then checked against its map. Without
    // memory for it, the walk answers.
    if (!IndexReady()) {
        ResRefEntry* r;
        ResType t;
        if (RFindHandleByWalk(token, &e, &r, &t)) return MgResourceNotFound;
        return Found(e, r, t, entry, ref, type);
    }
    RefLocator where;
    if (!IndexFind(token, &where) || where.fileId == 0) return MgResourceNotFound;
    if (RLookupFile(where.fileId, &e) != MgNoError || e->reserved != 0 || MapEmpty(e->map))
        return MgResourceNotFound;
    Ptr typeList = TypeListOf(e->map);
    ResTypeEntry* t = RFindType(typeList, where.type);
    ResRefEntry* r = t ? FindTokenById(typeList, t, where.resId, token) : nullptr;
    if (!r) return MgResourceNotFound;
    return Found(e, r, t->type, entry, ref, type);
}

MgStatus RLoadData(ResFileEntry* entry, ResRefEntry* ref) {
    ResTypeEntry* t = TypeOfRef(entry->map, ref);
    Handle loaded;
    return LoadData(entry, t ? t->type : 0, ref, &loaded);
}

MgStatus RCountTypes(ResFile id, int32_t* count) {
    *count = 0;
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    if (!MapEmpty(entry->map)) *count = TypeCount(TypeListOf(entry->map));
    return MgNoError;
}

MgStatus RGetIndType(ResFile id, ResType* type, int32_t index) {
    *type = 0;
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    if (MapEmpty(entry->map)) return MgResourceNotFound;
    Ptr typeList = TypeListOf(entry->map);
    if (index < 1 || index > TypeCount(typeList)) return MgResourceNotFound;
    *type = TypeAt(typeList, index - 1)->type;
    return MgNoError;
}

// An unknown type is no error here: it has no resources.
MgStatus RCount(ResFile id, ResType type, int32_t* count) {
    *count = 0;
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    if (MapEmpty(entry->map)) return MgNoError;
    if (ResTypeEntry* t = RFindType(TypeListOf(entry->map), type)) *count = t->count + 1;
    return MgNoError;
}

MgStatus RGetInd(ResFile id, ResType type, int32_t index, Handle* h) {
    *h = nullptr;
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    if (index <= 0) return MgResourceNotFound;
    ResRefEntry* ref;
    if (MgStatus status = RGetByIndex(entry->map, type, index, &ref)) return status;
    return Deliver(entry, type, ref, h);
}

MgStatus RGet(ResFile id, ResType type, int32_t resId, Handle* h) {
    *h = nullptr;
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    if (!entry->map) return MgBadArgument;
    if (MapEmpty(entry->map)) return MgResourceNotFound;
    Ptr typeList = TypeListOf(entry->map);
    ResTypeEntry* t = RFindType(typeList, type);
    ResRefEntry* ref = t ? RFindId(typeList, t, resId) : nullptr;
    if (!ref) return MgResourceNotFound;
    return Deliver(entry, type, ref, h);
}

// In id order; the first name that matches without regard to case wins.
MgStatus RGetNamed(ResFile id, ResType type, ConstPStr name, Handle* h) {
    *h = nullptr;
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    int32_t count;
    RCount(id, type, &count);
    const uint8_t empty = 0;
    if (!name) name = &empty;
    const int32_t mapBytes = HeaderOf(entry->map)->mapSize;
    for (int32_t i = 1; i <= count; ++i) {
        ResRefEntry* ref;
        if (RGetByIndex(entry->map, type, i, &ref)) break;
        ConstPStr refName = NameOf(entry->map, mapBytes, ref);
        if (refName && refName[0] == name[0] && PStringSameNoCase(refName, name))
            return Deliver(entry, type, ref, h);
    }
    return MgResourceNotFound;
}

MgStatus RExists(ResFile id, ResType type, int32_t resId, int32_t* found) {
    *found = 0;
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    if (!entry->map) return MgBadArgument;
    if (MapEmpty(entry->map)) return MgResourceNotFound;
    Ptr typeList = TypeListOf(entry->map);
    ResTypeEntry* t = RFindType(typeList, type);
    if (!t || !RFindId(typeList, t, resId)) return MgResourceNotFound;
    *found = 1;
    return MgNoError;
}

MgStatus RGetInfo(Handle h, int32_t* resId, ResType* type, PStr name) {
    if (resId) *resId = 0;
    if (type) *type = 0;
    if (name) name[0] = 0;
    ResFileEntry* entry;
    ResRefEntry* ref;
    ResType t;
    if (MgStatus status = RFindHandle(h, &entry, &ref, &t)) return status;
    if (resId) *resId = ref->id;
    if (type) *type = t;
    if (name) {
        ConstPStr n = NameOf(entry->map, HeaderOf(entry->map)->mapSize, ref);
        if (n) PStringCopy(name, n);
    }
    return MgNoError;
}

MgStatus RGetAttrs(Handle h, int32_t* attrs) {
    ResRefEntry* ref;
    if (MgStatus status = RFindHandle(h, nullptr, &ref, nullptr)) return status;
    *attrs = ref->attrs;
    return MgNoError;
}

MgStatus RGetSize(Handle h, int32_t* size) {
    *size = -1;
    ResFileEntry* entry;
    ResRefEntry* ref;
    if (MgStatus status = RFindHandle(h, &entry, &ref, nullptr)) return status;
    if (*h) {
        *size = DataSize(h);
        return MgNoError;
    }
    return RReadDataSize(entry, ref->dataOffset, size);
}

int32_t RIsResource(Handle h) {
    return RFindHandle(h, nullptr, nullptr, nullptr) == MgNoError;
}

MgStatus RCheckResource(Handle h) {
    return RIsResource(h) ? MgNoError : MgResourceNotFound;
}

// A changed resource can't be let go: its data would be lost before the write-back.
MgStatus RRelease(Handle h) {
    ResRefEntry* ref;
    if (MgStatus status = RFindHandle(h, nullptr, &ref, nullptr)) return status;
    MG_CHECK(!(ref->attrs & RAttrChanged));
    DetachHandle(ref);
    DisposeData(h);
    return MgNoError;
}

MgStatus RDetach(Handle h) {
    ResRefEntry* ref;
    if (MgStatus status = RFindHandle(h, nullptr, &ref, nullptr)) return status;
    MG_CHECK(!(ref->attrs & RAttrChanged));
    DetachHandle(ref);
    return MgNoError;
}

}  // extern "C"
