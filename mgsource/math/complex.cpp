// Complex functions of the kernel, and the two conversions between rectangular and polar
// form that the others and the number text build on.
#include "math/x87.h"
#include "mg/math.h"

namespace {

Extended NaN() {
    return __builtin_nanl("");
}

bool IsNaN(Extended x) {
    int negative;
    return x87::Examine(x, &negative) == x87::ClassNaN;
}

// The unit's state is saved around these, so they run out of line with their operands in
// memory: no caller's register is live across the save.
__attribute__((noinline)) void ToPolar(const Extended* re, const Extended* im, Extended* magnitude,
                                       Extended* argument) {
    Extended x = *re, y = *im;
    if (IsNaN(x) || IsNaN(y)) {
        Extended n = IsNaN(x) ? x : y;
        *magnitude = n;
        *argument = n;
    } else if (x == 0 && y == 0) {
        *magnitude = 0;
        *argument = 0;
    } else if (x == 0) {
        *magnitude = y < 0 ? -y : y;
        *argument = y < 0 ? -x87::Pi() / 2 : x87::Pi() / 2;
    } else {
        *argument = x87::ArcTangent(y, x);
        *magnitude = x87::SquareRoot(x * x + y * y);
    }
}

__attribute__((noinline)) void ToRectangular(const Extended* magnitude, const Extended* argument,
                                             Extended* re, Extended* im) {
    Extended s, c;
    x87::SinCos(*argument, &s, &c);
    int negative;
    if (x87::Examine(*magnitude, &negative) == x87::ClassInfinity) {
        // An infinite magnitude times a zero component is that zero, not a NaN.
        *re = c == 0 ? 0.0L : *magnitude * c;
        *im = s == 0 ? 0.0L : *magnitude * s;
    } else {
        *re = *magnitude * c;
        *im = *magnitude * s;
    }
}

ExtendedPair Make(Extended re, Extended im) {
    return ExtendedPair{re, im};
}
ExtendedPair Add(ExtendedPair a, ExtendedPair b) {
    return Make(a.re + b.re, a.im + b.im);
}
ExtendedPair Sub(ExtendedPair a, ExtendedPair b) {
    return Make(a.re - b.re, a.im - b.im);
}
ExtendedPair Mul(ExtendedPair a, ExtendedPair b) {
    return Make(a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re);
}
// Multiplication by i and by -i.
ExtendedPair TimesI(ExtendedPair a) {
    return Make(-a.im, a.re);
}
ExtendedPair TimesMinusI(ExtendedPair a) {
    return Make(a.im, -a.re);
}

ExtendedPair Log(ExtendedPair z) {
    Extended magnitude, argument;
    RectangularToPolar(z.re, z.im, &magnitude, &argument);
    return Make(x87::YLog2X(x87::LnTwo(), magnitude), argument);
}

ExtendedPair Sqrt(ExtendedPair z) {
    Extended magnitude, argument, re, im;
    RectangularToPolar(z.re, z.im, &magnitude, &argument);
    PolarToRectangular(x87::SquareRoot(magnitude), argument / 2, &re, &im);
    return Make(re, im);
}

// sin, cos of the real part and sinh, cosh of the imaginary part.
struct Parts {
    Extended sin, cos, sinh, cosh;
};
Parts PartsOf(Extended circular, Extended hyperbolic) {
    Parts p;
    x87::SinCos(circular, &p.sin, &p.cos);
    p.sinh = HyperSine(hyperbolic);
    p.cosh = HyperCosine(hyperbolic);
    return p;
}

}  // namespace

extern "C" {

void RectangularToPolar(Extended re, Extended im, Extended* magnitude, Extended* argument) {
    x87::State state;
    x87::SaveState(&state);
    x87::Reset();
    Extended m, a;
    ToPolar(&re, &im, &m, &a);
    x87::RestoreState(&state);
    *magnitude = m;
    *argument = a;
}

void PolarToRectangular(Extended magnitude, Extended argument, Extended* re, Extended* im) {
    x87::State state;
    x87::SaveState(&state);
    x87::Reset();
    Extended r, i;
    ToRectangular(&magnitude, &argument, &r, &i);
    x87::RestoreState(&state);
    *re = r;
    *im = i;
}

ExtendedPair ComplexDivide(ExtendedPair a, ExtendedPair b) {
    Extended d = b.re * b.re + b.im * b.im;
    return Make((a.re * b.re + a.im * b.im) / d, (a.im * b.re - a.re * b.im) / d);
}

ExtendedPair ComplexReciprocal(ExtendedPair z) {
    Extended d = z.re * z.re + z.im * z.im;
    return Make(z.re / d, -z.im / d);
}

ExtendedPair ComplexSine(ExtendedPair z) {
    Parts p = PartsOf(z.re, z.im);
    return Make(p.sin * p.cosh, p.cos * p.sinh);
}

ExtendedPair ComplexCosine(ExtendedPair z) {
    Parts p = PartsOf(z.re, z.im);
    return Make(p.cos * p.cosh, -(p.sin * p.sinh));
}

ExtendedPair ComplexTangent(ExtendedPair z) {
    return ComplexDivide(ComplexSine(z), ComplexCosine(z));
}

ExtendedPair ComplexCotangent(ExtendedPair z) {
    return ComplexDivide(ComplexCosine(z), ComplexSine(z));
}

ExtendedPair ComplexHyperSine(ExtendedPair z) {
    Parts p = PartsOf(z.im, z.re);
    return Make(p.sinh * p.cos, p.cosh * p.sin);
}

ExtendedPair ComplexHyperCosine(ExtendedPair z) {
    Parts p = PartsOf(z.im, z.re);
    return Make(p.cosh * p.cos, p.sinh * p.sin);
}

ExtendedPair ComplexHyperTangent(ExtendedPair z) {
    return ComplexDivide(ComplexHyperSine(z), ComplexHyperCosine(z));
}

// asin z = -i ln(iz + sqrt(1 - z^2)).
ExtendedPair ComplexArcSine(ExtendedPair z) {
    ExtendedPair root = Sqrt(Sub(Make(1, 0), Mul(z, z)));
    return TimesMinusI(Log(Add(TimesI(z), root)));
}

// acos z = -i ln(z + i sqrt(1 - z^2)).
ExtendedPair ComplexArcCosine(ExtendedPair z) {
    ExtendedPair root = Sqrt(Sub(Make(1, 0), Mul(z, z)));
    return TimesMinusI(Log(Add(z, TimesI(root))));
}

// asinh z = ln(z + sqrt(z^2 + 1)).
ExtendedPair ComplexArcHyperSine(ExtendedPair z) {
    return Log(Add(z, Sqrt(Add(Mul(z, z), Make(1, 0)))));
}

// acosh z = ln(z + sqrt(z + 1) sqrt(z - 1)).
ExtendedPair ComplexArcHyperCosine(ExtendedPair z) {
    ExtendedPair one = Make(1, 0);
    return Log(Add(z, Mul(Sqrt(Add(z, one)), Sqrt(Sub(z, one)))));
}

// atan z = (i / 2) ln((i + z) / (i - z)).
ExtendedPair ComplexArcTangent(ExtendedPair z) {
    if (z.re == 0 && (z.im == 1 || z.im == -1)) return Make(NaN(), NaN());
    ExtendedPair i = Make(0, 1);
    ExtendedPair l = Log(ComplexDivide(Add(i, z), Sub(i, z)));
    return Make(-l.im / 2, l.re / 2);
}

}  // extern "C"
