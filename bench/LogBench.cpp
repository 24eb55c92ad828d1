// One log line to a sink that drops it, against snprintf of the same line.

#include "bench/Rows.h"
#include "core/LogLine.h"
#include "lumo/components/logger/LumoLogger.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <ctime>

namespace {

void ours(benchmark::State& state)
{
    while (state.KeepRunning())
        LUMO_LOG("CLumoDataMgr::getDisk", "queryDataAddressByID Error : %s", "no answer within 5000 ms");
}

void viaSnprintf(benchmark::State& state)
{
    const std::time_t now = std::time(nullptr);
    char time[26];
    std::tm local;
    asctime_r(localtime_r(&now, &local), time);
    char line[4097];
    while (state.KeepRunning()) {
        (void)std::snprintf(line, sizeof line,
                            "%s [INFO] queryDataAddressByID Error : %s File:%s, Func:%s, Line:%d\r\n", time,
                            "no answer within 5000 ms", "LumoDataMgr", "CLumoDataMgr::getDisk", __LINE__);
        benchmark::DoNotOptimize(line);
    }
}

BENCHMARK(ours);
BENCHMARK(viaSnprintf);

} // namespace

int main(int argc, char** argv)
{
    CLumoLogger::GetSinglePton()->toCallback({});
    rows::add("log line to a null sink, ns: snprintf", "ours", "viaSnprintf", rows::Aim::kAtMost, 2);
    return rows::run(argc, argv);
}
