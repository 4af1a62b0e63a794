// Every complaint of the packager, as it would read with the debug print switched on: each
// failing run happens in a child with gDebugging set and DPrintf teed into an enabled
// LStrOutput, and the captured text is compared byte for byte. The real program, which never
// switches the print on, stays silent on the same command lines.
#include <gtest/gtest.h>

#include "mxsbutil/child_run.h"
#include "support/host_rules.h"

namespace {

const char kUsage[] =
    "# Usage - mxsbutil -c <code name> [<any of the following arguments>]\n"
    "\t-t <type>\tType of external code\n\t-d <directory>\tGive directory of the code\n"
    "\t-v <version>\tSet the MXSB version\n\t-r <resource file>\n\t-vi <vi>\r\n";

struct Row {
    std::vector<std::string> args;
    int status;
    std::string text;
};

void ExpectRows(const std::vector<Row>& rows, bool startMemory, const std::filesystem::path& dir) {
    for (const Row& r : rows) {
        std::string line;
        for (const auto& a : r.args) line += a + " ";
        const ChildRun c = RunInChild(r.args, "", true, startMemory);
        EXPECT_EQ(c.status, r.status) << line;
        EXPECT_EQ(c.text, r.text) << line;
        if (line.size() > CommandLineLimit()) continue;
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
    const std::string d = dir.path.string() + plat::DirectorySeparator();
    std::ofstream(dir.path / "foo.dll") << "code";
    std::ofstream(dir.path / "other.dll") << "more";
    std::ofstream(dir.path / "dir.dll") << "code";
    std::filesystem::create_directory(dir.path / "dir.msb");           // no file can replace it
    ASSERT_EQ(RunTool({"-c", "other", "-d", d}, dir.path).status, 0);  // a resource file
    std::string deep;  // more names than a path holds
    for (int i = 0; i < 33000; ++i) deep += std::string("a") + plat::DirectorySeparator();
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
    const std::string d = dir.path.string() + plat::DirectorySeparator();
    std::ofstream(dir.path / "foo.dll") << "code";
    const struct {
        const char* fault;
        int status;
        std::string text;
    } rows[] = {
        {"read", 0, "FMRead error 6\r\n"},
        {"seek", 0, "FMSeek error 6\r\n"},
        {"alloc:1", 1, "mxsbutil: not enough memory\n"},
        // A package that doesn't reach the disk fails the run.
        {"write:2", 2,
         "resource error 9 on RCloseFile\r\nmxsbutil: error building resource file: 9\r\n"},
        {"write:1", 2,
         "RCreateCorrectFile error 9\r\nmxsbutil: error building resource file: 9\r\n"},
    };
    for (const auto& r : rows) {
        const ChildRun c = RunInChild({"-c", "foo", "-d", d}, r.fault, true);
        EXPECT_EQ(c.status, r.status) << r.fault;
        EXPECT_EQ(c.text, r.text) << r.fault;
    }

    // Every allocation of a run fails in turn (a run makes fewer than kRunAllocations); among
    // the complaints are those of the module's block and of the tag's, and every run ends in
    // one of the tool's statuses.
    constexpr int64_t kRunAllocations = 60;
    bool sawModule = false, sawTag = false;
    for (int64_t failAt = 2; failAt <= kRunAllocations; ++failAt) {
        const ChildRun c =
            RunInChild({"-c", "foo", "-d", d}, "alloc:" + std::to_string(failAt), true);
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
