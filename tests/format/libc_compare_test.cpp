// The engine against the C library's snprintf: equal where the two agree, and a listed table
// of the places where they differ by design.
#include <gtest/gtest.h>
#include <stdio.h>

#include <random>
#include <string>

#include "format/format_helpers.h"
#include "mg/format.h"

namespace {

using formattest::Format;

std::string Libc(const char* format, ...) {
    va_list args;
    va_start(args, format);
    char buffer[256];
    int n = vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    return std::string(buffer, static_cast<size_t>(n));
}

TEST(FormatVersusLibc, RandomIntegers) {
    const char* const formats[] = {"%d",    "%u",   "%o",  "%7d",   "%-7d",      "%07d",
                                   "%-07u", "%12o", "%1d", "%011d", "[%-3d|%3u]"};
    std::mt19937 rng(20240611);
    std::uniform_int_distribution<int> any(INT32_MIN, INT32_MAX);
    std::uniform_int_distribution<int> small(-1000, 1000);
    for (int i = 0; i < 2000; ++i) {
        static const int kEdges[] = {0, -1, INT32_MIN, INT32_MAX};
        int value = i < 4 ? kEdges[i] : i % 2 ? any(rng) : small(rng);
        for (const char* format : formats) {
            ASSERT_EQ(Format(format, value, value), Libc(format, value, value))
                << format << " " << value;
        }
    }
}

TEST(FormatVersusLibc, RandomStrings) {
    const char* const formats[] = {"%s", "%9s", "%-9s", "%.4s", "%1s", "<%s|%-2s>"};
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> length(0, 24), character(32, 126);
    for (int i = 0; i < 1000; ++i) {
        std::string text(static_cast<size_t>(length(rng)), ' ');
        for (char& c : text) c = static_cast<char>(character(rng));
        for (const char* format : formats) {
            ASSERT_EQ(Format(format, text.c_str(), text.c_str()),
                      Libc(format, text.c_str(), text.c_str()))
                << format << " '" << text << "'";
        }
    }
}

TEST(FormatVersusLibc, DifferencesByDesign) {
    struct Case {
        const char* what;
        std::string ours, ourWant, libc, libcWant;
    };
    const Case cases[] = {
        {"hexadecimal digits are upper-case", Format("%x", 0xABC), "ABC", Libc("%x", 0xABC), "abc"},
        {"string precision caps the whole field", Format("%8.3s", "abcdef"), "   ",
         Libc("%8.3s", "abcdef"), "     abc"},
        {"%ld is 32 bits", Format("%ld", -1), "-1", Libc("%ld", 4294967295L), "4294967295"},
        {"precision has no effect on integers", Format("%.5d", 42), "42", Libc("%.5d", 42),
         "00042"},
        {"%c ignores other widths", Format("%5c", 'x'), "x", Libc("%5c", 'x'), "    x"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.ours, c.ourWant) << c.what;
        EXPECT_EQ(c.libc, c.libcWant) << c.what;
    }
}

}  // namespace
