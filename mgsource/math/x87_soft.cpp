// Stand-ins for the x87 operations on processors without the unit. They run on the host's
// long double through the C library, which keeps the kernel building and working there; the
// last digit of the decimal crossings may differ from the unit's where the host's long
// double is narrower than 64 bits of mantissa.
#include "math/x87.h"

#if !MG_HAVE_X87

#include <cfenv>
#include <cmath>

namespace x87 {

int Examine(long double x, int* negative) {
    *negative = std::signbit(x) ? 1 : 0;
    switch (std::fpclassify(x)) {
        case FP_NAN:
            return ClassNaN;
        case FP_INFINITE:
            return ClassInfinity;
        case FP_ZERO:
            return ClassZero;
        case FP_SUBNORMAL:
            return ClassDenormal;
        default:
            return ClassNormal;
    }
}

long double YLog2X(long double y, long double x) {
    return y * std::log2(x);
}
long double YLog2XPlus1(long double y, long double x) {
    return y * std::log1p(x) / std::log(2.0L);
}
long double TwoToXMinusOne(long double x) {
    return std::expm1(x * std::log(2.0L));
}
long double Scale(long double x, long double n) {
    if (std::isinf(n)) return n > 0 ? x * HUGE_VALL : x * 0.0L;
    return std::scalbln(x, static_cast<long>(std::trunc(n)));
}
long double RoundToInteger(long double x) {
    return std::nearbyint(x);
}
void SinCos(long double x, long double* sine, long double* cosine) {
    *sine = std::sin(x);
    *cosine = std::cos(x);
}
long double ArcTangent(long double y, long double x) {
    return std::atan2(y, x);
}
long double SquareRoot(long double x) {
    return std::sqrt(x);
}

long double Log2Ten() {
    return 3.321928094887362347870319429489390175864831393L;
}
long double Log2E() {
    return 1.442695040888963407359924681001892137426645954L;
}
long double Log10Two() {
    return 0.301029995663981195213738894724493026768189881L;
}
long double LnTwo() {
    return 0.693147180559945309417232121458176568075500134L;
}
long double Pi() {
    return 3.141592653589793238462643383279502884197169399L;
}

void StorePacked(long double x, uint8_t out[10]) {
    long double r = std::nearbyint(x);
    for (int i = 0; i < 10; ++i) out[i] = 0;
    if (!(std::fabs(r) < 1e18L)) {
        out[7] = 0xC0;
        out[8] = out[9] = 0xFF;
        return;
    }
    uint64_t v = static_cast<uint64_t>(std::fabs(r));
    for (int i = 0; i < 18; ++i, v /= 10)
        out[i / 2] |= static_cast<uint8_t>((v % 10) << (i & 1 ? 4 : 0));
    out[9] = std::signbit(x) ? 0x80 : 0;
}

long double LoadPacked(const uint8_t in[10]) {
    long double v = 0;
    for (int i = 17; i >= 0; --i) v = v * 10 + ((in[i / 2] >> (i & 1 ? 4 : 0)) & 15);
    return in[9] & 0x80 ? -v : v;
}

namespace {
template <typename T>
T StoreInt(long double x, int* invalid) {
    long double r = std::nearbyint(x);
    // Bounds as powers of two, exact in every long double.
    const long double limit = std::ldexp(1.0L, static_cast<int>(sizeof(T) * 8 - 1));
    if (std::isnan(r) || r >= limit || r < -limit) {
        *invalid = 1;
        return static_cast<T>(static_cast<uint64_t>(1) << (sizeof(T) * 8 - 1));
    }
    *invalid = 0;
    return static_cast<T>(static_cast<int64_t>(r));
}
}  // namespace

int16_t StoreInt16(long double x, int* invalid) {
    return StoreInt<int16_t>(x, invalid);
}
int32_t StoreInt32(long double x, int* invalid) {
    return StoreInt<int32_t>(x, invalid);
}
int64_t StoreInt64(long double x, int* invalid) {
    return StoreInt<int64_t>(x, invalid);
}
int32_t FloorToInt32(long double x) {
    int invalid;
    return StoreInt32(std::floor(x), &invalid);
}

void Reset() {
    std::fesetround(FE_TONEAREST);
}
int StackEmpty() {
    return 1;
}
void SaveState(State*) {}
void RestoreState(const State*) {}

}  // namespace x87

#endif
