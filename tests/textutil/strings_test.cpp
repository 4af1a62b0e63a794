// PStringHash, PStringEndsWith, PStringOrderL and NewGUID.
#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <string>

#include "mg/textutil.h"
#include "support/pstr.h"

namespace {

using mgtest::P;

// The object-file symbol hash as the ELF tables define it, written independently.
uint32_t ElfHash(const std::string& s) {
    uint32_t h = 0;
    for (unsigned char c : s) {
        h = (h << 4) + c;
        uint32_t g = h & 0xF0000000u;
        if (g) h ^= g >> 24;
        h &= ~g;
    }
    return h;
}

TEST(PStringHash, AgreesWithTheSymbolTableHash) {
    const std::string texts[] = {
        "a",
        "main",
        "printf",
        "_GLOBAL_OFFSET_TABLE_",
        "abcdefgh",
        "abcdefghi",
        std::string(255, 'z'),
        std::string(200, '\xff') + "tail",
        std::string("nul\0in", 6),
    };
    for (const std::string& s : texts) {
        uint32_t h = PStringHash(P(s).b, 0);
        EXPECT_EQ(h, ElfHash(s)) << s;
        EXPECT_EQ(h & 0xF0000000u, 0u) << s;
    }
    EXPECT_EQ(PStringHash(P("").b, 0), 0u);
    EXPECT_EQ(PStringHash(P("").b, 1), 0u);
    EXPECT_EQ(PStringHash(nullptr, 1), 0u);
    // Upper case first hashes an upper-case copy.
    P mixed("Mixed_case.Name");
    EXPECT_EQ(PStringHash(mixed.b, 1), ElfHash("MIXED_CASE.NAME"));
    EXPECT_EQ(mixed.str(), "Mixed_case.Name");  // the string itself is left alone
}

TEST(PStringEndsWith, Table) {
    struct Case {
        const char* text;
        const char* suffix;
        int32_t expected;
    } cases[] = {
        {"readme.TXT", ".txt", 1},
        {"readme.txt", ".txt", 1},
        {"readme.txt", ".TXT", 0},
        {"a.txt", "a.txt", 1},
        {"txt", ".txt", 0},
        {"", "", 1},
        {"abc", "", 1},
        {"abc", "b", 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(PStringEndsWith(P(c.text).b, c.suffix) != 0, c.expected != 0)
            << c.text << " / " << c.suffix;
    }
    EXPECT_EQ(PStringEndsWith(nullptr, ".txt"), 0);
}

TEST(PStringOrderL, ExactAndFolded) {
    struct Case {
        const char* p;
        const char* l;
        int32_t exact;
        int32_t folded;
    } cases[] = {
        {"ab", "abc", -1, -1},
        {"abc", "ab", 1, 1},
        {"abc", "abd", -1, -1},
        {"AB", "ab", 'A' - 'a', 0},
        {"", "", 0, 0},
        {"b", "A", 'b' - 'A', 1},
        {"\xff", "a", 0xff - 'a', 0xff - 'a'},
        {"Ab", "aC", 'A' - 'a', 'b' - 'c'},
    };
    for (const Case& c : cases) {
        P p(c.p);
        int32_t n = static_cast<int32_t>(strlen(c.l));
        std::string lBytes(4 + n + 1, '\0');
        memcpy(lBytes.data(), &n, 4);
        memcpy(lBytes.data() + 4, c.l, n);
        const LStr* l = reinterpret_cast<const LStr*>(lBytes.data());
        EXPECT_EQ(PStringOrderL(p.b, l), c.exact) << c.p << " / " << c.l;
        EXPECT_EQ(PStringOrderLNoCase(p.b, l), c.folded) << c.p << " / " << c.l;
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
