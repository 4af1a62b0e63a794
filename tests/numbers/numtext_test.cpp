// Number text: the radix writers, the integer and float codes of NumToText, the decimal
// form's writer and its correction cases, engineering and SI notation, complex numbers.
#include "mg/numtext.h"

#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <string>

#include "decimal_fields.h"
#include "support/rows.h"

namespace {

using namespace mgtest;

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

TEST(NumToText, IntegerCodes) {
    // Type word above 30: the signed route. 64-bit types give their low 32 bits.
    // clang-format off
    const struct { NumType type; uint64_t bits; int32_t code; const char* text; } cases[] = {
        {NumIL, 0xFFFFFFFF, 64, "-1"}, {NumUL, 0xFFFFFFFF, 64, "4294967295"},
        {0x27, 0xFFFFFFFF, 64, "-1"}, {NumIL, 0xFFFFFFFF, 65, "4294967295"},
        {NumIB, 0xFF, 66, "FF"}, {NumIB, 0xFF, 64, "-1"}, {NumUB, 0xFF, 64, "255"},
        {NumUW, 0xFFFF, 66, "FFFF"}, {NumIW, 0xFFFE, 68, "1111111111111110"},
        {NumIL, 0xFFFFFFF8, 67, "37777777770"}, {NumIL, 0x80000000, 66, "80000000"},
        {NumUQ, 0x100000005ull, 65, "5"}, {NumIQ, 0xFFFFFFFF00000002ull, 64, "2"}};
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(Text(&c.bits, c.type, c.code), c.text) << c.type << " " << c.code;
    // Floats go through the conversion, with its rounding and saturation; a short buffer gets
    // what fits.
    int32_t v = -123456;
    char small[4];
    ExpectRows({Row(D(2.5, 64), "2"), Row(D(3.5, 64), "4"), Row(D(-1e10, 64), "-2147483648"),
                Row(D(-1, 66), "FFFFFFFF"), Row(Text(nullptr, NumIL, 64), "0"),
                Row(NumToText(&v, NumIL, 64, small, 4, '.', nullptr), 7), Row(small, "-12")});
}

TEST(NumToText, FloatCodes) {
    // 1e308 at -6: the fixed form would reach 308. 2.675: the double lies below. -0.001 rounds
    // to zero but keeps its sign; -0.0001 lies below the last place: plain zero. 2.5 at 1: ties
    // to even in the packed store. Scaling by ten to the 340 through a power of two leaves the
    // 17th digit of the smallest denormal one high. SI (100 to 102) and engineering (131 to
    // 133) notation at the end.
    // clang-format off
    const struct { double value; int32_t code; const char* text; } cases[] = {
        {1e308, -6, "1.000000E+308"}, {2.675, -2, "2.67"}, {-0.001, -2, "-0.00"},
        {-0.0001, -2, "0.00"}, {0.0, 7, "0.000000E+0"}, {-0.0, 7, "0.000000E+0"},
        {-0.0, -2, "0.00"}, {1.5, 2, "1.5E+0"}, {1.5, 1, "2E+0"}, {2.5, 1, "2E+0"}, {0.5, 0, "0"},
        {1.5, 0, "2"}, {0.05, -1, "0.1"}, {0.0999999, -2, "0.10"}, {9.9999, 2, "1.0E+1"},
        {999.9996, -3, "1000.000"}, {-123456789, -1, "-123456789.0"},
        {4.9406564584124654e-324, 17, "4.9406564584124655E-324"},
        {1.7976931348623157e308, 17, "1.7976931348623157E+308"}, {0.1, 17, "1.0000000000000001E-1"},
        {1e21, 0, "1000000000000000000000"},
        {12.5, -100, "12.500000000000000000000000000000000000000000000000000000000000000"},
        {INFINITY, 5, "Inf"}, {-INFINITY, -2, "-Inf"}, {NAN, 5, "NaN"}, {-NAN, -2, "NaN"},
        {1234.5, 102, "1.23k"}, {1e30, 102, "1.00E+30"}, {0.000999999, 100, "1m"},
        {-4.7e-9, 101, "-4.7n"}, {999.96, 101, "1.0k"}, {12.0, 100, "12"}, {2.4e24, 100, "2Y"},
        {12345.678, 133, "12.35E+3"}, {0.012345, 132, "12.3E-3"}, {1.5, 133, "1.50E+0"},
        {123456.0, 131, "123E+3"}, {-1.0e-7, 131, "-100E-9"}, {INFINITY, 131, "Inf"},
        {NAN, 102, "NaN"}};
    // clang-format on
    for (const auto& c : cases) EXPECT_EQ(D(c.value, c.code), c.text) << c.value << " " << c.code;
}

// Code 80 reaches the exponent form, with 17 digits and zeros after them. The buffer limits the
// digits: a code above size - 8 is cut, and the writer cuts the digits without rounding them
// again; a fixed form that would not fit gives way to the exponent form, then to the buffer.
// Other types widen through Extended; the reserved forms store nothing for real numbers.
TEST(NumToText, CodesWithoutABranchAndBufferLimits) {
    int32_t i = -42;
    float f = 0.1f;
    double d = 1;
    char out[8] = "#######";
    ExpectRows({Row(D(1.0, 80), "1." + std::string(79, '0') + "E+0"),
                Row(D(0.1, 70), "1.0000000000000001" + std::string(53, '0') + "E-1"),
                Row(D(3.14159, 10, 12), "3.141E+0"), Row(D(123456.0, -2, 10), "1.2E+5"),
                Row(D(123456.0, -2, 11), "123456.00"), Row(Text(&i, NumIL, -1), "-42.0"),
                Row(Text(&f, NumFS, 9), "1.00000001E-1"), Row(Text(nullptr, NumFD, 5), "0"),
                Row(NumToText(&d, NumFD, 250, out, 8, '.', nullptr), 0), Row(out, "#######"),
                Row(NumToText(&d, NumFD, 600, out, 8, '.', nullptr), 0),
                Row(Text(&d, NumFD, -3, 256, nullptr, ','), "1,000")});
}

// The digits 2 and 5 (52 * 10^exponent). Below -4915 the number prints as zero; digits beyond
// the last stored one are zeros; the writer doesn't round; places may end before the first
// digit; e = 61 does not fit 64 - 4: the exponent form with one digit.
TEST(DecimalToText, WriterCases) {
    // clang-format off
    const struct { int16_t exponent; bool negative; int32_t code; std::string text; } cases[] = {
        {-4920, true, 3, "0.00E+0"}, {0, true, -3, "-52.000"}, {0, true, 5, "-5.2000E+1"},
        {-3, true, -1, "-0.0"}, {-3, true, -5, "-0.05200"}, {-4, false, -1, "0.0"},
        {60, false, 0, "5E+61"}, {40, false, 0, "52" + std::string(40, '0')}};
    // clang-format on
    for (const auto& c : cases) {
        DecimalNumber d{{0x52}, uint8_t(c.negative ? DecimalSignNegative : 0), c.exponent, 1};
        char out[64];
        const int32_t n = DecimalToText(&d, c.code, out, 64, '.');
        EXPECT_EQ(std::string(out, n), c.text) << c.exponent << " " << c.code;
    }
    // A nibble above nine is a failure.
    DecimalNumber bad{{0x0C}, 0, 0, 0};
    char out[32];
    EXPECT_EXIT(DecimalToText(&bad, 3, out, 32, '.'), testing::ExitedWithCode(1), "");
}

std::string Dec(long double x, int32_t digits) {
    DecimalNumber d;
    memset(&d, 0xAA, sizeof d);
    ExtendedToDecimal(x, digits, &d);
    return DecimalFields(d);
}

// A carry out of the leading digit for odd and even indexes clears every digit, the 1 of 100
// too; an overflow of the 18-digit store clears all digits and puts a 1 in the leading nibble;
// with one digit wanted its low nibble alone counts; what is rounded off below the wanted
// places leaves a 9 that the writer never shows.
// Infinity keeps its sign, NaN does not. The store holds 18 digits: asking for more gives
// those 18, and the places asked of a fixed form may be anything.
TEST(ExtendedToDecimal, CorrectionCases) {
    ExpectRows({Row(Dec(9.96L, 2), "0|0|1|100000000000000000"),
                Row(Dec(99.6L, 1).erase(6, 1).substr(0, 7), "0|2|0|1"),
                Row(Dec(-999999999999999999.6L, 0), "80|1|17|000000000000000010"),
                Row(Dec(0.004L, -2), "0|-3|0|090000000000000000"),
                Row(Dec(-INFINITY, 5), "80|32767|0|000000000000000000"),
                Row(Dec(-NAN, 5), "0|32766|0|000000000000000000"),
                Row(Dec(-0.0L, 4), "0|-3|3|000000000000000000"),
                Row(Dec(0.0L, 0), "0|0|0|000000000000000000"),
                Row(Dec(1.0L / 3, 19), Dec(1.0L / 3, 18)),
                Row(Dec(1.0L / 3, 1000), Dec(1.0L / 3, 18)),
                Row(Dec(1.0L / 3, INT32_MAX), Dec(1.0L / 3, 18)),
                Row(Dec(1e300L, INT32_MIN).substr(0, 8), "0|283|17"),
                Row(Dec(0.0L, INT32_MIN).substr(8, 2), "00")});
}

// Bytes the unit never produces: an unnormal (top mantissa bit clear under a nonzero
// exponent) is an invalid operand and converts as NaN; a pseudo-infinity stays infinity.
TEST(ExtendedToDecimal, UnnormalIsNaN) {
    const uint8_t unnormal[10] = {0, 0, 0, 0, 0, 0, 0, 0x40, 0xFF, 0x3F};
    const uint8_t negativeUnnormal[10] = {1, 0, 0, 0, 0, 0, 0, 0, 0x00, 0xC0};
    const uint8_t pseudoInfinity[10] = {0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    ExpectRows({Row(Text(unnormal, NumFX, 5), "NaN"), Row(Text(negativeUnnormal, NumFX, -3), "NaN"),
                Row(Text(pseudoInfinity, NumFX, 5), "-Inf")});
}

// Past the table: infinity, or zero for small exponents and zero digits.
TEST(DecimalToExtended, TableAndSpecials) {
    PowerOfTenTableFill();
    auto value = [](int16_t exponent, uint8_t digits, uint8_t sign = 0) {
        DecimalNumber d{{digits}, sign, exponent, 0};
        return DecimalToExtended(&d);
    };
    ExpectRows({Row(PowerOfTenTable[0] == 1, 1), Row(PowerOfTenTable[1] == 10, 1),
                Row(fabsl(PowerOfTenTable[13] / 1e4096L - 1) < 1e-15, 1),
                Row(value(3, 0x52) == 52000, 1), Row((double)value(-1, 0x52) == 5.2, 1),
                Row(value(9000, 0x52) == INFINITY, 1), Row(value(-9000, 0x52) == 0, 1),
                Row(value(9000, 0) == 0, 1),
                Row(value(DecimalExponentInfinity, 0x52, DecimalSignNegative) == -INFINITY, 1),
                Row(isnan(value(DecimalExponentNaN, 0x52)), 1)});
}

// A prefix exponent pointer takes the number's exponent out of the text; 100 counts as not
// given, and SI yields to engineering without it. A prefix exponent given by the caller adds
// to the number's; at the limits the sum wraps in 32 bits.
TEST(Notation, PrefixExponent) {
    const double v = 12345.678, big = 1e30, v1500 = 1500, one = 1;
    int32_t prefix = 0;
    auto text = [&](const double& x, int32_t code, int32_t start) {
        prefix = start;
        return Text(&x, NumFD, code, 256, &prefix);
    };
    ExpectRows({Row(text(v, 133, 0), "12.35"), Row(prefix, 3), Row(text(v, 133, 100), "12.35E+3"),
                Row(prefix, 100), Row(text(v, 102, 100), "12.35E+3"), Row(text(v, 102, 0), "12.35"),
                Row(prefix, 3), Row(text(big, 102, 0), "1.00E+30"), Row(prefix, 0),
                Row(text(v1500, 101, 3), "1.5"), Row(prefix, 6),
                Row(text(v1500, 133, INT32_MAX), "1.50E-2147483646"), Row(prefix, 0),
                Row(text(one, 133, INT32_MIN), "10.00E+2147483647")});
}

// The first part of a complex number takes at most half the buffer.
TEST(NumToText, Complex) {
    const double z[] = {1.5, 2.5, 1.5, -2.5, 1.5, NAN, 0, 2, 1.25, -3, 1.0 / 3, 2.0 / 3};
    float s[2] = {1500, 2500};
    int32_t prefix = 0;
    ExpectRows(
        {Row(Text(nullptr, NumCD, 5), "0 + 0i"), Row(Text(z, NumCD, 2), "1.5E+0 +2.5E+0 i"),
         Row(Text(z + 2, NumCD, 2), "1.5E+0 -2.5E+0 i"), Row(Text(z + 4, NumCD, -1), "1.5 +NaN i"),
         Row(Text(z + 6, NumCD, -102), "2.00 arg 1.57"), Row(Text(z + 8, NumCD, 201), "1.2 -3.0 i"),
         Row(Text(z + 8, NumCD, 514), "1.25 -3.00 i"), Row(Text(s, NumCS, 101), "1.5k +2.5k i"),
         Row(Text(s, NumCS, 101, 256, &prefix), "1.5 +2.5 i"), Row(prefix, 3),
         Row((s[1] = 2.5f, prefix = 0, Text(s, NumCS, 101, 256, &prefix)), "1.5k +2.5 i"),
         Row(prefix, 0), Row(Text(z + 10, NumCD, 8, 24), "3.333E-1 +6.666E-1 i")});
}

TEST(NumToInt32, ReadsAndConversions) {
    const uint64_t q = 0xFFFFFFFF80000001ull;
    const int8_t b = -5;
    const uint16_t w = 65535;
    const double d[] = {1e12, -7.5};
    ExpectRows({Row(NumToInt32(NumIQ, &q), int32_t(0x80000001)),
                Row(NumToUInt32(NumUQ, &q), 0x80000001u), Row(NumToInt32(NumIB, &b), -5),
                Row(NumToUInt32(NumIB, &b), 0xFFFFFFFBu), Row(NumToInt32(NumUW, &w), 65535),
                Row(NumToInt32(NumFD, d), INT32_MAX), Row(NumToUInt32(NumFD, d), 0xFFFFFFFFu),
                Row(NumToInt32(NumFD, d + 1), -8), Row(NumToInt32(NumIL, nullptr), 0)});
}

}  // namespace
