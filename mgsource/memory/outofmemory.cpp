// The out-of-memory step and the record of the first allocation that failed.
#include "memory/zone.h"
#include "mg/dbgtools.h"
#include "mg/pstring.h"

MG_SOURCE_IDENTITY("mgsource\\memory\\outofmemory.cpp", "$Revision: 1 $");

namespace {

// Empty while size is 0. Only the first failure is kept until someone clears it.
struct OutOfMemoryRecord {
    int32_t size;
    int32_t data;
};
OutOfMemoryRecord gOutOfMemory;
Handle gMessageTable;

// Read as a PStr, the first character is the count: 47 cuts the last two characters and
// leaves the digits in front of the words.
const char kBuiltInMessage[] = "/0105Not enough memory to complete this operation.";

}  // namespace

namespace mgmem {

bool OutOfMemoryRetry(MemZone* zone, int64_t size) {
    const int32_t size32 = static_cast<int32_t>(size);
    if (zone->growCallback && zone->growCallback(size32, 0) != 0) return true;
    MemSetOutOfMemory(size32, 0);
    return false;
}

}  // namespace mgmem

extern "C" {

int32_t MemSetOutOfMemory(int32_t size, int32_t data) {
    if (gOutOfMemory.size != 0) return 1;
    gOutOfMemory.size = size;
    gOutOfMemory.data = data;
    return 0;
}

int32_t MemOutOfMemoryInfo(int32_t* out) {
    const bool held = gOutOfMemory.size != 0;
    if (out) {
        out[0] = held ? gOutOfMemory.data : 0;
        out[1] = held ? gOutOfMemory.size : 0;
        if (held) {
            out[2] = 0;
            out[3] = 0;
        }
    }
    return held ? 1 : 0;
}

void MemClearOutOfMemory(void) {
    gOutOfMemory = OutOfMemoryRecord{};
}

}  // extern "C"

extern "C" {

Handle MemSetMessageTable(Handle table) {
    gMessageTable = table;
    return table;
}

void MemReportOutOfMemory(int32_t index, int32_t flags) {
    if (gOutOfMemory.size == 0) return;
    MG_CHECK((flags & ~7) == 0);
    MG_CHECK(index >= 0);
    ConstPStr text = gMessageTable ? PListGet(gMessageTable, index)
                                   : reinterpret_cast<ConstPStr>(kBuiltInMessage);
    if (flags & 4) DPrintf("%p", text);
    MemClearOutOfMemory();
}

}  // extern "C"
