// Fault injection for tests. Production code never calls these; with nothing armed the seam
// behaves exactly as the platform does.
#pragma once

#include <stdint.h>

namespace plat {

// Makes the Nth allocation from now fail (1 = the next one); 0 disarms. Counts Malloc and
// Realloc calls alike.
void FailAllocationAt(int64_t n);
// Allocations made since the last FailAllocationAt or ResetFaults.
int64_t AllocationCount();
// Disarms every fault and resets the counters.
void ResetFaults();

}  // namespace plat
