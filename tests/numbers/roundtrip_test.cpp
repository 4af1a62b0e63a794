// Doubles to 17 significant digits and back. The scanner reads correctly rounded text back
// exactly; the text side scales by ten to the s formed as a power of two, whose argument
// carries the relative error of the 64-bit mantissa. For large decimal exponents that error
// can move the 17th digit by one where the exact value lies near a rounding boundary, and
// a double just above a power of ten then reads back as its neighbour. Each such case is
// checked to be exactly that, and their share is bounded.
#include <gtest/gtest.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <iostream>
#include <random>
#include <string>

#include "mg/numscan.h"

namespace {

const int kCount = 1000000;

double Back(const char* text, int32_t n, const char** end) {
    const char* p = text;
    double v = -1;
    ScanFloat(&p, n, 0, NumFD, &v);
    *end = p;
    return v;
}

// Mantissa digits as an integer and the decimal exponent of "d.dddE+x" or "d.ddde+xx".
void Split(const std::string& text, int64_t* digits, int* exponent) {
    size_t e = text.find_first_of("Ee");
    std::string m;
    for (size_t i = 0; i < e; ++i)
        if (text[i] >= '0' && text[i] <= '9') m += text[i];
    *digits = atoll(m.c_str());
    *exponent = atoi(text.c_str() + e + 1);
}

void ExpectExplainedByScaling(double v, const std::string& mine) {
    char theirs[64], exact[80];
    snprintf(theirs, sizeof theirs, "%.16e", v);
    snprintf(exact, sizeof exact, "%.28e", v);
    // The scanner reads the correctly rounded text back exactly.
    const char* end;
    double back = Back(theirs, (int32_t)strlen(theirs), &end);
    EXPECT_EQ(memcmp(&back, &v, 8), 0) << theirs;
    // The text differs from it by one unit of the 17th digit.
    int64_t a, b;
    int ea, eb;
    Split(mine, &a, &ea);
    Split(theirs, &b, &eb);
    EXPECT_EQ(ea, eb) << mine << " " << theirs;
    EXPECT_EQ(llabs(a - b), 1) << mine << " " << theirs;
    // The exact value lies within the scaling error of the rounding boundary.
    const char* e = strchr(exact, 'e');
    double fraction = atof(("0." + std::string(e - 12, e)).c_str());
    double t = fabs((16.0 - eb) * 3.3219280948873623);
    double bound = (t + 8) * ldexp(1.0, -64) * 0.6931471805599453 * 1e17;
    EXPECT_LT(fabs(fraction - 0.5), bound) << exact;
}

TEST(RoundTrip, SeventeenDigitsAndBack) {
    std::mt19937_64 rng(1122);
    int scalingCases = 0;
    for (int i = 0; i < kCount; ++i) {
        uint64_t bits = rng();
        double v;
        memcpy(&v, &bits, 8);
        if (isnan(v)) continue;
        char out[64];
        int32_t n = NumToText(&v, NumFD, 17, out, sizeof out, '.', nullptr);
        const char* end;
        double back = Back(out, n, &end);
        ASSERT_EQ(end, out + n) << out;
        if (memcmp(&back, &v, 8) == 0) continue;
        ++scalingCases;
        ExpectExplainedByScaling(v, std::string(out, n));
        if (HasFailure()) break;
    }
    std::cout << "scaling cases: " << scalingCases << " of " << kCount << "\n";
    EXPECT_LT(scalingCases, kCount / 1000);
}

TEST(RoundTrip, Specials) {
    const double values[] = {INFINITY,
                             -INFINITY,
                             1.7976931348623157e308,
                             -2.2250738585072014e-308,
                             4.9406564584124654e-324,
                             1.0,
                             0.1,
                             123456789012345678.0,
                             NAN,
                             -0.0};
    for (double v : values) {
        char out[64];
        int32_t n = NumToText(&v, NumFD, 17, out, sizeof out, '.', nullptr);
        const char* end;
        double back = Back(out, n, &end);
        EXPECT_TRUE(isnan(v) ? isnan(back) : back == v) << out;
        // Zero prints without a sign, so -0 comes back as +0.
        EXPECT_EQ(signbit(back), v != 0 && signbit(v)) << out;
    }
}

}  // namespace
