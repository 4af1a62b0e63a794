#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "mg/ansi.h"
#include "support/rows.h"

namespace {

using namespace mgtest;

// Classes are ASCII only. Case is the host code page's: ASCII letters below 128 everywhere,
// and above it whatever pairs the code page has (none in a POSIX host's "C" locale).
TEST(CharClasses, AsciiRangesOnlyAndCaseByTheHost) {
    for (uint32_t c = 0; c < 256; ++c) {
        const bool digit = c >= '0' && c <= '9', upper = c >= 'A' && c <= 'Z',
                   lower = c >= 'a' && c <= 'z';
        // Bits: digit, letter, punctuation, and below 128 lower and upper case.
        const int want = digit | (upper || lower) << 1 |
                         (c > 32 && c < 127 && !digit && !upper && !lower) << 2 |
                         (c < 128 ? lower << 3 | upper << 4 : 0);
        const int got = IsDigitChar(c) | IsAlphaChar(c) << 1 | IsPunctChar(c) << 2 |
                        (c < 128 ? IsLowerChar(c) << 3 | IsUpperChar(c) << 4 : 0);
        EXPECT_EQ(got, want) << c;
        EXPECT_TRUE(c < 128 || !IsUpperChar(c) || (IsLowerChar(CharToLower(c)) && !IsLowerChar(c)))
            << c;
    }
    // Values beyond 16 bits pass through; a null LStr is ignored.
    uint8_t buf[] = "MiXeDx1!";
    ExpectRows({Row(CharToUpper('a'), 'A'), Row(CharToLower('Q'), 'q'),
                Row(CharToUpper(0x10061u), 0x10061), Row(CharToLower(0x10041u), 0x10041),
                Row((BufToUpper(buf, 5), BufToLower(buf, 3), LStrToUpper(nullptr), (char*)buf),
                    "mixEDx1!")});
}

// StrNCpy clears the tail up to n, not beyond, and with n equal to the length writes no
// terminator; StrCpy writes the terminator last.
TEST(Text, CopiesAndLengths) {
    char d[16] = "xxxxxxxxxxxxxxx";
    ExpectRows(
        {Row(StrNCpy(d, "ab", 5) == d, 1), Row(std::string(d, 6), std::string("ab\0\0\0x", 6)),
         Row((StrNCpy(d, "abc", 3), StrNCpy(d, "zz", 0), std::string(d, 4)), std::string("abc", 4)),
         Row((d[0] = 0, StrCat(d, "hello")), 5), Row(StrCat(d, "!!"), 7), Row(d, "hello!!"),
         Row(StrLen(d), 7), Row(StrCpy(d, "x"), "x"), Row(d[2], 'l')});
}

TEST(Text, Comparisons) {
    // The end of the first gives minus the next byte of the second; the end of the second gives
    // 1, not a difference; bytes are unsigned.
    // clang-format off
    const struct { const char *a, *b; int n; int cmp, ncmp, casecmp, ncasecmp; } rows[] = {
        {"abc", "abc", 10, 0, 0, 0, 0}, {"ab", "abc", 10, -'c', -'c', -'c', -'c'},
        {"abc", "ab", 10, 1, 1, 'c', 'c'}, {"abd", "abc", 2, 1, 0, 1, 0},
        {"ABC", "abc", 10, 'A' - 'a', 'A' - 'a', 0, 0},
        {"a\xE9", "a\x41", 10, 0xE9 - 0x41, 0xE9 - 0x41, 0xE9 - 'a', 0xE9 - 'a'},
        {"", "", 10, 0, 0, 0, 0}, {"abc", "XYZ", -1, 'a' - 'X', 0, 'a' - 'x', 0},
        {"abC", "ABd", 3, 'a' - 'A', 'a' - 'A', 'c' - 'd', 'c' - 'd'},
        {"a", "B", 1, 'a' - 'B', 'a' - 'B', 'a' - 'b', 'a' - 'b'}, {"a", "b", 0, -1, 0, -1, 0}};
    // clang-format on
    for (const auto& r : rows)
        EXPECT_EQ(std::vector<int>({StrCmp(r.a, r.b), StrNCmp(r.a, r.b, r.n), StrCaseCmp(r.a, r.b),
                                    StrNCaseCmp(r.a, r.b, r.n), StrEqual(r.a, r.b),
                                    StrNEqual(r.a, r.b, r.n)}),
                  std::vector<int>({r.cmp, r.ncmp, r.casecmp, r.ncasecmp, r.cmp == 0, r.ncmp == 0}))
            << r.a << "|" << r.b;
}

// Moves of every overlap shape must equal a move through a separate buffer; swaps and clears
// of every tail length.
TEST(Blocks, MoveSwapAndClear) {
    for (int n = 0; n <= 19; ++n) {
        for (int dst = 2; dst <= 42; ++dst) {
            std::vector<uint8_t> buf(64);
            for (size_t i = 0; i < buf.size(); ++i) buf[i] = static_cast<uint8_t>(i * 7 + 1);
            std::vector<uint8_t> want = buf, moved(buf.begin() + 22, buf.begin() + 22 + n);
            std::copy(moved.begin(), moved.end(), want.begin() + dst);
            BlockMove(buf.data() + 22, buf.data() + dst, n);
            ASSERT_EQ(buf, want) << "n=" << n << " dst=" << dst;
        }
        std::vector<uint8_t> a(n), b(n);
        std::iota(a.begin(), a.end(), 0), std::iota(b.begin(), b.end(), 100);
        const auto a0 = a, b0 = b;
        BlockSwap(a.data(), b.data(), n);
        EXPECT_TRUE(a == b0 && b == a0 && BlockClear(a.data(), n) == 0 &&
                    a == std::vector<uint8_t>(n, 0))
            << n;
    }
}

// Floored modulo, pinning, rounding to a multiple (ties away from zero), and DoubleToInt32's
// ties to even with the integer indefinite for what doesn't fit (NaN gives 0x7FFFFFFF).
TEST(Integers, Table) {
    // clang-format off
    ExpectRows({Row(ModFloored(-1, 5), 4), Row(ModFloored(-1, -5), 4), Row(ModFloored(7, 5), 2),
                Row(ModFloored(-10, 5), 0), Row(PinToRange(5, 7, 3), 7),
                Row(PinToRange(5, 1, 3), 3), Row(PinToRange(-5, 1, 3), 1),
                Row(PinToRange(2, 1, 3), 2), Row(RoundToMultiple(-7, 2), -8),
                Row(RoundToMultiple(7, 2), 8), Row(RoundToMultiple(6, 4), 8),
                Row(RoundToMultiple(5, 4), 4), Row(RoundToMultiple(-6, 4), -8),
                Row(MinInt32(-3, 2), -3), Row(MaxInt32(-3, 2), 2), Row(ToHexDigit(0x1A), 'A'),
                Row(ToHexDigit(9), '9'), Row(DoubleToInt32(2.5), 2), Row(DoubleToInt32(3.5), 4),
                Row(DoubleToInt32(-2.5), -2), Row(DoubleToInt32(-3.5), -4),
                Row(DoubleToInt32(1.49), 1), Row(DoubleToInt32(-0.5), 0),
                Row(DoubleToInt32(NAN), INT32_MAX), Row(DoubleToInt32(2147483647.0), INT32_MAX),
                Row(DoubleToInt32(1e300), INT32_MIN), Row(DoubleToInt32(-1e300), INT32_MIN)});
    // clang-format on
}

// The byte behind each value stays.
TEST(ByteOrder, Swaps) {
    uint8_t b[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    uint32_t v[2] = {0x12345678, 7};
    auto bytes = [&](size_t n) { return std::string(reinterpret_cast<char*>(b), n); };
    ExpectRows({Row((Swap16(b), bytes(3)), "\2\1\3"), Row((Swap32(b), bytes(5)), "\4\3\1\2\5"),
                Row((Swap64(b), bytes(9)), "\10\7\6\5\2\1\3\4\11"),
                Row((SwapHalves32(v), v[0]), 0x56781234), Row(v[1], 7)});
}

// Classes by the bits of each format; other types are always finite. Log1Plus keeps small
// arguments: where 1 + x rounds to 1 it gives x itself.
TEST(Floats, ClassesAndSmallFunctions) {
    const float fs[] = {1.0f, -HUGE_VALF, HUGE_VALF, std::nanf("")};
    const double fd[] = {1.0, -HUGE_VAL, HUGE_VAL, std::nan("")};
    const long double fx[] = {1.0L, -HUGE_VALL, HUGE_VALL, std::nanl("")};
    for (int k = 0; k < 4; ++k)
        ExpectRows({Row(FloatClass(&fs[k], fS), k), Row(FloatClass(&fd[k], fD), k),
                    Row(FloatClass(&fx[k], fX), k), Row(FloatClass(&fd[k], iL), 0)});
    for (double x : {1e-20, -1e-17, 1e-10, 0.5, -0.5, 0.75, 2.0, 1e10})
        EXPECT_NEAR(Log1Plus(x), std::log1p(x), std::fabs(std::log1p(x)) * 4e-16) << x;
    double s, c;
    ExpectRows({Row(IsNaNValue(std::nan("")), 1), Row(IsNaNValue(HUGE_VAL), 0),
                Row(IsInfValue(-HUGE_VAL), 1), Row(IsInfValue(1e308), 0),
                Row(Log1Plus(1e-20) == 1e-20, 1), Row(SinCosPair(0.5, &s, &c), 0),
                Row(s == std::sin(0.5) && c == std::cos(0.5), 1)});
}

}  // namespace
