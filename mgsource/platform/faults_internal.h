// State behind the fault hooks, shared by the backends.
#pragma once

#include <stdint.h>

#include "platform/faults.h"

namespace plat {

struct FaultState {
    int64_t failAllocAt = 0;
    int64_t allocCount = 0;
    int64_t failFileAt[kFileOpCount] = {};
    int32_t failFileStatus[kFileOpCount] = {};
    int64_t fileCount[kFileOpCount] = {};
    bool currentDirectorySet = false;
    char currentDirectory[4096] = {};
    int64_t failNewAt = 0;
    int64_t newCount = 0;
    DebuggerSink debuggerSink = nullptr;
    void* debuggerContext = nullptr;
};

extern FaultState gFaults;

// Counts one allocation and says whether it is the one armed to fail.
bool AllocationShouldFail();
// Counts one call of `op`; when it is the one armed to fail, gives the status to report, else 0.
int32_t FileOpShouldFail(FileOp op);
// Counts one call of operator new and says whether it is the one armed to fail.
bool GlobalNewShouldFail();
// Hands a debugger text to the sink of CaptureDebuggerOutput, if any.
void DebuggerOutputCapture(const char* text);
// When a test has set a current directory, copies it as CurrentDirectory would and returns
// true, with the length (0 when it does not fit) in *length.
bool CurrentDirectoryOverride(char* buffer, int32_t size, int32_t* length);

}  // namespace plat
