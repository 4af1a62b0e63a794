// Index from the token of a loaded data handle to the file, type and id of its reference, so
// that finding a handle's resource costs one probe instead of a walk of every open map.
//
// Open addressing with linear probing in one main-zone handle. Every reference whose handle
// word is nonzero has an entry; an entry may outlive its reference (a table dropped by RExit),
// so callers check what it says against the map. Growth happens in IndexReserve, before an
// edit changes anything, so an insert never fails.
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\handleindex.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

struct Slot {
    uint32_t token;  // 0: never used; kGone: erased
    RefLocator where;
};

// No live handle has this token: its slot field is beyond any master block.
constexpr uint32_t kGone = 0xFFFFFFFFu;
constexpr int32_t kMinCapacity = 64;

Handle gIndex = nullptr;
int32_t gCapacity = 0;  // a power of 2
int32_t gUsed = 0;      // live entries
int32_t gGone = 0;      // erased entries still occupying slots

Slot* Slots() {
    return reinterpret_cast<Slot*>(*gIndex);
}

uint32_t Home(uint32_t token, int32_t capacity) {
    return (token * 0x9E3779B1u) & static_cast<uint32_t>(capacity - 1);
}

// Returns true when the entry took the place of an erased one.
bool Place(Slot* slots, int32_t capacity, uint32_t token, const RefLocator& where) {
    uint32_t i = Home(token, capacity);
    while (slots[i].token != 0 && slots[i].token != kGone)
        i = (i + 1) & static_cast<uint32_t>(capacity - 1);
    const bool reused = slots[i].token == kGone;
    slots[i] = Slot{token, where};
    return reused;
}

Slot* Probe(uint32_t token) {
    if (!gIndex || token == 0) return nullptr;
    Slot* slots = Slots();
    uint32_t i = Home(token, gCapacity);
    while (slots[i].token != 0) {
        if (slots[i].token == token) return &slots[i];
        i = (i + 1) & static_cast<uint32_t>(gCapacity - 1);
    }
    return nullptr;
}

}  // namespace

namespace rsrc {

MgStatus IndexReserve() {
    // Keep at least half the slots never used, so probes stay short and always end.
    if (gIndex && (int64_t{gUsed} + gGone + 1) * 2 <= gCapacity) return MgNoError;
    int32_t capacity = kMinCapacity;
    while (capacity < (gUsed + 1) * 4) capacity *= 2;
    Handle grown = MemNewHandleClear(capacity * static_cast<int32_t>(sizeof(Slot)));
    if (!grown) return MgNoMemory;
    Slot* to = reinterpret_cast<Slot*>(*grown);
    for (int32_t i = 0; i < gCapacity; ++i) {
        const Slot& s = Slots()[i];
        if (s.token != 0 && s.token != kGone) Place(to, capacity, s.token, s.where);
    }
    if (gIndex) MemDisposeHandle(gIndex);
    gIndex = grown;
    gCapacity = capacity;
    gGone = 0;
    return MgNoError;
}

void IndexInsert(uint32_t token, const RefLocator& where) {
    MG_CHECK(token != 0 && gIndex && (int64_t{gUsed} + gGone + 1) * 2 <= gCapacity);
    if (Slot* s = Probe(token)) {
        s->where = where;
        return;
    }
    if (Place(Slots(), gCapacity, token, where)) --gGone;
    ++gUsed;
}

void IndexErase(uint32_t token) {
    if (Slot* s = Probe(token)) {
        s->token = kGone;
        --gUsed;
        ++gGone;
    }
}

bool IndexFind(uint32_t token, RefLocator* where) {
    const Slot* s = Probe(token);
    if (s) *where = s->where;
    return s != nullptr;
}

int32_t IndexCount() {
    return gUsed;
}

void AttachHandle(ResFileEntry* entry, ResType type, ResRefEntry* ref, Handle h) {
    ref->handle = MemHandleToken(h);
    IndexInsert(ref->handle, RefLocator{entry->fileId, type, ref->id});
}

void DetachHandle(ResRefEntry* ref) {
    IndexErase(ref->handle);
    ref->handle = 0;
}

}  // namespace rsrc
