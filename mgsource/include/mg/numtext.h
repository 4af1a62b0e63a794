// Numbers as text: the packed decimal form every float passes through, the number writer
// with its format codes, and the radix writers.
#pragma once

#include "mg/math.h"

MG_EXTERN_C_BEGIN

// 18 packed decimal digits (digit i in the low nibble of byte i/2 if i is even, the high
// nibble if odd), a sign byte, and a signed exponent: the value is the digits as an integer
// times ten to the exponent. mdigits is the index of the leading digit.
typedef struct DecimalNumber {
    uint8_t digits[9];
    uint8_t sign;
    int16_t exponent;
    int16_t mdigits;
} DecimalNumber;

enum { DecimalSignNegative = 0x80, DecimalExponentInfinity = 32767, DecimalExponentNaN = 32766 };

// Format codes of NumToText: -63..0 fixed with -code places, 1..63 exponent form with code
// digits, 64..68 integers (decimal, unsigned, hex, octal, binary), 100..130 SI and
// 131..162 engineering notation.
enum {
    NumCodeDecimal = 64,
    NumCodeUnsigned = 65,
    NumCodeHex = 66,
    NumCodeOctal = 67,
    NumCodeBinary = 68,
    NumCodeSI = 100,
    NumCodeEngineering = 131,
};

// Writes the number (null allowed) as text with a NUL; the result is the length.
int32_t NumToText(const void* number, NumType type, int32_t code, char* out, int32_t outSize,
                  char mark, int32_t* prefixExponent);
// The same with the system's decimal mark, with and without prefixExponent.
int32_t NumToTextSystemMark(const void* number, NumType type, int32_t code, char* out,
                            int32_t outSize, int32_t* prefixExponent);
int32_t NumToTextSimple(const void* number, NumType type, int32_t code, char* out, int32_t outSize);

int32_t NumToInt32(NumType type, const void* number);
uint32_t NumToUInt32(NumType type, const void* number);

// Engineering notation with frac places behind the mark. With prefixExponent, an exponent
// from -24 to 24 is stored there instead of being written.
int32_t NumToEngineering(const void* number, NumType type, int32_t frac, int32_t outSize, char* out,
                         char mark, int32_t* prefixExponent);
// SI notation: -1 when prefixExponent holds 100, -2 when the exponent has no prefix.
int32_t NumToSI(const void* number, NumType type, int32_t frac, int32_t outSize, char* out,
                char mark, int32_t* prefixExponent);
// SI notation, falling back to engineering notation.
int32_t NumToSIOrEngineering(const void* number, NumType type, int32_t frac, int32_t outSize,
                             char* out, char mark, int32_t* prefixExponent);

// The decimal form as text, without a NUL; the result is the length.
int32_t DecimalToText(const DecimalNumber* decimal, int32_t code, char* out, int32_t maxLength,
                      char mark);
// digits > 0: that many significant digits; digits <= 0: -digits places behind the mark.
void ExtendedToDecimal(Extended value, int32_t digits, DecimalNumber* decimal);
Extended DecimalToExtended(const DecimalNumber* decimal);

// Ten to the powers 0 and 2^k (k = 0..12), filled at start-up.
extern Extended PowerOfTenTable[14];
void PowerOfTenTableFill(void);

// The SI prefixes: exponent 0 with the empty text first, then -24 to 24 by threes.
typedef struct SIPrefix {
    int32_t exponent;
    const char* text;
} SIPrefix;
extern const SIPrefix SIPrefixTable[17];

// Radix writers: digits, a NUL, and the length. Buffers of 13 (decimal, octal),
// 9 (hexadecimal) and 33 (binary) bytes.
int32_t Int32ToDecimalText(int32_t value, char* out);
int32_t UInt32ToDecimalText(uint32_t value, char* out);
int32_t UInt32ToHexText(uint32_t value, char* out);
int32_t UInt32ToOctalText(uint32_t value, char* out);
int32_t UInt32ToBinaryText(uint32_t value, char* out);

MG_EXTERN_C_END
