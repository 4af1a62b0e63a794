// The built tool's exit statuses for bad and good command lines, and its silence on errors.
#include <gtest/gtest.h>

#include <fstream>

#include "support/run_tool.h"

namespace {

TEST(CommandLineCli, ExitStatuses) {
    TempDir dir;
    std::ofstream(dir.path / "foo.dll", std::ios::binary) << "MODULE";
    const std::string d = dir.path.string() + "/";
    const struct {
        std::vector<std::string> args;
        int status;
    } rows[] = {
        {{}, 1},
        {{"-c", "foo", "bar"}, 1},
        {{"bar", "-c", "foo"}, 1},
        {{"-T", "DRVR", "-C", "foo", "-D", d}, 0},
        {{"-c", "foo", "-v", "12"}, 1},
        {{"-c", "foo", "-v", "7"}, 0},
        {{"-c", "foo", "-dir", d}, 1},
        {{"-c", "foo", "-vix", "x"}, 1},
        {{"-c", "foo", "-t", "MXSB"}, 1},
        {{"-c", "foo", "-t", "foo"}, 1},
        {{"-c", "foo", "-t", "'CIN"}, 0},
        {{"-c", "foo", "-d"}, 1},
        {{"-c", "foo", "-t"}, 1},
        {{"foo"}, 0},
    };
    for (const auto& r : rows) {
        std::string line;
        for (const auto& a : r.args) line += "[" + a + "] ";
        ToolResult res = RunTool(r.args, dir.path);
        EXPECT_EQ(res.status, r.status) << line;
        EXPECT_EQ(res.out, "") << line;
        if (r.status != 0) {
            EXPECT_EQ(res.err, "") << line;  // complaints stay silent
        }
    }
}

}  // namespace
