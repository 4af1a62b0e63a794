// Line-end conversion of handle text, 8-bit and 16-bit, in both zones.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mg/memory.h"
#include "mg/textutil.h"
#include "platform/faults.h"
#include "support/memory_env.h"

namespace {

using Converter = MgStatus (*)(Handle, int32_t, int32_t, int32_t);

// Text as bytes, or widened to 16-bit units, in a handle of either zone.
std::string Widen(const std::string& s) {
    std::string out;
    for (unsigned char c : s) {
        out.push_back(static_cast<char>(c));
        out.push_back(0);
    }
    return out;
}

Handle MakeHandle(const std::string& bytes, bool mainZone) {
    Handle h = nullptr;
    MgStatus err =
        mainZone ? MemHandleFromBytes(bytes.data(), &h, static_cast<int32_t>(bytes.size()))
                 : CompactHandleFromBytes(bytes.data(), &h, static_cast<int32_t>(bytes.size()));
    EXPECT_EQ(err, MgNoError);
    return h;
}

std::string Contents(Handle h, bool mainZone) {
    int32_t n = mainZone ? MemHandleSize(h) : CompactHandleSize(h);
    return std::string(reinterpret_cast<const char*>(*h), static_cast<size_t>(n));
}

void Dispose(Handle h, bool mainZone) {
    mainZone ? MemDisposeHandle(h) : CompactDisposeHandle(h);
}

std::string Convert(Converter f, const std::string& bytes, int32_t start, bool mainZone,
                    bool wide) {
    Handle h = MakeHandle(bytes, mainZone);
    EXPECT_EQ(f(h, start, mainZone, wide), MgNoError);
    std::string out = Contents(h, mainZone);
    Dispose(h, mainZone);
    return out;
}

struct Case {
    const char* in;
    const char* crlf;
    const char* lf;
};

const Case kCases[] = {
    {"", "", ""},
    {"plain", "plain", "plain"},
    {"a\r\nb", "a\r\nb", "a\nb"},
    {"a\n\rb", "a\r\nb", "a\nb"},  // LF CR is one line end
    {"a\rb", "a\r\nb", "a\nb"},
    {"a\nb", "a\r\nb", "a\nb"},
    {"\r\r", "\r\n\r\n", "\n\n"},  // CR CR is two
    {"\n\n", "\r\n\r\n", "\n\n"},
    {"x\r", "x\r\n", "x\n"},  // a last lone CR
    {"\n\r\n", "\r\n\r\n", "\n\n"},
    {"\r\n\r", "\r\n\r\n", "\n\n"},
    {"\r\na\n", "\r\na\r\n", "\na\n"},  // a pair first, found last when growing
    {"a\r\n\r\nb\rc\n", "a\r\n\r\nb\r\nc\r\n", "a\n\nb\nc\n"},
};

class LineEnds : public ::testing::TestWithParam<std::tuple<bool, bool>> {};

// Each case alone and behind two bytes before the start that would be a line end if they
// were converted.
TEST_P(LineEnds, ConvertsEveryKindOfLineEndFromTheStart) {
    auto [mainZone, wide] = GetParam();
    auto form = [wide = wide](const std::string& s) { return wide ? Widen(s) : s; };
    for (const Case& c : kCases) {
        for (const std::string head : {"", "\n\r"}) {
            const int32_t start = int32_t(head.size());
            EXPECT_EQ(Convert(ConvertLineEndsToCRLF, head + form(c.in), start, mainZone, wide),
                      head + form(c.crlf))
                << "to CR LF: " << testing::PrintToString(head + c.in);
            EXPECT_EQ(Convert(ConvertLineEndsToLF, head + form(c.in), start, mainZone, wide),
                      head + form(c.lf))
                << "to LF: " << testing::PrintToString(head + c.in);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(ZonesAndWidths, LineEnds,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool()));

// An odd last byte of wide text stays at the end; 0x0D0A as one 16-bit unit is neither CR
// nor LF.
TEST(LineEnds, WideTextIsUnitsNotBytes) {
    std::string in = Widen("a\nb") + "Z";
    EXPECT_EQ(Convert(ConvertLineEndsToCRLF, in, 0, true, true), Widen("a\r\nb") + "Z");
    EXPECT_EQ(Convert(ConvertLineEndsToLF, Widen("a\r\nb") + "Z", 0, true, true),
              Widen("a\nb") + "Z");
    std::string units("\x0a\x0d\x0d\x0a", 4);
    EXPECT_EQ(Convert(ConvertLineEndsToCRLF, units, 0, true, true), units);
}

TEST(LineEnds, FailedGrowthLeavesTheTextUntouched) {
    for (bool mainZone : {true, false}) {
        Handle h = MakeHandle("a\nb\rc", mainZone);
        plat::FailAllocationAt(1);
        EXPECT_NE(ConvertLineEndsToCRLF(h, 0, mainZone, 0), MgNoError);
        plat::ResetFaults();
        EXPECT_EQ(Contents(h, mainZone), "a\nb\rc");
        Dispose(h, mainZone);
    }
}

TEST(LineEnds, StartOutsideTheBlockIsRefused) {
    Handle h = MakeHandle("a\n", true);
    EXPECT_EQ(ConvertLineEndsToCRLF(h, 3, 1, 0), MgBadArgument);
    EXPECT_EQ(ConvertLineEndsToLF(h, -1, 1, 0), MgBadArgument);
    EXPECT_EQ(Contents(h, true), "a\n");
    MemDisposeHandle(h);
}

}  // namespace
