// Text to numbers: integer scanners by radix that saturate to their target type, the
// decimal scanner behind every float, and the SI prefix pre-pass.
#pragma once

#include "mg/numtext.h"

MG_EXTERN_C_BEGIN

// States of ScanDecimal; the low byte is free so that state plus character is one key.
enum {
    ScanEnd = 0,
    ScanStart = 0x3100,
    ScanSigned = 0x3200,
    ScanInteger = 0x3300,
    ScanFraction = 0x3400,
    ScanIntegerEnd = 0x3500,
    ScanExponentStart = 0x3600,
    ScanExponentSign = 0x3700,
    ScanExponentDigits = 0x3800,
    ScanFractionFull = 0x3900,
};

// Fills decimal (mdigits holds the digit count); 1 if every character fitted the grammar.
int32_t ScanDecimal(const char* text, int32_t length, DecimalNumber* decimal, char mark);
// The end of the longest float at text, or text when there is none.
const char* FindNumberEnd(const char* text, int32_t length, char mark);

// Integer scanners: advance *position past what they used; the value in 32 bits.
int32_t ScanInt(const char** position, int32_t length, NumType type);
int32_t ScanUInt(const char** position, int32_t length, NumType type);
int32_t ScanHex(const char** position, int32_t length, NumType type);
int32_t ScanOctal(const char** position, int32_t length, NumType type);
int32_t ScanBinary(const char** position, int32_t length, NumType type);
// One digit into *accumulator; 1 on overflow (the accumulator then holds the limit).
int32_t DigitAccumulate(uint32_t* accumulator, int32_t character, NumType type, int32_t negative,
                        int32_t radix);
int32_t SaturateToType(int32_t value, NumType type, int32_t fromUnsigned, int32_t clampNegative);
// Scans by format code (65 unsigned, 66 hex, 67 octal, 68 binary, else signed) and stores in
// the type's width; 1 only when the text was used up to trailing blanks.
int32_t ScanNumberText(const char* text, int32_t length, NumType type, void* out, int32_t code);

// Floats. A nonzero high 16 bits of the type word asks for SI prefixes.
Extended ScanExtended(const char** position, int32_t length, char mark, int32_t withPrefix);
void ScanFloat(const char** position, int32_t length, int32_t useSystemMark, NumType type,
               void* out);
void ScanFloatMark(const char** position, int32_t length, NumType type, void* out, char mark);

// The SI pre-pass: the end of a number with a prefix (or text), and its rewrite with an
// exponent in place of the prefix (0 when the text is not of that form).
const char* FindPrefixEnd(const char* text, int32_t length, char mark);
int32_t ExpandPrefix(const char* text, int32_t length, char* out, int32_t outSize, char mark);

MG_EXTERN_C_END
