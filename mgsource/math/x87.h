// The floating-point unit's own operations, one function each, for the kernel and the
// decimal crossings. On x86 they are the x87 instructions themselves (x87.cpp); elsewhere
// x87_soft.cpp stands in with the C library on the host's long double.
#pragma once

#include <stdint.h>

// The unit is used on x86 unless MG_SOFT_EXTENDED asks for the stand-ins (to test them).
#if (defined(__i386__) || defined(__x86_64__)) && !defined(MG_SOFT_EXTENDED)
#define MG_HAVE_X87 1
#else
#define MG_HAVE_X87 0
#endif

namespace x87 {

// Classes of Examine, from the unit's condition codes.
enum {
    ClassUnsupported,
    ClassNaN,
    ClassNormal,
    ClassInfinity,
    ClassZero,
    ClassEmpty,
    ClassDenormal
};
// The class of x; *negative is set from its sign bit.
int Examine(long double x, int* negative);

long double YLog2X(long double y, long double x);       // y * log2(x)
long double YLog2XPlus1(long double y, long double x);  // y * log2(1 + x), |x| < 1 - sqrt(2)/2
long double TwoToXMinusOne(long double x);              // 2^x - 1 for |x| <= 1
long double Scale(long double x, long double n);        // x * 2^trunc(n)
long double RoundToInteger(long double x);              // in the current rounding mode
void SinCos(long double x, long double* sine, long double* cosine);
long double ArcTangent(long double y, long double x);  // the angle of (x, y)
long double SquareRoot(long double x);

// The unit's constants, as its load-constant instructions give them.
long double Log2Ten();
long double Log2E();
long double Log10Two();
long double LnTwo();
long double Pi();

// The 18-digit packed decimal store (rounding in the current mode) and load. Out-of-range
// values store the unit's decimal indefinite.
void StorePacked(long double x, uint8_t out[10]);
long double LoadPacked(const uint8_t in[10]);

// Integer stores in the current rounding mode; *invalid is set to 1 when the unit raised
// its invalid flag (NaN or out of range: the integer indefinite is stored).
int16_t StoreInt16(long double x, int* invalid);
int32_t StoreInt32(long double x, int* invalid);
int64_t StoreInt64(long double x, int* invalid);
// Floor of x as a 32-bit integer, by a store with the rounding mode set to down.
int32_t FloorToInt32(long double x);

// Reset the unit: all exceptions masked, 64-bit mantissa, round to nearest.
void Reset();
// 1 when the tag word shows every register empty.
int StackEmpty();

// The whole unit state, for code that needs more registers than a caller may have free.
struct State {
    alignas(16) uint8_t bytes[128];
};
void SaveState(State* s);
void RestoreState(const State* s);

}  // namespace x87
