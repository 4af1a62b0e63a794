// Numeric conversion between the fourteen number types, and the extended-precision kernel.
// Every value crosses through Extended, the 80-bit float with a 64-bit mantissa.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// The number types, held in the low 4 bits of a type word.
enum {
    NumNone = 0,
    NumIB = 1,
    NumIW = 2,
    NumIL = 3,
    NumIQ = 4,
    NumUB = 5,
    NumUW = 6,
    NumUL = 7,
    NumUQ = 8,
    NumFS = 9,
    NumFD = 10,
    NumFX = 11,
    NumCS = 12,
    NumCD = 13,
    NumCX = 14,
};

// Sizes in bytes and classes (0 signed, 1 unsigned, 2 float, 3 complex, 0x40 none) of the
// types; only the low 4 bits of the type word count.
int32_t NumTypeSize(NumType type);
int32_t NumTypeClass(NumType type);
// The size of fX in memory, for hosts whose extended is padded; cX takes twice that.
void SetExtendedSize(int32_t size);

// The 80-bit float of the unit; in memory (type fX) it takes 10 bytes.
typedef long double Extended;
// A complex value, or a real one with a zero imaginary part.
typedef struct ExtendedPair {
    Extended re;
    Extended im;
} ExtendedPair;

// Converts between any two types; integers keep their low bits, anything through a float
// saturates as NumStore does. The result has no meaning to callers.
int32_t NumConvert(NumType sourceType, const void* source, NumType targetType, void* target);
// The number as Extended; the imaginary part is 0 for types that are not complex.
ExtendedPair NumLoad(NumType type, const void* number);
// Stores the value in the type; 1 or 0 as the store succeeded (see numconvert.cpp).
int32_t NumStore(NumType type, void* number, ExtendedPair value);

// The 10-byte memory form of Extended.
Extended ExtendedRead(const void* bytes);
void ExtendedWrite(void* bytes, Extended value);

// The portable 16-byte big-endian form (the layout of a binary128).
uint8_t* ExtendedToPortable(Extended value, uint8_t* out);
void ExtendedFromPortable(const uint8_t* in, Extended* value);

// Complex number forms; both save the unit's state around their work.
void RectangularToPolar(Extended re, Extended im, Extended* magnitude, Extended* argument);
void PolarToRectangular(Extended magnitude, Extended argument, Extended* re, Extended* im);

// Real functions.
Extended ExpTwoMinusOne(Extended x);
Extended ExpTwo(Extended x);
Extended HyperSine(Extended x);
Extended HyperCosine(Extended x);
Extended HyperTangent(Extended x);
Extended ArcHyperSine(Extended x);
Extended ArcHyperCosine(Extended x);
Extended ArcHyperTangent(Extended x);
Extended LogOnePlus(Extended x);
Extended PowerReal(Extended x, Extended y);

// Complex functions.
ExtendedPair ComplexDivide(ExtendedPair a, ExtendedPair b);
ExtendedPair ComplexReciprocal(ExtendedPair z);
ExtendedPair ComplexSine(ExtendedPair z);
ExtendedPair ComplexCosine(ExtendedPair z);
ExtendedPair ComplexTangent(ExtendedPair z);
ExtendedPair ComplexCotangent(ExtendedPair z);
ExtendedPair ComplexHyperSine(ExtendedPair z);
ExtendedPair ComplexHyperCosine(ExtendedPair z);
ExtendedPair ComplexHyperTangent(ExtendedPair z);
ExtendedPair ComplexArcSine(ExtendedPair z);
ExtendedPair ComplexArcCosine(ExtendedPair z);
ExtendedPair ComplexArcHyperSine(ExtendedPair z);
ExtendedPair ComplexArcHyperCosine(ExtendedPair z);
ExtendedPair ComplexArcTangent(ExtendedPair z);

// Resets the unit: control word 0x37F (all exceptions masked, 64-bit mantissa, nearest).
void FloatInit(void);
// 1 when every register of the unit is empty.
int32_t FloatStateProbe(void);

MG_EXTERN_C_END
