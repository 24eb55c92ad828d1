// One small call of a bare gRPC client to a server of ours, beside the same call to the servers that gRPC
// itself offers, and beside a TCP ping-pong of the same bytes. Each server is a process of its own.

#include "bench/Loopback.h"
#include "bench/Rows.h"
#include "ledgerserver.grpc.pb.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <grpcpp/create_channel.h>
#include <grpcpp/generic/async_generic_service.h>
#include <grpcpp/impl/codegen/proto_utils.h>
#include <grpcpp/server_builder.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using google::protobuf::Closure;
using ledgerserver::AddressUtilBeanRsp;
using ledgerserver::DataUtilBeanReq;
using BareService = ledgerserver::bare::LedgerServices;

constexpr int kCallsInTurn = 50;
constexpr int kTurns = 60;
constexpr std::size_t kPingBytes = 128; // about what a call of this size puts on the wire each way

/// Keeps the process, with the threads that it will start, on one processor.
void stayOn(int processor)
{
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(processor, &set);
    ::sched_setaffinity(0, sizeof set, &set);
}

void answer(const DataUtilBeanReq& request, AddressUtilBeanRsp& response)
{
    response.set_result(request.record_id());
    response.mutable_bean()->set_name("a disk");
}

class SyncService final : public BareService::Service
{
    grpc::Status queryDataAddressByID(grpc::ServerContext*, const DataUtilBeanReq* request,
                                      AddressUtilBeanRsp* response) override
    {
        answer(*request, *response);
        return grpc::Status::OK;
    }
};

class CallbackService final
    : public BareService::WithCallbackMethod_queryDataAddressByID<BareService::Service>
{
    grpc::ServerUnaryReactor* queryDataAddressByID(grpc::CallbackServerContext* context,
                                                   const DataUtilBeanReq* request,
                                                   AddressUtilBeanRsp* response) override
    {
        answer(*request, *response);
        grpc::ServerUnaryReactor* reactor = context->DefaultReactor();
        reactor->Finish(grpc::Status::OK);
        return reactor;
    }
};

class OurService final : public ledgerserver::LedgerServices
{
    void queryDataAddressByID(google::protobuf::RpcController*, const DataUtilBeanReq* request,
                              AddressUtilBeanRsp* response, Closure* done) override
    {
        answer(*request, *response);
        done->Run();
    }
};

/// A call of the generic service on a completion queue.
class GenericCall
{
public:
    GenericCall(grpc::AsyncGenericService& service, grpc::ServerCompletionQueue& queue)
        : m_Service(service), m_Queue(queue)
    {
        service.RequestCall(&m_Context, &m_Stream, &queue, &queue, this);
    }

    void goOn(bool ok)
    {
        ++m_Step;
        if (!ok || m_Step == 3) {
            delete this;
        } else if (m_Step == 1) {
            new GenericCall(m_Service, m_Queue);
            m_Stream.Read(&m_Message, this);
        } else {
            DataUtilBeanReq request;
            AddressUtilBeanRsp response;
            bool own = false;
            grpc::SerializationTraits<DataUtilBeanReq>::Deserialize(&m_Message, &request);
            answer(request, response);
            grpc::SerializationTraits<AddressUtilBeanRsp>::Serialize(response, &m_Message, &own);
            m_Stream.WriteAndFinish(m_Message, grpc::WriteOptions(), grpc::Status::OK, this);
        }
    }

private:
    grpc::AsyncGenericService& m_Service;
    grpc::ServerCompletionQueue& m_Queue;
    grpc::GenericServerContext m_Context;
    grpc::GenericServerAsyncReaderWriter m_Stream{&m_Context};
    grpc::ByteBuffer m_Message;
    int m_Step = 0;
};

/// The kinds of servers. The process ends when its standard input does.
void announce(int port)
{
    std::cout << port << std::endl;
    char byte = 0;
    while (::read(STDIN_FILENO, &byte, 1) > 0) {
    }
    ::_exit(0);
}

void serveBare(const std::string& kind)
{
    SyncService sync;
    CallbackService callback;
    grpc::AsyncGenericService generic;
    grpc::ServerBuilder builder;
    int port = 0;
    builder.AddListeningPort("127.0.0.1:0", grpc::InsecureServerCredentials(), &port);
    std::unique_ptr<grpc::ServerCompletionQueue> queue;
    if (kind == "generic") {
        builder.RegisterAsyncGenericService(&generic);
        queue = builder.AddCompletionQueue();
    } else {
        builder.RegisterService(kind == "sync" ? static_cast<grpc::Service*>(&sync) : &callback);
    }
    const std::unique_ptr<grpc::Server> server = builder.BuildAndStart();
    if (!queue)
        return announce(port);
    new GenericCall(generic, *queue);
    std::thread([&] {
        void* tag = nullptr;
        bool ok = false;
        while (queue->Next(&tag, &ok))
            static_cast<GenericCall*>(tag)->goOn(ok);
    }).detach();
    announce(port);
}

void serveOurs()
{
    OurService service;
    wirecall::RpcServer server;
    server.add(&service);
    wirecall::RpcServer::Options options;
    options.address = "127.0.0.1:0";
    std::string error;
    if (!server.start(options, error))
        throw std::runtime_error(error);
    announce(server.port());
}

void sendAtOnce(int socket)
{
    const int one = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
}

void serveTcp()
{
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(listener, 1) != 0)
        throw std::runtime_error("can't listen");
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
    std::thread([listener] {
        const int socket = ::accept(listener, nullptr, nullptr);
        sendAtOnce(socket);
        std::array<char, kPingBytes> bytes{};
        while (::recv(socket, bytes.data(), bytes.size(), MSG_WAITALL) > 0)
            ::send(socket, bytes.data(), bytes.size(), 0);
    }).detach();
    announce(ntohs(address.sin_port));
}

void serve(const std::string& kind)
{
    if (kind == "tcp")
        serveTcp();
    else if (kind == "ours")
        serveOurs();
    else
        serveBare(kind);
}

/// A server in a process of its own, a client of it, and what its calls cost.
class Server
{
public:
    explicit Server(const char* kind) : m_Kind(kind)
    {
        int toServer[2], fromServer[2];
        if (::pipe2(toServer, O_CLOEXEC) != 0 || ::pipe2(fromServer, O_CLOEXEC) != 0 ||
            (m_Process = ::fork()) < 0)
            throw std::runtime_error("can't start a server");
        if (m_Process == 0) {
            ::dup2(toServer[0], STDIN_FILENO);
            ::dup2(fromServer[1], STDOUT_FILENO);
            ::execl("/proc/self/exe", "server_bench", "--serve", kind, nullptr);
            ::_exit(1);
        }
        ::close(toServer[0]);
        ::close(fromServer[1]);
        m_Input = toServer[1];
        std::string line;
        for (char byte = 0; ::read(fromServer[0], &byte, 1) == 1 && byte != '\n';)
            line += byte;
        ::close(fromServer[0]);
        ::clock_getcpuclockid(m_Process, &m_Clock);
        connect(std::stoi(line));
    }

    ~Server()
    {
        ::close(m_Input);
        ::waitpid(m_Process, nullptr, 0);
    }

    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    bool takeTurn()
    {
        const double cpu = cpuTime();
        for (int i = 0; i < kCallsInTurn; ++i) {
            const auto start = std::chrono::steady_clock::now();
            if (!m_Call())
                return false;
            m_Times.push_back(
                std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count());
        }
        m_CpuTimes.push_back((cpuTime() - cpu) / kCallsInTurn);
        return true;
    }
    void forget()
    {
        m_Times.clear();
        m_CpuTimes.clear();
    }

    /// Medians in nanoseconds, of a call and of the processor time of both sides for one.
    double time() { return median(m_Times); }
    double cpu() { return median(m_CpuTimes); }

private:
    void connect(int port)
    {
        if (m_Kind == "tcp") {
            const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
            const sockaddr_in address = loopback(port);
            if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
                throw std::runtime_error("can't connect");
            sendAtOnce(socket);
            m_Call = [socket] {
                std::array<char, kPingBytes> bytes{};
                return ::send(socket, bytes.data(), bytes.size(), 0) > 0 &&
                       ::recv(socket, bytes.data(), bytes.size(), MSG_WAITALL) > 0;
            };
            return;
        }
        const std::shared_ptr<BareService::Stub> stub = BareService::NewStub(
            grpc::CreateChannel("127.0.0.1:" + std::to_string(port), grpc::InsecureChannelCredentials()));
        m_Call = [stub] {
            grpc::ClientContext context;
            context.set_deadline(std::chrono::system_clock::now() + std::chrono::seconds(30));
            DataUtilBeanReq request;
            request.set_record_id(4711);
            AddressUtilBeanRsp response;
            return stub->queryDataAddressByID(&context, request, &response).ok() && response.result() == 4711;
        };
    }

    double cpuTime() const
    {
        double nanoseconds = 0;
        for (const clockid_t clock : {m_Clock, CLOCK_PROCESS_CPUTIME_ID}) {
            timespec time{};
            ::clock_gettime(clock, &time);
            nanoseconds += 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
        }
        return nanoseconds;
    }

    static double median(std::vector<double>& values)
    {
        const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }

    const std::string m_Kind;
    pid_t m_Process = 0;
    int m_Input = -1;
    clockid_t m_Clock{};
    std::function<bool()> m_Call;
    std::vector<double> m_Times, m_CpuTimes;
};

void oneCall(benchmark::State& state)
{
    Server ours("ours"), tcp("tcp"), sync("sync"), callback("callback"), generic("generic");
    const std::array<Server*, 5> all{&ours, &tcp, &sync, &callback, &generic};
    for (Server* each : all) {
        each->takeTurn(); // connects
        each->forget();
    }
    std::size_t first = 0;
    while (state.KeepRunning()) {
        for (std::size_t i = 0; i < all.size(); ++i)
            if (!all[(first + i) % all.size()]->takeTurn()) {
                state.SkipWithError("a call failed");
                return;
            }
        ++first;
    }
    state.counters["ours"] = ours.time();
    state.counters["ours_cpu"] = ours.cpu();
    state.counters["tcp"] = tcp.time();
    state.counters["fastest"] = std::min({sync.time(), callback.time(), generic.time()});
    state.counters["fastest_cpu"] = std::min({sync.cpu(), callback.cpu(), generic.cpu()});
}

} // namespace

int main(int argc, char** argv)
try {
    if (argc == 3 && argv[1] == std::string("--serve")) {
        stayOn(1);
        serve(argv[2]);
        return 0;
    }
    stayOn(0);
    benchmark::RegisterBenchmark("call", oneCall)->Iterations(kTurns);
    using rows::Aim;
    rows::add("one call on a server of ours p50, ns: TCP ping-pong", "call:ours", "call:tcp", Aim::kAtMost,
              2.6);
    rows::add("one call on a server of ours p50, ns: fastest bare", "call:ours", "call:fastest", Aim::kAtMost,
              1.05);
    rows::add("the same, CPU of both sides, ns: least of bare", "call:ours_cpu", "call:fastest_cpu",
              Aim::kAtMost, 1.1);
    return rows::run(argc, argv);
} catch (const std::exception& error) {
    std::cerr << "server_bench: " << error.what() << '\n';
    return 1;
}
