// Index from the token of a loaded data handle to the file, type and id of its reference, so
// that finding a handle's resource costs one probe instead of a walk of every open map.
//
// A two-level table: the token's high bits pick a page from a sorted directory, the low bits a
// slot in the page. Handles tend to be taken and given back in runs of neighbouring master
// pointers, whose tokens differ in the low bits, so a run of loads or disposals touches one
// page in order; the page last used is tried before the directory is searched. Any token value
// works: the layout of tokens affects only how many pages there are.
//
// Every reference whose handle word is nonzero has an entry; an entry may outlive its
// reference (a table dropped by RExit), so callers check what it says against the map. Pages
// are made in IndexReserve, before an edit changes anything, so an insert never fails. A page
// that empties is freed, except for one kept as a spare so that a load and release in turn
// don't make and free a page each time.
#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\handleindex.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

constexpr uint32_t kPageBits = 10;
constexpr int32_t kPageSlots = 1 << kPageBits;

struct Slot {
    uint32_t token;  // 0: empty
    RefLocator where;
};
struct Page {
    int32_t used;
    Slot slots[kPageSlots];
};
struct DirEntry {
    uint32_t key;  // token >> kPageBits
    Page* page;
};

Handle gDirectory = nullptr;  // DirEntry, sorted by key
int32_t gPages = 0;
int32_t gLast = -1;  // directory index of the page last used
int32_t gUsed = 0;
Page* gSpare = nullptr;  // an empty page kept for the next one needed

DirEntry* Dir() {
    return reinterpret_cast<DirEntry*>(*gDirectory);
}

// Directory index of the page of `key`, or -(insertion point) - 1.
int32_t Locate(uint32_t key) {
    if (gLast >= 0 && Dir()[gLast].key == key) return gLast;
    int32_t low = 0, high = gPages - 1;
    while (low <= high) {
        const int32_t mid = low + (high - low) / 2;
        const uint32_t k = Dir()[mid].key;
        if (k == key) return mid;
        if (k < key)
            low = mid + 1;
        else
            high = mid - 1;
    }
    return -low - 1;
}

Slot* SlotOf(uint32_t token) {
    if (!gDirectory || token == 0) return nullptr;
    const int32_t at = Locate(token >> kPageBits);
    if (at < 0) return nullptr;
    gLast = at;
    return &Dir()[at].page->slots[token & (kPageSlots - 1)];
}

void DropPage(int32_t at) {
    Page* page = Dir()[at].page;
    if (!gSpare)
        gSpare = page;
    else
        MemDisposePtr(reinterpret_cast<Ptr>(page));
    BlockMove(Dir() + at + 1, Dir() + at,
              (gPages - at - 1) * static_cast<int32_t>(sizeof(DirEntry)));
    --gPages;
    gLast = -1;
}

}  // namespace

namespace rsrc {

MgStatus IndexReserve(uint32_t token) {
    MG_CHECK(token != 0);
    const uint32_t key = token >> kPageBits;
    if (gDirectory && Locate(key) >= 0) return MgNoError;
    const int32_t needed = (gPages + 1) * static_cast<int32_t>(sizeof(DirEntry));
    if (!gDirectory) {
        if (!(gDirectory = MemNewHandle(needed))) return MgNoMemory;
    } else if (MemHandleSize(gDirectory) < needed) {
        if (MemResizeHandle(gDirectory, needed * 2)) return MgNoMemory;
    }
    Page* page = gSpare;
    if (!page && !(page = reinterpret_cast<Page*>(MemNewPtrClear(sizeof(Page))))) return MgNoMemory;
    gSpare = nullptr;
    const int32_t at = -Locate(key) - 1;
    BlockMove(Dir() + at, Dir() + at + 1, (gPages - at) * static_cast<int32_t>(sizeof(DirEntry)));
    Dir()[at] = DirEntry{key, page};
    ++gPages;
    gLast = at;
    return MgNoError;
}

void IndexInsert(uint32_t token, const RefLocator& where) {
    Slot* s = SlotOf(token);
    MG_CHECK(s != nullptr);
    if (s->token == 0) {
        ++Dir()[gLast].page->used;
        ++gUsed;
    }
    *s = Slot{token, where};
}

void IndexErase(uint32_t token) {
    Slot* s = SlotOf(token);
    if (!s || s->token == 0) return;
    s->token = 0;
    --gUsed;
    if (--Dir()[gLast].page->used == 0) DropPage(gLast);
}

bool IndexFind(uint32_t token, RefLocator* where) {
    const Slot* s = SlotOf(token);
    if (!s || s->token != token) return false;
    *where = s->where;
    return true;
}

int32_t IndexCount() {
    return gUsed;
}

void AttachHandle(ResFileEntry* entry, ResType type, ResRefEntry* ref, uint32_t token) {
    ref->handle = token;
    IndexInsert(token, RefLocator{entry->fileId, type, ref->id});
}

void DetachHandle(ResRefEntry* ref) {
    IndexErase(ref->handle);
    ref->handle = 0;
}

}  // namespace rsrc
