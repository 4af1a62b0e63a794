// The format engine itself: conversions, fields, the output limit, the decimal-mark form
// and positional parameters.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "format/format_helpers.h"
#include "mg/format.h"

namespace {

using formattest::Format;

struct Case {
    std::string got;
    const char* expected;
};

void ExpectAll(const std::vector<Case>& cases) {
    for (size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(cases[i].got, cases[i].expected) << "case " << i;
}

TEST(FormatEngine, NumbersInTheirFields) {
    ExpectAll({
        {Format("%d|%5d|%-5d|%05d", 42, 42, 42, 42), "42|   42|42   |00042"},
        {Format("%05d|%-05d|%5d", -42, -42, -42), "-0042|-42  |  -42"},
        {Format("%2d|%02d", -12345, -12345), "-12345|-12345"},
        {Format("%d|%ld|%u", -2147483647 - 1, -1, -1), "-2147483648|-1|4294967295"},
        {Format("%x|%o|%b", -1, 8, 5), "FFFFFFFF|10|101"},
        {Format("%x|%08x|%-6x|", 0xBEEF, 0xBEEF, 1), "BEEF|0000BEEF|1     |"},
        {Format("%.3d|%10.1d", 7, 7), "7|         7"},
    });
}

TEST(FormatEngine, NumbersByPointer) {
    int8_t minusOne8 = -1;
    int16_t minusOne16 = -1;
    uint8_t byte = 200;
    int64_t big = 0x123456789LL;
    uint64_t bigUnsigned = 0xFFFFFFFF00000005ULL;
    double pi = 3.75;
    ExpectAll({
        {Format("%{iB}x|%{iW}o|%{iB}d", &minusOne8, &minusOne16, &minusOne8), "FF|177777|-1"},
        {Format("%{uB}d|%{uB}x|%{iQ}x", &byte, &byte, &big), "200|C8|23456789"},
        {Format("%{uQ}u|%{fD}d", &bigUnsigned, &pi), "5|4"},
        {Format("%.1{fD}f|%{fD}e|%8{fD}f", &pi, &pi, &pi), "3.8|3.750000E+0|3.750000"},
        {Format("%{*}d|%{*}x", 5, &byte, int(uB), &byte), "200|C8"},
        // Unknown letters leave the type 0: the number comes by value.
        {Format("%{x}d|%{iZ}d|%{u}d", 7, 8, 9), "7|8|9"},
    });
}

TEST(FormatEngine, Floats) {
    ExpectAll({
        {Format("%f|%.2f|%.0f|%.0f", 1.5, 2.675, 2.5, 3.5), "1.500000|2.67|2|4"},
        {Format("%.2f|%8.3f|%-8.1f|%08.2f", -0.001, 3.14159, 2.0, -1.5),
         "-0.00|   3.142|2.0     |-0001.50"},
        {Format("%e|%E|%g|%G", 1.5, 1.5, 1.5, 1.5),
         "1.500000E+0|1.500000E+0|1.500000E+0|1.500000E+0"},
        {Format("%20e|", 1.0), " 1.00000000000000E+0|"},
        {Format("%40e|", 1.0), "                   1.0000000000000000E+0|"},
        {Format("%.2e|%.0e|%.30e", 12345.0, 12345.0, 0.5), "1.23E+4|1E+4|5.0000000000000000E-1"},
        {Format("%f", 1e308), "1.000000E+308"},
        {Format("%e", 0.0), "0.000000E+0"},
    });
}

TEST(FormatEngine, CharactersNeverPad) {
    ExpectAll({
        {Format("%c|%5c|%-5c|", 'A', 'B', 'C'), "A|B|C|"},
        {Format("%2c|", 0x4241), "AB|"},
        {Format("%4c|", 0x44434241), "ABCD|"},
        {Format("%2.1c|%4.2c|", 0x4241, 0x44434241), "A|AB|"},
    });
}

TEST(FormatEngine, StringsWithPrecisionAsFieldCap) {
    const char* text = "abcdef";
    uint8_t pstr[] = {3, 'x', 'y', 'z'};
    struct {
        int32_t count;
        char text[4];
    } lstr = {4, {'L', 'S', 'T', 'R'}};
    ExpectAll({
        {Format("%s|%8s|%-8s|%08s", text, text, text, "ab"), "abcdef|  abcdef|abcdef  |000000ab"},
        {Format("%.3s|%10.3s|%-10.3s|%.0s|", text, text, text, text), "abc|   |abc||"},
        {Format("%2s|%.10s|", text, text), "abcdef|abcdef|"},
        {Format("%p|%5p|%-5p|%.2p|%5.2p|", pstr, pstr, pstr, pstr, pstr), "xyz|  xyz|xyz  |xy|  |"},
        {Format("%P|%lp|%{iB}p|%6P", &lstr, &lstr, &lstr, &lstr), "LSTR|LSTR|LSTR|  LSTR"},
        {Format("%H|%3H|", static_cast<Handle>(nullptr), static_cast<Handle>(nullptr)), "|   |"},
    });
}

TEST(FormatEngine, PointsAndRectangles) {
    int16_t rect[4] = {1, 2, -3, 32767};
    ExpectAll({
        {Format("%q|%Q", (3 << 16) | 4, (1 << 16) | 0xFFFF), "(3,4)|hv(1,-1)"},
        {Format("%10q|%-10.1q|", int(0x80000000u), 0), "(-32768,0)|(0,0)|"},
        {Format("%r|%R|%20r", rect, rect, rect),
         "(1, 2, -3, 32767)|tlbr(1, 2, -3, 32767)|(1, 2, -3, 32767)"},
    });
}

TEST(FormatEngine, LiteralsAndBackslashCodes) {
    ExpectAll({
        {Format("100%"), "100%"},
        {Format("a%%b"), "a%b"},
        {Format("x%-"), "x-"},
        {Format("\\n|\n|\\t\\s\\\\\\q"), "\r\n|\n|\t \\q"},
        {Format("\\41\\4\\4G\\ff"),
         "A\x04\x04G\x0c"
         "f"},
        {Format("end\\"), "end\\"},
    });
    // NUL is an ordinary format character.
    const char withNul[] = {'a', 0, 'b'};
    char out[8];
    auto call = [&](int32_t size, ...) {
        va_list args;
        va_start(args, size);
        int32_t n = StrFormatV(out, size, withNul, 3, args);
        va_end(args);
        return n;
    };
    ASSERT_EQ(call(8), 3);
    EXPECT_EQ(std::string(out, 3), std::string(withNul, 3));
}

TEST(FormatEngine, CountModeAndSizeZero) {
    // A null destination ignores the size and counts every byte, CR of \n included.
    EXPECT_EQ(StrFormatN(nullptr, 0, "ab\\n%5d", 1), 9);
    EXPECT_EQ(StrFormatN(nullptr, -7, "%s", "xyz"), 3);
    char buffer[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(StrFormatN(buffer, 0, "%d", 12), 0);
    EXPECT_EQ(buffer[0], '#');
    // A CR that fills the last byte leaves no room for its LF.
    EXPECT_EQ(StrFormatN(buffer, 2, "a\\n"), 2);
    EXPECT_EQ(std::string(buffer, 2), "a\r");
}

// Every size from 0 up gives a prefix of the full text, never a byte more.
TEST(FormatEngine, OutputCutAtEveryByte) {
    int16_t rect[4] = {10, 20, 30, 40};
    uint8_t pstr[] = {5, 'h', 'e', 'l', 'l', 'o'};
    struct Row {
        const char* format;
        std::string full;
        std::function<int32_t(char*, int32_t)> call;
    };
    std::vector<Row> rows = {
        {"%08d|%-6x|%s", "-0001234|FF    |tail",
         [](char* d, int32_t n) { return StrFormatN(d, n, "%08d|%-6x|%s", -1234, 255, "tail"); }},
        {"%.3f\\n%10.4s", "-2.500\r\n    ",
         [](char* d, int32_t n) { return StrFormatN(d, n, "%.3f\\n%10.4s", -2.5, "abcdef"); }},
        {"%R %q %-8p|", "tlbr(10, 20, 30, 40) (0,7) hello   |",
         [&](char* d, int32_t n) { return StrFormatN(d, n, "%R %q %-8p|", rect, 7, pstr); }},
        {"%1$d-%2$s", "5-x",
         [](char* d, int32_t n) { return StrFormatN(d, n, "%1$d-%2$s", 5, "x"); }},
    };
    for (const Row& row : rows) {
        int32_t full = static_cast<int32_t>(row.full.size());
        ASSERT_EQ(row.call(nullptr, 0), full) << row.format;
        for (int32_t size = 0; size <= full + 2; ++size) {
            std::string buffer(static_cast<size_t>(full) + 8, '#');
            int32_t n = row.call(buffer.data(), size);
            int32_t want = size < full ? size : full;
            ASSERT_EQ(n, want) << row.format << " size " << size;
            EXPECT_EQ(buffer.substr(0, static_cast<size_t>(n)),
                      row.full.substr(0, static_cast<size_t>(n)))
                << row.format << " size " << size;
            EXPECT_EQ(buffer.find_first_not_of('#', static_cast<size_t>(n)), std::string::npos)
                << row.format << " wrote past " << size;
        }
    }
}

TEST(FormatEngine, DecimalMarkForm) {
    double half = 0.5;
    ExpectAll({
        {Format("%,;%f|%.1f", 1.5, 2.25), "1,500000|2,2"},
        {Format("%,;%.1f%;|%.1f", 1.5, 1.5), "1,5|1.5"},
        {Format("%\\2C;%.2f", 0.5), "0,50"},
        {Format("%';%.1{fD}f", &half), "0'5"},
        {Format("%,;%d|%x", 1234, 255), "1234|FF"},
    });
}

TEST(FormatEngine, DecimalMarkCarriesIntoTheSecondPass) {
    // The mark is set once per call, so a positional call's second pass starts with the mark
    // that the first pass ended with.
    EXPECT_EQ(Format("%1$.1f %,;%1$.1f", 0.5), "0,5 0,5");
}

TEST(FormatEngine, PositionalParameters) {
    uint8_t pstr[] = {2, 'p', 'q'};
    int16_t rect[4] = {1, 2, 3, 4};
    ExpectAll({
        {Format("%1$s %2$d %1$s", "a", 7), "a 7 a"},
        {Format("%3$s%2$s%1$s", "1", "2", "3"), "321"},
        {Format("%2$.1f|%1$5d|%1$-5d|", 42, 1.25), "1.2|   42|42   |"},
        {Format("%1$p %2$q %3$r %4$4c %5$lx", pstr, (1 << 16) | 2, rect, 0x64636261, -1),
         "pq (1,2) (1, 2, 3, 4) abcd FFFFFFFF"},
        {Format("%10$d%9$d%8$d%7$d%6$d%5$d%4$d%3$d%2$d%1$d", 0, 1, 2, 3, 4, 5, 6, 7, 8, 9),
         "9876543210"},
        // The walker stops at the empty first slot and finds slot 2 in use: no text at all.
        {Format("ab%2$d", 1, 2), ""},
        {Format("%1$d%3$d", 1, 2, 3), ""},
    });
    // The first pass stops at the limit too: literal text can fill a small buffer before a
    // position is recorded, and the gap then fails the binding.
    char buffer[4];
    EXPECT_EQ(StrFormatN(buffer, 1, "%2$s-%1$d", 5, "x"), 0);
    EXPECT_EQ(StrFormatN(buffer, 3, "%2$s-%1$d", 5, "x"), 3);
    EXPECT_EQ(std::string(buffer, 3), "x-5");
}

// Each specifier failure is reported; the report ends the process with status 1.
TEST(FormatEngineDeathTest, SpecifierFailures) {
    const char* const formats[] = {
        "%k",        "%X",         "%i",    "%n",      "%a",      "%h",      "%l",
        "%ld%lh",    "%5",         "%-5",   "%.3",     "%{",      "%{i",     "%{iB",
        "%1$",       "%0$d",       "%11$d", "%1${*}d", "%1$d %d", "%d %1$d", "%1$d %1$ld",
        "%1$s %1$d", "%1$c %1$4c", "%[;d",  "%\\s;d",  "%5;",
    };
    for (const char* format : formats) {
        char buffer[64];
        EXPECT_EXIT(StrFormatN(buffer, sizeof buffer, format, 1, 2, 3),
                    ::testing::ExitedWithCode(1), "Failure")
            << format;
    }
}

}  // namespace
