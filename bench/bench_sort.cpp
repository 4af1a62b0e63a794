// SortArray against qsort and std::sort on 1,000,000 32-bit integers and 1,000,000 20-byte
// records. Every iteration sorts a fresh copy of the same input; the copy is not timed.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "mg/sort.h"

namespace {

constexpr size_t kCount = 1000000;

struct Record {
    uint32_t key;
    uint8_t payload[16];
};
static_assert(sizeof(Record) == 20, "records are 20 bytes");

const std::vector<uint32_t>& IntInput() {
    static const std::vector<uint32_t> data = [] {
        std::mt19937 rng(2024);
        std::vector<uint32_t> v(kCount);
        for (auto& x : v) x = rng();
        return v;
    }();
    return data;
}

const std::vector<Record>& RecordInput() {
    static const std::vector<Record> data = [] {
        std::mt19937 rng(4048);
        std::vector<Record> v(kCount);
        for (auto& r : v) {
            r.key = rng();
            for (auto& b : r.payload) b = static_cast<uint8_t>(rng());
        }
        return v;
    }();
    return data;
}

// One comparison function for SortArray and qsort alike: the same cost per call.
int CompareUInt(const void* a, const void* b) {
    uint32_t x = *static_cast<const uint32_t*>(a);
    uint32_t y = *static_cast<const uint32_t*>(b);
    return (x > y) - (x < y);
}
int32_t CompareUInt32(const void* a, const void* b) {
    return CompareUInt(a, b);
}

int CompareRecord(const void* a, const void* b) {
    uint32_t x = static_cast<const Record*>(a)->key;
    uint32_t y = static_cast<const Record*>(b)->key;
    return (x > y) - (x < y);
}
int32_t CompareRecord32(const void* a, const void* b) {
    return CompareRecord(a, b);
}

enum class Sorter { kSortArray, kQsort, kStdSort };

template <class T>
void Run(benchmark::State& state, const std::vector<T>& input, Sorter sorter,
         int32_t (*mgCompare)(const void*, const void*), int (*cCompare)(const void*, const void*),
         bool (*less)(const T&, const T&)) {
    std::vector<T> work(input.size());
    for (auto _ : state) {
        state.PauseTiming();
        std::copy(input.begin(), input.end(), work.begin());
        state.ResumeTiming();
        switch (sorter) {
            case Sorter::kSortArray:
                SortArray(work.data(), static_cast<int32_t>(work.size()), sizeof(T), mgCompare);
                break;
            case Sorter::kQsort:
                qsort(work.data(), work.size(), sizeof(T), cCompare);
                break;
            case Sorter::kStdSort:
                std::sort(work.begin(), work.end(), less);
                break;
        }
        benchmark::DoNotOptimize(work.data());
        benchmark::ClobberMemory();
    }
    if (!std::is_sorted(work.begin(), work.end(), less)) state.SkipWithError("not sorted");
}

bool LessUInt(const uint32_t& a, const uint32_t& b) {
    return a < b;
}
bool LessRecord(const Record& a, const Record& b) {
    return a.key < b.key;
}

void Ints(benchmark::State& state, Sorter sorter) {
    Run(state, IntInput(), sorter, CompareUInt32, CompareUInt, LessUInt);
}
void Records(benchmark::State& state, Sorter sorter) {
    Run(state, RecordInput(), sorter, CompareRecord32, CompareRecord, LessRecord);
}

BENCHMARK_CAPTURE(Ints, SortArray, Sorter::kSortArray)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Ints, qsort, Sorter::kQsort)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Ints, std_sort, Sorter::kStdSort)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Records, SortArray, Sorter::kSortArray)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Records, qsort, Sorter::kQsort)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Records, std_sort, Sorter::kStdSort)->Unit(benchmark::kMillisecond);

// Console output as usual, with each run's time kept for the ratios.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    // With --benchmark_repetitions the median of the repetitions is used.
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) continue;
            std::string name = run.run_name.str();
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
                medians_[name] = run.GetAdjustedRealTime();
            } else if (run.run_type == Run::RT_Iteration) {
                times_[name] = run.GetAdjustedRealTime();
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void PrintRatios() const {
        for (const char* data : {"Ints", "Records"}) {
            double mine = Get(std::string(data) + "/SortArray");
            double q = Get(std::string(data) + "/qsort");
            double s = Get(std::string(data) + "/std_sort");
            if (mine <= 0 || q <= 0 || s <= 0) continue;
            printf("%-8s SortArray/qsort = %.3f   SortArray/std::sort = %.3f\n", data, mine / q,
                   mine / s);
        }
    }

  private:
    double Get(const std::string& name) const {
        auto median = medians_.find(name);
        if (median != medians_.end()) return median->second;
        auto it = times_.find(name);
        return it == times_.end() ? 0 : it->second;
    }
    std::map<std::string, double> times_;
    std::map<std::string, double> medians_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatios();
    benchmark::Shutdown();
    return 0;
}
