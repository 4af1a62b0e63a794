// Backend-independent part of the fault hooks.
#include "platform/faults.h"

#include "platform/faults_internal.h"

namespace plat {

FaultState gFaults;

void FailAllocationAt(int64_t n) {
    gFaults.failAllocAt = n;
    gFaults.allocCount = 0;
}

int64_t AllocationCount() { return gFaults.allocCount; }

void ResetFaults() { gFaults = FaultState{}; }

bool AllocationShouldFail() {
    ++gFaults.allocCount;
    return gFaults.failAllocAt > 0 && gFaults.allocCount == gFaults.failAllocAt;
}

}  // namespace plat
