// Runs programs from tests: the built tools in a directory, or one test of this very
// program in a child process, on every host.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "platform/childprocess.h"
#include "platform/platform.h"
#include "support/temp_dir.h"

struct ToolResult {
    int status = -1;  // exit status, or -1 when the tool did not exit normally
    std::string out;
    std::string err;
};

inline std::string SlurpFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The running program's own file.
inline std::filesystem::path ThisProgram() {
    char name[4096];
    return plat::ModuleFileName(name, sizeof name) > 0 ? std::filesystem::path(name)
                                                       : std::filesystem::path();
}

// A built tool lies beside the test programs.
inline std::filesystem::path ToolPath(const char* name = MXSBUTIL_NAME) {
    return ThisProgram().parent_path() / name;
}

// The words of a command line written out with blanks between them.
inline std::vector<std::string> Words(const std::string& line) {
    std::istringstream in(line);
    return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

// Starts `program` with `args`; null `out`/`err` send those streams to the null device, or
// to this program's own with `inherit`.
inline int64_t StartProgram(const std::filesystem::path& program,
                            const std::vector<std::string>& args, const char* directory,
                            const char* out, const char* err, const char* variable = nullptr,
                            bool inherit = false) {
    const std::string name = program.string();
    std::vector<const char*> argv;
    for (const auto& a : args) argv.push_back(a.c_str());
    argv.push_back(nullptr);
    return plat::StartChild({.program = name.c_str(),
                             .args = argv.data(),
                             .directory = directory,
                             .outFile = out,
                             .errFile = err,
                             .inherit = inherit,
                             .variable = variable});
}

// Runs `program` with `args` (argv[1]...) in `dir`, stdout and stderr captured into files.
inline ToolResult RunProgram(const std::filesystem::path& program,
                             const std::vector<std::string>& args,
                             const std::filesystem::path& dir) {
    const std::string outPath = (dir / ".tool.out").string(),
                      errPath = (dir / ".tool.err").string();
    const std::string directory = dir.string();
    ToolResult r;
    int64_t child =
        StartProgram(program, args, directory.c_str(), outPath.c_str(), errPath.c_str());
    if (child == 0) return r;
    r.status = plat::WaitChild(child, 60000);
    r.out = SlurpFile(outPath);
    r.err = SlurpFile(errPath);
    std::filesystem::remove(outPath);
    std::filesystem::remove(errPath);
    return r;
}

// Runs the built mxsbutil.
inline ToolResult RunTool(const std::vector<std::string>& args, const std::filesystem::path& dir) {
    return RunProgram(ToolPath(), args, dir);
}

// Starts test `name` (a DISABLED_ one, which runs only when asked for) of this program in a
// child, with `variable` ("NAME=value") set for it; its output goes to the null device unless
// MXSB_CHILD_OUTPUT is set.
inline int64_t StartTestChild(const std::string& name, const std::string& variable) {
    return StartProgram(
        ThisProgram(), {"--gtest_filter=" + name, "--gtest_also_run_disabled_tests"}, nullptr,
        nullptr, nullptr, variable.c_str(), std::getenv("MXSB_CHILD_OUTPUT") != nullptr);
}
