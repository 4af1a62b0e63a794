// Read windows over the data sections of open files, so that loading many small resources
// costs one file read per window instead of two seeks and two reads per resource.
//
// A window is a copy of consecutive bytes of one file's data section, kept in a plain block.
// A few files have one each; the least recently used one gives way. Windows are only ever
// copies of what the file held when they were filled: before the manager writes or truncates
// any file it drops every window (a file may be open twice, under two ids), and a file's
// window goes when it closes, as its id may come back for another file. A window that can't
// be allocated simply isn't used: reads then go straight to the file.
#include <string.h>

#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/memory.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\datacache.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

using Window = DataWindow;

constexpr int32_t kWindows = 4;

Window gWindows[kWindows];

Window* Find(ResFile id) {
    for (Window& w : gWindows)
        if (w.fileId == id) return &w;
    return nullptr;
}

// The file's window, taking an unused or the least recently used slot when it has none.
// Null when no buffer can be had.
Window* Claim(ResFile id) {
    Window* w = Find(id);
    if (!w) {
        w = &gWindows[0];
        for (Window& c : gWindows) {
            if (c.fileId == 0) {
                w = &c;
                break;
            }
            if (c.lastUse < w->lastUse) w = &c;
        }
        w->fileId = id;
        w->length = 0;
    }
    if (!w->bytes && !(w->bytes = MemNewPtr(kDataWindowSize))) {
        w->fileId = 0;
        return nullptr;
    }
    w->lastUse = ++gDataUseClock;
    return w;
}

bool Covers(const Window* w, int64_t at, int32_t count) {
    return at >= w->start && at + count <= w->start + w->length;
}

MgStatus ReadDirect(FileRef fileRef, int64_t at, int32_t count, void* dst) {
    // Positions wrap as 32-bit numbers, as they always have on this path.
    if (MgStatus status = FMSeek(fileRef, static_cast<int32_t>(at), FMSeekStart)) return status;
    return FMRead(fileRef, count, nullptr, dst);
}

// Refills `w` with one read so that it holds [at, at + count) if the file does. Reading
// forward, the window starts at `at`. Reading backward, `at` stands three quarters in, so that
// the window holds what was asked for, the data behind a size word, and much before it.
MgStatus Fill(Window* w, FileRef fileRef, int64_t low, int64_t high, int64_t at, int32_t count) {
    int64_t start = at;
    if (w->length > 0 && at < w->start) {
        start = at + count - kDataWindowSize;
        const int64_t ahead = at - kDataWindowSize / 4 * 3;
        if (ahead > start) start = ahead;
        if (start < low) start = low;
    }
    const int64_t end = start + kDataWindowSize < high ? start + kDataWindowSize : high;
    w->start = start;
    w->length = 0;
    int32_t got = 0;
    MgStatus status = FMSeek(fileRef, static_cast<int32_t>(start), FMSeekStart);
    if (!status) status = FMRead(fileRef, static_cast<int32_t>(end - start), &got, w->bytes);
    // A file shorter than its header says reads short; what did arrive is still the file's.
    if (status == MgEndOfFile) {
        w->length = got;
        return Covers(w, at, count) ? MgNoError : MgEndOfFile;
    }
    if (!status) w->length = got;
    return status;
}

}  // namespace

namespace rsrc {

DataWindow* gDataLastServed = nullptr;
uint64_t gDataUseClock = 0;

MgStatus DataReadMiss(const ResFileEntry* entry, int64_t at, int32_t count, void* dst) {
    const ResFileHeader* header = HeaderOf(entry->map);
    const int64_t low = header->dataOffset;
    const int64_t high = low + header->dataSize;
    // Large reads, and anything outside the data section, go straight to the file.
    if (count > kDataWindowSize || at < low || at + count > high || entry->fileId == 0)
        return ReadDirect(entry->fileRef, at, count, dst);
    Window* w = Find(entry->fileId);
    if (!w || !Covers(w, at, count)) {
        if (!(w = Claim(entry->fileId))) return ReadDirect(entry->fileRef, at, count, dst);
        if (MgStatus status = Fill(w, entry->fileRef, low, high, at, count)) return status;
    }
    w->lastUse = ++gDataUseClock;
    gDataLastServed = w;
    memcpy(dst, w->bytes + (at - w->start), static_cast<size_t>(count));
    return MgNoError;
}

void DataCacheInvalidateAll() {
    for (Window& w : gWindows) w.length = 0;
}

void DataCacheDrop(ResFile id) {
    if (id == 0) return;
    if (Window* w = Find(id)) {
        if (w->bytes) MemDisposePtr(w->bytes);
        *w = Window{};
        if (w == gDataLastServed) gDataLastServed = nullptr;
    }
}

}  // namespace rsrc
