// Whole packager runs with -r, each against a peer in the same run:
//  - BM_PackageWithImport/N: mxsbutil -c mod -d <dir>/ -r <source>, the source holding N named
//    resources of four types (N = 10,000, 100,000 and 1,000,000: the three show how the import
//    scales);
//  - BM_PackageAlone: the same run without -r, the peer of all three.
// Each run is the packager's own entry point in a forked child, since the managers start once
// per process; the peer pays the same fork. The child's standard error goes to /dev/null, so
// that the success line stays out of the report. The time is wall-clock time per run.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "mg/memory.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "mxsbutil/options.h"
#include "ratios.h"

namespace {

std::string gDir;

void Start() {
    if (!gDir.empty()) return;
    char pattern[] = "/tmp/mgimport.XXXXXX";
    if (mkdtemp(pattern) == nullptr) abort();
    gDir = pattern;
    std::ofstream(gDir + "/mod.dll", std::ios::binary) << std::string(4096, 'M');
    atexit([] { std::filesystem::remove_all(gDir); });
}

// Runs `body` in a child, with standard error silenced, and returns its exit status, or -1
// when it didn't exit.
template <typename F>
int InChild(F body) {
    fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        const int quiet = open("/dev/null", O_WRONLY);
        if (quiet >= 0) dup2(quiet, 2);
        _exit(body());
    }
    int wstatus = 0;
    if (pid < 0 || waitpid(pid, &wstatus, 0) != pid || !WIFEXITED(wstatus)) return -1;
    return WEXITSTATUS(wstatus);
}

// A source of `count` resources spread over four types, each named and all names unique,
// with data of 16 to 79 bytes. Made in a child so that this process never starts the layer.
std::string MakeSource(int32_t count) {
    const std::string file = gDir + "/src" + std::to_string(count) + ".rsrc";
    if (std::filesystem::exists(file)) return file;
    const int made = InChild([&] {
        if (InitMemoryManager() || RInit()) return 10;
        Path path = nullptr;
        ResFile f = 0;
        if (FTextToPath(reinterpret_cast<const uint8_t*>(file.data()), int32_t(file.size()),
                        &path) ||
            RCreateCorrectFile(path, 1, MgResType("BNCH"), MgResType("rsrc"), 0644) ||
            ROpenFile(path, 0, &f, nullptr, nullptr))
            return 11;
        const char* types[] = {"STR ", "ICON", "DATA", "TEXT"};
        for (int32_t i = 0; i < count; ++i) {
            uint8_t name[32];
            name[0] = uint8_t(snprintf(reinterpret_cast<char*>(name + 1), 31, "resource %d", i));
            const int32_t size = 16 + i % 64;
            Handle h = MemNewHandle(size);
            if (!h) return 12;
            for (int32_t b = 0; b < size; ++b) (*h)[b] = uint8_t(i + b);
            if (RAdd(h, f, MgResType(types[i % 4]), 128 + i / 4, name)) return 13;
        }
        return RCloseFile(f) ? 14 : 0;
    });
    if (made != 0) {
        fprintf(stderr, "bench_import: making the source failed (%d)\n", made);
        abort();
    }
    return file;
}

// One whole run of the packager with these arguments; its exit status.
int Package(const std::vector<std::string>& args) {
    return InChild([&] {
        std::vector<std::string> copy = args;
        std::vector<char*> argv;
        for (auto& a : copy) argv.push_back(a.data());
        argv.push_back(nullptr);
        return int(ParseArguments(int(copy.size()), argv.data()));
    });
}

void TimeRuns(benchmark::State& state, const std::vector<std::string>& args) {
    for (auto _ : state) {
        const auto t0 = std::chrono::steady_clock::now();
        const int status = Package(args);
        const auto t1 = std::chrono::steady_clock::now();
        if (status != 0) {
            state.SkipWithError("mxsbutil run failed");
            break;
        }
        state.SetIterationTime(std::chrono::duration<double>(t1 - t0).count());
    }
}

void BM_PackageWithImport(benchmark::State& state) {
    Start();
    const std::string source = MakeSource(int32_t(state.range(0)));
    TimeRuns(state, {"mxsbutil", "-c", "mod", "-d", gDir + "/", "-r", source});
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PackageWithImport)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(1000000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// Peer: the same package without the import.
void BM_PackageAlone(benchmark::State& state) {
    Start();
    TimeRuns(state, {"mxsbutil", "-c", "mod", "-d", gDir + "/"});
}
BENCHMARK(BM_PackageAlone)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    const char* alone = "BM_PackageAlone/manual_time";
    return RunWithRatios(argc, argv, "Ratios (import of N named resources / packaging alone)",
                         {{"BM_PackageWithImport/10000/manual_time", alone},
                          {"BM_PackageWithImport/100000/manual_time", alone},
                          {"BM_PackageWithImport/1000000/manual_time", alone}});
}
