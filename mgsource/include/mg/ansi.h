// String, character and block primitives, integer and byte-order tools, and floating-point
// tests: the innermost layer, which allocates nothing.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// Character classes, ASCII only; each answers 1 or 0.
int32_t IsDigitChar(uint32_t c);
int32_t IsAlphaChar(uint32_t c);
int32_t IsPunctChar(uint32_t c);
int32_t IsLowerChar(uint32_t c);
int32_t IsUpperChar(uint32_t c);

// Case mapping through the platform. A value with bits above the low 16 comes back as it is.
uint32_t CharToLower(uint32_t c);
uint32_t CharToUpper(uint32_t c);
void BufToUpper(uint8_t* buffer, int32_t length);
void BufToLower(uint8_t* buffer, int32_t length);
void LStrToUpper(LStrHandle text);
void LStrToLower(LStrHandle text);

// NUL-terminated text.
int32_t StrLen(const char* s);
char* StrCpy(char* dest, const char* src);
char* StrNCpy(char* dest, const char* src, int32_t n);
int32_t StrCat(char* dest, const char* src);
int32_t StrCmp(const char* a, const char* b);
int32_t StrEqual(const char* a, const char* b);
int32_t StrNCmp(const char* a, const char* b, int32_t n);
int32_t StrNEqual(const char* a, const char* b, int32_t n);
int32_t StrCaseCmp(const char* a, const char* b);
int32_t StrNCaseCmp(const char* a, const char* b, int32_t n);

// Blocks. The source comes first; BlockMove is safe for overlapping ranges.
void BlockMove(const void* src, void* dst, int32_t n);
void BlockSwap(void* a, void* b, int32_t n);
int32_t BlockClear(void* p, int32_t n);

// Integers.
int32_t MinInt32(int32_t a, int32_t b);
int32_t MaxInt32(int32_t a, int32_t b);
int32_t ModFloored(int32_t a, int32_t b);
int32_t PinToRange(int32_t value, int32_t low, int32_t high);
int32_t RoundToMultiple(int32_t value, int32_t m);
int32_t DoubleToInt32(double x);
char ToHexDigit(int32_t i);

// Byte order, in place.
void Swap16(void* p);
void Swap32(void* p);
void Swap64(void* p);
void SwapHalves32(void* p);

// Floating-point classes of FloatClass.
enum {
    FloatClassFinite = 0,
    FloatClassNegInfinity = 1,
    FloatClassPosInfinity = 2,
    FloatClassNaN = 3
};
int32_t FloatClass(const void* number, NumType type);
int32_t IsNaNValue(double x);
int32_t IsInfValue(double x);
int32_t SinCosPair(double x, double* sine, double* cosine);
double Log1Plus(double x);

MG_EXTERN_C_END
