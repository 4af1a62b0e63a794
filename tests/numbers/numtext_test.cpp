// Number text both ways. Out: the radix writers, the integer and float codes of NumToText, the
// decimal form's writer and its correction cases, engineering and SI notation, complex numbers.
// In: the decimal state machine, the end of a number, the integer scanners with their
// saturation, the SI pre-pass and the float scanners.
#include "mg/numtext.h"

#include <gtest/gtest.h>
#include <math.h>
#include <stdio.h>
#include <string.h>

#include <string>

#include "mg/numscan.h"
#include "mg/support.h"
#include "support/rows.h"

namespace {

using namespace mgtest;

// The fields of a decimal form as "sign|exponent|mdigits|digits", the sign and the digit bytes
// in hex, for comparisons of the whole record.
std::string DecimalFields(const DecimalNumber& d) {
    char text[64];
    snprintf(text, sizeof text, "%X|%d|%d|", d.sign, d.exponent, d.mdigits);
    std::string out = text;
    for (uint8_t b : d.digits) out += (snprintf(text, sizeof text, "%02X", b), text);
    return out;
}

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

TEST(NumToText, CodesAndBufferLimits) {
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
    // 1e308 at -6: the fixed form would reach 308. 2.675: the double lies below. -0.001 rounds
    // to zero but keeps its sign; -0.0001 lies below the last place: plain zero. 2.5 at 1: ties
    // to even in the packed store. Scaling by ten to the 340 through a power of two leaves the
    // 17th digit of the smallest denormal one high. SI (100 to 102) and engineering (131 to
    // 133) notation at the end.
    // Floats at the integer codes go through the conversion, with its rounding and saturation.
    // clang-format off
    const struct { double value; int32_t code; const char* text; } floats[] = {
        {2.5, 64, "2"}, {3.5, 64, "4"}, {-1e10, 64, "-2147483648"}, {-1, 66, "FFFFFFFF"},
        {1e308, -6, "1.000000E+308"}, {2.675, -2, "2.67"}, {-0.001, -2, "-0.00"},
        {-0.0001, -2, "0.00"}, {-0.0, 7, "0.000000E+0"}, {-0.0, -2, "0.00"}, {1.5, 2, "1.5E+0"},
        {1.5, 1, "2E+0"}, {2.5, 1, "2E+0"}, {0.5, 0, "0"}, {1.5, 0, "2"}, {0.05, -1, "0.1"},
        {0.0999999, -2, "0.10"}, {999.9996, -3, "1000.000"}, {1e21, 0, "1000000000000000000000"},
        {4.9406564584124654e-324, 17, "4.9406564584124655E-324"},
        {1.7976931348623157e308, 17, "1.7976931348623157E+308"}, {9.9999, 2, "1.0E+1"},
        {12.5, -100, "12.500000000000000000000000000000000000000000000000000000000000000"},
        {INFINITY, 5, "Inf"}, {-INFINITY, -2, "-Inf"}, {NAN, 5, "NaN"}, {-NAN, -2, "NaN"},
        {1e30, 102, "1.00E+30"}, {0.000999999, 100, "1m"}, {-4.7e-9, 101, "-4.7n"},
        {999.96, 101, "1.0k"}, {12.0, 100, "12"}, {2.4e24, 100, "2Y"}, {0.012345, 132, "12.3E-3"},
        {1.5, 133, "1.50E+0"}, {123456.0, 131, "123E+3"}, {-1.0e-7, 131, "-100E-9"},
        {INFINITY, 131, "Inf"}, {NAN, 102, "NaN"}};
    // clang-format on
    for (const auto& c : floats) EXPECT_EQ(D(c.value, c.code), c.text) << c.value << " " << c.code;
    // Code 80 reaches the exponent form, with 17 digits and zeros after them. The buffer limits the
    // digits: a code above size - 8 is cut, and the writer cuts the digits without rounding them
    // again; a fixed form that would not fit gives way to the exponent form, then to the buffer.
    // Other types widen through Extended; the reserved forms store nothing for real numbers. A
    // short buffer gets what fits.
    int32_t i = -42, v = -123456;
    float f = 0.1f;
    double d = 1;
    char out[8] = "#######", small[4];  // a short buffer exactly its size
    ExpectRows({Row(D(1.0, 80), "1." + std::string(79, '0') + "E+0"),
                Row(D(0.1, 70), "1.0000000000000001" + std::string(53, '0') + "E-1"),
                Row(D(3.14159, 10, 12), "3.141E+0"), Row(D(123456.0, -2, 10), "1.2E+5"),
                Row(D(123456.0, -2, 11), "123456.00"), Row(Text(&i, NumIL, -1), "-42.0"),
                Row(Text(&f, NumFS, 9), "1.00000001E-1"), Row(Text(nullptr, NumFD, 5), "0"),
                Row(NumToText(&d, NumFD, 250, out, 8, '.', nullptr), 0), Row(out, "#######"),
                Row(NumToText(&d, NumFD, 131, out, 6, '.', nullptr), 4),
                Row(std::string(out, 8), std::string("1E+0\0##", 8)),
                Row(NumToText(&d, NumFD, 600, out, 8, '.', nullptr), 0),
                Row(Text(&d, NumFD, -3, 256, nullptr, ','), "1,000"),
                Row(Text(nullptr, NumIL, 64), "0"),
                Row(NumToText(&v, NumIL, 64, small, 4, '.', nullptr), 7), Row(small, "-12")});
}

std::string Dec(long double x, int32_t digits) {
    DecimalNumber d;
    memset(&d, 0xAA, sizeof d);
    ExtendedToDecimal(x, digits, &d);
    return DecimalFields(d);
}

// The digits 2 and 5 (52 * 10^exponent). Below -4915 the number prints as zero; digits beyond
// the last stored one are zeros; the writer doesn't round; places may end before the first
// digit; e = 61 does not fit 64 - 4: the exponent form with one digit.
TEST(NumToText, DecimalFormNotationComplexAndInt32) {
    // clang-format off
    const struct { int16_t exponent; bool negative; int32_t code; std::string text; } cases[] = {
        {-4920, true, 3, "0.00E+0"}, {0, true, -3, "-52.000"}, {0, true, 5, "-5.2000E+1"},
        {-3, true, -1, "-0.0"}, {-3, true, -5, "-0.05200"}, {-4, false, -1, "0.0"},
        {60, false, 0, "5E+61"}, {40, false, 0, "52" + std::string(40, '0')}};
    // clang-format on
    char out[64];
    for (const auto& c : cases) {
        DecimalNumber d{{0x52}, uint8_t(c.negative ? DecimalSignNegative : 0), c.exponent, 1};
        const int32_t n = DecimalToText(&d, c.code, out, 64, '.');
        EXPECT_EQ(std::string(out, n), c.text) << c.exponent << " " << c.code;
    }
    // A nibble above nine is a failure.
    DecimalNumber bad{{0x0C}, 0, 0, 0};
    EXPECT_EXIT(DecimalToText(&bad, 3, out, 32, '.'), testing::ExitedWithCode(1), "");
    // A carry out of the leading digit for odd and even indexes clears every digit, the 1 of 100
    // too; an overflow of the 18-digit store clears all digits and puts a 1 in the leading nibble;
    // with one digit wanted its low nibble alone counts; what is rounded off below the wanted
    // places leaves a 9 that the writer never shows.
    // Infinity keeps its sign, NaN does not. The store holds 18 digits: asking for more gives
    // those 18, and the places asked of a fixed form may be anything.
    // Bytes the unit never produces: an unnormal (top mantissa bit clear under a nonzero
    // exponent) is an invalid operand and converts as NaN; a pseudo-infinity stays infinity.
    // clang-format off
    const struct { long double x; int32_t digits; const char* fields; } fields[] = {
        {9.96L, 2, "0|0|1|100000000000000000"},
        {-999999999999999999.6L, 0, "80|1|17|000000000000000010"},
        {0.004L, -2, "0|-3|0|090000000000000000"}, {-INFINITY, 5, "80|32767|0|000000000000000000"},
        {-NAN, 5, "0|32766|0|000000000000000000"}, {-0.0L, 4, "0|-3|3|000000000000000000"},
        {0.0L, 0, "0|0|0|000000000000000000"}};
    const uint8_t unnormal[10] = {0, 0, 0, 0, 0, 0, 0, 0x40, 0xFF, 0x3F},
        negativeUnnormal[10] = {1, 0, 0, 0, 0, 0, 0, 0, 0x00, 0xC0},
        pseudoInfinity[10] = {0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    // clang-format on
    for (const auto& c : fields) EXPECT_EQ(Dec(c.x, c.digits), c.fields) << (double)c.x;
    ExpectRows({Row(Dec(99.6L, 1).erase(6, 1).substr(0, 7), "0|2|0|1"),
                Row(Dec(1.0L / 3, 19), Dec(1.0L / 3, 18)),
                Row(Dec(1.0L / 3, INT32_MAX), Dec(1.0L / 3, 18)),
                Row(Dec(1e300L, INT32_MIN).substr(0, 8), "0|283|17"),
                Row(Dec(0.0L, INT32_MIN).substr(8, 2), "00"), Row(Text(unnormal, NumFX, 5), "NaN"),
                Row(Text(negativeUnnormal, NumFX, -3), "NaN"),
                Row(Text(pseudoInfinity, NumFX, 5), "-Inf")});
    // Past the table: infinity, or zero for small exponents and zero digits.
    PowerOfTenTableFill();
    auto value = [](int16_t exponent, uint8_t digits, uint8_t sign = 0) {
        DecimalNumber d{{digits}, sign, exponent, 0};
        return DecimalToExtended(&d);
    };
    ExpectRows({Row(fabsl(PowerOfTenTable[13] / 1e4096L - 1) < 1e-15, 1),
                Row(value(9000, 0x52) == INFINITY, 1), Row(value(-9000, 0x52) == 0, 1),
                Row(value(9000, 0) == 0, 1),
                Row(value(DecimalExponentInfinity, 0x52, DecimalSignNegative) == -INFINITY, 1),
                Row(isnan(value(DecimalExponentNaN, 0x52)), 1)});
    // A prefix exponent pointer takes the number's exponent out of the text; 100 counts as not
    // given, and SI yields to engineering without it. A prefix exponent given by the caller adds
    // to the number's; at the limits the sum wraps in 32 bits.
    const double v = 12345.678;
    int32_t prefix = 0;
    auto text = [&](double x, int32_t code, int32_t start) {
        prefix = start;
        return Text(&x, NumFD, code, 256, &prefix);
    };
    ExpectRows({Row(text(v, 133, 0), "12.35"), Row(prefix, 3), Row(text(v, 133, 100), "12.35E+3"),
                Row(prefix, 100), Row(text(v, 102, 100), "12.35E+3"), Row(text(v, 102, 0), "12.35"),
                Row(prefix, 3), Row(text(1e30, 102, 0), "1.00E+30"), Row(prefix, 0),
                Row(text(1500, 101, 3), "1.5"), Row(prefix, 6),
                Row(text(1500, 133, INT32_MAX), "1.50E-2147483646"), Row(prefix, 0),
                Row(text(1, 133, INT32_MIN), "10.00E+2147483647")});
    // The first part of a complex number takes at most half the buffer.
    const double z[] = {1.5, 2.5, 1.5, -2.5, 1.5, NAN, 0, 2, 1.25, -3, 1.0 / 3, 2.0 / 3};
    float s[2] = {1500, 2500};
    int32_t pre = 0;
    ExpectRows(
        {Row(Text(nullptr, NumCD, 5), "0 + 0i"), Row(Text(z, NumCD, 2), "1.5E+0 +2.5E+0 i"),
         Row(Text(z + 2, NumCD, 2), "1.5E+0 -2.5E+0 i"), Row(Text(z + 4, NumCD, -1), "1.5 +NaN i"),
         Row(Text(z + 6, NumCD, -102), "2.00 arg 1.57"), Row(Text(z + 8, NumCD, 201), "1.2 -3.0 i"),
         Row(Text(z + 8, NumCD, 514), "1.25 -3.00 i"), Row(Text(s, NumCS, 101), "1.5k +2.5k i"),
         Row(Text(s, NumCS, 101, 256, &pre), "1.5 +2.5 i"), Row(pre, 3),
         Row((s[1] = 2.5f, pre = 0, Text(s, NumCS, 101, 256, &pre)), "1.5k +2.5 i"), Row(pre, 0),
         Row(Text(z + 10, NumCD, 8, 24), "3.333E-1 +6.666E-1 i")});
    // The integer codes above run these on the other types.
    const int8_t b = -5;
    const double d[] = {1e12, -7.5};
    ExpectRows({Row(NumToUInt32(NumIB, &b), 0xFFFFFFFBu), Row(NumToUInt32(NumFD, d), 0xFFFFFFFFu),
                Row(NumToInt32(NumFD, d + 1), -8)});
}

// The result and the scanned form. Empty text has no digit count worth a check.
std::string Scanned(const char* text) {
    DecimalNumber d;
    const int32_t result = ScanDecimal(text, (int32_t)strlen(text), &d, '.');
    return std::to_string(result) + "|" + DecimalFields(d);
}

// A leading blank is junk: the number stands, the scan is invalid. The 19th digit is dropped.
// A blank ends the digits before their place is known.
TEST(NumberScan, Decimal) {
    const long double inf = INFINITY;
    // clang-format off
    const struct { const char* text; char mark; long double value; int32_t result; } cases[] = {
        {"+", '.', 0, 1}, {" 12", '.', 12, 0}, {"1,5", ',', 1.5L, 1}, {"1.5", ',', 1.5L, 1},
        {"inf", '.', inf, 1}, {"-INF", '.', -inf, 1}, {"Infx", '.', inf, 0}, {"Ix", '.', 0, 0},
        {"1234567890123456789", '.', 1234567890123456780.0L, 1},
        {"0.12345678901234567891", '.', 0.123456789012345678L, 1}, {"-.05", '.', -0.05L, 1},
        {"1.5E-3", '.', 0.0015L, 1}, {"1.5 E 3", '.', 1500, 1}, {"1.5e+", '.', 1.5L, 1},
        {"00012", '.', 12, 1}, {"100", '.', 100, 1}, {"E5", '.', 0, 1}, {"12 ", '.', 1.2L, 1},
        {"12x5", '.', 12, 0}, {"1.2.3", '.', 1.2L, 0}};
    // clang-format on
    for (const auto& c : cases) {
        DecimalNumber d;
        EXPECT_EQ(ScanDecimal(c.text, (int32_t)strlen(c.text), &d, c.mark), c.result) << c.text;
        EXPECT_EQ((double)DecimalToExtended(&d), (double)c.value) << c.text;
    }
    // Four exponent digits are read, the rest is never looked at. The digit count stands in
    // mdigits; 18 digits fill the nine bytes. A sign and then junk ends with no value but keeps
    // the sign.
    ExpectRows({Row(Scanned("").erase(6, 2), "0|0|0|000000000000000000"),
                Row(Scanned("NaN").substr(0, 10), "1|0|32766|"),
                Row(Scanned("-nan").substr(0, 4), "1|80"),
                Row(Scanned("1e12345").substr(0, 9), "1|0|1234|"),
                Row(Scanned("123456789012345678"), "1|0|0|18|785634129078563412"),
                Row(Scanned("-x").substr(0, 4), "0|80")});
    // clang-format off
    const struct { const char* text; char mark; int32_t end; } ends[] = {
        {"  -12.5e+3xyz", '.', 10}, {"12e", '.', 2}, {"12e+", '.', 2}, {"12 e5", '.', 2},
        {"1e 5", '.', 4}, {"1e - 5", '.', 6}, {"-nan", '.', 0}, {"nan", '.', 3}, {" NaNx", '.', 4},
        {".", '.', 0}, {"1,5", ',', 3}, {"1.5", ',', 1}, {"", '.', 0}};
    // clang-format on
    for (const auto& c : ends)
        EXPECT_EQ(FindNumberEnd(c.text, (int32_t)strlen(c.text), c.mark) - c.text, c.end) << c.text;
}

TEST(NumberScan, Integers) {
    // No sign is taken by the unsigned scanner; a saturated 0xFFFFFFFF reads as negative (255 for
    // uB); in hex the sign applies after the saturation.
    using Scanner = int32_t (*)(const char**, int32_t, NumType);
    const Scanner I = ScanInt, U = ScanUInt, H = ScanHex, O = ScanOctal, B = ScanBinary;
    // clang-format off
    const struct { Scanner scan; const char* text; NumType type; int32_t value, used; } scans[] = {
        {I, "99999", NumIW, 32767, 5}, {U, "99999", NumUW, 65535, 5}, {I, " -12x", NumIL, -12, 4},
        {I, " -", NumIL, 0, 0}, {I, "-2147483648", NumIL, INT32_MIN, 11},
        {I, "2147483648", NumIL, INT32_MAX, 10}, {I, "-99999999999", NumIL, INT32_MIN, 12},
        {I, "-200", NumIB, -128, 4}, {I, "300", NumUB, 255, 3}, {I, "-5", NumUB, 0, 2},
        {U, "-5", NumUL, 0, 0}, {U, "4294967295", NumUL, -1, 10}, {U, "99999999999", NumUB, 0, 11},
        {H, "FF", NumIB, 127, 2}, {H, "-FF", NumIB, -127, 3}, {H, "FFFFFFFF", NumIL, -1, 8},
        {H, "1FFFFFFFF", NumIL, INT32_MAX, 9}, {H, "1FFFFFFFF", NumUL, -1, 9},
        {H, "FFFF", NumIW, 32767, 4}, {H, "ffff", NumUW, 65535, 4}, {H, "12345", NumUW, 65535, 5},
        {H, "-1", NumUB, -1, 2}, {H, "fg", NumIL, 15, 1}, {H, "1FFFFFFFF", NumUB, 255, 9},
        {H, " -x", NumIL, 0, 0}, {O, "777", NumUB, 255, 3}, {O, "178", NumIL, 15, 2},
        {B, "101", NumIL, 5, 3}, {B, "102", NumIL, 2, 2}};
    // clang-format on
    for (const auto& c : scans) {
        const char* p = c.text;
        EXPECT_EQ(c.scan(&p, (int32_t)strlen(c.text), c.type), c.value) << c.text << " " << c.type;
        EXPECT_EQ(p - c.text, c.used) << c.text;
    }
    // clang-format off
    const struct { int32_t value; NumType type; int32_t fromUnsigned, clamp, want; } modes[] = {
        {-1, NumIB, 1, 0, 127}, {40000, NumIW, 0, 0, 32767}, {0x7FFF, NumIW, 1, 0, 0x7FFF},
        {-1, NumUB, 0, 0, 255}, {256, NumUB, 0, 1, 255}};
    // clang-format on
    for (const auto& c : modes)
        EXPECT_EQ(SaturateToType(c.value, c.type, c.fromUnsigned, c.clamp), c.want)
            << c.value << " " << c.type;
    // Stores in the type's width and leaves the rest; a text that isn't a number stores nothing. A
    // 32-bit value sign-extends into both 64-bit types.
    uint64_t out = 0xAAAAAAAAAAAAAAAAull;
    double d = 0;
    ExpectRows({Row(ScanNumberText("  42  ", 6, NumIL, &out, 64), 1),
                Row(out, 0xAAAAAAAA0000002Aull), Row(ScanNumberText("43x", 3, NumIL, &out, 64), 0),
                Row(out, 0xAAAAAAAA0000002Bull), Row(ScanNumberText("x", 1, NumIL, &out, 64), 0),
                Row(out, 0xAAAAAAAA0000002Bull), Row(ScanNumberText("FF", 2, NumIB, &out, 66), 1),
                Row(out, 0xAAAAAAAA0000007Full), Row(ScanNumberText("-5", 2, NumIQ, &out, 64), 1),
                Row(out, -5), Row(ScanNumberText("4294967295", 10, NumUQ, &out, 65), 1),
                Row(out, -1), Row(ScanNumberText("101", 3, NumUW, &out, 68), 1),
                Row(out & 0xFFFF, 5), Row(ScanNumberText("4294967295", 10, NumFD, &d, 65), 1),
                Row(d == 4294967295.0, 1)});
    double z[2];  // a type outside 1 to 11 is a failure
    EXPECT_EXIT(ScanNumberText("1", 1, NumCD, z, 64), testing::ExitedWithCode(1), "");
}

TEST(NumberScan, PrefixesAndFloats) {
    // A prefix ends after its letter and the blanks before it, never with more text behind; a
    // later prefix too. The expansion needs the length + 4.
    char expanded[64];
    auto end = [](const char* text) {
        return FindPrefixEnd(text, (int32_t)strlen(text), '.') - text;
    };
    ExpectRows({Row(end("1.5 k "), 5), Row(end("inf"), 0), Row(end("k"), 0), Row(end("1.5"), 0),
                Row(end("1.5mk"), 5), Row(ExpandPrefix("2y", 2, expanded, 64, '.'), 5),
                Row(expanded, "2e-24"), Row(ExpandPrefix("2u", 2, expanded, 64, '.'), 4),
                Row(expanded, "2e-6"), Row(ExpandPrefix("1.5k", 4, expanded, 7, '.'), 0),
                Row(ExpandPrefix("1.5", 3, expanded, 64, '.'), 0),
                Row(ExpandPrefix("1.5kk", 5, expanded, 64, '.'), 0),
                Row(ExpandPrefix("k", 1, expanded, 64, '.'), 0)});
    // With prefixes asked (bit 16 of the type); integers through the float scan round and
    // saturate. A null destination only scans; the system mark is taken when asked, or a given one.
    const int32_t P = 1 << 16;
    // clang-format off
    const struct { const char* text; NumType type; double value; int32_t used; } floatScans[] = {
        {"1.5k", NumFD | P, 1500, 4}, {"1.5 k", NumFD | P, 1500, 5}, {"1.5kx", NumFD | P, 1.5, 3},
        {"-2m", NumFD | P, -0.002, 3}, {"3 M", NumFD | P, 3e6, 3}, {"1.5mk", NumFD | P, 1.5, 3},
        {"1.5k", NumFD, 1.5, 3}, {"  12.5e3xyz", NumFD, 12500, 8}, {"abc", NumFD, 0, 0},
        {"-inf", NumFD, -INFINITY, 4}, {"2.5", NumIL, 2, 3},
        {"1e5", NumIB, 127, 3}, {"1e400", NumFD, INFINITY, 5}, {"1e-400", NumFD, 0, 6},
        {"4.9406564584124654E-324", NumFD, 4.9406564584124654e-324, 23}};
    // clang-format on
    for (const auto& c : floatScans) {
        const char* p = c.text;
        double v = -99;
        int64_t i = 0;
        ScanFloat(&p, (int32_t)strlen(c.text), 0, c.type, (c.type & 15) == NumFD ? (void*)&v : &i);
        const double got = (c.type & 15) == NumFD ? v : c.type == NumIB ? (int8_t)i : (int32_t)i;
        EXPECT_TRUE(got == c.value && p - c.text == c.used) << c.text;
    }
    const char *p = "7.25", *nan = "nan", *comma = "1,5", *again = "1,5";
    double v[3];
    ScanFloat(&p, 4, 0, NumFD, nullptr);
    ScanFloat(&nan, 3, 0, NumFD, v);
    const char saved = SystemDecimalMark;
    SystemDecimalMark = ',';
    ScanFloat(&comma, 3, 1, NumFD, v + 1);
    SystemDecimalMark = saved;
    ScanFloatMark(&again, 3, NumFD, v + 2, ',');
    EXPECT_TRUE(*p == 0 && isnan(v[0]) && v[1] == 1.5 && v[2] == 1.5);
}

}  // namespace
