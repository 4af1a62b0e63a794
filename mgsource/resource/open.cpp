// Bringing resource files in and out of use: create, open, close, and the header of a closed
// file.
#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/sort.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\open.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

const uint8_t kLineEnd[2] = {0x0D, 0x0A};

int32_t CompareIds(const void* a, const void* b) {
    const int32_t x = static_cast<const ResRefEntry*>(a)->id;
    const int32_t y = static_cast<const ResRefEntry*>(b)->id;
    return x < y ? -1 : (x > y ? 1 : 0);
}

// An embedded file's offsets count from its header. One that no 32-bit position can hold lies
// beyond any file, and gives 4 as a read there would.
bool AddBase(int32_t* offset, int32_t base) {
    const int64_t moved = int64_t{*offset} + base;
    if (moved != static_cast<int32_t>(moved)) return false;
    *offset = static_cast<int32_t>(moved);
    return true;
}

// A failed open gives back what it took: the byte file and the map's block, which a file
// from outside would otherwise leave behind at every try.
MgStatus FailOpen(FileRef fileRef, MgStatus status, Handle mapHandle = nullptr) {
    if (fileRef) FMClose(fileRef);
    if (mapHandle) MemDisposeHandle(mapHandle);
    return status;
}

}  // namespace

namespace rsrc {

MgStatus ReadHeader(FileRef ref, ResFileHeader* header) {
    int32_t actual = 0;
    MgStatus status = FMRead(ref, kHeaderSize, &actual, header);
    if (status) return status == MgEndOfFile ? MgBadResourceFile : status;
    RSwapHeader(header);
    return actual == kHeaderSize && HeaderPasses(header) ? MgNoError : MgBadResourceFile;
}

// A file that doesn't start with a header may carry a resource file at its end: its last
// four bytes, in host order, give where that file's header stands. One try only, and none
// for a file too short to hold a header.
MgStatus ReadHeaderWithTrailer(FileRef ref, bool tryTrailer, ResFileHeader* header, int32_t* base) {
    *base = 0;
    int32_t actual = 0;
    MgStatus status = FMRead(ref, kHeaderSize, &actual, header);
    if (status) return status == MgEndOfFile ? MgBadResourceFile : status;
    RSwapHeader(header);
    if (HeaderPasses(header)) return MgNoError;
    if (!tryTrailer) return MgBadResourceFile;
    if ((status = FMSeek(ref, -4, FMSeekEnd))) return status;
    int32_t at = 0;
    if ((status = FMRead(ref, 4, nullptr, &at))) return status;
    if (FMSeek(ref, at, FMSeekStart)) return MgBadResourceFile;
    *base = at;
    return ReadHeader(ref, header);
}

}  // namespace rsrc

extern "C" {

MgStatus RCreateCorrectFile(Path path, int32_t replace, ResType creator, ResType type,
                            int32_t permissions) {
    // A replaced file may be open as a resource file too; none of its bytes may be served.
    DataCacheInvalidateAll();
    FileRef ref = 0;
    MgStatus status =
        FMMakeFile(&ref, path, permissions, FMModeReadWrite, FMShareAll, 0, replace, creator, type);
    if (!status) {
        ResFileHeader header;
        RInitHeader(&header, creator, type);
        RSwapHeader(&header);
        status = FMWriteBytes(ref, kHeaderSize, nullptr, &header);
    }
    // A null reference refuses the close with 1, which must not hide the create's error.
    MgStatus closed = FMClose(ref);
    return status ? status : closed;
}

MgStatus ROpenFile(Path path, int32_t mode, ResFile* id, ResType* type, ResType* creator) {
    *id = 0;
    if (mode != FMModeReadWrite && mode != FMModeRead) return MgBadArgument;
    FileRef ref = 0;
    if (MgStatus status = FMOpen(&ref, path, mode, FMShareAll)) return status;
    return ROpenFileRef(ref, mode, id, type, creator, 0);
}

MgStatus ROpenFileRef(FileRef fileRef, int32_t mode, ResFile* id, ResType* type, ResType* creator,
                      int32_t memoryForm) {
    *id = 0;
    if (fileRef) {
        if (MgStatus status = FMSeek(fileRef, 0, FMSeekStart)) return status;
    }
    if (memoryForm) return MgNotSupported;

    ResFileHeader header;
    int32_t base = 0;
    MgStatus status = ReadHeaderWithTrailer(fileRef, mode == FMModeRead, &header, &base);
    if (status) return FailOpen(fileRef, status);
    if (!AddBase(&header.mapOffset, base) || !AddBase(&header.dataOffset, base))
        return FailOpen(fileRef, MgEndOfFile);

    Handle mapHandle;
    if (header.mapSize != 0) {
        // A map that can't lie inside the file would read short; say so before allocating.
        int32_t fileSize = 0;
        if ((status = FGetEOF(fileRef, &fileSize))) return FailOpen(fileRef, status);
        if (header.mapSize > 0 && int64_t{header.mapOffset} + header.mapSize > fileSize)
            return FailOpen(fileRef, MgEndOfFile);
        if (!(mapHandle = MemNewHandle(header.mapSize))) return FailOpen(fileRef, MgNoMemory);
        if ((status = FMSeek(fileRef, header.mapOffset, FMSeekStart)) ||
            (status = FMRead(fileRef, header.mapSize, nullptr, *mapHandle)) ||
            (status = ValidateFileMap(*mapHandle, header.mapSize)) ||
            (status = RSwapMap(*mapHandle, 1, &header)))
            return FailOpen(fileRef, status, mapHandle);
        // Edits keep the size word equal to the block; start from that truth.
        HeaderOf(*mapHandle)->mapSize = header.mapSize;
    } else {
        if (!(mapHandle = MemNewHandleClear(kMapHeaderSize))) return FailOpen(fileRef, MgNoMemory);
        BlockMove(&header, *mapHandle, kHeaderSize);
        Word(*mapHandle, kMapTypeListOffset) = kMapHeaderSize;
        Word(*mapHandle, kMapNameListOffset) = 0;
    }
    Ptr map = *mapHandle;
    if (!AddBase(&HeaderOf(map)->mapOffset, base) || !AddBase(&HeaderOf(map)->dataOffset, base))
        return FailOpen(fileRef, MgEndOfFile, mapHandle);

    if ((status = RRegisterFile(id, fileRef, mapHandle, map)))
        return FailOpen(fileRef, status, mapHandle);
    DataCacheDrop(*id);
    Word(map, kMapUnused) = 0;
    Word(map, kMapFileId) = *id;
    Word(map, kMapFileAttrs) = mode == FMModeRead ? RFileReadOnly : 0;
    if (type) *type = header.fileType;
    if (creator) *creator = header.creator;
    RClearHandles(map);
    if (header.version < 3) memcpy(HeaderOf(map)->lineEnd, kLineEnd, 2);
    if (header.version < 4) RSortRefLists(map);
    HeaderOf(map)->version = 3;
    return MgNoError;
}

void RSortRefLists(Ptr map) {
    if (HeaderOf(map)->mapSize <= kEmptyMapSize) return;
    Ptr typeList = TypeListOf(map);
    const int32_t types = TypeCount(typeList);
    for (int32_t i = 0; i < types; ++i) {
        ResTypeEntry* t = TypeAt(typeList, i);
        ResRefEntry* refs = RefsOf(typeList, t);
        const int32_t n = t->count + 1;
        bool sorted = true;
        for (int32_t r = 1; r < n && sorted; ++r) sorted = refs[r - 1].id <= refs[r].id;
        if (!sorted) SortArray(refs, n, kRefEntrySize, CompareIds);
    }
}

// The handle word and the changed bit are run-time state: whatever a file holds there is
// dropped, so that no release or detach meets a change that no handle carries.
void RClearHandles(Ptr map) {
    if (HeaderOf(map)->mapSize <= kEmptyMapSize) return;
    Ptr typeList = TypeListOf(map);
    const int32_t types = TypeCount(typeList);
    for (int32_t i = 0; i < types; ++i) {
        ResTypeEntry* t = TypeAt(typeList, i);
        ResRefEntry* refs = RefsOf(typeList, t);
        for (int32_t r = 0; r <= t->count; ++r) {
            refs[r].handle = 0;
            refs[r].attrs &= ~RAttrChanged;
        }
    }
}

MgStatus RCloseFile(ResFile id) {
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    if (MgStatus status = RWriteBack(id, entry)) return status;
    DataCacheDrop(id);
    Ptr map = entry->map;
    if (!MapEmpty(map)) {
        Ptr typeList = TypeListOf(map);
        const int32_t types = TypeCount(typeList);
        for (int32_t i = 0; i < types; ++i) {
            ResTypeEntry* t = TypeAt(typeList, i);
            ResRefEntry* refs = RefsOf(typeList, t);
            for (int32_t r = 0; r <= t->count; ++r) {
                Handle h = DataHandle(&refs[r]);
                DetachHandle(&refs[r]);
                if (h) DisposeData(h);
            }
        }
    }
    if (entry->mapHandle) MemDisposeHandle(entry->mapHandle);
    entry->mapHandle = nullptr;
    entry->map = nullptr;
    MgStatus status = entry->fileRef ? FMClose(entry->fileRef) : MgNoError;
    entry->fileId = 0;
    return status;
}

MgStatus RGetFileTypeCreator(Path path, ResType* type, ResType* creator) {
    if (type) *type = 0;
    if (creator) *creator = 0;
    FileRef ref = 0;
    if (MgStatus status = FMOpen(&ref, path, FMModeRead, FMShareAll)) return status;
    ResFileHeader header;
    int32_t base;
    MgStatus status = ReadHeaderWithTrailer(ref, true, &header, &base);
    if (!status) {
        if (type) *type = header.fileType;
        if (creator) *creator = header.creator;
    }
    FMClose(ref);
    return status;
}

MgStatus RSetFileTypeCreator(Path path, ResType type, ResType creator) {
    DataCacheInvalidateAll();
    FileRef ref = 0;
    if (MgStatus status = FMOpen(&ref, path, FMModeReadWrite, FMShareAll)) return status;
    ResFileHeader header, copy;
    MgStatus status = ReadHeader(ref, &header);
    if (!status) status = FMSeek(ref, header.mapOffset, FMSeekStart);
    if (!status) status = FMRead(ref, kHeaderSize, nullptr, &copy);
    if (!status) {
        RSwapHeader(&copy);
        status = RCompareHeaders(&header, &copy);
    }
    if (!status) {
        header.fileType = copy.fileType = type;
        header.creator = copy.creator = creator;
        const int32_t mapOffset = header.mapOffset;
        RSwapHeader(&header);
        RSwapHeader(&copy);
        if (!(status = FMSeek(ref, mapOffset, FMSeekStart)))
            status = FMWriteBytes(ref, kHeaderSize, nullptr, &copy);
        if (!status && !(status = FMSeek(ref, 0, FMSeekStart)))
            status = FMWriteBytes(ref, kHeaderSize, nullptr, &header);
    }
    FMClose(ref);
    return status;
}

}  // extern "C"
