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
// Blocks allocated through the seam and not yet freed, over the whole run: a leak check for
// code that must give back everything it took, also when it fails.
int64_t LiveBlockCount();
// File operations that tests can fail and count. kFileListNext is the step of a directory
// listing to its next entry: failing it makes the listing end in a failure midway.
// kFileReplace counts the making of a new file to replace an open one and the step that puts
// it in the old one's place.
enum FileOp {
    kFileRead,
    kFileWrite,
    kFileSeek,
    kFileTruncate,
    kFileListNext,
    kFileFlush,
    kFileReplace,
    kFileOpCount
};
// Makes the Nth call of `op` from now fail as if the platform reported `status`; 0 disarms.
void FailFileOpAt(FileOp op, int64_t n, int32_t status);
// Calls of `op` since the last FailFileOpAt for it or ResetFaults.
int64_t FileOpCount(FileOp op);

// Makes CurrentDirectory report `directory` (copied; at most 4095 bytes) instead of the
// process's own, so that code which takes the drive from it can be tested on any host; null
// restores the real one.
void SetCurrentDirectoryForTest(const char* directory);
// Makes the POSIX backend read shortcut files through `resolve`, which rewrites a name in place
// and answers true for a shortcut, so that the walk over a name's levels can be tested where
// the host has no shortcut files; null restores the host's answer (never a shortcut).
void SetShortcutResolverForTest(bool (*resolve)(char* name));
// Makes the Nth call of the library's global operator new from now find no memory (1 = the
// next one); 0 disarms. Kept apart from FailAllocationAt, which counts the memory manager's
// blocks alone.
void FailGlobalNewAt(int64_t n);
// Sends every text of the debugger channel to `sink` as well (null stops it), so that tests
// can see it on hosts where no debugger listens.
typedef void (*DebuggerSink)(const char* text, void* context);
void CaptureDebuggerOutput(DebuggerSink sink, void* context);

// Makes the runtime take `zone` (a TZ text such as "CET-1CEST,M3.5.0,M10.5.0/3") as the local
// time zone of this process. On Windows the system's zone stays as it is; the time conversions
// take the runtime's zone instead from then on, with the runtime's own daylight rule.
void SetTimeZoneForTest(const char* zone);
// Disarms every fault and resets the counters.
void ResetFaults();

}  // namespace plat
