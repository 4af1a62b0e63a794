// Allocation on every host: the C runtime's allocator behind the fault hook.
#include <stdlib.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {

void* Malloc(size_t size) {
    return AllocationShouldFail() ? nullptr : malloc(size);
}

void* Realloc(void* block, size_t size) {
    return AllocationShouldFail() ? nullptr : realloc(block, size);
}

void Free(void* block) {
    free(block);
}

}  // namespace plat
