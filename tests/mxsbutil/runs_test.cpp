// Every complaint of the packager, as it would read with the debug print switched on: each
// failing run happens in a child with gDebugging set and DPrintf teed into an enabled
// LStrOutput, and the captured text is compared byte for byte. The real program, which never
// switches the print on, stays silent on the same command lines.
#include <gtest/gtest.h>

#include "mxsbutil/child_run.h"
#include "resource/file_builder.h"
#include "support/host_rules.h"

const char kUsage[] =
    "# Usage - mxsbutil -c <code name> [<any of the following arguments>]\n"
    "\t-t <type>\tType of external code\n\t-d <directory>\tGive directory of the code\n"
    "\t-v <version>\tSet the MXSB version\n\t-r <resource file>\n\t-vi <vi>\r\n";

// Each message as the print would give it, and the real program silent with the same status.
// Last, failures the real program can't be made to meet: a module read or seek that fails (the
// build goes on with what the block holds), allocations and writes that fail (a package that
// doesn't reach the disk fails the run).
TEST(Messages, EveryComplaint) {
    TempDir dir;
    const std::string d = dir.path.string() + plat::DirectorySeparator(), u = kUsage;
    for (const char* module : {"foo.dll", "other.dll", "dir.dll"})
        std::ofstream(dir.path / module) << "code";
    std::filesystem::create_directory(dir.path / "dir.msb");           // no file can replace it
    ASSERT_EQ(RunTool({"-c", "other", "-d", d}, dir.path).status, 0);  // a resource file
    std::string deep;  // more names than a path holds
    for (int i = 0; i < 33000; ++i) deep += std::string("a") + plat::DirectorySeparator();
    // The closing line of a failed build, and the line of a failed copy of resources.
    auto built = [](int e) {
        return "mxsbutil: error building resource file: " + std::to_string(e) + "\r\n";
    };
    const std::string adding = "error adding additional resources\r\n";
    const std::vector<std::string> run = {"-c", "foo", "-d", d};
    const struct {
        std::vector<std::string> args;
        int status;
        std::string text, fault = "";
    } rows[] = {
        {{"-c", "a", "b"}, 1, "multiple name arguments not allowed\r\n"},
        {{"b", "-c", "a", "-x"}, 1, "multiple name arguments not allowed\r\n"},
        {{"-c", "a", "-v", "12"}, 1, "version must be one digit\r\n"},
        {{"-c", "a", "-dir", "x"}, 1, "mxsbutil: \"-dir\" is not an option.\r\n" + u},
        {{}, 1, "mxsbutil: needs a -c [code name] option\r\n" + u},
        {{"-c", "a", "-t", "MXSB"},
         1,
         "mxsbutil: External subroutines are no longer supported\r\n" + u},
        {{"-c", "a", "-t", "foo", "-d"}, 1, "mxsbutil: has an unrecognized type 'foo '\r\n" + u},
        {{"-c", "a", "-d"}, 1, "mxsbutil - needs an -d [code directory] option\r\n" + u},
        {{"-c", "a", "-t"}, 1, "mxsbutil: \"-t\" needs a value.\r\n" + u},
        {{"-c", "none", "-d", d},
         2,
         "FMOpen error 7 on path " + d + "none.dll\r\nCouldn't get code resource\r\n" + built(1)},
        {{"-c", "foo", "-d", d + deep}, 2, "FTextToPath error: 1\r\n" + built(1)},
        {{"-c", "foo", "-d", d, "-vi", d + deep}, 1, "mxsbutil: FTextToPath error\r\n"},
        {{"-c", "foo", "-d", d, "-vi", d + "other.msb"},
         2,
         "VI must already have 'foo.msb' loaded in.\r\ncouldn't get resource named 'foo.msb' in VI "
         "'" +
             d + "other.msb'\r\n" + built(15)},
        {{"-c", "foo", "-d", d, "-r", d + "none.rsrc"},
         2,
         "ROpenFile error 7 on " + d + "none.rsrc (3)\r\n" + adding + built(7)},
        {{"-c", "foo", "-d", d, "-vi", d + "foo.dll"},
         2,
         "error 13 opening new code resource's resource file\r\n" + built(13)},
        {{"-c", "dir", "-d", d}, 2, "RCreateCorrectFile error 8\r\n" + built(8)},
        {{"-c", "foo", "-d", d, "-r", d + "other.msb"},
         2,
         "didn't add resource type PLAT, id 0, 'other'\r\nRSetAttrs error 15\r\n" + adding +
             built(15)},
        {run, 0, "FMRead error 6\r\n", "read"},
        {run, 0, "FMSeek error 6\r\n", "seek"},
        {run, 1, "mxsbutil: not enough memory\r\n", "alloc:1"},
        {run, 2, "resource error 9 on RCloseFile\r\n" + built(9), "write:2"},
        {run, 2, "RCreateCorrectFile error 9\r\n" + built(9), "write:1"}};
    for (const auto& r : rows) {
        const std::string line = r.fault + ": " + testing::PrintToString(r.args);
        const ChildRun c = RunInChild(r.args, r.fault, true);
        EXPECT_EQ(std::make_pair(c.status, c.text), std::make_pair(r.status, r.text)) << line;
        if (!r.fault.empty() || line.size() > CommandLineLimit()) continue;
        const ToolResult real = RunTool(r.args, dir.path);
        EXPECT_EQ(real.status, r.status) << line;
        EXPECT_EQ(real.out + real.err, "") << line;
    }

    // Every allocation of a run fails in turn (a run makes fewer than kRunAllocations); among
    // the complaints are those of the module's block and of the tag's, and every run ends in
    // one of the tool's statuses.
    constexpr int64_t kRunAllocations = 60;
    bool sawModule = false, sawTag = false;
    for (int64_t failAt = 2; failAt <= kRunAllocations; ++failAt) {
        const ChildRun c = RunInChild(run, "alloc:" + std::to_string(failAt), true);
        ASSERT_TRUE(c.status == 0 || c.status == 1 || c.status == 2) << failAt;
        sawModule |= c.text == "memory error\r\nCouldn't get code resource\r\n" + built(1);
        sawTag |= c.text == "memory error\r\n" + built(2);
        EXPECT_TRUE(failAt < kRunAllocations || (c.status == 0 && c.text.empty()))
            << "beyond the run, untouched: " << c.status << " " << c.text;
    }
    EXPECT_TRUE(sawModule && sawTag);
}

// Whole runs with the Nth allocation failing (-r runs) or the Nth write failing as on a full
// disk (new packages and -vi), for every N the run reaches: each must end with one of the
// tool's statuses, cleanly under the sanitizers, and leave its source or target as it was.
TEST(OutOfMemoryAndFullDisk, EveryFailingAllocationAndWrite) {
    TempDir s;
    const std::string source = (s.path / "src.rsrc").string();
    WriteBytes(source, BuildFile({{"STR ", {{1, "one", Bytes(10, 1)}, {2, "", {}}}},
                                  {"ICON", {{5, "icon", Bytes(3000, 5)}}},
                                  {"DATA", {{-1, "d", Bytes(7, 9)}}}}));
    const std::string before = SlurpFile(source);
    std::ofstream(s.path / "foo.dll", std::ios::binary) << "MODULE";
    bool completed = false, bailedOut = false;
    for (int64_t n = 1; n <= 400 && !completed; ++n) {
        const ChildRun c = RunInChild({"-c", "foo", "-d", s.path.string(), "-r", source},
                                      "alloc:" + std::to_string(n), true);
        ASSERT_EQ(SlurpFile(source), before) << "N=" << n;
        // Keep going after a bad run, so that one report lists every allocation that fails.
        EXPECT_TRUE(c.status >= 0 && c.status <= 2)
            << "N=" << n << " status " << c.status << " (-1: no exit of its own; 98/99: sanitizer)";
        // Memory that runs out opening the source once is a bailout, and the run ends well.
        bailedOut |= c.status == 0 && c.text.find(" (3)") != std::string::npos;
        completed = !c.reached;
    }
    ASSERT_TRUE(completed) << "still failing allocations after 400";
    EXPECT_TRUE(bailedOut);
    // The untouched run: the two own resources and the four imported ones, data included.
    EXPECT_GT(std::filesystem::file_size(s.path / "foo.msb"), before.size());

    // A package that didn't reach the disk is a failed run (2), not an empty file with status
    // 0; a -vi target that couldn't be rewritten keeps its old bytes, whether a new file was to
    // take its place or, where none can be made beside it, it is appended to and its header
    // written last.
    const std::string dir = s.path.string(), vi = (s.path / "t.vi").string();
    ASSERT_EQ(RunInChild({"-c", "foo", "-d", dir}).status, 0);
    std::filesystem::rename(s.path / "foo.msb", vi);
    const std::string old = SlurpFile(vi);
    std::ofstream(s.path / "foo.dll", std::ios::binary) << "MODULE, VERSION 2";
    const std::filesystem::path mgrsrc = ToolPath(MGRSRC_NAME);
    for (const std::string fault : {"", "write:", "inplace:"}) {
        const bool replacing = !fault.empty();
        std::ofstream(vi, std::ios::binary) << old;
        bool completed = false;
        for (int64_t n = 1; n <= 50 && !completed; ++n) {
            std::vector<std::string> args = {"-c", "foo", "-d", dir};
            if (replacing) args.insert(args.end(), {"-vi", vi});
            const ChildRun c = RunInChild(args, (replacing ? fault : "write:") + std::to_string(n));
            EXPECT_EQ(c.status, c.reached ? 2 : 0) << "N=" << n << " " << fault;
            completed = !c.reached;
            EXPECT_EQ(SlurpFile(vi) == old, !replacing || c.reached) << "N=" << n << fault;
        }
        EXPECT_TRUE(completed);
        if (!replacing) continue;
        // The run that got through left a VI that verify finds sound, with the new module; in
        // place it changed nothing before the old end but the header.
        EXPECT_EQ(RunProgram(mgrsrc, {"verify", vi}, s.path).status, 0);
        EXPECT_EQ(RunProgram(mgrsrc, {"extract", "-o", "-", vi, "MXSB", "foo"}, s.path).out,
                  "MODULE, VERSION 2");
        if (fault == "inplace:") {
            const std::string after = SlurpFile(vi);
            ASSERT_GT(after.size(), old.size());
            EXPECT_EQ(after.substr(32, old.size() - 32), old.substr(32));
        }
    }
}
