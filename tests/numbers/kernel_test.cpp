// The extended-precision kernel: edge behaviour of each function, small arguments, and
// agreement with the C library's powl and std::complex.
#include <gtest/gtest.h>
#include <math.h>

#include <complex>
#include <iterator>

#include "mg/math.h"

namespace {

const long double kInf = INFINITY;

bool SameOrBothNaN(long double a, long double b) {
    return (isnan(a) && isnan(b)) || (a == b && signbit(a) == signbit(b));
}

// What each call gave and what it should give.
TEST(Kernel, EdgeValues) {
    // clang-format off
    const long double rows[][2] = {
        {ExpTwoMinusOne(-kInf), -1}, {ExpTwoMinusOne(kInf), kInf}, {ExpTwoMinusOne(-0.0L), -0.0L},
        {ExpTwoMinusOne(3), 7}, {ExpTwo(10), 1024}, {ExpTwo(-3), 0.125L}, {ExpTwo(-kInf), 0},
        {HyperSine(-0.0L), -0.0L}, {HyperSine(-kInf), -kInf}, {HyperCosine(-kInf), kInf}, {HyperCosine(0), 1},
        {HyperTangent(kInf), 1}, {HyperTangent(-kInf), -1}, {HyperTangent(20000), 1},
        {ArcHyperSine(-kInf), -kInf}, {ArcHyperCosine(1), 0}, {ArcHyperCosine(0.5L), NAN},
        {ArcHyperTangent(1), kInf}, {ArcHyperTangent(-1), -kInf}, {ArcHyperTangent(1.5L), NAN},
        {LogOnePlus(-1), -kInf}, {LogOnePlus(-2), NAN}, {PowerReal(-2, 3), -8}, {PowerReal(-2, 2), 4},
        {PowerReal(-2, 0.5L), NAN}, {PowerReal(0, -1), kInf}, {PowerReal(0, 2), 0}, {PowerReal(5, 0), 1},
        {PowerReal(2, -2), 0.25L}};
    // clang-format on
    for (size_t i = 0; i < std::size(rows); ++i)
        EXPECT_TRUE(SameOrBothNaN(rows[i][0], rows[i][1]))
            << "row " << i << ": " << (double)rows[i][0];
}

// Small arguments keep their digits: the whole point of the 1 + x forms.
TEST(Kernel, SmallArgumentsKeepTheirDigits) {
    for (long double x : {1e-30L, -3e-25L, 2e-19L}) {
        EXPECT_NEAR(HyperSine(x) / x, 1, 1e-18) << (double)x;
        EXPECT_NEAR(HyperTangent(x) / x, 1, 1e-18) << (double)x;
        EXPECT_NEAR(ArcHyperSine(x) / x, 1, 1e-18) << (double)x;
        EXPECT_NEAR(ArcHyperTangent(x) / x, 1, 1e-18) << (double)x;
        EXPECT_NEAR(LogOnePlus(x) / x, 1, 1e-18) << (double)x;
        EXPECT_NEAR(ExpTwoMinusOne(x) / (x * 0.693147180559945309417L), 1, 1e-18) << (double)x;
    }
}

TEST(Kernel, PowerRealAgreesWithPowl) {
    for (long double x : {0.5L, 3.0L, 10.0L, 1e100L, 7e-30L})
        for (long double y : {-3.5L, -1.0L, 0.25L, 2.0L, 17.0L})
            EXPECT_NEAR((double)(PowerReal(x, y) / powl(x, y) - 1), 0, 1e-16)
                << (double)x << "^" << (double)y;
}

TEST(Polar, SpecialCases) {
    const long double pi = 3.14159265358979323846264338327950288L;
    const struct {
        long double x, y, magnitude, angle;
    } toPolar[] = {
        {0, 0, 0, 0},   {NAN, 1, NAN, NAN},      {0, -3, 3, -pi / 2},
        {-1, 0, 1, pi}, {3, 4, 5, atan2l(4, 3)},
    };
    for (const auto& c : toPolar) {
        Extended m, a;
        RectangularToPolar(c.x, c.y, &m, &a);
        EXPECT_TRUE(SameOrBothNaN(m, c.magnitude)) << (double)c.x << "," << (double)c.y;
        EXPECT_TRUE(SameOrBothNaN(a, c.angle)) << (double)c.x << "," << (double)c.y;
    }
    Extended re, im;
    PolarToRectangular(kInf, 0, &re, &im);
    EXPECT_EQ(re, kInf);
    EXPECT_EQ(im, 0);  // not inf * 0
    PolarToRectangular(2, pi / 6, &re, &im);
    EXPECT_NEAR((double)re, sqrt(3.0), 1e-15);
    EXPECT_NEAR((double)im, 1.0, 1e-15);
    EXPECT_EQ(FloatStateProbe(), 1);  // nothing left on the stack
}

TEST(Complex, AgreesWithStdComplex) {
    using C = std::complex<long double>;
    struct Fn {
        const char* name;
        ExtendedPair (*mine)(ExtendedPair);
        C (*theirs)(const C&);
    };
    const Fn fns[] = {{"sin", ComplexSine, [](const C& z) { return std::sin(z); }},
                      {"cos", ComplexCosine, [](const C& z) { return std::cos(z); }},
                      {"tan", ComplexTangent, [](const C& z) { return std::tan(z); }},
                      {"cot", ComplexCotangent, [](const C& z) { return C(1) / std::tan(z); }},
                      {"sinh", ComplexHyperSine, [](const C& z) { return std::sinh(z); }},
                      {"cosh", ComplexHyperCosine, [](const C& z) { return std::cosh(z); }},
                      {"tanh", ComplexHyperTangent, [](const C& z) { return std::tanh(z); }},
                      {"asin", ComplexArcSine, [](const C& z) { return std::asin(z); }},
                      {"acos", ComplexArcCosine, [](const C& z) { return std::acos(z); }},
                      {"asinh", ComplexArcHyperSine, [](const C& z) { return std::asinh(z); }},
                      {"acosh", ComplexArcHyperCosine, [](const C& z) { return std::acosh(z); }},
                      {"atan", ComplexArcTangent, [](const C& z) { return std::atan(z); }},
                      {"1/z", ComplexReciprocal, [](const C& z) { return C(1) / z; }}};
    const C points[] = {{0.5L, 0.25L}, {-1.5L, 2.0L}, {3.0L, -0.75L}, {-0.2L, -0.9L}, {2, 0.1L}};
    for (const Fn& f : fns) {
        for (const C& z : points) {
            ExtendedPair r = f.mine(ExtendedPair{z.real(), z.imag()});
            C expected = f.theirs(z);
            long double scale = std::abs(expected);
            EXPECT_NEAR((double)((r.re - expected.real()) / scale), 0, 1e-15) << f.name << z;
            EXPECT_NEAR((double)((r.im - expected.imag()) / scale), 0, 1e-15) << f.name << z;
        }
    }
    ExtendedPair q = ComplexDivide(ExtendedPair{1, 2}, ExtendedPair{3, -4});
    EXPECT_NEAR((double)q.re, -0.2, 1e-18);
    EXPECT_NEAR((double)q.im, 0.4, 1e-18);
}

}  // namespace
