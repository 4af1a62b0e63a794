// Resource files at scale, each against a peer in the same run:
//  - open and load 100,000 resources of 16 bytes vs one plain read of the file's bytes;
//  - add N unnamed resources with rising ids and close, for N = 10,000 and 100,000;
//  - a handle lookup after each add vs the same adds without lookups.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/resource.h"

namespace {

std::string gDir;

void Start() {
    static bool started = false;
    if (started) return;
    started = true;
    InitMemoryManager();
    RInit();
    char pattern[] = "/tmp/mgbench.XXXXXX";
    gDir = mkdtemp(pattern);
}

Path PathOf(const std::string& leaf) {
    const std::string text = gDir + "/" + leaf;
    Path p = nullptr;
    FTextToPath(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()), &p);
    return p;
}

void Fill(const std::string& leaf, int32_t count, bool lookups) {
    Path p = PathOf(leaf);
    RCreateCorrectFile(p, 1, MgResType("BNCH"), MgResType("BNCH"), 0644);
    ResFile f = 0;
    ROpenFile(p, FMModeReadWrite, &f, nullptr, nullptr);
    for (int32_t i = 0; i < count; ++i) {
        Handle h = MemNewHandleClear(16);
        RAdd(h, f, MgResType("DATA"), i, nullptr);
        if (lookups) {
            Handle other = nullptr;
            // A handle other than the last added, so the cache of the last one doesn't answer.
            if (i > 0) RGet(f, MgResType("DATA"), i / 2, &other);
            benchmark::DoNotOptimize(RIsResource(other));
        }
    }
    RCloseFile(f);
    FPathRelease(p);
}

void BM_AddAndClose(benchmark::State& state) {
    Start();
    for (auto _ : state) Fill("add", int32_t(state.range(0)), false);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_AddAndClose)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_AddWithLookup(benchmark::State& state) {
    Start();
    for (auto _ : state) Fill("lookup", int32_t(state.range(0)), true);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_AddWithLookup)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_OpenAndLoadAll(benchmark::State& state) {
    Start();
    Fill("big", 100000, false);
    Path p = PathOf("big");
    for (auto _ : state) {
        ResFile f = 0;
        ROpenFile(p, FMModeRead, &f, nullptr, nullptr);
        int32_t n = 0;
        RCount(f, MgResType("DATA"), &n);
        for (int32_t i = 1; i <= n; ++i) {
            Handle h = nullptr;
            RGetInd(f, MgResType("DATA"), i, &h);
            benchmark::DoNotOptimize(h);
        }
        RCloseFile(f);
    }
    FPathRelease(p);
}
BENCHMARK(BM_OpenAndLoadAll)->Unit(benchmark::kMillisecond);

// Peer: the same file's bytes in one read.
void BM_PlainRead(benchmark::State& state) {
    Start();
    Fill("big", 100000, false);
    Path p = PathOf("big");
    for (auto _ : state) {
        FileRef ref = 0;
        FMOpen(&ref, p, FMModeRead, FMShareAll);
        int32_t size = 0;
        FGetEOF(ref, &size);
        std::vector<uint8_t> bytes(static_cast<size_t>(size));
        FMRead(ref, size, nullptr, bytes.data());
        benchmark::DoNotOptimize(bytes.data());
        FMClose(ref);
    }
    FPathRelease(p);
}
BENCHMARK(BM_PlainRead)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
