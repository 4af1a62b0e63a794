// The one place where a resource file's contents are rewritten: the write-back pass, which
// compacts the data section in place, writes changed resources from their handles, then the
// map behind the data, the file's length, and the header last.
//
// Unchanged resources that already stand packed at the front keep their bytes untouched and
// cost one size-word read each; the rest move down (offsets only go down, so nothing unread
// is overwritten), and changed ones go behind all unchanged data.
#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/sort.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\writeback.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

constexpr int32_t kWriteBuffer = 4096;
constexpr int32_t kFirstPiece = kWriteBuffer - 4;
constexpr int32_t kMinPreAlloc = 10240;

bool Changed(const ResRefEntry* r) {
    return (r->attrs & RAttrChanged) != 0;
}

// Unchanged references to the front, changed ones to the back; not stable. Returns the
// number of unchanged ones.
int32_t RPartitionChanged(ResRefEntry** refs, int32_t count) {
    if (count <= 0) return 0;
    int32_t left = 0, right = count - 1;
    while (left < right) {
        while (left < right && !Changed(refs[left])) ++left;
        while (right > left && Changed(refs[right])) --right;
        if (left < right) {
            ResRefEntry* t = refs[left];
            refs[left++] = refs[right];
            refs[right--] = t;
        }
    }
    return Changed(refs[left]) ? left : left + 1;
}

int32_t CompareOffsets(const void* a, const void* b) {
    const int32_t x = (*static_cast<ResRefEntry* const*>(a))->dataOffset;
    const int32_t y = (*static_cast<ResRefEntry* const*>(b))->dataOffset;
    return static_cast<int32_t>(static_cast<uint32_t>(x) - static_cast<uint32_t>(y));
}

void RSortByOffset(ResRefEntry** refs, int32_t count) {
    SortArray(refs, count, static_cast<int32_t>(sizeof(ResRefEntry*)), CompareOffsets);
}

// Size word and the first 4092 bytes go in one write, which makes most resources one call.
// The rest goes straight from the block; its last partial word is completed with zeros in
// the buffer rather than read from beyond the block.
MgStatus RWriteData(FileRef fileRef, Handle h, int32_t size, int32_t position, int32_t* written) {
    if (MgStatus status = FMSeek(fileRef, position, FMSeekStart)) return status;
    *written = (size + 7) & ~3;
    uint8_t buffer[kWriteBuffer];
    int32_t word = size;
    FlipBig32(&word);
    memcpy(buffer, &word, 4);
    const int32_t n = size < kFirstPiece ? size : kFirstPiece;
    memcpy(buffer + 4, *h, static_cast<size_t>(n));
    const int32_t padded = (n + 3) & ~3;
    memset(buffer + 4 + n, 0, static_cast<size_t>(padded - n));
    if (MgStatus status = FMWriteBytes(fileRef, padded + 4, nullptr, buffer)) return status;
    if (*written <= kWriteBuffer) return MgNoError;
    const int32_t rest = size - n;
    const int32_t whole = rest & ~3;
    if (whole > 0) {
        if (MgStatus status = FMWriteBytes(fileRef, whole, nullptr, *h + n)) return status;
    }
    if (const int32_t tail = rest & 3) {
        memset(buffer, 0, 4);
        memcpy(buffer, *h + n + whole, static_cast<size_t>(tail));
        if (MgStatus status = FMWriteBytes(fileRef, 4, nullptr, buffer)) return status;
    }
    return MgNoError;
}

// Writes one resource at `newOffset` of the data section, from its handle or, when it isn't
// loaded, through a temporary handle that goes again afterwards.
MgStatus RMoveData(ResFileEntry* entry, ResRefEntry* ref, int32_t newOffset, int32_t* written) {
    Handle h = DataHandle(ref);
    Handle temporary = nullptr;
    int32_t size = 0;
    MgStatus status = MgNoError;
    if (h) {
        size = DataSize(h);
    } else if (!(status = RReadDataSize(entry, ref->dataOffset, &size))) {
        temporary = h = MemNewHandle(size);
        if (!h) return MgNoMemory;
        status = FMRead(entry->fileRef, size, nullptr, *h);
    }
    if (!status)
        status = RWriteData(entry->fileRef, h, size, HeaderOf(entry->map)->dataOffset + newOffset,
                            written);
    if (!status) {
        ref->dataOffset = newOffset;
        ref->attrs &= ~RAttrChanged;
    }
    if (temporary) MemDisposeHandle(temporary);
    return status;
}

// The run-time words go to disk as zero: the unused word, the file id and the handle words.
MgStatus RWriteMap(ResFileEntry* entry, int32_t dataSize, ResRefEntry** refs, uint32_t* tokens,
                   int32_t count) {
    Ptr map = entry->map;
    ResFileHeader* header = HeaderOf(map);
    header->dataOffset = kHeaderSize;
    header->dataSize = dataSize;
    header->mapOffset = kHeaderSize + dataSize;
    header->mapSize = MemHandleSize(entry->mapHandle);
    const int32_t mapOffset = header->mapOffset;
    const int32_t mapSize = header->mapSize;
    if (MgStatus status = FMSeek(entry->fileRef, mapOffset, FMSeekStart)) return status;

    RSwapMap(map, 0, nullptr);
    const int32_t fileId = Word(map, kMapFileId);
    Word(map, kMapUnused) = 0;
    Word(map, kMapFileId) = 0;
    for (int32_t i = 0; i < count; ++i) {
        tokens[i] = refs[i]->handle;
        refs[i]->handle = 0;
    }
    MgStatus status = FMWriteBytes(entry->fileRef, mapSize, nullptr, map);
    if (!status) status = FSetFileEnd(entry->fileRef, mapOffset + mapSize);
    if (!status) status = FMSeek(entry->fileRef, 0, FMSeekStart);
    if (!status) status = FMWriteBytes(entry->fileRef, kHeaderSize, nullptr, map);
    for (int32_t i = 0; i < count; ++i) refs[i]->handle = tokens[i];
    Word(map, kMapFileId) = fileId;
    RSwapMap(map, 1, nullptr);
    return status;
}

}  // namespace

extern "C" {

int32_t RTotalResources(Handle mapHandle) {
    Ptr map = *mapHandle;
    if (MapEmpty(map)) return 0;
    Ptr typeList = TypeListOf(map);
    int32_t total = 0;
    for (int32_t i = 0; i < TypeCount(typeList); ++i) total += TypeAt(typeList, i)->count + 1;
    return total;
}

MgStatus RWriteBack(ResFile id, ResFileEntry* entry) {
    (void)id;
    Ptr map = entry->map;
    if (!(Word(map, kMapFileAttrs) & RFileDirty)) return MgNoError;
    DataCacheInvalidateAll();
    // A file that lost all its resources is cut to its header, which still describes the
    // old map; the dirty bit stays.
    if (MapEmpty(map)) return FSetFileEnd(entry->fileRef, kHeaderSize);

    const int32_t total = RTotalResources(entry->mapHandle);
    const int32_t slots = total > 0 ? total : 1;
    // One array: the references in map order, then room for their handle words.
    Ptr block = MemNewPtr(slots * static_cast<int32_t>(sizeof(ResRefEntry*) + sizeof(uint32_t)));
    if (!block) return MgNoMemory;
    ResRefEntry** refs = reinterpret_cast<ResRefEntry**>(block);
    uint32_t* tokens = reinterpret_cast<uint32_t*>(block + slots * sizeof(ResRefEntry*));
    int32_t filled = 0;
    Ptr typeList = TypeListOf(map);
    for (int32_t i = 0; i < TypeCount(typeList); ++i) {
        ResTypeEntry* t = TypeAt(typeList, i);
        ResRefEntry* list = RefsOf(typeList, t);
        for (int32_t r = 0; r <= t->count && filled < total; ++r) refs[filled++] = &list[r];
    }
    MG_CHECK(filled == total);

    const int32_t clean = RPartitionChanged(refs, total);
    RSortByOffset(refs, clean);
    MgStatus status = MgNoError;
    int32_t pos = 0;
    int32_t i = 0;
    for (; i < clean && refs[i]->dataOffset == pos; ++i) {
        int32_t size;
        if ((status = RReadDataSize(entry, pos, &size))) break;
        pos += ((size + 3) & ~3) + 4;
    }
    for (; !status && i < total; ++i) {
        int32_t written = 0;
        if (!(status = RMoveData(entry, refs[i], pos, &written))) pos += written;
    }
    if (!status) {
        status = RWriteMap(entry, pos, refs, tokens, total);
        FMFlush(entry->fileRef);
    }
    MemDisposePtr(block);
    if (status) return status;
    Word(entry->map, kMapFileAttrs) &= ~RFileDirty;
    return MgNoError;
}

MgStatus RUpdateFile(ResFile id) {
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    return RWriteBack(id, entry);
}

// Lands where the map on disk stands, so the file is invalid until the next write-back; the
// resource then counts as unchanged and is compacted like the others.
MgStatus RWriteNow(Handle h) {
    ResFileEntry* entry;
    ResRefEntry* ref;
    if (MgStatus status = RFindHandle(h, &entry, &ref, nullptr)) return status;
    if (!Changed(ref)) return MgNoError;
    DataCacheInvalidateAll();
    int32_t written = 0;
    if (MgStatus status = RMoveData(entry, ref, HeaderOf(entry->map)->dataSize, &written))
        return status;
    HeaderOf(entry->map)->dataSize += written;
    return MgNoError;
}

// Claims disk space ahead of a long run of edits. The bytes lie behind the map and belong to
// nothing; they are zeros, so that no stale memory reaches the disk.
MgStatus RPreAllocFile(ResFile id, int32_t size) {
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    if (ReadOnly(entry->map)) {
        DPrintf("Tried to call RPreAllocFile on a readonly file");
        return MgNoPermission;
    }
    DataCacheInvalidateAll();
    const int32_t chunk = size > kMinPreAlloc ? size : kMinPreAlloc;
    Ptr buffer = MemNewPtrClear(chunk);
    if (!buffer) return MgNoMemory;
    int32_t oldEnd = 0;
    MgStatus status = FMSeek(entry->fileRef, 0, FMSeekEnd);
    if (!status) status = FMTell(entry->fileRef, &oldEnd);
    if (!status) {
        for (int32_t left = size; left > 0 && !status;) {
            const int32_t n = left < chunk ? left : chunk;
            status = FMWriteBytes(entry->fileRef, n, nullptr, buffer);
            left -= n;
        }
        if (!status) status = FMFlushFile(entry->fileRef);
        if (status) FSetFileEnd(entry->fileRef, oldEnd);
    }
    MemDisposePtr(buffer);
    return status;
}

}  // extern "C"
