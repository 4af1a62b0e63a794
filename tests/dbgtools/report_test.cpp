#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "mg/dbgtools.h"
#include "mg/host.h"

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

TEST(FailureReport, PrintsLeafAndLineThenExits) {
    EXPECT_EXIT(DReportFailure("mgsource\\memory\\handles.cpp", 120, nullptr, "$Revision: 1 $"),
                ::testing::ExitedWithCode(1), "^Failure : \"handles.cpp\" line 120\n$");
    EXPECT_EXIT(DReportError("x\\resource", 7, 3, nullptr, nullptr), ::testing::ExitedWithCode(1),
                "^Error #3:  \"resource\" line 7\n$");
    EXPECT_EQ(DReportError("x", 1, 0, nullptr, nullptr), 0);  // error 0 reports nothing
}

TEST(DebugPrint, SilentWhileSwitchedOff) {
    ASSERT_EQ(gDebugging, 0);
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    EXPECT_EQ(DPrintf("%s: \"%s\" is not an option.", "mxsbutil", "-x"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    SetApplicationName("/some/other/name");
    EXPECT_STREQ(gAppName, "mxsbutil");
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
