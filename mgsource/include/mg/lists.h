// Packed string lists in one handle, with no allocation per element, and the routines that
// grow an LStr in its handle.
//
// PList: a main-zone handle holding a 32-bit count, then that many PStrs back to back. Its
// bytes in use are 4 plus (1 + length) of each element; the handle may be larger. PListGet
// is declared with the counted strings (mg/pstring.h).
// PList16: the same with a 16-bit count in host order, read by pointer.
// LList: a handle holding a 32-bit count, then LStrs, each padded with zeros to a multiple of
// 4, so that an element takes 4 + ((length + 3) & ~3) bytes and count words stay aligned.
//
// Null lists and strings are failed checks, except where a routine says it returns 1.
#pragma once

#include "mg/pstring.h"

MG_EXTERN_C_BEGIN

// A comparison of the kind that sort and search take: 0 is a match. PListFind passes its key
// as given and the address of a pointer to the element, so that the ...Indirect comparisons
// of mg/pstring.h serve with the address of a PStr pointer as key.
typedef int32_t (*PListPredicate)(const void* key, const void* element);

// Inserts at `index` (pinned to 0..count). With `exact` 0 a large enough handle keeps its
// size; otherwise it is resized to exactly the bytes needed. A failed resize changes nothing.
MgStatus PListInsert(Handle list, ConstPStr string, int32_t index, int32_t exact);
MgStatus PListInsertExact(Handle list, ConstPStr string, int32_t index);
// Deletes element `index` (pinned to the elements there are), shrinks the handle to the bytes
// in use and returns the new count. An empty list is left alone.
int32_t PListDelete(Handle list, int32_t index);
// An empty list (4 bytes), or a list of one empty string (5 bytes); 1 for a null list or a
// handle without a block.
MgStatus PListClear(Handle list);
MgStatus PListSetEmptyString(Handle list);
// Replaces element `index`, pinned as PListGet pins; the count stays. On a list of count 0 the
// string is stored at the start and the count stays 0.
MgStatus PListReplace(Handle list, ConstPStr string, int32_t index);
// Index of the first element for which `predicate(key, &element)` gives 0, or -1.
int32_t PListFind(Handle list, const void* key, PListPredicate predicate);
// The first index whose element equals (PStringSame) one before it; 0 when there is none.
int32_t PListFirstDuplicate(const uint8_t* block);
// Element `index` of a PList16, or null when `index` is negative or not below the count.
ConstPStr PList16Get(const uint8_t* block, int32_t index);

// Element `index` of an LList block, pinned to the elements there are.
LStr* LListGet(uint8_t* block, int32_t index);
// Bytes in use, count word included.
int32_t LListBytes(const uint8_t* block);
// Inserts at `index` (negative: 0; at or past the end: appended). `mainZone` nonzero for a
// main-zone handle, 0 for the compact zone. With `exact` nonzero the handle is resized to
// exactly the bytes needed, otherwise only when it is too small.
MgStatus LListInsert(Handle list, const LStr* string, int32_t index, int32_t mainZone,
                     int32_t exact);
// Inserts before the first element that isn't below `string` (LStringOrder), whose index goes
// to `foundIndex`. Without `allowDuplicates`, an equal element there means no insert: 0 in
// `inserted` and status 0.
MgStatus LListInsertSorted(Handle list, const LStr* string, int32_t allowDuplicates,
                           int32_t* foundIndex, int32_t* inserted, int32_t mainZone, int32_t exact);
// Deletes element `index` (pinned), shrinks the handle, returns the new count.
int32_t LListDelete(Handle list, int32_t index, int32_t mainZone);
// Reverses the bytes of the count word and of every element's count word of a main-zone list
// read in the other byte order, walking by the swapped counts. A walk that doesn't end exactly
// at the handle's end is a failed check.
void LListSwap(Handle list);

// Appends `l` (null: empty) to the LStr in `handle`, growing the handle only when it is too
// small; the Exact forms then fit it to count + 4. Main zone, or the compact zone for the
// Compact forms. A failed resize changes nothing.
MgStatus LStringAppend(LStrHandle handle, const LStr* l);
MgStatus LStringAppendExact(LStrHandle handle, const LStr* l);
MgStatus LStringAppendCompact(LStrHandle handle, const LStr* l);
MgStatus LStringAppendCompactExact(LStrHandle handle, const LStr* l);
// Sets the compact-zone LStr of `*handleVariable` to `length` bytes, making the handle if it
// is null. A zero length or null bytes disposes of it and clears the variable. 1 for a null
// variable, 2 when no handle can be made.
MgStatus LStringAssign(LStrHandle* handleVariable, int32_t length, const uint8_t* bytes);

MG_EXTERN_C_END
