// RCheckBytes: a resource file checked as bytes, in the order a reader meets its parts: the
// header (or the trailer), where the map lies, the map's lists (the very checks of opening),
// the map's copy of the header, then each reference's name and data as a load sees them.
// Faults that make opening fail come first, so the first finding is where opening stops.
#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "mg/rescheck.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\check.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

int32_t BigAt(const uint8_t* p) {
    int32_t v;
    memcpy(&v, p, 4);
    FlipBig32(&v);
    return v;
}

// A reference's data as it lies in the file, or an id with where its entry stands.
struct Span {
    int64_t start, end;
    int64_t entryAt;
};

struct Checker {
    const uint8_t* bytes;
    int64_t length;
    const RCheckSink* sink;
    RCheckSummary* sum;
    // The data section as loads see it: in a file with a map, the map's copy of the header
    // places it, not the header.
    int64_t dataAt = 0;
    int32_t dataSize = 0;

    void Emit(int64_t at, int32_t notice, MgStatus status, const char* format, va_list args) {
        RCheckFinding f{};
        f.offset = at;
        f.notice = notice;
        f.status = status;
        std::vsnprintf(f.text, sizeof f.text, format, args);
        if (sink && sink->finding) sink->finding(sink->context, &f);
    }
    // A fault; `opening` when opening stops at it.
    void Fault(int64_t at, MgStatus status, bool opening, const char* format, ...) {
        ++sum->faults;
        if (opening && !sum->openStatus) sum->openStatus = status;
        va_list args;
        va_start(args, format);
        Emit(at, 0, status, format, args);
        va_end(args);
    }
    void Notice(int64_t at, const char* format, ...) {
        ++sum->notices;
        va_list args;
        va_start(args, format);
        Emit(at, 1, MgNoError, format, args);
        va_end(args);
    }

    bool HeaderAt(int64_t at, ResFileHeader* h) const {
        if (at < 0 || at + kHeaderSize > length) return false;
        memcpy(h, bytes + at, kHeaderSize);
        RSwapHeader(h);
        return HeaderPasses(h);
    }
    // Opening moves an offset by the file's place and stops with 4 at a sum that no 32-bit
    // position holds.
    bool PastAnyPosition(int64_t at, int64_t moved) {
        if (moved <= INT32_MAX) return false;
        Fault(at, MgEndOfFile, true, "offset %lld is past any file position",
              static_cast<long long>(moved));
        return true;
    }
    MgStatus Run();
    void DataSection(int64_t at, int32_t offset, int32_t size) {
        dataAt = sum->base + int64_t{offset};
        dataSize = size;
        if (offset < 0 || dataAt + size > length || size < 0)
            Notice(at, "data section (%d bytes at %d) doesn't lie in the file", size, offset);
    }
    void CheckCopy(int64_t mapAt);
    MgStatus WalkReferences(int64_t mapAt, int32_t mapSize);
    MgStatus LookAtData(Span* spans, int64_t n);
    MgStatus LookAtIds(Span* ids, int64_t n);
};

bool ListFault(void* context, int64_t at, const char* what) {
    auto* c = static_cast<std::pair<Checker*, int64_t>*>(context);
    c->first->Fault(c->second + at, MgIOError, true, "%s", what);
    return true;
}

MgStatus Checker::Run() {
    if (length < kHeaderSize) {
        Fault(0, MgBadResourceFile, true, "file of %lld bytes, shorter than a header",
              static_cast<long long>(length));
        return MgNoError;
    }
    ResFileHeader& h = sum->header;
    if (!HeaderAt(0, &h)) {
        // A resource file at the end of another: the last four bytes, in host order, place it.
        int32_t base;
        memcpy(&base, bytes + length - 4, 4);
        ResFileHeader inner;
        if (HeaderAt(base, &inner)) {
            h = inner;
            sum->base = base;
        } else {
            const bool signature = memcmp(h.signature, "RSRC", 4) != 0;
            Fault(signature       ? 0
                  : h.version < 2 ? 6
                                  : 4,
                  MgBadResourceFile, true, "%s",
                  signature       ? "no resource header: the signature isn't RSRC"
                  : h.version < 2 ? "version below 2"
                                  : "line end isn't 0D 0A");
            return MgNoError;
        }
    }
    const int64_t base = sum->base;
    if (PastAnyPosition(base + 16, base + h.mapOffset) ||
        PastAnyPosition(base + 24, base + h.dataOffset))
        return MgNoError;
    if (h.mapSize == 0) {
        DataSection(base + 24, h.dataOffset, h.dataSize);
        // The map is then the header, already moved, and is moved once more.
        if (PastAnyPosition(base + 16, 2 * base + h.mapOffset) ||
            PastAnyPosition(base + 24, 2 * base + h.dataOffset))
            return MgNoError;
        if (h.dataSize > 0)
            Notice(base + 28, "%d bytes of data and no map: no reference uses them", h.dataSize);
        return MgNoError;
    }
    const int64_t mapAt = base + int64_t{h.mapOffset};
    if (h.mapSize < 0) {
        Fault(base + 20, MgNoMemory, true, "negative map size %d", h.mapSize);
        return MgNoError;
    }
    if (mapAt < 0 || mapAt + h.mapSize > length) {
        Fault(base + 16, MgEndOfFile, true, "map (%d bytes at %d) runs past the end of the file",
              h.mapSize, h.mapOffset);
        return MgNoError;
    }
    std::pair<Checker*, int64_t> context{this, mapAt};
    const MgStatus lists = CheckMapLists(bytes + mapAt, h.mapSize, ListFault, &context);
    if (lists == MgNoMemory) return lists;
    // A map too short for its own header has nothing more to read; the lists said so.
    if (h.mapSize < kMapHeaderSize) return MgNoError;
    CheckCopy(mapAt);
    DataSection(mapAt + 24, BigAt(bytes + mapAt + 24), BigAt(bytes + mapAt + 28));
    const int32_t nameList = BigAt(bytes + mapAt + kMapNameListOffset);
    if (nameList > h.mapSize)
        Fault(mapAt + kMapNameListOffset, MgIOError, true, "name list beyond the end of the map");
    for (const int32_t field : {16, 24})
        PastAnyPosition(mapAt + field, base + BigAt(bytes + mapAt + field));
    return lists ? MgNoError : WalkReferences(mapAt, h.mapSize);
}

void Checker::CheckCopy(int64_t mapAt) {
    ResFileHeader copy;
    memcpy(&copy, bytes + mapAt, kHeaderSize);
    RSwapHeader(&copy);
    const ResFileHeader& h = sum->header;
    const struct {
        bool same;
        int32_t at;
        const char* field;
    } fields[] = {
        {memcmp(copy.signature, h.signature, 4) == 0, 0, "signature"},
        {memcmp(copy.lineEnd, h.lineEnd, 2) == 0, 4, "line end"},
        {copy.version == h.version, 6, "version"},
        {copy.fileType == h.fileType, 8, "file type"},
        {copy.creator == h.creator, 12, "creator"},
    };
    for (const auto& f : fields)
        if (!f.same)
            Fault(mapAt + f.at, MgIOError, true, "the map's copy of the header differs in its %s",
                  f.field);
}

MgStatus Checker::WalkReferences(int64_t mapAt, int32_t mapSize) {
    const uint8_t* map = bytes + mapAt;
    const int64_t typeList = BigAt(map + kMapTypeListOffset);
    const int64_t nameList = BigAt(map + kMapNameListOffset);
    const int32_t types = BigAt(map + typeList) + 1;
    int64_t total = 0;
    for (int32_t i = 0; i < types; ++i) total += int64_t{BigAt(map + typeList + 8 + 12 * i)} + 1;
    sum->resources = int32_t(total);
    Span* spans = nullptr;
    Span* ids = nullptr;
    if (sink && sink->notices && total > 0) {
        // Bounded by the map's own size, as a reference takes 20 bytes of it.
        if (total * int64_t{sizeof(Span)} > INT32_MAX) return MgNoMemory;
        spans = reinterpret_cast<Span*>(MemNewPtr(int32_t(total * int64_t{sizeof(Span)})));
        ids = reinterpret_cast<Span*>(MemNewPtr(int32_t(total * int64_t{sizeof(Span)})));
        if (!spans || !ids) {
            if (spans) MemDisposePtr(reinterpret_cast<Ptr>(spans));
            if (ids) MemDisposePtr(reinterpret_cast<Ptr>(ids));
            return MgNoMemory;
        }
    }
    int64_t used = 0, n = 0;
    for (int32_t i = 0; i < types; ++i) {
        const uint8_t* t = map + typeList + 4 + 12 * i;
        const int32_t count = BigAt(t + 4) + 1;
        const int64_t list = mapAt + typeList + BigAt(t + 8);
        for (int32_t r = 0; r < count; ++r) {
            const int64_t entryAt = list + int64_t{r} * kRefEntrySize;
            const uint8_t* e = bytes + entryAt;
            RCheckedRef res{};
            memcpy(&res.type, t, 4);
            res.id = BigAt(e);
            res.attrs = BigAt(e + 8);
            res.entryAt = entryAt;
            res.dataAt = -1;
            res.size = -1;
            const int32_t nameOffset = BigAt(e + 4);
            const int64_t nameAt = nameList + nameOffset;
            if (nameOffset != kNoName) {
                if (nameAt >= 0 && nameAt < mapSize && nameAt + 1 + map[nameAt] <= mapSize)
                    res.name = map + nameAt;
                else
                    Notice(entryAt + 4, "name outside the map; read as no name");
            }
            const int32_t dataOffset = BigAt(e + 12);
            const int64_t sizeAt = dataAt + dataOffset;
            // A load holds offset and size to the section's end only, so a negative offset
            // reads from before it.
            if (dataOffset < 0 && sizeAt >= 0)
                Notice(entryAt + 12, "data offset %d lies before the data section; read from there",
                       dataOffset);
            if (int64_t{dataOffset} + 4 > dataSize) {
                Fault(entryAt + 12, MgEndOfFile, false, "data offset %d outside the data section",
                      dataOffset);
            } else if (sizeAt < 0) {
                Fault(entryAt + 12, MgEndOfFile, false,
                      "data offset %d lies before the start of the file", dataOffset);
            } else if (sizeAt + 4 > length) {
                Fault(entryAt + 12, MgEndOfFile, false, "data offset %d beyond the end of the file",
                      dataOffset);
            } else {
                const int32_t size = BigAt(bytes + sizeAt);
                if (size < 0)
                    Fault(sizeAt, MgEndOfFile, false, "negative size word %d", size);
                else if (int64_t{dataOffset} + size + 4 > dataSize)
                    Fault(sizeAt, MgEndOfFile, false, "%d bytes of data run past the data section",
                          size);
                else if (sizeAt + 4 + size > length)
                    Fault(sizeAt, MgEndOfFile, false,
                          "%d bytes of data run past the end of the file", size);
                else {
                    res.dataAt = sizeAt + 4;
                    res.size = size;
                    if (spans && dataOffset >= 0)
                        spans[used++] = {sizeAt, sizeAt + ((int64_t{size} + 7) & ~3), entryAt};
                }
            }
            if (res.attrs & RAttrChanged)
                Notice(entryAt + 8, "changed bit set in the file; dropped on opening");
            if (BigAt(e + 16) != 0)
                Notice(entryAt + 16, "handle word isn't zero; cleared on opening");
            if (sum->header.version >= 4 && r > 0 && res.id < BigAt(e - kRefEntrySize))
                Notice(entryAt,
                       "id %d out of order in a version-%d file: lookups by id may miss it", res.id,
                       sum->header.version);
            if (ids) ids[n++] = {(int64_t{i} << 32) | uint32_t(res.id ^ INT32_MIN), 0, entryAt};
            if (sink && sink->resource) sink->resource(sink->context, &res);
        }
    }
    MgStatus status = MgNoError;
    if (ids) {
        status = LookAtIds(ids, n);
        if (!status) status = LookAtData(spans, used);
        MemDisposePtr(reinterpret_cast<Ptr>(spans));
        MemDisposePtr(reinterpret_cast<Ptr>(ids));
    }
    return status;
}

// Sorts by start, stably, in linear time: nothing to do for spans already in order (lists and
// data as the manager writes them), else a least-significant-digit radix sort on 16-bit
// digits, skipping the digits that every start shares. Starts are never negative.
MgStatus SortByStart(Span* spans, int64_t n) {
    bool sorted = true;
    uint64_t differ = 0;
    for (int64_t i = 1; i < n; ++i) {
        sorted = sorted && spans[i - 1].start <= spans[i].start;
        differ |= uint64_t(spans[i].start ^ spans[0].start);
    }
    if (sorted) return MgNoError;
    Span* scratch = reinterpret_cast<Span*>(MemNewPtr(int32_t(n * int64_t{sizeof(Span)})));
    int64_t* counts = reinterpret_cast<int64_t*>(MemNewPtr(int32_t{sizeof(int64_t)} << 16));
    if (!scratch || !counts) {
        if (scratch) MemDisposePtr(reinterpret_cast<Ptr>(scratch));
        if (counts) MemDisposePtr(reinterpret_cast<Ptr>(counts));
        return MgNoMemory;
    }
    Span* from = spans;
    Span* to = scratch;
    for (int shift = 0; shift < 64; shift += 16) {
        if (!((differ >> shift) & 0xFFFF)) continue;
        memset(counts, 0, sizeof(int64_t) << 16);
        for (int64_t i = 0; i < n; ++i) ++counts[(uint64_t(from[i].start) >> shift) & 0xFFFF];
        for (int64_t d = 0, at = 0; d < 0x10000; ++d) {
            const int64_t c = counts[d];
            counts[d] = at;
            at += c;
        }
        for (int64_t i = 0; i < n; ++i)
            to[counts[(uint64_t(from[i].start) >> shift) & 0xFFFF]++] = from[i];
        std::swap(from, to);
    }
    if (from != spans) memcpy(spans, from, size_t(n) * sizeof(Span));
    MemDisposePtr(reinterpret_cast<Ptr>(scratch));
    MemDisposePtr(reinterpret_cast<Ptr>(counts));
    return MgNoError;
}

MgStatus Checker::LookAtIds(Span* ids, int64_t n) {
    if (MgStatus status = SortByStart(ids, n)) return status;
    for (int64_t i = 1; i < n; ++i)
        if (ids[i].start == ids[i - 1].start)
            Notice(ids[i].entryAt, "id %d appears twice in its type; a lookup finds one of them",
                   int32_t(uint32_t(ids[i].start) ^ uint32_t(INT32_MIN)));
    return MgNoError;
}

// References that share or overlap data, and data that no reference uses; the last only in a
// file without faults, where a resource that can't be loaded would leave a false gap.
MgStatus Checker::LookAtData(Span* spans, int64_t n) {
    if (MgStatus status = SortByStart(spans, n)) return status;
    const int64_t start = dataAt;
    const int64_t end = std::min(length, start + std::max<int64_t>(dataSize, 0));
    int64_t reached = std::max<int64_t>(start, 0);
    for (int64_t i = 0; i < n; ++i) {
        const Span& s = spans[i];
        if (i > 0 && s.start == spans[i - 1].start)
            Notice(s.entryAt + 12, "shares its data with the reference at %lld",
                   static_cast<long long>(spans[i - 1].entryAt));
        else if (s.start < reached)
            Notice(s.entryAt + 12, "data overlaps the data of another reference");
        else if (s.start > reached && !sum->faults)
            Notice(reached, "%lld bytes of data that no reference uses",
                   static_cast<long long>(s.start - reached));
        reached = std::max(reached, s.end);
    }
    if (reached < end && !sum->faults)
        Notice(reached, "%lld bytes of data that no reference uses",
               static_cast<long long>(end - reached));
    return MgNoError;
}

}  // namespace

extern "C" MgStatus RCheckBytes(const uint8_t* bytes, int64_t length, const RCheckSink* sink,
                                RCheckSummary* summary) {
    memset(summary, 0, sizeof *summary);
    Checker checker{bytes, length, sink, summary};
    return checker.Run();
}
