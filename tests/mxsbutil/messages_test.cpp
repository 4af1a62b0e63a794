// Every complaint of the packager, as it would read with the debug print switched on: each
// failing run happens in a child with gDebugging set and DPrintf teed into an enabled
// LStrOutput, and the captured text is compared byte for byte. The real program, which never
// switches the print on, stays silent on the same command lines.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "memory/zone.h"
#include "mg/dbgtools.h"
#include "mg/stringoutput.h"
#include "mxsbutil/options.h"
#include "platform/faults.h"
#include "support/run_tool.h"

namespace {

const char kUsage[] =
    "# Usage - mxsbutil -c <code name> [<any of the following arguments>]\n"
    "\t-t <type>\tType of external code\n\t-d <directory>\tGive directory of the code\n"
    "\t-v <version>\tSet the MXSB version\n\t-r <resource file>\n\t-vi <vi>\r\n";

// The run starts the memory manager itself, so the LStrOutput is made once a zone is there.
class LateLStrOutput : public StringOutput {
  public:
    int32_t Printf(const char* format, ...) override {
        va_list args;
        va_start(args, format);
        const int32_t n = VPrintf(format, args);
        va_end(args);
        return n;
    }
    int32_t VPrintf(const char* format, va_list args) override {
        if (!inner && mgmem::gMemStarted) {
            inner = std::make_unique<LStrOutput>();
            inner->SetEnabled(1);
        }
        return inner ? inner->VPrintf(format, args) : 0;
    }
    std::string Text() const {
        if (!inner) return "";
        const LStr* l = *inner->Text();
        return std::string(reinterpret_cast<const char*>(l->text), l->count);
    }

  private:
    std::unique_ptr<LStrOutput> inner;
};

struct Captured {
    int status = -1;
    std::string text;
};

void DebuggerText(const char* text, void* context) {
    *static_cast<std::string*>(context) += text;
}

// Runs the packager with `args` in a child, the memory manager started first when
// `startMemory` (a command line that fails never starts it), and `arm` run just before.
// The text is the LStrOutput's, or the debugger channel's when no zone ever came.
Captured RunCaptured(std::vector<std::string> args, bool startMemory, void (*arm)() = nullptr) {
    int fds[2];
    if (pipe(fds) != 0) return {};
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        int null = open("/dev/null", O_WRONLY);
        dup2(null, 2);
        if (startMemory) InitMemoryManager();
        gDebugging = 1;
        gDPrintfFileMode = 0;
        auto* sink = new LateLStrOutput;
        gDebugOutput = sink;
        std::string debugger;
        plat::CaptureDebuggerOutput(DebuggerText, &debugger);
        args.insert(args.begin(), "mxsbutil");
        std::vector<char*> argv;
        for (auto& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        if (arm) arm();
        const int status = ParseArguments(static_cast<int>(args.size()), argv.data());
        plat::CaptureDebuggerOutput(nullptr, nullptr);
        std::string text = mgmem::gMemStarted ? sink->Text() : debugger;
        if (write(fds[1], text.data(), text.size()) < 0) _exit(100);
        _exit(status);
    }
    close(fds[1]);
    Captured c;
    char buffer[4096];
    for (ssize_t n; (n = read(fds[0], buffer, sizeof buffer)) > 0;) c.text.append(buffer, n);
    close(fds[0]);
    int wstatus = 0;
    waitpid(pid, &wstatus, 0);
    c.status = WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : -1;
    return c;
}

struct Row {
    std::vector<std::string> args;
    int status;
    std::string text;
};

void ExpectRows(const std::vector<Row>& rows, bool startMemory, const std::filesystem::path& dir) {
    for (const Row& r : rows) {
        std::string line;
        for (const auto& a : r.args) line += a + " ";
        const Captured c = RunCaptured(r.args, startMemory);
        EXPECT_EQ(c.status, r.status) << line;
        EXPECT_EQ(c.text, r.text) << line;
        const ToolResult real = RunTool(r.args, dir);
        EXPECT_EQ(real.status, r.status) << line;
        EXPECT_EQ(real.out + real.err, "") << line;
    }
}

TEST(Messages, CommandLine) {
    TempDir dir;
    const std::string u = kUsage;
    ExpectRows(
        {
            {{"-c", "a", "b"}, 1, "multiple name arguments not allowed\r\n"},
            {{"b", "-c", "a", "-x"}, 1, "multiple name arguments not allowed\r\n"},
            {{"-c", "a", "-v", "12"}, 1, "version must be one digit\r\n"},
            {{"-c", "a", "-dir", "x"}, 1, "mxsbutil: \"-dir\" is not an option.\r\n" + u},
            {{}, 1, "mxsbutil: needs a -c [code name] option\r\n" + u},
            {{"-c", "a", "-t", "MXSB"},
             1,
             "mxsbutil: External subroutines are no longer supported\r\n" + u},
            {{"-c", "a", "-t", "foo", "-d"},
             1,
             "mxsbutil: has an unrecognized type 'foo '\r\n" + u},
            {{"-c", "a", "-d"}, 1, "mxsbutil - needs an -d [code directory] option\r\n" + u},
            {{"-c", "a", "-t"}, 1, "mxsbutil: \"-t\" needs a value.\r\n" + u},
        },
        true, dir.path);
}

TEST(Messages, PackageRun) {
    TempDir dir;
    const std::string d = dir.path.string() + "/";
    std::ofstream(dir.path / "foo.dll") << "code";
    std::ofstream(dir.path / "other.dll") << "more";
    std::ofstream(dir.path / "dir.dll") << "code";
    std::filesystem::create_directory(dir.path / "dir.msb");           // no file can replace it
    ASSERT_EQ(RunTool({"-c", "other", "-d", d}, dir.path).status, 0);  // a resource file
    std::string deep;  // more names than a path holds
    for (int i = 0; i < 33000; ++i) deep += "a/";
    ExpectRows(
        {
            {{"-c", "none", "-d", d},
             2,
             "FMOpen error 7 on path " + d +
                 "none.dll\r\nCouldn't get code resource\r\n"
                 "mxsbutil: error building resource file: 1\r\n"},
            {{"-c", "foo", "-d", d + deep},
             2,
             "FTextToPath error: 1\r\nmxsbutil: error building resource file: 1\r\n"},
            {{"-c", "foo", "-d", d, "-vi", d + deep}, 1, "mxsbutil: FTextToPath error\r\n"},
            {{"-c", "foo", "-d", d, "-vi", d + "other.msb"},
             2,
             "VI must already have 'foo.msb' loaded in.\r\n"
             "couldn't get resource named 'foo.msb' in VI '" +
                 d +
                 "other.msb'\r\n"
                 "mxsbutil: error building resource file: 15\r\n"},
            {{"-c", "foo", "-d", d, "-r", d + "none.rsrc"},
             2,
             "ROpenFile error 7 on " + d +
                 "none.rsrc (3)\r\n"
                 "error adding additional resources\r\n"
                 "mxsbutil: error building resource file: 7\r\n"},
            {{"-c", "foo", "-d", d, "-vi", d + "foo.dll"},
             2,
             "error 13 opening new code resource's resource file\r\n"
             "mxsbutil: error building resource file: 13\r\n"},
            {{"-c", "dir", "-d", d},
             2,
             "RCreateCorrectFile error 8\r\nmxsbutil: error building resource file: 8\r\n"},
            {{"-c", "foo", "-d", d, "-r", d + "other.msb"},
             2,
             "didn't add resource type PLAT, id 0, 'other'\r\nRSetAttrs error 15\r\n"
             "error adding additional resources\r\n"
             "mxsbutil: error building resource file: 15\r\n"},
        },
        false, dir.path);
}

// Failures the real program can't be made to meet: a module read or seek that fails (the
// build goes on with what the block holds), and allocations that fail.
TEST(Messages, InjectedFaults) {
    TempDir dir;
    const std::string d = dir.path.string() + "/";
    std::ofstream(dir.path / "foo.dll") << "code";
    const struct {
        void (*arm)();
        int status;
        std::string text;
    } rows[] = {
        {[] { plat::FailFileOpAt(plat::kFileRead, 1, 6); }, 0, "FMRead error 6\r\n"},
        {[] { plat::FailFileOpAt(plat::kFileSeek, 1, 6); }, 0, "FMSeek error 6\r\n"},
        {[] { plat::FailAllocationAt(1); }, 1, "mxsbutil: not enough memory\n"},
        // A package that doesn't reach the disk fails the run.
        {[] { plat::FailFileOpAt(plat::kFileWrite, 2, 9); }, 2,
         "resource error 9 on RCloseFile\r\nmxsbutil: error building resource file: 9\r\n"},
        {[] { plat::FailFileOpAt(plat::kFileWrite, 1, 9); }, 2,
         "RCreateCorrectFile error 9\r\nmxsbutil: error building resource file: 9\r\n"},
    };
    for (const auto& r : rows) {
        const Captured c = RunCaptured({"-c", "foo", "-d", d}, false, r.arm);
        EXPECT_EQ(c.status, r.status);
        EXPECT_EQ(c.text, r.text);
    }

    // Every allocation of a run fails in turn (a run makes fewer than kRunAllocations); among
    // the complaints are those of the module's block and of the tag's, and every run ends in
    // one of the tool's statuses.
    constexpr int64_t kRunAllocations = 60;
    static int64_t failAt;
    bool sawModule = false, sawTag = false;
    for (failAt = 2; failAt <= kRunAllocations; ++failAt) {
        const Captured c =
            RunCaptured({"-c", "foo", "-d", d}, false, [] { plat::FailAllocationAt(failAt); });
        ASSERT_TRUE(c.status == 0 || c.status == 1 || c.status == 2) << failAt;
        sawModule |= c.text ==
                     "memory error\r\nCouldn't get code resource\r\n"
                     "mxsbutil: error building resource file: 1\r\n";
        sawTag |= c.text == "memory error\r\nmxsbutil: error building resource file: 2\r\n";
        if (failAt == kRunAllocations) {  // beyond the run: untouched
            EXPECT_EQ(c.status, 0);
            EXPECT_EQ(c.text, "");
        }
    }
    EXPECT_TRUE(sawModule);
    EXPECT_TRUE(sawTag);
}

}  // namespace
