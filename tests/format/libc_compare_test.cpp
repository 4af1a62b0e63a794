// The engine against the C library's snprintf over the forms where the two agree. Where they
// differ by design (upper-case hex digits, a precision that caps the whole string field, 32-bit
// %ld, integers that ignore the precision, %c that ignores widths other than 1 to 4) the
// engine suite pins the engine's side.
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

}  // namespace
