#include <gtest/gtest.h>

#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/stringoutput.h"
#include "platform/faults.h"
#include "support/memory_env.h"
#include "support/run_tool.h"

namespace {

void Collect(const char* text, void* context) {
    *static_cast<std::string*>(context) += text;
}

// dprintf.txt lies beside the program: this suite's is the only one that writes it.
const std::filesystem::path kFile = ThisProgram().parent_path() / "dprintf.txt";

// Switched on, with no file unless a test asks, and the debugger channel collected.
class DebugPrintOn : public ::testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::remove_all(kFile);
        gDebugging = 1;
        gDPrintfFileMode = 0;
        plat::CaptureDebuggerOutput(Collect, &debugger);
    }
    void TearDown() override {
        plat::CaptureDebuggerOutput(nullptr, nullptr);
        DebugExit();
        gDebugging = 0;
        gDPrintfFileMode = 1;
        std::filesystem::remove_all(kFile);
    }
    std::string debugger;
};

// Switched off, the print is silent and makes no file; DPrintfRaw looks at no switch. Each
// line is counted and cut at 512; a nested print is dropped.
TEST_F(DebugPrintOn, SwitchCountsAndCuts) {
    gDebugging = 0;
    gDPrintfFileMode = 1;
    const int32_t before = gDPrintfCount;
    EXPECT_EQ(std::make_tuple(DPrintf("x %d", 1), std::string(DSPrintf("x %d", 1)),
                              DPrintWarn("f", 1, "x"), StopHere("x"), DPrintfRaw("raw")),
              std::make_tuple(0, "", 0, 0, before + 1));
    EXPECT_EQ(debugger, "raw\n");
    EXPECT_FALSE(std::filesystem::exists(kFile));
    gDebugging = 1;
    gDPrintfFileMode = 0;
    debugger.clear();
    const std::string longText(600, 'y'), cut(512, 'y');
    EXPECT_EQ(DPrintf("a%d%s", 1, "\\n"), before + 2);  // an argument's backslash stays
    EXPECT_EQ(DPrintf("%s", longText.c_str()), before + 3);
    EXPECT_EQ(DPrintfRaw(longText.c_str()), before + 4);
    EXPECT_EQ(StopHere("here"), 0);
    StopHere(nullptr);
    EXPECT_EQ(debugger, "a1\\n\n" + cut + "\n" + cut + "\nStopHere: here\nStopHere: \n");
    EXPECT_EQ(DSPrintf("%s", longText.c_str()), cut);
    gDPrintfBusy = 1;  // as inside a DPrintf
    EXPECT_EQ(std::make_pair(DPrintf("nested"), std::string(DSPrintf("nested"))),
              std::make_pair(0, std::string()));
    gDPrintfBusy = 0;
    EXPECT_EQ(gDPrintfCount, before + 6);
}

// The file has CR LF where the debugger has LF, flushed line by line in mode 2; closed at the
// exit, made anew by the next line of a run. One that can't be made is complained about only
// when the create was not reached from DPrintf, and either way no later line tries again.
TEST_F(DebugPrintOn, TheFile) {
    for (int16_t mode : {1, 2}) {
        debugger.clear();
        gDPrintfFileMode = mode;
        DPrintf("a");
        DPrintf("b%d", 2);
        DPrintfRaw("raw");
        DPrintSeverity("", 0, "W: ", "bare");
        EXPECT_EQ(debugger, "a\nb2\nraw\nbare\n");
        const std::string flushed = mode == 2 ? SlurpFile(kFile) : "a\r\nb2\r\nraw\r\nbare\r\n";
        DebugExit();
        EXPECT_EQ(gDPrintfFileMode, 0);
        EXPECT_EQ(SlurpFile(kFile), flushed) << mode;
        EXPECT_EQ(SlurpFile(kFile), "a\r\nb2\r\nraw\r\nbare\r\n") << mode;
    }
    std::filesystem::remove_all(kFile);
    std::filesystem::create_directory(kFile);
    const int32_t before = gDPrintfCount;
    for (bool raw : {false, true}) {
        debugger.clear();
        gDPrintfFileMode = 1;
        raw ? DPrintfRaw("z") : DPrintf("x");
        EXPECT_EQ(gDPrintfFileMode, 0);
        DPrintf("y");
        EXPECT_EQ(debugger, raw ? "z\n Can't create dprintf.txt\ny\n" : "x\ny\n");
    }
    EXPECT_EQ(gDPrintfCount, before + 5);
    EXPECT_TRUE(std::filesystem::is_directory(kFile));
}

TEST_F(DebugPrintOn, TeeIntoTheExtraSink) {
    DebugInit();  // the host has no setting: the switch stays, the sink starts disabled
    EXPECT_EQ(gDebugging, 1);
    ASSERT_NE(gDebugOutput, nullptr);
    LStrOutput* sink = static_cast<LStrOutput*>(gDebugOutput);
    DPrintf("dropped");
    sink->SetEnabled(1);
    DPrintf("a%ld", 7);
    DPrintf("%s", std::string(600, 'z').c_str());  // the sink has no limit of its own
    const LStr* l = *sink->Text();
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(l->text), l->count),
              "a7\r\n" + std::string(600, 'z') + "\r\n");
    DebugExit();
    EXPECT_EQ(gDebugOutput, nullptr);
}

TEST_F(DebugPrintOn, SeverityForms) {
    for (const auto& [print, file, line] :
         {std::tuple{&DPrintInfo, "name", "name(12) :I: message\n"},
          {&DPrintWarn, "dir\\name.cpp", "dir\\name.cpp(12) :W: message\n"},
          {&DPrintError, "name", "name(12) :E: message\n"},
          {&DPrintWarn, "", "message\n"},
          {&DPrintError, nullptr, "message\n"}}) {
        debugger.clear();
        EXPECT_EQ(print(file, 12, "message"), 0);
        EXPECT_EQ(debugger, line);
    }
}

TEST(SiteMessage, LayoutAndCuts) {
    const struct {
        const char *file, *severity, *message;
        int32_t size, built;
        const char* text;
    } rows[] = {
        {"name", "W: ", "message", 64, 1, "name(12) :W: message"},
        {"name", nullptr, "message", 64, 1, "name(12) :message"},
        {"name", "I: ", nullptr, 64, 1, "name(12) :I: "},
        {"name", "W: ", "message", 16, 1, "name(12) :W: me"},  // the message cut
        {"name", "W: ", "message", 12, 1, "name(12) :W"},      // the severity cut
        {"name", "W: ", "message", 11, 1, "name(12) :"},
        {"", "W: ", "m", 64, 0, ""},
        {nullptr, "W: ", "m", 64, 0, ""},
        {"name", nullptr, nullptr, 64, 0, ""},
        {"name", "W: ", "m", 1, 0, ""},
    };
    for (const auto& r : rows) {
        // Exactly `size` bytes, so that a store behind them is caught.
        std::unique_ptr<char[]> buffer(new char[r.size]());
        EXPECT_EQ(DBuildSiteMessage(r.file, 12, r.severity, r.message, buffer.get(), r.size),
                  r.built)
            << r.size;
        EXPECT_STREQ(buffer.get(), r.text) << r.size;
    }
    char none[4];
    EXPECT_EQ(DBuildSiteMessage("f", 1, "W: ", "m", nullptr, 4), 0);
    // A place that doesn't fit is a failure.
    EXPECT_EXIT(DBuildSiteMessage("name", 12, "W: ", "m", none, 4), ::testing::ExitedWithCode(1),
                "^Failure : \"severity\\.cpp\" line");
}

}  // namespace
