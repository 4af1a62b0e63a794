// Backend-independent part of the fault hooks.
#include "platform/faults.h"

#include "platform/faults_internal.h"

namespace plat {

FaultState gFaults;
int64_t gLiveBlocks = 0;

int64_t LiveBlockCount() {
    return gLiveBlocks;
}

void FailAllocationAt(int64_t n) {
    gFaults.failAllocAt = n;
    gFaults.allocCount = 0;
}

int64_t AllocationCount() {
    return gFaults.allocCount;
}

void SetCurrentDirectoryForTest(const char* directory) {
    gFaults.currentDirectorySet = directory != nullptr;
    gFaults.currentDirectory[0] = 0;
    if (directory == nullptr) return;
    int32_t n = 0;
    while (directory[n] != 0 && n + 1 < int32_t(sizeof gFaults.currentDirectory)) {
        gFaults.currentDirectory[n] = directory[n];
        ++n;
    }
    gFaults.currentDirectory[n] = 0;
}

bool CurrentDirectoryOverride(char* buffer, int32_t size, int32_t* length) {
    if (!gFaults.currentDirectorySet) return false;
    int32_t n = 0;
    while (gFaults.currentDirectory[n] != 0) ++n;
    if (size <= 0 || n >= size) {
        *length = 0;
        return true;
    }
    for (int32_t i = 0; i <= n; ++i) buffer[i] = gFaults.currentDirectory[i];
    *length = n;
    return true;
}

void SetShortcutResolverForTest(bool (*resolve)(char* name)) {
    gFaults.shortcutResolver = resolve;
}

void FailGlobalNewAt(int64_t n) {
    gFaults.failNewAt = n;
    gFaults.newCount = 0;
}

bool GlobalNewShouldFail() {
    ++gFaults.newCount;
    return gFaults.failNewAt > 0 && gFaults.newCount == gFaults.failNewAt;
}

void CaptureDebuggerOutput(DebuggerSink sink, void* context) {
    gFaults.debuggerSink = sink;
    gFaults.debuggerContext = context;
}

void DebuggerOutputCapture(const char* text) {
    if (gFaults.debuggerSink != nullptr) gFaults.debuggerSink(text, gFaults.debuggerContext);
}

void ResetFaults() {
    gFaults = FaultState{};
}

void FailFileOpAt(FileOp op, int64_t n, int32_t status) {
    gFaults.failFileAt[op] = n;
    gFaults.failFileStatus[op] = status;
    gFaults.fileCount[op] = 0;
}

int64_t FileOpCount(FileOp op) {
    return gFaults.fileCount[op];
}

int32_t FileOpShouldFail(FileOp op) {
    int64_t n = ++gFaults.fileCount[op];
    return gFaults.failFileAt[op] > 0 && n == gFaults.failFileAt[op] ? gFaults.failFileStatus[op]
                                                                     : 0;
}

}  // namespace plat
