// Small text algorithms over counted strings: wildcard match, character stepping, line-end
// conversion, hashing, suffix test and GUIDs.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// Compares n bytes of two spans; 0 when they agree.
typedef int32_t (*TextCompareN)(const char* a, const char* b, int32_t n);

int32_t WildMatch(const uint8_t* pattern, const uint8_t* text, int32_t patternLength,
                  int32_t textLength, TextCompareN compare, uint8_t escape, uint8_t barrier);
int32_t FindWildcard(const uint8_t* pattern, int32_t* position, int32_t length, uint8_t escape);
// Index of the character after the one at `index`; a null font table steps by one byte.
int32_t TextStep(const uint8_t* text, int32_t index, const void* fontTable);

MgStatus ConvertLineEndsToCRLF(Handle handle, int32_t start, int32_t mainZone, int32_t wide);
MgStatus ConvertLineEndsToLF(Handle handle, int32_t start, int32_t mainZone, int32_t wide);
MgStatus LStringLFToCRLF(LStrHandle handle);
MgStatus LStringTerminate(LStrHandle handle, int32_t compactZone);
void PStringFromShortCount(Handle handle, LStr* l);
int32_t PStringOrderL(ConstPStr p, const LStr* l);
int32_t PStringOrderLNoCase(ConstPStr p, const LStr* l);
uint32_t PStringHash(ConstPStr p, int32_t upperFirst);
int32_t PStringEndsWith(ConstPStr p, const char* suffix);
MgStatus NewGUID(uint8_t guid[16]);

MG_EXTERN_C_END
