#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "mg/dbgtools.h"
#include "mg/host.h"
#include "mg/memory.h"
#include "mg/pstring.h"
#include "support/memory_env.h"

namespace {

TEST(StripDirectory, OnlyBackslashSeparates) {
    const struct {
        const char* in;
        const char* out;
    } rows[] = {
        {"mgsource\\resource\\writeback.cpp", "writeback.cpp"},
        {"a/b/c.cpp", "a/b/c.cpp"},
        {"leaf", "leaf"},
        {"\\x", "x"},
        {"dir\\", ""},
        {"", ""},
    };
    for (const auto& r : rows) {
        char buf[64];
        strcpy(buf, r.in);
        DStripDirectory(buf);
        EXPECT_STREQ(buf, r.out) << r.in;
    }
}

const char kAdvice[] =
    "\r\n\r\nFor assistance in resolving this problem, please record the preceding "
    "information and navigate to https://support\\.meridax\\.example, or contact Meridax "
    "Technical Support\\.\n$";

TEST(FailureReport, PrintsLeafAndLineThenExits) {
    EXPECT_EXIT(DReportFailure("mgsource\\memory\\handles.cpp", 120, nullptr, "$Revision: 1 $"),
                ::testing::ExitedWithCode(1),
                std::string("^Failure : \"handles\\.cpp\" line 120") + kAdvice);
    EXPECT_EXIT(DReportError("x\\resource", 7, 3, nullptr, nullptr), ::testing::ExitedWithCode(1),
                std::string("^Error #3:  \"resource\" line 7") + kAdvice);
    EXPECT_EXIT(DFailure("a/b/c", 9, "detail"), ::testing::ExitedWithCode(1),
                std::string("^Failure detail: \"a/b/c\" line 9") + kAdvice);
    EXPECT_EQ(DReportError("x", 1, 0, nullptr, nullptr), 0);  // error 0 reports nothing
}

TEST(FailureReport, ReplacementFormatsAreUsed) {
    // Four unread bytes, then the error format and the failure format.
    const std::string block = std::string("????") + "\x0b" + "E%ld %s %s!" + "\x0a" + "F%s %s %ld";
    Handle h = MemNewHandle(static_cast<int32_t>(block.size()));
    ASSERT_NE(h, nullptr);
    memcpy(*h, block.data(), block.size());
    EXPECT_EXIT((DSetFailureFormats(h), DReportFailure("d\\leaf", 5, "x", nullptr)),
                ::testing::ExitedWithCode(1), "^Fx leaf 5\n$");
    EXPECT_EXIT((DSetFailureFormats(h), DReportError("d\\leaf", 5, 4, "x", nullptr)),
                ::testing::ExitedWithCode(1), "^E4 x leaf!\n$");
    MemDisposeHandle(h);
}

TEST(FailureReport, EmptiesTheOutOfMemoryRecord) {
    MemClearOutOfMemory();
    MemSetOutOfMemory(64, 0);
    MemReportOutOfMemory(0, 3);
    EXPECT_EQ(MemOutOfMemoryInfo(nullptr), 0);
    MemReportOutOfMemory(0, 8);  // no record: no check either
    MemSetOutOfMemory(64, 0);
    EXPECT_EXIT(MemReportOutOfMemory(0, 8), ::testing::ExitedWithCode(1), "^Failure ");
    EXPECT_EXIT(MemReportOutOfMemory(-1, 7), ::testing::ExitedWithCode(1), "^Failure ");
    MemClearOutOfMemory();
}

TEST(PackedList, GetClampsTheIndex) {
    const std::string block = std::string("\0\0\0\0", 4) + "\1a" + "\2bc" + std::string(1, '\0');
    Handle h = MemNewHandle(static_cast<int32_t>(block.size()));
    memcpy(*h, block.data(), block.size());
    const int32_t count = 3;
    memcpy(*h, &count, 4);
    const struct {
        int32_t index;
        const char* want;
    } rows[] = {{-5, "a"}, {0, "a"}, {1, "bc"}, {2, ""}, {3, ""}, {99, ""}};
    for (const auto& r : rows) {
        ConstPStr p = PListGet(h, r.index);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(p) + 1, p[0]), r.want) << r.index;
    }
    MemDisposeHandle(h);
}

TEST(HostStubs, PrintfFormatsOneLineAndCounts) {
    const int32_t before = gHostPrintCount;
    const std::string longText(600, 'x');
    testing::internal::CaptureStderr();
    EXPECT_EQ(HostPrintf("plain"), before + 1);
    EXPECT_EQ(HostPrintf("%d\\n%s", 42, "x"), before + 2);  // the engine's own line end
    EXPECT_EQ(HostPrintf("%s", longText.c_str()), before + 3);
    gHostPrintBusy = 1;  // as if called from within the formatting
    EXPECT_EQ(HostPrintf("unseen"), before + 3);
    gHostPrintBusy = 0;
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "plain\n42\r\nx\n" + std::string(512, 'x') + "\n");
}

TEST(HostStubs, WriteAndConfig) {
    testing::internal::CaptureStderr();
    const uint8_t empty[1] = {0};
    HostWritePStr(empty, 0);
    const uint8_t text[4] = {3, 'a', 'b', 'c'};
    HostWritePStr(text, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "\nabc\n");
    int32_t value = 42;
    EXPECT_EQ(HostConfigRead(0, "useLocaleDecimalPt", &value), 20);
    EXPECT_EQ(value, 42);
    char name[4096];
    EXPECT_GT(HostGetModuleFileName(nullptr, name, sizeof name), 0);
}

}  // namespace
