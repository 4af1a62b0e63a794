// Failure reports in child processes (death tests): the message on standard error, status 1,
// and a record appended to the failure log in the temporary directory, set here by the host's
// variable for it. The log is a text-mode stream: on a host whose text streams end lines with
// CR LF, the format engine's own CR LF comes out as CR CR LF there. Also the host stubs that
// print what a report and the packager print. Then the debug print: its switch, its file and
// its extra sink.
#include "mg/dbgtools.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <regex>

#include "mg/datetime.h"
#include "mg/filemgr.h"
#include "mg/host.h"
#include "mg/memory.h"
#include "mg/stringoutput.h"
#include "platform/childprocess.h"
#include "platform/faults.h"
#include "support/handles.h"
#include "support/host_rules.h"
#include "support/memory_env.h"
#include "support/run_tool.h"
#include "support/scoped_variable.h"

// A check of the date text: style 9 is no style.
static void FailInFormatDate() {
    SetApplicationName(nullptr);
    char buffer[128];
    FormatDate(0, 9, buffer);
}

// A check that fails in a function no program exports, called from another. The volatile
// reads behind the calls keep them from becoming tail calls.
[[gnu::noinline]] static int FailInStatic() {
    volatile int after = 1;
    FailInFormatDate();
    return after;
}

namespace {

TEST(SiteText, StripDirectoryAndSiteMessage) {
    // clang-format off
    const char* leaves[][2] = {{"leaf", "leaf"}, {"\\x", "x"}, {"dir\\", ""}, {"", ""},
        {"a/b/c.cpp", "a/b/c.cpp"}, {"mgsource\\resource\\writeback.cpp", "writeback.cpp"}};
    // clang-format on
    char buf[64];
    for (const auto& [in, out] : leaves) {
        DStripDirectory(strcpy(buf, in));
        EXPECT_STREQ(buf, out) << in;
    }
    // The message cut at 16, the severity at 12.
    // clang-format off
    const struct { const char *file, *severity, *message; int32_t size, built; const char* text; }
    rows[] = {
        {"name", "W: ", "message", 64, 1, "name(12) :W: message"}, {"", "W: ", "m", 64, 0, ""},
        {"name", nullptr, "message", 64, 1, "name(12) :message"}, {nullptr, "W: ", "m", 64, 0, ""},
        {"name", "I: ", nullptr, 64, 1, "name(12) :I: "}, {"name", nullptr, nullptr, 64, 0, ""},
        {"name", "W: ", "message", 16, 1, "name(12) :W: me"}, {"name", "W: ", "m", 1, 0, ""},
        {"name", "W: ", "message", 12, 1, "name(12) :W"},
        {"name", "W: ", "message", 11, 1, "name(12) :"}};
    // clang-format on
    for (const auto& r : rows) {
        // Exactly `size` bytes, so that a store behind them is caught.
        std::unique_ptr<char[]> buffer(new char[r.size]());
        const int32_t built =
            DBuildSiteMessage(r.file, 12, r.severity, r.message, buffer.get(), r.size);
        EXPECT_EQ(std::to_string(built) + buffer.get(), std::to_string(r.built) + r.text) << r.size;
    }
    char none[4];
    EXPECT_EQ(DBuildSiteMessage("f", 1, "W: ", "m", nullptr, 4), 0);
    // A place that doesn't fit is a failure.
    EXPECT_EXIT(DBuildSiteMessage("name", 12, "W: ", "m", none, 4), ::testing::ExitedWithCode(1),
                "^Failure : \"severity\\.cpp\" line");
}

// The test makes a directory and points the host's variable for the temporary directory at
// it. A death-test child that runs the test afresh (where the host can't fork) inherits the
// variable and writes its record there too, rather than make a directory of its own.
class FailureLog : public ::testing::Test {
  protected:
    FailureLog() {
        if (!testing::internal::InDeathTestChild()) made = std::make_unique<TempDir>();
        path = made ? made->path : std::filesystem::temp_directory_path();
        if (made) tmp = std::make_unique<ScopedVariable>(TempVariable(), path.string());
    }
    std::string Log() const { return SlurpFile(path / "Meridax_Failure_Log.txt"); }

    std::unique_ptr<TempDir> made;
    std::filesystem::path path;
    std::unique_ptr<ScopedVariable> tmp;
    // Line ends in the log: a real one, and the engine's CR LF.
    const std::string nl = TextLineEnd(), crlf = "\r" + TextLineEnd();
    const std::string advice =
        "For assistance in resolving this problem, please record the preceding information and "
        "navigate to https://support.meridax.example, or contact Meridax Technical Support.";
};

TEST_F(FailureLog, RecordsAsLaidOut) {
    EXPECT_EXIT(FailInFormatDate(), ::testing::ExitedWithCode(1),
                "^Failure : \"datetext\\.cpp\" line .*\r\n\r\nFor assistance");
    EXPECT_EXIT(FailInFormatDate(), ::testing::ExitedWithCode(1), "");
    const std::string log = Log();

    // Two records, each opened by two empty lines and ####, line by line as laid out.
    const std::regex record(
        crlf + crlf + "####" + crlf +
        "#Date: ([A-Z][a-z]{2}, [A-Z][a-z]{2} [0-9]{1,2}, [0-9]{4} [0-9]{1,2}:[0-9]{2}:[0-9]{2} "
        "[AP]M)" +
        crlf + "#Desc: Failure : \"datetext\\.cpp\" line [0-9]+" + crlf + crlf +
        "For assistance[^\r\n]*" + crlf + "#RCS: \\$Revision: 1 \\$" + crlf +
        "#OSName: ([^\r\n]*)" + crlf + "#OSVers: " + crlf + "#AppName: mxsbutil" + crlf +
        "#AppKind: FDS" + crlf + "((0x[0-9A-F]{8,} - [^\r\n]* \\+ [0-9A-F]+" + nl + "){1,15})");
    int records = 0;
    for (std::sregex_iterator it(log.begin(), log.end(), record), end; it != end; ++it) {
        ++records;
        const std::smatch& m = *it;
        // The date buffer read as a PStr: its first character is the count, not text.
        EXPECT_EQ(m[2].str(), m[1].str().substr(1));
        EXPECT_NE(m[3].str().find("FormatDate"), std::string::npos) << m[3];
    }
    EXPECT_EQ(records, 2) << log;
    EXPECT_EQ(log.rfind(crlf + crlf + "####" + crlf, 0), 0u);  // nothing before the first record
}

// The leaf of the path and the line; the detail after "Failure"; the error number; the
// message cut at 255 alike on the stream and in the log; the revision, or "unspecified".
TEST_F(FailureLog, ReportTextsAndRevisions) {
    const std::string detail(300, 'd'), cut = "Failure " + std::string(247, 'd');
    // clang-format off
    const struct { std::function<void()> report; std::string message, revision; } rows[] = {
        {[] { DReportFailure("mgsource\\memory\\handles.cpp", 120, nullptr, "$Revision: 1 $"); },
         "Failure : \"handles.cpp\" line 120\r\n\r\n" + advice, "$Revision: 1 $"},
        {[] { DReportError("x\\leaf", 7, 3, nullptr, "rev"); },
         "Error #3:  \"leaf\" line 7\r\n\r\n" + advice, "rev"},
        {[] { DFailure("a/b/c", 9, "detail"); },
         "Failure detail: \"a/b/c\" line 9\r\n\r\n" + advice, "$Revision: 1 $"},
        {[&] { DReportFailure("x\\leaf", 5, detail.c_str(), nullptr); }, cut, "unspecified"}};
    // clang-format on
    for (const auto& r : rows) {
        std::filesystem::remove(path / "Meridax_Failure_Log.txt");
        EXPECT_EXIT(r.report(), ::testing::ExitedWithCode(1),
                    "^" + std::regex_replace(r.message, std::regex("[.$()]"), "\\$&") + "\n$");
        const std::string logged = std::regex_replace(r.message, std::regex("\r\n"), crlf);
        EXPECT_NE(Log().find("#Desc: " + logged + crlf + "#RCS: " + r.revision + crlf),
                  std::string::npos)
            << Log();
    }
}

// Error 0 reports nothing; without a file the record goes to the debug print, which is
// silent while switched off.
TEST_F(FailureLog, ErrorZeroSilenceAndOwnFormats) {
    std::filesystem::remove(path / "Meridax_Failure_Log.txt");
    testing::internal::CaptureStderr();
    EXPECT_EQ(DReportError("x\\leaf", 5, 0, "detail", "rev"), 0);
    DWriteFailureLog(reinterpret_cast<const uint8_t*>("\003abc"), nullptr, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(std::filesystem::exists(path / "Meridax_Failure_Log.txt"));
    // Four unread bytes, then the error format and the failure format, as PStrs.
    const std::string block = std::string("????") + "\x0b" + "E%ld %s %s!" + "\x0a" + "F%s %s %ld";
    Handle h = MemNewHandle(static_cast<int32_t>(block.size()));
    memcpy(*h, block.data(), block.size());
    EXPECT_EXIT((DSetFailureFormats(h), DReportFailure("d\\leaf", 5, "x", nullptr)),
                ::testing::ExitedWithCode(1), "^Fx leaf 5\n$");
    EXPECT_EXIT((DSetFailureFormats(h), DReportError("d\\leaf", 5, 4, "x", nullptr)),
                ::testing::ExitedWithCode(1), "^E4 x leaf!\n$");
    MemDisposeHandle(h);
}

// A report empties the record of a failed allocation first; the record's own checks are
// failures.
TEST_F(FailureLog, OutOfMemoryRecordFirst) {
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

// With no usable directory for the log (the temporary directory's path too long) or no sink
// to write it, the record is lost and the process still ends with the report. The child alone
// takes the unusable directory, and works in one of the test's (a name that the long
// directory can't take is taken as it stands), as the framework keeps its files in the
// parent's.
TEST_F(FailureLog, LostWithoutADirectoryOrSink) {
    const std::string longDir = (path / std::string(140, 'n') / std::string(140, 'n')).string();
    std::error_code ignored;  // a host may refuse so long a name; the log's name is too long anyway
    std::filesystem::create_directories(longDir, ignored);
    std::filesystem::create_directory(path / "cwd");
    for (const auto& [tmpDir, failNew] :
         {std::pair<std::string, int64_t>{longDir, 0}, {path.string(), 2}}) {
        EXPECT_EXIT(
            (std::filesystem::current_path(path / "cwd"),
             plat::SetVariable(TempVariable(), tmpDir.c_str()), plat::FailGlobalNewAt(failNew),
             DReportFailure("d\\leaf", 3, nullptr, nullptr)),
            ::testing::ExitedWithCode(1), "^Failure : \"leaf\" line 3\r\n");
        EXPECT_FALSE(std::filesystem::exists(tmpDir + "/Meridax_Failure_Log.txt"));
    }
}

// A log beyond 1 MiB becomes the old log, replacing an older one, and the record starts a new
// log. Where the rename fails (a directory holds the old log's name) the record goes to the
// end of the log as it is.
TEST_F(FailureLog, BoundedToTwoFiles) {
    const std::filesystem::path logFile = path / "Meridax_Failure_Log.txt",
                                old = path / "Meridax_Failure_Log.old.txt";
    const std::string big(5 << 20, 'x');
    for (const bool renamable : {true, false}) {
        std::ofstream(logFile, std::ios::binary) << big;
        if (renamable)
            std::ofstream(old, std::ios::binary) << "older";
        else
            std::filesystem::create_directories(old / "kept");
        EXPECT_EXIT(DReportFailure("x\\leaf", 3, nullptr, nullptr), testing::ExitedWithCode(1), "");
        const std::string log = Log(), record = renamable ? log : log.substr(big.size());
        // One record, opened as records are.
        EXPECT_TRUE(record.rfind(crlf + crlf + "####" + crlf, 0) == 0 &&
                    record.find("####", record.find("####") + 4) == record.npos &&
                    (renamable ? SlurpFile(old) : log.substr(0, big.size())) == big)
            << renamable;
        std::filesystem::remove_all(old);
    }
}

[[gnu::noinline]] int CallsStatic() {
    volatile int after = 1;
    const int r = FailInStatic();
    return r + after;
}

TEST_F(FailureLog, StackLinesNameFunctionsThatAreNotExported) {
    if (!plat::NamesInternalFunctions()) GTEST_SKIP() << "this build names exported functions only";
    EXPECT_EXIT(CallsStatic(), ::testing::ExitedWithCode(1), "");
    const std::string log = Log();
    const size_t inner = log.find(" - test_dbgtools FailInStatic"),
                 outer = log.find(" - test_dbgtools " + InAnonymousNamespace("CallsStatic"));
    EXPECT_TRUE(inner < outer && outer != std::string::npos) << log;
}

TEST(HostStubs, PrintWriteAndConfig) {
    const int32_t before = gHostPrintCount;
    testing::internal::CaptureStderr();
    // The engine's own line end; a busy flag as if called from within the formatting.
    EXPECT_EQ(std::vector<int32_t>({HostPrintf("plain"), HostPrintf("%d\\n%s", 42, "x"),
                                    HostPrintf("%s", std::string(600, 'x').c_str()),
                                    (gHostPrintBusy = 1, HostPrintf("unseen"))}),
              std::vector<int32_t>({before + 1, before + 2, before + 3, before + 3}));
    gHostPrintBusy = 0;
    HostWritePStr(reinterpret_cast<const uint8_t*>(""), 0);
    HostWritePStr(reinterpret_cast<const uint8_t*>("\003abc"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "plain\n42\r\nx\n" + std::string(512, 'x') + "\n\nabc\n");
    int32_t value = 42;
    char name[4096];
    EXPECT_TRUE(HostConfigRead(0, "useLocaleDecimalPt", &value) == 20 && value == 42);
    EXPECT_GT(HostGetModuleFileName(nullptr, name, sizeof name), 0);
}

// dprintf.txt lies beside the program: this suite's is the only one that writes it.
const std::filesystem::path kFile = ThisProgram().parent_path() / "dprintf.txt";

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
        std::filesystem::remove_all(kFile);
        gDebugging = 1;
        gDPrintfFileMode = 0;
        plat::CaptureDebuggerOutput(
            [](const char* text, void* to) { *static_cast<std::string*>(to) += text; }, &debugger);
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
TEST_F(DebugPrintOn, SwitchCountsCutsAndTheFile) {
    gDebugging = 0;
    gDPrintfFileMode = 1;
    const int32_t before = gDPrintfCount;
    EXPECT_EQ(std::make_tuple(DPrintf("x %d", 1), std::string(DSPrintf("x %d", 1)),
                              DPrintWarn("f", 1, "x"), StopHere("x"), DPrintfRaw("raw")),
              std::make_tuple(0, "", 0, 0, before + 1));
    EXPECT_FALSE(std::filesystem::exists(kFile));
    gDebugging = 1;
    gDPrintfFileMode = 0;
    const std::string longText(600, 'y'), cut(512, 'y');
    // An argument's backslash stays.
    EXPECT_EQ(std::vector<int32_t>({DPrintf("a%d%s", 1, "\\n"), DPrintf("%s", longText.c_str()),
                                    DPrintfRaw(longText.c_str()), StopHere("here")}),
              std::vector<int32_t>({before + 2, before + 3, before + 4, 0}));
    StopHere(nullptr);
    EXPECT_EQ(debugger, "raw\na1\\n\n" + cut + "\n" + cut + "\nStopHere: here\nStopHere: \n");
    EXPECT_EQ(DSPrintf("%s", longText.c_str()), cut);
    gDPrintfBusy = 1;  // as inside a DPrintf
    EXPECT_EQ(std::make_pair(DPrintf("nested"), std::string(DSPrintf("nested"))),
              std::make_pair(0, std::string()));
    gDPrintfBusy = 0;
    EXPECT_EQ(gDPrintfCount, before + 6);
    // The file has CR LF where the debugger has LF, flushed line by line in mode 2; closed at the
    // exit, made anew by the next line of a run. One that can't be made is complained about only
    // when the create was not reached from DPrintf, and either way no later line tries again.
    if (RanInACopy()) return;
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
    const int32_t count = gDPrintfCount;
    for (bool raw : {false, true}) {
        debugger.clear();
        gDPrintfFileMode = 1;
        raw ? DPrintfRaw("z") : DPrintf("x");
        EXPECT_EQ(gDPrintfFileMode, 0);
        DPrintf("y");
        EXPECT_EQ(debugger, raw ? "z\n Can't create dprintf.txt\ny\n" : "x\ny\n");
    }
    EXPECT_TRUE(gDPrintfCount == count + 5 && std::filesystem::is_directory(kFile));
    std::filesystem::remove_all(kFile);
    // dprintf.txt beyond 1 MiB becomes dprintf.old.txt count the next line, which starts a new
    // file. Where the rename fails (a directory holds the old name) each line goes to the end of
    // the file as it is, also after others have written to it.
    const std::filesystem::path old = kFile.parent_path() / "dprintf.old.txt";
    const std::string full = "a\r\n" + std::string((1 << 20) - 2, 'f');  // 1 MiB and 1 byte
    for (const bool renamable : {true, false}) {
        std::filesystem::remove_all(old);
        if (!renamable) std::filesystem::create_directories(old / "kept");
        gDPrintfFileMode = 1;
        DPrintf("a");  // makes the file anew
        std::ofstream(kFile, std::ios::binary | std::ios::app) << full.substr(3);
        DPrintf("b");
        DPrintf("c");
        DebugExit();
        EXPECT_TRUE(SlurpFile(renamable ? old : kFile) == full + (renamable ? "" : "b\r\nc\r\n"));
        EXPECT_EQ(renamable ? SlurpFile(kFile) : "b\r\nc\r\n", "b\r\nc\r\n");
    }
    std::filesystem::remove_all(old);
}

TEST_F(DebugPrintOn, SeverityFormsAndTheExtraSink) {
    // A braced list calls them in order.
    EXPECT_EQ(std::vector<int32_t>(
                  {DPrintInfo("name", 12, "message"), DPrintWarn("dir\\name.cpp", 12, "message"),
                   DPrintError("name", 12, "message"), DPrintWarn("", 12, "message"),
                   DPrintError(nullptr, 12, "message")}),
              std::vector<int32_t>(5, 0));
    EXPECT_EQ(debugger,
              "name(12) :I: message\ndir\\name.cpp(12) :W: message\nname(12) :E: message\n"
              "message\nmessage\n");
    DebugInit();  // the host has no setting: the switch stays, the sink starts disabled
    ASSERT_TRUE(gDebugging == 1 && gDebugOutput != nullptr);
    LStrOutput* sink = static_cast<LStrOutput*>(gDebugOutput);
    DPrintf("dropped");
    sink->SetEnabled(1);
    DPrintf("a%ld", 7);
    DPrintf("%s", std::string(600, 'z').c_str());  // the sink has no limit of its own
    EXPECT_EQ(mgtest::LText(*sink->Text()), "a7\r\n" + std::string(600, 'z') + "\r\n");
    DebugExit();
    EXPECT_EQ(gDebugOutput, nullptr);
}

}  // namespace
