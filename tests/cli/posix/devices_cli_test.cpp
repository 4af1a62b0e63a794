// What a POSIX host has beside files: a pipe, a device, a generated process-information file.
// As module, -r or -vi file each gives 2 at once, never waiting on a pipe's other end, and no
// package; mgrsrc, reading a resource file or a data file, says "not a regular file" where the
// name says so, a directory included.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/run_tool.h"

namespace fs = std::filesystem;

TEST(DevicesCli, PipesDevicesAndGeneratedFiles) {
    TempDir dir;
    std::ofstream(dir.path / "foo.dll") << "HELLO";
    ASSERT_EQ(mkfifo((dir.path / "pipe.dll").c_str(), 0600), 0);
    fs::create_symlink("/dev/zero", dir.path / "zero.dll");
    fs::create_symlink("/proc/self/status", dir.path / "status.dll");
    const std::string d = dir.path.string(), pipe = (dir.path / "pipe.dll").string();
    for (const auto& args : {std::vector<std::string>{"pipe", "-d", d},
                             {"zero", "-d", d},
                             {"status", "-d", d},
                             {"foo", "-d", d, "-r", pipe},
                             {"foo", "-d", d, "-vi", pipe}})
        EXPECT_EQ(RunTool(args, dir.path).status, 2) << args[0] << " " << args.back();
    for (const char* name : {"pipe", "zero", "status"})
        EXPECT_FALSE(fs::exists(dir.path / (std::string(name) + ".msb"))) << name;
    fs::create_directory(dir.path / "dir");
    // A resource file to read, and a data file to add.
    for (const std::string name : {"pipe.dll", "zero.dll", "dir"})
        for (const auto& args :
             {std::vector<std::string>{"verify", name}, {"add", "x.rsrc", "DATA", "1", name}}) {
            const ToolResult r = RunProgram(ToolPath(MGRSRC_NAME), args, dir.path);
            EXPECT_EQ(r.status, 2) << args[0] << " " << name;
            EXPECT_NE(r.err.find(name + ": not a regular file"), std::string::npos) << r.err;
        }
    EXPECT_EQ(RunProgram(ToolPath(MGRSRC_NAME), {"verify", "status.dll"}, dir.path).status, 2);
}
