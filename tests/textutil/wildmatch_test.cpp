// WildMatch, FindWildcard and TextStep.
#include <gtest/gtest.h>

#include <cstring>

#include "mg/textutil.h"

namespace {

int32_t ExactCompare(const char* a, const char* b, int32_t n) {
    return memcmp(a, b, static_cast<size_t>(n));
}

int32_t Match(const char* pattern, const char* text, uint8_t barrier = 0, uint8_t escape = 0,
              TextCompareN compare = nullptr) {
    return WildMatch(reinterpret_cast<const uint8_t*>(pattern),
                     reinterpret_cast<const uint8_t*>(text), static_cast<int32_t>(strlen(pattern)),
                     static_cast<int32_t>(strlen(text)), compare, escape, barrier);
}

TEST(WildMatch, Table) {
    struct Case {
        const char* pattern;
        const char* text;
        uint8_t barrier;
        uint8_t escape;
        TextCompareN compare;
        int32_t expected;
    } cases[] = {
        // Literals: as long as the text, case ignored by default only.
        {"abc", "ABC", 0, 0, nullptr, 1},
        {"abc", "ABC", 0, 0, ExactCompare, 0},
        {"abc", "abcd", 0, 0, nullptr, 0},
        {"abcd", "abc", 0, 0, nullptr, 0},
        {"", "", 0, 0, nullptr, 1},
        {"", "a", 0, 0, nullptr, 0},
        // ?
        {"a?c", "abc", 0, 0, nullptr, 1},
        {"a?c", "ac", 0, 0, nullptr, 0},
        {"?", "", 0, 0, nullptr, 0},
        {"?", "/", '/', 0, nullptr, 0},
        {"a?", "a/", 0, 0, nullptr, 1},
        // *, the barrier and **
        {"*", "", 0, 0, nullptr, 1},
        {"*", "a/b", '/', 0, nullptr, 0},
        {"**", "a/b", '/', 0, nullptr, 1},
        {"*", "a/b", 0, 0, nullptr, 1},
        {"a*", "a", 0, 0, nullptr, 1},
        {"*b", "", 0, 0, nullptr, 0},
        {"*.txt", "readme.TXT", 0, 0, nullptr, 1},
        {"*.txt", "a.txt.bak", 0, 0, nullptr, 0},
        {"*.txt", "dir/a.txt", '/', 0, nullptr, 0},
        {"**.txt", "dir/a.txt", '/', 0, nullptr, 1},
        {"*/b", "a/b", '/', 0, nullptr, 1},  // the barrier itself is still tried
        {"*c", "a/c", '/', 0, nullptr, 0},
        {"a*b*c", "aXbYc", 0, 0, nullptr, 1},
        {"a*b*c", "aXbY", 0, 0, nullptr, 0},
        {"*a", "a", 0, 0, nullptr, 1},
        {"x*", "abc", 0, 0, nullptr, 0},
        // The escape: the escaped character can't be the last of the text.
        {"a`*", "a*x", 0, 0, nullptr, 0},
        {"a`*", "a*", 0, 0, nullptr, 0},
        {"a`*x", "a*x", 0, 0, nullptr, 1},
        {"a`*x", "abx", 0, 0, nullptr, 0},
        {"`A*", "ab", 0, 0, ExactCompare, 1},  // escaped characters always ignore case
        {"a`", "a`x", 0, 0, nullptr, 0},       // a final escape stands for itself
        {"a`?", "a`?", 0, 0, nullptr, 0},
        {"a\\?b", "a?b", 0, '\\', nullptr, 1},
        {"a\\?b", "axb", 0, '\\', nullptr, 0},
        {"a`?b", "a`xb", 0, '\\', nullptr, 1},  // with another escape the grave is literal
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Match(c.pattern, c.text, c.barrier, c.escape, c.compare), c.expected)
            << "pattern \"" << c.pattern << "\" text \"" << c.text << "\"";
    }
}

// Only the given lengths count, whatever follows in memory; bad spans don't match.
TEST(WildMatch, Spans) {
    const uint8_t pattern[] = {'a', '*', 'Z'};
    const uint8_t text[] = {'a', 'b', 'z', 'q'};
    EXPECT_EQ(WildMatch(pattern, text, 2, 2, nullptr, 0, 0), 1);
    EXPECT_EQ(WildMatch(pattern, text, 3, 3, nullptr, 0, 0), 1);
    EXPECT_EQ(WildMatch(pattern, text, 3, 4, nullptr, 0, 0), 0);
    EXPECT_EQ(WildMatch(text, text, -1, 3, nullptr, 0, 0), 0);
    EXPECT_EQ(WildMatch(text, text, 3, -1, nullptr, 0, 0), 0);
    EXPECT_EQ(WildMatch(nullptr, text, 3, 3, nullptr, 0, 0), 0);
    EXPECT_EQ(WildMatch(nullptr, nullptr, 0, 0, nullptr, 0, 0), 1);
}

TEST(FindWildcard, StopsAtFirstSpecialCharacterFromPosition) {
    const uint8_t pattern[] = "ab?c*d`e";
    struct Case {
        int32_t from;
        uint8_t escape;
        int32_t found;
        int32_t position;
    } cases[] = {
        {0, '`', 1, 2}, {3, '`', 1, 4}, {5, '`', 1, 6}, {7, '`', 0, 8}, {5, '\\', 0, 8},
    };
    for (const Case& c : cases) {
        int32_t position = c.from;
        EXPECT_EQ(FindWildcard(pattern, &position, 8, c.escape), c.found) << c.from;
        EXPECT_EQ(position, c.position) << c.from;
    }
    // No pattern, or a position before it: nothing is read and the end is the answer.
    for (const uint8_t* p : {static_cast<const uint8_t*>(nullptr), pattern}) {
        int32_t position = p ? -1 : 0;
        EXPECT_EQ(FindWildcard(p, &position, 8, '`'), 0);
        EXPECT_EQ(position, 8);
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
