// Runs the built tools in a directory and collects their statuses and standard streams.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

struct ToolResult {
    int status = -1;  // exit status, or -1 when the tool did not exit normally
    std::string out;
    std::string err;
};

inline std::string SlurpFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Runs `program` with `args` (argv[1]...) in `dir`, stdout and stderr captured into files.
inline ToolResult RunProgram(const char* program, const std::vector<std::string>& args,
                             const std::filesystem::path& dir) {
    auto outPath = dir / ".tool.out", errPath = dir / ".tool.err";
    pid_t pid = fork();
    if (pid == 0) {
        if (chdir(dir.c_str()) != 0) _exit(126);
        int o = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int e = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(o, 1);
        dup2(e, 2);
        std::vector<char*> argv;
        argv.push_back(const_cast<char*>(program));
        for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        execv(program, argv.data());
        _exit(127);
    }
    int wstatus = 0;
    waitpid(pid, &wstatus, 0);
    ToolResult r;
    r.status = WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : -1;
    r.out = SlurpFile(outPath);
    r.err = SlurpFile(errPath);
    std::filesystem::remove(outPath);
    std::filesystem::remove(errPath);
    return r;
}

// Runs the built mxsbutil.
inline ToolResult RunTool(const std::vector<std::string>& args, const std::filesystem::path& dir) {
    return RunProgram(MXSBUTIL_PATH, args, dir);
}

// A fresh directory under the system's temporary directory, removed with the object.
struct TempDir {
    std::filesystem::path path;
    TempDir() {
        std::string tmpl = (std::filesystem::temp_directory_path() / "mxsb-XXXXXX").string();
        path = mkdtemp(tmpl.data());
    }
    ~TempDir() { std::filesystem::remove_all(path); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
};
