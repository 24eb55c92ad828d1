// The library against a centre in this process, beside a bare gRPC generated stub that asks the same
// centre for the same. Both sides take turns within each iteration, and the first turn changes too, so
// that what else the machine does falls on both.

#include "bench/Rows.h"
#include "bench/Turns.h"

#include "centre/Centre.h"
#include "centre/Store.h"
#include "components/logger/LumoLogger.h"
#include "components/wirecall/RpcChannel.h"
#include "core/LumoDataMgr.h"
#include "ledgerserver.grpc.pb.h"

#include <benchmark/benchmark.h>
#include <grpcpp/create_channel.h>

#include <QTemporaryDir>

#include <atomic>
#include <chrono>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using ledgerserver::DataUtilBeanReq;
using ledgerserver::FileTableUtilBeanRsp;
using BareStub = ledgerserver::bare::LedgerServices::Stub;

constexpr unsigned int kTimeout = 30000; // milliseconds
constexpr int kFiles = 100000;
constexpr int kPageSize = 10000;
constexpr int kThreads = 16;
constexpr int kCallsPerThread = 100;

/// A centre with a disk of many files, the library and a bare stub connected to it.
class World
{
public:
    World() : m_Token(centre::Store::create(folder(), "LUMO", "demo"))
    {
        centre::Store store(folder());
        m_TopFolder = store.addDisk("disk", "/srv/disk", "LUMO");
        store.addMadeUpFiles(m_TopFolder, kFiles);
        m_Centre = std::make_unique<centre::Centre>(folder(), centre::ServeOptions());

        std::string error;
        wirecall::ChannelOptions options;
        options.address = m_Centre->address();
        options.token = m_Token;
        m_Channel = wirecall::openChannel(options, error);
        if (!m_Channel)
            throw std::runtime_error(error);
        tagDiskTable disk;
        if (manager().initDataMgr(m_Channel.get(), m_Channel.get(), m_Token.c_str(), "demo", "LUMO",
                                  kTimeout) != INIT_SUCCESS ||
            manager().getDisk(QStringLiteral("disk"), disk) != RET_SUCCESS)
            throw std::runtime_error("the library did not connect");
        m_Disk = disk.diskID;

        grpc::ChannelArguments arguments;
        arguments.SetMaxReceiveMessageSize(-1);
        m_Bare = ledgerserver::bare::LedgerServices::NewStub(
            grpc::CreateCustomChannel(m_Centre->address(), grpc::InsecureChannelCredentials(), arguments));
    }

    static CLumoDataMgr& manager() { return CLumoDataMgr::GetSingleTon(); }

    bool callOurs() const
    {
        tagDiskTable disk;
        return manager().getDisk(m_Disk, disk) == RET_SUCCESS;
    }

    bool callBare() const
    {
        DataUtilBeanReq request;
        request.set_record_id(static_cast<int>(m_Disk));
        ledgerserver::AddressUtilBeanRsp response;
        return bare(&BareStub::queryDataAddressByID, request, response) && response.has_bean();
    }

    bool listOurs() const
    {
        QList<tagFileTable> files;
        return manager().getFileByParentID(m_TopFolder, files) == RET_SUCCESS && files.size() == kFiles;
    }

    bool listBare() const
    {
        DataUtilBeanReq request;
        request.set_src_id(static_cast<int>(m_TopFolder));
        FileTableUtilBeanRsp response;
        if (!bare(&BareStub::queryFileTableBySrcIdTotal, request, response))
            return false;
        const int total = response.total();
        request.set_page_size(kPageSize);
        int received = 0;
        while (received < total) {
            request.set_page_start(received);
            if (!bare(&BareStub::queryFileTableBySrcId, request, response) || response.filetabs().empty())
                return false;
            received += response.filetabs_size();
        }
        return received == kFiles;
    }

private:
    std::string folder() const { return m_Folder.filePath("data").toStdString(); }

    template <class Request, class Response>
    bool bare(grpc::Status (BareStub::*operation)(grpc::ClientContext*, const Request&, Response*),
              const Request& request, Response& response) const
    {
        grpc::ClientContext context;
        context.set_deadline(std::chrono::system_clock::now() + std::chrono::milliseconds(kTimeout));
        context.AddMetadata("authorization", "Bearer " + m_Token);
        return (m_Bare.get()->*operation)(&context, request, &response).ok();
    }

    QTemporaryDir m_Folder;
    std::string m_Token;
    std::unique_ptr<centre::Centre> m_Centre;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
    std::unique_ptr<BareStub> m_Bare;
    unsigned int m_TopFolder = 0;
    unsigned int m_Disk = 0;
};

void blockingCall(benchmark::State& state, const World& world)
{
    takeTurns(
        state, [&] { return world.callOurs(); }, [&] { return world.callBare(); });
}

template <class Call>
bool onManyThreads(const Call& call)
{
    std::atomic<bool> succeeded{true};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int done = 0; done < kCallsPerThread; ++done) {
                if (!call())
                    succeeded = false;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    return succeeded;
}

void manyThreads(benchmark::State& state, const World& world)
{
    takeTurns(
        state, [&] { return onManyThreads([&] { return world.callOurs(); }); },
        [&] { return onManyThreads([&] { return world.callBare(); }); });
    constexpr double kCallNanoseconds = 1e9 * kThreads * kCallsPerThread;
    state.counters["ours_rate"] = kCallNanoseconds / state.counters["ours_p50"];
    state.counters["bare_rate"] = kCallNanoseconds / state.counters["bare_p50"];
}

void paging(benchmark::State& state, const World& world)
{
    takeTurns(
        state, [&] { return world.listOurs(); }, [&] { return world.listBare(); });
}

} // namespace

int main(int argc, char** argv)
try {
    CLumoLogger::GetSinglePton()->toCallback({});
    const World world;
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
