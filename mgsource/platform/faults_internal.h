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
    bool (*shortcutResolver)(char* name) = nullptr;
    bool currentDirectorySet = false;
    char currentDirectory[4096] = {};
    int64_t failNewAt = 0;
    int64_t newCount = 0;
    DebuggerSink debuggerSink = nullptr;
    void* debuggerContext = nullptr;
};

extern FaultState gFaults;
// Blocks allocated and not freed; kept apart from gFaults, which ResetFaults clears.
extern int64_t gLiveBlocks;

// Counts one allocation and says whether it is the one armed to fail. Inline, since every
// small block asks.
inline bool AllocationShouldFail() {
    ++gFaults.allocCount;
    return gFaults.failAllocAt > 0 && gFaults.allocCount == gFaults.failAllocAt;
}
// Counts one call of `op`; when it is the one armed to fail, gives the status to report, else 0.
int32_t FileOpShouldFail(FileOp op);
// Counts one call of operator new and says whether it is the one armed to fail.
bool GlobalNewShouldFail();
// Hands a debugger text to the sink of CaptureDebuggerOutput, if any.
void DebuggerOutputCapture(const char* text);
// When a test has set a current directory, copies it as CurrentDirectory would and returns
// true, with the length (0 when it does not fit) in *length.
bool CurrentDirectoryOverride(char* buffer, int32_t size, int32_t* length);
// Records a failure injected by a test, so that LastErrorStatus reports `status`; returns
// false. Each backend implements it beside its last error.
bool RecordInjectedFailure(int32_t status);

}  // namespace plat
