#ifndef LUMO_BENCH_TURNS_H
#define LUMO_BENCH_TURNS_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

/// Sets the counters SIDE_p50 and SIDE_p99 from the durations, in nanoseconds.
inline void countPercentiles(benchmark::State& state, const std::string& side, std::vector<double>& durations)
{
    std::sort(durations.begin(), durations.end());
    const auto at = [&](std::size_t percent) { return durations[(durations.size() - 1) * percent / 100]; };
    state.counters[side + "_p50"] = at(50);
    state.counters[side + "_p99"] = at(99);
}

/// Runs and times both sides once in each iteration, each the first one in every other iteration. A side
/// that returns false ends the benchmark with an error.
template <class Ours, class Bare>
void takeTurns(benchmark::State& state, const Ours& ours, const Bare& bare)
{
    std::vector<double> ourDurations, bareDurations;
    const auto timed = [](const auto& side, std::vector<double>& durations) {
        const auto start = std::chrono::steady_clock::now();
        const bool succeeded = side();
        durations.push_back(
            std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count());
        return succeeded;
    };
    bool oursFirst = true;
    for (auto _ : state) {
        const bool first = oursFirst ? timed(ours, ourDurations) : timed(bare, bareDurations);
        const bool second = oursFirst ? timed(bare, bareDurations) : timed(ours, ourDurations);
        if (!first || !second) {
            state.SkipWithError("a call failed");
            return;
        }
        oursFirst = !oursFirst;
    }
    countPercentiles(state, "ours", ourDurations);
    countPercentiles(state, "bare", bareDurations);
}

#endif
