// x87 instructions for the kernel. Each helper is one instruction (or a short fixed
// sequence) so that the numeric results are exactly those of the unit.
#include "math/x87.h"

#if MG_HAVE_X87

namespace x87 {

int Examine(long double x, int* negative) {
    uint16_t sw;
    __asm__("fxam\n\tfnstsw %0" : "=a"(sw) : "t"(x));
    *negative = (sw >> 9) & 1;
    // C3, C2, C0 select the class.
    int code = ((sw >> 14) & 1) << 2 | ((sw >> 10) & 1) << 1 | ((sw >> 8) & 1);
    switch (code) {
        case 1:
            return ClassNaN;
        case 2:
            return ClassNormal;
        case 3:
            return ClassInfinity;
        case 4:
            return ClassZero;
        case 5:
            return ClassEmpty;
        case 6:
            return ClassDenormal;
        default:
            return ClassUnsupported;
    }
}

long double YLog2X(long double y, long double x) {
    long double r;
    __asm__("fyl2x" : "=t"(r) : "0"(x), "u"(y) : "st(1)");
    return r;
}

long double YLog2XPlus1(long double y, long double x) {
    long double r;
    __asm__("fyl2xp1" : "=t"(r) : "0"(x), "u"(y) : "st(1)");
    return r;
}

long double TwoToXMinusOne(long double x) {
    long double r;
    __asm__("f2xm1" : "=t"(r) : "0"(x));
    return r;
}

long double Scale(long double x, long double n) {
    long double r;
    __asm__("fscale" : "=t"(r) : "0"(x), "u"(n));
    return r;
}

long double RoundToInteger(long double x) {
    long double r;
    __asm__("frndint" : "=t"(r) : "0"(x));
    return r;
}

void SinCos(long double x, long double* sine, long double* cosine) {
    long double s, c;
    uint16_t sw;
    __asm__("fsincos\n\tfnstsw %2" : "=t"(c), "=u"(s), "=a"(sw) : "0"(x));
    if (sw & 0x400) {
        // Outside the instruction's range (2^63): reduce by a partial remainder of 2 pi.
        long double twoPi = 2 * Pi(), r = x;
        do {
            __asm__("fprem1\n\tfnstsw %1" : "=t"(r), "=a"(sw) : "0"(r), "u"(twoPi));
        } while (sw & 0x400);
        __asm__("fsincos" : "=t"(c), "=u"(s) : "0"(r));
    }
    *sine = s;
    *cosine = c;
}

long double ArcTangent(long double y, long double x) {
    long double r;
    __asm__("fpatan" : "=t"(r) : "0"(x), "u"(y) : "st(1)");
    return r;
}

long double SquareRoot(long double x) {
    long double r;
    __asm__("fsqrt" : "=t"(r) : "0"(x));
    return r;
}

#define MG_X87_CONSTANT(name, insn) \
    long double name() {            \
        long double r;              \
        __asm__(insn : "=t"(r));    \
        return r;                   \
    }
MG_X87_CONSTANT(Log2Ten, "fldl2t")
MG_X87_CONSTANT(Log2E, "fldl2e")
MG_X87_CONSTANT(Log10Two, "fldlg2")
MG_X87_CONSTANT(LnTwo, "fldln2")
MG_X87_CONSTANT(Pi, "fldpi")
#undef MG_X87_CONSTANT

namespace {
struct Packed {
    uint8_t b[10];
};
}  // namespace

void StorePacked(long double x, uint8_t out[10]) {
    Packed p;
    __asm__("fbstp %0" : "=m"(p) : "t"(x) : "st");
    for (int i = 0; i < 10; ++i) out[i] = p.b[i];
}

long double LoadPacked(const uint8_t in[10]) {
    Packed p;
    for (int i = 0; i < 10; ++i) p.b[i] = in[i];
    long double r;
    __asm__("fbld %1" : "=t"(r) : "m"(p));
    return r;
}

int16_t StoreInt16(long double x, int* invalid) {
    int16_t r;
    uint16_t sw;
    __asm__ volatile("fnclex\n\tfistps %0\n\tfnstsw %1" : "=m"(r), "=a"(sw) : "t"(x) : "st");
    *invalid = sw & 1;
    return r;
}

int32_t StoreInt32(long double x, int* invalid) {
    int32_t r;
    uint16_t sw;
    __asm__ volatile("fnclex\n\tfistpl %0\n\tfnstsw %1" : "=m"(r), "=a"(sw) : "t"(x) : "st");
    *invalid = sw & 1;
    return r;
}

int64_t StoreInt64(long double x, int* invalid) {
    int64_t r;
    uint16_t sw;
    __asm__ volatile("fnclex\n\tfistpll %0\n\tfnstsw %1" : "=m"(r), "=a"(sw) : "t"(x) : "st");
    *invalid = sw & 1;
    return r;
}

int32_t FloorToInt32(long double x) {
    uint16_t saved, down;
    __asm__ volatile("fnstcw %0" : "=m"(saved));
    down = static_cast<uint16_t>((saved & ~0xC00) | 0x400);
    __asm__ volatile("fldcw %0" : : "m"(down));
    int32_t r;
    __asm__ volatile("fistpl %0" : "=m"(r) : "t"(x) : "st");
    __asm__ volatile("fldcw %0" : : "m"(saved));
    return r;
}

void Reset() {
    uint16_t cw = 0x37F;
    __asm__ volatile("fninit\n\tfldcw %0" : : "m"(cw));
}

int StackEmpty() {
    uint8_t env[28];
    __asm__ volatile("fnstenv %0\n\tfldenv %0" : "+m"(env));
    return (env[8] | env[9] << 8) == 0xFFFF;
}

void SaveState(State* s) {
    __asm__ volatile("fnsave %0" : "=m"(*s) : : "memory");
}
void RestoreState(const State* s) {
    __asm__ volatile("frstor %0" : : "m"(*s) : "memory");
}

}  // namespace x87

#endif
