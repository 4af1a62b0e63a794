// Whole runs in-process with the Nth allocation failing (-r runs) or the Nth write failing as
// on a full disk (new packages and -vi), for every N the run reaches: each must end with one
// of the tool's statuses, cleanly under the sanitizers, and leave its source or target as it
// was. The memory manager starts once per process, so each run is a child.
#include <gtest/gtest.h>

#include <cstring>

#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "mxsbutil/options.h"
#include "platform/faults.h"
#include "support/run_tool.h"

// A sanitizer report must not pass for one of the tool's own statuses 0, 1 or 2.
extern "C" const char* __asan_default_options() {
    return "exitcode=99";
}
extern "C" const char* __ubsan_default_options() {
    return "exitcode=98:halt_on_error=1";
}

namespace {

// Runs `body` in a child with its output discarded and returns the raw wait status.
template <typename F>
int InChild(F body) {
    pid_t pid = fork();
    if (pid == 0) {
        int null = open("/dev/null", O_WRONLY);
        dup2(null, 1);
        if (!getenv("MXSB_OOM_STDERR")) dup2(null, 2);
        alarm(20);  // a run that loops forever shows up as a signal
        _exit(body());
    }
    int wstatus = 0;
    waitpid(pid, &wstatus, 0);
    return wstatus;
}

Path ToPath(const std::string& text) {
    Path p = nullptr;
    FTextToPath(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()), &p);
    return p;
}

// Makes the -r source with the library, in a child so that this process stays unstarted.
int MakeSource(const std::string& file) {
    if (InitMemoryManager() != MgNoError || RInit() != MgNoError) return 10;
    Path path = ToPath(file);
    ResFile f = 0;
    if (!path || RCreateCorrectFile(path, 1, MgResType("CRTR"), MgResType("TEST"), 0644) ||
        ROpenFile(path, FMModeReadWrite, &f, nullptr, nullptr))
        return 11;
    const struct {
        const char* type;
        int32_t id;
        const char* name;
        int32_t size;
    } rows[] = {{"STR ", 1, "\3one", 10},
                {"STR ", 2, nullptr, 0},
                {"ICON", 5, "\4icon", 3000},
                {"DATA", -1, "\1d", 7}};
    for (const auto& r : rows) {
        Handle h = MemNewHandle(r.size);
        if (!h) return 12;
        for (int32_t i = 0; i < r.size; ++i) (*h)[i] = uint8_t(i * 7 + r.id);
        if (RAdd(h, f, MgResType(r.type), r.id, reinterpret_cast<ConstPStr>(r.name))) return 13;
    }
    return RCloseFile(f) ? 14 : 0;
}

TEST(OutOfMemory, EveryFailingAllocationOfAnImportRun) {
    TempDir s;
    const std::string source = (s.path / "src.rsrc").string();
    int made = InChild([&] { return MakeSource(source); });
    ASSERT_TRUE(WIFEXITED(made) && WEXITSTATUS(made) == 0) << made;
    const std::string before = SlurpFile(source);
    ASSERT_GT(before.size(), 3000u);

    bool completed = false;
    for (int64_t n = 1; n <= 400 && !completed; ++n) {
        const std::filesystem::path dir = s.path / ("run" + std::to_string(n));
        std::filesystem::create_directory(dir);
        std::ofstream(dir / "foo.dll", std::ios::binary) << "MODULE";
        int pipeFds[2];
        ASSERT_EQ(pipe(pipeFds), 0);
        int w = InChild([&] {
            close(pipeFds[0]);
            std::vector<std::string> args = {"mxsbutil",   "-c", "foo", "-d",
                                             dir.string(), "-r", source};
            std::vector<char*> argv;
            for (auto& a : args) argv.push_back(a.data());
            argv.push_back(nullptr);
            plat::FailAllocationAt(n);
            int32_t status = ParseArguments(int(args.size()), argv.data());
            const char reached = plat::AllocationCount() >= n ? 'y' : 'n';
            if (write(pipeFds[1], &reached, 1) != 1) return 97;
            return int(status);
        });
        close(pipeFds[1]);
        char reached = '?';
        const bool told = read(pipeFds[0], &reached, 1) == 1;
        close(pipeFds[0]);

        ASSERT_EQ(SlurpFile(source), before) << "N=" << n;
        // Keep going after a bad run, so that one report lists every allocation that fails.
        if (!WIFEXITED(w)) {
            ADD_FAILURE() << "N=" << n << " ended by signal " << WTERMSIG(w);
            continue;
        }
        const int status = WEXITSTATUS(w);
        if (!told || status > 2) {
            ADD_FAILURE() << "N=" << n << " status " << status << " (98/99: sanitizer report)";
            continue;
        }
        if (reached == 'n') {
            completed = true;
            EXPECT_EQ(status, 0) << "N=" << n;
            // Untouched run: the two own resources and the four imported ones, data included.
            EXPECT_GT(std::filesystem::file_size(dir / "foo.msb"), before.size());
        }
        std::filesystem::remove_all(dir);
    }
    EXPECT_TRUE(completed) << "still failing allocations after 400";
}

// Runs the tool on `args` in a child with the Nth write failing; gives the wait status and
// whether the run reached that write.
std::pair<int, bool> RunWithWriteFailing(std::vector<std::string> args, int64_t n) {
    int pipeFds[2];
    if (pipe(pipeFds) != 0) return {-1, false};
    const int w = InChild([&] {
        close(pipeFds[0]);
        std::vector<char*> argv;
        for (auto& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        plat::FailFileOpAt(plat::kFileWrite, n, MgDiskFull);
        const int32_t status = ParseArguments(int(args.size()), argv.data());
        const char reached = plat::FileOpCount(plat::kFileWrite) >= n ? 'y' : 'n';
        if (write(pipeFds[1], &reached, 1) != 1) return 97;
        return int(status);
    });
    close(pipeFds[1]);
    char reached = '?';
    const bool told = read(pipeFds[0], &reached, 1) == 1;
    close(pipeFds[0]);
    return {told ? w : -1, reached == 'y'};
}

// A package that didn't reach the disk is a failed run (2), not an empty file with status 0;
// a -vi target that couldn't be rewritten keeps its old bytes.
TEST(FullDisk, EveryFailingWriteOfAPackageRun) {
    TempDir s;
    const std::string dir = s.path.string();
    std::ofstream(s.path / "foo.dll", std::ios::binary) << "MODULE";
    ASSERT_EQ(RunWithWriteFailing({"mxsbutil", "-c", "foo", "-d", dir}, 0).first, 0);
    std::filesystem::rename(s.path / "foo.msb", s.path / "t.vi");
    const std::string vi = (s.path / "t.vi").string();
    const std::string before = SlurpFile(vi);
    std::ofstream(s.path / "foo.dll", std::ios::binary) << "MODULE, VERSION 2";

    for (bool replacing : {false, true}) {
        bool completed = false;
        for (int64_t n = 1; n <= 50 && !completed; ++n) {
            std::vector<std::string> args = {"mxsbutil", "-c", "foo", "-d", dir};
            if (replacing) args.insert(args.end(), {"-vi", vi});
            const auto [w, reached] = RunWithWriteFailing(args, n);
            ASSERT_TRUE(WIFEXITED(w)) << "N=" << n << " wait status " << w;
            EXPECT_EQ(WEXITSTATUS(w), reached ? 2 : 0) << "N=" << n << " -vi " << replacing;
            completed = !reached;
            if (replacing && reached) {
                EXPECT_EQ(SlurpFile(vi), before) << "N=" << n;
            }
        }
        EXPECT_TRUE(completed);
        if (replacing) {
            EXPECT_NE(SlurpFile(vi), before);
        }
    }
}

}  // namespace
