// The format engine against snprintf on the same values: one pair for integers and strings
// (%d %5d %s %x and a counted string), one for floats (%.3f). Prints the ratios after the
// table.
#include <benchmark/benchmark.h>
#include <stdio.h>
#include <string.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "mg/format.h"
#include "ratios.h"

namespace {

const int kInputs = 1024;

struct Row {
    int a, b, c;
    const char* text;
    uint8_t counted[16];
    double real;
};

const std::vector<Row>& Rows() {
    static const std::vector<Row> rows = [] {
        static const char* const kWords[] = {"alpha", "be", "gamma-ray", "", "delta epsilon"};
        std::vector<Row> v;
        std::mt19937 rng(11);
        std::uniform_int_distribution<int> any(INT32_MIN, INT32_MAX), small(-99999, 99999);
        std::uniform_real_distribution<double> real(-1e6, 1e6);
        for (int i = 0; i < kInputs; ++i) {
            Row r;
            r.a = any(rng);
            r.b = small(rng);
            r.c = any(rng);
            r.text = kWords[i % 5];
            const char* word = kWords[(i + 2) % 5];
            r.counted[0] = static_cast<uint8_t>(strlen(word));
            memcpy(r.counted + 1, word, r.counted[0]);
            r.real = real(rng);
            v.push_back(r);
        }
        return v;
    }();
    return rows;
}

void FormatIntegersStrings(benchmark::State& state) {
    char out[256];
    for (auto _ : state) {
        for (const Row& r : Rows()) {
            benchmark::DoNotOptimize(StrFormatN(out, sizeof out, "id %d [%5d] %s: %x <%p>", r.a,
                                                r.b, r.text, r.c, r.counted));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kInputs);
}

void SnprintfIntegersStrings(benchmark::State& state) {
    char out[256];
    for (auto _ : state) {
        for (const Row& r : Rows()) {
            benchmark::DoNotOptimize(snprintf(out, sizeof out, "id %d [%5d] %s: %X <%.*s>", r.a,
                                              r.b, r.text, r.c, static_cast<int>(r.counted[0]),
                                              reinterpret_cast<const char*>(r.counted + 1)));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kInputs);
}

void FormatFloat(benchmark::State& state) {
    char out[256];
    for (auto _ : state) {
        for (const Row& r : Rows()) {
            benchmark::DoNotOptimize(StrFormatN(out, sizeof out, "v=%.3f", r.real));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kInputs);
}

void SnprintfFloat(benchmark::State& state) {
    char out[256];
    for (auto _ : state) {
        for (const Row& r : Rows()) {
            benchmark::DoNotOptimize(snprintf(out, sizeof out, "v=%.3f", r.real));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kInputs);
}

BENCHMARK(FormatIntegersStrings);
BENCHMARK(SnprintfIntegersStrings);
BENCHMARK(FormatFloat);
BENCHMARK(SnprintfFloat);

}  // namespace

int main(int argc, char** argv) {
    return RunWithRatios(
        argc, argv, "Ratios (goal: integers and strings <= 1.5 x snprintf, float <= 3 x snprintf)",
        {{"FormatIntegersStrings", "SnprintfIntegersStrings"}, {"FormatFloat", "SnprintfFloat"}});
}
