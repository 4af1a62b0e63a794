// Floating-point class tests by the bits of each format, and small functions of one double.
#include <math.h>
#include <string.h>

#include "mg/ansi.h"

namespace {

// Sign, all-ones exponent, and whether the fraction is zero give the class of any format.
int32_t Classify(bool negative, bool exponentAllOnes, bool fractionZero) {
    if (!exponentAllOnes) return FloatClassFinite;
    if (!fractionZero) return FloatClassNaN;
    return negative ? FloatClassNegInfinity : FloatClassPosInfinity;
}

}  // namespace

extern "C" {

int32_t FloatClass(const void* number, NumType type) {
    switch (type & 15) {
        case fS: {
            uint32_t v;
            memcpy(&v, number, 4);
            return Classify(v >> 31, ((v >> 23) & 0xFF) == 0xFF, (v & 0x7FFFFF) == 0);
        }
        case fD: {
            uint64_t v;
            memcpy(&v, number, 8);
            return Classify(v >> 63, ((v >> 52) & 0x7FF) == 0x7FF, (v & 0xFFFFFFFFFFFFFull) == 0);
        }
        case fX: {
            // 64-bit mantissa with an explicit integer bit, then sign and 15-bit exponent; the
            // integer bit takes no part in telling infinity from NaN.
            uint64_t mantissa;
            uint16_t top;
            memcpy(&mantissa, number, 8);
            memcpy(&top, static_cast<const uint8_t*>(number) + 8, 2);
            return Classify(top >> 15, (top & 0x7FFF) == 0x7FFF,
                            (mantissa & 0x7FFFFFFFFFFFFFFFull) == 0);
        }
        default:
            return FloatClassFinite;
    }
}

int32_t IsNaNValue(double x) {
    return FloatClass(&x, fD) == FloatClassNaN;
}

int32_t IsInfValue(double x) {
    return x == HUGE_VAL || -x == HUGE_VAL;
}

int32_t SinCosPair(double x, double* sine, double* cosine) {
    *sine = sin(x);
    *cosine = cos(x);
    return 0;
}

// 1 + x and u - 1 are each rounded to double, so that their errors cancel in the quotient.
double Log1Plus(double x) {
    volatile double u = 1.0 + x;
    if (u == 1.0) return x;
    if (fabs(x) <= 0.75) return log(u) * (x / (u - 1.0));
    return log(u);
}

}  // extern "C"
