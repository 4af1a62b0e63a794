// Number scanning: the decimal state machine, the end of a number, the integer scanners
// with their saturation, the SI pre-pass and the float scanners.
#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <string>

#include "mg/numscan.h"
#include "mg/support.h"

namespace {

struct DecimalCase {
    const char* text;
    char mark;
    long double value;
    int32_t result;
};

TEST(ScanDecimal, Grammar) {
    const long double inf = INFINITY;
    const DecimalCase cases[] = {
        {"+", '.', 0, 1},
        {" 12", '.', 12, 0},  // a leading blank is junk: the number stands, the scan is invalid
        {"1,5", ',', 1.5L, 1},
        {"1.5", ',', 1.5L, 1},
        {"inf", '.', inf, 1},
        {"-INF", '.', -inf, 1},
        {"Infx", '.', inf, 0},
        {"Ix", '.', 0, 0},
        {"1234567890123456789", '.', 1234567890123456780.0L, 1},  // the 19th digit dropped
        {"0.12345678901234567891", '.', 0.123456789012345678L, 1},
        {".5", '.', 0.5L, 1},
        {"-.05", '.', -0.05L, 1},
        {"1.5E-3", '.', 0.0015L, 1},
        {"1.5 E 3", '.', 1500, 1},
        {"1.5e+", '.', 1.5L, 1},
        {"1x", '.', 1, 0},
        {"00012", '.', 12, 1},
        {"100", '.', 100, 1},
        {"0.000", '.', 0, 1},
        {"E5", '.', 0, 1},
        {"12 ", '.', 1.2L, 1},  // a blank ends the digits before their place is known
        {"12x5", '.', 12, 0},
        {"1.2.3", '.', 1.2L, 0},
    };
    for (const DecimalCase& c : cases) {
        DecimalNumber d;
        EXPECT_EQ(ScanDecimal(c.text, (int32_t)strlen(c.text), &d, c.mark), c.result) << c.text;
        long double v = DecimalToExtended(&d);
        EXPECT_EQ((double)v, (double)c.value) << c.text;
    }
}

TEST(ScanDecimal, FieldsOfSpecialAndLongTexts) {
    DecimalNumber d;
    EXPECT_EQ(ScanDecimal("", 0, &d, '.'), 0);
    EXPECT_EQ(DecimalToExtended(&d), 0);
    EXPECT_EQ(ScanDecimal("NaN", 3, &d, '.'), 1);
    EXPECT_EQ(d.exponent, DecimalExponentNaN);
    EXPECT_EQ(ScanDecimal("-nan", 4, &d, '.'), 1);
    EXPECT_EQ(d.sign, DecimalSignNegative);
    // Four exponent digits are read, the rest is never looked at.
    EXPECT_EQ(ScanDecimal("1e12345", 7, &d, '.'), 1);
    EXPECT_EQ(d.exponent, 1234);
    // The digit count stands in mdigits; 18 digits fill the nine bytes.
    EXPECT_EQ(ScanDecimal("123456789012345678", 18, &d, '.'), 1);
    EXPECT_EQ(d.mdigits, 18);
    EXPECT_EQ(d.exponent, 0);
    EXPECT_EQ(d.digits[0], 0x78);
    EXPECT_EQ(d.digits[8], 0x12);
    EXPECT_EQ(ScanDecimal("1234567890123456789", 19, &d, '.'), 1);
    EXPECT_EQ(d.exponent, 1);
    // A sign and then junk ends with no value but keeps the sign.
    EXPECT_EQ(ScanDecimal("-x", 2, &d, '.'), 0);
    EXPECT_EQ(d.sign, DecimalSignNegative);
}

TEST(FindNumberEnd, Ends) {
    const struct {
        const char* text;
        char mark;
        int32_t end;
    } cases[] = {
        {"  -12.5e+3xyz", '.', 10},
        {"12e", '.', 2},
        {"12e+", '.', 2},
        {"12 e5", '.', 2},
        {"1e 5", '.', 4},
        {"1e - 5", '.', 6},
        {"-inf", '.', 4},
        {"-nan", '.', 0},
        {"nan", '.', 3},
        {" NaNx", '.', 4},
        {".5", '.', 2},
        {".", '.', 0},
        {"abc", '.', 0},
        {"1,5", ',', 3},
        {"1.5", ',', 1},
        {"", '.', 0},
    };
    for (const auto& c : cases) {
        int32_t n = (int32_t)strlen(c.text);
        EXPECT_EQ(FindNumberEnd(c.text, n, c.mark) - c.text, c.end) << c.text;
    }
}

struct IntScanCase {
    int32_t (*scan)(const char**, int32_t, NumType);
    const char* text;
    NumType type;
    int32_t value;
    int32_t used;
};

TEST(IntegerScanners, SaturationAndPositions) {
    const IntScanCase cases[] = {
        {ScanInt, "99999", NumIW, 32767, 5},
        {ScanUInt, "99999", NumUW, 65535, 5},
        {ScanInt, " -12x", NumIL, -12, 4},
        {ScanInt, "  x", NumIL, 0, 0},
        {ScanInt, " -", NumIL, 0, 0},
        {ScanInt, "-2147483648", NumIL, INT32_MIN, 11},
        {ScanInt, "2147483648", NumIL, INT32_MAX, 10},
        {ScanInt, "-99999999999", NumIL, INT32_MIN, 12},
        {ScanInt, "-200", NumIB, -128, 4},
        {ScanInt, "300", NumUB, 255, 3},
        {ScanInt, "-5", NumUB, 0, 2},
        {ScanUInt, "-5", NumUL, 0, 0},  // no sign is taken
        {ScanUInt, "4294967295", NumUL, -1, 10},
        {ScanUInt, "99999999999", NumUB, 0, 11},  // the saturated 0xFFFFFFFF reads as negative
        {ScanHex, "FF", NumIB, 127, 2},
        {ScanHex, "-FF", NumIB, -127, 3},  // the sign applies after the saturation
        {ScanHex, "7f", NumIB, 127, 2},
        {ScanHex, "FFFFFFFF", NumIL, -1, 8},
        {ScanHex, "1FFFFFFFF", NumIL, INT32_MAX, 9},
        {ScanHex, "1FFFFFFFF", NumUL, -1, 9},
        {ScanHex, "FFFF", NumIW, 32767, 4},
        {ScanHex, "ffff", NumUW, 65535, 4},
        {ScanHex, "12345", NumUW, 65535, 5},
        {ScanHex, "-1", NumUB, -1, 2},
        {ScanHex, "fg", NumIL, 15, 1},
        {ScanHex, "A0", NumUB, 160, 2},
        {ScanHex, "1FFFFFFFF", NumUB, 255, 9},  // saturated bits read as negative: 255
        {ScanHex, " -x", NumIL, 0, 0},
        {ScanOctal, "777", NumUB, 255, 3},
        {ScanOctal, "178", NumIL, 15, 2},
        {ScanBinary, "101", NumIL, 5, 3},
        {ScanBinary, "102", NumIL, 2, 2},
    };
    for (const IntScanCase& c : cases) {
        const char* p = c.text;
        EXPECT_EQ(c.scan(&p, (int32_t)strlen(c.text), c.type), c.value) << c.text << " " << c.type;
        EXPECT_EQ(p - c.text, c.used) << c.text;
    }
}

TEST(IntegerScanners, SaturateToTypeModes) {
    const struct {
        int32_t value;
        NumType type;
        int32_t fromUnsigned, clampNegative, expected;
    } cases[] = {
        {-129, NumIB, 0, 1, -128}, {200, NumIB, 1, 0, 127},     {127, NumIB, 1, 0, 127},
        {-1, NumIB, 1, 0, 127},    {40000, NumIW, 0, 0, 32767}, {0x7FFF, NumIW, 1, 0, 0x7FFF},
        {-1, NumUB, 0, 1, 0},      {-1, NumUB, 0, 0, 255},      {256, NumUB, 0, 1, 255},
        {-1, NumUW, 0, 0, 65535},  {70000, NumUW, 0, 1, 65535}, {-7, NumIL, 0, 1, -7},
    };
    for (const auto& c : cases)
        EXPECT_EQ(SaturateToType(c.value, c.type, c.fromUnsigned, c.clampNegative), c.expected)
            << c.value << " " << c.type;
}

TEST(ScanNumberText, StoresInTheTypesWidth) {
    uint64_t out = 0xAAAAAAAAAAAAAAAAull;
    EXPECT_EQ(ScanNumberText("  42  ", 6, NumIL, &out, 64), 1);
    EXPECT_EQ((uint32_t)out, 42u);
    EXPECT_EQ(out >> 32, 0xAAAAAAAAu);
    EXPECT_EQ(ScanNumberText("43x", 3, NumIL, &out, 64), 0);
    EXPECT_EQ((uint32_t)out, 43u);
    out = 7;
    EXPECT_EQ(ScanNumberText("x", 1, NumIL, &out, 64), 0);
    EXPECT_EQ(out, 7u);
    EXPECT_EQ(ScanNumberText("FF", 2, NumIB, &out, 66), 1);
    EXPECT_EQ(out & 0xFF, 127u);
    EXPECT_EQ(ScanNumberText("-5", 2, NumIQ, &out, 64), 1);
    EXPECT_EQ((int64_t)out, -5);
    // A 32-bit value sign-extends into both 64-bit types.
    EXPECT_EQ(ScanNumberText("4294967295", 10, NumUQ, &out, 65), 1);
    EXPECT_EQ(out, ~0ull);
    EXPECT_EQ(ScanNumberText("101", 3, NumUW, &out, 68), 1);
    EXPECT_EQ(out & 0xFFFF, 5u);
    double d = 0;
    EXPECT_EQ(ScanNumberText("4294967295", 10, NumFD, &d, 65), 1);
    EXPECT_EQ(d, 4294967295.0);
    EXPECT_EQ(ScanNumberText("-12", 3, NumFD, &d, 64), 1);
    EXPECT_EQ(d, -12.0);
}

TEST(ScanNumberTextDeathTest, TypeOutsideOneToElevenIsAFailure) {
    double z[2];
    EXPECT_EXIT(ScanNumberText("1", 1, NumCD, z, 64), testing::ExitedWithCode(1), "");
}

TEST(SIPrefixes, PrePass) {
    const struct {
        const char* text;
        int32_t end;
    } ends[] = {{"1.5k", 4}, {"1.5 k", 5}, {"1.5 k ", 5}, {"1.5kx", 0}, {"inf", 0},
                {"k", 0},    {"1.5", 0},   {"-2m", 3},    {"1.5mk", 5}};  // a later prefix too
    for (const auto& c : ends)
        EXPECT_EQ(FindPrefixEnd(c.text, (int32_t)strlen(c.text), '.') - c.text, c.end) << c.text;

    char out[64];
    EXPECT_EQ(ExpandPrefix("-1.5 k", 6, out, 64, '.'), 7);
    EXPECT_STREQ(out, "-1.5e+3");
    EXPECT_EQ(ExpandPrefix("2y", 2, out, 64, '.'), 5);
    EXPECT_STREQ(out, "2e-24");
    EXPECT_EQ(ExpandPrefix("2u", 2, out, 64, '.'), 4);
    EXPECT_STREQ(out, "2e-6");
    EXPECT_EQ(ExpandPrefix("1.5k", 4, out, 7, '.'), 0);  // needs length + 4
    EXPECT_EQ(ExpandPrefix("1.5", 3, out, 64, '.'), 0);
    EXPECT_EQ(ExpandPrefix("1.5kk", 5, out, 64, '.'), 0);
    EXPECT_EQ(ExpandPrefix("k", 1, out, 64, '.'), 0);
}

struct FloatScanCase {
    const char* text;
    NumType type;
    double value;
    int32_t used;
};

TEST(ScanFloat, ValuesAndPositions) {
    const int32_t withPrefix = 1 << 16;
    const FloatScanCase cases[] = {
        {"1.5k", NumFD | withPrefix, 1500, 4},
        {"1.5 k", NumFD | withPrefix, 1500, 5},
        {"1.5kx", NumFD | withPrefix, 1.5, 3},
        {"-2m", NumFD | withPrefix, -0.002, 3},
        {"3 M", NumFD | withPrefix, 3e6, 3},
        {"1.5mk", NumFD | withPrefix, 1.5, 3},
        {"1.5k", NumFD, 1.5, 3},  // no prefixes asked
        {"  12.5e3xyz", NumFD, 12500, 8},
        {"abc", NumFD, 0, 0},
        {"-inf", NumFD, -INFINITY, 4},
        {"0.1", NumFD, 0.1, 3},
        {"2.5", NumIL, 2, 3},
        {"1e5", NumIB, 127, 3},
        {"1e400", NumFD, INFINITY, 5},
        {"1e-400", NumFD, 0, 6},
        {"4.9406564584124654E-324", NumFD, 4.9406564584124654e-324, 23},
    };
    for (const FloatScanCase& c : cases) {
        const char* p = c.text;
        double v = -99;
        int64_t i = 0;
        void* out = (c.type & 15) == NumFD ? (void*)&v : (void*)&i;
        ScanFloat(&p, (int32_t)strlen(c.text), 0, c.type, out);
        if ((c.type & 15) == NumFD)
            EXPECT_EQ(v, c.value) << c.text;
        else
            EXPECT_EQ((double)(c.type == NumIB ? (int8_t)i : (int32_t)i), c.value) << c.text;
        EXPECT_EQ(p - c.text, c.used) << c.text;
    }
    const char* p = "7.25";
    ScanFloat(&p, 4, 0, NumFD, nullptr);  // only scans
    EXPECT_EQ(*p, 0);
    double v;
    p = "nan";
    ScanFloat(&p, 3, 0, NumFD, &v);
    EXPECT_TRUE(isnan(v));
    char saved = SystemDecimalMark;
    SystemDecimalMark = ',';
    p = "1,5";
    ScanFloat(&p, 3, 1, NumFD, &v);
    EXPECT_EQ(v, 1.5);
    SystemDecimalMark = saved;
    p = "1,5";
    ScanFloatMark(&p, 3, NumFD, &v, ',');
    EXPECT_EQ(v, 1.5);
}

}  // namespace
