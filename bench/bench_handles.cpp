// Handles against the C runtime's allocator, in the same run: make a run of blocks and then
// dispose of all of them, as a file's loads and its close do,
//  - 100,000 handles of 16 bytes vs malloc and free of 32 bytes (the same size with a header);
//  - 100,000 handles of mixed small sizes vs malloc and free of the same totals;
//  - one handle made and disposed at a time vs malloc and free.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <vector>

#include "mg/memory.h"
#include "ratios.h"

namespace {

constexpr int32_t kRun = 100000;

void Start() {
    static bool started = false;
    if (!started) InitMemoryManager();
    started = true;
}

// Sizes from 1 to 600 bytes, spread as a resource file's small resources might be.
std::vector<int32_t> Sizes(bool mixed) {
    std::vector<int32_t> sizes(kRun, 16);
    uint32_t x = 12345;
    if (mixed) {
        for (int32_t& s : sizes) {
            x = x * 1103515245 + 12345;
            s = 1 + static_cast<int32_t>((x >> 8) % 600);
        }
    }
    return sizes;
}

void HandleRun(benchmark::State& state, bool mixed) {
    Start();
    const std::vector<int32_t> sizes = Sizes(mixed);
    std::vector<Handle> handles(kRun);
    for (auto _ : state) {
        for (int32_t i = 0; i < kRun; ++i) handles[i] = MemNewHandle(sizes[i]);
        benchmark::DoNotOptimize(handles.data());
        for (Handle h : handles) MemDisposeHandle(h);
    }
    state.SetItemsProcessed(state.iterations() * kRun);
}

void MallocRun(benchmark::State& state, bool mixed) {
    const std::vector<int32_t> sizes = Sizes(mixed);
    std::vector<void*> blocks(kRun);
    for (auto _ : state) {
        // The same totals as the handles, whose main-zone header is 16 bytes.
        for (int32_t i = 0; i < kRun; ++i) blocks[i] = malloc(static_cast<size_t>(sizes[i]) + 16);
        benchmark::DoNotOptimize(blocks.data());
        for (void* b : blocks) free(b);
    }
    state.SetItemsProcessed(state.iterations() * kRun);
}

void BM_HandleRun16(benchmark::State& state) {
    HandleRun(state, false);
}
BENCHMARK(BM_HandleRun16)->Unit(benchmark::kMillisecond);
void BM_MallocRun16(benchmark::State& state) {
    MallocRun(state, false);
}
BENCHMARK(BM_MallocRun16)->Unit(benchmark::kMillisecond);
void BM_HandleRunMixed(benchmark::State& state) {
    HandleRun(state, true);
}
BENCHMARK(BM_HandleRunMixed)->Unit(benchmark::kMillisecond);
void BM_MallocRunMixed(benchmark::State& state) {
    MallocRun(state, true);
}
BENCHMARK(BM_MallocRunMixed)->Unit(benchmark::kMillisecond);

void BM_HandleOne(benchmark::State& state) {
    Start();
    for (auto _ : state) {
        Handle h = MemNewHandle(24);
        benchmark::DoNotOptimize(h);
        MemDisposeHandle(h);
    }
}
BENCHMARK(BM_HandleOne);

void BM_MallocOne(benchmark::State& state) {
    for (auto _ : state) {
        void* b = malloc(40);
        benchmark::DoNotOptimize(b);
        free(b);
    }
}
BENCHMARK(BM_MallocOne);

}  // namespace

int main(int argc, char** argv) {
    return RunWithRatios(argc, argv, "Ratios (goal: handles <= 1.0 x malloc and free)",
                         {{"BM_HandleRun16", "BM_MallocRun16"},
                          {"BM_HandleRunMixed", "BM_MallocRunMixed"},
                          {"BM_HandleOne", "BM_MallocOne"}});
}
