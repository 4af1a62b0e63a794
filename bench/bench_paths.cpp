// Path normalisation against one walk over the same names (FPathByteSize), both on a fresh
// copy of the block, for a small path and for a 48 KB one whose names all collapse against
// the up-level components behind them: the ratio stays flat as the path grows.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "mg/memory.h"
#include "mg/path.h"
#include "ratios.h"

namespace {

// `pairs` names of 8 characters, then as many up-level components, then one more name.
Path Nested(int32_t pairs) {
    std::vector<uint8_t> block(4);
    int16_t kind = PathKindRelative, count = static_cast<int16_t>(2 * pairs + 1);
    memcpy(block.data(), &kind, 2);
    memcpy(block.data() + 2, &count, 2);
    for (int32_t i = 0; i < pairs; ++i) {
        block.push_back(8);
        for (int c = 0; c < 8; ++c) block.push_back(static_cast<uint8_t>('a' + (i + c) % 26));
    }
    block.insert(block.end(), static_cast<size_t>(pairs), 0);
    block.insert(block.end(), {3, 'e', 'n', 'd'});
    Path p = MemNewHandle(static_cast<int32_t>(block.size()));
    memcpy(*p, block.data(), block.size());
    return p;
}

void Run(benchmark::State& state, int32_t pairs, bool normalise) {
    static bool ready = InitMemoryManager() == MgNoError;
    if (!ready) {
        state.SkipWithError("no memory manager");
        return;
    }
    Path source = Nested(pairs), work = MemNewHandle(4);
    for (auto _ : state) {
        FPathAssign(work, source);
        if (normalise)
            benchmark::DoNotOptimize(FPathNormalize(work));
        else
            benchmark::DoNotOptimize(FPathByteSize(work));
    }
    state.SetBytesProcessed(state.iterations() * MemHandleSize(source));
    FPathRelease(work);
    FPathRelease(source);
}

void NormaliseSmall(benchmark::State& s) {
    Run(s, 8, true);
}
void WalkSmall(benchmark::State& s) {
    Run(s, 8, false);
}
// 5400 pairs: 48,604 bytes.
void Normalise48K(benchmark::State& s) {
    Run(s, 5400, true);
}
void Walk48K(benchmark::State& s) {
    Run(s, 5400, false);
}
BENCHMARK(NormaliseSmall);
BENCHMARK(WalkSmall);
BENCHMARK(Normalise48K);
BENCHMARK(Walk48K);

}  // namespace

int main(int argc, char** argv) {
    return RunWithRatios(
        argc, argv,
        "Ratios (normalise / walk, each on a fresh copy; flat from small to 48 KB: linear)",
        {{"NormaliseSmall", "WalkSmall"}, {"Normalise48K", "Walk48K"}});
}
