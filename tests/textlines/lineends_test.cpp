// Line-end conversion of handle text, 8-bit and 16-bit, in both zones; the LStr helpers
// LStringLFToCRLF, LStringTerminate and PStringFromShortCount.
#include <gtest/gtest.h>

#include <string>

#include "mg/textutil.h"
#include "platform/faults.h"
#include "support/handles.h"
#include "support/rows.h"

namespace {

using namespace mgtest;
using Converter = MgStatus (*)(Handle, int32_t, int32_t, int32_t);

// Text widened to 16-bit units.
std::string Widen(const std::string& s) {
    std::string out;
    for (char c : s) out.append(1, c).append(1, '\0');
    return out;
}

std::string Convert(Converter f, const std::string& bytes, int32_t start, bool mainZone,
                    bool wide) {
    Handle h = NewHandleOf(bytes, mainZone);
    EXPECT_EQ(f(h, start, mainZone, wide), MgNoError);
    const std::string out = Contents(h, mainZone);
    DisposeIn(h, mainZone);
    return out;
}

// The text, as CR LF and as LF. LF CR is one line end, CR CR two; "\r\na\n" has a pair first,
// found last when growing.
// clang-format off
const char* const kCases[][3] = {
    {"", "", ""}, {"plain", "plain", "plain"}, {"x\r", "x\r\n", "x\n"},
    {"a\r\nb", "a\r\nb", "a\nb"}, {"a\n\rb", "a\r\nb", "a\nb"}, {"a\rb", "a\r\nb", "a\nb"},
    {"a\nb", "a\r\nb", "a\nb"}, {"\r\r", "\r\n\r\n", "\n\n"}, {"\n\n", "\r\n\r\n", "\n\n"},
    {"\n\r\n", "\r\n\r\n", "\n\n"}, {"\r\n\r", "\r\n\r\n", "\n\n"},
    {"\r\na\n", "\r\na\r\n", "\na\n"}, {"a\r\n\r\nb\rc\n", "a\r\n\r\nb\r\nc\r\n", "a\n\nb\nc\n"}};
// clang-format on

class LineEnds : public ::testing::TestWithParam<std::tuple<bool, bool>> {};

// Each case alone and behind two bytes before the start that would be a line end if they
// were converted.
TEST_P(LineEnds, ConvertsEveryKindOfLineEndFromTheStart) {
    auto [mainZone, wide] = GetParam();
    auto form = [wide = wide](const std::string& s) { return wide ? Widen(s) : s; };
    for (const auto& c : kCases) {
        for (const std::string head : {"", "\n\r"}) {
            const int32_t start = int32_t(head.size());
            const std::string in = head + form(c[0]);
            EXPECT_EQ(std::make_pair(Convert(ConvertLineEndsToCRLF, in, start, mainZone, wide),
                                     Convert(ConvertLineEndsToLF, in, start, mainZone, wide)),
                      std::make_pair(head + form(c[1]), head + form(c[2])))
                << testing::PrintToString(head + c[0]);
        }
    }
    // A failed growth or a start outside the block leaves the text as it was.
    Handle h = NewHandleOf("a\nb\rc", mainZone);
    ExpectRows(
        {Row((plat::FailAllocationAt(1), ConvertLineEndsToCRLF(h, 0, mainZone, 0)) != MgNoError, 1),
         Row((plat::ResetFaults(), ConvertLineEndsToCRLF(h, 6, mainZone, 0)), MgBadArgument),
         Row(ConvertLineEndsToLF(h, -1, mainZone, 0), MgBadArgument),
         Row(Contents(h, mainZone), "a\nb\rc")});
    DisposeIn(h, mainZone);
    // LStringTerminate in the same zone.
    LStrHandle l = NewLStr("abc", mainZone);
    ASSERT_EQ(LStringTerminate(l, mainZone ? 0 : 1), MgNoError);
    EXPECT_EQ(Contents(reinterpret_cast<Handle>(l), mainZone), LStrBytes(std::string("abc", 4)));
    DisposeIn(reinterpret_cast<Handle>(l), mainZone);
}

INSTANTIATE_TEST_SUITE_P(ZonesAndWidths, LineEnds,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool()));

// An odd last byte of wide text stays at the end; 0x0D0A as one 16-bit unit is neither CR nor
// LF.
TEST(LineEnds, OddBytesAndWholeUnits) {
    const std::string units("\x0a\x0d\x0d\x0a", 4);
    const Converter toCRLF = ConvertLineEndsToCRLF, toLF = ConvertLineEndsToLF;
    ExpectRows({Row(Convert(toCRLF, Widen("a\nb") + "Z", 0, true, true), Widen("a\r\nb") + "Z"),
                Row(Convert(toLF, Widen("a\r\nb") + "Z", 0, true, true), Widen("a\nb") + "Z"),
                Row(Convert(toCRLF, units, 0, true, true), units)});
}

// Every LF gets a CR in front, even one that has a CR already.
TEST(LStrText, LFToCRLF) {
    // clang-format off
    const char* const cases[][2] = {
        {"", ""}, {"no ends", "no ends"}, {"a\nb", "a\r\nb"}, {"\r", "\r"}, {"a\r\nb", "a\r\r\nb"},
        {"\n\n", "\r\n\r\n"}, {"end\n", "end\r\n"}};
    // clang-format on
    for (const auto& c : cases) {
        LStrHandle h = NewLStr(c[0]);
        ASSERT_EQ(LStringLFToCRLF(h), MgNoError);
        EXPECT_EQ(Contents(reinterpret_cast<Handle>(h)), LStrBytes(c[1]));
        (*h)->count = 100;  // longer than its block
        EXPECT_EQ(LStringLFToCRLF(h), MgBadArgument);
        DisposeIn(reinterpret_cast<Handle>(h));
    }
    EXPECT_EQ(LStringLFToCRLF(nullptr), MgBadArgument);
}

TEST(LStrText, ShortCounts) {
    Handle h = NewHandleOf(std::string("\5\0hello!", 8));
    L l("", 12);
    PStringFromShortCount(h, l);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(l.mem.data()), 10), LStrBytes("hello") + '\0');
    MemDisposeHandle(h);
}

}  // namespace
