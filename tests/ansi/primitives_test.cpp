#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "mg/ansi.h"

namespace {

// Classes are ASCII only. Case is the host code page's: ASCII letters below 128 everywhere,
// and above it whatever pairs the code page has (none in a POSIX host's "C" locale).
TEST(CharClasses, AsciiRangesOnly) {
    for (uint32_t c = 0; c < 256; ++c) {
        EXPECT_EQ(IsDigitChar(c), c >= '0' && c <= '9') << c;
        EXPECT_EQ(IsAlphaChar(c), (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) << c;
        bool punct = c > 32 && c < 127 && !IsDigitChar(c) && !IsAlphaChar(c);
        EXPECT_EQ(IsPunctChar(c), punct) << c;
        if (c < 128) {
            EXPECT_EQ(IsLowerChar(c), c >= 'a' && c <= 'z') << c;
            EXPECT_EQ(IsUpperChar(c), c >= 'A' && c <= 'Z') << c;
        } else if (IsUpperChar(c)) {
            EXPECT_TRUE(IsLowerChar(CharToLower(c))) << c;
            EXPECT_FALSE(IsLowerChar(c)) << c;
        }
    }
}

TEST(CharCase, WideValuesPassThrough) {
    EXPECT_EQ(CharToUpper('a'), 'A');
    EXPECT_EQ(CharToLower('Q'), 'q');
    EXPECT_EQ(CharToUpper(0x10061u), 0x10061u);
    EXPECT_EQ(CharToLower(0x10041u), 0x10041u);
    uint8_t buf[] = "MiXeDx1!";
    BufToUpper(buf, 5);
    EXPECT_STREQ(reinterpret_cast<char*>(buf), "MIXEDx1!");
    BufToLower(buf, 3);
    EXPECT_STREQ(reinterpret_cast<char*>(buf), "mixEDx1!");
    LStrToUpper(nullptr);  // ignored
}

TEST(Text, CopiesAndLengths) {
    char d[16];
    memset(d, 'x', sizeof d);
    EXPECT_EQ(StrNCpy(d, "ab", 5), d);
    EXPECT_EQ(0, memcmp(d, "ab\0\0\0x", 6));  // tail cleared up to n, not beyond
    memset(d, 'x', sizeof d);
    StrNCpy(d, "abc", 3);
    EXPECT_EQ(0, memcmp(d, "abcx", 4));  // n equal to the length: no terminator
    StrNCpy(d, "zz", 0);
    EXPECT_EQ(d[0], 'a');
    d[0] = 0;
    EXPECT_EQ(StrCat(d, "hello"), 5);
    EXPECT_EQ(StrCat(d, "!!"), 7);
    EXPECT_STREQ(d, "hello!!");
    EXPECT_EQ(StrLen(d), 7);
    EXPECT_STREQ(StrCpy(d, "x"), "x");
    EXPECT_EQ(d[2], 'l');  // the terminator is the last byte written
}

struct CompareRow {
    const char* a;
    const char* b;
    int n;
    int cmp, ncmp, casecmp;
};

TEST(Text, Comparisons) {
    const CompareRow rows[] = {
        {"abc", "abc", 10, 0, 0, 0},
        {"ab", "abc", 10, -'c', -'c', -'c'},
        {"abc", "ab", 10, 1, 1, 'c'},  // end of the second: 1, not a difference
        {"abd", "abc", 2, 1, 0, 1},
        {"ABC", "abc", 10, 'A' - 'a', 'A' - 'a', 0},
        {"a\xE9", "a\x41", 10, 0xE9 - 0x41, 0xE9 - 0x41, 0xE9 - 'a'},  // bytes are unsigned
        {"", "", 10, 0, 0, 0},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(StrCmp(r.a, r.b), r.cmp) << r.a << "|" << r.b;
        EXPECT_EQ(StrNCmp(r.a, r.b, r.n), r.ncmp) << r.a << "|" << r.b;
        EXPECT_EQ(StrCaseCmp(r.a, r.b), r.casecmp) << r.a << "|" << r.b;
        EXPECT_EQ(StrEqual(r.a, r.b), r.cmp == 0);
        EXPECT_EQ(StrNEqual(r.a, r.b, r.n), r.ncmp == 0);
    }
    EXPECT_EQ(StrNCaseCmp("abc", "XYZ", -1), 0);
    EXPECT_EQ(StrNCaseCmp("abC", "ABd", 2), 0);
    EXPECT_LT(StrNCaseCmp("abC", "ABd", 3), 0);
    EXPECT_LT(StrNCaseCmp("a", "B", 1), 0);
    EXPECT_EQ(StrNCmp("a", "b", 0), 0);
}

// Moves of every overlap shape must equal a move through a separate buffer.
TEST(Blocks, MoveHandlesEveryOverlap) {
    for (int n = 0; n <= 19; ++n) {
        for (int shift = -20; shift <= 20; ++shift) {
            std::vector<uint8_t> buf(64), want;
            for (size_t i = 0; i < buf.size(); ++i) buf[i] = static_cast<uint8_t>(i * 7 + 1);
            want = buf;
            int src = 22, dst = 22 + shift;
            std::vector<uint8_t> tmp(want.begin() + src, want.begin() + src + n);
            std::copy(tmp.begin(), tmp.end(), want.begin() + dst);
            BlockMove(buf.data() + src, buf.data() + dst, n);
            ASSERT_EQ(buf, want) << "n=" << n << " shift=" << shift;
        }
    }
}

TEST(Blocks, SwapAndClear) {
    for (int n : {0, 1, 2, 3, 7, 8, 9, 17}) {
        std::vector<uint8_t> a(n), b(n);
        for (int i = 0; i < n; ++i)
            a[i] = static_cast<uint8_t>(i), b[i] = static_cast<uint8_t>(100 + i);
        auto a0 = a, b0 = b;
        BlockSwap(a.data(), b.data(), n);
        EXPECT_EQ(a, b0);
        EXPECT_EQ(b, a0);
        EXPECT_EQ(BlockClear(a.data(), n), 0);
        EXPECT_EQ(a, std::vector<uint8_t>(n, 0));
    }
}

TEST(Integers, Table) {
    EXPECT_EQ(ModFloored(-1, 5), 4);
    EXPECT_EQ(ModFloored(-1, -5), 4);
    EXPECT_EQ(ModFloored(7, 5), 2);
    EXPECT_EQ(ModFloored(-10, 5), 0);
    EXPECT_EQ(PinToRange(5, 7, 3), 7);
    EXPECT_EQ(PinToRange(5, 1, 3), 3);
    EXPECT_EQ(PinToRange(-5, 1, 3), 1);
    EXPECT_EQ(PinToRange(2, 1, 3), 2);
    EXPECT_EQ(RoundToMultiple(-7, 2), -8);
    EXPECT_EQ(RoundToMultiple(7, 2), 8);
    EXPECT_EQ(RoundToMultiple(6, 4), 8);
    EXPECT_EQ(RoundToMultiple(5, 4), 4);
    EXPECT_EQ(RoundToMultiple(-6, 4), -8);
    EXPECT_EQ(MinInt32(-3, 2), -3);
    EXPECT_EQ(MaxInt32(-3, 2), 2);
    EXPECT_EQ(ToHexDigit(0x1A), 'A');
    EXPECT_EQ(ToHexDigit(9), '9');
}

TEST(Integers, DoubleToInt32RoundsHalfToEven) {
    const struct {
        double x;
        int32_t want;
    } rows[] = {{2.5, 2},
                {3.5, 4},
                {-2.5, -2},
                {-3.5, -4},
                {1.49, 1},
                {-0.5, 0},
                {2147483647.0, INT32_MAX},
                {NAN, 0x7FFFFFFF},
                {1e300, INT32_MIN},
                {-1e300, INT32_MIN}};
    for (const auto& r : rows) EXPECT_EQ(DoubleToInt32(r.x), r.want) << r.x;
}

TEST(ByteOrder, Swaps) {
    uint8_t b[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    Swap16(b);
    EXPECT_EQ(0, memcmp(b, "\2\1\3\4", 4));
    uint8_t c[5] = {1, 2, 3, 4, 5};  // the byte behind each value stays
    Swap32(c);
    EXPECT_EQ(0, memcmp(c, "\4\3\2\1\5", 5));
    uint8_t d[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    Swap64(d);
    EXPECT_EQ(0, memcmp(d, "\10\7\6\5\4\3\2\1\11", 9));
    uint32_t v[2] = {0x12345678, 7};
    SwapHalves32(v);
    EXPECT_EQ(v[0], 0x56781234u);
    EXPECT_EQ(v[1], 7u);
}

TEST(Floats, ClassesByFormat) {
    float fs[] = {1.0f, -std::numeric_limits<float>::infinity(),
                  std::numeric_limits<float>::infinity(), std::nanf("")};
    double fd[] = {1.0, -HUGE_VAL, HUGE_VAL, std::nan("")};
    long double fx[] = {1.0L, -HUGE_VALL, HUGE_VALL, std::nanl("")};
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(FloatClass(&fs[k], fS), k);
        EXPECT_EQ(FloatClass(&fd[k], fD), k);
        EXPECT_EQ(FloatClass(&fx[k], fX), k);
        EXPECT_EQ(FloatClass(&fd[k], iL), 0);  // other types are always finite
    }
    EXPECT_TRUE(IsNaNValue(std::nan("")));
    EXPECT_FALSE(IsNaNValue(HUGE_VAL));
    EXPECT_TRUE(IsInfValue(-HUGE_VAL));
    EXPECT_FALSE(IsInfValue(1e308));
}

TEST(Floats, Log1PlusKeepsSmallArguments) {
    for (double x : {1e-20, -1e-17, 1e-10, 0.5, -0.5, 0.75, 2.0, 1e10}) {
        EXPECT_NEAR(Log1Plus(x), std::log1p(x), std::fabs(std::log1p(x)) * 4e-16) << x;
    }
    EXPECT_EQ(Log1Plus(1e-20), 1e-20);  // 1 + x rounds to 1: x itself
    double s, c;
    EXPECT_EQ(SinCosPair(0.5, &s, &c), 0);
    EXPECT_DOUBLE_EQ(s, std::sin(0.5));
    EXPECT_DOUBLE_EQ(c, std::cos(0.5));
}

}  // namespace
