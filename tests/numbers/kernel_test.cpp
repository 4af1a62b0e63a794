// The extended-precision kernel: edge behaviour of each function, small arguments, and
// agreement with the C library's powl and std::complex.
#include <gtest/gtest.h>
#include <math.h>

#include <complex>
#include <functional>

#include "mg/math.h"

namespace {

const long double kInf = INFINITY;

bool SameOrBothNaN(long double a, long double b) {
    return (isnan(a) && isnan(b)) || (a == b && signbit(a) == signbit(b));
}

struct EdgeCase {
    const char* name;
    std::function<Extended()> run;
    long double expected;
};

TEST(Kernel, EdgeValues) {
    const EdgeCase cases[] = {
        {"2^x-1 at -inf", [] { return ExpTwoMinusOne(-kInf); }, -1},
        {"2^x-1 at +inf", [] { return ExpTwoMinusOne(kInf); }, kInf},
        {"2^x-1 at -0", [] { return ExpTwoMinusOne(-0.0L); }, -0.0L},
        {"2^x-1 at 3", [] { return ExpTwoMinusOne(3); }, 7},
        {"2^x at 10", [] { return ExpTwo(10); }, 1024},
        {"2^x at -3", [] { return ExpTwo(-3); }, 0.125L},
        {"2^x at -inf", [] { return ExpTwo(-kInf); }, 0},
        {"sinh -0", [] { return HyperSine(-0.0L); }, -0.0L},
        {"sinh -inf", [] { return HyperSine(-kInf); }, -kInf},
        {"cosh -inf", [] { return HyperCosine(-kInf); }, kInf},
        {"cosh 0", [] { return HyperCosine(0); }, 1},
        {"tanh inf", [] { return HyperTangent(kInf); }, 1},
        {"tanh -inf", [] { return HyperTangent(-kInf); }, -1},
        {"tanh 20000", [] { return HyperTangent(20000); }, 1},
        {"asinh -inf", [] { return ArcHyperSine(-kInf); }, -kInf},
        {"acosh 1", [] { return ArcHyperCosine(1); }, 0},
        {"acosh 0.5", [] { return ArcHyperCosine(0.5L); }, NAN},
        {"atanh 1", [] { return ArcHyperTangent(1); }, kInf},
        {"atanh -1", [] { return ArcHyperTangent(-1); }, -kInf},
        {"atanh 1.5", [] { return ArcHyperTangent(1.5L); }, NAN},
        {"log1p -1", [] { return LogOnePlus(-1); }, -kInf},
        {"log1p -2", [] { return LogOnePlus(-2); }, NAN},
        {"pow -2^3", [] { return PowerReal(-2, 3); }, -8},
        {"pow -2^2", [] { return PowerReal(-2, 2); }, 4},
        {"pow -2^0.5", [] { return PowerReal(-2, 0.5L); }, NAN},
        {"pow 0^-1", [] { return PowerReal(0, -1); }, kInf},
        {"pow 0^2", [] { return PowerReal(0, 2); }, 0},
        {"pow 5^0", [] { return PowerReal(5, 0); }, 1},
        {"pow 2^-2", [] { return PowerReal(2, -2); }, 0.25L},
    };
    for (const EdgeCase& c : cases)
        EXPECT_TRUE(SameOrBothNaN(c.run(), c.expected)) << c.name << ": " << (double)c.run();
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
    const Fn fns[] = {
        {"sin", ComplexSine, [](const C& z) { return std::sin(z); }},
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
        {"1/z", ComplexReciprocal, [](const C& z) { return C(1) / z; }},
    };
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
