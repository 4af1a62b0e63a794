// The numeric layer: conversion between the number types (integer truncation, saturation
// through Extended, float specials, complex parts, the portable form) and the extended-precision
// kernel (edge behaviour, small arguments, agreement with powl and std::complex).
#include "mg/math.h"

#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <complex>
#include <iterator>

#include "support/rows.h"

namespace {

using namespace mgtest;

// Room for any number type.
struct Cell {
    alignas(16) uint8_t bytes[32] = {};
    template <typename T>
    T As() const {
        T v;
        memcpy(&v, bytes, sizeof v);
        return v;
    }
};

// `v`, a number of type `from` (or a Cell holding one), converted to `to` over bytes of 0xAA.
template <typename T>
Cell Conv(NumType from, const T& v, NumType to, int32_t* result = nullptr) {
    Cell out;
    memset(out.bytes, 0xAA, sizeof out.bytes);
    const int32_t r = NumConvert(from, &v, to, out.bytes);
    if (result) *result = r;
    return out;
}

// What a conversion into integer type `t` leaves in a cell of 0xAA bytes: the low bits of its
// width (1, 2, 4 or 8 bytes by the type's place in the table), then the 0xAA bytes untouched.
uint64_t Over0xAA(NumType t, uint64_t bits) {
    const uint64_t mask = ~0ull >> (64 - (8 << ((t - 1) % 4)));
    return (bits & mask) | (0xAAAAAAAAAAAAAAAAull & ~mask);
}

const long double kInf = INFINITY;

bool SameOrBothNaN(long double a, long double b) {
    return (isnan(a) && isnan(b)) || (a == b && signbit(a) == signbit(b));
}

// Limits of every integer type, widened by their own sign rule, keep their low bits in every
// other type. Only the low 4 bits of a type word up to 30 name the type.
TEST(NumericLayer, Conversions) {
    // The stored bits of each limit (both hosts are little-endian), and the limit widened.
    // clang-format off
    const struct { NumType type; uint64_t bits, widened; } limits[] = {
        {NumIB, 0x80, 0xFFFFFFFFFFFFFF80ull}, {NumIB, 127, 127},
        {NumIW, 0x8000, 0xFFFFFFFFFFFF8000ull}, {NumIL, 0x80000000, 0xFFFFFFFF80000000ull},
        {NumIL, 0xFFFFFFFF, ~0ull}, {NumIQ, 0x8000000000000000ull, 0x8000000000000000ull},
        {NumUB, 255, 255}, {NumUW, 65535, 65535}, {NumUL, 0xFFFFFFFF, 0xFFFFFFFFull},
        {NumUQ, ~0ull, ~0ull}};
    // clang-format on
    for (const auto& l : limits)
        for (NumType t = NumIB; t <= NumUQ; ++t)
            EXPECT_EQ(Conv(l.type, l.bits, t).As<uint64_t>(), Over0xAA(t, l.widened))
                << "from " << l.type << " to " << t;
    // Type 0 or above 30 is a failure.
    Cell out;
    EXPECT_EXIT(NumConvert(0, out.bytes, NumIL, out.bytes), testing::ExitedWithCode(1), "");
    EXPECT_EXIT(NumConvert(NumIL, out.bytes, 31, out.bytes), testing::ExitedWithCode(1), "");
    // Saturation, ties to even, and the integer indefinite (with result 0) by the table.
    const uint64_t min64 = 0x8000000000000000ull;
    // clang-format off
    const struct { long double value; NumType type; uint64_t bits; int32_t result; } cases[] = {
        {70000.0L, NumIW, 32767, 1}, {-70000.0L, NumIW, 0x8000, 1}, {300, NumIB, 127, 1},
        {-300, NumIB, 0x80, 1}, {-128.4L, NumIB, 0x80, 1}, {3e9L, NumIL, 0x7FFFFFFF, 1},
        {-3e9L, NumIL, 0x80000000, 1}, {kInf, NumIL, 0x7FFFFFFF, 1}, {2.5L, NumIL, 2, 1},
        {3.5L, NumIL, 4, 1}, {-2.5L, NumIW, 0xFFFE, 1}, {NAN, NumIL, 0x80000000, 0},
        {NAN, NumIW, 0x8000, 0}, {1e19L, NumIQ, min64, 0}, {-1e19L, NumIQ, min64, 0},
        {-9223372036854775808.0L, NumIQ, min64, 1}, {300, NumUB, 255, 0}, {-1, NumUB, 0, 0},
        {200.5L, NumUB, 200, 1}, {70000, NumUW, 65535, 0}, {0, NumUQ, 0, 1},
        {5e9L, NumUL, 0xFFFFFFFF, 1}, {-5, NumUL, 0, 1}, {4294967295.0L, NumUL, 0xFFFFFFFF, 1},
        {NAN, NumUL, 0, 0}, {18446744073709551615.0L, NumUQ, ~0ull, 1},
        {9223372036854775808.0L, NumUQ, min64, 1}, {9223372036854775807.0L, NumUQ, min64 - 1, 1},
        {1e20L, NumUQ, min64, 0}, {-1, NumUQ, ~0ull, 0}};
    // clang-format on
    for (const auto& c : cases) {
        uint64_t bits = 0;  // the stored bits, read back as 64 (both hosts are little-endian)
        const int32_t result = NumStore(c.type, &bits, ExtendedPair{c.value, 0});
        EXPECT_EQ(std::make_pair(bits, result), std::make_pair(c.bits, c.result))
            << (double)c.value << " as " << c.type;
    }
    // A float beyond an integer type saturates it, as through NumStore. Float widths:
    // infinities and overflow, the 10 bytes of the extended form and nothing beyond them, the
    // largest uQ exactly, both ways. Complex parts. Extended takes 10 bytes and its complex pair
    // 20 until the host sets its size; types 0 and 15 take none.
    int32_t result = -1;
    const float cs[2] = {1.5f, -4.0f};
    const double cd[2] = {-7.25, 3.0};
    ExpectRows({Row(Conv(0x10 | NumIL, int32_t(-2), 0x10 | NumIQ).As<int64_t>(), -2),
                Row(Conv(NumFD, double(NAN), NumIL, &result).As<uint32_t>(), 0x80000000u),
                Row(result, 0), Row(Conv(NumFS, 1e30f, NumUW).As<uint16_t>(), 65535),
                Row(Conv(NumFD, double(INFINITY), NumFS).As<uint32_t>(), 0x7F800000u),
                Row(Conv(NumFD, -double(INFINITY), NumFS).As<uint32_t>(), 0xFF800000u),
                Row(isinf(Conv(NumFD, 1e300, NumFS).As<float>()), 1),
                Row(Conv(NumFD, 2.0, NumFX).bytes[10], 0xAA),
                Row(ExtendedRead(Conv(NumUQ, ~0ull, NumFX).bytes) == 18446744073709551615.0L, 1),
                Row(Conv(NumFX, Conv(NumUQ, ~0ull, NumFX), NumUQ).As<uint64_t>(), ~0ull),
                Row((NumConvert(NumCS, cs, NumCX, out.bytes), ExtendedRead(out.bytes) == 1.5L), 1),
                Row(ExtendedRead(out.bytes + 10) == -4.0L, 1),
                Row((NumConvert(NumCD, cd, NumIL, out.bytes), out.As<int32_t>()), -7),
                Row(NumLoad(NumCD, cd).re == -7.25L && NumLoad(NumCD, cd).im == 3.0L, 1),
                Row(NumTypeSize(NumFX), 10), Row(NumTypeSize(NumCX), 20), Row(NumTypeSize(15), 0),
                Row((SetExtendedSize(16), NumTypeSize(NumFX)), 16), Row(NumTypeSize(NumCX), 32)});
    SetExtendedSize(10);
}

TEST(NumericLayer, PortableForm) {
    // The portable form (big-endian sign and exponent, the fraction without its top bit) keeps
    // every bit of normals (biased exponent 1 to 0x7FFE, either sign), denormals, zeros and
    // infinities.
    uint8_t portable[16];
    const uint8_t minusOneAndHalf[16] = {0xBF, 0xFF, 0x80};
    EXPECT_TRUE(ExtendedToPortable(-1.5L, portable) == portable + 16 &&
                memcmp(portable, minusOneAndHalf, 16) == 0);
    // clang-format off
    const struct { uint64_t mantissa; uint16_t signExponent; } values[] = {
        {0x8000000000000000, 0x0001}, {0xFFFFFFFFFFFFFFFF, 0x7FFE}, {0xA5A5A5A5A5A5A5A5, 0xBFFF},
        {0x0000000000000001, 0x0000}, {0x7FFFFFFFFFFFFFFF, 0x8000}, {0, 0}, {0, 0x8000},
        {0x8000000000000000, 0x7FFF}, {0x8000000000000000, 0xFFFF}};
    // clang-format on
    for (const auto& v : values) {
        // A row's first 10 bytes are the extended form: the fraction, then sign and exponent.
        const uint8_t* raw = reinterpret_cast<const uint8_t*>(&v);
        uint8_t again[10], zeros[6] = {};
        ExtendedToPortable(ExtendedRead(raw), portable);
        Extended back;
        ExtendedFromPortable(portable, &back);
        ExtendedWrite(again, back);
        EXPECT_TRUE(memcmp(raw, again, 10) == 0 && memcmp(portable + 10, zeros, 6) == 0)
            << std::hex << v.signExponent << " " << v.mantissa;
    }
}

// What each call of the kernel gave and what it should give.
TEST(NumericLayer, Kernel) {
    // clang-format off
    const long double rows[][2] = {
        {ExpTwoMinusOne(-kInf), -1}, {ExpTwoMinusOne(kInf), kInf}, {ExpTwoMinusOne(-0.0L), -0.0L},
        {ExpTwoMinusOne(3), 7}, {ExpTwo(-3), 0.125L}, {ExpTwo(-kInf), 0}, {HyperSine(-0.0L), -0.0L},
        {HyperSine(-kInf), -kInf}, {HyperCosine(-kInf), kInf}, {HyperTangent(kInf), 1},
        {HyperTangent(-kInf), -1}, {HyperTangent(20000), 1}, {ArcHyperSine(-kInf), -kInf},
        {ArcHyperCosine(1), 0}, {ArcHyperCosine(0.5L), NAN}, {ArcHyperTangent(1), kInf},
        {ArcHyperTangent(-1), -kInf}, {ArcHyperTangent(1.5L), NAN}, {LogOnePlus(-1), -kInf},
        {LogOnePlus(-2), NAN}, {PowerReal(-2, 3), -8}, {PowerReal(-2, 2), 4},
        {PowerReal(-2, 0.5L), NAN}, {PowerReal(0, -1), kInf}, {PowerReal(0, 2), 0},
        {PowerReal(5, 0), 1}, {HyperTangent(NAN), NAN}};
    // clang-format on
    for (size_t i = 0; i < std::size(rows); ++i)
        EXPECT_TRUE(SameOrBothNaN(rows[i][0], rows[i][1])) << "row " << i;
    // Small arguments keep their digits: the whole point of the 1 + x forms. Powers agree with
    // powl.
    for (long double x : {1e-30L, -3e-25L, 2e-19L}) {
        const long double ratios[] = {
            HyperSine(x) / x,    HyperTangent(x) / x,
            ArcHyperSine(x) / x, ArcHyperTangent(x) / x,
            LogOnePlus(x) / x,   ExpTwoMinusOne(x) / (x * 0.693147180559945309417L)};
        for (long double r : ratios) EXPECT_NEAR((double)r, 1, 1e-18) << (double)x;
    }
    for (long double x : {0.5L, 3.0L, 10.0L, 1e100L, 7e-30L})
        for (long double y : {-3.5L, -1.0L, 0.25L, 2.0L, 17.0L})
            EXPECT_NEAR((double)(PowerReal(x, y) / powl(x, y) - 1), 0, 1e-16)
                << (double)x << "^" << (double)y;
    // Rectangular to polar and back: NaN spreads, infinity at angle 0 has no NaN part (not
    // inf * 0), and nothing is left on the unit's stack.
    const long double pi = 3.14159265358979323846264338327950288L;
    // clang-format off
    const long double toPolar[][4] = {
        {0, 0, 0, 0}, {NAN, 1, NAN, NAN}, {0, -3, 3, -pi / 2}, {-1, 0, 1, pi},
        {3, 4, 5, atan2l(4, 3)}};
    // clang-format on
    for (const auto& c : toPolar) {
        Extended m, a;
        RectangularToPolar(c[0], c[1], &m, &a);
        EXPECT_TRUE(SameOrBothNaN(m, c[2]) && SameOrBothNaN(a, c[3]))
            << (double)c[0] << "," << (double)c[1];
    }
    Extended re, im, re2, im2;
    PolarToRectangular(kInf, 0, &re, &im);
    PolarToRectangular(2, pi / 6, &re2, &im2);
    EXPECT_TRUE(re == kInf && im == 0 && fabsl(re2 - sqrtl(3)) < 1e-15 && fabsl(im2 - 1) < 1e-15);
    EXPECT_EQ(FloatStateProbe(), 1);
    using C = std::complex<long double>;
    for (const C& z : {C(0.5L, 0.25L), C(-1.5L, 2), C(3, -0.75L), C(-0.2L, -0.9L), C(2, 0.1L)}) {
        const ExtendedPair e{z.real(), z.imag()};
        // clang-format off
        const std::pair<ExtendedPair, C> results[] = {
            {ComplexSine(e), sin(z)}, {ComplexCosine(e), cos(z)}, {ComplexTangent(e), tan(z)},
            {ComplexCotangent(e), C(1) / tan(z)}, {ComplexHyperSine(e), sinh(z)},
            {ComplexHyperCosine(e), cosh(z)}, {ComplexHyperTangent(e), tanh(z)},
            {ComplexArcSine(e), asin(z)}, {ComplexArcCosine(e), acos(z)},
            {ComplexArcHyperSine(e), asinh(z)}, {ComplexArcHyperCosine(e), acosh(z)},
            {ComplexArcTangent(e), atan(z)}, {ComplexReciprocal(e), C(1) / z},
            {ComplexDivide(ExtendedPair{1, 2}, e), C(1, 2) / z}};
        // clang-format on
        for (size_t i = 0; i < std::size(results); ++i) {
            const auto& [mine, theirs] = results[i];
            EXPECT_LT((double)(std::abs(C(mine.re, mine.im) - theirs) / std::abs(theirs)), 1.42e-15)
                << i << z;
        }
    }
}

}  // namespace
