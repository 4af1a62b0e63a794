// Real functions of the kernel. Each works in Extended throughout with the unit's own
// logarithm, power-of-two and scale instructions; zero and infinity are examined first and
// pass through as the function's limits give them.
#include "math/x87.h"
#include "mg/math.h"

namespace {

// Below this size the 1 + x form of the logarithm instruction is the accurate one.
constexpr Extended kLogOnePlusLimit = 0.29289L;

Extended NaN() {
    return __builtin_nanl("");
}
Extended Infinity() {
    return __builtin_infl();
}

Extended Ln(Extended x) {
    return x87::YLog2X(x87::LnTwo(), x);
}

// ln(1 + w) for w >= 0, by whichever form of the instruction keeps its digits.
Extended LnOnePlus(Extended w) {
    if (w < kLogOnePlusLimit && w > -kLogOnePlusLimit) return x87::YLog2XPlus1(x87::LnTwo(), w);
    return x87::YLog2X(x87::LnTwo(), 1 + w);
}

}  // namespace

extern "C" {

Extended ExpTwoMinusOne(Extended x) {
    int negative;
    switch (x87::Examine(x, &negative)) {
        case x87::ClassZero:
        case x87::ClassNaN:
            return x;
        case x87::ClassInfinity:
            return negative ? -1.0L : x;
        default:
            break;
    }
    if (x >= -1 && x <= 1) return x87::TwoToXMinusOne(x);
    return ExpTwo(x) - 1;
}

Extended ExpTwo(Extended x) {
    int negative;
    switch (x87::Examine(x, &negative)) {
        case x87::ClassZero:
            return 1;
        case x87::ClassNaN:
            return x;
        case x87::ClassInfinity:
            return negative ? 0.0L : x;
        default:
            break;
    }
    Extended whole = x87::RoundToInteger(x);
    return x87::Scale(x87::TwoToXMinusOne(x - whole) + 1, whole);
}

Extended HyperSine(Extended x) {
    int negative;
    switch (x87::Examine(x, &negative)) {
        case x87::ClassZero:
        case x87::ClassNaN:
        case x87::ClassInfinity:
            return x;
        default:
            break;
    }
    // With u = e^|x| - 1: sinh |x| = (u + u / (u + 1)) / 2, which keeps small x exact.
    Extended u = ExpTwoMinusOne((negative ? -x : x) * x87::Log2E());
    Extended r = (u + u / (u + 1)) / 2;
    return negative ? -r : r;
}

Extended HyperCosine(Extended x) {
    int negative;
    switch (x87::Examine(x, &negative)) {
        case x87::ClassZero:
            return 1;
        case x87::ClassNaN:
            return x;
        case x87::ClassInfinity:
            return Infinity();
        default:
            break;
    }
    // cosh |x| = 1 + u^2 / (2 (u + 1)) with u = e^|x| - 1 near 0; beyond 1, where the
    // square could overflow, (e + 1/e) / 2 with e = u + 1.
    Extended u = ExpTwoMinusOne((negative ? -x : x) * x87::Log2E());
    if (u > 1) return (u + 1 + 1 / (u + 1)) / 2;
    return 1 + u * u / (2 * (u + 1));
}

Extended HyperTangent(Extended x) {
    int negative;
    switch (x87::Examine(x, &negative)) {
        case x87::ClassZero:
        case x87::ClassNaN:
            return x;
        case x87::ClassInfinity:
            return negative ? -1.0L : 1.0L;
        default:
            break;
    }
    // tanh |x| = u / (u + 2) with u = e^(2|x|) - 1; past the overflow of u it is 1.
    Extended u = ExpTwoMinusOne(2 * (negative ? -x : x) * x87::Log2E());
    int uNegative;
    Extended r = x87::Examine(u, &uNegative) == x87::ClassInfinity ? 1.0L : u / (u + 2);
    return negative ? -r : r;
}

Extended ArcHyperSine(Extended x) {
    int negative;
    switch (x87::Examine(x, &negative)) {
        case x87::ClassZero:
        case x87::ClassNaN:
        case x87::ClassInfinity:
            return x;
        default:
            break;
    }
    Extended a = negative ? -x : x, r;
    if (a > 4294967296.0L) {
        // The square would lose nothing but may overflow: ln(2a).
        r = Ln(a) + x87::LnTwo();
    } else {
        // asinh a = ln(1 + w), w = a + a^2 / (1 + sqrt(a^2 + 1)).
        Extended w = a + a * a / (1 + x87::SquareRoot(a * a + 1));
        r = LnOnePlus(w);
    }
    return negative ? -r : r;
}

Extended ArcHyperCosine(Extended x) {
    int negative;
    int kind = x87::Examine(x, &negative);
    if (kind == x87::ClassNaN) return x;
    if (negative || x < 1) return NaN();
    if (kind == x87::ClassInfinity) return x;
    if (x > 4294967296.0L) return Ln(x) + x87::LnTwo();
    // acosh x = ln(1 + w), w = (x - 1) + sqrt((x - 1)(x + 1)).
    Extended t = x - 1;
    return LnOnePlus(t + x87::SquareRoot(t * (x + 1)));
}

Extended ArcHyperTangent(Extended x) {
    int negative;
    switch (x87::Examine(x, &negative)) {
        case x87::ClassZero:
        case x87::ClassNaN:
            return x;
        default:
            break;
    }
    Extended a = negative ? -x : x;
    if (a > 1) return NaN();
    if (a == 1) return negative ? -Infinity() : Infinity();
    // atanh a = ln(1 + 2a / (1 - a)) / 2.
    Extended r = LnOnePlus(2 * a / (1 - a)) / 2;
    return negative ? -r : r;
}

Extended LogOnePlus(Extended x) {
    int negative;
    switch (x87::Examine(x, &negative)) {
        case x87::ClassZero:
        case x87::ClassNaN:
            return x;
        case x87::ClassInfinity:
            return negative ? NaN() : x;
        default:
            break;
    }
    if (x < -1) return NaN();
    return LnOnePlus(x);
}

Extended PowerReal(Extended x, Extended y) {
    int xNegative, yNegative;
    int xKind = x87::Examine(x, &xNegative), yKind = x87::Examine(y, &yNegative);
    if (xKind == x87::ClassNaN) return x;
    if (yKind == x87::ClassNaN) return y;
    if (yKind == x87::ClassZero) return 1;
    if (xKind == x87::ClassZero) return yNegative ? Infinity() : 0.0L;
    if (!xNegative) return ExpTwo(y * x87::YLog2X(1, x));
    // A negative base has a real power only for a whole exponent; its parity gives the sign.
    if (x87::RoundToInteger(y) != y) return NaN();
    Extended r = ExpTwo(y * x87::YLog2X(1, -x));
    Extended half = y / 2;
    bool odd = x87::RoundToInteger(half) != half;
    return odd ? -r : r;
}

void FloatInit(void) {
    x87::Reset();
}

int32_t FloatStateProbe(void) {
    return x87::StackEmpty();
}

}  // extern "C"
