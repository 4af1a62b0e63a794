// Internal view of a map in memory, shared by the files of the resource manager.
//
// Map layout: header copy (0..31), unused word (32), file id (36), file attributes (40),
// type-list offset (44), name-list offset (48), then the type list, the reference lists in
// type-list order without gaps, and the name list up to the end of the block. The edits rely
// on the type list standing at 52 and on those lists being contiguous ("canonical" below).
#pragma once

#include <string.h>

#include <bit>

#include "mg/resource.h"

namespace rsrc {

constexpr int32_t kHeaderSize = 32;
constexpr int32_t kMapUnused = 32;
constexpr int32_t kMapFileId = 36;
constexpr int32_t kMapFileAttrs = 40;
constexpr int32_t kMapTypeListOffset = 44;
constexpr int32_t kMapNameListOffset = 48;
constexpr int32_t kMapHeaderSize = 52;
// A map whose size word is at most this holds no resource.
constexpr int32_t kEmptyMapSize = 32;
constexpr int32_t kTypeEntrySize = 12;
constexpr int32_t kRefEntrySize = 20;
constexpr int32_t kNoName = -1;

inline int32_t& Word(Ptr map, int32_t offset) {
    return *reinterpret_cast<int32_t*>(map + offset);
}
inline ResFileHeader* HeaderOf(Ptr map) {
    return reinterpret_cast<ResFileHeader*>(map);
}
inline bool MapEmpty(Ptr map) {
    return HeaderOf(map)->mapSize <= kEmptyMapSize;
}
inline Ptr TypeListOf(Ptr map) {
    return map + Word(map, kMapTypeListOffset);
}
inline int32_t TypeCount(Ptr typeList) {
    return *reinterpret_cast<int32_t*>(typeList) + 1;
}
inline ResTypeEntry* TypeAt(Ptr typeList, int32_t i) {
    return reinterpret_cast<ResTypeEntry*>(typeList + 4 + i * kTypeEntrySize);
}
inline ResRefEntry* RefsOf(Ptr typeList, const ResTypeEntry* t) {
    return reinterpret_cast<ResRefEntry*>(typeList + t->listOffset);
}
inline bool ReadOnly(Ptr map) {
    return (Word(map, kMapFileAttrs) & RFileReadOnly) != 0;
}
inline void SetDirty(Ptr map) {
    Word(map, kMapFileAttrs) |= RFileDirty;
}

// Converts a 32- or 16-bit word between big-endian and host order; the same call serves both
// directions. Inline: a map's conversion flips four words of every reference.
inline void FlipBig32(void* p) {
    if constexpr (std::endian::native == std::endian::little) {
        uint32_t v;
        memcpy(&v, p, 4);
        v = __builtin_bswap32(v);
        memcpy(p, &v, 4);
    }
}
inline void FlipBig16(void* p) {
    if constexpr (std::endian::native == std::endian::little) {
        uint16_t v;
        memcpy(&v, p, 2);
        v = __builtin_bswap16(v);
        memcpy(p, &v, 2);
    }
}

// The name of a reference, or null when it has none or its position lies outside the block.
ConstPStr NameOf(Ptr map, int32_t mapBytes, const ResRefEntry* ref);
// True when the type list stands at 52 and every reference list follows the one before.
bool MapCanonical(Ptr map, int32_t mapBytes);
// The handle held in a reference, or null.
Handle DataHandle(const ResRefEntry* ref);
// Size and disposal of a data handle of either zone.
int32_t DataSize(Handle h);
void DisposeData(Handle h);
// Signature "RSRC" with a version and line end that a reader accepts.
bool HeaderPasses(const ResFileHeader* h);
// Reads and checks the header at the file's position; 13 when it is no resource header.
MgStatus ReadHeader(FileRef ref, ResFileHeader* header);
// Reads and checks the header, trying the trailer once when `tryTrailer`; gives the base.
MgStatus ReadHeaderWithTrailer(FileRef ref, bool tryTrailer, ResFileHeader* header, int32_t* base);

// Checks a map read from a file, still in file form, before anything else touches it: the
// type list and every reference list aligned, inside the block, clear of its header and of
// each other, with counts that fit. 6 when it isn't sound, 2 when memory runs out.
MgStatus ValidateFileMap(const uint8_t* raw, int32_t mapSize);
// The walk behind ValidateFileMap, reporting each fault with its offset in the map to `proc`,
// which returns true to go on. 6 when there was a fault, 2 when memory ran out, else 0.
using MapFaultProc = bool (*)(void* context, int64_t at, const char* what);
MgStatus CheckMapLists(const uint8_t* raw, int32_t mapSize, MapFaultProc proc, void* context);

// Index from a data handle's token to its reference. While it is live, every reference with a
// nonzero handle word is in it; entries are hints, checked against the map on every use.
struct RefLocator {
    ResFile fileId;
    ResType type;
    int32_t resId;
};
// True when the index is live, building it from the open maps if it was dormant; false when
// memory ran out, and the index stays dormant.
bool IndexReady();
// The walk that the index stands in for: the first reference of the open files that holds
// `token`; 15 when none does.
MgStatus RFindHandleByWalk(uint32_t token, ResFileEntry** entry, ResRefEntry** ref, ResType* type);
// Makes room for the entry of `token` (nonzero), so that the insert that follows can't fail;
// nothing to do while the index is dormant.
MgStatus IndexReserve(uint32_t token);
void IndexInsert(uint32_t token, const RefLocator& where);
void IndexErase(uint32_t token);
bool IndexFind(uint32_t token, RefLocator* where);
int32_t IndexCount();
// Stores the token of a data handle in `ref` and in the index; IndexReserve must have
// succeeded for it first.
void AttachHandle(ResFileEntry* entry, ResType type, ResRefEntry* ref, uint32_t token);
// Both steps in one, for a handle that nothing else knows yet; 2 when the index has no room,
// with nothing changed.
MgStatus AttachNewHandle(ResFileEntry* entry, ResType type, ResRefEntry* ref, uint32_t token);
// Clears the handle word of `ref` and drops it from the index.
void DetachHandle(ResRefEntry* ref);

// The size word of the data at `dataOffset`, read from the file itself, not through a window
// (the write-back reads between its own writes).
MgStatus RReadDataSize(const ResFileEntry* entry, int32_t dataOffset, int32_t* size);
// 4 when `size` bytes of data behind the size word at file position `at` can't all lie in
// the file; the real length is asked only for data larger than a read window.
MgStatus CheckDataInFile(const ResFileEntry* entry, int64_t at, int32_t size);

// Read windows over data sections (datacache.cpp). DataRead gives `count` bytes at file
// position `at` with the statuses of a seek and a read there, serving them from the file's
// window when it holds them; a miss inside the data section refills the window with one read.
// Every write or truncation of a resource file must be preceded by DataCacheInvalidateAll, and
// a closing file's id is dropped with DataCacheDrop.
constexpr int32_t kDataWindowSize = 64 * 1024;
struct DataWindow {
    ResFile fileId;  // 0: slot unused
    Ptr bytes;       // kDataWindowSize bytes, or null
    int64_t start;   // file position of bytes[0]
    int32_t length;  // valid bytes; 0: nothing cached
    uint64_t lastUse;
};
// The window that served the last read, and the clock of uses; a run of loads from one file
// asks it first, inline, since it is one copy per resource.
extern DataWindow* gDataLastServed;
extern uint64_t gDataUseClock;
MgStatus DataReadMiss(const ResFileEntry* entry, int64_t at, int32_t count, void* dst);
// A window holds only bytes of its file's data section, so one that covers the range answers
// for it.
inline MgStatus DataRead(const ResFileEntry* entry, int64_t at, int32_t count, void* dst) {
    DataWindow* w = gDataLastServed;
    if (w && w->fileId == entry->fileId && entry->fileId != 0 && at >= w->start &&
        at + count <= w->start + w->length) {
        w->lastUse = ++gDataUseClock;
        memcpy(dst, w->bytes + (at - w->start), static_cast<size_t>(count));
        return MgNoError;
    }
    return DataReadMiss(entry, at, count, dst);
}
void DataCacheInvalidateAll();
void DataCacheDrop(ResFile id);

// The type entry that holds `ref`, or null.
ResTypeEntry* TypeOfRef(Ptr map, const ResRefEntry* ref);

}  // namespace rsrc
