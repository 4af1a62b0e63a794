// HObjList: a growable list of 32-bit object references in one main-zone handle, front to
// back (index 0 is the front). The block holds a 32-bit count, then the items; its size is
// kept a multiple of 16 as it changes and may exceed what the items need.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

typedef Handle HObjList;

// Inserts at `index`, pinned to 0..count; the status of a failed growth, else 0.
MgStatus HObjListInsert(HObjList list, uint32_t item, int32_t index);
// Removes and returns the item at `index`, pinned to the items there are; 0 when empty.
uint32_t HObjListRemoveAt(HObjList list, int32_t index);
// The last index holding `item`, or -1.
int32_t HObjListIndexOf(HObjList list, uint32_t item);
// Removes the last occurrence of `item`: 1 if there was one, else 0.
int32_t HObjListRemove(HObjList list, uint32_t item);
// Moves `item` to the front: 1 if it moved, 0 if it was first already or isn't there.
int32_t HObjListBringToFront(HObjList list, uint32_t item);
// Drops the zero items, keeping the order; the status of a failed shrink, else 0.
MgStatus HObjListCompact(HObjList list);

MG_EXTERN_C_END
