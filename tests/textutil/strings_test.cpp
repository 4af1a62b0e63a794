// PStringHash, PStringEndsWith, PStringOrderL and NewGUID.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "mg/textutil.h"
#include "support/handles.h"
#include "support/pstr.h"

namespace {

using mgtest::P;

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
    EXPECT_EQ(PStringHash(P("").b, 1), 0u);
    EXPECT_EQ(PStringHash(nullptr, 1), 0u);
    // Upper case first hashes an upper-case copy; the string itself is left alone.
    P mixed("Mixed_case.Name");
    EXPECT_EQ(PStringHash(mixed.b, 1), ElfHash("MIXED_CASE.NAME"));
    EXPECT_EQ(mixed.str(), "Mixed_case.Name");
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
        {"ab", "abc", -1, -1}, {"abc", "ab", 1, 1}, {"abc", "abd", -1, -1}, {"AB", "ab", 'A' - 'a', 0},
        {"", "", 0, 0}, {"b", "A", 'b' - 'A', 1}, {"\xff", "a", 0xff - 'a', 0xff - 'a'},
        {"Ab", "aC", 'A' - 'a', 'b' - 'c'}};
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
    ASSERT_EQ(NewGUID(a), 0);
    ASSERT_EQ(NewGUID(b), 0);
    EXPECT_NE(memcmp(a, zero, 16), 0);
    EXPECT_NE(memcmp(a, b, 16), 0);
    EXPECT_NE(NewGUID(nullptr), 0);
}

}  // namespace
