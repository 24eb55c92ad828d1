// The library against a centre in this process, beside a bare gRPC generated stub that asks the same
// centre for the same. Both sides take turns within each iteration, and the first turn changes too, so
// that what else the machine does falls on both.

#include "bench/Rows.h"
#include "bench/Turns.h"
#include "bench/World.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <functional>
#include <iostream>
#include <thread>
#include <vector>

namespace {

using ledgerserver::DataUtilBeanReq;
using BareStub = World::BareStub;

constexpr int kFiles = 100000;
constexpr int kThreads = 16;
constexpr int kCallsPerThread = 100;

unsigned int topFolder = 0; ///< of a disk of many files
unsigned int disk = 0;

void addFiles(centre::Store& store)
{
    topFolder = store.addDisk("disk", "/srv/disk", "LUMO");
    store.addMadeUpFiles(topFolder, kFiles);
}

bool callOurs()
{
    tagDiskTable record;
    return World::manager().getDisk(disk, record) == RET_SUCCESS;
}

bool callBare(const World& world)
{
    DataUtilBeanReq request;
    request.set_record_id(static_cast<int>(disk));
    ledgerserver::AddressUtilBeanRsp response;
    return world.bare(&BareStub::queryDataAddressByID, request, response) && response.has_bean();
}

bool listOurs()
{
    QList<tagFileTable> files;
    return World::manager().getFileByParentID(topFolder, files) == RET_SUCCESS && files.size() == kFiles;
}

bool listBare(const World& world)
{
    DataUtilBeanReq request;
    request.set_src_id(static_cast<int>(topFolder));
    return world.barePages(&BareStub::queryFileTableBySrcIdTotal, &BareStub::queryFileTableBySrcId, request,
                           &ledgerserver::FileTableUtilBeanRsp::filetabs_size) == kFiles;
}

void blockingCall(benchmark::State& state, const World& world)
{
    takeTurns(
        state, [&] { return callOurs(); }, [&] { return callBare(world); });
}

template <class Call>
bool onManyThreads(const Call& call)
{
    std::atomic<bool> succeeded{true};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int done = 0; done < kCallsPerThread; ++done)
                if (!call())
                    succeeded = false;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    return succeeded;
}

void manyThreads(benchmark::State& state, const World& world)
{
    takeTurns(
        state, [&] { return onManyThreads([&] { return callOurs(); }); },
        [&] { return onManyThreads([&] { return callBare(world); }); });
    constexpr double kCallNanoseconds = 1e9 * kThreads * kCallsPerThread;
    state.counters["ours_rate"] = kCallNanoseconds / state.counters["ours_p50"];
    state.counters["bare_rate"] = kCallNanoseconds / state.counters["bare_p50"];
}

void paging(benchmark::State& state, const World& world)
{
    takeTurns(
        state, [&] { return listOurs(); }, [&] { return listBare(world); });
}

} // namespace

int main(int argc, char** argv)
try {
    const World world(addFiles);
    tagDiskTable record;
    if (World::manager().getDisk(QStringLiteral("disk"), record) != RET_SUCCESS)
        throw std::runtime_error("there is no disk");
    disk = record.diskID;
    benchmark::RegisterBenchmark("call", blockingCall, std::cref(world))->Iterations(2000);
    benchmark::RegisterBenchmark("threads", manyThreads, std::cref(world))->Iterations(10);
    benchmark::RegisterBenchmark("paging", paging, std::cref(world))->Iterations(2);
    using rows::Aim;
    rows::add("blocking call p50, ns: bare stub", "call:ours_p50", "call:bare_p50", Aim::kAtMost, 1.1);
    rows::add("blocking call p99, ns: bare stub", "call:ours_p99", "call:bare_p99", Aim::kAtMost, 1.1);
    rows::add("16 threads calling, calls/s: bare stubs", "threads:ours_rate", "threads:bare_rate",
              Aim::kAtLeast, 0.95);
    rows::add("100,000 files in pages, ns: bare stub", "paging:ours_p50", "paging:bare_p50", Aim::kAtMost,
              1.5);
    return rows::run(argc, argv);
} catch (const std::exception& error) {
    std::cerr << "call_bench: " << error.what() << '\n';
    return 1;
}
