// Child processes, for tests that run a program (the tool, or the test program itself) and
// look at its exit status, files and output. Not used by the layer.
#pragma once

#include <stdint.h>

namespace plat {

struct ChildSpec {
    const char* program = nullptr;      // the program's file name
    const char* const* args = nullptr;  // its arguments after the program name, ended by null
    const char* directory = nullptr;    // its current directory; null: this process's
    // Files that receive its standard output and error (names relative to this process's
    // directory); null: the null device, or this process's own streams when `inherit` is set.
    const char* outFile = nullptr;
    const char* errFile = nullptr;
    bool inherit = false;
    const char* variable = nullptr;  // "NAME=value" set for the child alone, or null
};

// Starts the program; returns an id above 0, or 0 when it could not be started.
int64_t StartChild(const ChildSpec& child);
// Waits for the child at most `timeoutMs` milliseconds, ending it when the time is up; returns
// its exit status, or -1 when it did not exit by itself (a signal, a fault, the time limit).
int32_t WaitChild(int64_t child, int32_t timeoutMs);

// The files, directories and other kernel objects this process holds open: a leak check
// for code that must close what it opened. -1 when the host can't tell.
int64_t OpenHandleCount();

// Sets variable `name` of this process's environment to `value`, or removes it when `value` is
// null; children started afterwards inherit it. Returns false when the host refuses.
bool SetVariable(const char* name, const char* value);

}  // namespace plat
