// A resource file checked as bytes, without opening it: every rule that opening and loading
// apply, each fault with the byte offset where it lies, and what a reader accepts but is
// likely a mistake. Opening runs the same map checks (ValidateFileMap), so that the two agree.
#pragma once

#include "mg/resource.h"

MG_EXTERN_C_BEGIN

typedef struct RCheckFinding {
    int64_t offset;   // from the start of the bytes
    int32_t notice;   // 0: a fault; 1: legal but suspicious
    MgStatus status;  // what opening (13, 6, 4, 2) or loading (4) gives for a fault; 0 for a notice
    char text[120];
} RCheckFinding;

// One reference of a file whose lists are sound, in the order the map holds it.
typedef struct RCheckedRef {
    ResType type;
    int32_t id;
    int32_t attrs;
    int64_t entryAt;      // offset of the reference entry
    const uint8_t* name;  // a PStr inside the bytes, or null when it has none (or none readable)
    int64_t dataAt;       // offset of the data after its size word; -1 when it can't be loaded
    int32_t size;         // -1 when it can't be loaded
} RCheckedRef;

typedef struct RCheckSink {
    void* context;
    void (*finding)(void* context, const RCheckFinding* finding);  // may be null
    void (*resource)(void* context, const RCheckedRef* resource);  // may be null
    int32_t notices;  // nonzero: also look for what is suspicious (costs a sort of the data)
} RCheckSink;

typedef struct RCheckSummary {
    ResFileHeader header;  // host order; offsets as the file gives them
    int64_t base;          // where the header stands: 0, or as a trailer gives it
    MgStatus openStatus;   // what opening for reading gives: 0 when it opens
    int32_t faults;
    int32_t notices;
    // References of a map with sound lists, known before the first goes to the sink.
    int32_t resources;
} RCheckSummary;

// Checks `length` bytes of a resource file. 0 when the check ran (the summary says what it
// found), 2 when memory ran out.
MgStatus RCheckBytes(const uint8_t* bytes, int64_t length, const RCheckSink* sink,
                     RCheckSummary* summary);

MG_EXTERN_C_END
