// Benchmarks against a peer in the same run: keeps each benchmark's time per iteration (the
// mean when repetitions are asked for) and prints the ratios after the table. A time is kept
// under the function's name and under the run's full name (with its arguments, e.g.
// "BM_Load/1000"), so that pairs may name either.
#pragma once

#include <benchmark/benchmark.h>
#include <stdio.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& r : runs)
            if (r.run_type == Run::RT_Iteration || r.aggregate_name == "mean") {
                perIteration[r.run_name.function_name] = r.GetAdjustedRealTime();
                perIteration[r.run_name.str()] = r.GetAdjustedRealTime();
            }
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> perIteration;
};

// Runs the program's benchmarks, then prints `title` and mine / peer for each pair.
inline int RunWithRatios(int argc, char** argv, const char* title,
                         const std::vector<std::pair<const char*, const char*>>& pairs) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    auto& t = reporter.perIteration;
    printf("\n%s\n", title);
    for (const auto& [mine, peer] : pairs)
        if (t.count(mine) && t.count(peer) && t[peer] > 0)
            printf("%-22s / %-24s = %.2f\n", mine, peer, t[mine] / t[peer]);
    benchmark::Shutdown();
    return 0;
}
