// Packed lists of LStrs: a 32-bit count, then the strings, each padded with zeros to a
// multiple of 4 so that every count word stays aligned.
#include <string.h>

#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/lists.h"
#include "mg/memory.h"

MG_SOURCE_IDENTITY("mgsource\\support2\\llist.cpp", "$Revision: 1 $");

namespace {

int32_t Read32(const uint8_t* p) {
    int32_t v;
    memcpy(&v, p, 4);
    return v;
}

void Write32(uint8_t* p, int32_t v) {
    memcpy(p, &v, 4);
}

int32_t Padded(int32_t length) {
    return (length + 3) & ~3;
}

int32_t ElementBytes(const uint8_t* element) {
    return 4 + Padded(Read32(element));
}

// Offset of element `index` (at most count).
int32_t OffsetOf(const uint8_t* block, int32_t index) {
    int32_t at = 4;
    for (int32_t i = 0; i < index; ++i) at += ElementBytes(block + at);
    return at;
}

int32_t SizeOf(Handle h, int32_t mainZone) {
    return mainZone ? MemHandleSize(h) : CompactHandleSize(h);
}

MgStatus Resize(Handle h, int32_t size, int32_t mainZone) {
    return mainZone ? MemResizeHandle(h, size) : CompactResizeHandle(h, size);
}

}  // namespace

extern "C" {

LStr* LListGet(uint8_t* block, int32_t index) {
    MG_CHECK(block != nullptr);
    if (!block) return nullptr;
    const int32_t count = Read32(block);
    index = PinToRange(index, 0, count - 1);
    return reinterpret_cast<LStr*>(block + OffsetOf(block, index));
}

int32_t LListBytes(const uint8_t* block) {
    const int32_t count = Read32(block);
    return OffsetOf(block, count < 0 ? 0 : count);
}

MgStatus LListInsert(Handle list, const LStr* string, int32_t index, int32_t mainZone,
                     int32_t exact) {
    MG_CHECK(list != nullptr && string != nullptr);
    if (!list || !*list || !string || string->count < 0) return MgBadArgument;
    const int32_t count = Read32(*list);
    const int32_t used = LListBytes(*list);
    const int32_t length = string->count;
    const int32_t bytes = 4 + Padded(length);
    if (int64_t{used} + bytes > INT32_MAX) return MgNoMemory;
    const int32_t needed = used + bytes;
    if (exact || SizeOf(list, mainZone) < needed) {
        if (MgStatus status = Resize(list, needed, mainZone)) return status;
    }
    index = PinToRange(index, 0, count < 0 ? 0 : count);
    const int32_t at = OffsetOf(*list, index);
    uint8_t* block = *list;
    BlockMove(block + at, block + at + bytes, used - at);
    Write32(block + at, length);
    BlockMove(string->text, block + at + 4, length);
    BlockClear(block + at + 4 + length, bytes - 4 - length);
    Write32(block, count + 1);
    return MgNoError;
}

MgStatus LListInsertSorted(Handle list, const LStr* string, int32_t allowDuplicates,
                           int32_t* foundIndex, int32_t* inserted, int32_t mainZone,
                           int32_t exact) {
    MG_CHECK(list != nullptr && string != nullptr);
    *inserted = 0;
    *foundIndex = 0;
    if (!list || !*list || !string) return MgBadArgument;
    const int32_t count = Read32(*list);
    int32_t at = 4, i = 0;
    int32_t order = -1;
    for (; i < count; ++i) {
        const LStr* element = reinterpret_cast<const LStr*>(*list + at);
        if ((order = LStringOrder(element, string)) >= 0) break;
        at += ElementBytes(*list + at);
    }
    *foundIndex = i;
    if (!allowDuplicates && i < count && order == 0) return MgNoError;
    *inserted = 1;
    return LListInsert(list, string, i, mainZone, exact);
}

// The result of the shrink is of no interest: a larger block holds the list as well.
int32_t LListDelete(Handle list, int32_t index, int32_t mainZone) {
    if (!list || !*list) return 0;
    const int32_t count = Read32(*list);
    if (count < 1) return count;
    index = PinToRange(index, 0, count - 1);
    const int32_t used = LListBytes(*list);
    const int32_t at = OffsetOf(*list, index);
    const int32_t gone = ElementBytes(*list + at);
    BlockMove(*list + at + gone, *list + at, used - at - gone);
    Resize(list, used - gone, mainZone);
    Write32(*list, count - 1);
    return count - 1;
}

void LListSwap(Handle list) {
    MG_CHECK(list != nullptr && *list != nullptr);
    if (!list || !*list) return;
    const int64_t size = MemHandleSize(list);
    uint8_t* block = *list;
    // Every count word is checked to lie inside the block before it is touched.
    bool fits = size >= 4;
    if (fits) Swap32(block);
    const int32_t count = fits ? Read32(block) : 0;
    int64_t at = 4;
    for (int32_t i = 0; fits && i < count; ++i) {
        if (!(fits = at + 4 <= size)) break;
        Swap32(block + at);
        const int32_t length = Read32(block + at);
        if (!(fits = length >= 0)) break;
        at += 4 + ((int64_t{length} + 3) & ~int64_t{3});
    }
    MG_CHECK(fits && count >= 0 && at == size);
}

}  // extern "C"
