// Index from the token of a loaded data handle to the file, type and id of its reference, so
// that finding a handle's resource costs one probe instead of a walk of every open map.
//
// A two-level table: the token's high bits pick a page from a sorted directory, the low bits a
// slot in the page. Handles tend to be taken and given back in runs of neighbouring master
// pointers, whose tokens differ in the low bits, so a run of loads or disposals touches one
// page in order; the page last used is tried before the directory is searched, so that an
// insert or an erase touches the one slot's cache line beyond the directory entry in use. Any
// token value works: the layout of tokens affects only how many pages there are.
//
// The index is kept only once someone asks for it. Dormant, it holds nothing and loads, adds
// and closes only set handle words. The first question by handle that the cache of the last
// resource doesn't answer (IndexReady) builds it with one walk of every open map; live, every
// reference with a nonzero handle word has an entry, and it goes dormant again when its last
// entry goes. So reading a whole file pays nothing for it, and a session of lookups pays one
// walk and then one update per load. A build that runs out of memory leaves it dormant, and
// the question is answered by the walk instead.
//
// An entry may outlive its reference (a table dropped by RExit), so callers check what it says
// against the map. Pages are made in IndexReserve, before an edit changes anything, so an
// insert never fails. A page that empties stays for the next entries of its range: tokens name
// master pointers, which the memory manager reuses and never gives back, so the pages are
// bounded by the most handles that were ever alive.
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
    Slot slots[kPageSlots];
};
struct DirEntry {
    uint32_t key;  // token >> kPageBits
    Page* page;
};

bool gLive = false;
Handle gDirectory = nullptr;  // DirEntry, sorted by key
int32_t gPages = 0;
int32_t gLast = -1;  // directory index of the page last used
int32_t gUsed = 0;

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

// The slot of `token`, or null when the token has no page.
Slot* SlotOf(uint32_t token) {
    if (!gDirectory || token == 0) return nullptr;
    const int32_t at = Locate(token >> kPageBits);
    if (at < 0) return nullptr;
    gLast = at;
    return &Dir()[at].page->slots[token & (kPageSlots - 1)];
}

// Makes sure the page of `token` exists and is the one last used.
MgStatus MakePage(uint32_t token) {
    MG_CHECK(token != 0);
    const uint32_t key = token >> kPageBits;
    if (gDirectory) {
        const int32_t at = Locate(key);
        if (at >= 0) {
            gLast = at;
            return MgNoError;
        }
    }
    const int32_t needed = (gPages + 1) * static_cast<int32_t>(sizeof(DirEntry));
    if (!gDirectory) {
        if (!(gDirectory = MemNewHandle(needed))) return MgNoMemory;
    } else if (MemHandleSize(gDirectory) < needed) {
        if (MemResizeHandle(gDirectory, needed * 2)) return MgNoMemory;
    }
    Page* page = reinterpret_cast<Page*>(MemNewPtrClear(sizeof(Page)));
    if (!page) return MgNoMemory;
    const int32_t at = -Locate(key) - 1;
    BlockMove(Dir() + at, Dir() + at + 1, (gPages - at) * static_cast<int32_t>(sizeof(DirEntry)));
    Dir()[at] = DirEntry{key, page};
    ++gPages;
    gLast = at;
    return MgNoError;
}

// Fills the slot of a page made ready by MakePage.
void Put(uint32_t token, const RefLocator& where) {
    Slot* s = &Dir()[gLast].page->slots[token & (kPageSlots - 1)];
    if (s->token == 0) ++gUsed;
    *s = Slot{token, where};
}

void Erase(uint32_t token) {
    Slot* s = SlotOf(token);
    if (!s || s->token == 0) return;
    s->token = 0;
    if (--gUsed == 0) gLive = false;
}

// Empties every page and goes dormant.
void Clear() {
    for (int32_t i = 0; i < gPages; ++i)
        for (Slot& s : Dir()[i].page->slots) s.token = 0;
    gUsed = 0;
    gLive = false;
}

// Calls `visit` for every reference with a handle word in the open files that RFindHandle
// searches, until it returns false; false if it stopped.
template <typename Visit>
bool EachLoadedRef(Visit visit) {
    if (!RFileTable) return true;
    for (int32_t i = 0; i < RFileTableSize; ++i) {
        ResFileEntry* e = &reinterpret_cast<ResFileEntry*>(*RFileTable)[i];
        if (e->fileId == 0 || e->reserved != 0 || !e->map || MapEmpty(e->map)) continue;
        Ptr typeList = TypeListOf(e->map);
        const int32_t types = TypeCount(typeList);
        for (int32_t t = 0; t < types; ++t) {
            ResTypeEntry* te = TypeAt(typeList, t);
            ResRefEntry* refs = RefsOf(typeList, te);
            for (int32_t r = 0; r <= te->count; ++r)
                if (refs[r].handle && !visit(e, te, &refs[r])) return false;
        }
    }
    return true;
}

}  // namespace

namespace rsrc {

bool IndexReady() {
    if (gLive) return true;
    gLive = true;
    const bool built = EachLoadedRef([](ResFileEntry* e, ResTypeEntry* t, ResRefEntry* r) {
        if (MakePage(r->handle)) return false;
        Put(r->handle, RefLocator{e->fileId, t->type, r->id});
        return true;
    });
    if (!built) Clear();
    return built;
}

MgStatus RFindHandleByWalk(uint32_t token, ResFileEntry** entry, ResRefEntry** ref, ResType* type) {
    bool found = false;
    EachLoadedRef([&](ResFileEntry* e, ResTypeEntry* t, ResRefEntry* r) {
        if (r->handle != token) return true;
        *entry = e;
        *ref = r;
        *type = t->type;
        found = true;
        return false;
    });
    return found ? MgNoError : MgResourceNotFound;
}

MgStatus IndexReserve(uint32_t token) {
    return gLive ? MakePage(token) : MgNoError;
}

void IndexInsert(uint32_t token, const RefLocator& where) {
    if (!gLive) return;
    Slot* s = SlotOf(token);
    MG_CHECK(s != nullptr);
    if (s->token == 0) ++gUsed;
    *s = Slot{token, where};
}

void IndexErase(uint32_t token) {
    if (gLive) Erase(token);
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

MgStatus AttachNewHandle(ResFileEntry* entry, ResType type, ResRefEntry* ref, uint32_t token) {
    if (gLive) {
        if (MgStatus status = MakePage(token)) return status;
        Put(token, RefLocator{entry->fileId, type, ref->id});
    }
    ref->handle = token;
    return MgNoError;
}

void DetachHandle(ResRefEntry* ref) {
    IndexErase(ref->handle);
    ref->handle = 0;
}

}  // namespace rsrc
