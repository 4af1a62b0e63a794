// The one place where a resource file's contents are rewritten: the write-back pass. Where a
// new file can be made beside the old one, it compacts the data section, writes changed
// resources from their handles, then the map behind the data, the file's length, and the
// header last, into the new file, which then takes the old one's place. Where none can be made,
// it appends the changed data and the map behind the old file's end and then points the header
// at them (see RWriteBack).
//
// Unchanged resources that already stand packed at the front keep their offsets and cost one
// size-word read each; the rest move down in offset order, and changed ones go behind all
// unchanged data.
#include <algorithm>

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
constexpr int32_t kCopyChunk = 1 << 20;

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

// Writes `size` bytes of data from position `from` of `in` behind a size word at `at` of
// `out`, a piece at a time, with the pad zero: the bytes RWriteData gives, for data too large to
// be held whole. `out` may be `in`, with `at` not behind `from`: every piece is read before
// anything is written over it.
MgStatus MoveInPieces(FileRef in, int32_t from, FileRef out, int32_t at, int32_t size,
                      int32_t* written) {
    *written = (size + 7) & ~3;
    Ptr buffer = MemNewPtr(kCopyChunk);
    if (!buffer) return MgNoMemory;
    int32_t word = size;
    FlipBig32(&word);
    MgStatus status = FMSeek(out, at, FMSeekStart);
    if (!status) status = FMWriteBytes(out, 4, nullptr, &word);
    for (int32_t done = 0; !status && done < size;) {
        const int32_t n = size - done < kCopyChunk ? size - done : kCopyChunk;
        if (!(status = FMSeek(in, from + done, FMSeekStart)) &&
            !(status = FMRead(in, n, nullptr, buffer)) &&
            !(status = FMSeek(out, at + 4 + done, FMSeekStart)))
            status = FMWriteBytes(out, n, nullptr, buffer);
        done += n;
    }
    const uint8_t zeros[3] = {};
    if (!status && (size & 3)) status = FMWriteBytes(out, 4 - (size & 3), nullptr, zeros);
    MemDisposePtr(buffer);
    return status;
}

// Writes one resource at file position `at` of `out`, from its handle or, when it isn't
// loaded, through a temporary handle read from the file as it stands, which goes again
// afterwards; data larger than a copy piece goes over in pieces instead, so that a pass holds
// no more of it in memory than a piece. The reference itself isn't changed here.
MgStatus RMoveData(ResFileEntry* entry, FileRef out, ResRefEntry* ref, int32_t at,
                   int32_t* written) {
    Handle h = DataHandle(ref);
    Handle temporary = nullptr;
    int32_t size = 0;
    MgStatus status = MgNoError;
    if (h) {
        size = DataSize(h);
    } else if (!(status = RReadDataSize(entry, ref->dataOffset, &size))) {
        const int64_t from = int64_t{HeaderOf(entry->map)->dataOffset} + ref->dataOffset;
        if (size < 0) return MgEndOfFile;
        if ((status = CheckDataInFile(entry, from, size))) return status;
        if (size > kCopyChunk)
            return MoveInPieces(entry->fileRef, static_cast<int32_t>(from + 4), out, at, size,
                                written);
        temporary = h = MemNewHandle(size);
        if (!h) return MgNoMemory;
        status = FMRead(entry->fileRef, size, nullptr, *h);
    }
    if (!status) status = RWriteData(out, h, size, at, written);
    if (temporary) MemDisposeHandle(temporary);
    return status;
}

// Copies `count` bytes from position `from` of the open file to position `to` of `out`.
MgStatus CopyBytes(FileRef in, int32_t from, FileRef out, int32_t to, int32_t count) {
    const int32_t chunk = count < kCopyChunk ? count : kCopyChunk;
    Ptr buffer = MemNewPtr(chunk);
    if (!buffer) return MgNoMemory;
    MgStatus status = FMSeek(out, to, FMSeekStart);
    for (int32_t done = 0; !status && done < count;) {
        const int32_t n = count - done < chunk ? count - done : chunk;
        if (!(status = FMSeek(in, from + done, FMSeekStart)) &&
            !(status = FMRead(in, n, nullptr, buffer)))
            status = FMWriteBytes(out, n, nullptr, buffer);
        done += n;
    }
    MemDisposePtr(buffer);
    return status;
}

// Where a header puts the data section and the map.
struct Layout {
    int32_t dataOffset, dataSize, mapOffset;
};

// Writes the map at the layout's map offset and the header last. In place, the file has its
// length already, and what the header is to point at must be on the disk before it does; a new
// file is cut to its length instead. `headerTried` tells whether the header's write was begun.
// The run-time words go to disk as zero: the unused word, the file id and the handle words.
MgStatus RWriteMap(ResFileEntry* entry, FileRef out, const Layout& layout, bool inPlace,
                   ResRefEntry** refs, uint32_t* tokens, int32_t count, bool* headerTried) {
    Ptr map = entry->map;
    ResFileHeader* header = HeaderOf(map);
    header->dataOffset = layout.dataOffset;
    header->dataSize = layout.dataSize;
    header->mapOffset = layout.mapOffset;
    header->mapSize = MemHandleSize(entry->mapHandle);
    const int32_t mapSize = header->mapSize;
    // The file's end, too, is a 32-bit position.
    if (int64_t{layout.mapOffset} + mapSize > INT32_MAX) return MgEndOfFile;
    if (MgStatus status = FMSeek(out, layout.mapOffset, FMSeekStart)) return status;

    RSwapMap(map, 0, nullptr);
    const int32_t fileId = Word(map, kMapFileId);
    Word(map, kMapUnused) = 0;
    Word(map, kMapFileId) = 0;
    for (int32_t i = 0; i < count; ++i) {
        tokens[i] = refs[i]->handle;
        refs[i]->handle = 0;
    }
    MgStatus status = FMWriteBytes(out, mapSize, nullptr, map);
    if (!status) status = inPlace ? FMFlush(out) : FSetFileEnd(out, layout.mapOffset + mapSize);
    if (!status) status = FMSeek(out, 0, FMSeekStart);
    if (!status) {
        *headerTried = true;
        status = FMWriteBytes(out, kHeaderSize, nullptr, map);
    }
    for (int32_t i = 0; i < count; ++i) refs[i]->handle = tokens[i];
    Word(map, kMapFileId) = fileId;
    RSwapMap(map, 1, nullptr);
    return status;
}

// At most what the new file takes: the old file, the changed data and the map.
int32_t NewFileBound(const ResFileEntry* entry, ResRefEntry** refs, int32_t clean, int32_t total) {
    int32_t length = 0;
    if (FGetEOF(entry->fileRef, &length)) return 0;
    int64_t bound = int64_t{length} + MemHandleSize(entry->mapHandle);
    for (int32_t i = clean; i < total; ++i)
        if (Handle h = DataHandle(refs[i])) bound += int64_t{DataSize(h)} + 8;
    return bound > INT32_MAX ? INT32_MAX : static_cast<int32_t>(bound);
}

// One pass over the references of a file: unchanged ones first (the first `clean`), each with
// the offset it is to have and the offset and attributes to go back to. The map in memory takes
// the new offsets only for writing the map, and keeps them only once the file holds them.
struct Pass {
    ResFileEntry* entry;
    ResRefEntry** refs;
    uint32_t* tokens;
    int32_t* newOffsets;
    int32_t* oldOffsets;
    int32_t* oldAttrs;
    int32_t total, clean;
    ResFileHeader oldHeader;

    MgStatus WriteMap(FileRef out, const Layout& layout, bool inPlace, bool* headerTried) {
        for (int32_t r = 0; r < total; ++r) {
            refs[r]->dataOffset = newOffsets[r];
            refs[r]->attrs &= ~RAttrChanged;
        }
        return RWriteMap(entry, out, layout, inPlace, refs, tokens, total, headerTried);
    }
    void Restore() {
        *HeaderOf(entry->map) = oldHeader;
        for (int32_t r = 0; r < total; ++r) {
            refs[r]->dataOffset = oldOffsets[r];
            refs[r]->attrs = oldAttrs[r];
        }
    }
    // Writes refs[i] at data position `pos` (file position `base` + `pos`) and moves `pos`
    // behind it; data claimed beyond 32-bit positions can't be written.
    MgStatus Place(FileRef out, int32_t i, int64_t base, int64_t* pos) {
        int32_t written = 0;
        if (base + *pos > INT32_MAX || *pos > INT32_MAX) return MgEndOfFile;
        const int32_t at = static_cast<int32_t>(base + *pos);
        if (MgStatus status = RMoveData(entry, out, refs[i], at, &written)) return status;
        newOffsets[i] = static_cast<int32_t>(*pos);
        *pos += written;
        return *pos > INT32_MAX ? MgEndOfFile : MgNoError;
    }

    MgStatus IntoNewFile(FileRef out);
    MgStatus InPlace();
};

// The compacted file goes into `out`, which then takes the old file's place in one step.
MgStatus Pass::IntoNewFile(FileRef out) {
    // Room for the header, which goes in last; seeks never lengthen a file.
    MgStatus status = FSetFileEnd(out, kHeaderSize);
    // Resources already packed at the front keep their place and go over in one copy.
    int64_t pos = 0;
    int32_t i = 0;
    for (; !status && i < clean && refs[i]->dataOffset == pos; ++i) {
        int32_t size;
        if ((status = RReadDataSize(entry, static_cast<int32_t>(pos), &size))) break;
        // A size word from the file is held to the data section before it counts.
        const int64_t end = pos + 4 + ((int64_t{size} + 3) & ~int64_t{3});
        if (size < 0 || end > oldHeader.dataSize + int64_t{3}) status = MgEndOfFile;
        newOffsets[i] = static_cast<int32_t>(pos);
        pos = end;
    }
    if (!status && pos > 0)
        status = CopyBytes(entry->fileRef, oldHeader.dataOffset, out, kHeaderSize,
                           static_cast<int32_t>(pos));
    for (; !status && i < total; ++i) {
        // Changed resources come from their handles: the old file has been read for the last
        // time, and the memory of its cache is better spent on the new one.
        if (i == clean) FMReplaceDoneReading(entry->fileRef);
        status = Place(out, i, kHeaderSize, &pos);
    }
    bool headerTried = false;
    if (!status && kHeaderSize + pos > INT32_MAX) status = MgEndOfFile;
    if (!status) {
        const int32_t size = static_cast<int32_t>(pos);
        status = WriteMap(out, Layout{kHeaderSize, size, kHeaderSize + size}, false, &headerTried);
    }
    if (!status) status = FMFlush(out);
    if (!status) status = FMReplaceCommit(&entry->fileRef, out);
    if (status) {
        Restore();
        FMReplaceAbandon(out);
    }
    return status;
}

// Without a second file: the changed data and the new map go behind everything the file
// holds (data that RWriteNow put past the map included), on a word of the data section, which
// grows to reach them; unchanged data stays where it is. Once they are on the disk, the header
// points at them. A kill before that leaves the old header over the old contents, with unused
// bytes behind; a failure cuts the file back to its length, or puts the old header back when
// the new one may have been written.
MgStatus Pass::InPlace() {
    const FileRef file = entry->fileRef;
    int32_t length = 0;
    uint8_t diskHeader[kHeaderSize];
    MgStatus status = FGetEOF(file, &length);
    if (!status) status = FMSeek(file, 0, FMSeekStart);
    if (!status) status = FMRead(file, kHeaderSize, nullptr, diskHeader);
    if (status) return status;
    const int64_t base = oldHeader.dataOffset;
    const int64_t end = std::max<int64_t>(length, base + oldHeader.dataSize);
    int64_t pos = (end - base + 3) & ~int64_t{3};
    // The pad up to the first word reads as zeros.
    if (base + pos > INT32_MAX) status = MgEndOfFile;
    if (!status && base + pos > length)
        status = FSetFileEnd(file, static_cast<int32_t>(base + pos));
    for (int32_t i = 0; i < clean; ++i) newOffsets[i] = refs[i]->dataOffset;
    for (int32_t i = clean; !status && i < total; ++i) status = Place(file, i, base, &pos);
    bool headerTried = false;
    if (!status && base + pos > INT32_MAX) status = MgEndOfFile;
    if (!status) {
        const Layout layout{oldHeader.dataOffset, static_cast<int32_t>(pos),
                            static_cast<int32_t>(base + pos)};
        status = WriteMap(file, layout, true, &headerTried);
    }
    if (!status) status = FMFlush(file);
    if (!status) return MgNoError;
    Restore();
    // Whatever the disk holds at 0 now, the old header written again makes it the old file.
    bool old = !headerTried;
    if (!old && !FMSeek(file, 0, FMSeekStart) &&
        !FMWriteBytes(file, kHeaderSize, nullptr, diskHeader))
        old = !FMFlush(file);
    if (old) FSetFileEnd(file, length);
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

// The pass writes a new file beside the old one and puts it in the old one's place in one
// step; where no new file can be made (its directory isn't writable, or the file's name isn't
// known), it appends to the file and writes the header last. Either way the file on disk is at
// every moment the old one or the new one. The map in memory takes the new offsets only once
// the file holds them; a failed pass leaves file and map as they were, with the dirty bit.
MgStatus RWriteBack(ResFile id, ResFileEntry* entry) {
    (void)id;
    PendingObserve(entry);
    Ptr map = entry->map;
    if (!(Word(map, kMapFileAttrs) & RFileDirty)) return MgNoError;
    DataCacheInvalidateAll();
    // A file that lost all its resources is cut to its header, which still describes the
    // old map; the dirty bit stays.
    if (MapEmpty(map)) return FSetFileEnd(entry->fileRef, kHeaderSize);

    const int32_t total = RTotalResources(entry->mapHandle);
    const int32_t slots = total > 0 ? total : 1;
    // One array: the references in map order, then their handle words, new offsets and the
    // offsets and attributes to go back to.
    constexpr int32_t kPerRef = int32_t{sizeof(ResRefEntry*)} + 4 * 4;
    Ptr block = MemNewPtr(slots * kPerRef);
    if (!block) return MgNoMemory;
    ResRefEntry** refs = reinterpret_cast<ResRefEntry**>(block);
    uint32_t* tokens = reinterpret_cast<uint32_t*>(block + slots * sizeof(ResRefEntry*));
    int32_t* newOffsets = reinterpret_cast<int32_t*>(tokens + slots);
    int32_t* oldOffsets = newOffsets + slots;
    int32_t* oldAttrs = oldOffsets + slots;
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
    for (int32_t r = 0; r < total; ++r) {
        oldOffsets[r] = refs[r]->dataOffset;
        oldAttrs[r] = refs[r]->attrs;
    }
    Pass pass{entry, refs, tokens, newOffsets, oldOffsets, oldAttrs, total, clean, *HeaderOf(map)};
    FileRef out = 0;
    const MgStatus status =
        FMReplaceBegin(entry->fileRef, NewFileBound(entry, refs, clean, total), &out) == MgNoError
            ? pass.IntoNewFile(out)
            : pass.InPlace();
    MemDisposePtr(block);
    if (status) return status;
    DataCacheInvalidateAll();
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
    const int32_t at = HeaderOf(entry->map)->dataSize;
    // Both words come from the file: their sum must still be a 32-bit file position.
    const int64_t target = int64_t{HeaderOf(entry->map)->dataOffset} + at;
    if (target < 0 || target > INT32_MAX) return MgEndOfFile;
    if (MgStatus status =
            RMoveData(entry, entry->fileRef, ref, static_cast<int32_t>(target), &written))
        return status;
    if (int64_t{at} + written > INT32_MAX) return MgEndOfFile;
    ref->dataOffset = at;
    ref->attrs &= ~RAttrChanged;
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
