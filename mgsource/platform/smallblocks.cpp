// Sized blocks: the slabs' slow paths (a slab taken, filled, emptied) and resizing. The rules
// stand in smallblocks.h.
#include "platform/smallblocks.h"

namespace plat {
namespace slabs {
namespace {

// Empty slabs kept for reuse (64 MiB at most): a run of blocks freed and made again, as a
// file's loads after another file's close, costs no trip to the runtime and no fresh pages.
// More than that go back to the runtime, and so does the whole pool when it runs out of memory.
constexpr int32_t kPooledSlabs = 1024;

Slab* gPool = nullptr;  // empty slabs, through `next`
int32_t gPooled = 0;

void List(Slab* s) {
    s->prev = nullptr;
    s->next = gPartial[s->cls];
    if (s->next) s->next->prev = s;
    gPartial[s->cls] = s;
    s->listed = true;
}

void Unlist(Slab* s) {
    if (s->prev)
        s->prev->next = s->next;
    else
        gPartial[s->cls] = s->next;
    if (s->next) s->next->prev = s->prev;
    s->listed = false;
}

bool Full(const Slab* s) {
    return !s->freed &&
           s->unused + s->blockBytes > reinterpret_cast<const uint8_t*>(s) + kSlabBytes;
}

// An empty slab for `cls`, listed, from the pool or the runtime; null when there is no memory.
Slab* NewSlab(int32_t cls) {
    Slab* s = gPool;
    if (s) {
        gPool = s->next;
        --gPooled;
    } else {
        s = static_cast<Slab*>(AlignedBlock(kSlabBytes));
        if (!s) return nullptr;
        Poison(reinterpret_cast<uint8_t*>(s) + kSlabHeader, kSlabBytes - kSlabHeader);
    }
    s->freed = nullptr;
    s->unused = reinterpret_cast<uint8_t*>(s) + kSlabHeader;
    s->live = 0;
    s->blockBytes = ClassBytes(cls);
    s->cls = cls;
    List(s);
    return s;
}

}  // namespace

Slab* gPartial[kClassCount];

void* TakeSlow(int32_t cls) {
    Slab* s = gPartial[cls];
    if (!s && !(s = NewSlab(cls))) return nullptr;
    void* block = s->freed;
    if (block) {
        Unpoison(block, sizeof(void*));
        memcpy(&s->freed, block, sizeof(void*));
    } else {
        block = s->unused;
        s->unused += s->blockBytes;
    }
    ++s->live;
    if (Full(s)) Unlist(s);
    return block;
}

void GiveSlow(Slab* s) {
    if (s->live != 0) {
        List(s);  // it was full
        return;
    }
    if (s->listed) Unlist(s);
    if (gPooled < kPooledSlabs) {
        s->next = gPool;
        gPool = s;
        ++gPooled;
        return;
    }
    Unpoison(s, kSlabBytes);
    FreeAlignedBlock(s);
}

bool ReleasePool() {
    if (!gPool) return false;
    while (Slab* s = gPool) {
        gPool = s->next;
        Unpoison(s, kSlabBytes);
        FreeAlignedBlock(s);
    }
    gPooled = 0;
    return true;
}

}  // namespace slabs

void* ReallocSized(void* block, size_t oldSize, size_t size) {
    const bool oldSmall = oldSize <= kSmallBlockLimit;
    const bool small = size <= kSmallBlockLimit;
    if (!oldSmall && !small) return Realloc(block, size);
    if (oldSmall && small && slabs::ClassOf(size) == slabs::SlabOf(block)->cls) {
        // Still its class: the block stays where it is.
        if (AllocationShouldFail()) return nullptr;
        slabs::Poison(block, slabs::SlabOf(block)->blockBytes);
        slabs::Unpoison(block, size);
        return block;
    }
    void* made = MallocSized(size);
    if (made == nullptr) return nullptr;
    memcpy(made, block, oldSize < size ? oldSize : size);
    FreeSized(block, oldSize);
    return made;
}

}  // namespace plat
