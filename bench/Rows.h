#ifndef LUMO_BENCH_ROWS_H
#define LUMO_BENCH_ROWS_H

#include <functional>
#include <string>

/// The rows of a benchmark program: each puts one figure of ours beside its baseline from the same run.
namespace rows {

enum class Aim
{
    kAtMost,      ///< ours / baseline, and at most the aim
    kAtLeast,     ///< ours / baseline, and at least the aim
    kTimesFaster, ///< baseline / ours, and at least the aim
};

/// Adds a row. A figure is named by its benchmark, for the time of one iteration in nanoseconds, or as
/// "benchmark:counter", for a counter of it.
void add(const std::string& row, const std::string& ours, const std::string& baseline, Aim aim, double limit);

/// Calls `setUp`, runs the registered benchmarks, repetitions interleaved, and prints the rows: a time is
/// that of its fastest repetition, a counter the median of all. `--rows=PATTERN`, an extended regular
/// expression, keeps the rows whose names have a match; without any left nothing happens. The other arguments
/// are the benchmark library's. Returns the process's exit status: 0, or 1 when a benchmark failed or a
/// figure is missing.
int run(
    int argc, char** argv, const std::function<void()>& setUp = [] {});

} // namespace rows

#endif
