// Inputs the format can't take or that aren't files: a module too long for the format's 32-bit
// words, and a module, -r or -vi file that is a directory. Each run ends with 2 and writes no
// package; mgrsrc says what the file is. The POSIX hosts' pipes and devices are in posix/.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/run_tool.h"

namespace {

namespace fs = std::filesystem;

// Sparse files: their length costs no disk.
TEST(InputsCli, ModulesTooLongForTheFormat) {
    for (uintmax_t size : {(uintmax_t{4} << 30) + 61, uintmax_t{2} << 30}) {
        TempDir dir;
        std::ofstream(dir.path / "big.dll").close();
        fs::resize_file(dir.path / "big.dll", size);
        EXPECT_EQ(RunTool({"big", "-d", dir.path.string()}, dir.path).status, 2) << size;
        EXPECT_FALSE(fs::exists(dir.path / "big.msb")) << size;
    }
}

TEST(InputsCli, DirectoriesAreNoFiles) {
    TempDir dir;
    std::ofstream(dir.path / "foo.dll") << "HELLO";
    fs::create_directory(dir.path / "d.dll");
    const std::string d = (dir.path / "d.dll").string();
    for (const auto& args : {std::vector<std::string>{"d", "-d", dir.path.string()},
                             {"foo", "-d", dir.path.string(), "-r", d},
                             {"foo", "-d", dir.path.string(), "-vi", d}}) {
        EXPECT_EQ(RunTool(args, dir.path).status, 2) << args.back();
    }
    EXPECT_FALSE(fs::exists(dir.path / "d.msb"));
    const ToolResult r = RunProgram(ToolPath(MGRSRC_NAME), {"list", "d.dll"}, dir.path);
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("d.dll: not a regular file"), std::string::npos) << r.err;
}

}  // namespace
