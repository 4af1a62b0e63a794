// Whole runs with the Nth allocation failing (-r runs) or the Nth write failing as on a full
// disk (new packages and -vi), for every N the run reaches: each must end with one of the
// tool's statuses, cleanly under the sanitizers, and leave its source or target as it was.
#include <gtest/gtest.h>

#include "mxsbutil/child_run.h"
#include "resource/file_builder.h"

namespace {

TEST(OutOfMemory, EveryFailingAllocationOfAnImportRun) {
    TempDir s;
    const std::string source = (s.path / "src.rsrc").string();
    WriteBytes(source, BuildFile({{"STR ", {{1, "one", Bytes(10, 1)}, {2, "", {}}}},
                                  {"ICON", {{5, "icon", Bytes(3000, 5)}}},
                                  {"DATA", {{-1, "d", Bytes(7, 9)}}}}));
    const std::string before = SlurpFile(source);
    std::ofstream(s.path / "foo.dll", std::ios::binary) << "MODULE";
    bool completed = false;
    for (int64_t n = 1; n <= 400 && !completed; ++n) {
        const ChildRun c = RunInChild({"-c", "foo", "-d", s.path.string(), "-r", source},
                                      "alloc:" + std::to_string(n));
        ASSERT_EQ(SlurpFile(source), before) << "N=" << n;
        // Keep going after a bad run, so that one report lists every allocation that fails.
        EXPECT_TRUE(c.status >= 0 && c.status <= 2)
            << "N=" << n << " status " << c.status << " (-1: no exit of its own; 98/99: sanitizer)";
        completed = !c.reached;
    }
    ASSERT_TRUE(completed) << "still failing allocations after 400";
    // The untouched run: the two own resources and the four imported ones, data included.
    EXPECT_GT(std::filesystem::file_size(s.path / "foo.msb"), before.size());
}

// A package that didn't reach the disk is a failed run (2), not an empty file with status 0;
// a -vi target that couldn't be rewritten keeps its old bytes.
TEST(FullDisk, EveryFailingWriteOfAPackageRun) {
    TempDir s;
    const std::string dir = s.path.string(), vi = (s.path / "t.vi").string();
    std::ofstream(s.path / "foo.dll", std::ios::binary) << "MODULE";
    ASSERT_EQ(RunInChild({"-c", "foo", "-d", dir}).status, 0);
    std::filesystem::rename(s.path / "foo.msb", vi);
    const std::string before = SlurpFile(vi);
    std::ofstream(s.path / "foo.dll", std::ios::binary) << "MODULE, VERSION 2";
    for (bool replacing : {false, true}) {
        bool completed = false;
        for (int64_t n = 1; n <= 50 && !completed; ++n) {
            std::vector<std::string> args = {"-c", "foo", "-d", dir};
            if (replacing) args.insert(args.end(), {"-vi", vi});
            const ChildRun c = RunInChild(args, "write:" + std::to_string(n));
            EXPECT_EQ(c.status, c.reached ? 2 : 0) << "N=" << n << " -vi " << replacing;
            completed = !c.reached;
            EXPECT_EQ(SlurpFile(vi) == before, !replacing || c.reached) << "N=" << n;
        }
        EXPECT_TRUE(completed);
    }
}

}  // namespace
