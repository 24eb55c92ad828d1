// What ten clients of one user notice of 200 clients that ask for pages of a folder as fast as they are
// answered: the latency of the ten clients' look-ups when the others have another user, beside the same when
// all have one user, and beside the same without the others. All are on one machine with the centre, each
// group on a thread.

#include "bench/Rows.h"
#include "bench/Turns.h"
#include "centre/server/Centre.h"
#include "centre/store/Store.h"
#include "ledgerserver.grpc.pb.h"

#include <benchmark/benchmark.h>
#include <grpcpp/create_channel.h>

#include <QTemporaryDir>

#include <atomic>
#include <chrono>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using ledgerserver::DataUtilBeanReq;
using BareService = ledgerserver::bare::LedgerServices;
using Clock = std::chrono::steady_clock;

constexpr int kFiles = 10000;
constexpr int kPage = 1000;
constexpr int kPoliteClients = 10;
constexpr int kGreedyClients = 200;
constexpr int kLookUps = 2000;

/// Clients of one user, each with a connection and one call at a time.
template <class Response>
class Clients
{
public:
    using Reader = std::unique_ptr<grpc::ClientAsyncResponseReader<Response>>;
    using Operation = Reader (BareService::Stub::*)(grpc::ClientContext*, const DataUtilBeanReq&,
                                                    grpc::CompletionQueue*);

    Clients(int count, const std::string& address, std::string token, Operation operation,
            DataUtilBeanReq request)
        : m_Token(std::move(token)),
          m_Operation(operation),
          m_Request(std::move(request)),
          m_Clients(static_cast<std::size_t>(count))
    {
        grpc::ChannelArguments own;
        own.SetInt(GRPC_ARG_USE_LOCAL_SUBCHANNEL_POOL, 1);
        for (Client& client : m_Clients)
            client.stub = BareService::NewStub(
                grpc::CreateCustomChannel(address, grpc::InsecureChannelCredentials(), own));
    }

    /// Calls until `isEnough(count)` of the calls that were answered. Returns how long each took, in
    /// nanoseconds; nothing if one failed.
    std::vector<double> run(const std::function<bool(std::size_t)>& isEnough)
    {
        std::vector<double> durations;
        for (Client& client : m_Clients)
            start(client);
        bool succeeded = true;
        for (std::size_t running = m_Clients.size(); running > 0;) {
            void* tag = nullptr;
            bool ok = false;
            m_Queue.Next(&tag, &ok);
            Client& client = *static_cast<Client*>(tag);
            durations.push_back(
                std::chrono::duration<double, std::nano>(Clock::now() - client.began).count());
            succeeded = succeeded && client.status.ok() && client.response.result() == 0;
            if (!succeeded || isEnough(durations.size()))
                --running;
            else
                start(client);
        }
        return succeeded ? durations : std::vector<double>();
    }

private:
    struct Client
    {
        std::unique_ptr<BareService::Stub> stub;
        std::unique_ptr<grpc::ClientContext> context;
        Reader reader;
        Response response;
        grpc::Status status;
        Clock::time_point began;
    };

    void start(Client& client)
    {
        client.context = std::make_unique<grpc::ClientContext>();
        client.context->AddMetadata("authorization", "Bearer " + m_Token);
        client.began = Clock::now();
        client.reader = (client.stub.get()->*m_Operation)(client.context.get(), m_Request, &m_Queue);
        client.reader->Finish(&client.response, &client.status, &client);
    }

    const std::string m_Token;
    const Operation m_Operation;
    const DataUtilBeanReq m_Request;
    grpc::CompletionQueue m_Queue;
    std::vector<Client> m_Clients;
};

/// A centre with two users, and their clients.
class TwoUsers
{
public:
    TwoUsers()
        : m_PoliteToken(centre::Store::create(folder(), "LUMO", "polite")), m_GreedyToken(fill(folder()))
    {
        m_Centre = std::make_unique<centre::Centre>(folder(), centre::ServeOptions());
        DataUtilBeanReq lookUp, page;
        lookUp.set_file_id(kFiles / 2);
        page.set_src_id(1);
        page.set_page_size(kPage);
        m_Polite.emplace(kPoliteClients, m_Centre->address(), m_PoliteToken,
                         &BareService::Stub::AsyncgetFileFullPath, lookUp);
        for (const auto& [clients, token] :
             {std::pair(&m_Others, m_GreedyToken), std::pair(&m_Same, m_PoliteToken)})
            clients->emplace(kGreedyClients, m_Centre->address(), token,
                             &BareService::Stub::AsyncqueryFileTableBySrcId, page);
    }

    std::vector<double> lookUps()
    {
        return m_Polite->run([](std::size_t count) { return count >= kLookUps; });
    }

    /// The same while 200 clients of another user, or of the same, ask for pages.
    std::vector<double> lookUpsBesideOthers() { return lookUpsBeside(*m_Others); }
    std::vector<double> lookUpsBesideTheSame() { return lookUpsBeside(*m_Same); }

private:
    using Pages = Clients<ledgerserver::FileTableUtilBeanRsp>;

    std::vector<double> lookUpsBeside(Pages& clients)
    {
        std::atomic<bool> enough{false};
        std::atomic<std::size_t> pages{0};
        std::thread greedy([&] {
            clients.run([&](std::size_t count) {
                pages = count;
                return enough.load();
            });
        });
        while (pages < kGreedyClients)
            std::this_thread::yield();
        std::vector<double> durations = lookUps();
        enough = true;
        greedy.join();
        return durations;
    }

    std::string folder() const { return m_Folder.filePath("data").toStdString(); }

    static std::string fill(const std::string& folder)
    {
        centre::Store store(folder);
        store.addMadeUpFiles(store.addDisk("disk", "/srv/disk", "LUMO"), kFiles);
        return store.addUser("greedy", "LUMO", true);
    }

    QTemporaryDir m_Folder;
    const std::string m_PoliteToken, m_GreedyToken;
    std::unique_ptr<centre::Centre> m_Centre;
    std::optional<Clients<ledgerserver::DataUtilBeanRsp>> m_Polite;
    std::optional<Pages> m_Others, m_Same;
};

void besideOthers(benchmark::State& state, TwoUsers& users)
{
    users.lookUps(); // connects
    std::vector<double> alone, beside, same;
    for ([[maybe_unused]] auto _ : state) {
        const std::vector<double> first = users.lookUps();
        const std::vector<double> second = users.lookUpsBesideOthers();
        const std::vector<double> third = users.lookUpsBesideTheSame();
        if (first.empty() || second.empty() || third.empty()) {
            state.SkipWithError("a call failed");
            return;
        }
        alone.insert(alone.end(), first.begin(), first.end());
        beside.insert(beside.end(), second.begin(), second.end());
        same.insert(same.end(), third.begin(), third.end());
    }
    countPercentiles(state, "alone", alone);
    countPercentiles(state, "beside", beside);
    countPercentiles(state, "same", same);
}

} // namespace

int main(int argc, char** argv)
try {
    using rows::Aim;
    rows::add("10 clients beside 200 of another user p50, ns: of theirs", "fairness:beside_p50",
              "fairness:same_p50", Aim::kAtMost, 0.5);
    rows::add("10 clients beside 200 of another user p99, ns: of theirs", "fairness:beside_p99",
              "fairness:same_p99", Aim::kAtMost, 0.8);
    rows::add("10 clients beside 200 of another user p50, ns: alone", "fairness:beside_p50",
              "fairness:alone_p50", Aim::kAtMost, 30);
    rows::add("10 clients beside 200 of another user p99, ns: alone", "fairness:beside_p99",
              "fairness:alone_p99", Aim::kAtMost, 100);
    std::optional<TwoUsers> users;
    return rows::run(argc, argv, [&] {
        users.emplace();
        benchmark::RegisterBenchmark("fairness", besideOthers, std::ref(*users))
            ->Iterations(3)
            ->Repetitions(1);
    });
} catch (const std::exception& error) {
    std::cerr << "fairness_bench: " << error.what() << '\n';
    return 1;
}
