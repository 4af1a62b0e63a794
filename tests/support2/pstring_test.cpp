#include "mg/pstring.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/pstr.h"

namespace {

using mgtest::P;

// An LStr with room behind it.
struct L {
    std::vector<uint8_t> mem;
    explicit L(const std::string& s) : mem(sizeof(int32_t) + s.size() + 1) {
        auto* l = get();
        l->count = static_cast<int32_t>(s.size());
        memcpy(l->text, s.data(), s.size());
    }
    LStr* get() { return reinterpret_cast<LStr*>(mem.data()); }
};

TEST(PStringConvert, CutsAt255) {
    std::string longText(300, 'x');
    uint8_t p[256];
    EXPECT_EQ(TextToPString(longText.c_str(), p), 255);
    EXPECT_EQ(p[0], 255);
    char text[300];
    EXPECT_EQ(PStringToText(p, text), 255);
    EXPECT_EQ(std::string(text), std::string(255, 'x'));
    L l(longText);
    EXPECT_EQ(LStringToPString(l.get(), p), 255);
    EXPECT_EQ(LStringToPString(nullptr, p), 0);
    EXPECT_EQ(p[0], 0);
}

TEST(PStringConvert, LStrRoundTrip) {
    P p("hello");
    std::vector<uint8_t> mem(64);
    LStr* l = reinterpret_cast<LStr*>(mem.data());
    EXPECT_EQ(PStringToLString(p.b, l), 5);
    EXPECT_EQ(l->count, 5);
    char text[64];
    EXPECT_EQ(LStringToText(l, text), 5);
    EXPECT_STREQ(text, "hello");
    EXPECT_EQ(LStringToText(nullptr, text), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(TextToLString(nullptr, l), 0);
    EXPECT_EQ(l->count, 0);
    EXPECT_EQ(TextToLString("abc", l), 3);
    EXPECT_EQ(TextToLString("z", l), 1);  // one character is copied too, both ways
    EXPECT_EQ(LStringToText(l, text), 1);
    EXPECT_STREQ(text, "z");
    EXPECT_EQ(TempPString("lit")[0], 3);
    EXPECT_EQ(TempPString("lit"), gTempPString);
}

TEST(PStringCopy, LimitedAndAppend) {
    P s("abcdef"), d("zzzzzzzz");
    EXPECT_EQ(PStringCopyLimited(d.b, s.b, 1), d.b);
    EXPECT_EQ(d.b[0], 0);  // only the count byte was moved, then replaced
    PStringCopyLimited(d.b, s.b, 4);
    EXPECT_EQ(d.str(), "abc");
    PStringCopyLimited(d.b, s.b, 200);
    EXPECT_EQ(d.str(), "abcdef");
    PStringCopy(d.b, P("q").b);
    EXPECT_EQ(d.str(), "q");

    P big(std::string(250, 'a'));
    EXPECT_EQ(PStringAppend(big.b, P("0123456789").b), 255);
    EXPECT_EQ(big.str(), std::string(250, 'a') + "01234");
    P small("ab");
    EXPECT_EQ(PStringAppend(small.b, P("cd").b), 4);
    EXPECT_EQ(small.str(), "abcd");
}

struct OrderRow {
    const char* a;
    const char* b;
    int order;
    int orderNoCase;
};

TEST(PStringCompare, Table) {
    const OrderRow rows[] = {
        {"ab", "abc", -1, -1},
        {"abc", "ab", 1, 1},
        {"AB", "ab", 'A' - 'a', 0},
        {"abd", "abc", 1, 1},
        {"a\xF0", "a\x10", 0xE0, 0xE0},  // unsigned bytes
        {"", "", 0, 0},
        {"Zeta", "alpha", 'Z' - 'a', 'z' - 'a'},
    };
    for (const auto& r : rows) {
        P a(r.a), b(r.b);
        EXPECT_EQ(PStringOrder(a.b, b.b), r.order) << r.a << "|" << r.b;
        EXPECT_EQ(PStringOrderNoCase(a.b, b.b), r.orderNoCase) << r.a << "|" << r.b;
        EXPECT_EQ(PStringSame(a.b, b.b), r.order == 0);
        EXPECT_EQ(PStringSameNoCase(a.b, b.b), r.orderNoCase == 0 && a.b[0] == b.b[0]);
        const uint8_t* pa = a.b;
        const uint8_t* pb = b.b;
        EXPECT_EQ(PStringOrderIndirect(&pa, &pb), r.order);
        EXPECT_EQ(PStringOrderNoCaseIndirect(&pa, &pb), r.orderNoCase);
        EXPECT_EQ(PStringSameIndirect(&pa, &pb), r.order == 0);
        EXPECT_EQ(PStringSameNoCaseIndirect(&pa, &pb), PStringSameNoCase(a.b, b.b));
    }
    P x("same");
    EXPECT_TRUE(PStringSame(x.b, x.b));
    EXPECT_EQ(PStringOrder(x.b, x.b), 0);
}

TEST(LStringCompare, NullRules) {
    L empty(""), abc("abc"), abd("abd"), ABC("ABC");
    EXPECT_EQ(LStringOrder(nullptr, empty.get()), 0);
    EXPECT_EQ(LStringOrder(nullptr, abc.get()), -1);
    EXPECT_EQ(LStringOrder(abc.get(), nullptr), 1);
    EXPECT_EQ(LStringOrder(nullptr, nullptr), 0);
    EXPECT_EQ(LStringOrder(empty.get(), nullptr), 0);
    EXPECT_EQ(LStringOrder(abc.get(), abd.get()), -1);
    EXPECT_EQ(LStringOrder(ABC.get(), abc.get()), 'A' - 'a');
    EXPECT_EQ(LStringOrderNoCase(ABC.get(), abc.get()), 0);
    EXPECT_TRUE(LStringSame(nullptr, empty.get()));
    EXPECT_TRUE(LStringSame(empty.get(), nullptr));
    EXPECT_FALSE(LStringSame(nullptr, abc.get()));
    EXPECT_FALSE(LStringSame(abc.get(), L("ab").get()));
    EXPECT_TRUE(LStringSameNoCase(ABC.get(), abc.get()));
    EXPECT_EQ(LStringOrder(L("ab").get(), abc.get()), -1);

    LStr* pa = abc.get();
    LStr* pe = empty.get();
    EXPECT_EQ(LHandleOrder(&pa, nullptr), 3);  // a zero length decides by the lengths
    EXPECT_EQ(LHandleOrder(&pe, &pa), -3);
    LStr* pb = ABC.get();
    EXPECT_EQ(LHandleOrderNoCase(&pa, &pb), 0);
    EXPECT_FALSE(LHandleSame(&pa, &pb));
    EXPECT_TRUE(LHandleSame(nullptr, &pe));

    const uint8_t s[] = "abc";
    EXPECT_EQ(BytesOrder(nullptr, 0, s, 0), 0);
    EXPECT_EQ(BytesOrder(nullptr, 0, s, 3), -1);
    EXPECT_EQ(BytesOrder(s, 3, nullptr, 0), 1);
    EXPECT_EQ(BytesOrder(s, 3, s, 1), 0);  // the same pointer is equal whatever the lengths
    EXPECT_EQ(BytesOrderNoCase(s, 3, reinterpret_cast<const uint8_t*>("ABCD"), 4), -1);
}

TEST(TextCompare, BoundedNoCase) {
    EXPECT_EQ(TextOrderNoCaseN("abc", "abd", 2), 0);
    EXPECT_EQ(TextOrderNoCaseN("abc", "ABC", 5), 0);
    EXPECT_EQ(TextOrderNoCaseN("abc", "ab", 5), 1);
    EXPECT_EQ(TextOrderNoCaseN("ab", "abc", 5), -'c');
    EXPECT_EQ(TextOrderNoCaseN("abd", "ABC", 5), 1);
    EXPECT_TRUE(TextSameNoCaseN("Hello", "hELLO world", 5));
    EXPECT_EQ(MemOrder("abc", "abd", 3), -1);
    EXPECT_EQ(MemOrder("abc", "abd", 2), 0);
}

TEST(TextCompare, ContainsNoBlanks) {
    const struct {
        const char* text;
        const char* pattern;
        int want;
    } rows[] = {
        {"", "", 0},
        {"", "a", 0},
        {"x", "", 1},
        {"Hello World", "loWo", 1},
        {"h e\tl l o", "HELLO", 1},
        {"hello", "l o", 0},
        {"abc", "abcd", 0},
        {"xxabxabc", "abc", 1},
    };
    for (const auto& r : rows)
        EXPECT_EQ(TextContainsNoBlanks(r.text, r.pattern), r.want) << r.text << "|" << r.pattern;
}

}  // namespace
