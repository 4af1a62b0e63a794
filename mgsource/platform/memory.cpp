// Allocation on every host: the C runtime's allocator behind the fault hook. A request the
// runtime refuses is tried once more after the slabs' pool of empty slabs went back to it.
#include <stdlib.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"
#include "platform/smallblocks.h"

namespace plat {
namespace {

// Below this a block's faults cost little next to filling it; above it (a module read whole,
// a large resource) they dominate.
constexpr size_t kLargeBlock = size_t(4) << 20;

void* Advised(void* block, size_t size) {
    if (block != nullptr && size >= kLargeBlock) AdviseLargeBlock(block, size);
    return block;
}

// The runtime's block, after a second try without the slabs' empty pool if the first fails.
void* RuntimeMalloc(size_t size) {
    void* made = malloc(size);
    return made != nullptr || !slabs::ReleasePool() ? made : malloc(size);
}
void* RuntimeRealloc(void* block, size_t size) {
    void* made = realloc(block, size);
    return made != nullptr || !slabs::ReleasePool() ? made : realloc(block, size);
}

}  // namespace

void* Malloc(size_t size) {
    void* made = AllocationShouldFail() ? nullptr : Advised(RuntimeMalloc(size), size);
    if (made != nullptr) ++gLiveBlocks;
    return made;
}

void* Realloc(void* block, size_t size) {
    void* made = AllocationShouldFail() ? nullptr : Advised(RuntimeRealloc(block, size), size);
    if (made != nullptr && block == nullptr) ++gLiveBlocks;
    return made;
}

void Free(void* block) {
    if (block != nullptr) --gLiveBlocks;
    free(block);
}

}  // namespace plat
