// Sized blocks: blocks whose size the caller states again when it resizes or frees them, as
// the memory manager's handle blocks do. Those of at most kSmallBlockLimit bytes come from
// size-classed slabs, larger ones from Malloc. Every call that can allocate counts as one
// allocation for the fault hook (faults.h) and gives null when it fails, leaving any old block
// as it was; each block counts as one live block.
//
// A slab is kSlabBytes of memory aligned to its own size, so that a block's slab is its address
// with the low bits cleared. It serves one size class: a header, then blocks of the class's
// size, handed out first from a tail never used and then from the slab's own list of freed
// blocks, linked through their first word. A class lists the slabs that have a free block, the
// one that last gained one first; a full slab leaves the list and comes back when one of its
// blocks is freed. A slab whose last block is freed goes to a pool of empty slabs that any class
// may take, and beyond the pool's bound back to the runtime. So making and freeing a block
// touch the block and its slab's header and nothing else, and memory that one class gave up
// serves any other.
//
// With AddressSanitizer every byte of a slab outside a live block is poisoned, and a live block
// is addressable exactly to the size asked for, as a block from malloc would be.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"

#if defined(__SANITIZE_ADDRESS__)
#define MG_SLAB_POISONING 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MG_SLAB_POISONING 1
#endif
#endif
#ifdef MG_SLAB_POISONING
#include <sanitizer/asan_interface.h>
#endif

namespace plat {

constexpr size_t kSmallBlockLimit = 1024;

namespace slabs {

// 64 KiB: what Windows hands out aligned to its size, fresh pages at the allocation granularity.
constexpr size_t kSlabBytes = 64 * 1024;
// The header's share of a slab, a cache line, so that blocks keep a 64-byte alignment.
constexpr size_t kSlabHeader = 64;
// Classes of 16-byte steps to 256, 32-byte steps to 512, 64-byte steps to the limit.
constexpr int32_t kClassCount = 32;

struct Slab {
    Slab* prev;  // neighbours in the class's list of slabs with a free block
    Slab* next;
    void* freed;      // blocks freed, through their first word
    uint8_t* unused;  // start of the tail never handed out
    int32_t live;     // blocks handed out and not freed
    uint32_t blockBytes;
    int32_t cls;
    bool listed;  // in the class's list
};
static_assert(sizeof(Slab) <= kSlabHeader);

constexpr uint32_t ClassBytes(int32_t cls) {
    return cls < 16   ? 16u * (cls + 1)
           : cls < 24 ? 256u + 32u * (cls - 15)
                      : 512u + 64u * (cls - 23);
}
static_assert(ClassBytes(kClassCount - 1) == kSmallBlockLimit);

// The class of each size in 16-byte steps.
struct StepTable {
    uint8_t cls[kSmallBlockLimit / 16 + 1];
    constexpr StepTable() : cls() {
        int32_t c = 0;
        for (uint32_t step = 1; step <= kSmallBlockLimit / 16; ++step) {
            while (ClassBytes(c) < step * 16) ++c;
            cls[step] = static_cast<uint8_t>(c);
        }
    }
};
inline constexpr StepTable kClassOfStep;
// The 16-byte classes by arithmetic, the rest by the table.
inline int32_t ClassOf(size_t size) {
    if (size <= 256) return static_cast<int32_t>((size - (size != 0)) >> 4);
    return kClassOfStep.cls[(size + 15) / 16];
}

// Per class, the first slab with a free block.
extern Slab* gPartial[kClassCount];

// Takes a block of class `cls` when its first slab is missing or about to fill; null when no
// slab can be had.
void* TakeSlow(int32_t cls);
// Finishes a free that frees a block of a full slab, or empties a slab that isn't its class's
// only one.
void GiveSlow(Slab* s);
// Gives the empty slabs kept for reuse back to the runtime; false when there were none.
bool ReleasePool();

inline void Poison(const void* p, size_t n) {
#ifdef MG_SLAB_POISONING
    ASAN_POISON_MEMORY_REGION(p, n);
#else
    (void)p;
    (void)n;
#endif
}
inline void Unpoison(const void* p, size_t n) {
#ifdef MG_SLAB_POISONING
    ASAN_UNPOISON_MEMORY_REGION(p, n);
#else
    (void)p;
    (void)n;
#endif
}

inline Slab* SlabOf(void* block) {
    return reinterpret_cast<Slab*>(reinterpret_cast<uintptr_t>(block) & ~(kSlabBytes - 1));
}

// A block of `s` when the slab won't be full after it, else null with the slab unchanged; the
// caller poisons and unpoisons.
inline void* TakeFast(Slab* s) {
    uint8_t* const end = reinterpret_cast<uint8_t*>(s) + kSlabBytes;
    void* block = s->freed;
    if (block) {
        Unpoison(block, sizeof(void*));
        void* next;
        memcpy(&next, block, sizeof(void*));
        if (!next && s->unused + s->blockBytes > end) return nullptr;
        s->freed = next;
    } else {
        if (s->unused + 2 * size_t{s->blockBytes} > end) return nullptr;
        block = s->unused;
        s->unused += s->blockBytes;
    }
    ++s->live;
    return block;
}

}  // namespace slabs

inline void* MallocSized(size_t size) {
    if (size > kSmallBlockLimit) return Malloc(size);
    if (AllocationShouldFail()) return nullptr;
    const int32_t cls = slabs::ClassOf(size);
    slabs::Slab* s = slabs::gPartial[cls];
    void* block = s ? slabs::TakeFast(s) : nullptr;
    if (!block && !(block = slabs::TakeSlow(cls))) return nullptr;
    ++gLiveBlocks;
    slabs::Poison(block, slabs::SlabOf(block)->blockBytes);
    slabs::Unpoison(block, size);
    return block;
}

inline void FreeSized(void* block, size_t size) {
    if (block == nullptr) return;
    if (size > kSmallBlockLimit) return Free(block);
    --gLiveBlocks;
    slabs::Slab* s = slabs::SlabOf(block);
    slabs::Unpoison(block, sizeof(void*));
    memcpy(block, &s->freed, sizeof(void*));
    slabs::Poison(block, s->blockBytes);
    s->freed = block;
    if (--s->live != 0) {
        if (!s->listed) slabs::GiveSlow(s);
        return;
    }
    // A class's only slab stays, empty, so that one block made and freed in turn doesn't take
    // and give back a slab each time.
    if (s->listed && !s->next && slabs::gPartial[s->cls] == s) return;
    slabs::GiveSlow(s);
}

// Gives `block` (of `oldSize` bytes) `size` bytes; the block keeps its place while it stays in
// its class. Null, with the block unchanged, when memory runs out.
void* ReallocSized(void* block, size_t oldSize, size_t size);

}  // namespace plat
