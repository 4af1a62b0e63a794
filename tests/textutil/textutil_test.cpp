// The small text algorithms: PStringHash, PStringEndsWith, PStringOrderL, NewGUID, WildMatch,
// FindWildcard and TextStep.
#include "mg/textutil.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "support/handles.h"
#include "support/pstr.h"
#include "support/rows.h"

namespace {

using namespace mgtest;

// The object-file symbol hash as the ELF tables define it, written independently.
uint32_t ElfHash(const std::string& s) {
    uint32_t h = 0;
    for (unsigned char c : s) {
        h = (h << 4) + c;
        const uint32_t g = h & 0xF0000000u;
        if (g) h ^= g >> 24;
        h &= ~g;
    }
    return h;
}

// Texts of every length and byte, NUL and bytes above 127 included.
TEST(PStringHash, AgreesWithTheSymbolTableHash) {
    std::mt19937 rng(5);
    for (int length = 0; length < 256; ++length) {
        std::string s(length, '\0');
        for (char& c : s) c = static_cast<char>(rng());
        EXPECT_EQ(PStringHash(P(s).b, 0), ElfHash(s)) << length;
    }
    // Upper case first hashes an upper-case copy; the string itself is left alone.
    P mixed("Mixed_case.Name");
    ExpectRows({Row(PStringHash(P("").b, 1), 0), Row(PStringHash(nullptr, 1), 0),
                Row(PStringHash(mixed.b, 1), ElfHash("MIXED_CASE.NAME")),
                Row(mixed.str(), "Mixed_case.Name")});
}

// Only the string is folded: the suffix is expected in lower case.
TEST(PStringEndsWith, Table) {
    // clang-format off
    const struct { const char *text, *suffix; bool expected; } cases[] = {
        {"readme.TXT", ".txt", 1}, {"readme.txt", ".TXT", 0}, {"a.txt", "a.txt", 1},
        {"txt", ".txt", 0}, {"", "", 1}, {"abc", "b", 0}};
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(PStringEndsWith(P(c.text).b, c.suffix) != 0, c.expected) << c.text << c.suffix;
    EXPECT_EQ(PStringEndsWith(nullptr, ".txt"), 0);
}

TEST(PStringOrderL, ExactAndFolded) {
    // clang-format off
    const struct { const char *p, *l; int32_t exact, folded; } cases[] = {
        {"ab", "abc", -1, -1}, {"abc", "ab", 1, 1}, {"abc", "abd", -1, -1},
        {"AB", "ab", 'A' - 'a', 0}, {"", "", 0, 0}, {"b", "A", 'b' - 'A', 1},
        {"\xff", "a", 0xff - 'a', 0xff - 'a'}, {"Ab", "aC", 'A' - 'a', 'b' - 'c'}};
    // clang-format on
    for (const auto& c : cases) {
        mgtest::L l(c.l);
        EXPECT_EQ(PStringOrderL(P(c.p).b, l), c.exact) << c.p << " / " << c.l;
        EXPECT_EQ(PStringOrderLNoCase(P(c.p).b, l), c.folded) << c.p << " / " << c.l;
    }
}

TEST(NewGUID, SixteenFreshBytes) {
    uint8_t a[16], b[16];
    const uint8_t zero[16] = {};
    ExpectRows({Row(NewGUID(a), 0), Row(NewGUID(b), 0), Row(memcmp(a, zero, 16) != 0, 1),
                Row(memcmp(a, b, 16) != 0, 1), Row(NewGUID(nullptr) != 0, 1)});
}

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
        {"abc", "ABC", 1}, {"abc", "ABC", 0, 0, 0, ExactCompare}, {"abc", "abcd", 0},
        {"abcd", "abc", 0}, {"", "", 1}, {"", "a", 0},
        // ?
        {"a?c", "abc", 1}, {"a?c", "ac", 0}, {"?", "", 0}, {"?", "/", 0, B}, {"a?", "a/", 1},
        // *, the barrier and **; the barrier itself is still tried.
        {"*", "", 1}, {"*", "a/b", 0, B}, {"**", "a/b", 1, B}, {"*", "a/b", 1}, {"a*", "a", 1},
        {"*b", "", 0}, {"*.txt", "readme.TXT", 1}, {"*.txt", "a.txt.bak", 0},
        {"*.txt", "dir/a.txt", 0, B}, {"**.txt", "dir/a.txt", 1, B}, {"*/b", "a/b", 1, B},
        {"*c", "a/c", 0, B}, {"a*b*c", "aXbYc", 1}, {"a*b*c", "aXbY", 0}, {"*a", "a", 1},
        {"x*", "abc", 0},
        // The escape: the escaped character can't be the last of the text, always ignores case,
        // and stands for itself at the end. With another escape the grave is literal.
        {"a`*", "a*x", 0}, {"a`*", "a*", 0}, {"a`*x", "a*x", 1}, {"a`*x", "abx", 0},
        {"`A*", "ab", 1, 0, 0, ExactCompare}, {"a`", "a`x", 0}, {"a`?", "a`?", 0},
        {"a\\?b", "a?b", 1, 0, E}, {"a\\?b", "axb", 0, 0, E}, {"a`?b", "a`xb", 1, 0, E}};
    // clang-format on
    auto u = [](const char* s) { return reinterpret_cast<const uint8_t*>(s); };
    for (const Case& c : cases)
        EXPECT_EQ(WildMatch(u(c.pattern), u(c.text), int32_t(strlen(c.pattern)),
                            int32_t(strlen(c.text)), c.compare, c.escape, c.barrier),
                  c.expected)
            << "pattern \"" << c.pattern << "\" text \"" << c.text << "\"";
}

// Only the given lengths count, whatever follows in memory; bad spans don't match. FindWildcard
// stops at the first special character from the position; with no pattern, or a position
// before it, the end is the answer. TextStep steps two over a double-byte character only with
// a font table.
TEST(WildMatch, SpansFindWildcardAndTextStep) {
    const uint8_t pattern[] = {'a', '*', 'Z'}, text[] = {'a', 'b', 'z', 'q'},
                  special[] = "ab?c*d`e";
    uint8_t widths[256] = {};
    widths[0x81] = 2;
    const uint8_t wide[] = {'a', 0x81, 0x40, 'b'};
    auto find = [&](const uint8_t* p, int32_t from, uint8_t escape) {
        const int32_t found = FindWildcard(p, &from, 8, escape);
        return std::to_string(found) + "@" + std::to_string(from);
    };
    ExpectRows({Row(WildMatch(pattern, text, 2, 2, nullptr, 0, 0), 1),
                Row(WildMatch(pattern, text, 3, 3, nullptr, 0, 0), 1),
                Row(WildMatch(pattern, text, 3, 4, nullptr, 0, 0), 0),
                Row(WildMatch(text, text, -1, 3, nullptr, 0, 0), 0),
                Row(WildMatch(text, text, 3, -1, nullptr, 0, 0), 0),
                Row(WildMatch(nullptr, text, 3, 3, nullptr, 0, 0), 0),
                Row(WildMatch(nullptr, nullptr, 0, 0, nullptr, 0, 0), 1),
                Row(find(special, 0, '`'), "1@2"), Row(find(special, 3, '`'), "1@4"),
                Row(find(special, 5, '`'), "1@6"), Row(find(special, 7, '`'), "0@8"),
                Row(find(special, 5, '\\'), "0@8"), Row(find(nullptr, 0, '`'), "0@8"),
                Row(find(special, -1, '`'), "0@8"), Row(FindWildcard(special, nullptr, 8, '`'), 0),
                Row(TextStep(wide, 0, nullptr), 1), Row(TextStep(wide, 1, nullptr), 2),
                Row(TextStep(wide, 0, widths), 1), Row(TextStep(wide, 1, widths), 3)});
}

}  // namespace
