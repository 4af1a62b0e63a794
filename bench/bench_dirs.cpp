// FDirEntriesWith on a directory of 100,000 files, with and without the type list, against
// readdir with a stat of each entry and against readdir alone. The directory is made once in
// the temporary directory and removed at the end.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "ratios.h"

namespace {

constexpr int kFiles = 100000;

std::string gDir;

void MakeDirectory() {
    std::string tmpl = (std::filesystem::temp_directory_path() / "bench-dirs-XXXXXX").string();
    gDir = mkdtemp(tmpl.data());
    char name[64];
    for (int i = 0; i < kFiles; ++i) {
        snprintf(name, sizeof name, "/file%06d.dat", i);
        int fd = open((gDir + name).c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
        if (fd >= 0) close(fd);
    }
}

void Listing(benchmark::State& state, bool withTypes) {
    Path path = nullptr;
    FTextToPath(reinterpret_cast<const uint8_t*>(gDir.data()), int32_t(gDir.size()), &path);
    Handle names = MemNewHandle(0), types = withTypes ? MemNewHandle(0) : nullptr;
    for (auto _ : state) {
        if (FDirEntriesWith(path, names, types, 0) != MgNoError) state.SkipWithError("listing");
        benchmark::DoNotOptimize(**names);
    }
    MemDisposeHandle(names);
    if (types) MemDisposeHandle(types);
    FPathRelease(path);
}

void ReaddirPeer(benchmark::State& state, bool withStat) {
    for (auto _ : state) {
        DIR* dir = opendir(gDir.c_str());
        int n = 0;
        while (struct dirent* d = readdir(dir)) {
            struct stat st;
            if (withStat)
                n += fstatat(dirfd(dir), d->d_name, &st, 0) == 0 && S_ISREG(st.st_mode);
            else
                n += d->d_name[0] != 0;
        }
        closedir(dir);
        benchmark::DoNotOptimize(n);
    }
}

void BM_DirEntriesWithTypes(benchmark::State& s) {
    Listing(s, true);
}
void BM_DirEntriesNamesOnly(benchmark::State& s) {
    Listing(s, false);
}
void BM_ReaddirStat(benchmark::State& s) {
    ReaddirPeer(s, true);
}
void BM_Readdir(benchmark::State& s) {
    ReaddirPeer(s, false);
}

BENCHMARK(BM_DirEntriesWithTypes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReaddirStat)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DirEntriesNamesOnly)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Readdir)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    InitMemoryManager();
    MakeDirectory();
    int result = RunWithRatios(
        argc, argv, "Listing of 100,000 files (goals: 1.5 and 2)",
        {{"BM_DirEntriesWithTypes", "BM_ReaddirStat"}, {"BM_DirEntriesNamesOnly", "BM_Readdir"}});
    std::filesystem::remove_all(gDir);
    return result;
}
