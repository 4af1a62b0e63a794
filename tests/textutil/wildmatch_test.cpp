// WildMatch, FindWildcard and TextStep.
#include <gtest/gtest.h>

#include <cstring>

#include "mg/textutil.h"

namespace {

int32_t ExactCompare(const char* a, const char* b, int32_t n) {
    return memcmp(a, b, static_cast<size_t>(n));
}

struct Case {
    const char *pattern, *text;
    int32_t expected;
    uint8_t barrier = 0, escape = 0;
    TextCompareN compare = nullptr;
};

TEST(WildMatch, Table) {
    constexpr uint8_t B = '/', E = '\\';
    // clang-format off
    const Case cases[] = {
        // Literals: as long as the text, case ignored by default only.
        {"abc", "ABC", 1}, {"abc", "ABC", 0, 0, 0, ExactCompare}, {"abc", "abcd", 0}, {"abcd", "abc", 0},
        {"", "", 1}, {"", "a", 0},
        // ?
        {"a?c", "abc", 1}, {"a?c", "ac", 0}, {"?", "", 0}, {"?", "/", 0, B}, {"a?", "a/", 1},
        // *, the barrier and **; the barrier itself is still tried.
        {"*", "", 1}, {"*", "a/b", 0, B}, {"**", "a/b", 1, B}, {"*", "a/b", 1}, {"a*", "a", 1},
        {"*b", "", 0}, {"*.txt", "readme.TXT", 1}, {"*.txt", "a.txt.bak", 0}, {"*.txt", "dir/a.txt", 0, B},
        {"**.txt", "dir/a.txt", 1, B}, {"*/b", "a/b", 1, B}, {"*c", "a/c", 0, B}, {"a*b*c", "aXbYc", 1},
        {"a*b*c", "aXbY", 0}, {"*a", "a", 1}, {"x*", "abc", 0},
        // The escape: the escaped character can't be the last of the text, always ignores case,
        // and stands for itself at the end. With another escape the grave is literal.
        {"a`*", "a*x", 0}, {"a`*", "a*", 0}, {"a`*x", "a*x", 1}, {"a`*x", "abx", 0},
        {"`A*", "ab", 1, 0, 0, ExactCompare}, {"a`", "a`x", 0}, {"a`?", "a`?", 0},
        {"a\\?b", "a?b", 1, 0, E}, {"a\\?b", "axb", 0, 0, E}, {"a`?b", "a`xb", 1, 0, E}};
    // clang-format on
    for (const Case& c : cases) {
        EXPECT_EQ(WildMatch(reinterpret_cast<const uint8_t*>(c.pattern),
                            reinterpret_cast<const uint8_t*>(c.text),
                            static_cast<int32_t>(strlen(c.pattern)),
                            static_cast<int32_t>(strlen(c.text)), c.compare, c.escape, c.barrier),
                  c.expected)
            << "pattern \"" << c.pattern << "\" text \"" << c.text << "\"";
    }
}

// Only the given lengths count, whatever follows in memory; bad spans don't match.
TEST(WildMatch, Spans) {
    const uint8_t pattern[] = {'a', '*', 'Z'}, text[] = {'a', 'b', 'z', 'q'};
    const struct {
        const uint8_t *pattern, *text;
        int32_t patternLength, textLength, expected;
    } cases[] = {{pattern, text, 2, 2, 1},   {pattern, text, 3, 3, 1}, {pattern, text, 3, 4, 0},
                 {text, text, -1, 3, 0},     {text, text, 3, -1, 0},   {nullptr, text, 3, 3, 0},
                 {nullptr, nullptr, 0, 0, 1}};
    for (const auto& c : cases)
        EXPECT_EQ(WildMatch(c.pattern, c.text, c.patternLength, c.textLength, nullptr, 0, 0),
                  c.expected);
}

TEST(FindWildcard, StopsAtFirstSpecialCharacterFromPosition) {
    const uint8_t pattern[] = "ab?c*d`e";
    // From, escape, whether one is found, and where. No pattern or a position before it: the
    // end is the answer.
    const struct {
        const uint8_t* pattern;
        int32_t from;
        uint8_t escape;
        int32_t found, position;
    } cases[] = {{pattern, 0, '`', 1, 2}, {pattern, 3, '`', 1, 4},  {pattern, 5, '`', 1, 6},
                 {pattern, 7, '`', 0, 8}, {pattern, 5, '\\', 0, 8}, {nullptr, 0, '`', 0, 8},
                 {pattern, -1, '`', 0, 8}};
    for (const auto& c : cases) {
        int32_t position = c.from;
        EXPECT_EQ(FindWildcard(c.pattern, &position, 8, c.escape), c.found) << c.from;
        EXPECT_EQ(position, c.position) << c.from;
    }
    EXPECT_EQ(FindWildcard(pattern, nullptr, 8, '`'), 0);
}

TEST(TextStep, DoubleByteCharactersStepTwoWithAFontTable) {
    uint8_t widths[256] = {};
    widths[0x81] = 2;
    const uint8_t text[] = {'a', 0x81, 0x40, 'b'};
    EXPECT_EQ(TextStep(text, 0, nullptr), 1);
    EXPECT_EQ(TextStep(text, 1, nullptr), 2);
    EXPECT_EQ(TextStep(text, 0, widths), 1);
    EXPECT_EQ(TextStep(text, 1, widths), 3);
}

}  // namespace
