// Counted strings: conversions between NUL-terminated text, PStr and LStr, copies and
// comparisons. Nothing here allocates; destinations are the caller's.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

extern uint8_t gTempPString[256];

// Conversions; each returns the number of characters stored.
int32_t PStringToText(ConstPStr p, char* text);
int32_t TextToPString(const char* text, PStr p);
int32_t LStringToPString(const LStr* l, PStr p);
int32_t PStringToLString(ConstPStr p, LStr* l);
int32_t LStringToText(const LStr* l, char* text);
int32_t TextToLString(const char* text, LStr* l);
PStr TempPString(const char* text);

// Copies and joins.
PStr PStringCopy(PStr dest, ConstPStr src);
PStr PStringCopyLimited(PStr dest, ConstPStr src, int32_t size);
int32_t PStringAppend(PStr dest, ConstPStr src);

// Element `index` of a packed PStr list, the index clamped to the elements there are; the
// pointer lies in the block and is valid until the handle moves.
ConstPStr PListGet(Handle list, int32_t index);

// PStr comparisons.
int32_t PStringOrder(ConstPStr a, ConstPStr b);
int32_t PStringSame(ConstPStr a, ConstPStr b);
int32_t PStringOrderNoCase(ConstPStr a, ConstPStr b);
int32_t PStringSameNoCase(ConstPStr a, ConstPStr b);
int32_t PStringOrderIndirect(const void* a, const void* b);
int32_t PStringSameIndirect(const void* a, const void* b);
int32_t PStringOrderNoCaseIndirect(const void* a, const void* b);
int32_t PStringSameNoCaseIndirect(const void* a, const void* b);

// LStr and span comparisons; a null LStr stands for the empty string.
int32_t LStringOrder(const LStr* a, const LStr* b);
int32_t LStringSame(const LStr* a, const LStr* b);
int32_t LStringOrderNoCase(const LStr* a, const LStr* b);
int32_t LStringSameNoCase(const LStr* a, const LStr* b);
int32_t LHandleOrder(LStrHandle a, LStrHandle b);
int32_t LHandleSame(LStrHandle a, LStrHandle b);
int32_t LHandleOrderNoCase(LStrHandle a, LStrHandle b);
int32_t BytesOrder(const uint8_t* a, int32_t aLength, const uint8_t* b, int32_t bLength);
int32_t BytesOrderNoCase(const uint8_t* a, int32_t aLength, const uint8_t* b, int32_t bLength);

// NUL-terminated text and plain bytes.
int32_t TextOrderNoCaseN(const char* a, const char* b, int32_t n);
int32_t TextSameNoCaseN(const char* a, const char* b, int32_t n);
int32_t MemOrder(const void* a, const void* b, int32_t n);
int32_t TextContainsNoBlanks(const char* text, const char* pattern);

MG_EXTERN_C_END
