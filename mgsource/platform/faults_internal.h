// State behind the fault hooks, shared by the backends.
#pragma once

#include <stdint.h>

namespace plat {

struct FaultState {
    int64_t failAllocAt = 0;
    int64_t allocCount = 0;
};

extern FaultState gFaults;

// Counts one allocation and says whether it is the one armed to fail.
bool AllocationShouldFail();

}  // namespace plat
