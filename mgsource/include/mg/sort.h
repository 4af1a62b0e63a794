// Sort and search over arrays of elements of any size, with the caller's comparison. The sort
// is an in-place quicksort with an explicit stack: no recursion, no allocation.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// Orders two elements: below 0, 0 or above 0.
typedef int32_t (*SortCompare)(const void* a, const void* b);
// The same with the caller's context word in front.
typedef int32_t (*SortContextCompare)(void* context, const void* a, const void* b);

// Sorts `count` elements of `size` bytes in place. Not stable.
void SortArray(void* base, int32_t count, int32_t size, SortCompare compare);
// Elements lie `stride` bytes apart; the first `swapSize` bytes of each are exchanged.
void SortArrayStride(void* base, int32_t count, int32_t swapSize, int32_t stride,
                     SortCompare compare);
void SortArrayContext(void* base, int32_t count, int32_t swapSize, int32_t stride,
                      SortContextCompare compare, void* context);

// `compare` gets `key` first, then an element. Answers the index of a match, or else
// -(insertion index) - 1; an empty array gives -1.
int32_t BinarySearch(const void* base, int32_t count, int32_t size, const void* key,
                     SortCompare compare);

// Exchange `size` bytes of two elements in units of 4, 2 or 1 bytes; `size` must be a
// multiple of the unit.
void SwapLongs(void* a, void* b, int32_t size);
void SwapShorts(void* a, void* b, int32_t size);
void SwapBytes(void* a, void* b, int32_t size);

MG_EXTERN_C_END
