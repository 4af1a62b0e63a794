// Resource files in memory: a map with no byte file behind it, and the flattening of any open
// file into one block with the exact layout of a file on disk.
//
// A memory file's id is its FileRef, 0, so its slot looks free: RLookupFile(0) finds it only
// while it is the first slot with id 0, the next open may take the slot over (its map and
// data are then lost to everyone), and RFindHandle never answers for a file of id 0. No
// numbering of its own is added. A dirty one can't be closed, as the write-back's file calls
// refuse FileRef 0 with 1; clearing its dirty bit lets RCloseFile dispose of it.
//
// The image is what a write-back without holes would write: data in reference order, pads
// zero, and, as on disk, the unused word, the file id and every handle word zero in the
// image's map while the map in memory keeps its values. Afterwards the map describes the
// image (changed bits cleared, offsets and the header's four fields set, dirty bit as it was).
// A map without resources has no type list to read: its image is the 32-byte header of an
// empty file, and the map is left alone.
#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\memfile.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

int32_t PaddedBytes(int32_t size) {
    return ((size + 3) & ~3) + 4;
}

// Calls `visit(ref)` for every reference, types in list order and ids in list order, until it
// answers a nonzero status.
template <typename Visit>
MgStatus EachRef(Ptr map, Visit visit) {
    Ptr typeList = TypeListOf(map);
    const int32_t types = TypeCount(typeList);
    for (int32_t i = 0; i < types; ++i) {
        ResTypeEntry* t = TypeAt(typeList, i);
        ResRefEntry* refs = RefsOf(typeList, t);
        for (int32_t r = 0; r <= t->count; ++r)
            if (MgStatus status = visit(&refs[r])) return status;
    }
    return MgNoError;
}

// A map without resources: the header of an empty file, with the map's type and creator.
MgStatus EmptyImage(Ptr map, Handle* image) {
    Handle h = MemNewHandle(kHeaderSize);
    if (!h) return MgNoMemory;
    ResFileHeader header = *HeaderOf(map);
    RInitHeader(&header, header.creator, header.fileType);
    RSwapHeader(&header);
    BlockMove(&header, *h, kHeaderSize);
    *image = h;
    return MgNoError;
}

}  // namespace

extern "C" {

MgStatus RCreateMemFile(ResFile* id, ResType creator, ResType type) {
    *id = 0;
    Handle h = MemNewHandleClear(kMapHeaderSize);
    if (!h) return MgNoMemory;
    RInitHeader(HeaderOf(*h), creator, type);
    Word(*h, kMapTypeListOffset) = kMapHeaderSize;
    Word(*h, kMapNameListOffset) = 0;
    MgStatus status = RRegisterFile(id, 0, h, *h);
    Word(*h, kMapFileId) = *id;
    if (status) MemDisposeHandle(h);
    return status;
}

MgStatus RGetMemFileHandle(ResFile id, Handle* image) {
    *image = nullptr;
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    if (!entry->map) return MgBadArgument;
    Ptr map = entry->map;
    if (MapEmpty(map)) return EmptyImage(map, image);

    // First pass: every resource gets its place in the image. Offsets already given stay
    // changed when a later resource isn't loaded.
    int64_t running = 0;
    MgStatus status = EachRef(map, [&](ResRefEntry* ref) -> MgStatus {
        Handle h = DataHandle(ref);
        if (!h) return MgBadArgument;
        const int64_t next = running + PaddedBytes(DataSize(h));
        if (next > INT32_MAX - kHeaderSize) return MgNoMemory;
        ref->attrs &= ~RAttrChanged;
        ref->dataOffset = static_cast<int32_t>(running);
        running = next;
        return MgNoError;
    });
    if (status) return status;

    const int32_t mapSize = MemHandleSize(entry->mapHandle);
    ResFileHeader* header = HeaderOf(map);
    header->dataOffset = kHeaderSize;
    header->dataSize = static_cast<int32_t>(running);
    header->mapOffset = kHeaderSize + header->dataSize;
    header->mapSize = mapSize;
    const int64_t total = int64_t{header->mapOffset} + mapSize;
    if (total > INT32_MAX) return MgNoMemory;
    Handle h = MemNewHandle(static_cast<int32_t>(total));
    if (!h) return MgNoMemory;

    // Second pass: size word, data and a cleared pad for each.
    EachRef(map, [&](ResRefEntry* ref) -> MgStatus {
        Handle data = DataHandle(ref);
        const int32_t size = DataSize(data);
        Ptr at = *h + kHeaderSize + ref->dataOffset;
        int32_t word = size;
        FlipBig32(&word);
        memcpy(at, &word, 4);
        BlockMove(*data, at + 4, size);
        BlockClear(at + 4 + size, PaddedBytes(size) - 4 - size);
        return MgNoError;
    });

    const int32_t mapOffset = header->mapOffset;
    RSwapMap(map, 0, nullptr);
    BlockMove(map, *h, kHeaderSize);
    BlockMove(map, *h + mapOffset, mapSize);
    RSwapMap(map, 1, nullptr);
    // The run-time words go out as zero, as in a file written to disk.
    Ptr imageMap = *h + mapOffset;
    memset(imageMap + kMapUnused, 0, 4);
    memset(imageMap + kMapFileId, 0, 4);
    EachRef(map, [&](ResRefEntry* ref) -> MgStatus {
        memset(imageMap + (reinterpret_cast<Ptr>(&ref->handle) - map), 0, 4);
        return MgNoError;
    });
    *image = h;
    return MgNoError;
}

}  // extern "C"
