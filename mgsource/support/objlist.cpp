// The object list: a count and 32-bit items in one main-zone handle, grown and shrunk in
// steps of 16 bytes so that a run of inserts or removals resizes rarely.
#include "mg/objlist.h"

#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/memory.h"

MG_SOURCE_IDENTITY("mgsource\\support\\objlist.cpp", "$Revision: 1 $");

namespace {

constexpr int32_t kItem = 4;

int32_t& Count(HObjList list) {
    return *reinterpret_cast<int32_t*>(*list);
}
uint32_t* Items(HObjList list) {
    return reinterpret_cast<uint32_t*>(*list + kItem);
}

}  // namespace

extern "C" {

MgStatus HObjListInsert(HObjList list, uint32_t item, int32_t index) {
    MG_CHECK(list != nullptr);
    if (!list) return MgBadArgument;
    const int32_t count = Count(list);
    const int32_t size = MemHandleSize(list);
    if (size < 2 * kItem + kItem * count) {
        if (MgStatus status = MemResizeHandle(list, (size + 16) & ~15)) return status;
    }
    index = PinToRange(index, 0, count);
    uint32_t* items = Items(list);
    BlockMove(items + index, items + index + 1, (count - index) * kItem);
    items[index] = item;
    Count(list) = count + 1;
    return MgNoError;
}

uint32_t HObjListRemoveAt(HObjList list, int32_t index) {
    MG_CHECK(list != nullptr);
    if (!list) return 0;
    const int32_t count = Count(list);
    if (count < 1) return 0;
    index = PinToRange(index, 0, count - 1);
    uint32_t* items = Items(list);
    const uint32_t item = items[index];
    BlockMove(items + index + 1, items + index, (count - 1 - index) * kItem);
    items[count - 1] = 0;
    Count(list) = count - 1;
    // Shrink only once 16 bytes of slack have built up; a failed shrink changes nothing.
    const int32_t size = MemHandleSize(list);
    if (size > 16 + kItem * count) MemResizeHandle(list, size % 16 == 0 ? size - 16 : size & ~15);
    return item;
}

int32_t HObjListIndexOf(HObjList list, uint32_t item) {
    MG_CHECK(list != nullptr);
    if (!list) return -1;
    const uint32_t* items = Items(list);
    for (int32_t i = Count(list) - 1; i >= 0; --i)
        if (items[i] == item) return i;
    return -1;
}

int32_t HObjListRemove(HObjList list, uint32_t item) {
    const int32_t at = HObjListIndexOf(list, item);
    if (at < 0) return 0;
    HObjListRemoveAt(list, at);
    return 1;
}

int32_t HObjListBringToFront(HObjList list, uint32_t item) {
    const int32_t at = HObjListIndexOf(list, item);
    if (at < 0) {
        DPrintf("HObjListBringToFront: object not found!!!");
        return 0;
    }
    if (at == 0) return 0;
    uint32_t* items = Items(list);
    BlockMove(items, items + 1, at * kItem);
    items[0] = item;
    return 1;
}

MgStatus HObjListCompact(HObjList list) {
    MG_CHECK(list != nullptr);
    if (!list) return MgBadArgument;
    const int32_t old = Count(list);
    uint32_t* items = Items(list);
    int32_t kept = 0;
    for (int32_t i = 0; i < old; ++i)
        if (items[i] != 0) items[kept++] = items[i];
    for (int32_t i = kept; i < old; ++i) items[i] = 0;
    Count(list) = kept;
    const int32_t fitted = (kItem * kept + 19) & ~15;
    if (MemHandleSize(list) > fitted) return MemResizeHandle(list, fitted);
    return MgNoError;
}

}  // extern "C"
