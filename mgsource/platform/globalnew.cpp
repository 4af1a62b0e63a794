// Blocks of the global operator new on every host: the C runtime's heap behind its own
// fault hook, apart from the memory manager's count.
#include <stdlib.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {

void* GlobalNewBlock(size_t size) {
    return GlobalNewShouldFail() ? nullptr : malloc(size);
}

void GlobalFreeBlock(void* block) {
    free(block);
}

}  // namespace plat
