// Real internal checks failing in child processes: the message on standard error, status 1,
// and a record appended to the failure log in the temporary directory (set here by the host's
// variable for it). The log is a text-mode stream: on a host whose text streams end lines with
// CR LF, the format engine's own CR LF comes out as CR CR LF there.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <regex>
#include <string>

#include "mg/datetime.h"
#include "mg/dbgtools.h"
#include "mg/pstring.h"
#include "platform/childprocess.h"
#include "platform/faults.h"
#include "support/host_rules.h"
#include "support/memory_env.h"
#include "support/run_tool.h"
#include "support/scoped_variable.h"

namespace {

// The advice behind a report, after its two line ends `eol`.
std::string Advice(const std::string& eol) {
    return eol + eol +
           "For assistance in resolving this problem, please record the preceding information "
           "and navigate to https://support.meridax.example, or contact Meridax Technical "
           "Support.";
}

// The test makes a directory and points the host's variable for the temporary directory at
// it. A death-test child that runs the test afresh (where the host can't fork) inherits the
// variable and writes its record there too, rather than make a directory of its own.
class FailureLog : public ::testing::Test {
  protected:
    FailureLog() {
        if (testing::internal::InDeathTestChild()) {
            path = std::filesystem::temp_directory_path();
            return;
        }
        made = std::make_unique<TempDir>();
        path = made->path;
        tmp = std::make_unique<ScopedVariable>(TempVariable(), path.string());
    }
    std::string Log() const { return SlurpFile(path / "Meridax_Failure_Log.txt"); }

    std::unique_ptr<TempDir> made;
    std::filesystem::path path;
    std::unique_ptr<ScopedVariable> tmp;
    // Line ends in the log: a real one, and the engine's CR LF.
    const std::string nl = TextLineEnd(), crlf = "\r" + TextLineEnd();
};

// A check of the date text: style 9 is no style.
void FailInFormatDate() {
    SetApplicationName(nullptr);
    char buffer[128];
    FormatDate(0, 9, buffer);
}

TEST_F(FailureLog, EachFailureAppendsOneRecord) {
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

TEST_F(FailureLog, MessageCutAt255IsTheSameInBoth) {
    const std::string detail(300, 'd');
    const std::string cut = "Failure " + std::string(247, 'd');
    EXPECT_EXIT(DReportFailure("x\\leaf", 5, detail.c_str(), nullptr), ::testing::ExitedWithCode(1),
                "^" + cut + "\n$");
    const std::string log = Log();
    EXPECT_NE(log.find("#Desc: " + cut + crlf + "#RCS: unspecified" + crlf), std::string::npos)
        << log;
}

TEST_F(FailureLog, ErrorReportAndRecordThroughDPrintf) {
    EXPECT_EXIT(DReportError("x\\leaf", 7, 3, nullptr, "rev"), ::testing::ExitedWithCode(1),
                std::string("^Error #3:  \"leaf\" line 7\r\n"));
    EXPECT_NE(Log().find(std::string("#Desc: Error #3:  \"leaf\" line 7") + Advice(crlf) + crlf +
                         "#RCS: rev" + crlf),
              std::string::npos);

    // Error 0 reports nothing; without a file the record goes to the debug print, which is
    // silent while switched off.
    std::filesystem::remove(path / "Meridax_Failure_Log.txt");
    testing::internal::CaptureStderr();
    EXPECT_EQ(DReportError("x\\leaf", 5, 0, "detail", "rev"), 0);
    const uint8_t message[] =
        "\x03"
        "abc";
    DWriteFailureLog(message, nullptr, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(std::filesystem::exists(path / "Meridax_Failure_Log.txt"));
}

// With no name for the log (the temporary directory's path too long) or no sink to write
// it, the record is lost and the process still ends with the report. The child alone takes
// the unusable directory: the test framework keeps its own files in the parent's.
TEST_F(FailureLog, NoNameOrNoSinkStillExits) {
    const std::string longDir = (path / std::string(140, 'n') / std::string(140, 'n')).string();
    std::error_code ignored;  // a host may refuse so long a name; the log's name is too long anyway
    std::filesystem::create_directories(longDir, ignored);
    const std::string shortDir = path.string();
    const struct {
        const char* tmp;
        int64_t failNew;
    } rows[] = {{longDir.c_str(), 0}, {shortDir.c_str(), 2}};
    for (const auto& r : rows) {
        EXPECT_EXIT((plat::SetVariable(TempVariable(), r.tmp), plat::FailGlobalNewAt(r.failNew),
                     DReportFailure("d\\leaf", 3, nullptr, nullptr)),
                    ::testing::ExitedWithCode(1), "^Failure : \"leaf\" line 3\r\n");
        EXPECT_FALSE(std::filesystem::exists(std::string(r.tmp) + "/Meridax_Failure_Log.txt"));
    }
}

}  // namespace

// A check that fails in a function no program exports, called from another. The volatile
// reads behind the calls keep them from becoming tail calls.
[[gnu::noinline]] static int FailInStatic() {
    volatile int after = 1;
    FailInFormatDate();
    return after;
}

namespace {

[[gnu::noinline]] int CallsStatic() {
    volatile int after = 1;
    const int r = FailInStatic();
    return r + after;
}

TEST_F(FailureLog, StackLinesNameFunctionsThatAreNotExported) {
    if (!plat::NamesInternalFunctions())
        GTEST_SKIP() << "this build names exported functions alone";
    EXPECT_EXIT(CallsStatic(), ::testing::ExitedWithCode(1), "");
    const std::string log = Log();
    const size_t inner = log.find(" - test_dbgtools FailInStatic");
    const size_t outer = log.find(" - test_dbgtools " + InAnonymousNamespace("CallsStatic"));
    EXPECT_NE(outer, std::string::npos) << log;
    EXPECT_LT(inner, outer);
}

// A log beyond 1 MiB becomes the old log, replacing an older one, and the record starts a new
// log. Where the rename fails (a directory holds the old log's name) the record goes to the
// end of the log as it is.
TEST_F(FailureLog, LogBeyondTheBoundBecomesTheOldLog) {
    const std::filesystem::path log = path / "Meridax_Failure_Log.txt";
    const std::filesystem::path old = path / "Meridax_Failure_Log.old.txt";
    const std::string big(5 << 20, 'x');
    for (const bool renamable : {true, false}) {
        std::ofstream(log, std::ios::binary) << big;
        if (renamable)
            std::ofstream(old, std::ios::binary) << "older";
        else
            std::filesystem::create_directories(old / "kept");
        EXPECT_EXIT(DReportFailure("x\\leaf", 3, nullptr, nullptr), ::testing::ExitedWithCode(1),
                    "");
        const std::string written = Log();
        const std::string record = renamable ? written : written.substr(big.size());
        EXPECT_EQ(record.rfind(crlf + crlf + "####" + crlf, 0), 0u) << renamable;
        // One record, opened as records are.
        EXPECT_EQ(record.find("####", record.find("####") + 4), record.npos) << renamable;
        EXPECT_TRUE((renamable ? SlurpFile(old) : written.substr(0, big.size())) == big)
            << renamable;
        std::filesystem::remove_all(old);
    }
}

}  // namespace
