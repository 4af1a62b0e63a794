// Packed lists of PStrs: a 32-bit count, then the strings back to back. Lookup is a walk
// from the front.
#include <string.h>

#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/lists.h"
#include "mg/memory.h"
#include "mg/pstring.h"

MG_SOURCE_IDENTITY("mgsource\\support2\\plist.cpp", "$Revision: 1 $");

namespace {

int32_t CountOf(Handle list) {
    int32_t count;
    memcpy(&count, *list, 4);
    return count;
}

void SetCount(Handle list, int32_t count) {
    memcpy(*list, &count, 4);
}

// Offset of element `index` (at most count), walking the elements before it.
int32_t OffsetOf(const uint8_t* block, int32_t index) {
    int32_t at = 4;
    for (int32_t i = 0; i < index; ++i) at += 1 + block[at];
    return at;
}

int32_t BytesInUse(Handle list) {
    return OffsetOf(*list, CountOf(list) < 0 ? 0 : CountOf(list));
}

bool HasBlock(Handle list) {
    return list != nullptr && *list != nullptr;
}

}  // namespace

extern "C" {

ConstPStr PListGet(Handle list, int32_t index) {
    MG_CHECK(list != nullptr);
    const int32_t count = CountOf(list);
    if (index > count - 1) index = count - 1;
    if (index < 0) index = 0;
    return *list + OffsetOf(*list, index);
}

MgStatus PListInsert(Handle list, ConstPStr string, int32_t index, int32_t exact) {
    MG_CHECK(list != nullptr && string != nullptr);
    if (!HasBlock(list) || !string) return MgBadArgument;
    const int32_t count = CountOf(list);
    const int32_t used = BytesInUse(list);
    const int32_t needed = used + 1 + string[0];
    if (exact || MemHandleSize(list) < needed) {
        if (MgStatus status = MemResizeHandle(list, needed)) return status;
    }
    index = PinToRange(index, 0, count < 0 ? 0 : count);
    const int32_t at = OffsetOf(*list, index);
    BlockMove(*list + at, *list + at + 1 + string[0], used - at);
    BlockMove(string, *list + at, 1 + string[0]);
    SetCount(list, count + 1);
    return MgNoError;
}

MgStatus PListInsertExact(Handle list, ConstPStr string, int32_t index) {
    return PListInsert(list, string, index, 1);
}

// The result of the shrink is of no interest: a larger block holds the list as well.
int32_t PListDelete(Handle list, int32_t index) {
    MG_CHECK(list != nullptr);
    if (!HasBlock(list)) return 0;
    const int32_t count = CountOf(list);
    if (count < 1) return count;
    index = PinToRange(index, 0, count - 1);
    const int32_t used = BytesInUse(list);
    const int32_t at = OffsetOf(*list, index);
    const int32_t gone = 1 + (*list)[at];
    BlockMove(*list + at + gone, *list + at, used - at - gone);
    MemResizeHandle(list, used - gone);
    SetCount(list, count - 1);
    return count - 1;
}

MgStatus PListClear(Handle list) {
    if (!HasBlock(list)) return MgBadArgument;
    if (MgStatus status = MemResizeHandle(list, 4)) return status;
    SetCount(list, 0);
    return MgNoError;
}

MgStatus PListSetEmptyString(Handle list) {
    if (!HasBlock(list)) return MgBadArgument;
    if (MgStatus status = MemResizeHandle(list, 5)) return status;
    SetCount(list, 1);
    (*list)[4] = 0;
    return MgNoError;
}

// Grows before the tail moves up, or shrinks after it has moved down, so the tail always
// lies inside the block.
MgStatus PListReplace(Handle list, ConstPStr string, int32_t index) {
    MG_CHECK(list != nullptr && string != nullptr);
    if (!HasBlock(list) || !string) return MgBadArgument;
    const int32_t count = CountOf(list);
    const int32_t used = BytesInUse(list);
    index = PinToRange(index, 0, count - 1);
    const int32_t at = OffsetOf(*list, index);
    // A list without elements has no old string to replace: the new one goes at the start.
    const int32_t oldBytes = count < 1 ? 0 : 1 + (*list)[at];
    const int32_t newBytes = 1 + string[0];
    const int32_t tail = used - at - oldBytes;
    if (newBytes > oldBytes) {
        if (MgStatus status = MemResizeHandle(list, used + newBytes - oldBytes)) return status;
    }
    BlockMove(*list + at + oldBytes, *list + at + newBytes, tail);
    BlockMove(string, *list + at, newBytes);
    if (newBytes < oldBytes) MemResizeHandle(list, used + newBytes - oldBytes);
    return MgNoError;
}

int32_t PListFind(Handle list, const void* key, PListPredicate predicate) {
    MG_CHECK(list != nullptr && predicate != nullptr);
    if (!HasBlock(list) || !predicate) return -1;
    const int32_t count = CountOf(list);
    int32_t at = 4;
    for (int32_t i = 0; i < count; ++i) {
        ConstPStr element = *list + at;
        if (predicate(key, &element) == 0) return i;
        at += 1 + (*list)[at];
    }
    return -1;
}

// Element 0 can't be the second of a pair, so 0 is free to mean "none".
int32_t PListFirstDuplicate(const uint8_t* block) {
    int32_t count;
    memcpy(&count, block, 4);
    int32_t at = 4;
    for (int32_t i = 0; i < count; ++i) {
        int32_t before = 4;
        for (int32_t j = 0; j < i; ++j) {
            if (PStringSame(block + before, block + at)) return i;
            before += 1 + block[before];
        }
        at += 1 + block[at];
    }
    return 0;
}

ConstPStr PList16Get(const uint8_t* block, int32_t index) {
    int16_t count;
    memcpy(&count, block, 2);
    if (index < 0 || index >= count) return nullptr;
    const uint8_t* p = block + 2;
    for (int32_t i = 0; i < index; ++i) p += 1 + p[0];
    return p;
}

}  // extern "C"
