// Counted strings: conversions with their cuts, copies, appends and the comparisons.
#include "mg/pstring.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/handles.h"
#include "support/pstr.h"
#include "support/rows.h"

namespace {

using namespace mgtest;

TEST(PStringConvert, CutsAt255AndRoundTrips) {
    const std::string longText(300, 'x');
    uint8_t p[256];
    char text[300];
    L l(longText), room("", 64);
    ExpectRows({Row(TextToPString(longText.c_str(), p), 255), Row(p[0], 255),
                Row(PStringToText(p, text), 255), Row(text, std::string(255, 'x')),
                Row(LStringToPString(l, p), 255), Row(LStringToPString(nullptr, p), 0),
                Row(p[0], 0), Row(PStringToLString(P("hello").b, room), 5),
                Row(room.get()->count, 5), Row(LStringToText(room, text), 5), Row(text, "hello"),
                Row(LStringToText(nullptr, text), 0), Row(text[0], 0),
                Row(TextToLString(nullptr, room), 0), Row(room.get()->count, 0),
                Row(TextToLString("abc", room), 3),
                // One character is copied too, both ways.
                Row(TextToLString("z", room), 1), Row(LStringToText(room, text), 1), Row(text, "z"),
                Row(TempPString("lit")[0], 3), Row(TempPString("lit") == gTempPString, 1)});
}

TEST(PStringCopy, LimitedAndAppend) {
    P s("abcdef"), d("zzzzzzzz"), big(std::string(250, 'a')), small("ab");
    // A limit of 1 moves only the count byte, then replaces it.
    ExpectRows({Row(PStringCopyLimited(d.b, s.b, 1) == d.b, 1), Row(d.str(), ""),
                Row((PStringCopyLimited(d.b, s.b, 4), d.str()), "abc"),
                Row((PStringCopyLimited(d.b, s.b, 200), d.str()), "abcdef"),
                Row((PStringCopy(d.b, P("q").b), d.str()), "q"),
                Row(PStringAppend(big.b, P("0123456789").b), 255),
                Row(big.str(), std::string(250, 'a') + "01234"),
                Row(PStringAppend(small.b, P("cd").b), 4), Row(small.str(), "abcd")});
}

TEST(PStringCompare, Table) {
    // clang-format off
    const struct { const char *a, *b; int order, orderNoCase; } rows[] = {
        {"ab", "abc", -1, -1}, {"abc", "ab", 1, 1}, {"AB", "ab", 'A' - 'a', 0},
        {"abd", "abc", 1, 1}, {"a\xF0", "a\x10", 0xE0, 0xE0}, {"", "", 0, 0},
        {"Zeta", "alpha", 'Z' - 'a', 'z' - 'a'}};
    // clang-format on
    for (const auto& r : rows) {
        P a(r.a), b(r.b);
        const uint8_t *pa = a.b, *pb = b.b;
        const bool same = r.order == 0, sameNoCase = r.orderNoCase == 0 && a.b[0] == b.b[0];
        EXPECT_EQ(
            std::vector<int>({PStringOrder(a.b, b.b), PStringOrderNoCase(a.b, b.b),
                              PStringSame(a.b, b.b), PStringSameNoCase(a.b, b.b),
                              PStringOrderIndirect(&pa, &pb), PStringOrderNoCaseIndirect(&pa, &pb),
                              PStringSameIndirect(&pa, &pb), PStringSameNoCaseIndirect(&pa, &pb)}),
            std::vector<int>({r.order, r.orderNoCase, same, sameNoCase, r.order, r.orderNoCase,
                              same, sameNoCase}))
            << r.a << "|" << r.b;
    }
    P x("same");
    EXPECT_TRUE(PStringSame(x.b, x.b) && PStringOrder(x.b, x.b) == 0);
}

// A null LStr is empty; a zero length decides handles by the lengths; the same pointer is
// equal whatever the lengths.
TEST(LStringCompare, NullRules) {
    L empty(""), abc("abc"), abd("abd"), ABC("ABC"), ab("ab");
    LStr *pa = abc, *pe = empty, *pb = ABC;
    const uint8_t s[] = "abc";
    // clang-format off
    ExpectRows({Row(LStringOrder(nullptr, empty), 0), Row(LStringOrder(nullptr, abc), -1),
                Row(LStringOrder(abc, nullptr), 1), Row(LStringOrder(nullptr, nullptr), 0),
                Row(LStringOrder(empty, nullptr), 0), Row(LStringOrder(abc, abd), -1),
                Row(LStringOrder(ABC, abc), 'A' - 'a'), Row(LStringOrderNoCase(ABC, abc), 0),
                Row(LStringSame(nullptr, empty), 1), Row(LStringSame(empty, nullptr), 1),
                Row(LStringSame(nullptr, abc), 0), Row(LStringSame(abc, ab), 0),
                Row(LStringSameNoCase(ABC, abc), 1), Row(LStringOrder(ab, abc), -1),
                Row(LHandleOrder(&pa, nullptr), 3), Row(LHandleOrder(&pe, &pa), -3),
                Row(LHandleOrderNoCase(&pa, &pb), 0), Row(LHandleSame(&pa, &pb), 0),
                Row(LHandleSame(nullptr, &pe), 1), Row(BytesOrder(nullptr, 0, s, 0), 0),
                Row(BytesOrder(nullptr, 0, s, 3), -1), Row(BytesOrder(s, 3, nullptr, 0), 1),
                Row(BytesOrder(s, 3, s, 1), 0),
                Row(BytesOrderNoCase(s, 3, reinterpret_cast<const uint8_t*>("ABCD"), 4), -1)});
    // clang-format on
}

TEST(TextCompare, BoundedNoCaseAndContainsNoBlanks) {
    ExpectRows(
        {Row(TextOrderNoCaseN("abc", "abd", 2), 0), Row(TextOrderNoCaseN("abc", "ABC", 5), 0),
         Row(TextOrderNoCaseN("abc", "ab", 5), 1), Row(TextOrderNoCaseN("ab", "abc", 5), -'c'),
         Row(TextOrderNoCaseN("abd", "ABC", 5), 1),
         Row(TextSameNoCaseN("Hello", "hELLO world", 5), 1), Row(MemOrder("abc", "abd", 3), -1),
         Row(MemOrder("abc", "abd", 2), 0), Row(TextContainsNoBlanks("", ""), 0),
         Row(TextContainsNoBlanks("", "a"), 0), Row(TextContainsNoBlanks("x", ""), 1),
         Row(TextContainsNoBlanks("Hello World", "loWo"), 1),
         Row(TextContainsNoBlanks("h e\tl l o", "HELLO"), 1),
         Row(TextContainsNoBlanks("hello", "l o"), 0), Row(TextContainsNoBlanks("abc", "abcd"), 0),
         Row(TextContainsNoBlanks("xxabxabc", "abc"), 1)});
}

}  // namespace
