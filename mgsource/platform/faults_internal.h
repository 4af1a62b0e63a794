// State behind the fault hooks, shared by the backends.
#pragma once

#include <stdint.h>

namespace plat {

struct FaultState {
    int64_t failAllocAt = 0;
    int64_t allocCount = 0;
    bool currentDirectorySet = false;
    char currentDirectory[4096] = {};
};

extern FaultState gFaults;

// Counts one allocation and says whether it is the one armed to fail.
bool AllocationShouldFail();
// When a test has set a current directory, copies it as CurrentDirectory would and returns
// true, with the length (0 when it does not fit) in *length.
bool CurrentDirectoryOverride(char* buffer, int32_t size, int32_t* length);

}  // namespace plat
