// Number text: the radix writers, the integer and float codes of NumToText, the decimal
// form's writer and its correction cases, engineering and SI notation, complex numbers.
#include "mg/numtext.h"

#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <string>

namespace {

std::string Text(const void* number, NumType type, int32_t code, int32_t outSize = 256,
                 int32_t* prefix = nullptr, char mark = '.') {
    char out[1100];
    memset(out, '#', sizeof out);
    int32_t n = NumToText(number, type, code, out, outSize, mark, prefix);
    EXPECT_EQ(out[n], 0) << "terminator";
    return std::string(out, n);
}

std::string D(double v, int32_t code, int32_t outSize = 256) {
    return Text(&v, NumFD, code, outSize);
}

struct IntCase {
    NumType type;
    uint64_t bits;
    int32_t code;
    const char* text;
};

TEST(NumToText, IntegerCodes) {
    const IntCase cases[] = {
        {NumIL, 0xFFFFFFFF, 64, "-1"},
        {NumUL, 0xFFFFFFFF, 64, "4294967295"},
        {0x27, 0xFFFFFFFF, 64, "-1"},  // type word above 30: the signed route
        {NumIL, 0xFFFFFFFF, 65, "4294967295"},
        {NumIB, 0xFF, 66, "FF"},
        {NumIB, 0xFF, 64, "-1"},
        {NumUB, 0xFF, 64, "255"},
        {NumUW, 0xFFFF, 66, "FFFF"},
        {NumIW, 0xFFFE, 68, "1111111111111110"},
        {NumIL, 0xFFFFFFF8, 67, "37777777770"},
        {NumIL, 0x80000000, 66, "80000000"},
        {NumUQ, 0x100000005ull, 65, "5"},  // the low 32 bits
        {NumIQ, 0xFFFFFFFF00000002ull, 64, "2"},
    };
    for (const IntCase& c : cases)
        EXPECT_EQ(Text(&c.bits, c.type, c.code), c.text) << c.type << " " << c.code;
    // Floats go through the conversion, with its rounding and saturation.
    EXPECT_EQ(D(2.5, 64), "2");
    EXPECT_EQ(D(3.5, 64), "4");
    EXPECT_EQ(D(-1e10, 64), "-2147483648");
    EXPECT_EQ(D(-1, 66), "FFFFFFFF");
    EXPECT_EQ(Text(nullptr, NumIL, 64), "0");
    // A short buffer gets what fits.
    int32_t v = -123456;
    char small[4];
    EXPECT_EQ(NumToText(&v, NumIL, 64, small, 4, '.', nullptr), 7);
    EXPECT_STREQ(small, "-12");
}

struct FloatCase {
    double value;
    int32_t code;
    const char* text;
};

TEST(NumToText, FloatCodes) {
    const FloatCase cases[] = {
        {1e308, -6, "1.000000E+308"},  // fixed form would reach 308
        {2.675, -2, "2.67"},           // the double lies below 2.675
        {-0.001, -2, "-0.00"},         // rounds to zero but keeps its sign
        {-0.0001, -2, "0.00"},         // below the last place: plain zero
        {0.0, 7, "0.000000E+0"},
        {-0.0, 7, "0.000000E+0"},
        {-0.0, -2, "0.00"},
        {1.5, 2, "1.5E+0"},
        {1.5, 1, "2E+0"},
        {2.5, 1, "2E+0"},  // ties to even in the packed store
        {0.5, 0, "0"},
        {1.5, 0, "2"},
        {0.05, -1, "0.1"},
        {0.0999999, -2, "0.10"},
        {9.9999, 2, "1.0E+1"},
        {999.9996, -3, "1000.000"},
        {-123456789, -1, "-123456789.0"},
        // Scaling by ten to the 340 through a power of two leaves the 17th digit one high.
        {4.9406564584124654e-324, 17, "4.9406564584124655E-324"},
        {1.7976931348623157e308, 17, "1.7976931348623157E+308"},
        {0.1, 17, "1.0000000000000001E-1"},
        {1e21, 0, "1000000000000000000000"},
        {12.5, -100, "12.500000000000000000000000000000000000000000000000000000000000000"},
        {INFINITY, 5, "Inf"},
        {-INFINITY, -2, "-Inf"},
        {NAN, 5, "NaN"},
        {-NAN, -2, "NaN"},
        // SI (100 to 102) and engineering (131 to 133) notation.
        {1234.5, 102, "1.23k"},
        {1e30, 102, "1.00E+30"},
        {0.000999999, 100, "1m"},
        {-4.7e-9, 101, "-4.7n"},
        {999.96, 101, "1.0k"},
        {12.0, 100, "12"},
        {2.4e24, 100, "2Y"},
        {12345.678, 133, "12.35E+3"},
        {0.012345, 132, "12.3E-3"},
        {1.5, 133, "1.50E+0"},
        {123456.0, 131, "123E+3"},
        {-1.0e-7, 131, "-100E-9"},
        {INFINITY, 131, "Inf"},
        {NAN, 102, "NaN"},
    };
    for (const FloatCase& c : cases)
        EXPECT_EQ(D(c.value, c.code), c.text) << c.value << " " << c.code;
}

TEST(NumToText, CodesWithoutABranchAndBufferLimits) {
    // Code 80 reaches the exponent form, with 17 digits and zeros after them.
    EXPECT_EQ(D(1.0, 80), "1." + std::string(79, '0') + "E+0");
    EXPECT_EQ(D(0.1, 70), "1.0000000000000001" + std::string(53, '0') + "E-1");
    // The buffer limits the digits: a code above size - 8 is cut, and the writer cuts the
    // digits without rounding them again.
    EXPECT_EQ(D(3.14159, 10, 12), "3.141E+0");
    // Fixed form that would not fit gives way to the exponent form, then to the buffer.
    EXPECT_EQ(D(123456.0, -2, 10), "1.2E+5");
    EXPECT_EQ(D(123456.0, -2, 11), "123456.00");
    // Other types widen through Extended.
    int32_t i = -42;
    EXPECT_EQ(Text(&i, NumIL, -1), "-42.0");
    float f = 0.1f;
    EXPECT_EQ(Text(&f, NumFS, 9), "1.00000001E-1");
    EXPECT_EQ(Text(nullptr, NumFD, 5), "0");
    double d = 1;
    char out[8];
    memset(out, '#', sizeof out);
    EXPECT_EQ(NumToText(&d, NumFD, 250, out, 8, '.', nullptr), 0);
    EXPECT_EQ(out[0], '#');  // reserved forms store nothing for real numbers
    EXPECT_EQ(NumToText(&d, NumFD, 600, out, 8, '.', nullptr), 0);
    EXPECT_EQ(Text(&d, NumFD, -3, 256, nullptr, ','), "1,000");
}

TEST(DecimalToText, WriterCases) {
    const struct {
        int16_t exponent;
        bool negative;
        int32_t code;
        std::string text;
    } cases[] = {
        {-4920, true, 3, "0.00E+0"},  // below -4915 the number prints as zero
        {0, true, -3, "-52.000"},
        {0, true, 5, "-5.2000E+1"},  // digits beyond the last stored one are zeros
        {-3, true, -1, "-0.0"},      // no rounding in the writer
        {-3, true, -5, "-0.05200"},
        {-4, false, -1, "0.0"},   // the places end before the first digit
        {60, false, 0, "5E+61"},  // e = 61 does not fit 64 - 4: exponent form with one digit
        {40, false, 0, "52" + std::string(40, '0')},
    };
    for (const auto& c : cases) {
        DecimalNumber d{};
        d.digits[0] = 0x52;  // digits 2 and 5: the value 52 * 10^exponent
        d.mdigits = 1;
        d.exponent = c.exponent;
        d.sign = c.negative ? DecimalSignNegative : 0;
        char out[64];
        int32_t n = DecimalToText(&d, c.code, out, 64, '.');
        EXPECT_EQ(std::string(out, n), c.text) << c.exponent << " " << c.code;
    }
}

TEST(DecimalToTextDeathTest, ANibbleAboveNineIsAFailure) {
    DecimalNumber d{};
    d.digits[0] = 0x0C;
    char out[32];
    EXPECT_EXIT(DecimalToText(&d, 3, out, 32, '.'), testing::ExitedWithCode(1), "");
}

TEST(ExtendedToDecimal, CorrectionCases) {
    DecimalNumber d;
    // A carry out of the leading digit for odd and even indexes.
    ExtendedToDecimal(9.96L, 2, &d);
    EXPECT_EQ(d.mdigits, 1);
    EXPECT_EQ(d.digits[0], 0x10);
    EXPECT_EQ(d.digits[1], 0);  // the carry clears every digit, the 1 of 100 too
    EXPECT_EQ(d.exponent, 0);
    ExtendedToDecimal(99.6L, 1, &d);
    EXPECT_EQ(d.digits[0] & 15, 1);
    EXPECT_EQ(d.exponent, 2);
    // The 18-digit store overflows: all digits cleared and a 1 in the leading nibble.
    ExtendedToDecimal(-999999999999999999.6L, 0, &d);
    EXPECT_EQ(d.mdigits, 17);
    EXPECT_EQ(d.digits[8], 0x10);
    EXPECT_EQ(d.sign, DecimalSignNegative);
    EXPECT_EQ(d.exponent, 1);
    // Rounded off below the wanted places: a 9 that the writer never shows.
    ExtendedToDecimal(0.004L, -2, &d);
    EXPECT_EQ(d.digits[0], 9);
    EXPECT_EQ(d.exponent, -3);
    // Infinity keeps its sign, NaN does not.
    ExtendedToDecimal(-INFINITY, 5, &d);
    EXPECT_EQ(d.exponent, DecimalExponentInfinity);
    EXPECT_EQ(d.sign, DecimalSignNegative);
    ExtendedToDecimal(-NAN, 5, &d);
    EXPECT_EQ(d.exponent, DecimalExponentNaN);
    EXPECT_EQ(d.sign, 0);
    ExtendedToDecimal(-0.0L, 4, &d);
    EXPECT_EQ(d.mdigits, 3);
    EXPECT_EQ(d.exponent, -3);
    EXPECT_EQ(d.sign, 0);
    ExtendedToDecimal(0.0L, 0, &d);
    EXPECT_EQ(d.mdigits, 0);
}

// Bytes the unit never produces: an unnormal (top mantissa bit clear under a nonzero
// exponent) is an invalid operand and converts as NaN; a pseudo-infinity stays infinity.
TEST(ExtendedToDecimal, UnnormalIsNaN) {
    const uint8_t unnormal[10] = {0, 0, 0, 0, 0, 0, 0, 0x40, 0xFF, 0x3F};
    const uint8_t negativeUnnormal[10] = {1, 0, 0, 0, 0, 0, 0, 0, 0x00, 0xC0};
    const uint8_t pseudoInfinity[10] = {0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    EXPECT_EQ(Text(unnormal, NumFX, 5), "NaN");
    EXPECT_EQ(Text(negativeUnnormal, NumFX, -3), "NaN");
    EXPECT_EQ(Text(pseudoInfinity, NumFX, 5), "-Inf");
}

// The packed store holds 18 digits: asking for more gives those 18, and the places asked of
// a fixed form may be anything.
TEST(ExtendedToDecimal, DigitCountsBeyondTheStore) {
    DecimalNumber eighteen, more;
    ExtendedToDecimal(1.0L / 3, 18, &eighteen);
    for (int32_t digits : {19, 20, 1000, INT32_MAX}) {
        memset(&more, 0xAA, sizeof more);
        ExtendedToDecimal(1.0L / 3, digits, &more);
        EXPECT_EQ(memcmp(&more, &eighteen, sizeof more), 0) << digits;
    }
    ExtendedToDecimal(1e300L, INT32_MIN, &more);
    EXPECT_EQ(more.mdigits, 17);
    ExtendedToDecimal(0.0L, INT32_MIN, &more);
    EXPECT_EQ(more.digits[0], 0);
}

TEST(DecimalToExtended, TableAndSpecials) {
    PowerOfTenTableFill();
    EXPECT_EQ(PowerOfTenTable[0], 1);
    EXPECT_NEAR((double)PowerOfTenTable[1], 10, 1e-15);
    EXPECT_NEAR((double)(PowerOfTenTable[13] / 1e4096L), 1, 1e-15);
    DecimalNumber d{};
    d.digits[0] = 0x52;
    d.exponent = 3;
    EXPECT_EQ(DecimalToExtended(&d), 52000);
    d.exponent = -1;
    EXPECT_EQ((double)DecimalToExtended(&d), 5.2);
    d.exponent = 9000;  // past the table: infinity
    EXPECT_TRUE(isinf(DecimalToExtended(&d)));
    d.exponent = -9000;
    EXPECT_EQ(DecimalToExtended(&d), 0);
    memset(d.digits, 0, sizeof d.digits);
    d.exponent = 9000;
    EXPECT_EQ(DecimalToExtended(&d), 0);
    d.exponent = DecimalExponentInfinity;
    d.sign = DecimalSignNegative;
    EXPECT_EQ(DecimalToExtended(&d), -INFINITY);
    d.exponent = DecimalExponentNaN;
    EXPECT_TRUE(isnan(DecimalToExtended(&d)));
}

TEST(Notation, PrefixExponent) {
    double v = 12345.678;
    int32_t prefix = 0;
    EXPECT_EQ(Text(&v, NumFD, 133, 256, &prefix), "12.35");
    EXPECT_EQ(prefix, 3);
    prefix = 100;  // counts as not given
    EXPECT_EQ(Text(&v, NumFD, 133, 256, &prefix), "12.35E+3");
    EXPECT_EQ(prefix, 100);
    prefix = 100;  // SI yields to engineering without the prefix
    EXPECT_EQ(Text(&v, NumFD, 102, 256, &prefix), "12.35E+3");
    prefix = 0;
    EXPECT_EQ(Text(&v, NumFD, 102, 256, &prefix), "12.35");
    EXPECT_EQ(prefix, 3);
    v = 1e30;
    prefix = 0;
    EXPECT_EQ(Text(&v, NumFD, 102, 256, &prefix), "1.00E+30");
    EXPECT_EQ(prefix, 0);
    // A prefix exponent given by the caller adds to the number's.
    v = 1500;
    prefix = 3;
    EXPECT_EQ(Text(&v, NumFD, 101, 256, &prefix), "1.5");
    EXPECT_EQ(prefix, 6);
    // At the limits the sum wraps in 32 bits.
    prefix = INT32_MAX;
    EXPECT_EQ(Text(&v, NumFD, 133, 256, &prefix), "1.50E-2147483646");
    EXPECT_EQ(prefix, 0);
    v = 1;
    prefix = INT32_MIN;
    EXPECT_EQ(Text(&v, NumFD, 133, 256, &prefix), "10.00E+2147483647");
}

TEST(NumToText, Complex) {
    EXPECT_EQ(Text(nullptr, NumCD, 5), "0 + 0i");
    double z[2] = {1.5, 2.5};
    EXPECT_EQ(Text(z, NumCD, 2), "1.5E+0 +2.5E+0 i");
    z[1] = -2.5;
    EXPECT_EQ(Text(z, NumCD, 2), "1.5E+0 -2.5E+0 i");
    z[1] = NAN;
    EXPECT_EQ(Text(z, NumCD, -1), "1.5 +NaN i");
    double p[2] = {0, 2};
    EXPECT_EQ(Text(p, NumCD, -102), "2.00 arg 1.57");
    double r[2] = {1.25, -3};
    EXPECT_EQ(Text(r, NumCD, 201), "1.2 -3.0 i");
    EXPECT_EQ(Text(r, NumCD, 514), "1.25 -3.00 i");
    float s[2] = {1500, 2500};
    EXPECT_EQ(Text(s, NumCS, 101), "1.5k +2.5k i");
    int32_t prefix = 0;
    EXPECT_EQ(Text(s, NumCS, 101, 256, &prefix), "1.5 +2.5 i");
    EXPECT_EQ(prefix, 3);
    s[1] = 2.5f;
    prefix = 0;
    EXPECT_EQ(Text(s, NumCS, 101, 256, &prefix), "1.5k +2.5 i");
    EXPECT_EQ(prefix, 0);
    // The first part takes at most half the buffer.
    double big[2] = {1.0 / 3, 2.0 / 3};
    EXPECT_EQ(Text(big, NumCD, 8, 24), "3.333E-1 +6.666E-1 i");
}

TEST(NumToInt32, ReadsAndConversions) {
    uint64_t q = 0xFFFFFFFF80000001ull;
    EXPECT_EQ(NumToInt32(NumIQ, &q), (int32_t)0x80000001);
    EXPECT_EQ(NumToUInt32(NumUQ, &q), 0x80000001u);
    int8_t b = -5;
    EXPECT_EQ(NumToInt32(NumIB, &b), -5);
    EXPECT_EQ(NumToUInt32(NumIB, &b), 0xFFFFFFFBu);
    uint16_t w = 65535;
    EXPECT_EQ(NumToInt32(NumUW, &w), 65535);
    double d = 1e12;
    EXPECT_EQ(NumToInt32(NumFD, &d), INT32_MAX);
    EXPECT_EQ(NumToUInt32(NumFD, &d), 0xFFFFFFFFu);
    d = -7.5;
    EXPECT_EQ(NumToInt32(NumFD, &d), -8);
    EXPECT_EQ(NumToInt32(NumIL, nullptr), 0);
}

}  // namespace
