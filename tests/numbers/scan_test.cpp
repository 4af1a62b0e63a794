// Number scanning: the decimal state machine, the end of a number, the integer scanners
// with their saturation, the SI pre-pass and the float scanners.
#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <string>

#include "decimal_fields.h"
#include "mg/numscan.h"
#include "mg/support.h"
#include "support/rows.h"

namespace {

using namespace mgtest;

// A leading blank is junk: the number stands, the scan is invalid. The 19th digit is dropped.
// A blank ends the digits before their place is known.
TEST(ScanDecimal, Grammar) {
    const long double inf = INFINITY;
    // clang-format off
    const struct { const char* text; char mark; long double value; int32_t result; } cases[] = {
        {"+", '.', 0, 1}, {" 12", '.', 12, 0}, {"1,5", ',', 1.5L, 1}, {"1.5", ',', 1.5L, 1},
        {"inf", '.', inf, 1}, {"-INF", '.', -inf, 1}, {"Infx", '.', inf, 0}, {"Ix", '.', 0, 0},
        {"1234567890123456789", '.', 1234567890123456780.0L, 1},
        {"0.12345678901234567891", '.', 0.123456789012345678L, 1}, {".5", '.', 0.5L, 1},
        {"-.05", '.', -0.05L, 1}, {"1.5E-3", '.', 0.0015L, 1}, {"1.5 E 3", '.', 1500, 1},
        {"1.5e+", '.', 1.5L, 1}, {"1x", '.', 1, 0}, {"00012", '.', 12, 1}, {"100", '.', 100, 1},
        {"0.000", '.', 0, 1}, {"E5", '.', 0, 1}, {"12 ", '.', 1.2L, 1}, {"12x5", '.', 12, 0},
        {"1.2.3", '.', 1.2L, 0}};
    // clang-format on
    for (const auto& c : cases) {
        DecimalNumber d;
        EXPECT_EQ(ScanDecimal(c.text, (int32_t)strlen(c.text), &d, c.mark), c.result) << c.text;
        EXPECT_EQ((double)DecimalToExtended(&d), (double)c.value) << c.text;
    }
}

// The result and the scanned form. Empty text has no digit count worth a check.
std::string Scanned(const char* text) {
    DecimalNumber d;
    const int32_t result = ScanDecimal(text, (int32_t)strlen(text), &d, '.');
    return std::to_string(result) + "|" + DecimalFields(d);
}

// Four exponent digits are read, the rest is never looked at. The digit count stands in
// mdigits; 18 digits fill the nine bytes. A sign and then junk ends with no value but keeps
// the sign.
TEST(ScanDecimal, FieldsOfSpecialAndLongTexts) {
    ExpectRows({Row(Scanned("").erase(6, 2), "0|0|0|000000000000000000"),
                Row(Scanned("NaN").substr(0, 10), "1|0|32766|"),
                Row(Scanned("-nan").substr(0, 4), "1|80"),
                Row(Scanned("1e12345").substr(0, 9), "1|0|1234|"),
                Row(Scanned("123456789012345678"), "1|0|0|18|785634129078563412"),
                Row(Scanned("1234567890123456789").substr(0, 6), "1|0|1|"),
                Row(Scanned("-x").substr(0, 4), "0|80")});
}

TEST(FindNumberEnd, Ends) {
    // clang-format off
    const struct { const char* text; char mark; int32_t end; } cases[] = {
        {"  -12.5e+3xyz", '.', 10}, {"12e", '.', 2}, {"12e+", '.', 2}, {"12 e5", '.', 2},
        {"1e 5", '.', 4}, {"1e - 5", '.', 6}, {"-inf", '.', 4}, {"-nan", '.', 0}, {"nan", '.', 3},
        {" NaNx", '.', 4}, {".5", '.', 2}, {".", '.', 0}, {"abc", '.', 0}, {"1,5", ',', 3},
        {"1.5", ',', 1}, {"", '.', 0}};
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(FindNumberEnd(c.text, (int32_t)strlen(c.text), c.mark) - c.text, c.end) << c.text;
}

// No sign is taken by the unsigned scanner; a saturated 0xFFFFFFFF reads as negative (255 for
// uB); in hex the sign applies after the saturation.
TEST(IntegerScanners, SaturationAndPositions) {
    using Scanner = int32_t (*)(const char**, int32_t, NumType);
    const Scanner I = ScanInt, U = ScanUInt, H = ScanHex, O = ScanOctal, B = ScanBinary;
    // clang-format off
    const struct { Scanner scan; const char* text; NumType type; int32_t value, used; } cases[] = {
        {I, "99999", NumIW, 32767, 5}, {U, "99999", NumUW, 65535, 5}, {I, " -12x", NumIL, -12, 4},
        {I, "  x", NumIL, 0, 0}, {I, " -", NumIL, 0, 0}, {I, "-2147483648", NumIL, INT32_MIN, 11},
        {I, "2147483648", NumIL, INT32_MAX, 10}, {I, "-99999999999", NumIL, INT32_MIN, 12},
        {I, "-200", NumIB, -128, 4}, {I, "300", NumUB, 255, 3}, {I, "-5", NumUB, 0, 2},
        {U, "-5", NumUL, 0, 0}, {U, "4294967295", NumUL, -1, 10}, {U, "99999999999", NumUB, 0, 11},
        {H, "FF", NumIB, 127, 2}, {H, "-FF", NumIB, -127, 3}, {H, "7f", NumIB, 127, 2},
        {H, "FFFFFFFF", NumIL, -1, 8}, {H, "1FFFFFFFF", NumIL, INT32_MAX, 9},
        {H, "1FFFFFFFF", NumUL, -1, 9}, {H, "FFFF", NumIW, 32767, 4}, {H, "ffff", NumUW, 65535, 4},
        {H, "12345", NumUW, 65535, 5}, {H, "-1", NumUB, -1, 2}, {H, "fg", NumIL, 15, 1},
        {H, "A0", NumUB, 160, 2}, {H, "1FFFFFFFF", NumUB, 255, 9}, {H, " -x", NumIL, 0, 0},
        {O, "777", NumUB, 255, 3}, {O, "178", NumIL, 15, 2}, {B, "101", NumIL, 5, 3},
        {B, "102", NumIL, 2, 2}};
    // clang-format on
    for (const auto& c : cases) {
        const char* p = c.text;
        EXPECT_EQ(c.scan(&p, (int32_t)strlen(c.text), c.type), c.value) << c.text << " " << c.type;
        EXPECT_EQ(p - c.text, c.used) << c.text;
    }
}

TEST(IntegerScanners, SaturateToTypeModes) {
    // clang-format off
    const struct { int32_t value; NumType type; int32_t fromUnsigned, clamp, want; } cases[] = {
        {-129, NumIB, 0, 1, -128}, {200, NumIB, 1, 0, 127}, {127, NumIB, 1, 0, 127},
        {-1, NumIB, 1, 0, 127}, {40000, NumIW, 0, 0, 32767}, {0x7FFF, NumIW, 1, 0, 0x7FFF},
        {-1, NumUB, 0, 1, 0}, {-1, NumUB, 0, 0, 255}, {256, NumUB, 0, 1, 255},
        {-1, NumUW, 0, 0, 65535}, {70000, NumUW, 0, 1, 65535}, {-7, NumIL, 0, 1, -7}};
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(SaturateToType(c.value, c.type, c.fromUnsigned, c.clamp), c.want)
            << c.value << " " << c.type;
}

// Stores in the type's width and leaves the rest; a text that isn't a number stores nothing. A
// 32-bit value sign-extends into both 64-bit types.
TEST(ScanNumberText, StoresInTheTypesWidth) {
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
                Row(d == 4294967295.0, 1), Row(ScanNumberText("-12", 3, NumFD, &d, 64), 1),
                Row(d == -12.0, 1)});
    double z[2];  // a type outside 1 to 11 is a failure
    EXPECT_EXIT(ScanNumberText("1", 1, NumCD, z, 64), testing::ExitedWithCode(1), "");
}

// A prefix ends after its letter and the blanks before it, never with more text behind; a
// later prefix too. The expansion needs the length + 4.
TEST(SIPrefixes, PrePass) {
    char out[64];
    auto end = [](const char* text) {
        return FindPrefixEnd(text, (int32_t)strlen(text), '.') - text;
    };
    ExpectRows(
        {Row(end("1.5k"), 4), Row(end("1.5 k"), 5), Row(end("1.5 k "), 5), Row(end("1.5kx"), 0),
         Row(end("inf"), 0), Row(end("k"), 0), Row(end("1.5"), 0), Row(end("-2m"), 3),
         Row(end("1.5mk"), 5), Row(ExpandPrefix("-1.5 k", 6, out, 64, '.'), 7), Row(out, "-1.5e+3"),
         Row(ExpandPrefix("2y", 2, out, 64, '.'), 5), Row(out, "2e-24"),
         Row(ExpandPrefix("2u", 2, out, 64, '.'), 4), Row(out, "2e-6"),
         Row(ExpandPrefix("1.5k", 4, out, 7, '.'), 0), Row(ExpandPrefix("1.5", 3, out, 64, '.'), 0),
         Row(ExpandPrefix("1.5kk", 5, out, 64, '.'), 0),
         Row(ExpandPrefix("k", 1, out, 64, '.'), 0)});
}

// With prefixes asked (bit 16 of the type); integers through the float scan round and
// saturate. A null destination only scans; the system mark is taken when asked, or a given one.
TEST(ScanFloat, ValuesAndPositions) {
    const int32_t P = 1 << 16;
    // clang-format off
    const struct { const char* text; NumType type; double value; int32_t used; } cases[] = {
        {"1.5k", NumFD | P, 1500, 4}, {"1.5 k", NumFD | P, 1500, 5}, {"1.5kx", NumFD | P, 1.5, 3},
        {"-2m", NumFD | P, -0.002, 3}, {"3 M", NumFD | P, 3e6, 3}, {"1.5mk", NumFD | P, 1.5, 3},
        {"1.5k", NumFD, 1.5, 3}, {"  12.5e3xyz", NumFD, 12500, 8}, {"abc", NumFD, 0, 0},
        {"-inf", NumFD, -INFINITY, 4}, {"0.1", NumFD, 0.1, 3}, {"2.5", NumIL, 2, 3},
        {"1e5", NumIB, 127, 3}, {"1e400", NumFD, INFINITY, 5}, {"1e-400", NumFD, 0, 6},
        {"4.9406564584124654E-324", NumFD, 4.9406564584124654e-324, 23}};
    // clang-format on
    for (const auto& c : cases) {
        const char* p = c.text;
        double v = -99;
        int64_t i = 0;
        ScanFloat(&p, (int32_t)strlen(c.text), 0, c.type, (c.type & 15) == NumFD ? (void*)&v : &i);
        const double got = (c.type & 15) == NumFD ? v : c.type == NumIB ? (int8_t)i : (int32_t)i;
        EXPECT_EQ(got, c.value) << c.text;
        EXPECT_EQ(p - c.text, c.used) << c.text;
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
