#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

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
std::filesystem::path DPrintfFile() {
    char name[4096];
    FApplicationName(name, sizeof name);
    return std::filesystem::path(name).parent_path() / "dprintf.txt";
}

constexpr const char* kInCopy = "MXSB_DPRINTF_COPY";

// A test that makes dprintf.txt runs again in a copy of this program in a directory of its
// own, so that the program's own directory need not be writable. True where the test has
// just checked the copy's run, false in the copy, which goes on with the test itself.
bool RanInACopy() {
    if (std::getenv(kInCopy) != nullptr) return false;
    TempDir dir;
    const std::filesystem::path copy = dir.path / ThisProgram().filename();
    std::filesystem::copy_file(ThisProgram(), copy);
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string filter = std::string("--gtest_filter=") + test->test_suite_name() + "." +
                               test->name(),
                      out = (dir.path / "out").string(), err = (dir.path / "err").string();
    const int64_t child = StartProgram(copy, {filter}, nullptr, out.c_str(), err.c_str(),
                                       (std::string(kInCopy) + "=1").c_str());
    EXPECT_EQ(child ? plat::WaitChild(child, 60000) : -1, 0) << SlurpFile(out) << SlurpFile(err);
    return true;
}

// Switched on, with no file unless a test asks, and the debugger channel collected.
class DebugPrintOn : public ::testing::Test {
  protected:
    void SetUp() override {
        gDebugging = 1;
        gDPrintfFileMode = 0;
        plat::CaptureDebuggerOutput(Collect, &debugger);
    }
    void TearDown() override {
        plat::CaptureDebuggerOutput(nullptr, nullptr);
        DebugExit();
        gDebugging = 0;
        gDPrintfFileMode = 1;
        std::filesystem::remove_all(DPrintfFile());
    }
    std::string debugger;
};

TEST_F(DebugPrintOn, SilentWhileSwitchedOff) {
    gDebugging = 0;
    gDPrintfFileMode = 1;
    std::filesystem::remove_all(DPrintfFile());
    const int32_t before = gDPrintfCount;
    EXPECT_EQ(DPrintf("x %d", 1), 0);
    EXPECT_STREQ(DSPrintf("x %d", 1), "");
    EXPECT_EQ(DPrintWarn("f", 1, "x"), 0);
    StopHere("x");
    EXPECT_EQ(debugger, "");
    DPrintfRaw("raw");  // looks at no switch, but makes no file either
    EXPECT_EQ(debugger, "raw\n");
    EXPECT_EQ(gDPrintfCount, before + 1);
    EXPECT_FALSE(std::filesystem::exists(DPrintfFile()));
}

TEST_F(DebugPrintOn, LinesAreCountedAndCutAt512) {
    const std::string longText(600, 'y');
    const int32_t before = gDPrintfCount;
    EXPECT_EQ(DPrintf("a%d%s", 1, "\\n"), before + 1);  // an argument's backslash stays
    EXPECT_EQ(DPrintf("%s", longText.c_str()), before + 2);
    EXPECT_EQ(DPrintfRaw(longText.c_str()), before + 3);
    EXPECT_EQ(StopHere("here"), 0);
    StopHere(nullptr);
    EXPECT_EQ(debugger, "a1\\n\n" + std::string(512, 'y') + "\n" + std::string(512, 'y') +
                            "\nStopHere: here\nStopHere: \n");
    EXPECT_STREQ(DSPrintf("%s", longText.c_str()), std::string(512, 'y').c_str());
    gDPrintfBusy = 1;  // as inside a DPrintf
    EXPECT_EQ(DPrintf("nested"), 0);
    EXPECT_STREQ(DSPrintf("nested"), "");
    gDPrintfBusy = 0;
    EXPECT_EQ(gDPrintfCount, before + 5);
}

TEST_F(DebugPrintOn, FileHasCrLfAndDebuggerLf) {
    if (RanInACopy()) return;
    std::filesystem::remove_all(DPrintfFile());
    for (int16_t mode : {1, 2}) {
        debugger.clear();
        gDPrintfFileMode = mode;
        DPrintf("a");
        DPrintf("b%d", 2);
        DPrintfRaw("raw");
        DPrintSeverity("", 0, "W: ", "bare");
        EXPECT_EQ(debugger, "a\nb2\nraw\nbare\n");
        if (mode == 2) {  // flushed line by line
            EXPECT_EQ(SlurpFile(DPrintfFile()), "a\r\nb2\r\nraw\r\nbare\r\n");
        }
        DebugExit();  // closes the file; the next line of a run makes it anew
        EXPECT_EQ(gDPrintfFileMode, 0);
        EXPECT_EQ(SlurpFile(DPrintfFile()), "a\r\nb2\r\nraw\r\nbare\r\n") << mode;
    }
}

// The complaint reaches the debugger only when the create was not reached from DPrintf, and
// either way no later line tries again.
TEST_F(DebugPrintOn, FileThatCannotBeCreated) {
    if (RanInACopy()) return;
    std::filesystem::remove_all(DPrintfFile());
    std::filesystem::create_directory(DPrintfFile());
    const int32_t before = gDPrintfCount;
    gDPrintfFileMode = 1;
    DPrintf("x");
    EXPECT_EQ(gDPrintfFileMode, 0);
    DPrintf("y");
    EXPECT_EQ(debugger, "x\ny\n");
    EXPECT_EQ(gDPrintfCount, before + 2);

    debugger.clear();
    gDPrintfFileMode = 1;
    DPrintfRaw("z");
    EXPECT_EQ(debugger, "z\n Can't create dprintf.txt\n");
    EXPECT_EQ(gDPrintfFileMode, 0);
    EXPECT_EQ(gDPrintfCount, before + 4);
    EXPECT_TRUE(std::filesystem::is_directory(DPrintfFile()));
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
    const struct {
        int32_t (*print)(const char*, int32_t, const char*);
        const char* file;
        const char* line;
    } rows[] = {
        {DPrintInfo, "name", "name(12) :I: message\n"},
        {DPrintWarn, "dir\\name.cpp", "dir\\name.cpp(12) :W: message\n"},
        {DPrintError, "name", "name(12) :E: message\n"},
        {DPrintWarn, "", "message\n"},
        {DPrintError, nullptr, "message\n"},
    };
    for (const auto& r : rows) {
        debugger.clear();
        EXPECT_EQ(r.print(r.file, 12, "message"), 0);
        EXPECT_EQ(debugger, r.line);
    }
}

TEST(SiteMessage, LayoutAndCuts) {
    const struct {
        const char* file;
        const char* severity;
        const char* message;
        int32_t size;
        int32_t built;
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
    EXPECT_EQ(DBuildSiteMessage("f", 1, "W: ", "m", none, 1), 0);
    // A place that doesn't fit is a failure.
    EXPECT_EXIT(DBuildSiteMessage("name", 12, "W: ", "m", none, 4), ::testing::ExitedWithCode(1),
                "^Failure : \"severity\\.cpp\" line");
}

}  // namespace

namespace {

// dprintf.txt beyond 1 MiB becomes dprintf.old.txt before the next line, which starts a new
// file. Where the rename fails (a directory holds the old name) each line goes to the end of
// the file as it is, also after others have written to it.
TEST_F(DebugPrintOn, FileBeyondTheBoundBecomesTheOldFile) {
    const std::filesystem::path file = DPrintfFile();
    const std::filesystem::path old = file.parent_path() / "dprintf.old.txt";
    const std::string full = "a\r\n" + std::string((1 << 20) - 2, 'f');  // 1 MiB and 1 byte
    for (const bool renamable : {true, false}) {
        std::filesystem::remove_all(old);
        if (!renamable) std::filesystem::create_directories(old / "kept");
        gDPrintfFileMode = 1;
        DPrintf("a");  // makes the file anew
        std::ofstream(file, std::ios::binary | std::ios::app) << full.substr(3);
        DPrintf("b");
        DPrintf("c");
        DebugExit();
        if (renamable) {
            EXPECT_TRUE(SlurpFile(old) == full);
            EXPECT_EQ(SlurpFile(file), "b\r\nc\r\n");
        } else {
            EXPECT_TRUE(SlurpFile(file) == full + "b\r\nc\r\n");
        }
    }
    std::filesystem::remove_all(old);
}

}  // namespace
