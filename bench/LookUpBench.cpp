// What a walk through the catalogue asks the centre of each file, its path and the code of its box: the
// library beside a bare gRPC generated stub that asks the same centre. Both take turns, a thousand look-ups
// each.

#include "bench/Rows.h"
#include "bench/Turns.h"
#include "bench/World.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <iostream>
#include <optional>

namespace {

constexpr unsigned int kTurn = 1000; // look-ups
constexpr unsigned int kTurns = 20;

struct Walk : CLumoDataMgr
{
    using CLumoDataMgr::getFileFullPath;
};

void addFiles(centre::Store& store)
{
    store.addMadeUpFiles(store.addDisk("disk", "/srv/disk", "LUMO"), kTurn * kTurns);
}

/// Calls `lookUp` with the identifiers of the turn's files, the smallest of which is 1.
template <class LookUp>
bool inTurn(unsigned int turn, const LookUp& lookUp)
{
    for (unsigned int id = turn * kTurn + 1; id <= (turn + 1) * kTurn; ++id)
        if (!lookUp(id))
            return false;
    return true;
}

bool lookUpOurs(unsigned int id)
{
    QString boxCode;
    return !(World::manager().*(&Walk::getFileFullPath))(id, boxCode).isEmpty();
}

bool lookUpBare(const World& world, unsigned int id)
{
    ledgerserver::DataUtilBeanReq request;
    request.set_file_id(static_cast<int>(id));
    ledgerserver::DataUtilBeanRsp response;
    return world.bare(&World::BareStub::getFileFullPath, request, response) && response.result() == 0;
}

void lookUps(benchmark::State& state, const World& world)
{
    unsigned int ours = 0, bare = 0;
    takeTurns(
        state, [&] { return inTurn(ours++, lookUpOurs); },
        [&] { return inTurn(bare++, [&](unsigned int id) { return lookUpBare(world, id); }); });
}

} // namespace

int main(int argc, char** argv)
try {
    rows::add("20,000 look-ups of a walk, ns per 1,000: bare calls", "look_ups:ours_p50", "look_ups:bare_p50",
              rows::Aim::kAtMost, 1.15);
    std::optional<World> world;
    return rows::run(argc, argv, [&] {
        world.emplace(addFiles);
        benchmark::RegisterBenchmark("look_ups", lookUps, std::cref(*world))
            ->Iterations(kTurns)
            ->Repetitions(1);
    });
} catch (const std::exception& error) {
    std::cerr << "look_up_bench: " << error.what() << '\n';
    return 1;
}
