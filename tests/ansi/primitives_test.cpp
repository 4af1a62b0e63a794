#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "mg/ansi.h"

namespace {

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
    // Values beyond 16 bits pass through.
    EXPECT_EQ((std::vector<uint32_t>{CharToUpper('a'), CharToLower('Q'), CharToUpper(0x10061u),
                                     CharToLower(0x10041u)}),
              (std::vector<uint32_t>{'A', 'q', 0x10061u, 0x10041u}));
    uint8_t buf[] = "MiXeDx1!";
    BufToUpper(buf, 5);
    BufToLower(buf, 3);
    EXPECT_STREQ(reinterpret_cast<char*>(buf), "mixEDx1!");
    LStrToUpper(nullptr);  // ignored
}

TEST(Text, CopiesAndLengths) {
    char d[16];
    memset(d, 'x', sizeof d);
    EXPECT_EQ(StrNCpy(d, "ab", 5), d);
    EXPECT_EQ(std::string(d, 6), std::string("ab\0\0\0x", 6));  // cleared up to n, not beyond
    StrNCpy(d, "abc", 3);
    StrNCpy(d, "zz", 0);
    EXPECT_EQ(std::string(d, 4), std::string("abc", 4));  // n equal to the length: no terminator
    d[0] = 0;
    EXPECT_EQ(StrCat(d, "hello"), 5);
    EXPECT_EQ(StrCat(d, "!!"), 7);
    EXPECT_STREQ(d, "hello!!");
    EXPECT_EQ(StrLen(d), 7);
    EXPECT_STREQ(StrCpy(d, "x"), "x");
    EXPECT_EQ(d[2], 'l');  // the terminator is the last byte written
}

TEST(Text, Comparisons) {
    const struct {
        const char *a, *b;
        int n;
        int cmp, ncmp, casecmp, ncasecmp;
    } rows[] = {
        {"abc", "abc", 10, 0, 0, 0, 0},
        {"ab", "abc", 10, -'c', -'c', -'c', -'c'},
        {"abc", "ab", 10, 1, 1, 'c', 'c'},  // end of the second: 1, not a difference
        {"abd", "abc", 2, 1, 0, 1, 0},
        {"ABC", "abc", 10, 'A' - 'a', 'A' - 'a', 0, 0},
        {"a\xE9", "a\x41", 10, 0xE9 - 0x41, 0xE9 - 0x41, 0xE9 - 'a', 0xE9 - 'a'},  // unsigned
        {"", "", 10, 0, 0, 0, 0},
        {"abc", "XYZ", -1, 'a' - 'X', 0, 'a' - 'x', 0},
        {"abC", "ABd", 3, 'a' - 'A', 'a' - 'A', 'c' - 'd', 'c' - 'd'},
        {"a", "B", 1, 'a' - 'B', 'a' - 'B', 'a' - 'b', 'a' - 'b'},
        {"a", "b", 0, -1, 0, -1, 0},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(std::vector<int>({StrCmp(r.a, r.b), StrNCmp(r.a, r.b, r.n), StrCaseCmp(r.a, r.b),
                                    StrNCaseCmp(r.a, r.b, r.n), StrEqual(r.a, r.b),
                                    StrNEqual(r.a, r.b, r.n)}),
                  std::vector<int>({r.cmp, r.ncmp, r.casecmp, r.ncasecmp, r.cmp == 0, r.ncmp == 0}))
            << r.a << "|" << r.b;
    }
}

// Moves of every overlap shape must equal a move through a separate buffer; swaps and clears
// of every tail length.
TEST(Blocks, MoveSwapAndClear) {
    for (int n = 0; n <= 19; ++n) {
        for (int dst = 2; dst <= 42; ++dst) {
            std::vector<uint8_t> buf(64), want;
            for (size_t i = 0; i < buf.size(); ++i) buf[i] = static_cast<uint8_t>(i * 7 + 1);
            want = buf;
            std::vector<uint8_t> tmp(want.begin() + 22, want.begin() + 22 + n);
            std::copy(tmp.begin(), tmp.end(), want.begin() + dst);
            BlockMove(buf.data() + 22, buf.data() + dst, n);
            ASSERT_EQ(buf, want) << "n=" << n << " dst=" << dst;
        }
        std::vector<uint8_t> a(n), b(n);
        for (int i = 0; i < n; ++i)
            a[i] = static_cast<uint8_t>(i), b[i] = static_cast<uint8_t>(100 + i);
        const auto a0 = a, b0 = b;
        BlockSwap(a.data(), b.data(), n);
        EXPECT_TRUE(a == b0 && b == a0) << n;
        EXPECT_EQ(BlockClear(a.data(), n), 0);
        EXPECT_EQ(a, std::vector<uint8_t>(n, 0));
    }
}

TEST(Integers, Table) {
    const int32_t rows[][2] = {
        {ModFloored(-1, 5), 4},
        {ModFloored(-1, -5), 4},
        {ModFloored(7, 5), 2},
        {ModFloored(-10, 5), 0},
        {PinToRange(5, 7, 3), 7},
        {PinToRange(5, 1, 3), 3},
        {PinToRange(-5, 1, 3), 1},
        {PinToRange(2, 1, 3), 2},
        {RoundToMultiple(-7, 2), -8},
        {RoundToMultiple(7, 2), 8},
        {RoundToMultiple(6, 4), 8},
        {RoundToMultiple(5, 4), 4},
        {RoundToMultiple(-6, 4), -8},
        {MinInt32(-3, 2), -3},
        {MaxInt32(-3, 2), 2},
        {ToHexDigit(0x1A), 'A'},
        {ToHexDigit(9), '9'},
        {DoubleToInt32(2.5), 2},
        {DoubleToInt32(3.5), 4},
        {DoubleToInt32(-2.5), -2},
        {DoubleToInt32(-3.5), -4},
        {DoubleToInt32(1.49), 1},
        {DoubleToInt32(-0.5), 0},
        {DoubleToInt32(NAN), INT32_MAX},
        {DoubleToInt32(2147483647.0), INT32_MAX},
        {DoubleToInt32(1e300), INT32_MIN},
        {DoubleToInt32(-1e300), INT32_MIN},
    };
    for (size_t i = 0; i < std::size(rows); ++i) EXPECT_EQ(rows[i][0], rows[i][1]) << "row " << i;
}

// The byte behind each value stays.
TEST(ByteOrder, Swaps) {
    uint8_t b[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    Swap16(b);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(b), 3), "\2\1\3");
    Swap32(b);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(b), 5), "\4\3\1\2\5");
    Swap64(b);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(b), 9), "\10\7\6\5\2\1\3\4\11");
    uint32_t v[2] = {0x12345678, 7};
    SwapHalves32(v);
    EXPECT_EQ(v[0], 0x56781234u);
    EXPECT_EQ(v[1], 7u);
}

TEST(Floats, ClassesAndSmallFunctions) {
    float fs[] = {1.0f, -std::numeric_limits<float>::infinity(),
                  std::numeric_limits<float>::infinity(), std::nanf("")};
    double fd[] = {1.0, -HUGE_VAL, HUGE_VAL, std::nan("")};
    long double fx[] = {1.0L, -HUGE_VALL, HUGE_VALL, std::nanl("")};
    for (int k = 0; k < 4; ++k) {
        // Other types are always finite.
        EXPECT_EQ(std::vector<int>({FloatClass(&fs[k], fS), FloatClass(&fd[k], fD),
                                    FloatClass(&fx[k], fX), FloatClass(&fd[k], iL)}),
                  std::vector<int>({k, k, k, 0}));
    }
    EXPECT_TRUE(IsNaNValue(std::nan("")) && !IsNaNValue(HUGE_VAL));
    EXPECT_TRUE(IsInfValue(-HUGE_VAL) && !IsInfValue(1e308));
    for (double x : {1e-20, -1e-17, 1e-10, 0.5, -0.5, 0.75, 2.0, 1e10})
        EXPECT_NEAR(Log1Plus(x), std::log1p(x), std::fabs(std::log1p(x)) * 4e-16) << x;
    EXPECT_EQ(Log1Plus(1e-20), 1e-20);  // 1 + x rounds to 1: x itself
    double s, c;
    EXPECT_EQ(SinCosPair(0.5, &s, &c), 0);
    EXPECT_DOUBLE_EQ(s, std::sin(0.5));
    EXPECT_DOUBLE_EQ(c, std::cos(0.5));
}

}  // namespace
