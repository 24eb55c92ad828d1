#include "bench/Rows.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <regex>
#include <vector>

namespace rows {
namespace {

struct Row
{
    std::string name;
    std::string ours;
    std::string baseline;
    Aim aim;
    double limit;
};

std::vector<Row>& table()
{
    static std::vector<Row> rows;
    return rows;
}

/// Collects what every repetition measured; the table is printed at the end.
class Collector : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Aggregate)
                continue;
            if (run.error_occurred) {
                std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
                m_Failed = true;
                continue;
            }
            const std::string& name = run.run_name.function_name;
            m_Figures[name].push_back(run.GetAdjustedRealTime());
            for (const auto& [counter, value] : run.counters)
                m_Figures[std::string(name).append(":").append(counter)].push_back(value);
        }
    }

    /// False for what a filter left out.
    bool measured(const std::string& figure) const { return m_Figures.count(figure) != 0; }

    /// A time from its least disturbed repetition, a counter as the median of all; 0 when not measured.
    double figure(const std::string& name)
    {
        std::vector<double>& values = m_Figures[name];
        if (values.empty()) {
            m_Failed = true;
            return 0;
        }
        if (name.find(':') == std::string::npos)
            return *std::min_element(values.begin(), values.end());
        const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }

    bool failed() const { return m_Failed; }

private:
    std::map<std::string, std::vector<double>> m_Figures;
    bool m_Failed = false;
};

void print(const Row& row, double ours, double baseline)
{
    const double ratio = row.aim == Aim::kTimesFaster ? baseline / ours : ours / baseline;
    const bool met = row.aim == Aim::kAtMost ? ratio <= row.limit : ratio >= row.limit;
    std::printf("%-52s %12.4g %12.4g %8.2f  %s %-5.4g %s\n", row.name.c_str(), ours, baseline, ratio,
                row.aim == Aim::kAtMost ? "<=" : ">=", row.limit, met ? "met" : "missed");
}

constexpr char kRowsOption[] = "--rows=";

/// Keeps the rows whose names have a match; returns a pattern for the benchmarks that they need.
std::string select(const std::string& pattern)
{
    const std::regex wanted(pattern, std::regex::extended | std::regex::icase);
    const auto unwanted = [&](const Row& row) { return !std::regex_search(row.name, wanted); };
    table().erase(std::remove_if(table().begin(), table().end(), unwanted), table().end());
    std::string benchmarks;
    for (const Row& row : table())
        for (const std::string& figure : {row.ours, row.baseline})
            benchmarks += (benchmarks.empty() ? "^(" : "|") + figure.substr(0, figure.find(':'));
    return benchmarks + ")(/|$)";
}

} // namespace

void add(const std::string& row, const std::string& ours, const std::string& baseline, Aim aim, double limit)
{
    table().push_back({row, ours, baseline, aim, limit});
}

int run(int argc, char** argv, const std::function<void()>& setUp)
{
    // Given first, so that the command line can override them.
    std::vector<std::string> options = {argv[0], "--benchmark_repetitions=15", "--benchmark_min_time=0.02",
                                        "--benchmark_enable_random_interleaving=true"};
    for (int i = 1; i < argc; ++i)
        if (const std::string option = argv[i]; option.rfind(kRowsOption, 0) == 0)
            options.push_back("--benchmark_filter=" + select(option.substr(sizeof kRowsOption - 1)));
        else
            options.push_back(option);
    if (table().empty())
        return EXIT_SUCCESS;
    setUp();
    std::vector<char*> arguments;
    arguments.reserve(options.size());
    for (std::string& option : options)
        arguments.push_back(option.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return EXIT_FAILURE;

    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    for (const Row& row : table())
        if (collector.measured(row.ours) || collector.measured(row.baseline))
            print(row, collector.figure(row.ours), collector.figure(row.baseline));
    return collector.failed() ? EXIT_FAILURE : EXIT_SUCCESS;
}

} // namespace rows
