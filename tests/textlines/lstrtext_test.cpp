// LStringLFToCRLF, LStringTerminate and PStringFromShortCount.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "mg/memory.h"
#include "mg/textutil.h"
#include "support/memory_env.h"

namespace {

LStrHandle MakeLStr(const std::string& text, bool mainZone = true) {
    int32_t n = static_cast<int32_t>(text.size());
    Handle h = mainZone ? MemNewHandle(4 + n) : CompactNewHandle(4 + n);
    EXPECT_NE(h, nullptr);
    memcpy(*h, &n, 4);
    memcpy(*h + 4, text.data(), text.size());
    return reinterpret_cast<LStrHandle>(h);
}

std::string Text(LStrHandle h) {
    return std::string(reinterpret_cast<const char*>((*h)->text), (*h)->count);
}

TEST(LStringLFToCRLF, PutsACrBeforeEveryLf) {
    struct Case {
        std::string in;
        std::string out;
    } cases[] = {
        {"", ""},
        {"no line ends", "no line ends"},
        {"a\nb", "a\r\nb"},
        {"a\r\nb", "a\r\r\nb"},  // an existing CR is not looked at
        {"\n\n", "\r\n\r\n"},
        {"\r", "\r"},
        {"end\n", "end\r\n"},
    };
    for (const Case& c : cases) {
        LStrHandle h = MakeLStr(c.in);
        ASSERT_EQ(LStringLFToCRLF(h), MgNoError);
        EXPECT_EQ(Text(h), c.out);
        EXPECT_EQ(MemHandleSize(reinterpret_cast<Handle>(h)), 4 + (*h)->count);
        MemDisposeHandle(reinterpret_cast<Handle>(h));
    }
}

TEST(LStringLFToCRLF, RefusesBadStrings) {
    EXPECT_EQ(LStringLFToCRLF(nullptr), MgBadArgument);
    LStrHandle h = MakeLStr("ab\n");
    (*h)->count = 100;  // longer than its block
    EXPECT_EQ(LStringLFToCRLF(h), MgBadArgument);
    MemDisposeHandle(reinterpret_cast<Handle>(h));
}

TEST(LStringTerminate, AppendsACountedZeroInEitherZone) {
    for (bool mainZone : {true, false}) {
        LStrHandle h = MakeLStr("abc", mainZone);
        Handle block = reinterpret_cast<Handle>(h);
        ASSERT_EQ(LStringTerminate(h, mainZone ? 0 : 1), MgNoError);
        EXPECT_EQ((*h)->count, 4);
        EXPECT_EQ(Text(h), std::string("abc\0", 4));
        EXPECT_EQ(mainZone ? MemHandleSize(block) : CompactHandleSize(block), 8);
        if (mainZone) {
            MemDisposeHandle(block);
        } else {
            CompactDisposeHandle(block);
        }
    }
}

TEST(PStringFromShortCount, CopiesTheCountedBytes) {
    const uint8_t source[] = {5, 0, 'h', 'e', 'l', 'l', 'o', '!'};
    Handle h = nullptr;
    ASSERT_EQ(MemHandleFromBytes(source, &h, sizeof source), MgNoError);
    uint8_t buffer[16] = {};
    LStr* l = reinterpret_cast<LStr*>(buffer);
    PStringFromShortCount(h, l);
    EXPECT_EQ(l->count, 5);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(l->text), 6), std::string("hello\0", 6));
    MemDisposeHandle(h);
}

}  // namespace
