// Allocation on every host: the C runtime's allocator behind the fault hook.
#include <stdlib.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {
namespace {

// Below this a block's faults cost little next to filling it; above it (a module read whole,
// a large resource) they dominate.
constexpr size_t kLargeBlock = size_t(4) << 20;

void* Advised(void* block, size_t size) {
    if (block != nullptr && size >= kLargeBlock) AdviseLargeBlock(block, size);
    return block;
}

}  // namespace

void* Malloc(size_t size) {
    void* made = AllocationShouldFail() ? nullptr : Advised(malloc(size), size);
    if (made != nullptr) ++gLiveBlocks;
    return made;
}

void* Realloc(void* block, size_t size) {
    void* made = AllocationShouldFail() ? nullptr : Advised(realloc(block, size), size);
    if (made != nullptr && block == nullptr) ++gLiveBlocks;
    return made;
}

void Free(void* block) {
    if (block != nullptr) --gLiveBlocks;
    free(block);
}

}  // namespace plat
