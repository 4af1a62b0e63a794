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

void FailFileOpAt(FileOp op, int64_t n, int32_t status) {
    gFaults.failFileAt[op] = n;
    gFaults.failFileStatus[op] = status;
    gFaults.fileCount[op] = 0;
}

int64_t FileOpCount(FileOp op) { return gFaults.fileCount[op]; }

int32_t FileOpShouldFail(FileOp op) {
    int64_t n = ++gFaults.fileCount[op];
    return gFaults.failFileAt[op] > 0 && n == gFaults.failFileAt[op] ? gFaults.failFileStatus[op]
                                                                      : 0;
}

}  // namespace plat
