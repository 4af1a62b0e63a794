// Number text and scanning against the C and C++ libraries on the same inputs: NumToText
// with 17 digits against snprintf("%.17g") and std::to_chars, ScanFloat against strtod.
// Prints the ratios after the table.
#include <benchmark/benchmark.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <charconv>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "mg/numscan.h"
#include "ratios.h"

namespace {

const int kInputs = 4096;

const std::vector<double>& Doubles() {
    static const std::vector<double> values = [] {
        std::vector<double> v;
        std::mt19937_64 rng(99);
        while ((int)v.size() < kInputs) {
            uint64_t bits = rng();
            double d;
            memcpy(&d, &bits, 8);
            if (isfinite(d)) v.push_back(d);
        }
        return v;
    }();
    return values;
}

const std::vector<std::string>& Texts() {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> t;
        char buf[64];
        for (double d : Doubles()) {
            snprintf(buf, sizeof buf, "%.17g", d);
            t.push_back(buf);
        }
        return t;
    }();
    return texts;
}

void NumToTextDigits17(benchmark::State& state) {
    char out[64];
    for (auto _ : state) {
        for (double d : Doubles()) {
            benchmark::DoNotOptimize(NumToText(&d, NumFD, 17, out, sizeof out, '.', nullptr));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kInputs);
}

void SnprintfDigits17(benchmark::State& state) {
    char out[64];
    for (auto _ : state) {
        for (double d : Doubles()) {
            benchmark::DoNotOptimize(snprintf(out, sizeof out, "%.17g", d));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kInputs);
}

void ToCharsDigits17(benchmark::State& state) {
    char out[64];
    for (auto _ : state) {
        for (double d : Doubles()) {
            benchmark::DoNotOptimize(
                std::to_chars(out, out + sizeof out, d, std::chars_format::general, 17));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kInputs);
}

void ScanFloatTexts(benchmark::State& state) {
    double v;
    for (auto _ : state) {
        for (const std::string& t : Texts()) {
            const char* p = t.c_str();
            ScanFloat(&p, (int32_t)t.size(), 0, NumFD, &v);
            benchmark::DoNotOptimize(v);
        }
    }
    state.SetItemsProcessed(state.iterations() * kInputs);
}

void StrtodTexts(benchmark::State& state) {
    for (auto _ : state) {
        for (const std::string& t : Texts()) benchmark::DoNotOptimize(strtod(t.c_str(), nullptr));
    }
    state.SetItemsProcessed(state.iterations() * kInputs);
}

BENCHMARK(NumToTextDigits17);
BENCHMARK(SnprintfDigits17);
BENCHMARK(ToCharsDigits17);
BENCHMARK(ScanFloatTexts);
BENCHMARK(StrtodTexts);

}  // namespace

int main(int argc, char** argv) {
    return RunWithRatios(argc, argv, "Ratios (goal: text <= 3 x snprintf, scanning <= 2 x strtod)",
                         {{"NumToTextDigits17", "SnprintfDigits17"},
                          {"NumToTextDigits17", "ToCharsDigits17"},
                          {"ScanFloatTexts", "StrtodTexts"}});
}
